// SPDX-License-Identifier: MIT
//
// When a keeper does what: bursts, pauses, a cluster that is away, refuses or has nothing. No time passes.
#include "fleet/keeper.h"
#include "fleet/memorycluster.h"
#include "fleet/memoryreplica.h"

#include <QtTest>

using namespace fleet;

class TestFleetKeeper : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void firstEditGoesUp();
    void aBurstIsOnePush();
    void aLongBurstIsNotPutOffForEver();
    void anEditSeenTooEarlyIsLookedForAgain();
    void whatComesIsTakenWithItsAuthor();
    void manyDocumentsGoInPieces();
    void tooLargeGoesOneByOne();
    void aSmallerLimitIsFoundByHalving();
    void whatIsLearntOfAnAuthorEndsWithTheNextEdit();
    void nothingIsAskedAtRest();
    void pausesGrowWhileItIsAway();
    void theEndOfALongCutIsSoonNoticed();
    void startsAreSpread();
    void watchThatEndsIsBegunAnew();
    void compactionIsNoDeletion();
    void notAllowedIsTold();
    void busyStoreIsTriedAgain();
    void foreignDocuments_data();
    void foreignDocuments();
    void tooLongToShare();
    void conflictIsKeptAndTold();
    void otherRoleIsRefused();
    void serverTellsThatItHasPutAllBack();
    void deletionThatOnlyADeskHasLeftGoesUp();
    void pushThatLandedBeforeTheLossIsKept();
    void aliveIsToldAtADesk();
    void statusCountsWhatWaits();
    void howLongItIsBehindIsTold();
    void whoDoubtsLooksAtOnce();
    void aDeskSoonHearsThatNobodyAnswers();
    void errorsOfTheStoreAreCounted();

private:
    std::unique_ptr<Keeper> keeper(Role role = Role::Server);
    void run(qint64 ms);
    void edit(const char *path, quint32 value);
    QByteArray remote(const char *path) const;
    void putRemote(const char *path, quint32 value, const QByteArray &who = "desk-3");
    void loseMemory(); // the cluster is set up again, empty

    qint64 m_nowMs = 0;
    quint32 m_chance = 0; // what chance gives, in per cent of its limit
    QStringList m_log;
    std::unique_ptr<MemoryCluster> m_cluster;
    std::unique_ptr<MemoryLink> m_link;
    std::unique_ptr<MemoryReplica> m_replica;
    std::unique_ptr<Keeper> m_keeper;
};

namespace {

const Place kPlace{"site", "server", "default"};

Document documentOf(const QByteArray &path, quint32 value)
{
    Document document;
    document.path = path;
    document.values["value"] = ops::Value::ofNumber(value);
    return document;
}

} // namespace

void TestFleetKeeper::init()
{
    m_nowMs = 1000;
    m_chance = 0;
    m_log.clear();
    m_cluster = std::make_unique<MemoryCluster>();
    m_link = std::make_unique<MemoryLink>(*m_cluster);
    m_replica = std::make_unique<MemoryReplica>();
    m_keeper = keeper();
}

void TestFleetKeeper::cleanup()
{
    m_keeper.reset();
}

std::unique_ptr<Keeper> TestFleetKeeper::keeper(Role role)
{
    Surroundings surroundings;
    surroundings.steadyMs = [this] { return m_nowMs; };
    surroundings.utcMs = [this] { return m_nowMs; };
    surroundings.random = [this](quint32 below) { return (below - 1) * m_chance / 100; };
    surroundings.log = [this](const QByteArray &line) { m_log << QString::fromUtf8(line); };
    surroundings.wake = [] {};
    const QByteArray who = role == Role::Server ? "server" : "desk-1";
    return std::make_unique<Keeper>(KeeperSettings{role, kPlace, who}, *m_replica, *m_link, surroundings);
}

