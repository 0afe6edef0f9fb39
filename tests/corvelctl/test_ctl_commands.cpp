// SPDX-License-Identifier: MIT
// Every command once as a user gives it: output, exit code, and what other programs see of it.
#include "ctlhome.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

class TestCtlCommands : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<CtlHome>(); }
    void cleanup() { m_home.reset(); }

    void setAndGet();
    void setIsAllOrNothing();
    void dryRunPrintsTheSame();
    void batchFromStandardInput();
    void show();
    void listWithTypes();
    void jsonAndLines();
    void dumpAndRestore();
    void restoreAsksFirst();
    void diffOfEverything();
    void settingsFiles();
    void configurations();
    void namedConfigurationWithoutSwitching();
    void copyAndFlows();
    void table();
    void undoRedo();
    void undoSince();
    void undoLeavesConflictsAlone();
    void blame();
    void watchTellsWhoDidIt();
    void aWatchedConfigurationMayGo();
    void completion_data();
    void completion();
    void helpOfEveryCommandHasAnExample();
    void failIfNone();
    void fullOutputIsTold();

private:
    CtlResult ctl(const char *words, const QStringList &more = {}, const QByteArray &input = QByteArray())
    {
        return m_home->run(words, more, input);
    }

    std::unique_ptr<CtlHome> m_home;
};

void TestCtlCommands::setAndGet()
{
    CtlResult result = ctl("set 2/video rx.dst=239.20.2.1:20000 rx.use=dst,port");
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out,
             QByteArray("2/video rx.dst: (absent) -> 239.20.2.1\n2/video rx.dst-port: (absent) -> 20000\n"
                        "2/video rx.use: (absent) -> dst,dst-port\n"));
    QCOMPARE(result.err, QByteArray("corvelctl: 3 values changed\n"));
    QCOMPARE(ctl("get 2/video rx.dst").out, QByteArray("239.20.2.1\n"));
    QCOMPARE(ctl("get 2/video").out,
             QByteArray("rx.dst=239.20.2.1\nrx.dst-port=20000\nrx.use=dst,dst-port\n"));
    QCOMPARE(ctl("get 2/video tx.dst").code, 1);
    QVERIFY(m_home->rows().contains("rkcfg set-dword -- 'KWX\\Internal2\\IpConfig' 'ReceiveFlags' 10\n"));
    QCOMPARE(ctl("unset 2/video rx.dst").out, QByteArray("2/video rx.dst: 239.20.2.1 -> (absent)\n"));
    QCOMPARE(ctl("get 2/video rx.dst").code, 1);
}

void TestCtlCommands::setIsAllOrNothing()
{
    const QByteArray before = m_home->rows();
    const CtlResult result = ctl("set 2/video rx.dst=239.20.2.1 rx.dts=5");
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, QByteArray("corvelctl: 2/video has no \"rx.dts\"; did you mean rx.dst?\n"));
    QCOMPARE(m_home->rows(), before);
}

void TestCtlCommands::dryRunPrintsTheSame()
{
    const QByteArray before = m_home->rows();
    const CtlResult dry = ctl("set 1 domain=127 -n");
    QCOMPARE(m_home->rows(), before);
    const CtlResult real = ctl("set 1 domain=127");
    QCOMPARE(dry.out, real.out);
    QCOMPARE(dry.code, real.code);
}

void TestCtlCommands::batchFromStandardInput()
{
    QCOMPARE(ctl("set -", {}, "0-3/video rx.dst-port=20000\n1 \"format=1080P 50fps (1920)\"\n").code, 0);
    QCOMPARE(ctl("get 1 format").out, QByteArray("1080P 50fps (1920)\n"));
    const QByteArray before = m_home->rows();
    const CtlResult result = ctl("set -", {}, "0 domain=1\n0 domain=x\n");
    QCOMPARE(result.code, 2);
    QVERIFY(result.err.startsWith("corvelctl: line 2: 0 domain: "));
    QCOMPARE(m_home->rows(), before);
}

