// SPDX-License-Identifier: MIT
// The time carried from the master, the meaning of a snapshot, and how often things may happen: all without a
// clock.
#include "snapshot.h"
#include "spawnlimit.h"
#include "timebase.h"

#include <QtTest>

using namespace rkptp;

namespace {

constexpr int64_t second = kNanosPerSecond;
constexpr int64_t tai = 1700000037 * second; // the master's time when the monotonic clock was 0

// A system whose clock stands `offset` before the master's UTC, and the master's syncs as ptp4l reports them.
struct Scene {
    int64_t offset = 5000;
    int16_t utc = 37;
    bool timescale = true;
    bool delayKnown = true;
    int64_t mono = 10 * second;
    Timebase base;

    int64_t masterAt(int64_t at) const { return tai + at; }
    int64_t realtimeAt(int64_t at) const { return masterAt(at) - (timescale ? utc * second : 0) + offset; }
    SyncSample sample(int64_t syncAt) const
    {
        return {offset, realtimeAt(syncAt), {utc, timescale, delayKnown, {1}}};
    }
    // One look, with the last sync 100 ms ago.
    bool feed()
    {
        mono += second / 4;
        return base.feed(sample(mono - second / 10), {realtimeAt(mono), mono});
    }
    int64_t error() const { return base.carried().ptpMinusMono + mono - masterAt(mono); }
};

} // namespace

class TestPtpTimebase : public QObject {
    Q_OBJECT
private slots:
    void carriesTheMastersTime_data();
    void carriesTheMastersTime();
    void firstLookOnlySetsTheBasis();
    void zeroOffsetWithoutADelayIsNotTaken();
    void changeOfUtcWaitsForALaterSync();
    void stepOfTheSystemClockDoesNotMoveTheTime_data();
    void stepOfTheSystemClockDoesNotMoveTheTime();
    void frozenIngressIsNoSync();
    void ingressFromTheFutureIsNotTaken();
    void goesOnFromAPredecessor();
    void statusNumbers_data();
    void statusNumbers();
    void failuresAreHeldBack();
    void quietMinuteForgetsFailures();
    void startsAreSpread();
    void logLines();
};

void TestPtpTimebase::carriesTheMastersTime_data()
{
    QTest::addColumn<int>("utc");
    QTest::addColumn<bool>("timescale");
    QTest::newRow("0") << 0 << true;
    QTest::newRow("37") << 37 << true;
    QTest::newRow("38") << 38 << true;
    QTest::newRow("negative") << -5 << true;
    QTest::newRow("no PTP timescale") << 37 << false;
}

void TestPtpTimebase::carriesTheMastersTime()
{
    QFETCH(int, utc);
    QFETCH(bool, timescale);
    Scene scene;
    scene.utc = static_cast<int16_t>(utc);
    scene.timescale = timescale;
    scene.feed();
    QVERIFY(scene.feed());
    QCOMPARE(scene.error(), 0);
    QCOMPARE(scene.base.carried().offset, scene.offset);
    QCOMPARE(scene.base.carried().lastSync, scene.mono - second / 10);
}

void TestPtpTimebase::firstLookOnlySetsTheBasis()
{
    Scene scene;
    QVERIFY(!scene.feed());
    QVERIFY(!scene.base.carried().valid);
    QVERIFY(!scene.base.carried().freshAt(scene.mono));
}

void TestPtpTimebase::zeroOffsetWithoutADelayIsNotTaken()
{
    Scene scene;
    scene.delayKnown = false;
    for (int i = 0; i < 5; ++i)
        QVERIFY(!scene.feed());
    scene.delayKnown = true;
    QVERIFY(!scene.feed());
    QVERIFY(scene.feed());
}