// As its owner does: it is called when it wants to be, for so long.
void TestFleetKeeper::run(qint64 ms)
{
    const qint64 endMs = m_nowMs + ms;
    for (int calls = 0; m_nowMs <= endMs; ++calls) {
        QVERIFY2(calls < 200000, "busy without an end");
        m_link->deliver();
        const qint64 pause = m_keeper->work();
        m_nowMs += pause;
    }
    m_nowMs = endMs;
}

void TestFleetKeeper::edit(const char *path, quint32 value)
{
    m_replica->edit(keyOfPath(path), documentOf(path, value));
    m_keeper->touched();
}

QByteArray TestFleetKeeper::remote(const char *path) const
{
    const auto found = m_cluster->entries.find(documentPrefix(kPlace) + keyOfPath(path));
    if (found == m_cluster->entries.end())
        return "nothing";
    const ops::Outcome<Document> document = readDocument(found->second.value);
    if (!document)
        return "no document";
    return document->deleted()
               ? "deleted"
               : QByteArray::number(document->values.begin()->second.number) + " by " + document->by.who;
}

void TestFleetKeeper::putRemote(const char *path, quint32 value, const QByteArray &who)
{
    Document document = documentOf(path, value);
    document.by.who = who;
    m_cluster->put({{documentPrefix(kPlace) + keyOfPath(path), *writeDocument(document)}});
}

void TestFleetKeeper::firstEditGoesUp()
{
    edit("P", 1);
    run(100);
    QCOMPARE(remote("P"), QByteArray("1 by server"));
    QVERIFY(m_keeper->status().inStep);
    QCOMPARE(m_cluster->below(historyPrefix("site", "server") + "server/").size(), std::size_t(1));
    m_replica->edit("p", Document{"P", {}, 0, {}});
    m_keeper->touched();
    run(100);
    QCOMPARE(remote("P"), QByteArray("deleted"));
}

void TestFleetKeeper::aBurstIsOnePush()
{
    run(100);
    const int before = m_link->commits;
    for (quint32 value = 1; value <= 5; ++value) {
        edit("P", value);
        edit("Q", value);
        run(3);
        QCOMPARE(remote("P"), QByteArray("nothing"));
    }
    run(10);
    QCOMPARE(remote("P"), QByteArray("5 by server"));
    QCOMPARE(remote("Q"), QByteArray("5 by server"));
    QCOMPARE(m_link->commits, before + 1);
}

void TestFleetKeeper::aLongBurstIsNotPutOffForEver()
{
    run(100);
    for (quint32 value = 1; value <= 20; ++value) {
        edit("P", value);
        run(3);
    }
    QVERIFY(remote("P") != "nothing");
    run(50);
    QCOMPARE(remote("P"), QByteArray("20 by server"));
}

// The files are touched a moment before what was written can be seen.
void TestFleetKeeper::anEditSeenTooEarlyIsLookedForAgain()
{
    run(100);
    m_keeper->touched();
    run(6);
    m_replica->edit("p", documentOf("P", 1));
    run(8);
    QCOMPARE(remote("P"), QByteArray("1 by server"));
    // Without any touch it is found in the end.
    m_replica->edit("p", documentOf("P", 2));
    run(Gather::kSweepMs + 10);
    QCOMPARE(remote("P"), QByteArray("2 by server"));
}

void TestFleetKeeper::whatComesIsTakenWithItsAuthor()
{
    run(100);
    putRemote("P", 7);
    run(1);
    QCOMPARE(m_replica->values["p"].values.begin()->second.number, 7u);
    QCOMPARE(m_keeper->status().appliedFrom, QByteArray("from desk-3"));
    putRemote("P", 8, "desk-4");
    putRemote("Q", 8, "desk-3");
    run(1);
    QCOMPARE(m_keeper->status().appliedFrom, QByteArray("from desk-3, desk-4"));
    QCOMPARE(m_keeper->status().pushedMs, qint64(0));
}

