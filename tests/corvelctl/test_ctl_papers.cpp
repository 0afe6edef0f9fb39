// SPDX-License-Identifier: MIT
// What the program says of itself is true: every example runs, every option stands in its manual page, and
// the JSON has the members that its paper names.
#include "ctlhome.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

class TestCtlPapers : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void examplesRun_data();
    void examplesRun();
    void optionsAreInTheManual_data();
    void optionsAreInTheManual();
    void groupsShowAnExampleToo_data();
    void groupsShowAnExampleToo();
    void membersAreAsDocumented_data();
    void membersAreAsDocumented();
    void everyLineIsAnObjectOfItsOwn_data();
    void everyLineIsAnObjectOfItsOwn();
    void wrongUseNamesWhatIsWrong_data();
    void wrongUseNamesWhatIsWrong();

private:
    QStringList commands() const { return m_commands; }
    QByteArray help(const QString &command);
    void findCommands();

    CtlHome m_home;
    QStringList m_commands;
    QHash<QString, QByteArray> m_help;
};

namespace {

QByteArray paper(const QString &name)
{
    QFile file(QStringLiteral(CORVEL_TEST_DATA "/../../docs/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The pages of all families, which name each option once per command.
QByteArray manual()
{
    QByteArray text;
    for (const char *page : {"", "-look", "-change", "-many", "-whole", "-sdp", "-check", "-time", "-clock"})
        text += paper(QStringLiteral("corvelctl") + QLatin1String(page) + QStringLiteral(".1"));
    return text;
}

QByteArray exampleIn(const QByteArray &help)
{
    const int at = help.indexOf("Example:\n  ");
    return at < 0 ? QByteArray() : help.mid(at + 11, help.indexOf('\n', at + 11) - at - 11);
}

QStringList words(const QByteArray &lines)
{
    return QString::fromUtf8(lines).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

// A server as the examples think of it.
void TestCtlPapers::initTestCase()
{
    for (const char *line :
         {"set server channels=8", "set 0/video rx.dst=239.1.1.1:20000 tx.dst=239.2.1.1:20000",
          "set 2/video rx.dst=239.20.2.1:20000 rx.src=10.0.0.1:5004", "dump before.json",
          "table export site.csv", "ipp export site.ipp", "set 2/audio/3 tx.dst=239.3.1.1:5004",
          "set 0 domain=7"})
        QCOMPARE(m_home.run(line).code, 0);
    m_home.write("studio.sdp", m_home.run("sdp write 0/video").out);
    findCommands();
}

void TestCtlPapers::findCommands()
{
    for (const QString &command : words(m_home.run("__complete", {QString()}).out)) {
        const QStringList below = words(m_home.run("__complete", {command, QString()}).out);
        const bool group = help(command).contains("SUBCOMMAND") || help(command).contains("Subcommands:");
        for (const QString &name : below) {
            if (group && !name.contains(QLatin1Char('/')))
                m_commands << command + QLatin1Char(' ') + name;
        }
        if (!group || command == QLatin1String("ptp"))
            m_commands << command;
    }
}

QByteArray TestCtlPapers::help(const QString &command)
{
    QByteArray &known = m_help[command];
    if (known.isEmpty())
        known = m_home.run(command.toUtf8().constData(), {QStringLiteral("--help")}).out;
    return known;
}

void TestCtlPapers::examplesRun_data()
{
    QTest::addColumn<QByteArray>("example");
    const QStringList all = commands();
    QVERIFY2(all.size() >= 30, qPrintable(all.join(QLatin1Char(' '))));
    for (const QString &command : all)
        QTest::newRow(qPrintable(command)) << exampleIn(help(command));
}

// Nothing waits for long: the clock is asked at once, and a watcher ends with the change of another.
void TestCtlPapers::examplesRun()
{
    QFETCH(QByteArray, example);
    QVERIFY(example.startsWith("corvelctl "));
    const CtlHome home;
    const QStringList copy{QStringLiteral("-a"), m_home.path("."), home.path("")};
    QCOMPARE(m_home.runProgram(QStringLiteral("cp"), copy).code, 0);
    if (example.contains(" ptp"))
        example = example.split('-').first() + "--wait 0";
    for (const char *name : {"night", "late"}) { // to be renamed, deleted or used
        if (example.contains(QByteArray(name)) && !example.contains(" new ") && !example.contains(" copy "))
            QCOMPARE(home.run("config new", {QLatin1String(name)}).code, 0);
        if (example.contains(" rename "))
            break;
    }
    const bool watches = example.contains(" watch");
    const QString script =
        QStringLiteral("PATH=" CORVEL_BIN_DIR ":$PATH; ") +
        (watches
             ? QStringLiteral(
                   "%1 & until ! kill -0 $! 2> kill; do corvelctl -q set 0 domain=$((i += 1)); done; wait $!")
             : QStringLiteral("%1 < /dev/null"));
    const CtlResult result = home.runProgram(QStringLiteral("/bin/sh"),
                                             {QStringLiteral("-c"), script.arg(QString::fromUtf8(example))});
    const bool asks = result.err.contains("Add --yes where nobody can be asked");
    const bool lacksFleet = result.err.contains("corvel-fleet"); // this home is in none
    QVERIFY2(result.code == 0 || result.code == 1 || asks || lacksFleet, result.err.constData());
}

void TestCtlPapers::optionsAreInTheManual_data()
{
    QTest::addColumn<QByteArray>("option");
    QSet<QByteArray> seen;
    const QStringList all = commands() << QString();
    for (const QString &command : all) {
        for (const QByteArray &line : help(command).split('\n')) {
            const QByteArray option = line.trimmed().split(' ').first().split(',').last();
            if (option.startsWith("--") && option != "--help" && !seen.contains(option)) {
                seen.insert(option);
                QTest::newRow(option.constData()) << option;
            }
        }
    }
    QVERIFY(seen.size() > 20);
}

void TestCtlPapers::optionsAreInTheManual()
{
    QFETCH(QByteArray, option);
    static const QByteArray text = manual();
    QVERIFY2(text.contains("Fl " + option.mid(1)) || text.contains(", " + option.mid(1)), option.constData());
}

void TestCtlPapers::groupsShowAnExampleToo_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"", "config", "ipp", "sdp", "table", "ptp"})
        QTest::newRow(*command ? command : "all") << QByteArray(command);
}

void TestCtlPapers::groupsShowAnExampleToo()
{
    QFETCH(QByteArray, command);
    const QByteArray example = exampleIn(help(QString::fromUtf8(command)));
    QVERIFY2(example.startsWith("corvelctl " + command), example.constData());
}

void TestCtlPapers::membersAreAsDocumented_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("row"); // of the paper
    QTest::addColumn<QByteArrayList>("members");
    const auto row = [](const char *command, const char *paper, const QByteArrayList &members) {
        QTest::newRow(command) << QByteArray(command) << QByteArray(paper) << members;
    };
    const QByteArrayList change{"after", "before", "key", "name", "path"};
    const QByteArrayList batch{"batch",      "changes", "label",  "pid", "program",
                               "taken_back", "time",    "undoes", "user"};
    const QByteArrayList leg{"place", "rx", "tx"};
    const QByteArrayList finding{"clause", "place", "reason", "remedy", "rule", "severity"};
    row("get 2/video rx.dst", "get", {"key", "name", "path", "type", "value"});
    row("get 2/video rx.dst-port", "get", {"key", "name", "path", "type", "value", "words"});
    row("-n set 0 domain=1", "set", change);
    row("-n unset 0 domain", "unset", change);
    row("-n restore before.json", "restore", change);
    row("-n restore --all before.json", "restore --all", change + QByteArrayList{"configuration"});
    row("diff 0 2", "diff", change);
    row("-n copy 0 1", "copy", change);
    row("-n flows 0 --from 239.9.0.1:5004", "flows", change);
    row("-n undo", "undo", change);
    row("show", "show", {"channel", "clock", "domain", "elements", "flows", "format", "gm", "type"});
    row("show 2", "show", {"channel", "clock", "domain", "elements", "flows", "format", "gm", "type"});
    row("show 2/video", "show", leg);
    row("show 2/audio/3", "show", leg);
    row("show server", "show server", {"place", "value", "word"});
    row("history", "history", batch);
    row("blame 0/domain", "blame", batch);
    row("config list", "config list", {"name", "used"});
    row("check", "check", finding);
    row("sdp check studio.sdp", "sdp check", finding);
    row("ptp doctor --interface 192.0.2.1 --wait 0", "ptp doctor", finding);
    row("-n sdp fix studio.sdp -o x.sdp --ttl 9", "sdp fix", {"after", "before", "line"});
    row("ptp --interface 192.0.2.1 --wait 0", "ptp",
        {"domain", "grandmaster", "interface", "masters", "offset_age_ms", "offset_ns", "reason",
         "source_port", "state", "system_client", "wanted_domain", "wanted_grandmaster"});
}

void TestCtlPapers::membersAreAsDocumented()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, row);
    QFETCH(QByteArrayList, members);
    const QJsonObject document =
        QJsonDocument::fromJson(m_home.run(("--json " + command).constData()).out).object();
    QCOMPARE(document.value(QLatin1String("schema")).toInt(), 1);
    const QJsonArray items = document.value(QLatin1String("items")).toArray();
    QVERIFY(!items.isEmpty());
    QStringList wanted;
    for (const QByteArray &member : members)
        wanted << QString::fromUtf8(member);
    wanted.sort();
    QCOMPARE(items.at(0).toObject().keys(), wanted);
    const QByteArray text = paper(QStringLiteral("corvelctl-json.md"));
    QVERIFY2(text.contains('`' + row + '`'), row.constData());
    for (const QByteArray &member : members)
        QVERIFY2(text.contains('`' + member + '`'), member.constData());
}

