// SPDX-License-Identifier: MIT
// What only the settings of several servers together show.
#include "ops/batch.h"
#include "ops/sitepreflight.h"

#include <QtTest>

namespace {

ops::ServerSettings server(const char *name, const QByteArrayList &lines)
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    for (const QByteArray &line : lines) {
        const auto done = ops::setLines(line, ops::Rules(), draft);
        if (!done)
            qFatal("%s", done.failure().text.constData());
    }
    ops::Snapshot values;
    for (const ops::Change &change : draft.changes())
        values.set(change.path, change.name, *change.after);
    ops::ServerSettings settings;
    settings.site = "london";
    settings.server = name;
    settings.values = values;
    return settings;
}

ops::ServerSettings seeing(const char *name, const QByteArray &state, const char *grandmaster,
                           quint32 domain = 127)
{
    ops::ServerSettings settings = server(name, {});
    settings.ptpState = state;
    settings.grandmaster = grandmaster;
    settings.ptpDomain = domain;
    return settings;
}

// The same words with an interface for what they set up.
QByteArray on(const char *interface, QByteArray line)
{
    const QByteArray side = line.contains("tx.") ? " tx.if=" : " rx.if=";
    return line + side + interface;
}

QByteArrayList told(const std::vector<ops::ServerSettings> &servers)
{
    QByteArrayList lines;
    for (const ops::Finding &finding : ops::runSitePreflight(servers))
        lines.append(finding.place + ' ' + finding.rule);
    return lines;
}

const QByteArray kSends = "0/video tx.dst=239.1.1.1:5000 tx.use=dst,dst-port";
const QByteArray kReceives = "0/video rx.dst=239.1.1.1:5000 rx.use=dst,dst-port";

} // namespace

class TestSitePreflight : public QObject {
    Q_OBJECT

private slots:
    void aPlantThatFitsIsSilent();
    void aGroupOfTwoSendersIsAnError();
    void twiceOnOneServerIsThatServersOwn();
    void anotherPortIsAnotherStream();
    void whatNobodySendsIsANote();
    void aDomainUnlikeTheOthersIsTold();
    void noServersNoFindings();
    void sitesHaveNothingToDoWithEachOther();
    void inTwoNetworksAGroupIsAWarning();
    void whatIsSentInAnotherNetworkIsANote();
    void aServerTellsHowLargeItsNetworkIs();
    void anotherDomainOfAWholeNetworkIsANote();
    void ptpAsItIsSeen_data();
    void ptpAsItIsSeen();
    void mastersOfOneDomainAreTheSame();
};

void TestSitePreflight::aPlantThatFitsIsSilent()
{
    QCOMPARE(told({server("lon-1", {kSends}), server("lon-2", {kReceives})}), QByteArrayList());
}

void TestSitePreflight::aGroupOfTwoSendersIsAnError()
{
    QCOMPARE(told({server("lon-1", {kSends}), server("lon-2", {kSends})}),
             QByteArrayList({"lon-2 0/video tx.dst group-sent-twice"}));
}

void TestSitePreflight::twiceOnOneServerIsThatServersOwn()
{
    const QByteArray again = QByteArray(kSends).replace("0/video", "1/video");
    QCOMPARE(told({server("lon-1", {kSends, again})}), QByteArrayList());
}

void TestSitePreflight::anotherPortIsAnotherStream()
{
    const QByteArray other = QByteArray(kSends).replace(":5000", ":5002");
    QCOMPARE(told({server("lon-1", {kSends}), server("lon-2", {other})}), QByteArrayList());
}

void TestSitePreflight::whatNobodySendsIsANote()
{
    const auto findings = ops::runSitePreflight({server("lon-2", {kReceives})});
    QCOMPARE(findings.size(), std::size_t(1));
    QCOMPARE(findings[0].rule, "group-nobody-sends");
    QVERIFY(!ops::hasTrouble(findings));
}

void TestSitePreflight::aDomainUnlikeTheOthersIsTold()
{
    const QByteArray ptp = "0 clock=sw-ptp domain=127";
    const QByteArray other = "0 clock=sw-ptp domain=5";
    QCOMPARE(told({server("lon-1", {ptp}), server("lon-2", {ptp}), server("lon-3", {other})}),
             QByteArrayList({"lon-3 0 domain ptp-domains-differ"}));
}

void TestSitePreflight::noServersNoFindings()
{
    QCOMPARE(told({}), QByteArrayList());
}

void TestSitePreflight::sitesHaveNothingToDoWithEachOther()
{
    ops::ServerSettings other = server("paris/par-1", {kSends});
    other.site = "paris";
    QCOMPARE(told({server("lon-1", {kSends}), other}), QByteArrayList());
}