void TestFleetKeeper::manyDocumentsGoInPieces()
{
    for (int path = 0; path < 150; ++path)
        edit(("P" + QByteArray::number(path)).constData(), 1);
    run(200);
    QCOMPARE(m_cluster->below(documentPrefix(kPlace)).size(), std::size_t(150));
    QVERIFY(m_link->largest <= kMaxPuts);
    QVERIFY(m_keeper->status().inStep);
}

void TestFleetKeeper::tooLargeGoesOneByOne()
{
    run(100);
    for (int path = 0; path < 3; ++path)
        edit(("P" + QByteArray::number(path)).constData(), 1);
    m_link->answer = Outcome::TooLarge;
    run(5);
    m_link->answer = Outcome::Done;
    m_link->largest = 0;
    run(60000);
    QCOMPARE(m_link->largest, std::size_t(2)); // a document and its receipt
    QVERIFY(m_keeper->status().inStep);
}

// The cluster may be set up to take fewer keys at a time.
void TestFleetKeeper::aSmallerLimitIsFoundByHalving()
{
    m_link->takes = 40;
    for (int path = 0; path < 1000; ++path)
        edit(("P" + QByteArray::number(path)).constData(), 1);
    run(200);
    QVERIFY(m_keeper->status().inStep);
    QVERIFY2(m_link->commits < 40, qPrintable(QString::number(m_link->commits)));
}

// Asked for once, as long as nobody writes.
void TestFleetKeeper::whatIsLearntOfAnAuthorEndsWithTheNextEdit()
{
    int asked = 0;
    m_replica->signer = [&](Document *document) {
        ++asked;
        document->by.user = "user" + QByteArray::number(document->values.begin()->second.number);
    };
    for (int path = 0; path < 300; ++path)
        edit(("P" + QByteArray::number(path)).constData(), 1);
    run(200);
    QCOMPARE(asked, 300);
    edit("P7", 2);
    run(200);
    QCOMPARE(asked, 301);
    const ops::Outcome<Document> document =
        readDocument(m_cluster->entries[documentPrefix(kPlace) + "p7"].value);
    QVERIFY(document);
    QCOMPARE(document->by.user, QByteArray("user2"));
}

void TestFleetKeeper::nothingIsAskedAtRest()
{
    edit("P", 1);
    run(100);
    const int before = m_link->commits;
    int ranges = 0;
    m_link->danger = [&] { ++ranges; };
    run(24 * 3600 * 1000);
    QCOMPARE(m_link->commits, before);
    // Twice for each range read.
    QVERIFY2(ranges > 2000 && ranges < 12000, qPrintable(QString::number(ranges)));
}

// It is connected and too busy to answer: more of the same would keep it so.
void TestFleetKeeper::pausesGrowWhileItIsAway()
{
    bool away = true;
    m_link->fault = [&] { return away ? MemoryLink::Fault::LostBefore : MemoryLink::Fault::None; };
    int calls = 0;
    m_link->danger = [&] { ++calls; };
    edit("P", 1);
    run(60000);
    QVERIFY2(calls < 30, qPrintable(QString::number(calls)));
    QVERIFY(!m_keeper->status().connected);
    QCOMPARE(m_keeper->status().reason, QByteArray("no way to the cluster"));
    QCOMPARE(m_keeper->status().waiting, 1);
    QCOMPARE(m_log.size(), 1);
    away = false;
    run(Keeper::kLongestPauseMs);
    QVERIFY(m_keeper->status().inStep);
    QCOMPARE(remote("P"), QByteArray("1 by server"));
}

void TestFleetKeeper::theEndOfALongCutIsSoonNoticed()
{
    m_chance = 100;
    m_link->cut = true;
    edit("P", 1);
    run(600000);
    QVERIFY(!m_keeper->status().connected);
    m_link->cut = false;
    run(Keeper::kCutOffPauseMs);
    QVERIFY(m_keeper->status().inStep);
}

