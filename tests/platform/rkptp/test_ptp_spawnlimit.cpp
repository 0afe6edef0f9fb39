// SPDX-License-Identifier: MIT
// How often a client may be started, and how often a line may be written: sums with times, no clock.
#include "spawnlimit.h"
#include "timebase.h"

#include <QtTest>

using namespace rkptp;

namespace {

constexpr int64_t kSecond = kNanosPerSecond;
constexpr int64_t kBegin = 1000 * kSecond;

const std::string kKey("167772161/0");
const std::string kOther("167772161/127");

// How long a client rests after each of `failures` failures, which come as soon as it may be started again.
std::vector<int64_t> restsOf(int failures)
{
    SpawnLimit limit;
    std::vector<int64_t> rests;
    int64_t now = kBegin;
    for (int i = 0; i < failures; ++i) {
        limit.failed(kKey, now);
        const int64_t next = limit.allowedAt(kKey, now);
        rests.push_back((next - now) / kSecond);
        now = next;
    }
    return rests;
}

} // namespace

class TestPtpSpawnLimit : public QObject {
    Q_OBJECT
private slots:
    void theFirstMayStartAtOnce();
    void fiveStartsInFiveSeconds();
    void theRateIsThatOfAllClients();
    void aFailureCostsASecond();
    void restsGrowToAMinute();
    void rareFailuresStayCheap();
    void aQuietMinuteForgets();
    void oneClientsFailuresAreItsOwn();
    void heldBackByTheRateIsNoFailure();
    void oneLineAMinuteOfEachKind();
};

void TestPtpSpawnLimit::theFirstMayStartAtOnce()
{
    const SpawnLimit limit;
    QCOMPARE(limit.allowedAt(kKey, kBegin), kBegin);
    QVERIFY(!limit.failing(kKey, kBegin));
}

void TestPtpSpawnLimit::fiveStartsInFiveSeconds()
{
    SpawnLimit limit;
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(limit.allowedAt(kKey, kBegin + i), kBegin + i);
        limit.started(kBegin + i);
    }
    // The sixth waits until the first of the five is five seconds old, the seventh for the second.
    QCOMPARE(limit.allowedAt(kKey, kBegin + 5), kBegin + 5 * kSecond);
    limit.started(kBegin + 5 * kSecond);
    QCOMPARE(limit.allowedAt(kKey, kBegin + 5 * kSecond), kBegin + 5 * kSecond + 1);
    // Later nothing is held back any more.
    QCOMPARE(limit.allowedAt(kKey, kBegin + 20 * kSecond), kBegin + 20 * kSecond);
}

void TestPtpSpawnLimit::theRateIsThatOfAllClients()
{
    SpawnLimit limit;
    for (int i = 0; i < 5; ++i)
        limit.started(kBegin);
    QCOMPARE(limit.allowedAt(kOther, kBegin), kBegin + 5 * kSecond);
}

void TestPtpSpawnLimit::aFailureCostsASecond()
{
    SpawnLimit limit;
    limit.failed(kKey, kBegin);
    QCOMPARE(limit.allowedAt(kKey, kBegin), kBegin + kSecond);
    QVERIFY(limit.failing(kKey, kBegin));
    QVERIFY(limit.failing(kKey, kBegin + kSecond - 1));
    QVERIFY(!limit.failing(kKey, kBegin + kSecond));
}

void TestPtpSpawnLimit::restsGrowToAMinute()
{
    QCOMPARE(restsOf(9), (std::vector<int64_t>{1, 1, 5, 10, 20, 40, 60, 60, 60}));
}

// Three failures count together only when they come within ten seconds.
void TestPtpSpawnLimit::rareFailuresStayCheap()
{
    SpawnLimit limit;
    for (int i = 0; i < 20; ++i) {
        const int64_t now = kBegin + i * 5 * kSecond;
        limit.failed(kKey, now);
        QCOMPARE(limit.allowedAt(kKey, now), now + kSecond);
    }
    const int64_t closer = kBegin + 19 * 5 * kSecond + kSecond;
    limit.failed(kKey, closer);
    QCOMPARE(limit.allowedAt(kKey, closer), closer + 5 * kSecond);
}

void TestPtpSpawnLimit::aQuietMinuteForgets()
{
    SpawnLimit limit;
    int64_t now = kBegin;
    for (int i = 0; i < 5; ++i) {
        limit.failed(kKey, now);
        now = limit.allowedAt(kKey, now);
    }
    // A minute after the last rest is over the rest still doubles, and later it begins anew.
    SpawnLimit sameUntilHere = limit;
    sameUntilHere.failed(kKey, now + 60 * kSecond);
    QCOMPARE(sameUntilHere.allowedAt(kKey, now), now + 100 * kSecond);
    limit.failed(kKey, now + 60 * kSecond + 1);
    QCOMPARE(limit.allowedAt(kKey, now), now + 61 * kSecond + 1);
}

void TestPtpSpawnLimit::oneClientsFailuresAreItsOwn()
{
    SpawnLimit limit;
    for (int i = 0; i < 5; ++i)
        limit.failed(kKey, kBegin);
    QCOMPARE(limit.allowedAt(kOther, kBegin), kBegin);
    QVERIFY(!limit.failing(kOther, kBegin));
    QVERIFY(limit.failing(kKey, kBegin));
}

void TestPtpSpawnLimit::heldBackByTheRateIsNoFailure()
{
    SpawnLimit limit;
    for (int i = 0; i < 5; ++i)
        limit.started(kBegin);
    QVERIFY(limit.allowedAt(kKey, kBegin) > kBegin);
    QVERIFY(!limit.failing(kKey, kBegin));
    // Of the two reasons the longer one counts.
    limit.failed(kKey, kBegin);
    QCOMPARE(limit.allowedAt(kKey, kBegin), kBegin + 5 * kSecond);
    for (int i = 0; i < 4; ++i)
        limit.failed(kKey, kBegin);
    QCOMPARE(limit.allowedAt(kKey, kBegin), kBegin + 20 * kSecond);
}

void TestPtpSpawnLimit::oneLineAMinuteOfEachKind()
{
    LogLimit limit;
    QVERIFY(limit.allowed(1, kBegin));
    QVERIFY(!limit.allowed(1, kBegin));
    QVERIFY(limit.allowed(2, kBegin));
    QVERIFY(!limit.allowed(1, kBegin + 60 * kSecond - 1));
    QVERIFY(limit.allowed(1, kBegin + 60 * kSecond));
    // Those that were held back do not put the next one off.
    QVERIFY(!limit.allowed(2, kBegin + 59 * kSecond));
    QVERIFY(limit.allowed(2, kBegin + 60 * kSecond));
}

QTEST_GUILESS_MAIN(TestPtpSpawnLimit)
#include "test_ptp_spawnlimit.moc"
