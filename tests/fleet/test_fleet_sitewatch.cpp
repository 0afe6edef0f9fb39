// SPDX-License-Identifier: MIT
// One watch for a desk with many servers: everybody gets their own part, and nothing falls through.
#include "fleet/member.h"
#include "fleet/service/sitewatch.h"

#include <QtTest>

using namespace fleet;

namespace {

const std::string kServers = "/corvel/v1/london/servers/";
const std::string kOne = kServers + "lon-1/day/";
const std::string kTwo = kServers + "lon-2/day/";

// Writes down what it is told.
class Sink : public WatchSink {
public:
    std::vector<std::string> told;

    void watching() override { told.emplace_back("watching"); }
    void events(const std::vector<Entry> &entries, std::int64_t revision) override
    {
        for (const Entry &entry : entries)
            told.push_back(entry.key.substr(kServers.size()) + (entry.deleted ? " gone" : "=" + entry.value));
        told.push_back("@" + std::to_string(revision));
    }
    void lost(End, const std::string &reason) override { told.push_back("lost " + reason); }
};

using Told = std::vector<std::string>;

Entry put(const std::string &key, std::int64_t revision, const std::string &value = "x")
{
    return {key, value, revision, false};
}

} // namespace

class TestFleetSiteWatch : public QObject {
    Q_OBJECT

private slots:
    void init();
    void everybodyGetsTheirOwnPart();
    void whoComesAMomentLaterMissesNothing();
    void whoComesTooLateGetsAWatchOfItsOwn();
    void whatEndsIsToldToAllAndBegunAnew();
    void whoLeftHearsNothing();
    void withoutARoleForAllEverybodyWatchesAlone();
    void whoLivesIsKnownWithoutAsking();
    void withoutAnAnswerNothingIsKnown();
    void keysAreListedOnce();

private:
    Member m_member;
    std::int64_t m_now = 0;
    std::unique_ptr<SiteWatch> m_site;
};

void TestFleetSiteWatch::init()
{
    m_site.reset();
    m_member.clear();
    m_now = 100000;
    m_site = std::make_unique<SiteWatch>(m_member, kServers, [this] { return m_now; });
}

void TestFleetSiteWatch::everybodyGetsTheirOwnPart()
{
    Sink one, two;
    const auto first = m_site->watch(kOne, 10, &one);
    const auto second = m_site->watch(kTwo, 11, &two);
    QCOMPARE(m_member.watches.size(), std::size_t(1));
    QCOMPARE(m_member.watches[0].prefix, kServers);
    WatchSink *all = m_member.watches[0].sink;
    all->watching();
    all->events({put(kOne + "kwx", 12), put(kTwo + "kwx", 12)}, 12);
    all->events({put(kServers + "lon-1/dayly/kwx", 13), put(kServers + "lon-1/alive", 13)}, 13);
    QCOMPARE(one.told, (Told{"watching", "lon-1/day/kwx=x", "@12"}));
    QCOMPARE(two.told, (Told{"watching", "lon-2/day/kwx=x", "@12"}));
}

void TestFleetSiteWatch::whoComesAMomentLaterMissesNothing()
{
    Sink one, two;
    const auto first = m_site->watch(kOne, 10, &one);
    WatchSink *all = m_member.watches[0].sink;
    all->watching();
    all->events({put(kTwo + "old", 11), put(kTwo + "new", 13)}, 13);
    const auto second = m_site->watch(kTwo, 12, &two); // has read as of 11
    QCOMPARE(two.told, (Told{"watching", "lon-2/day/new=x", "@13"}));
    QVERIFY(m_member.watches.size() == 1 && one.told.size() == 1);
}

void TestFleetSiteWatch::whoComesTooLateGetsAWatchOfItsOwn()
{
    Sink one, two, three;
    const auto first = m_site->watch(kOne, 10, &one);
    const auto early = m_site->watch(kTwo, 9, &two);
    QCOMPARE(m_member.watches.size(), std::size_t(2));
    QCOMPARE(m_member.watches[1].prefix, kTwo);
    QCOMPARE(m_member.watches[1].from, std::int64_t(9));
    std::int64_t revision = 10;
    for (std::size_t count = 0; count <= SiteWatch::kKept; ++count, ++revision)
        m_member.watches[0].sink->events({put(kTwo + "kwx", revision)}, revision);
    const auto late = m_site->watch(kTwo, 10, &three); // the first change is no longer kept
    QCOMPARE(m_member.watches.size(), std::size_t(3));
}

