// SPDX-License-Identifier: MIT
// Somebody sits at a terminal: colours, questions and their answers, and what happens while he thinks.
#include "ctlhome.h"
#include "terminal.h"

class TestCtlTerminal : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<CtlHome>(); }
    void cleanup() { m_home.reset(); }

    void colours_data();
    void colours();
    void nothingStoredSteersTheTerminal();
    void answers_data();
    void answers();
    void theTableIsShownBeforeTheQuestion();
    void whatChangedMeanwhileIsNotOverwritten();
    void whatDoesNotMatterStopsNothing();
    void inAPipeNobodyIsAsked();

private:
    Terminal start(const QByteArray &words, const QByteArrayList &variables = {}) const
    {
        QByteArrayList command = words.split(' ');
        command.prepend(CtlHome::program().toUtf8());
        return Terminal(command, QByteArrayList{"XDG_CONFIG_HOME=" + m_home->path("").toUtf8()} + variables);
    }
    QByteArray get(const char *words) const { return m_home->run(words).out.trimmed(); }

    std::unique_ptr<CtlHome> m_home;
};

void TestCtlTerminal::colours_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QByteArrayList>("variables");
    QTest::addColumn<bool>("coloured");
    const auto row = [](const char *name, const char *words, const QByteArrayList &variables, bool coloured) {
        QTest::newRow(name) << QByteArray(words) << variables << coloured;
    };
    row("changes", "set 0 domain=1", {}, true);
    row("differences", "diff 0 1", {}, true);
    row("history", "history", {}, true);
    row("a channel", "show 0", {}, true);
    row("NO_COLOR", "set 0 domain=1", {"NO_COLOR=1"}, false);
    row("NO_COLOR of any value", "set 0 domain=1", {"NO_COLOR=false"}, false);
    row("an empty NO_COLOR is none", "set 0 domain=1", {"NO_COLOR="}, true);
    row("JSON", "--json set 0 domain=1", {}, false);
    row("lines of JSON", "--lines history", {}, false);
    row("a value alone", "get 0 domain", {}, false);
    row("an error", "set 0 domain=x", {}, false);
}

void TestCtlTerminal::colours()
{
    QFETCH(QByteArray, words);
    QFETCH(QByteArrayList, variables);
    QFETCH(bool, coloured);
    QCOMPARE(m_home->run("set 0 domain=5").code, 0);
    Terminal terminal = start(words, variables);
    terminal.end();
    QVERIFY(!terminal.shown().isEmpty());
    QCOMPARE(terminal.shown().contains("\x1b["), coloured);
}

void TestCtlTerminal::nothingStoredSteersTheTerminal()
{
    QCOMPARE(m_home->run("set 0 --force", {QStringLiteral("Site\x1b[5mOwn=\x1b]0;title\x07")}).code, 0);
    for (const char *words :
         {"list", "get KWX\\Internal0\\IpConfig", "history", "undo -n", "show 0", "diff 0 1"}) {
        Terminal terminal = start(words, {"NO_COLOR=1"});
        terminal.end();
        QVERIFY2(!terminal.shown().contains('\x1b') && !terminal.shown().contains('\x07'), words);
    }
}

void TestCtlTerminal::answers_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<int>("code");
    for (const char *words :
         {"copy 0 1", "restore empty.json", "restore --all empty.json", "config delete night"}) {
        const auto row = [words](const char *keys, int code) {
            QTest::addRow("%s: %s", words, keys) << QByteArray(words) << QByteArray(keys) << code;
        };
        row("y\n", 0);
        row("Y\n", 0);
        row("yes\n", 0);
        row("n\n", 2);
        row("\n", 2);
        row("maybe\n", 2);
        row("\x04", 2); // the end of input
    }
}

void TestCtlTerminal::answers()
{
    QFETCH(QByteArray, words);
    QFETCH(QByteArray, keys);
    QFETCH(int, code);
    QCOMPARE(m_home->run("dump empty.json").code, 0);
    QCOMPARE(m_home->run("config new night").code, 0);
    QCOMPARE(m_home->run("set 0 domain=5").code, 0);
    const QByteArray before = m_home->rows() + get("config list");
    words.replace("empty.json", m_home->path("empty.json").toUtf8());
    Terminal terminal = start(words);
    QVERIFY2(terminal.readUntil("[y/N] ").contains("[y/N] "), terminal.shown().constData());
    QCOMPARE(m_home->rows() + get("config list"), before); // nothing is done before the answer
    terminal.type(keys);
    QCOMPARE(terminal.end(), code);
    QCOMPARE(m_home->rows() + get("config list") != before, code == 0);
}

void TestCtlTerminal::theTableIsShownBeforeTheQuestion()
{
    QCOMPARE(m_home->run("set 0/video rx.dst=239.1.1.1:20000").code, 0);
    Terminal terminal = start("copy 0 1-3 --step dst=0.0.1.0", {"NO_COLOR=1"});
    const QByteArray shown = terminal.readUntil("[y/N] ");
    const int question = shown.indexOf("Change 6 values? [y/N] ");
    QVERIFY2(question > 0, shown.constData());
    for (const char *line : {"1/video rx.dst: (absent) -> 239.1.2.1", "3/video rx.dst: (absent) -> 239.1.4.1",
                             "2/video rx.dst-port: (absent) -> 20000"})
        QVERIFY2(shown.indexOf(line) >= 0 && shown.indexOf(line) < question, line);
    terminal.type("n\n");
    QCOMPARE(terminal.end(), 2);
    QVERIFY(terminal.shown().contains("nothing was changed"));
}

// Somebody else changed one of the values while the question stood there: nothing is done, and his stays.
void TestCtlTerminal::whatChangedMeanwhileIsNotOverwritten()
{
    QCOMPARE(m_home->run("set 0 domain=5").code, 0);
    Terminal terminal = start("copy 0 1");
    terminal.readUntil("[y/N] ");
    QCOMPARE(m_home->run("set 1 domain=9").code, 0);
    terminal.type("y\n");
    QCOMPARE(terminal.end(), 3);
    QVERIFY2(terminal.shown().contains("the store was changed meanwhile; nothing was done"),
             terminal.shown().constData());
    QCOMPARE(get("get 1 domain"), QByteArray("9"));
}

void TestCtlTerminal::whatDoesNotMatterStopsNothing()
{
    QCOMPARE(m_home->run("set 0 domain=5").code, 0);
    Terminal terminal = start("copy 0 1");
    terminal.readUntil("[y/N] ");
    QCOMPARE(m_home->run("set 3 domain=9").code, 0);
    terminal.type("y\n");
    QCOMPARE(terminal.end(), 0);
    QCOMPARE(get("get 1 domain"), QByteArray("5"));
    QCOMPARE(get("get 3 domain"), QByteArray("9"));
}

void TestCtlTerminal::inAPipeNobodyIsAsked()
{
    QCOMPARE(m_home->run("dump empty.json").code, 0);
    QCOMPARE(m_home->run("set 0 domain=5").code, 0);
    const QByteArray before = m_home->rows();
    for (const char *words : {"copy 0 1", "restore empty.json", "restore --all empty.json"}) {
        const CtlResult result = m_home->run(words, {}, "y\n");
        QCOMPARE(result.code, 2);
        QVERIFY2(result.err.contains("Add --yes where nobody can be asked"), result.err.constData());
        QCOMPARE(m_home->rows(), before);
    }
}

QTEST_GUILESS_MAIN(TestCtlTerminal)
#include "test_ctl_terminal.moc"