void TestCtlCommands::show()
{
    ctl("set server channels=2");
    ctl("set 0 type=SMPTE-2110 format=1080p50 clock=sw-ptp channels=8 flows=1");
    ctl("set 0/video tx.dst=239.1.1.1:5004");
    QCOMPARE(
        ctl("show").out,
        QByteArray("Channel  Type        Format              Clock   Video receives  Video sends     Flows\n"
                   "0        SMPTE-2110  1080P 50fps (1920)  sw-ptp  -               239.1.1.1:5004  1\n"
                   "1        -           -                   -       -               -               0\n"));
    QCOMPARE(ctl("show 0/video").out,
             QByteArray("video     receives  -\n          sends     239.1.1.1:5004, use none\n"));
    QVERIFY(ctl("show 0").out.startsWith("Channel-0\ntype      SMPTE-2110\n"));
    QVERIFY(ctl("show server").out.startsWith("channels       2\n"));
}

void TestCtlCommands::listWithTypes()
{
    ctl("set server channels=2");
    QCOMPARE(ctl("list").out, QByteArray("KWX\\Config\tMaxIntChannels\t2\n"));
    QCOMPARE(ctl("list --types").out, QByteArray("KWX\\Config\tMaxIntChannels\tnumber\t2\n"));
    QCOMPARE(ctl("list KWX\\Internal0").out, QByteArray());
}

void TestCtlCommands::jsonAndLines()
{
    const QJsonDocument set = QJsonDocument::fromJson(ctl("set 2 domain=127 --json").out);
    QCOMPARE(set.object().value(QLatin1String("schema")).toInt(), 1);
    QCOMPARE(set.object().value(QLatin1String("items")).toArray().size(), 1);
    const QByteArray lines = ctl("list --lines").out;
    QCOMPARE(lines.count('\n'), 1);
    const QJsonObject item = QJsonDocument::fromJson(lines).object();
    QCOMPARE(item.value(QLatin1String("key")).toString(), QStringLiteral("2 domain"));
    QCOMPARE(item.value(QLatin1String("value")).toInt(), 127);
    QCOMPARE(QJsonDocument::fromJson(ctl("diff store store --json").out)
                 .object()
                 .value(QLatin1String("items"))
                 .toArray()
                 .size(),
             0);
    for (const char *command : {"show", "show 2", "show 2/audio", "show server", "history", "config list"}) {
        const QJsonDocument document = QJsonDocument::fromJson(ctl(command, {QStringLiteral("--json")}).out);
        QVERIFY2(document.object().value(QLatin1String("items")).toArray().size() > 0, command);
    }
}

void TestCtlCommands::dumpAndRestore()
{
    ctl("set 2/video rx.dst=239.20.2.1:20000");
    const QByteArray before = m_home->rows();
    QCOMPARE(ctl("dump before.json").code, 0);
    QCOMPARE(ctl("dump").out, m_home->read("before.json"));
    ctl("set 2/video rx.dst=239.9.9.9");
    ctl("set 3 domain=5");
    QCOMPARE(ctl("diff before.json store").code, 1);
    const CtlResult dry = ctl("restore before.json -n");
    const CtlResult real = ctl("restore before.json -y");
    QCOMPARE(dry.out, QByteArray("2/video rx.dst: 239.9.9.9 -> 239.20.2.1\n3 domain: 5 -> (absent)\n"));
    QCOMPARE(real.out, dry.out);
    QCOMPARE(m_home->rows(), before);
    QCOMPARE(ctl("diff before.json store").code, 0);
    QVERIFY(ctl("history").out.contains(": restore before.json\n"));
}

void TestCtlCommands::restoreAsksFirst()
{
    ctl("dump empty.json");
    ctl("set 3 domain=5");
    const QByteArray before = m_home->rows();
    const CtlResult result = ctl("restore empty.json");
    QCOMPARE(result.code, 2);
    QVERIFY(result.err.contains("--yes"));
    QCOMPARE(m_home->rows(), before);
}

void TestCtlCommands::diffOfEverything()
{
    ctl("set 0/video rx.dst=239.1.1.1");
    ctl("set 1/video rx.dst=239.1.1.2");
    QCOMPARE(ctl("diff 0 1").out, QByteArray("0/video rx.dst: 239.1.1.1 -> 239.1.1.2\n"));
    ctl("config copy default night");
    ctl("-c night set 1/video rx.dst=239.1.1.3");
    QCOMPARE(ctl("diff store night").out, QByteArray("1/video rx.dst: 239.1.1.2 -> 239.1.1.3\n"));
    QCOMPARE(ctl("diff config:night store").code, 1);
    ctl("dump --all all.json");
    QCOMPARE(ctl("diff all.json#night night").code, 0);
    QCOMPARE(ctl("diff all.json night").code, 2);
    ctl("ipp export site.ipp");
    QCOMPARE(ctl("diff store site.ipp").code, 0);
    QCOMPARE(ctl("diff store nowhere").code, 2);
}

