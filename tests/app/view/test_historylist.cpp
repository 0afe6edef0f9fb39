// SPDX-License-Identifier: MIT
//
// The window with the last changes, over rows that the test gives.
#include "app/view/historylist.h"

#include <QComboBox>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QWheelEvent>
#include <QtTest>

#include <memory>

namespace {

HistoryRow row(qint64 batch, const char *what, const QSet<int> &channels, bool isTakenBack = false)
{
    return {batch,
            QStringLiteral("10:00"),
            QStringLiteral("eva (corvel)"),
            QLatin1String(what),
            QStringLiteral("details of %1").arg(batch),
            channels,
            isTakenBack};
}

} // namespace

class TestHistoryList : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_owner.reset(); }
    void showsTheRows();
    void takenBackIsStruckOut();
    void channelsAreThoseOfTheRows();
    void theWheelChoosesNoChannel();
    void theLastOneIsTakenBackAtOnce();
    void anOlderOneAsksFirst();
    void whatIsTakenBackIsNotOffered();
    void theChosenOneStaysChosen();
    void theChosenChannelStaysChosen();
    void nothingThere();
    void theOwnerGoesUnderTheQuestion();
    void goesWhenItIsClosed();
    void returnPressesNothing();

private:
    template<typename Widget>
    Widget *find(const char *name) const
    {
        return m_list->findChild<Widget *>(QLatin1String(name));
    }
    QTableWidget *table() const { return find<QTableWidget>("historyTable"); }
    QPushButton *button() const { return find<QPushButton>("historyTakeBack"); }
    QComboBox *channel() const { return find<QComboBox>("historyChannel"); }
    QString whats() const
    {
        QStringList texts;
        for (int at = 0; at < table()->rowCount(); ++at)
            texts.append(table()->item(at, 2)->text());
        return texts.join(QStringLiteral(", "));
    }
    void chooseRow(int at)
    {
        const QRect place = table()->visualItemRect(table()->item(at, 2));
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::NoModifier, place.center());
    }
    void answer(QMessageBox::StandardButton with)
    {
        QTRY_VERIFY(m_list->findChild<QMessageBox *>(QStringLiteral("historyQuestion")));
        auto *box = m_list->findChild<QMessageBox *>(QStringLiteral("historyQuestion"));
        QVERIFY(box->text().startsWith(QLatin1String("This is not the last change.")));
        QTest::mouseClick(box->button(with), Qt::LeftButton);
        QTRY_VERIFY(!m_list->findChild<QMessageBox *>(QStringLiteral("historyQuestion")));
    }

    std::unique_ptr<QWidget> m_owner;
    QPointer<HistoryList> m_list;
    QVector<HistoryRow> m_rows;
    QList<qint64> m_takenBack;
};

void TestHistoryList::init()
{
    m_takenBack.clear();
    m_rows = {row(30, "port", {2}), row(20, "load", {0, 1}), row(10, "address", {0})};
    m_owner = std::make_unique<QWidget>();
    m_owner->show();
    m_list = new HistoryList(
        m_owner.get(), [this] { return m_rows; }, [this](qint64 batch) { m_takenBack.append(batch); });
    m_list->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_list));
}

void TestHistoryList::showsTheRows()
{
    QCOMPARE(whats(), QStringLiteral("port, load, address"));
    QCOMPARE(table()->item(0, 0)->text(), QStringLiteral("10:00"));
    QCOMPARE(table()->item(0, 1)->text(), QStringLiteral("eva (corvel)"));
    QCOMPARE(table()->item(1, 2)->toolTip(), QStringLiteral("details of 20"));
    QVERIFY(!button()->isEnabled()); // none is chosen
}

void TestHistoryList::takenBackIsStruckOut()
{
    m_rows[1].isTakenBack = true;
    m_list->refresh();
    QVERIFY(!table()->item(0, 2)->font().strikeOut());
    QVERIFY(table()->item(1, 2)->font().strikeOut());
}

