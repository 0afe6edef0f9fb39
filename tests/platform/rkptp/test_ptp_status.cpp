// SPDX-License-Identifier: MIT
// The tool ptpstatus with real masters: what it prints, and why it ends as it does.
#include "ptpnet.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace {

ToolResult ptpstatus(const QString &arguments)
{
    return runTool("ptpstatus", arguments);
}

} // namespace

class TestPtpStatus : public QObject {
    Q_OBJECT
    std::unique_ptr<PtpNet> m_net;

private slots:
    void initTestCase()
    {
        m_net = PtpNet::withOneLink();
        runCommand(QStringLiteral("ip"),
                   QStringLiteral("link add bare0 type veth peer name bare1").split(QLatin1Char(' ')));
    }

    // Announces come every two seconds where nobody has set anything else.
    void aMasterOfAnotherDomainIsFound()
    {
        const auto master = m_net->activeMaster(0, {QStringLiteral("--logAnnounceInterval=1")});
        const ToolResult outcome = ptpstatus(QStringLiteral("-i v0 -d 127"));
        QCOMPARE(outcome.code, 1);
        QVERIFY2(outcome.text.startsWith("no master seen\n"), outcome.text.constData());
        QVERIFY2(outcome.text.contains(
                     "master: domain 0, 00-1D-C1-FF-FE-00-00-00 on v0, priority 1/128, class 248, "
                     "accuracy 0xfe, 0 steps away\n"),
                 outcome.text.constData());
        QVERIFY2(outcome.complaint.contains("no master heard on v0, domain 127, for ") &&
                     outcome.complaint.contains("; a master of domain 0 is heard"),
                 outcome.complaint.constData());
    }

    void allMastersAreListedWithTheOneThatIsFollowed()
    {
        const auto first = m_net->startMaster(QStringLiteral("v0"), 3, QStringLiteral("001dc1.fffe.000003"));
        const auto second = m_net->startMaster(QStringLiteral("v0"), 4, QStringLiteral("001dc1.fffe.000004"));
        first->waitUntilActive();
        second->waitUntilActive();
        const ToolResult outcome = ptpstatus(QStringLiteral("-a -i 10.9.0.1 -d 4"));
        QCOMPARE(outcome.code, 0);
        const QByteArrayList lines = outcome.text.split('\n');
        QVERIFY2(lines.size() == 4 && lines[0].startsWith("locked to 00-1D-C1-FF-FE-00-00-04 (port "),
                 outcome.text.constData());
        QVERIFY(lines[1].startsWith("master: domain 3, 00-1D-C1-FF-FE-00-00-03"));
        QVERIFY(lines[2].startsWith("master: domain 4, 00-1D-C1-FF-FE-00-00-04"));
        QVERIFY2(outcome.complaint.isEmpty(), outcome.complaint.constData());
    }

    void jsonHoldsTheSame()
    {
        const auto master = m_net->activeMaster(5);
        const ToolResult outcome = ptpstatus(QStringLiteral("--json --all --interface v0 --domain 5"));
        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.text.count('\n'), 1);
        const QJsonObject object = QJsonDocument::fromJson(outcome.text).object();
        QCOMPARE(object.value(QLatin1String("status")).toInt(), 2);
        QCOMPARE(object.value(QLatin1String("state")).toString(), QStringLiteral("locked"));
        QCOMPARE(object.value(QLatin1String("domain")).toString(), QStringLiteral("5"));
        QCOMPARE(object.value(QLatin1String("address")).toString(), QStringLiteral("10.9.0.1"));
        QVERIFY(object.value(QLatin1String("offsetNs")).isDouble());
        QVERIFY(object.value(QLatin1String("offsetAgeMs")).toInt() < 3000);
        QCOMPARE(object.value(QLatin1String("systemClient")).toBool(true), false);
        const QJsonObject heard = object.value(QLatin1String("masters")).toArray().at(0).toObject();
        QCOMPARE(heard.value(QLatin1String("grandmaster")).toString(),
                 QStringLiteral("00-1D-C1-FF-FE-00-00-05"));
        QCOMPARE(heard.value(QLatin1String("priority1")).toInt(), 1);
        QCOMPARE(heard.value(QLatin1String("clockClass")).toInt(), 248);
        QCOMPARE(heard.value(QLatin1String("stepsRemoved")).toInt(-1), 0);
    }

    void jsonWithoutAMasterIsJsonAsWell()
    {
        const ToolResult outcome = ptpstatus(QStringLiteral("-J -i v0 -d 99 -t 1"));
        QCOMPARE(outcome.code, 1);
        const QJsonObject object = QJsonDocument::fromJson(outcome.text).object();
        QVERIFY(object.value(QLatin1String("offsetNs")).isNull());
        QVERIFY(object.value(QLatin1String("masters")).isArray());
        QVERIFY(!object.value(QLatin1String("reason")).toString().isEmpty());
    }

    void everyFailureHasItsReason_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("reason");
        const auto row = [](const char *arguments, int code, const char *reason) {
            QTest::newRow(arguments) << QString::fromLatin1(arguments) << code << QByteArray(reason);
        };
        row("-d 128", 2, "wrong options");
        row("-x", 2, "wrong options");
        row("word", 2, "wrong options");
        row("-i nosuch0", 2, "neither an IPv4 address nor a network interface: nosuch0");
        row("-i bare0", 3, "bare0 has no IPv4 address");
        row("-i v0 -g 12", 2, "not a clock identity: 12");
        row("-i 192.0.2.1", 3, "no network interface has the address 192.0.2.1");
        row("-i v0 -d 98 -t 2", 1, "no master heard on v0, domain 98");
    }
    void everyFailureHasItsReason()
    {
        QFETCH(QString, arguments);
        QFETCH(int, code);
        QFETCH(QByteArray, reason);
        const ToolResult outcome = ptpstatus(arguments);
        QCOMPARE(outcome.code, code);
        QVERIFY2(outcome.complaint.contains(reason), outcome.complaint.constData());
    }

    void helpAndVersionAreNoFailures()
    {
        QVERIFY(ptpstatus(QStringLiteral("--help")).text.contains("--json"));
        QVERIFY(ptpstatus(QStringLiteral("-V")).text.startsWith("ptpstatus "));
    }
};

QTEST_GUILESS_MAIN(TestPtpStatus)
#include "test_ptp_status.moc"
