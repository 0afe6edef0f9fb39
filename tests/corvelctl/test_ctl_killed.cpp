// SPDX-License-Identifier: MIT
// Killed in the middle of a large change: all of it is there, or nothing. And long runs: restoring what was
// dumped, and taking back whatever was done.
#include "ctlhome.h"

#include "../ops/randomstore.h"
#include "ops/dump.h"

#include <csignal>
#include <random>

class TestCtlKilled : public QObject {
    Q_OBJECT

private slots:
    void allOrNothing_data();
    void allOrNothing();
    void restoreIsExact();
    void undoGoesBackToTheStart();
};

namespace {

// Of each command; CORVEL_KILLS asks for more, for a long run by hand, and QTEST_FUNCTION_TIMEOUT for more
// time.
int kills()
{
    const int wanted = qEnvironmentVariableIntValue("CORVEL_KILLS");
    return wanted > 0 ? wanted : 8;
}

ops::Snapshot fullServer(int channels)
{
    ops::Snapshot values;
    std::vector<ops::Row> rows{
        {"KWX\\Config", "MaxIntChannels", ops::Value::ofNumber(static_cast<quint32>(channels))}};
    for (int channel = 0; channel < channels; ++channel) {
        for (const ops::KnownName &known : ops::knownNames()) {
            const bool text = ops::isTextKind(known.kind);
            if (known.path.isEmpty())
                rows.push_back({ops::channelPath(channel), known.name,
                                text ? ops::Value::ofText("239.1.1.1") : ops::Value::ofNumber(1)});
        }
    }
    return ops::Snapshot::fromRows(std::move(rows));
}

} // namespace

void TestCtlKilled::allOrNothing_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("restore") << QByteArray("restore full.json -y -q");
    QTest::newRow("import") << QByteArray("table import full.csv --apply -q");
    QTest::newRow("copy") << QByteArray("copy 0 1-15 --step dst=0.0.1.0 -y -q");
}

// The time of the kill is drawn from the time that the whole command takes, so that it falls before, in and
// after the transaction.
void TestCtlKilled::allOrNothing()
{
    QFETCH(QByteArray, command);
    CtlHome home;
    home.write("full.json", ops::writeDump({{"default", fullServer(16)}}));
    home.run("set server channels=16 -q");
    home.run("set 0/video rx.dst=239.1.1.1:5004 -q");
    home.run("flows 0 --from 239.2.0.1:5004 -q");
    home.run("dump before.json -q");
    home.run("restore full.json -y -q");
    home.run("table export full.csv");
    home.run("restore before.json -y -q");
    const QByteArray before = home.rows();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(home.run(command.constData()).code, 0);
    const qint64 whole = timer.nsecsElapsed() / 1000;
    const QByteArray after = home.rows();
    QVERIFY(after != before);

    std::mt19937 random(1);
    for (int kill = 0; kill < kills(); ++kill) {
        QCOMPARE(home.run("restore before.json -y -q").code, 0);
        QCOMPARE(home.rows(), before);
        QProcess process;
        process.setProcessEnvironment(home.environment());
        process.setWorkingDirectory(QFileInfo(home.path("x")).path());
        process.start(CtlHome::program(), QString::fromUtf8(command).split(QLatin1Char(' ')));
        QVERIFY(process.waitForStarted());
        process.waitForFinished(int(random() % static_cast<unsigned>(whole)) / 1000);
        ::kill(static_cast<pid_t>(process.processId()),
               process.state() == QProcess::NotRunning ? 0 : SIGKILL);
        process.waitForFinished();
        const QByteArray now = home.rows();
        QVERIFY(now == before || now == after);
    }
}

void TestCtlKilled::restoreIsExact()
{
    CtlHome home;
    for (unsigned seed = 0; seed < 10; ++seed) {
        RandomStore random(seed);
        home.write("wanted.json", ops::writeDump({{"default", random.anything()}}));
        QVERIFY(home.run("restore wanted.json -y -q").code == 0);
        QCOMPARE(home.run("dump").out, home.read("wanted.json"));
        const QByteArray rows = home.rows();
        QCOMPARE(home.run("restore wanted.json -y --fail-if-none").code, 5);
        QCOMPARE(home.rows(), rows);
    }
}

void TestCtlKilled::undoGoesBackToTheStart()
{
    CtlHome home;
    std::mt19937 random(7);
    std::vector<QByteArray> states{home.rows()};
    static const char *const commands[] = {"set %1/video rx.dst=239.1.1.%2",
                                           "set %1 domain=%2",
                                           "unset %1 domain",
                                           "set %1/audio/* tx.dst=239.2.%2.1",
                                           "flows %1 --from 239.3.%2.1:5004",
                                           "copy %1 3 --step dst=0.0.0.%2 -y"};
    for (int step = 0; step < 25; ++step) {
        const QString line = QString::fromLatin1(commands[random() % std::size(commands)])
                                 .arg(random() % 3)
                                 .arg(random() % 100 + 1);
        home.run((line + QLatin1String(" -q")).toUtf8().constData());
        if (home.rows() != states.back())
            states.push_back(home.rows());
    }
    while (states.size() > 1) {
        states.pop_back();
        QCOMPARE(home.run("undo -q").code, 0);
        QCOMPARE(home.rows(), states.back());
    }
    QCOMPARE(home.run("undo -q --fail-if-none").code, 5);
}

QTEST_GUILESS_MAIN(TestCtlKilled)
#include "test_ctl_killed.moc"
