// SPDX-License-Identifier: MIT
// Watching: what is printed while others change things, and how it ends.
#include "ctlhome.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

class TestCtlWatch : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<CtlHome>(); }
    void cleanup() { m_home.reset(); }

    void everyChangeIsALine();
    void linesOfJson_data();
    void linesOfJson();
    void whatWasBeforeIsNotShown();
    void countEndsInTheMiddleOfABatch();
    void anotherConfigurationIsFollowed();
    void aNamedOneIsNot();
    void undoIsAChangeToo();
    void endsByASignal_data();
    void endsByASignal();
    void endsWithItsReader();

private:
    CtlResult ctl(const char *words) const { return m_home->run(words); }
    std::unique_ptr<QProcess> watch(const QStringList &words) const
    {
        return start(CtlHome::program(), words);
    }
    std::unique_ptr<QProcess> start(const QString &program, const QStringList &words) const;
    static QByteArray linesOf(QProcess &process, int count);

    std::unique_ptr<CtlHome> m_home;
};

namespace {

// Time and program, then "(user) ": what stands behind them.
QByteArray change(const QByteArray &line)
{
    return line.mid(line.indexOf(") ") + 2);
}

} // namespace

// Ready: it has said that it watches.
std::unique_ptr<QProcess> TestCtlWatch::start(const QString &program, const QStringList &words) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(m_home->environment());
    process->start(program, words);
    process->setReadChannel(QProcess::StandardError);
    QByteArray said;
    while (!said.contains("watching") && process->waitForReadyRead(30000))
        said += process->readAllStandardError();
    process->setReadChannel(QProcess::StandardOutput);
    return process;
}

// Waits for so many lines.
QByteArray TestCtlWatch::linesOf(QProcess &process, int count)
{
    QByteArray lines;
    while (lines.count('\n') < count && (process.bytesAvailable() > 0 || process.waitForReadyRead(30000)))
        lines += process.readAllStandardOutput();
    return lines;
}

void TestCtlWatch::everyChangeIsALine()
{
    auto process = watch({QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("4")});
    QCOMPARE(ctl("set 0 domain=5 clock=sw-ptp").code, 0);
    QCOMPARE(ctl("set 0 domain=6").code, 0);
    QCOMPARE(ctl("unset 0 clock").code, 0);
    QVERIFY(process->waitForFinished(30000));
    QCOMPARE(process->exitCode(), 0);
    const QByteArrayList lines = process->readAllStandardOutput().split('\n');
    QCOMPARE(lines.size(), 5);
    QCOMPARE(change(lines[0]), QByteArray("0 domain: (absent) -> 5"));
    QCOMPARE(change(lines[1]), QByteArray("0 clock: (absent) -> sw-ptp"));
    QCOMPARE(change(lines[2]), QByteArray("0 domain: 5 -> 6"));
    QCOMPARE(change(lines[3]), QByteArray("0 clock: sw-ptp -> (absent)"));
    for (int at = 0; at < 4; ++at) {
        const QRegularExpression head(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3} corvelctl \\(.+\\) "));
        QVERIFY2(head.match(QString::fromUtf8(lines[at])).hasMatch(), lines[at].constData());
    }
}

void TestCtlWatch::linesOfJson_data()
{
    QTest::addColumn<QString>("form");
    QTest::newRow("lines") << QStringLiteral("--lines");
    QTest::newRow("a document would never end") << QStringLiteral("--json");
}

void TestCtlWatch::linesOfJson()
{
    QFETCH(QString, form);
    auto process = watch({form, QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("2")});
    QCOMPARE(ctl("set 1/video rx.dst=239.1.1.1:5004").code, 0);
    QVERIFY(process->waitForFinished(30000));
    const QByteArrayList lines = process->readAllStandardOutput().split('\n');
    QCOMPARE(lines.size(), 3);
    const QJsonObject first = QJsonDocument::fromJson(lines[0]).object();
    QCOMPARE(first.value(QLatin1String("key")).toString(), QStringLiteral("1/video rx.dst"));
    QVERIFY(first.value(QLatin1String("before")).isNull());
    QCOMPARE(first.value(QLatin1String("after")).toString(), QStringLiteral("239.1.1.1"));
    QCOMPARE(first.value(QLatin1String("program")).toString(), QStringLiteral("corvelctl"));
    QVERIFY(first.value(QLatin1String("pid")).toInt() > 1);
    const QJsonObject second = QJsonDocument::fromJson(lines[1]).object();
    QCOMPARE(second.value(QLatin1String("after")).toInt(), 5004);
    QCOMPARE(second.value(QLatin1String("batch")), first.value(QLatin1String("batch")));
}