void TestSitePreflight::inTwoNetworksAGroupIsAWarning()
{
    const auto red = server("lon-1", {on("10.1.0.1", kSends)});
    const auto blue = server("lon-2", {on("10.2.0.2", kSends)});
    QCOMPARE(told({red, blue}), QByteArrayList({"lon-2 0/video tx.dst group-sent-in-two-networks"}));
    const ops::Findings findings = ops::runSitePreflight({red, blue});
    QCOMPARE(findings[0].reason, QByteArray("239.1.1.1:5000 is sent by lon-1 0/video tx.dst as well, in "
                                            "10.1.0.0/24; here it is 10.2.0.0/24"));
    QVERIFY(findings[0].severity == ops::Severity::Warning);
    // A third one in the first network meets that one, not the other.
    const auto third = server("lon-3", {on("10.1.0.3", kSends)});
    QCOMPARE(told({red, blue, third}).last(), QByteArray("lon-3 0/video tx.dst group-sent-twice"));
    // Without an interface it may go anywhere.
    QCOMPARE(told({red, server("lon-2", {kSends})}),
             QByteArrayList({"lon-2 0/video tx.dst group-sent-twice"}));
}

void TestSitePreflight::whatIsSentInAnotherNetworkIsANote()
{
    const auto sends = server("lon-1", {on("10.1.0.1", kSends)});
    const auto receives = server("lon-2", {on("10.2.0.2", kReceives)});
    QCOMPARE(told({sends, receives}), QByteArrayList({"lon-2 0/video rx.dst group-sent-elsewhere"}));
    QVERIFY(!ops::hasTrouble(ops::runSitePreflight({sends, receives})));
    QCOMPARE(told({sends, server("lon-2", {on("10.1.0.2", kReceives)})}), QByteArrayList());
}

void TestSitePreflight::aServerTellsHowLargeItsNetworkIs()
{
    auto sends = server("lon-1", {on("10.1.0.1", kSends)});
    const auto receives = server("lon-2", {on("10.1.7.2", kReceives)});
    QCOMPARE(told({sends, receives}).size(), 1); // as /24 they are two
    sends.networks.push_back({0x0a010000, 0xffff0000});
    QCOMPARE(told({sends, receives}), QByteArrayList());
    sends.networks.push_back({0x0a010700, 0xffffff00}); // the smaller one counts
    QCOMPARE(told({sends, receives}).size(), 1);
}

void TestSitePreflight::anotherDomainOfAWholeNetworkIsANote()
{
    const QByteArray ptp = "0 clock=sw-ptp domain=127\n0/video rx.if=10.1.0.1";
    const QByteArray other = "0 clock=sw-ptp domain=5\n0/video rx.if=10.2.0.1";
    std::vector<ops::ServerSettings> servers{server("lon-1", {ptp}), server("lon-2", {ptp}),
                                             server("lon-3", {ptp}), server("lon-4", {other})};
    QVERIFY(ops::hasTrouble(ops::runSitePreflight(servers))); // one server alone is a mistake
    servers.push_back(server("lon-5", {other}));
    QCOMPARE(told(servers).size(), 2);
    QVERIFY(!ops::hasTrouble(ops::runSitePreflight(servers)));
    servers.push_back(server("lon-6", {QByteArray(ptp).replace("10.1", "10.2")}));
    QVERIFY(ops::hasTrouble(ops::runSitePreflight(servers)));
}

void TestSitePreflight::ptpAsItIsSeen_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<int>("findings");
    for (const char *fine : {"", "no ptp", "not running", "starting", "locked", "system client"})
        QTest::newRow(*fine ? fine : "not known") << QByteArray(fine) << 0;
    for (const char *trouble :
         {"no master", "other master", "stale", "no interface", "not allowed", "failed"})
        QTest::newRow(trouble) << QByteArray(trouble) << 1;
}

void TestSitePreflight::ptpAsItIsSeen()
{
    QFETCH(QByteArray, state);
    const auto findings = ops::runSitePreflight({seeing("lon-1", state, "")});
    QTEST(static_cast<int>(findings.size()), "findings");
    if (!findings.empty())
        QCOMPARE(findings[0].rule, "ptp-trouble");
}

void TestSitePreflight::mastersOfOneDomainAreTheSame()
{
    const auto one = seeing("lon-1", "locked", "00-1D-C1-FF-FE-00-00-01");
    const auto two = seeing("lon-2", "locked", "00-1D-C1-FF-FE-00-00-02");
    QCOMPARE(told({one, two}), QByteArrayList({"lon-2 ptp-masters-differ"}));
    QCOMPARE(told({one, one}), QByteArrayList());
    QCOMPARE(told({one, seeing("lon-3", "locked", "00-1D-C1-FF-FE-00-00-02", 5)}), QByteArrayList());
}

QTEST_APPLESS_MAIN(TestSitePreflight)
#include "test_sitepreflight.moc"