void TestFleetKeeper::startsAreSpread()
{
    m_chance = 100;
    m_keeper = keeper();
    run(Keeper::kStartJitterMs - 100);
    QVERIFY(!m_keeper->status().connected);
    run(200);
    QVERIFY(m_keeper->status().connected);
}

void TestFleetKeeper::watchThatEndsIsBegunAnew()
{
    run(100);
    m_link->breakWatch(WatchSink::End::Gone, "no leader");
    putRemote("P", 1);
    run(1);
    QVERIFY(!m_keeper->status().connected);
    QCOMPARE(m_keeper->status().reason, QByteArray("the watch ended: no leader"));
    run(Keeper::kFirstPauseMs);
    QVERIFY(m_link->watches());
    QCOMPARE(m_replica->values.count("p"), std::size_t(1));
}

// Away for longer than the cluster remembers: what is missing there was not deleted.
void TestFleetKeeper::compactionIsNoDeletion()
{
    edit("P", 1);
    edit("Q", 1);
    run(100);
    m_link->cut = true;
    putRemote("Q", 2);
    m_cluster->compact();
    m_cluster->entries.erase(documentPrefix(kPlace) + "p");
    run(24 * 3600 * 1000);
    m_link->cut = false;
    run(120000);
    QCOMPARE(m_replica->values.count("p"), std::size_t(1));
    QCOMPARE(remote("P"), QByteArray("1 by server"));
    QCOMPARE(m_replica->values["q"].values.begin()->second.number, 2u);
}

void TestFleetKeeper::notAllowedIsTold()
{
    run(100);
    m_link->answer = Outcome::Denied;
    edit("P", 1);
    const int before = m_link->commits;
    run(200000);
    QVERIFY2(m_link->commits - before < 30, qPrintable(QString::number(m_link->commits - before)));
    QVERIFY(m_keeper->status().connected);
    QVERIFY(!m_keeper->status().inStep);
    QVERIFY(m_keeper->status().reason.startsWith("the cluster does not take it"));
    QCOMPARE(m_log.filter(QStringLiteral("does not take it")).size(), 1);
    m_link->answer = Outcome::Done;
    run(60000);
    QVERIFY(m_keeper->status().inStep);
    QCOMPARE(m_keeper->status().reason, QByteArray());
}

void TestFleetKeeper::busyStoreIsTriedAgain()
{
    run(100);
    bool busy = true;
    m_replica->busy = [&] { return busy; };
    putRemote("P", 1);
    run(1000);
    QCOMPARE(m_replica->values.count("p"), std::size_t(0));
    busy = false;
    run(2 * Keeper::kBusyMs);
    QCOMPARE(m_replica->values.count("p"), std::size_t(1));
}

void TestFleetKeeper::foreignDocuments_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("why");
    QTest::newRow("no document") << QByteArray("hello") << QByteArray("no JSON");
    QTest::newRow("a newer version") << QByteArray("{\"format\":2}") << QByteArray("newer version");
    QTest::newRow("10 MB") << QByteArray(10 << 20, 'x') << QByteArray("longer than");
    Document other = documentOf("Q", 1);
    other.by.who = "desk-3";
    QTest::newRow("of another path") << QByteArray::fromStdString(*writeDocument(other))
                                     << QByteArray("another key");
}

// One line, the document stays where it is, and everything else goes on.
void TestFleetKeeper::foreignDocuments()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, why);
    edit("P", 1);
    run(100);
    const std::string key = documentPrefix(kPlace) + "p";
    m_log.clear();
    m_cluster->put({{key, text.toStdString()}});
    run(100);
    edit("P", 2);
    edit("R", 3);
    run(3 * Keeper::kResyncMs);
    QCOMPARE(m_cluster->entries[key].value, text.toStdString());
    QCOMPARE(m_replica->values["p"].values.begin()->second.number, 2u);
    QCOMPARE(remote("R"), QByteArray("3 by server"));
    QCOMPARE(m_keeper->status().refused, 1);
    QCOMPARE(m_log.size(), 1);
    QVERIFY2(m_log.first().contains(QString::fromUtf8(why)), qPrintable(m_log.first()));
    putRemote("P", 4);
    run(100);
    QCOMPARE(m_keeper->status().refused, 0);
    QCOMPARE(remote("P"), QByteArray("2 by server"));
}