void TestCtlWatch::whatWasBeforeIsNotShown()
{
    QCOMPARE(ctl("set 0 domain=1").code, 0);
    auto process = watch({QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("1")});
    QCOMPARE(ctl("set 0 domain=1").code, 0); // nothing changes
    QCOMPARE(ctl("set 0 domain=2").code, 0);
    QVERIFY(process->waitForFinished(30000));
    QCOMPARE(change(process->readAllStandardOutput()), QByteArray("0 domain: 1 -> 2\n"));
}

void TestCtlWatch::countEndsInTheMiddleOfABatch()
{
    auto process = watch({QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("2")});
    QCOMPARE(ctl("set 0-3 domain=1").code, 0);
    QVERIFY(process->waitForFinished(30000));
    QCOMPARE(process->readAllStandardOutput().count('\n'), 2);
    QCOMPARE(process->exitCode(), 0);
}

// Without a name it is the server's that is watched, whichever that is.
void TestCtlWatch::anotherConfigurationIsFollowed()
{
    QCOMPARE(ctl("set 0 domain=1").code, 0);
    QCOMPARE(ctl("config new night").code, 0);
    QCOMPARE(ctl("-c night set 0 domain=7").code, 0);
    auto process = watch({QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("1")});
    QCOMPARE(ctl("config use night").code, 0);
    process->setReadChannel(QProcess::StandardError);
    QByteArray said;
    while (!said.contains("from now on") && process->waitForReadyRead(30000))
        said += process->readAllStandardError();
    QVERIFY(said.contains("the server uses the configuration \"night\" from now on"));
    QCOMPARE(ctl("-c default set 0 domain=3").code, 0); // nobody's any more
    QCOMPARE(ctl("set 0 domain=8").code, 0);
    QVERIFY(process->waitForFinished(30000));
    QCOMPARE(change(process->readAllStandardOutput()), QByteArray("0 domain: 7 -> 8\n"));
}

void TestCtlWatch::aNamedOneIsNot()
{
    QCOMPARE(ctl("set 0 domain=1").code, 0);
    QCOMPARE(ctl("config new night").code, 0);
    auto process = watch({QStringLiteral("-c"), QStringLiteral("night"), QStringLiteral("watch"),
                          QStringLiteral("--count"), QStringLiteral("1")});
    QCOMPARE(ctl("set 0 domain=2").code, 0);
    QCOMPARE(ctl("-c night set 0 domain=9").code, 0);
    QVERIFY(process->waitForFinished(30000));
    QCOMPARE(change(process->readAllStandardOutput()), QByteArray("0 domain: (absent) -> 9\n"));
}

void TestCtlWatch::undoIsAChangeToo()
{
    QCOMPARE(ctl("set 0 domain=1").code, 0);
    auto process = watch({QStringLiteral("watch"), QStringLiteral("--count"), QStringLiteral("2")});
    QCOMPARE(ctl("undo").code, 0);
    QCOMPARE(ctl("redo").code, 0);
    QVERIFY(process->waitForFinished(30000));
    const QByteArrayList lines = process->readAllStandardOutput().split('\n');
    QCOMPARE(change(lines.value(0)), QByteArray("0 domain: 1 -> (absent)"));
    QCOMPARE(change(lines.value(1)), QByteArray("0 domain: (absent) -> 1"));
}

void TestCtlWatch::endsByASignal_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("Ctrl+C") << SIGINT;
    QTest::newRow("kill") << SIGTERM;
}

// What was printed before is out already: a pipe or a log has whole lines.
void TestCtlWatch::endsByASignal()
{
    QFETCH(int, number);
    auto process = watch({QStringLiteral("watch")});
    QCOMPARE(ctl("set 0 domain=5").code, 0);
    QCOMPARE(change(linesOf(*process, 1)), QByteArray("0 domain: (absent) -> 5\n"));
    kill(static_cast<pid_t>(process->processId()), number);
    QVERIFY(process->waitForFinished(30000));
    QCOMPARE(process->exitStatus(), QProcess::CrashExit); // by the signal, as the shell expects
    QCOMPARE(process->readAllStandardOutput(), QByteArray());
}

// "corvelctl watch | head -1" must not stay behind: the first line that nobody reads ends it.
void TestCtlWatch::endsWithItsReader()
{
    auto shell = start(QStringLiteral("/bin/sh"),
                       {QStringLiteral("-c"), CtlHome::program() + QStringLiteral(" watch | head -n 1")});
    for (int domain = 1; shell->state() == QProcess::Running && domain < 100; ++domain) {
        QCOMPARE(ctl(("set 0 domain=" + QByteArray::number(domain)).constData()).code, 0);
        shell->waitForFinished(50);
    }
    QCOMPARE(shell->state(), QProcess::NotRunning);
    QCOMPARE(change(shell->readAllStandardOutput()), QByteArray("0 domain: (absent) -> 1\n"));
}

QTEST_GUILESS_MAIN(TestCtlWatch)
#include "test_ctl_watch.moc"