// ptp4l applies a new UTC offset with the announce but reports the offset of the sync before until the next
// one.
void TestPtpTimebase::changeOfUtcWaitsForALaterSync()
{
    Scene scene;
    scene.feed();
    scene.feed();
    const int64_t now = scene.mono + second / 4;
    SyncSample stale = scene.sample(now - 1000);
    stale.basis.appliedUtcOffset = 38;
    const ClockReading clocks = {scene.realtimeAt(now), now};
    QVERIFY(!scene.base.feed(stale, clocks));
    QVERIFY(!scene.base.feed(stale, {clocks.realtime + second / 4, clocks.monotonic + second / 4}));
    scene.mono = now + second / 4;
    QCOMPARE(scene.error(), 0);
    SyncSample later = scene.sample(now + second / 3);
    later.basis.appliedUtcOffset = 38;
    later.masterOffset += second;
    QVERIFY(scene.base.feed(later, {scene.realtimeAt(now + second / 2), now + second / 2}));
    QCOMPARE(scene.error(), 0);
}

void TestPtpTimebase::stepOfTheSystemClockDoesNotMoveTheTime_data()
{
    QTest::addColumn<qint64>("step");
    QTest::newRow("hour forward") << qint64{3600 * second};
    QTest::newRow("hour back") << qint64{-3600 * second};
    QTest::newRow("tenth forward") << qint64{second / 10};
    QTest::newRow("tenth back") << qint64{-second / 10};
    QTest::newRow("millisecond back") << qint64{-second / 1000};
}

void TestPtpTimebase::stepOfTheSystemClockDoesNotMoveTheTime()
{
    QFETCH(qint64, step);
    Scene scene;
    scene.feed();
    scene.feed();
    // The step falls between the sync and the look: offset and ingress are those of before.
    const int64_t now = scene.mono + second / 4;
    const SyncSample before = scene.sample(now - second / 10);
    scene.offset += step;
    scene.mono = now;
    QVERIFY(!scene.base.feed(before, {scene.realtimeAt(now), now}));
    QCOMPARE(scene.error(), 0);
    scene.mono += second / 20;
    QVERIFY(!scene.base.feed(before, {scene.realtimeAt(scene.mono), scene.mono}));
    QCOMPARE(scene.error(), 0);
    QVERIFY(scene.feed());
    QCOMPARE(scene.error(), 0);
    QCOMPARE(scene.base.carried().offset, scene.offset);
}

// After the death of the master ptp4l goes on reporting the last offset and ingress time.
void TestPtpTimebase::frozenIngressIsNoSync()
{
    Scene scene;
    scene.feed();
    scene.feed();
    const SyncSample frozen = scene.sample(scene.mono - second / 10);
    const int64_t last = scene.base.carried().lastSync;
    for (int i = 1; i <= 16; ++i) {
        const int64_t at = scene.mono + i * second / 4;
        QVERIFY(!scene.base.feed(frozen, {scene.realtimeAt(at), at}));
    }
    QCOMPARE(scene.base.carried().lastSync, last);
    QVERIFY(scene.base.carried().freshAt(last + kSyncFreshness));
    QVERIFY(!scene.base.carried().freshAt(last + kSyncFreshness + 1));
}

void TestPtpTimebase::ingressFromTheFutureIsNotTaken()
{
    Scene scene;
    scene.feed();
    const SyncSample future = scene.sample(scene.mono + second);
    QVERIFY(!scene.base.feed(future, {scene.realtimeAt(scene.mono + 1), scene.mono + 1}));
    QVERIFY(!scene.base.carried().valid);
}

void TestPtpTimebase::goesOnFromAPredecessor()
{
    Scene scene;
    scene.feed();
    scene.feed();
    const Timebase next(scene.base.carried());
    QVERIFY(next.carried().valid);
    QCOMPARE(next.carried().ptpMinusMono, scene.base.carried().ptpMinusMono);
}