void TestFleetKeeper::tooLongToShare()
{
    Document document = documentOf("P", 1);
    document.values["long"] = ops::Value::ofText(QByteArray(kMaxDocumentBytes, 'x'));
    m_replica->edit("p", document);
    edit("Q", 1);
    run(1000);
    QCOMPARE(remote("P"), QByteArray("nothing"));
    QCOMPARE(remote("Q"), QByteArray("1 by server"));
    QCOMPARE(m_keeper->status().refused, 1);
    QCOMPARE(m_log.filter(QStringLiteral("P is not shared")).size(), 1);
}

void TestFleetKeeper::conflictIsKeptAndTold()
{
    edit("P", 1);
    run(100);
    m_link->cut = true;
    run(1);
    putRemote("P", 2);
    edit("P", 3);
    m_link->breakWatch(WatchSink::End::Gone);
    run(1000);
    m_link->cut = false;
    run(20000);
    QCOMPARE(remote("P"), QByteArray("3 by server"));
    const std::vector<Entry> conflicts = m_cluster->below(conflictPrefix(kPlace) + "p/");
    QCOMPARE(conflicts.size(), std::size_t(1));
    const ops::Outcome<Conflict> conflict = readConflict(conflicts.front().value);
    QVERIFY(conflict);
    QCOMPARE(conflict->overruled.by.who, QByteArray("desk-3"));
    QCOMPARE(conflict->stoodBy.who, QByteArray("server"));
    QCOMPARE(m_keeper->status().conflicts, 0);
}

void TestFleetKeeper::otherRoleIsRefused()
{
    edit("P", 1);
    run(100);
    m_keeper = keeper(Role::Desk);
    run(100000);
    QVERIFY(!m_keeper->status().connected);
    QVERIFY(m_keeper->status().reason.contains("leave the fleet first"));
    QCOMPARE(m_log.filter(QStringLiteral("leave the fleet first")).size(), 1);
}

void TestFleetKeeper::serverTellsThatItHasPutAllBack()
{
    edit("P", 1);
    run(100);
    QCOMPARE(m_cluster->entries[keptKey(kPlace)].value, std::string("1"));
    m_cluster->entries.clear();
    m_cluster->identity = 7;
    m_link->breakWatch(WatchSink::End::Gone);
    run(1000);
    QCOMPARE(remote("P"), QByteArray("1 by server"));
    QCOMPARE(m_cluster->entries[keptKey(kPlace)].value, std::string("7"));
}

void TestFleetKeeper::loseMemory()
{
    m_cluster->entries.clear();
    m_cluster->identity = 7;
    m_link->breakWatch(WatchSink::End::Gone);
}

// Else another desk's copy would come back, and this one would look like what both had agreed on for good.
void TestFleetKeeper::deletionThatOnlyADeskHasLeftGoesUp()
{
    m_keeper = keeper(Role::Desk);
    edit("P", 1);
    run(100);
    m_link->cut = true;
    m_replica->edit(keyOfPath("P"), Document{"P", {}, 0, {}});
    m_keeper->touched();
    loseMemory();
    m_cluster->put({{keptKey(kPlace), "7"}}); // the server has nothing
    m_link->cut = false;
    run(60000);
    QCOMPARE(remote("P"), QByteArray("deleted"));
}

// The store was busy when the push had landed; before it could be noted the cluster forgot it. What the
// server puts there then has not seen it.
void TestFleetKeeper::pushThatLandedBeforeTheLossIsKept()
{
    m_keeper = keeper(Role::Desk);
    bool held = true;
    m_replica->busy = [&] { return held && m_link->commits > 0; };
    edit("P", 1);
    run(100);
    QCOMPARE(remote("P"), QByteArray("1 by desk-1"));
    loseMemory();
    run(1000);
    held = false;
    run(1000);
    putRemote("P", 5, "server");
    run(1000);
    QCOMPARE(m_replica->values[keyOfPath("P")].values["value"].number, 5u);
    QCOMPARE(m_cluster->below(conflictPrefix(kPlace)).size(), std::size_t(1));
}

