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
    void initTestCase();
    void init();
    void cleanup() { m_home.reset(); }
    void cleanupTestCase();

    void allOrNothing_data();
    void allOrNothing();
    void aCopyIsThereWholeOrNotAtAll();
    void restoreIsExact();
    void undoGoesBackToTheStart();

private:
    void takeBack() const;

    std::unique_ptr<CtlHome> m_home;
    QByteArray m_store; // the file before each of the commands
    int m_before = 0, m_after = 0;
};

namespace {

// Of each command. The campaign asks for more.
int kills()
{
    const int wanted = qEnvironmentVariableIntValue("CAMPAIGN_AMOUNT");
    return wanted > 0 ? wanted : 5;
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

// Runs a command and kills it after a part of the time that it takes when nobody does, so that it falls
// before, in and after the transaction.
class Killer {
public:
    explicit Killer(const CtlHome &home) : m_home(home) {}

    void measure(const QByteArray &command)
    {
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(m_home.run(command.constData()).code, 0);
        m_whole = timer.nsecsElapsed() / 1000;
    }
    void run(const QByteArray &command)
    {
        QProcess process;
        process.setProcessEnvironment(m_home.environment());
        process.setWorkingDirectory(QFileInfo(m_home.path("x")).path());
        process.start(CtlHome::program(), QString::fromUtf8(command).split(QLatin1Char(' ')));
        QVERIFY(process.waitForStarted());
        process.waitForFinished(static_cast<int>(m_random() % static_cast<unsigned>(m_whole * 5 / 4)) / 1000);
        process.kill();
        process.waitForFinished();
    }

private:
    const CtlHome &m_home;
    std::mt19937 m_random{1};
    qint64 m_whole = 0;
};

} // namespace

// One store file for all, so that each kill starts with nothing but a copy of it.
void TestCtlKilled::initTestCase()
{
    CtlHome home;
    home.write("before.json", ops::writeDump({{"default", fullServer(1)}}));
    QCOMPARE(home.run("restore before.json -y -q").code, 0);
    QCOMPARE(home.run("set server channels=16 -q").code, 0);
    m_store = home.read("corvel/default.rkcfg");
    QVERIFY(m_store.startsWith("SQLite format 3"));
}

void TestCtlKilled::init()
{
    m_home = std::make_unique<CtlHome>();
}

void TestCtlKilled::takeBack() const
{
    QDir(m_home->path("corvel")).removeRecursively();
    QVERIFY(QDir().mkdir(m_home->path("corvel")));
    m_home->write("corvel/default.rkcfg", m_store);
}

// For the campaign: a run in which no kill came in time has shown nothing.
void TestCtlKilled::cleanupTestCase()
{
    if (m_before + m_after > 0)
        printf("figures: %d kills, %d before the change and %d after it\n", m_before + m_after, m_before,
               m_after);
}

void TestCtlKilled::allOrNothing_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("restore") << QByteArray("restore full.json -y -q");
    QTest::newRow("import") << QByteArray("table import full.csv --apply -q");
    QTest::newRow("copy") << QByteArray("copy 0 1-15 --step port=2 -y -q");
    QTest::newRow("undo") << QByteArray("undo -q");
}

void TestCtlKilled::allOrNothing()
{
    QFETCH(QByteArray, command);
    m_home->write("full.json", ops::writeDump({{"default", fullServer(16)}}));
    takeBack();
    QCOMPARE(m_home->run("restore full.json -y -q").code, 0);
    QCOMPARE(m_home->run("table export full.csv").code, 0);
    takeBack();
    const QByteArray before = m_home->rows();
    Killer killer(*m_home);
    killer.measure(command);
    const QByteArray after = m_home->rows();
    QVERIFY(after != before);
    for (int kill = 0; kill < kills(); ++kill) {
        takeBack();
        killer.run(command);
        const QByteArray now = m_home->rows();
        QVERIFY(now == before || now == after);
        ++(now == before ? m_before : m_after);
    }
}

void TestCtlKilled::aCopyIsThereWholeOrNotAtAll()
{
    takeBack();
    m_home->write("full.json", ops::writeDump({{"default", fullServer(16)}}));
    QCOMPARE(m_home->run("restore full.json -y -q").code, 0);
    Killer killer(*m_home);
    killer.measure("config copy default night");
    QCOMPARE(m_home->run("diff default night").code, 0);
    for (int kill = 0; kill < kills(); ++kill) {
        QCOMPARE(m_home->run("config delete night -y").code, 0);
        killer.run("config copy default night");
        const QByteArray names = m_home->run("config list").out;
        QVERIFY2(names == "* default\n" || names == "* default\n  night\n", names.constData());
        const bool there = names.contains("night");
        ++(there ? m_after : m_before);
        QCOMPARE(m_home->run(there ? "diff default night" : "config copy default night").code, 0);
    }
}

void TestCtlKilled::restoreIsExact()
{
    const CtlHome &home = *m_home;
    for (unsigned seed = 0; seed < 6; ++seed) {
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
    const CtlHome &home = *m_home;
    std::mt19937 random(7);
    std::vector<QByteArray> states{home.rows()};
    static const char *const commands[] = {"set %1/video rx.dst=239.1.1.%2",
                                           "set %1 domain=%2",
                                           "unset %1 domain",
                                           "set %1/audio/* tx.dst=239.2.%2.1",
                                           "flows %1 --from 239.3.%2.1:5004",
                                           "copy %1 3 --step dst=0.0.0.%2 -y"};
    for (int step = 0; step < 16; ++step) {
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
