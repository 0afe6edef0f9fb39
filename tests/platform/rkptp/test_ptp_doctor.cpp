// SPDX-License-Identifier: MIT
// corvelctl ptp and ptp doctor with real masters: what they see, what they advise, and how they end.
#include "ptpnet.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace {

ToolResult corvelctl(const QString &arguments)
{
    return runTool("corvelctl", arguments);
}

QJsonArray items(const ToolResult &outcome)
{
    return QJsonDocument::fromJson(outcome.text).object().value(QLatin1String("items")).toArray();
}

// The names of the rules that found something.
QStringList rules(const ToolResult &outcome)
{
    QStringList names;
    for (const QJsonValue &item : items(outcome))
        names << item.toObject().value(QLatin1String("rule")).toString();
    return names;
}

} // namespace

class TestPtpDoctor : public QObject {
    Q_OBJECT
    std::unique_ptr<PtpNet> m_net;

private slots:
    void initTestCase() { m_net = PtpNet::withOneLink(); }

    void aLockedClientIsSeen()
    {
        const auto master = m_net->activeMaster(3, {QStringLiteral("--clockClass=6")});
        const ToolResult text = corvelctl(QStringLiteral("ptp --interface 10.9.0.1 --domain 3 --wait 30"));
        QCOMPARE(text.code, 0);
        QVERIFY2(text.text.startsWith("state        locked"), text.text.constData());
        QVERIFY(text.text.contains("wanted       domain 3, grandmaster any\n"));
        QVERIFY(text.text.contains("grandmaster  00-1D-C1-FF-FE-00-00-03 in domain 3 on 10.9.0.1\n"));
        const ToolResult json =
            corvelctl(QStringLiteral("--json ptp --interface 10.9.0.1 --domain 3 --wait 30"));
        QCOMPARE(json.code, 0);
        const QJsonObject item = items(json).at(0).toObject();
        QCOMPARE(item.value(QLatin1String("state")).toString(), QStringLiteral("locked"));
        QCOMPARE(item.value(QLatin1String("wanted_domain")).toInt(), 3);
        QCOMPARE(item.value(QLatin1String("grandmaster")).toString(),
                 QStringLiteral("00-1D-C1-FF-FE-00-00-03"));
        QVERIFY(item.value(QLatin1String("offset_ns")).isDouble());
        QCOMPARE(item.value(QLatin1String("system_client")).toBool(true), false);
    }

    void aHealthyClockHasNothingWrong()
    {
        const auto master = m_net->activeMaster(4, {QStringLiteral("--clockClass=6")});
        const ToolResult outcome =
            corvelctl(QStringLiteral("ptp doctor --interface 10.9.0.1 --domain 4 --wait 4"));
        QVERIFY2(outcome.text.isEmpty(), outcome.text.constData());
        QCOMPARE(outcome.code, 0);
        QVERIFY(outcome.complaint.contains("nothing is wrong: locked"));
    }

    // A master that has no reference of its own is heard and followed, and told.
    void theQualityOfTheMasterIsTold()
    {
        const auto master = m_net->activeMaster(5);
        const ToolResult outcome =
            corvelctl(QStringLiteral("--json ptp doctor --interface 10.9.0.1 --domain 5 --wait 4"));
        QCOMPARE(outcome.code, 1);
        QCOMPARE(rules(outcome), QStringList{QStringLiteral("ptp-quality")});
        QVERIFY(items(outcome)
                    .at(0)
                    .toObject()
                    .value(QLatin1String("reason"))
                    .toString()
                    .contains(QLatin1String("clock class 248")));
    }

    void theUsualMistakeIsTheDomain()
    {
        const auto master = m_net->activeMaster(6);
        const ToolResult outcome =
            corvelctl(QStringLiteral("ptp doctor --interface 10.9.0.1 --domain 99 --wait 5"));
        QCOMPARE(outcome.code, 1);
        QVERIFY2(
            outcome.text.contains("ptp domain 99: error: nobody gives the time here, but a master is heard: "
                                  "00-1D-C1-FF-FE-00-00-06 in domain 6 on v0 [ptp-domain, ST 2059-2]\n"
                                  "    set the domain to 6, or the master's to 99\n"),
            outcome.text.constData());
    }

    void silenceHasItsAdvice()
    {
        const ToolResult outcome =
            corvelctl(QStringLiteral("--json ptp doctor --interface 10.9.0.1 --domain 98 --wait 3"));
        QCOMPARE(outcome.code, 1);
        QVERIFY2(rules(outcome).contains(QStringLiteral("ptp-no-master")), outcome.text.constData());
    }

    void anAddressThatIsNotHere()
    {
        const ToolResult outcome = corvelctl(QStringLiteral("ptp doctor --interface 192.0.2.1 --wait 0"));
        QCOMPARE(outcome.code, 1);
        QVERIFY2(
            outcome.text.contains("no interface of this machine has the address 192.0.2.1 [ptp-interface]\n"
                                  "    set rx.if to an address of this machine (ip -4 address)\n"),
            outcome.text.constData());
    }

    void anotherGrandmasterThanWanted()
    {
        const auto master = m_net->activeMaster(7, {QStringLiteral("--clockClass=6")});
        const ToolResult outcome = corvelctl(QStringLiteral(
            "--json ptp doctor --interface 10.9.0.1 --domain 7 --gm 00-1D-C1-FF-FE-00-00-99 --wait 5"));
        QCOMPARE(outcome.code, 1);
        QCOMPARE(rules(outcome), QStringList{QStringLiteral("ptp-other-master")});
    }

    // What the channel is set up for is what is looked at.
    void interfaceAndDomainComeFromTheChannel()
    {
        const auto master = m_net->activeMaster(8);
        QCOMPARE(corvelctl(QStringLiteral("set 2/video rx.if=10.9.0.1 -q")).code, 0);
        QCOMPARE(corvelctl(QStringLiteral("set 2 domain=8 -q")).code, 0);
        const ToolResult outcome = corvelctl(QStringLiteral("ptp --channel 2 --wait 30"));
        QCOMPARE(outcome.code, 0);
        QVERIFY2(outcome.text.contains("00-1D-C1-FF-FE-00-00-08 in domain 8 on 10.9.0.1\n"),
                 outcome.text.constData());
    }
};

QTEST_GUILESS_MAIN(TestPtpDoctor)
#include "test_ptp_doctor.moc"