void TestCtlCommands::settingsFiles()
{
    ctl("set 0/video tx.dst=239.1.1.1:5004 tx.if=10.0.0.1");
    const CtlResult result = ctl("ipp export site.ipp");
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err,
             QByteArray("corvelctl: a settings file does not carry TransmitInterface of 1 channel\n"));
    QVERIFY(m_home->read("site.ipp").startsWith("[HalvectIpConfig]\n"));
    QCOMPARE(ctl("ipp check site.ipp").code, 1);
    ctl("set 0/video tx.dst=239.9.9.9");
    QVERIFY(ctl("ipp import site.ipp -n -q").out.contains("0/video tx.dst: 239.9.9.9 -> 239.1.1.1\n"));
    QCOMPARE(ctl("ipp import site.ipp -q").code, 0);
    QCOMPARE(ctl("get 0/video tx.dst").out, QByteArray("239.1.1.1\n"));
    QVERIFY(ctl("history --most 1").out.contains("Load File site.ipp"));
}

void TestCtlCommands::configurations()
{
    QCOMPARE(ctl("config list").out, QByteArray("* default\n"));
    QCOMPARE(ctl("set 0 domain=1").code, 0); // the default one is made when it is first used
    QCOMPARE(ctl("config new day").code, 0);
    QCOMPARE(ctl("config new day").code, 2);
    QCOMPARE(ctl("config copy day night").code, 0);
    QCOMPARE(ctl("config rename night late").code, 0);
    QCOMPARE(ctl("config list").out, QByteArray("  day\n* default\n  late\n"));
    QCOMPARE(ctl("config use late").code, 0);
    QCOMPARE(ctl("config delete late -y").code, 2);
    QCOMPARE(ctl("config delete day").code, 2);
    QCOMPARE(ctl("config delete day -y").code, 0);
    QCOMPARE(ctl("config delete day -y").code, 2);
    QCOMPARE(ctl("config use dfault").err,
             QByteArray("corvelctl: there is no configuration \"dfault\"; did you mean default?\n"));
    QCOMPARE(ctl("config list").out, QByteArray("  default\n* late\n"));
    QCOMPARE(ctl("config new a/b").code, 2);
}

void TestCtlCommands::namedConfigurationWithoutSwitching()
{
    ctl("config new night");
    QCOMPARE(ctl("-c night set 0 domain=5").code, 0);
    QCOMPARE(ctl("-c night get 0 domain").out, QByteArray("5\n"));
    QCOMPARE(ctl("get 0 domain").code, 1);
    QCOMPARE(ctl("config list").out, QByteArray("* default\n  night\n"));
    QCOMPARE(ctl("-c nowhere show").code, 2);
    QVERIFY(ctl("-c nihgt show").err.endsWith("did you mean night?\n"));
}

void TestCtlCommands::copyAndFlows()
{
    ctl("set server channels=8");
    ctl("set 0/video rx.dst=239.20.0.1:20000");
    QCOMPARE(ctl("flows 0 --from 239.30.0.1:20000 --count 2 -q").code, 0);
    QCOMPARE(ctl("copy 0 1-7 --step dst=0.0.1.0").code, 2);
    QCOMPARE(ctl("copy 0 1-7 --step dst=0.0.1.0 --step port=2 -y -q").code, 0);
    QCOMPARE(ctl("get 7/video rx.dst").out, QByteArray("239.20.7.1\n"));
    QCOMPARE(ctl("get 7/audio/1 tx.dst-port").out, QByteArray("20014\n"));
    QCOMPARE(ctl("copy 0 8 -y").code, 2);
    QCOMPARE(ctl("copy 0-1 3 -y").code, 2);
    QCOMPARE(ctl("flows 0-1 --from 239.30.0.1:20000").code, 2);
    const QByteArray before = m_home->rows();
    QCOMPARE(ctl("copy 0 1-7 --step dst=3.0.0.0 -y").code, 2);
    QCOMPARE(m_home->rows(), before);
}

