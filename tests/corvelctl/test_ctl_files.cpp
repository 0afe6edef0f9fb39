// SPDX-License-Identifier: MIT
// The files that commands write: where they go, what a dry run leaves, and names of any bytes.
#include "ctlhome.h"

#include <sys/stat.h>

class TestCtlFiles : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_home.reset(); }

    void aDryRunWritesNothing_data();
    void aDryRunWritesNothing();
    void aDryRunKnowsWhatCannotBeWritten_data();
    void aDryRunKnowsWhatCannotBeWritten();
    void aPipeIsWrittenThrough_data();
    void aPipeIsWrittenThrough();
    void aPipeWithoutAReaderIsFoundOut();
    void standardOutputHasAName();
    void aLinkStaysALink();
    void whatCannotBeWrittenLeavesTheOldFile();
    void namesAreBytes_data();
    void namesAreBytes();
    void configurationsHaveAnyName();
    void closedStreamsAreNobodysFile_data();
    void closedStreamsAreNobodysFile();
    void anEmptyNameIsNotTheServers_data();
    void anEmptyNameIsNotTheServers();

private:
    CtlResult shell(const QString &script) const;
    CtlResult ctl(const QByteArray &words) const { return m_home->run(words.constData()); }
    bool isPipe(const char *name) const;

    std::unique_ptr<CtlHome> m_home;
};

namespace {

const char *const kWriters[] = {"dump",         "dump --all",     "ipp export",
                                "table export", "sdp write 0 -o", "sdp fix in.sdp -o"};

} // namespace

void TestCtlFiles::init()
{
    m_home = std::make_unique<CtlHome>();
    QCOMPARE(ctl("set 0/video rx.dst=239.1.1.1:20000 rx.use=dst,port").code, 0);
    m_home->write("in.sdp", ctl("sdp write 0/video").out);
    QVERIFY(QDir().mkdir(m_home->path("folder")));
}

// With the program in the path, and standing in the folder of the store.
CtlResult TestCtlFiles::shell(const QString &script) const
{
    const QString path = QStringLiteral("PATH=" CORVEL_BIN_DIR ":$PATH; export LC_ALL=C; ");
    return m_home->runProgram(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), path + script});
}

bool TestCtlFiles::isPipe(const char *name) const
{
    struct stat about {};
    return stat(m_home->path(name).toUtf8().constData(), &about) == 0 && S_ISFIFO(about.st_mode);
}

void TestCtlFiles::aDryRunWritesNothing_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : kWriters)
        QTest::newRow(command) << QByteArray(command);
}

void TestCtlFiles::aDryRunWritesNothing()
{
    QFETCH(QByteArray, command);
    const QStringList before = QDir(m_home->path("")).entryList(QDir::Files);
    const CtlResult dry = ctl("-n " + command + " out.sdp");
    QCOMPARE(QDir(m_home->path("")).entryList(QDir::Files), before);
    const CtlResult real = ctl(command + " out.sdp");
    QCOMPARE(dry.code, real.code);
    QCOMPARE(dry.out, real.out);
    QVERIFY(QDir(m_home->path("")).entryList(QDir::Files) != before);
}

void TestCtlFiles::aDryRunKnowsWhatCannotBeWritten_data()
{
    aDryRunWritesNothing_data();
}

void TestCtlFiles::aDryRunKnowsWhatCannotBeWritten()
{
    QFETCH(QByteArray, command);
    for (const char *file : {"missing/out.sdp", "/proc/out.sdp"}) {
        const CtlResult dry = ctl("-n " + command + ' ' + file);
        const CtlResult real = ctl(command + ' ' + file);
        QCOMPARE(real.code, 3);
        QCOMPARE(dry.code, real.code);
        QCOMPARE(dry.err, real.err);
        QVERIFY2(real.err.contains("cannot write "), real.err.constData());
    }
}

void TestCtlFiles::aPipeIsWrittenThrough_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"dump", "ipp export", "table export", "sdp fix in.sdp -o"})
        QTest::newRow(command) << QByteArray(command);
}