void TestPtpTimebase::statusNumbers_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("syncAge"); // ms, -1 for never
    QTest::addColumn<int>("wish");    // 0 any, 1 the one that is there, 2 another, 3 unreadable
    QTest::addColumn<int>("status");
    const int none = int(ClientState::None), starting = int(ClientState::Starting);
    const int listening = int(ClientState::Listening), following = int(ClientState::Following);
    const int faulty = int(ClientState::Faulty);
    // clang-format off
    QTest::newRow("no client")                << none      << -1   << 0 << RKPTP_NO_CLIENT;
    QTest::newRow("no client, was locked")    << none      << 100  << 0 << RKPTP_NO_CLIENT;
    QTest::newRow("starting")                 << starting  << -1   << 0 << RKPTP_STARTING;
    QTest::newRow("starting again")           << starting  << 100  << 0 << RKPTP_STARTING;
    QTest::newRow("listening")                << listening << -1   << 0 << RKPTP_LISTENING;
    QTest::newRow("listening, was locked")    << listening << 100  << 0 << RKPTP_SYNC_LOST;
    QTest::newRow("following, no sync yet")   << following << -1   << 0 << RKPTP_LISTENING;
    QTest::newRow("locked")                   << following << 100  << 0 << RKPTP_LOCKED;
    QTest::newRow("locked, last moment")      << following << 3000 << 0 << RKPTP_LOCKED;
    QTest::newRow("lost")                     << following << 3001 << 0 << RKPTP_SYNC_LOST;
    QTest::newRow("locked, as asked")         << following << 100  << 1 << RKPTP_LOCKED;
    QTest::newRow("another one")              << following << 100  << 2 << RKPTP_OTHER_GRANDMASTER;
    QTest::newRow("another one, lost")        << following << 4000 << 2 << RKPTP_SYNC_LOST;
    QTest::newRow("unreadable fits nobody")   << following << 100  << 3 << RKPTP_OTHER_GRANDMASTER;
    QTest::newRow("faulty")                   << faulty    << -1   << 0 << RKPTP_PORT_FAULTY;
    QTest::newRow("faulty, was locked")       << faulty    << 100  << 0 << RKPTP_PORT_FAULTY;
    // clang-format on
}

void TestPtpTimebase::statusNumbers()
{
    QFETCH(int, state);
    QFETCH(int, syncAge);
    QFETCH(int, wish);
    QFETCH(int, status);
    const ClockId there = {1, 2, 3, 4, 5, 6, 7, 8};
    const GrandmasterWish wishes[] = {{true, {}}, {false, there}, {false, {9}}, {false, {}}};
    Snapshot snapshot;
    snapshot.state = static_cast<ClientState>(state);
    snapshot.grandmaster = there;
    snapshot.carried.valid = syncAge >= 0;
    const int64_t now = 1000 * second;
    snapshot.carried.lastSync = now - syncAge * kNanosPerMilli;
    QCOMPARE(statusOf(snapshot, wishes[wish], now), status);
}

void TestPtpTimebase::failuresAreHeldBack()
{
    SpawnLimit limit;
    int64_t now = 100 * second;
    QCOMPARE(limit.allowedAt("a", now), now);
    for (int rest : {1, 1, 5, 10, 20, 40, 60, 60}) {
        limit.failed("a", now);
        QCOMPARE(limit.allowedAt("a", now), now + rest * second);
        QVERIFY(limit.failing("a", now));
        QVERIFY(!limit.failing("b", now));
        now = limit.allowedAt("a", now);
        QVERIFY(!limit.failing("a", now));
    }
    QCOMPARE(limit.allowedAt("b", now), now);
}

void TestPtpTimebase::quietMinuteForgetsFailures()
{
    SpawnLimit limit;
    int64_t now = 100 * second;
    for (int i = 0; i < 5; ++i) {
        limit.failed("a", now);
        now = limit.allowedAt("a", now);
    }
    now += 61 * second;
    limit.failed("a", now);
    QCOMPARE(limit.allowedAt("a", now), now + second);
}

void TestPtpTimebase::startsAreSpread()
{
    SpawnLimit limit;
    const int64_t now = 100 * second;
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(limit.allowedAt("a", now + i), now + i);
        limit.started(now + i);
    }
    QCOMPARE(limit.allowedAt("b", now + 5), now + 5 * second);
    QVERIFY(!limit.failing("b", now + 5));
    QCOMPARE(limit.allowedAt("b", now + 5 * second), now + 5 * second);
}

void TestPtpTimebase::logLines()
{
    LogLimit limit;
    QVERIFY(limit.allowed(1, 0));
    QVERIFY(!limit.allowed(1, 59 * second));
    QVERIFY(limit.allowed(2, 59 * second));
    QVERIFY(limit.allowed(1, 60 * second));
    QVERIFY(!limit.allowed(1, 61 * second));
}

QTEST_APPLESS_MAIN(TestPtpTimebase)
#include "test_ptp_timebase.moc"