void TestCtlCommands::table()
{
    ctl("set 0/video rx.dst=239.20.0.1:20000");
    QCOMPARE(ctl("table export site.csv").code, 0);
    const QByteArray before = m_home->rows();
    QCOMPARE(ctl("table import site.csv --fail-if-none").code, 5);
    QByteArray table = m_home->read("site.csv").replace("239.20.0.1", "239.20.0.2");
    m_home->write("site.csv", table);
    QCOMPARE(ctl("table import site.csv").out, QByteArray("0/video rx.dst: 239.20.0.1 -> 239.20.0.2\n"));
    QCOMPARE(m_home->rows(), before);
    QCOMPARE(ctl("table import site.csv --apply").code, 0);
    QCOMPARE(ctl("get 0/video rx.dst").out, QByteArray("239.20.0.2\n"));
    m_home->write("site.csv", table.replace("20000", "99999"));
    const CtlResult wrong = ctl("table import site.csv --apply");
    QCOMPARE(wrong.code, 2);
    QVERIFY(wrong.err.contains("row 2, column N (rx.dst-port): "));
    QCOMPARE(ctl("get 0/video rx.dst-port").out, QByteArray("20000\n"));
}

void TestCtlCommands::undoRedo()
{
    const QByteArray empty = m_home->rows();
    ctl("set 0 domain=1");
    const QByteArray one = m_home->rows();
    ctl("set 0 domain=2");
    const QByteArray two = m_home->rows();
    const CtlResult dry = ctl("undo -n");
    QCOMPARE(m_home->rows(), two);
    QCOMPARE(ctl("undo").out, dry.out);
    QCOMPARE(m_home->rows(), one);
    QCOMPARE(ctl("undo").code, 0);
    QCOMPARE(m_home->rows(), empty);
    QCOMPARE(ctl("undo --fail-if-none").code, 5);
    QCOMPARE(ctl("redo").code, 0);
    QCOMPARE(m_home->rows(), one);
    QCOMPARE(ctl("redo").code, 0);
    QCOMPARE(m_home->rows(), two);
    QCOMPARE(ctl("redo --fail-if-none").code, 5);
}

void TestCtlCommands::undoSince()
{
    const QByteArray empty = m_home->rows();
    for (const char *words : {"set 0 domain=1", "set 1 domain=2", "set 0 domain=3"})
        ctl(words);
    QCOMPARE(ctl("undo --since 1h").code, 0);
    QCOMPARE(m_home->rows(), empty);
    QCOMPARE(ctl("undo --since soon").code, 2);
    QCOMPARE(ctl("undo --batch 99999").code, 2);
}

void TestCtlCommands::undoLeavesConflictsAlone()
{
    ctl("set 0 domain=1");
    ctl("set 0 domain=2");
    const CtlResult result = ctl("undo --batch 1");
    QCOMPARE(result.code, 4);
    QVERIFY(
        result.err.contains("0 domain was changed again since, to 2, and is left alone; --force sets it"));
    QCOMPARE(ctl("get 0 domain").out, QByteArray("2\n"));
    QCOMPARE(ctl("undo --batch 1 --force").code, 0);
    QCOMPARE(ctl("get 0 domain").code, 1);
}

void TestCtlCommands::blame()
{
    ctl("set 2/video rx.dst=239.1.1.1");
    ctl("set 2/video rx.dst=239.1.1.2");
    const QByteArray out = ctl("blame 2/video/rx.dst").out;
    QCOMPARE(out.count('\n'), 4);
    QVERIFY(out.contains("    2/video rx.dst: 239.1.1.1 -> 239.1.1.2\n"));
    QCOMPARE(ctl("blame 2/video rx.dst").out, out);
    QCOMPARE(ctl("blame 2/video/tx.dst").code, 1);
    QCOMPARE(ctl("blame 2/video/rx.dts").code, 2);
    QCOMPARE(ctl("history 2/video").out.count('#'), 2);
    QCOMPARE(ctl("history 3").out, QByteArray());
}

void TestCtlCommands::watchTellsWhoDidIt()
{
    QProcess watch;
    watch.setProcessEnvironment(m_home->environment());
    watch.start(CtlHome::program(),
                {QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("1")});
    QByteArray said;
    QTRY_VERIFY((said += watch.readAllStandardError()).contains("watching"));
    ctl("set 0 domain=5");
    QVERIFY(watch.waitForFinished(30000));
    QVERIFY(watch.readAllStandardOutput().endsWith(") 0 domain: (absent) -> 5\n"));
    QCOMPARE(watch.exitCode(), 0);
}

