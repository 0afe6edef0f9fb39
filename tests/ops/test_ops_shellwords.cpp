// SPDX-License-Identifier: MIT
// Lines as somebody types them in bash. What the shell itself makes of each stands beside it.
#include "ops/shellwords.h"

#include <QProcess>
#include <QtTest>

class TestShellWords : public QObject {
    Q_OBJECT

private slots:
    void wordsOfALine_data();
    void wordsOfALine();
    void aShellSeesTheSameWords_data();
    void aShellSeesTheSameWords();
    void whatIsDoneAlready_data();
    void whatIsDoneAlready();
    void isSpelled_data();
    void isSpelled();
    void whatIsSpelledIsReadAgain_data();
    void whatIsSpelledIsReadAgain();
};

namespace {

constexpr char kBreaks[] = " \t\n\"'><=;|&(:";

struct Line {
    const char *line;
    const char *words; // with | between them
    char quote;
};

// clang-format off
const Line kLines[] = {
    {"corvelctl ",                          "",                             '\0'},
    {"corvelctl sho",                       "sho",                          '\0'},
    {"corvelctl show ",                     "show|",                        '\0'},
    {"corvelctl   show\t 0/vi",             "show|0/vi",                    '\0'},
    {"/usr/bin/corvelctl show ",            "show|",                        '\0'},
    {"A=1 B=2 corvelctl show ",             "show|",                        '\0'},
    {"A='1 2' corvelctl show ",             "show|",                        '\0'},
    {"corvelctl -c 'late night' sh",        "-c|late night|sh",             '\0'},
    {"corvelctl -c \"late night\" sh",      "-c|late night|sh",             '\0'},
    {"corvelctl -c late\\ night sh",        "-c|late night|sh",             '\0'},
    {"corvelctl -c late\\ ni",              "-c|late ni",                   '\0'},
    {"corvelctl -c 'late ni",               "-c|late ni",                   '\''},
    {"corvelctl -c \"late ni",              "-c|late ni",                   '"'},
    {"corvelctl -c \"it's",                 "-c|it's",                      '"'},
    {"corvelctl -c it\\'s ",                "-c|it's|",                     '\0'},
    {"corvelctl -c 'it'\\''s' ",            "-c|it's|",                     '\0'},
    {"corvelctl set '*/video' rx.d",        "set|*/video|rx.d",             '\0'},
    {"corvelctl get 'KWX\\Config' Max",     "get|KWX\\Config|Max",          '\0'},
    {"corvelctl get \"KWX\\Config\" Max",   "get|KWX\\Config|Max",          '\0'},
    {"corvelctl get KWX\\\\Config Max",     "get|KWX\\Config|Max",          '\0'},
    {"corvelctl get \"a\\\"b\" x",          "get|a\"b|x",                   '\0'},
    {"corvelctl get \"a\\$b\" x",           "get|a$b|x",                    '\0'},
    {"corvelctl set 0 '' x",                "set|0||x",                     '\0'},
    {"corvelctl set 0 \"\" x",              "set|0||x",                     '\0'},
    {"corvelctl set 0 x\\",                 "set|0|x\\",                    '\0'},
    {"corvelctl set 0 a'b c'd",             "set|0|ab cd",                  '\0'},
    {"corvelctl set 0 a=b",                 "set|0|a=b",                    '\0'},
};
// clang-format on

QByteArray joined(const QByteArrayList &words)
{
    return words.join('|');
}

} // namespace

void TestShellWords::wordsOfALine_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Line &line : kLines)
        QTest::newRow(line.line) << row++;
}

void TestShellWords::wordsOfALine()
{
    QFETCH(int, row);
    const ops::TypedLine typed = ops::typedLine(kLines[row].line, kBreaks);
    QCOMPARE(joined(typed.words), QByteArray(kLines[row].words));
    QCOMPARE(typed.quote, kLines[row].quote);
}

void TestShellWords::aShellSeesTheSameWords_data()
{
    wordsOfALine_data();
}

// The line is closed as its quote asks for, and a shell reads it.
void TestShellWords::aShellSeesTheSameWords()
{
    QFETCH(int, row);
    const Line &line = kLines[row];
    QByteArray whole = line.line;
    if (whole.endsWith('\\'))
        whole += '\\';
    if (line.quote)
        whole += line.quote;
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"),
                 QStringLiteral("corvelctl() { for word; do printf '%s|' \"$word\"; done; }; ") +
                     QString::fromUtf8(whole).replace(QLatin1String("/usr/bin/"), QString())});
    QVERIFY(shell.waitForFinished());
    QByteArray words = line.words;
    if (!QByteArray(line.line).endsWith(' '))
        words += '|'; // the word at the cursor is one of the shell's as soon as it has begun
    QCOMPARE(shell.readAllStandardOutput(), words);
}