void TestHistoryList::channelsAreThoseOfTheRows()
{
    QStringList names;
    for (int i = 0; i < channel()->count(); ++i)
        names.append(channel()->itemText(i));
    QCOMPARE(names.join(QStringLiteral(", ")),
             QStringLiteral("All channels, Channel 0, Channel 1, Channel 2"));
    channel()->setFocus();
    QTest::keyClick(channel(), Qt::Key_Down);
    QCOMPARE(whats(), QStringLiteral("load, address"));
    QTest::keyClick(channel(), Qt::Key_End);
    QCOMPARE(whats(), QStringLiteral("port"));
}

void TestHistoryList::theWheelChoosesNoChannel()
{
    const QPointF place = channel()->rect().center();
    QWheelEvent turn(place, channel()->mapToGlobal(place.toPoint()), QPoint(), QPoint(0, -120), Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(channel(), &turn);
    QCOMPARE(channel()->currentIndex(), 0);
}

void TestHistoryList::theLastOneIsTakenBackAtOnce()
{
    chooseRow(0);
    QVERIFY(button()->isEnabled());
    QTest::mouseClick(button(), Qt::LeftButton);
    QCOMPARE(m_takenBack, QList<qint64>{30});
    QVERIFY(!m_list->findChild<QMessageBox *>());
}

void TestHistoryList::anOlderOneAsksFirst()
{
    chooseRow(1);
    QTest::mouseClick(button(), Qt::LeftButton);
    QVERIFY(m_takenBack.isEmpty());
    answer(QMessageBox::No);
    QVERIFY(m_takenBack.isEmpty());
    QTest::mouseClick(button(), Qt::LeftButton);
    answer(QMessageBox::Yes);
    QCOMPARE(m_takenBack, QList<qint64>{20});
}

void TestHistoryList::whatIsTakenBackIsNotOffered()
{
    m_rows[0].isTakenBack = true;
    m_list->refresh();
    chooseRow(0);
    QVERIFY(!button()->isEnabled());
    chooseRow(1);
    QVERIFY(button()->isEnabled());
}

// Though newer ones come above it.
void TestHistoryList::theChosenOneStaysChosen()
{
    chooseRow(1);
    m_rows.prepend(row(40, "format", {3}));
    m_list->refresh();
    QCOMPARE(table()->selectedItems().first()->toolTip(), QStringLiteral("details of 20"));
    m_rows.removeAt(2);
    m_list->refresh();
    QVERIFY(table()->selectedItems().isEmpty());
    QVERIFY(!button()->isEnabled());
}

void TestHistoryList::theChosenChannelStaysChosen()
{
    channel()->setCurrentText(QStringLiteral("Channel 2"));
    m_rows.prepend(row(40, "format", {0}));
    m_list->refresh();
    QCOMPARE(channel()->currentText(), QStringLiteral("Channel 2"));
    QCOMPARE(whats(), QStringLiteral("port"));
    m_rows = {row(50, "clock", {1})};
    m_list->refresh();
    QCOMPARE(channel()->currentText(), QStringLiteral("All channels"));
    QCOMPARE(whats(), QStringLiteral("clock"));
}

void TestHistoryList::nothingThere()
{
    m_rows.clear();
    m_list->refresh();
    QCOMPARE(table()->rowCount(), 0);
    QCOMPARE(channel()->count(), 1);
    QVERIFY(!button()->isEnabled());
}

void TestHistoryList::theOwnerGoesUnderTheQuestion()
{
    chooseRow(2);
    QTest::mouseClick(button(), Qt::LeftButton);
    QTRY_VERIFY(m_list->findChild<QMessageBox *>());
    m_owner.reset();
    QVERIFY(!m_list);
    QVERIFY(m_takenBack.isEmpty());
}

void TestHistoryList::goesWhenItIsClosed()
{
    m_list->close();
    QTRY_VERIFY(!m_list);
}

void TestHistoryList::returnPressesNothing()
{
    chooseRow(0);
    QTest::keyClick(m_list.data(), Qt::Key_Return);
    QVERIFY(m_takenBack.isEmpty());
    QVERIFY(m_list && m_list->isVisible());
}

QTEST_MAIN(TestHistoryList)
#include "test_historylist.moc"