void TestCtlFiles::aPipeIsWrittenThrough()
{
    QFETCH(QByteArray, command);
    QCOMPARE(ctl(command + " plain").code <= 1, true);
    // Until somebody reads, the pipe is refused; then it takes all.
    const CtlResult result = shell(QLatin1String("mkfifo pipe; cat pipe > copy & until corvelctl -q ") +
                                   QString::fromLatin1(command) +
                                   QLatin1String(" pipe 2> said || [ $? -lt 2 ]; do :; done; wait"));
    QCOMPARE(result.code, 0);
    QVERIFY(isPipe("pipe"));
    QCOMPARE(m_home->read("copy"), m_home->read("plain"));
    QVERIFY(!m_home->read("copy").isEmpty());
}

void TestCtlFiles::aPipeWithoutAReaderIsFoundOut()
{
    QCOMPARE(mkfifo(m_home->path("pipe").toUtf8().constData(), 0600), 0);
    const CtlResult result = ctl("dump pipe");
    QCOMPARE(result.code, 3);
    QVERIFY2(result.err.startsWith("corvelctl: cannot write pipe: "), result.err.constData());
    QVERIFY(isPipe("pipe"));
}

void TestCtlFiles::standardOutputHasAName()
{
    const QByteArray dump = ctl("dump -").out;
    QCOMPARE(shell(QStringLiteral("corvelctl dump /dev/stdout")).out, dump);
    QCOMPARE(shell(QStringLiteral("corvelctl dump /dev/stdout | cat")).out, dump);
    QCOMPARE(shell(QStringLiteral("corvelctl dump /dev/fd/3 3>&1")).out, dump);
}

void TestCtlFiles::aLinkStaysALink()
{
    m_home->write("target", "old");
    QVERIFY(QFile::link(m_home->path("target"), m_home->path("link")));
    QCOMPARE(ctl("dump link").code, 0);
    QVERIFY(QFileInfo(m_home->path("link")).isSymLink());
    QCOMPARE(m_home->read("target"), ctl("dump -").out);
}

void TestCtlFiles::whatCannotBeWrittenLeavesTheOldFile()
{
    m_home->write("old.json", "old");
    const CtlResult result = shell(QStringLiteral("ulimit -f 0; trap '' XFSZ; corvelctl dump old.json"));
    QCOMPARE(result.code, 3);
    QCOMPARE(m_home->read("old.json"), QByteArray("old"));
    QCOMPARE(QDir(m_home->path("")).entryList({QStringLiteral("old.json*")}).size(), 1);
}

// As a shell gives them; the locale is plain C, as it is for a service.
void TestCtlFiles::namesAreBytes_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("utf-8") << QStringLiteral("gr\\303\\266\\303\\237e");
    QTest::newRow("latin-1") << QStringLiteral("gr\\366\\337e");
    QTest::newRow("no text at all") << QStringLiteral("\\377\\376");
    QTest::newRow("blanks") << QStringLiteral("two words");
    QTest::newRow("a quote") << QStringLiteral("it\\047s");
    QTest::newRow("a line end") << QStringLiteral("two\\nlines");
}

void TestCtlFiles::namesAreBytes()
{
    QFETCH(QString, name);
    const QString set = QStringLiteral("n=$(printf '%1'); set -e; ").arg(name);
    CtlResult result =
        shell(set + QStringLiteral("corvelctl -q dump \"$n\"; test -f \"$n\"; "
                                   "corvelctl diff \"$n\" store; corvelctl -q restore -y \"$n\""));
    QVERIFY2(result.code == 0, result.err.constData());
    result =
        shell(set + QStringLiteral(
                        "corvelctl -q table export \"$n\"; test -f \"$n\"; corvelctl -q table import \"$n\"; "
                        "corvelctl -q ipp export \"$n\"; corvelctl ipp import -n -q \"$n\""));
    QVERIFY2(result.code == 0, result.err.constData());
    result = shell(set + QStringLiteral("corvelctl sdp write 0/video -o \"$n.sdp\"; test -f \"$n.rx.sdp\"; "
                                        "test -f \"$n.tx.sdp\"; corvelctl -q sdp load -n \"$n.rx.sdp\" 1"));
    QVERIFY2(result.code == 0, result.err.constData());
}