void TestCtlCommands::aWatchedConfigurationMayGo()
{
    QCOMPARE(ctl("set 0 domain=1").code, 0);
    QCOMPARE(ctl("config new night").code, 0);
    QProcess watch;
    watch.setProcessEnvironment(m_home->environment());
    watch.start(CtlHome::program(), {QStringLiteral("-c"), QStringLiteral("night"), QStringLiteral("watch")});
    QByteArray said;
    QTRY_VERIFY((said += watch.readAllStandardError()).contains("watching"));
    QCOMPARE(ctl("config delete night -y").code, 0);
    QVERIFY(watch.waitForFinished(30000));
    QCOMPARE(watch.exitCode(), 3);
    QVERIFY(watch.readAllStandardError().contains("the configuration \"night\" is gone"));
}

void TestCtlCommands::completion_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QByteArray>("found");
    const auto row = [](const char *words, const char *found) {
        QTest::newRow(words) << QByteArray(words) << QByteArray(found);
    };
    row("sh|", "show");
    row("ge|", "get");
    row("config re|", "rename");
    row("show |", "0 1 2 3 server");
    row("show 2/|", "2/video 2/audio 2/anc");
    row("show 2/audio/|", "2/audio/0 2/audio/1 2/audio/2 2/audio/3 2/audio/4 2/audio/5 2/audio/6 2/audio/7");
    row("get 2/video rx.d|", "rx.dst rx.dst-port");
    row("set 2/video rx.d|", "rx.dst= rx.dst-port=");
    row("set 2 clock=|", "clock=internal clock=hw-ptp clock=sw-ptp clock=free-run");
    row("set 2/video rx.use=dst,i|", "rx.use=dst,if");
    row("set 2/video rx.if=127.|", "rx.if=127.0.0.1");
    row("config use |", "default");
    row("-c |", "default");
    row("-c default sho|", "show");
    row("undo --ba|", "--batch");
    row("set --dry|", "--dry-run");
    row("restore |", "");
    row("zebra |", "");
}

void TestCtlCommands::completion()
{
    QFETCH(QByteArray, words);
    QFETCH(QByteArray, found);
    QStringList arguments{QStringLiteral("__complete")};
    arguments += QString::fromUtf8(words.chopped(1)).split(QLatin1Char(' '));
    QCOMPARE(m_home->runProgram(CtlHome::program(), arguments).out.trimmed().replace('\n', ' '), found);
}

void TestCtlCommands::helpOfEveryCommandHasAnExample()
{
    QStringList commands =
        QString::fromUtf8(ctl("__complete", {QString()}).out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QVERIFY(commands.size() > 15);
    for (const QString &group : {QStringLiteral("config"), QStringLiteral("ipp"), QStringLiteral("table")}) {
        commands.removeAll(group);
        for (const QByteArray &name : ctl("__complete", {group, QString()}).out.split('\n'))
            if (!name.isEmpty())
                commands.append(group + QLatin1Char(' ') + QString::fromUtf8(name));
    }
    for (const QString &command : commands) {
        const CtlResult result = ctl(command.toUtf8().constData(), {QStringLiteral("--help")});
        QCOMPARE(result.code, 0);
        QVERIFY2(result.out.contains("Example:\n  corvelctl " + command.toUtf8()) ||
                     command.startsWith(QLatin1String("sdp")),
                 qPrintable(command));
    }
    QCOMPARE(ctl("--version").out, QByteArray("corvelctl 8.0.0\n"));
    QCOMPARE(ctl("shwo").err, QByteArray("corvelctl: no command \"shwo\"; did you mean show?\n"));
    QCOMPARE(ctl("").code, 2);
}

void TestCtlCommands::failIfNone()
{
    ctl("set 0 domain=1");
    QCOMPARE(ctl("set 0 domain=1").code, 0);
    QCOMPARE(ctl("set 0 domain=1 --fail-if-none").code, 5);
    QCOMPARE(ctl("unset 1 domain --fail-if-none").code, 5);
}

void TestCtlCommands::fullOutputIsTold()
{
    ctl("set 0 domain=1");
    QProcess process;
    process.setProcessEnvironment(m_home->environment());
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start(CtlHome::program(), {QStringLiteral("list")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 3);
}

QTEST_GUILESS_MAIN(TestCtlCommands)
#include "test_ctl_commands.moc"
