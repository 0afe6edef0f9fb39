// SPDX-License-Identifier: MIT
//
// The progress dialog over a file command.
#include "app/view/fileprogress.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QtTest>

namespace {

constexpr int kNever = 1000000000; // milliseconds

QProgressDialog *shown()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String("fileProgress") && widget->isVisible())
            return qobject_cast<QProgressDialog *>(widget);
    }
    return nullptr;
}

} // namespace

class TestProgress : public QObject {
    Q_OBJECT

private slots:
    void quickWorkShowsNothing();
    void tellsHowFarItIs();
    void withoutAnEndThereIsNoBar();
    void nobodyWorksBesideIt();
    void cancelEndsIt();
    void escapeCancels();
    void goesWithTheObject();
};

void TestProgress::quickWorkShowsNothing()
{
    FileProgress progress(QStringLiteral("Load"), kNever);
    for (int i = 0; i < 1000; ++i)
        QVERIFY(progress.step(i, 1000, i));
    QVERIFY(!shown());
    QVERIFY(!progress.isCancelled());
}

void TestProgress::tellsHowFarItIs()
{
    FileProgress progress(QStringLiteral("Load site.ipp"), 0);
    QVERIFY(progress.step(25, 100, 1160));
    QVERIFY(shown());
    QCOMPARE(shown()->windowTitle(), QStringLiteral("Load site.ipp"));
    QCOMPARE(shown()->findChild<QLabel *>()->text(), QStringLiteral("1,160 values"));
    QCOMPARE(shown()->value(), shown()->maximum() / 4);
    // The next look comes when it is due, and never runs over the end.
    QTRY_VERIFY(progress.step(300, 100, 2320) &&
                shown()->findChild<QLabel *>()->text() == QLatin1String("2,320 values"));
    QCOMPARE(shown()->value(), shown()->maximum());
}

void TestProgress::withoutAnEndThereIsNoBar()
{
    FileProgress progress(QStringLiteral("Load"), 0);
    QVERIFY(progress.step(25, 0, 1));
    QCOMPARE(shown()->maximum(), 0);
}

void TestProgress::nobodyWorksBesideIt()
{
    FileProgress progress(QStringLiteral("Load"), 0);
    QVERIFY(progress.step(0, 100, 0));
    QCOMPARE(shown()->windowModality(), Qt::ApplicationModal);
    QVERIFY(!shown()->parentWidget());
}

void TestProgress::cancelEndsIt()
{
    FileProgress progress(QStringLiteral("Load"), 0);
    QVERIFY(progress.step(0, 100, 0));
    QTest::mouseClick(shown()->findChild<QPushButton *>(), Qt::LeftButton);
    QTRY_VERIFY(!progress.step(1, 100, 1));
    QVERIFY(progress.isCancelled());
    QVERIFY(!progress.step(2, 100, 2)); // and stays so
}

void TestProgress::escapeCancels()
{
    FileProgress progress(QStringLiteral("Load"), 0);
    QVERIFY(progress.step(0, 100, 0));
    QTest::keyClick(shown(), Qt::Key_Escape);
    QTRY_VERIFY(!progress.step(1, 100, 1));
}

void TestProgress::goesWithTheObject()
{
    QPointer<QProgressDialog> box;
    {
        FileProgress progress(QStringLiteral("Load"), 0);
        QVERIFY(progress.step(0, 100, 0));
        box = shown();
        QVERIFY(box);
    }
    QVERIFY(!box);
}

QTEST_MAIN(TestProgress)
#include "test_progress.moc"
