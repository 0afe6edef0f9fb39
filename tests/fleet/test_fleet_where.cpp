// SPDX-License-Identifier: MIT
// --where: which servers are meant, and what is said about words that mean nothing.
#include "fleet/tool/where.h"

#include <QtTest>

using namespace fleet;

namespace {

void put(ServerView &view, const char *path, const char *name, const ops::Value &value)
{
    Document &document = view.configurations["day"].documents[keyOfPath(path)].document;
    document.path = path;
    document.by.who = "desk-3";
    document.atMs = 1000;
    document.values.emplace(name, value);
}

// A server that is on, with one channel that sends.
ServerView server(const char *name, const char *site = "london")
{
    ServerView view;
    view.site = site;
    view.name = name;
    view.ownSite = view.site == "london";
    view.inUse = "day";
    Alive alive;
    alive.version = "8.0.0";
    alive.inStep = true;
    alive.ptp = PtpSeen{"locked", 127, "00-1D-C1-FF-FE-00-00-01"};
    view.alive = alive;
    put(view, "KWX\\Config", "MaxIntChannels", ops::Value::ofNumber(2));
    put(view, "KWX\\Internal1\\IpConfig", "TransmitDestinationIp", ops::Value::ofText("239.1.1.7"));
    return view;
}

ServerView away(const char *name)
{
    ServerView view = server(name);
    view.alive.reset();
    return view;
}

} // namespace

class TestFleetWhere : public QObject {
    Q_OBJECT

private slots:
    void termsMeanServers_data();
    void termsMeanServers();
    void everyTextHasToHold();
    void otherSitesAreNamed();
    void itTellsWhatHasToBeRead();
    void aServerVouchesForWhatItHasSeen();
    void whatMeansNothingIsTold_data();
    void whatMeansNothingIsTold();
};

void TestFleetWhere::termsMeanServers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("meant"); // of lon-1 (on), lon-2 (away), par-1 (on), paris/lon-1 (on)
    QTest::newRow("a name") << QByteArray("lon-1") << QByteArray("lon-1");
    QTest::newRow("any letters") << QByteArray("lon-*") << QByteArray("lon-1 lon-2");
    QTest::newRow("one letter") << QByteArray("?[ao]?-1") << QByteArray("lon-1 par-1");
    QTest::newRow("some letters") << QByteArray("lon-[2-9]") << QByteArray("lon-2");
    QTest::newRow("or") << QByteArray("lon-2,par-*") << QByteArray("lon-2 par-1");
    QTest::newRow("with blanks") << QByteArray("lon-2, par-*") << QByteArray("lon-2 par-1");
    QTest::newRow("but not") << QByteArray("*,!lon-1") << QByteArray("lon-2 par-1");
    QTest::newRow("only not") << QByteArray("!lon-*") << QByteArray("par-1 paris/lon-1");
    QTest::newRow("another site") << QByteArray("paris/*") << QByteArray("paris/lon-1");
    QTest::newRow("all sites") << QByteArray("*/lon-1") << QByteArray("lon-1 paris/lon-1");
    QTest::newRow("by site") << QByteArray("site=paris") << QByteArray("paris/lon-1");
    QTest::newRow("not by site") << QByteArray("site!=paris") << QByteArray("lon-1 lon-2 par-1");
    QTest::newRow("a name like a word") << QByteArray("name=alive") << QByteArray();
    QTest::newRow("alive") << QByteArray("alive") << QByteArray("lon-1 par-1 paris/lon-1");
    QTest::newRow("away") << QByteArray("away") << QByteArray("lon-2");
    QTest::newRow("not away") << QByteArray("!away") << QByteArray("lon-1 par-1 paris/lon-1");
    QTest::newRow("a state") << QByteArray("state=off") << QByteArray("lon-2");
    QTest::newRow("a version") << QByteArray("version=8.*") << QByteArray("lon-1 par-1 paris/lon-1");
    QTest::newRow("PTP") << QByteArray("ptp=locked") << QByteArray("lon-1 par-1 paris/lon-1");
    QTest::newRow("no PTP, or nobody tells") << QByteArray("ptp!=locked") << QByteArray("lon-2");
    QTest::newRow("a PTP domain") << QByteArray("ptp.domain=127,ptp.domain=5")
                                  << QByteArray("lon-1 par-1 paris/lon-1");
    QTest::newRow("a master") << QByteArray("ptp.master=00-1D-*") << QByteArray("lon-1 par-1 paris/lon-1");
    QTest::newRow("a configuration") << QByteArray("configuration=night") << QByteArray();
    QTest::newRow("who changed it last")
        << QByteArray("by=desk-?") << QByteArray("lon-1 lon-2 par-1 paris/lon-1");
    QTest::newRow("a value") << QByteArray("1/video/tx.dst=239.1.1.7")
                             << QByteArray("lon-1 lon-2 par-1 paris/lon-1");
    QTest::newRow("a value of any channel")
        << QByteArray("*/video/tx.dst=239.1.*") << QByteArray("lon-1 lon-2 par-1 paris/lon-1");
    QTest::newRow("another value") << QByteArray("1/video/tx.dst!=239.1.1.7") << QByteArray();
    QTest::newRow("a value that is not there") << QByteArray("0/video/tx.dst=239.1.1.7") << QByteArray();
    QTest::newRow("no value") << QByteArray("0/video/tx.dst=") << QByteArray("lon-1 lon-2 par-1 paris/lon-1");
    QTest::newRow("either side") << QByteArray("1/video/dst=239.*")
                                 << QByteArray("lon-1 lon-2 par-1 paris/lon-1");
    QTest::newRow("of the server") << QByteArray("server/channels=2")
                                   << QByteArray("lon-1 lon-2 par-1 paris/lon-1");
}