void TestShellWords::whatIsDoneAlready_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("breaks");
    QTest::addColumn<int>("done");
    const auto row = [](const char *line, const char *breaks, int done) {
        QTest::addRow("%s, breaks at %s", line, breaks) << QByteArray(line) << QByteArray(breaks) << done;
    };
    row("corvelctl set 0 clock=s", "=:", 6);
    row("corvelctl set 0 clock=", "=:", 6);
    row("corvelctl set 0 clock", "=:", 0);
    row("corvelctl set 0/video rx.dst=239.1.1.1:50", "=:", 17);
    row("corvelctl set 0/video rx.dst=239.1.1.1:50", "=", 7);
    row("corvelctl set 0/video rx.dst=239.1.1.1:50", ":", 17);
    row("corvelctl set 0/video rx.dst=239.1.1.1:50", "", 0);
    row("corvelctl diff config:la", "=:", 7);
    row("corvelctl diff 'config:la", "=:", 0);
    row("corvelctl diff \"config:la", "=:", 0);
    row("corvelctl diff config\\:la", "=:", 0);
    row("corvelctl --config=la", "=:", 9);
    row("corvelctl set 0 clock=s x", "=:", 0);
    row("corvelctl set 0 clock=s ", "=:", 0);
}

void TestShellWords::whatIsDoneAlready()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, breaks);
    QFETCH(int, done);
    QCOMPARE(ops::typedLine(line, breaks).done, done);
}

void TestShellWords::isSpelled_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *line, const char *word, const char *wanted) {
        QTest::addRow("%s: %s", line, word) << QByteArray(line) << QByteArray(word) << QByteArray(wanted);
    };
    row("corvelctl sho", "show", "show");
    row("corvelctl show 0/v", "0/video", "0/video");
    row("corvelctl set 0 clo", "clock=", "clock=");
    row("corvelctl set 0 clock=s", "clock=sw-ptp", "sw-ptp");
    row("corvelctl set 0/video rx.use=dst,i", "rx.use=dst,if", "dst,if");
    row("corvelctl -c la", "late night", "late\\ night");
    row("corvelctl -c late\\ n", "late night", "late\\ night");
    row("corvelctl -c 'la", "late night", "late night");
    row("corvelctl -c \"la", "late night", "late night");
    row("corvelctl -c it", "it's", "it\\'s");
    row("corvelctl -c 'it", "it's", "it'\\''s");
    row("corvelctl -c \"it", "it's", "it's");
    row("corvelctl -c a", "a\"b", "a\\\"b");
    row("corvelctl -c \"a", "a\"b", "a\\\"b");
    row("corvelctl -c a", "a$(b)", "a\\$\\(b\\)");
    row("corvelctl -c \"a", "a$(b)", "a\\$(b)");
    row("corvelctl -c a", "a`b`", "a\\`b\\`");
    row("corvelctl list KW", "KWX\\Config", "KWX\\\\Config");
    row("corvelctl list 'KW", "KWX\\Config", "KWX\\Config");
    row("corvelctl list \"KW", "KWX\\Config", "KWX\\\\Config");
    row("corvelctl diff config:la", "config:late night", "late\\ night");
    row("corvelctl diff 'config:la", "config:late night", "config:late night");
    row("corvelctl --config=la", "--config=late night", "late\\ night");
}

void TestShellWords::isSpelled()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, wanted);
    QCOMPARE(ops::spelled(word, ops::typedLine(line, kBreaks)), wanted);
}

void TestShellWords::whatIsSpelledIsReadAgain_data()
{
    QTest::addColumn<QByteArray>("opening");
    QTest::newRow("bare") << QByteArray();
    QTest::newRow("in single quotes") << QByteArray("'");
    QTest::newRow("in double quotes") << QByteArray("\"");
}

// Every byte that a name may hold, alone and among others, in front of each quote.
void TestShellWords::whatIsSpelledIsReadAgain()
{
    QFETCH(QByteArray, opening);
    const ops::TypedLine before = ops::typedLine("corvelctl -c " + opening, kBreaks);
    for (int byte = 1; byte < 256; ++byte) {
        for (const QByteArray &word : {QByteArray(1, char(byte)), 'a' + QByteArray(1, char(byte)) + 'b'}) {
            const QByteArray line = "corvelctl -c " + opening + ops::spelled(word, before) + opening;
            const ops::TypedLine after = ops::typedLine(line, QByteArray());
            QCOMPARE(after.words, (QByteArrayList{"-c", word}));
            QCOMPARE(after.quote, '\0');
        }
    }
}

QTEST_APPLESS_MAIN(TestShellWords)
#include "test_ops_shellwords.moc"
