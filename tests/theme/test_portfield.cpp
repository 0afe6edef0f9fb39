// SPDX-License-Identifier: MIT
//
// Port fields: a click selects all of it, and what is no port number is said to be none.
#include <QApplication>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include "support/drop.h"
#include "theme/portfield.h"

namespace {

struct Form {
    QWidget window;
    QLineEdit *other = new QLineEdit(&window);
    QLineEdit *port = new QLineEdit(QStringLiteral("5004"), &window);

    Form()
    {
        auto *column = new QVBoxLayout(&window);
        column->addWidget(other);
        column->addWidget(port);
        selectAllOnClick(port);
        takeDrops(port);
    }

    bool drop(const QString &text) { return dropText(port, QPoint(4, port->height() / 2), text); }

    bool show()
    {
        window.show();
        return QTest::qWaitForWindowActive(&window);
    }
};

} // namespace

class TestPortField : public QObject {
    Q_OBJECT

private slots:
    void clickSelectsAll();
    void clickInsideAPartSelectsAll();
    void draggedSelectionStays();
    void otherButtonsSelectNothing();
    void dropped();
    void droppedOnWhatIsReadOnly();
    void noValidator();
    void problem_data();
    void problem();
    void everyPortIsOne();
};

void TestPortField::clickSelectsAll()
{
    Form form;
    QVERIFY(form.show());
    form.other->setFocus();
    for (int i = 0; i < 2; ++i) { // and not only the first time
        QTest::mouseClick(form.port, Qt::LeftButton);
        QCOMPARE(form.port->selectedText(), QStringLiteral("5004"));
    }
    QTest::keyClicks(form.port, QStringLiteral("77"));
    QCOMPARE(form.port->text(), QStringLiteral("77"));
}

void TestPortField::clickInsideAPartSelectsAll()
{
    Form form;
    QVERIFY(form.show());
    form.port->setSelection(1, 2);
    QTest::mouseClick(form.port, Qt::LeftButton, Qt::NoModifier, QPoint(4, form.port->height() / 2));
    QCOMPARE(form.port->selectedText(), QStringLiteral("5004"));
}

void TestPortField::draggedSelectionStays()
{
    Form form;
    QVERIFY(form.show());
    const int y = form.port->height() / 2;
    const int end = form.port->fontMetrics().horizontalAdvance(QStringLiteral("50")) + 4;
    QTest::mousePress(form.port, Qt::LeftButton, Qt::NoModifier, QPoint(1, y));
    QMouseEvent move(QEvent::MouseMove, QPointF(end, y), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(form.port, &move);
    QTest::mouseRelease(form.port, Qt::LeftButton, Qt::NoModifier, QPoint(end, y));
    QVERIFY(form.port->hasSelectedText());
    QVERIFY(form.port->selectedText() != form.port->text());
}

void TestPortField::otherButtonsSelectNothing()
{
    Form form;
    QVERIFY(form.show());
    QTest::mouseRelease(form.port, Qt::RightButton);
    QVERIFY(!form.port->hasSelectedText());
}

// There is no focus that could be lost later, so it is told of at once.
void TestPortField::dropped()
{
    Form form;
    QVERIFY(form.show());
    form.other->setFocus();
    QSignalSpy finished(form.port, &QLineEdit::editingFinished);
    QVERIFY(form.drop(QStringLiteral(" 20000\n")));
    QCOMPARE(form.port->text(), QStringLiteral("20000"));
    QCOMPARE(finished.count(), 1);
    QVERIFY(form.other->hasFocus());
    form.port->undo();
    QCOMPARE(form.port->text(), QStringLiteral("5004"));
}

void TestPortField::droppedOnWhatIsReadOnly()
{
    Form form;
    QVERIFY(form.show());
    form.port->setReadOnly(true);
    QSignalSpy finished(form.port, &QLineEdit::editingFinished);
    form.drop(QStringLiteral("20000"));
    QCOMPARE(form.port->text(), QStringLiteral("5004"));
    QCOMPARE(finished.count(), 0);
}

// editingFinished() has to come for every text.
void TestPortField::noValidator()
{
    Form form;
    QVERIFY(form.show());
    QVERIFY(!form.port->validator());
    QSignalSpy finished(form.port, &QLineEdit::editingFinished);
    form.port->setFocus();
    form.port->selectAll();
    QTest::keyClicks(form.port, QStringLiteral("abc"));
    QTest::keyClick(form.port, Qt::Key_Return);
    QCOMPARE(finished.count(), 1);
}

void TestPortField::problem_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *text, const char *reason) {
        QTest::newRow(*text ? text : "empty") << QString::fromUtf8(text) << QString::fromUtf8(reason);
    };
    for (const char *port : {"0", "1", "5004", "65535", "05004", " 5004 "})
        row(port, "");
    row("", "The port is empty.");
    row("  ", "The port is empty.");
    row("abc", "\"abc\" is no port number.");
    row("%1", "\"%1\" is no port number.");
    for (const char *text : {"-1", "+1", "5004a", "0x1f", "5 004", "5.0", "1e3", "५"})
        row(text, qPrintable(QStringLiteral("\"%1\" is no port number.").arg(QString::fromUtf8(text))));
    for (const char *text : {"65536", "99999", "4294967296", "99999999999999999999"})
        row(text, qPrintable(QStringLiteral("%1 is too large for a port: the largest one is 65535.")
                                 .arg(QLatin1String(text))));
}

void TestPortField::problem()
{
    QFETCH(QString, text);
    QFETCH(QString, reason);
    QCOMPARE(portProblem(text), reason);
}

void TestPortField::everyPortIsOne()
{
    for (int port = 0; port <= 65535; ++port)
        QVERIFY2(portProblem(QString::number(port)).isEmpty(), qPrintable(QString::number(port)));
}

QTEST_MAIN(TestPortField)
#include "test_portfield.moc"