void TestFleetWhere::termsMeanServers()
{
    QFETCH(QByteArray, text);
    const auto where = Where::parse({text});
    QVERIFY2(where, where ? "" : where.failure().text.constData());
    QByteArrayList meant;
    for (const ServerView &view :
         {server("lon-1"), away("lon-2"), server("par-1"), server("lon-1", "paris")}) {
        if (where->matches(view))
            meant.append(view.ownSite ? view.name : view.site + '/' + view.name);
    }
    QTEST(meant.join(' '), "meant");
}

void TestFleetWhere::everyTextHasToHold()
{
    const auto where = Where::parse({"lon-*", "alive"});
    QVERIFY(where && where->matches(server("lon-1")));
    QVERIFY(!where->matches(away("lon-1")) && !where->matches(server("par-1")));
    QCOMPARE(where->text(), QByteArray("lon-* and alive"));
    const auto all = Where::parse({});
    QVERIFY(all && all->matches(server("lon-1")) && all->matches(away("x")));
}

void TestFleetWhere::otherSitesAreNamed()
{
    const auto where = Where::parse({"paris/*,site=rome,lon-1", "site!=oslo"});
    QVERIFY(where);
    QCOMPARE(where->sites(), QByteArrayList({"paris", "rome"}));
}

// Of thousands of servers the documents are what takes its time.
void TestFleetWhere::itTellsWhatHasToBeRead()
{
    const auto cheap = Where::parse({"lon-*,alive", "ptp=locked"});
    QVERIFY(cheap && !cheap->needsDocuments() && !cheap->needsLast());
    const auto last = Where::parse({"lon-*", "by!=desk-3"});
    QVERIFY(last && !last->needsDocuments() && last->needsLast());
    const auto all = Where::parse({"lon-*,!1/video/tx.dst=239.*"});
    QVERIFY(all && all->needsDocuments());
}

void TestFleetWhere::aServerVouchesForWhatItHasSeen()
{
    ServerView view = server("lon-1");
    view.alive->configuration = "day";
    view.alive->revision = 7;
    view.shared = {{"/corvel/v1/london/servers/lon-1/day/kwx/config", 7}};
    QVERIFY(view.vouched());
    view.alive->refused = 1;
    QVERIFY(!view.vouched());
    view.alive->refused = 0;
    view.alive->inStep = false;
    QVERIFY(!view.vouched());
    view.alive->inStep = true;
    view.alive->revision = 6; // it has not seen the last one
    QVERIFY(!view.vouched());
    view.alive->revision = 7;
    view.shared["/corvel/v1/london/servers/lon-1/night/kwx/config"] = 3; // nor perhaps another configuration
    QVERIFY(!view.vouched());
    QVERIFY(!away("lon-1").vouched());
}

void TestFleetWhere::whatMeansNothingIsTold_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("nothing") << QByteArray() << QByteArray("\"\" is no name");
    QTest::newRow("a comma too many") << QByteArray("lon-1,") << QByteArray("\"\" is no name");
    QTest::newRow("only a mark") << QByteArray("!") << QByteArray("\"\" is no name");
    QTest::newRow("a mark twice") << QByteArray("!!x") << QByteArray("\"!x\" is no name");
    QTest::newRow("two names without comma") << QByteArray("lon-1 lon-2") << QByteArray("is no name");
    QTest::newRow("greater than") << QByteArray("version>8") << QByteArray("\"version>8\" is no name");
    QTest::newRow("a slip") << QByteArray("ptpp=locked")
                            << QByteArray("no such word: ptpp; did you mean ptp?");
    QTest::newRow("no word") << QByteArray("=locked") << QByteArray("no such word: ");
    QTest::newRow("no such place") << QByteArray("0/vidoe/rx.dst=x") << QByteArray("video");
    QTest::newRow("no such value") << QByteArray("0/video/rx.dts=x") << QByteArray("rx.dst");
    QTest::newRow("a path too deep") << QByteArray("a/b/c") << QByteArray("\"a/b/c\" is no name");
}

void TestFleetWhere::whatMeansNothingIsTold()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, told);
    const auto where = Where::parse({text});
    QVERIFY(!where);
    const QByteArray words = where.failure().text;
    QVERIFY2(words.startsWith("--where " + text + ": ") && words.contains(told), words.constData());
    QCOMPARE(where.failure().kind, ops::Failure::Input);
}

QTEST_APPLESS_MAIN(TestFleetWhere)
#include "test_fleet_where.moc"