void TestFleetSiteWatch::whatEndsIsToldToAllAndBegunAnew()
{
    Sink one, two;
    auto first = m_site->watch(kOne, 10, &one);
    auto second = m_site->watch(kTwo, 10, &two);
    m_member.watches[0].sink->lost(WatchSink::End::Gone, "no answer");
    QCOMPARE(one.told, (Told{"lost no answer"}));
    QCOMPARE(two.told, one.told);
    first.reset();
    first = m_site->watch(kOne, 20, &one);
    QCOMPARE(m_member.watches.size(), std::size_t(2));
    QCOMPARE(m_member.watches[1].from, std::int64_t(20));
    m_member.watches[1].sink->events({put(kOne + "kwx", 21), put(kTwo + "kwx", 21)}, 21);
    QCOMPARE(one.told.back(), std::string("@21"));
    QCOMPARE(two.told.size(), std::size_t(1)); // lost() was its last call
}

void TestFleetSiteWatch::whoLeftHearsNothing()
{
    Sink one;
    auto first = m_site->watch(kOne, 10, &one);
    first.reset();
    m_member.watches[0].sink->events({put(kOne + "kwx", 11)}, 11);
    QVERIFY(one.told.empty());
}

void TestFleetSiteWatch::withoutARoleForAllEverybodyWatchesAlone()
{
    Sink one;
    auto first = m_site->watch(kOne, 10, &one);
    m_member.watches[0].sink->lost(WatchSink::End::Denied, "permission denied");
    first = m_site->watch(kOne, 11, &one);
    QCOMPARE(m_member.watches.size(), std::size_t(2));
    QCOMPARE(m_member.watches[1].prefix, kOne);
}

void TestFleetSiteWatch::whoLivesIsKnownWithoutAsking()
{
    Sink one;
    const std::string alive = kServers + "lon-1/alive", other = kServers + "lon-2/alive";
    m_member.values[alive] = "here";
    const auto first = m_site->watch(kOne, 1, &one);
    m_member.watches[0].sink->watching();
    Range range;
    QCOMPARE(m_site->get(alive, &range), Outcome::Done);
    QCOMPARE(m_site->get(other, &range), Outcome::Done);
    const int calls = m_member.calls;
    QCOMPARE(m_site->get(alive, &range), Outcome::Done);
    QVERIFY(range.entries.size() == 1 && range.entries[0].value == "here");
    QCOMPARE(m_site->get(other, &range), Outcome::Done);
    QVERIFY(range.entries.empty());
    m_member.watches[0].sink->events({{alive, "", 5, true}, put(other, 5, "back")}, 5);
    m_site->get(alive, &range);
    QVERIFY(range.entries.empty());
    m_site->get(other, &range);
    QVERIFY(range.entries.size() == 1 && range.entries[0].value == "back");
    QCOMPARE(m_member.calls, calls);
    m_now += SiteWatch::kAskMs; // now and then it is asked whether anybody answers
    m_site->get(alive, &range);
    m_site->get(other, &range);
    QCOMPARE(m_member.calls, calls + 1);
}

void TestFleetSiteWatch::withoutAnAnswerNothingIsKnown()
{
    Sink one;
    const std::string alive = kServers + "lon-1/alive";
    const auto first = m_site->watch(kOne, 1, &one);
    m_member.watches[0].sink->watching();
    Range range;
    QCOMPARE(m_site->get(alive, &range), Outcome::Done);
    m_member.answer = Outcome::Unreachable;
    QCOMPARE(m_site->range(kOne, &range), Outcome::Unreachable);
    QCOMPARE(m_site->get(alive, &range), Outcome::Unreachable);
    m_member.answer = Outcome::Done;
    QCOMPARE(m_site->get(alive, &range), Outcome::Done);
}

void TestFleetSiteWatch::keysAreListedOnce()
{
    Sink one;
    m_member.values = {{kOne + "kwx", "x"}, {kTwo + "kwx", "x"}};
    const auto first = m_site->watch(kOne, 1, &one);
    m_member.watches[0].sink->watching();
    std::vector<std::string> keys;
    QCOMPARE(m_site->keys(kServers, &keys), Outcome::Done);
    const int calls = m_member.calls;
    m_member.watches[0].sink->events({put(kServers + "lon-3/day/kwx", 2), {kTwo + "kwx", "", 2, true}}, 2);
    QCOMPARE(m_site->keys(kServers, &keys), Outcome::Done);
    QCOMPARE(keys, (std::vector<std::string>{kOne + "kwx", kServers + "lon-3/day/kwx"}));
    QCOMPARE(m_member.calls, calls);
    m_now += SiteWatch::kListMs;
    QCOMPARE(m_site->keys(kServers, &keys), Outcome::Done);
    QCOMPARE(m_member.calls, calls + 1);
}

QTEST_APPLESS_MAIN(TestFleetSiteWatch)
#include "test_fleet_sitewatch.moc"