void TestCtlPapers::everyLineIsAnObjectOfItsOwn_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"list", "show", "history", "get 2/video", "diff 0 2", "config list", "check"})
        QTest::newRow(command) << QByteArray(command);
}

void TestCtlPapers::everyLineIsAnObjectOfItsOwn()
{
    QFETCH(QByteArray, command);
    const QByteArray lines = m_home.run(("--lines " + command).constData()).out;
    const QJsonDocument all = QJsonDocument::fromJson(m_home.run(("--json " + command).constData()).out);
    const QJsonArray items = all.object().value(QLatin1String("items")).toArray();
    QCOMPARE(all.object().value(QLatin1String("command")).toString(),
             QString::fromUtf8(command).section(QLatin1Char(' '), command.startsWith("config"),
                                                command.startsWith("config")));
    QCOMPARE(lines.count('\n'), items.size());
    int at = 0;
    for (const QString &line : words(lines))
        QCOMPARE(QJsonDocument::fromJson(line.toUtf8()).object(), items.at(at++).toObject());
}

void TestCtlPapers::wrongUseNamesWhatIsWrong_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *command, const char *says) {
        QTest::newRow(command) << QByteArray(command) << QByteArray(says);
    };
    row("shwo", "no command \"shwo\"; did you mean show?");
    row("-c night shwo", "no command \"shwo\"; did you mean show?");
    row("--config night shwo", "no command \"shwo\"; did you mean show?");
    row("--json shwo", "no command \"shwo\"; did you mean show?");
    row("config lits", "no command \"lits\"; did you mean list?");
    row("-c night config lits", "no command \"lits\"; did you mean list?");
    row("sdp zebra", "no command \"zebra\"");
    row("", "name a command; corvelctl --help lists them");
    row("--json", "name a command; corvelctl --help lists them");
    row("table", "table needs one of export, import");
    row("config", "config needs one of list, new, copy, rename, delete, use");
    row("-c night sdp", "sdp needs one of check, fix, load, write");
    row("--jsno show", "no option \"--jsno\"; did you mean --json?");
    row("show --jsno", "no option \"--jsno\"; did you mean --json?");
    row("undo --sinc=5m", "no option \"--sinc\"; did you mean --since?");
    row("sdp fix a.sdp -o b.sdp --ptme 1", "no option \"--ptme\"; did you mean --ptime?");
    row("show --zebra", "no option \"--zebra\"\n");
    row("show 0 1", "not expected: 1");
    row("-c night copy 0", "to is required");
    row("copy", "from is required");
    row("undo --bach 5", "no option \"--bach\"; did you mean --batch?");
    row("flows 0 --from 239.1.1.1:5 --count 9", "--count: Value 9 not in range 1 to 8");
}

void TestCtlPapers::wrongUseNamesWhatIsWrong()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, says);
    const CtlResult result = m_home.run(command.constData());
    QCOMPARE(result.code, 2);
    QVERIFY2(result.err.startsWith("corvelctl: ") && result.err.contains(says), result.err.constData());
    QCOMPARE(result.err.count('\n'), 1);
}

QTEST_GUILESS_MAIN(TestCtlPapers)
#include "test_ctl_papers.moc"