void TestFleetKeeper::aliveIsToldAtADesk()
{
    m_keeper = keeper(Role::Desk);
    run(100);
    QVERIFY(!m_keeper->status().serverAlive);
    m_link->keepAlive(aliveKey("site", "server"), "{}", 10);
    run(Keeper::kAliveMs);
    QVERIFY(m_keeper->status().serverAlive);
    run(60000);
    const KeeperStatus before = m_keeper->status();
    run(Keeper::kAliveMs);
    QVERIFY(m_keeper->status() == before); // a status that is told only when something is different
    m_cluster->entries.erase(aliveKey("site", "server"));
    const qint64 lastMs = m_nowMs;
    run(2 * Keeper::kAliveMs);
    QVERIFY(!m_keeper->status().serverAlive);
    QVERIFY(m_keeper->status().serverSeenMs <= lastMs + Keeper::kAliveMs);
    QVERIFY(m_keeper->status().serverSeenMs >= lastMs - Keeper::kAliveMs);
}

void TestFleetKeeper::statusCountsWhatWaits()
{
    run(100);
    m_link->cut = true;
    edit("P", 1);
    edit("Q", 1);
    run(20);
    QCOMPARE(m_keeper->status().waiting, 2);
    QVERIFY(!m_keeper->status().connected);
    m_link->cut = false;
    run(20000);
    QCOMPARE(m_keeper->status().waiting, 0);
    QVERIFY(m_keeper->status().inStep);
}

void TestFleetKeeper::howLongItIsBehindIsTold()
{
    QCOMPARE(m_keeper->status().behindMs, m_nowMs); // since it was started
    run(100000);
    QCOMPARE(m_keeper->status().behindMs, qint64(0));
    m_link->cut = true;
    const qint64 beganMs = m_nowMs;
    edit("P", 1);
    run(20000);
    const qint64 behindMs = m_keeper->status().behindMs;
    QVERIFY(behindMs >= beganMs && behindMs < beganMs + 100);
    edit("Q", 1);
    run(20000);
    QCOMPARE(m_keeper->status().behindMs, behindMs); // the first edit is the one that waits longest
    m_link->cut = false;
    run(20000);
    QCOMPARE(m_keeper->status().behindMs, qint64(0));
}

void TestFleetKeeper::whoDoubtsLooksAtOnce()
{
    run(1000);
    m_link->cut = true;
    run(1000);
    QVERIFY(m_keeper->status().connected); // it has had nothing to ask
    m_keeper->doubt();
    m_keeper->work();
    QVERIFY(!m_keeper->status().connected);
}

void TestFleetKeeper::aDeskSoonHearsThatNobodyAnswers()
{
    m_keeper = keeper(Role::Desk);
    run(1000);
    QVERIFY(m_keeper->status().connected);
    m_link->cut = true;
    run(Keeper::kAliveMs + 100);
    QVERIFY(!m_keeper->status().connected);
}

void TestFleetKeeper::errorsOfTheStoreAreCounted()
{
    run(100);
    QCOMPARE(m_keeper->status().storeErrors, 0);
    bool busy = true;
    m_replica->busy = [&] { return busy; };
    putRemote("P", 2);
    run(200);
    const int errors = m_keeper->status().storeErrors;
    QVERIFY(errors > 0);
    busy = false;
    run(1000);
    QVERIFY(m_keeper->status().inStep);
    QCOMPARE(m_keeper->status().storeErrors, errors);
}

QTEST_GUILESS_MAIN(TestFleetKeeper)
#include "test_fleet_keeper.moc"