void TestCtlFiles::configurationsHaveAnyName()
{
    const CtlResult result =
        shell(QStringLiteral("n=$(printf 'N\\303\\244chte'); set -e; corvelctl -q config new \"$n\"; "
                             "corvelctl -q -c \"$n\" set 0 domain=7; "
                             "corvelctl config use \"$n\"; corvelctl get 0 domain; corvelctl config list; "
                             "corvelctl config copy \"$n\" plain; corvelctl config rename default \"$n 2\"; "
                             "corvelctl config list; "
                             "corvelctl __complete -c N"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(result.out, QByteArray("0 domain: (absent) -> 7\n7\n* N\xc3\xa4"
                                    "chte\n  default\n* N\xc3\xa4"
                                    "chte\n  N\xc3\xa4"
                                    "chte 2\n  plain\n"
                                    "N\xc3\xa4"
                                    "chte\nN\xc3\xa4"
                                    "chte 2\n"));
}

void TestCtlFiles::closedStreamsAreNobodysFile_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("code");
    const auto row = [](const char *script, int code) {
        QTest::newRow(script) << QString::fromLatin1(script) << code;
    };
    row("corvelctl list >&-", 3);
    row("corvelctl list >&- 2>&-", 3);
    row("corvelctl set 0 domain=9 >&-", 3); // done, and nobody was told
    row("corvelctl set 0 domain=9 2>&-", 0);
    row("corvelctl set 0 domain=9 <&-", 0);
    row("corvelctl set 0 domain=9 <&- >&- 2>&-", 3);
    row("corvelctl dump out.json >&-", 0);
    row("corvelctl dump out.json <&- >&- 2>&-", 0);
    row("corvelctl dump >&-", 3);
    row("corvelctl set - <&-", 2);
    row("corvelctl restore - -y <&-", 2);
    row("corvelctl --help >&-", 3);
    row("corvelctl config copy default night >&-", 0);
    row("corvelctl sdp fix in.sdp -o out.sdp --ptp traceable --ttl 3 >&-", 3);
}

// A file that is opened gets the lowest free number: what is printed must not end in there.
void TestCtlFiles::closedStreamsAreNobodysFile()
{
    QFETCH(QString, script);
    QFETCH(int, code);
    QCOMPARE(shell(script).code, code);
    QCOMPARE(m_home->read("corvel/.rkcfg-lock"), QByteArray());
    QVERIFY(m_home->read("corvel/default.rkcfg").startsWith("SQLite format 3"));
    QCOMPARE(ctl("get 0/video rx.dst").out, QByteArray("239.1.1.1\n"));
    const QByteArray dump = m_home->read("out.json"), copy = m_home->read("out.sdp");
    QVERIFY(dump.isEmpty() || ctl("restore out.json -n").code == 0);
    QVERIFY(copy.isEmpty() || copy.startsWith("v=0\r\n"));
}

void TestCtlFiles::anEmptyNameIsNotTheServers_data()
{
    QTest::addColumn<QString>("script");
    for (const char *script :
         {"corvelctl -c '' set 0 domain=9",
          "corvelctl --config= set 0 domain=9",
          "corvelctl set 0 domain=9 -c \"$UNSET\"",
          "corvelctl undo --since ''",
          "corvelctl undo --since=",
          "corvelctl dump d.json && corvelctl set 0 domain=5 -q && corvelctl restore d.json --from '' -y",
          "corvelctl set '' domain=9",
          "corvelctl unset ''  domain",
          "corvelctl undo --batch ''",
          "corvelctl copy '' 1 -y",
          "corvelctl copy 0 '' -y",
          "corvelctl config use ''",
          "corvelctl config copy '' night",
          "corvelctl config copy default ''",
          "corvelctl restore ''",
          "corvelctl flows '' --from 239.1.1.1:5004",
          "corvelctl flows 0 --from ''",
          "corvelctl get ''",
          "corvelctl get 0 ''",
          "corvelctl unset 0 ''",
          "corvelctl blame ''",
          "corvelctl dump ''",
          "corvelctl ipp export ''",
          "corvelctl table export ''",
          "corvelctl sdp fix in.sdp -o ''"})
        QTest::newRow(script) << QString::fromLatin1(script);
}

// A variable of a script that was never set means nothing, least of all the store in use.
void TestCtlFiles::anEmptyNameIsNotTheServers()
{
    QFETCH(QString, script);
    const CtlResult result = shell(script);
    QVERIFY2(result.code == 2 || result.code == 3, QByteArray::number(result.code).constData());
    QVERIFY(result.err.startsWith("corvelctl: "));
    QVERIFY(ctl("get 0 domain").out != QByteArray("9\n"));
    QCOMPARE(ctl("get 0/video rx.dst").out, QByteArray("239.1.1.1\n"));
}

QTEST_GUILESS_MAIN(TestCtlFiles)
#include "test_ctl_files.moc"
