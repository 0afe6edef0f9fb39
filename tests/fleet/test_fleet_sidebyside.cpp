// SPDX-License-Identifier: MIT
// Work that is done several times at once: all of it, no more at a time than there are lanes, and no more
// begun after a failure.
#include "fleet/tool/sidebyside.h"

#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <set>
#include <thread>

using fleet::sideBySide;

class TestFleetSideBySide : public QObject {
    Q_OBJECT

private slots:
    void everythingIsDoneOnce_data();
    void everythingIsDoneOnce();
    void asManyAsThereAreLanesRunTogether();
    void afterAFailureNoneIsBegun();
    void oneLaneIsTheCallersThread();
};

void TestFleetSideBySide::everythingIsDoneOnce_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("lanes");
    QTest::newRow("nothing") << 0 << 16;
    QTest::newRow("one") << 1 << 16;
    QTest::newRow("fewer than lanes") << 3 << 16;
    QTest::newRow("many") << 1000 << 16;
    QTest::newRow("one lane") << 20 << 1;
}

void TestFleetSideBySide::everythingIsDoneOnce()
{
    QFETCH(int, count);
    QFETCH(int, lanes);
    std::vector<std::atomic<int>> done(static_cast<std::size_t>(count));
    std::vector<std::atomic<int>> busy(static_cast<std::size_t>(lanes));
    std::atomic<bool> alone{true};
    sideBySide(done.size(), busy.size(), [&](std::size_t at, std::size_t lane) {
        alone = busy.at(lane)++ == 0 && alone;
        ++done.at(at);
        --busy.at(lane);
        return true;
    });
    QVERIFY(alone);
    QVERIFY(std::all_of(done.begin(), done.end(), [](const auto &times) { return times == 1; }));
}

// Each waits until all four are there.
void TestFleetSideBySide::asManyAsThereAreLanesRunTogether()
{
    QSemaphore there, go;
    std::atomic<bool> met{true};
    sideBySide(4, 4, [&](std::size_t at, std::size_t) {
        there.release();
        if (at == 0) {
            met = there.tryAcquire(4, 30000);
            go.release(4);
        }
        go.acquire();
        return true;
    });
    QVERIFY(met);
}

void TestFleetSideBySide::afterAFailureNoneIsBegun()
{
    std::atomic<int> begun{0};
    QSemaphore failed;
    sideBySide(1000, 4, [&](std::size_t at, std::size_t) {
        ++begun;
        if (at == 2)
            failed.release(4);
        else
            failed.acquire(); // until then nobody goes on
        failed.release();
        return at != 2;
    });
    QVERIFY2(begun < 1000, qPrintable(QString::number(begun)));
    begun = 0;
    sideBySide(1000, 1, [&](std::size_t at, std::size_t) { return ++begun, at != 2; });
    QCOMPARE(begun.load(), 3); // exactly
}

void TestFleetSideBySide::oneLaneIsTheCallersThread()
{
    std::set<std::thread::id> threads;
    sideBySide(10, 1,
               [&](std::size_t, std::size_t) { return threads.insert(std::this_thread::get_id()), true; });
    QCOMPARE(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

QTEST_GUILESS_MAIN(TestFleetSideBySide)
#include "test_fleet_sidebyside.moc"
