// SPDX-License-Identifier: MIT
// Wrong, half, huge, binary and impossible input of every command that reads any: a message, code 2, and the
// store as it was.
#include "ctlhome.h"

#include <sys/stat.h>

class TestCtlBadInput : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void filesAreRefused_data();
    void filesAreRefused();
    void descriptionsAreJudgedOrRefused_data();
    void descriptionsAreJudgedOrRefused();
    void standardInputIsRefused_data();
    void standardInputIsRefused();
    void wordsAreRefused_data();
    void wordsAreRefused();
    void filesThatCannotBeWritten_data();
    void filesThatCannotBeWritten();

private:
    void refuses(const CtlResult &result);

    CtlHome m_home;
    QByteArray m_rows; // nothing of all this may change them
};

namespace {

const char *const kReaders[] = {"restore -y", "diff store", "ipp import", "ipp check",
                                "table import --apply"};

QByteArray half(const QByteArray &whole)
{
    return whole.left(whole.size() / 2);
}

} // namespace

void TestCtlBadInput::initTestCase()
{
    QCOMPARE(m_home.run("set 0/video rx.dst=239.1.1.1:20000 rx.use=all").code, 0);
    QCOMPARE(m_home.run("dump good.json").code, 0);
    const QByteArray dump = m_home.read("good.json");
    m_home.write("good.sdp", m_home.run("sdp write 0/video").out);
    m_home.write("empty", QByteArray());
    m_home.write("half", half(dump));
    m_home.write("changed", QByteArray(dump).replace("20000", "20001"));
    m_home.write("huge", "{\"format\": \"" + QByteArray(30000000, 'x'));
    m_home.write("deep", QByteArray(3000000, '['));
    m_home.write("zeros", QByteArray(10000, '\0'));
    m_home.write("latin1", "channel,gm\r\n0,\xe4\xf6\r\n");
    m_home.write("words", "what is this\nI do not know\n");
    QVERIFY(QDir().mkdir(m_home.path("folder")));
    QCOMPARE(mkfifo(m_home.path("fifo").toUtf8().constData(), 0600), 0);
    m_rows = m_home.rows();
}

void TestCtlBadInput::refuses(const CtlResult &result)
{
    QCOMPARE(result.code, 2);
    QVERIFY(result.err.startsWith("corvelctl: "));
    QVERIFY(!result.err.contains("terminate called"));
    QCOMPARE(m_home.rows(), m_rows);
}

void TestCtlBadInput::filesAreRefused_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("file");
    const char *const files[] = {"empty",   "half",      "changed",       "huge",   "deep",
                                 "zeros",   "latin1",    "words",         "folder", "fifo",
                                 "missing", "/dev/null", "/proc/self/mem"};
    for (const char *command : kReaders) {
        for (const char *file : files)
            QTest::addRow("%s %s", command, file) << QByteArray(command) << QByteArray(file);
    }
}

void TestCtlBadInput::filesAreRefused()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, file);
    refuses(m_home.run(command.constData(), {QString::fromUtf8(file)}));
}

// Any bytes are a description, if a bad one; what is no file is none.
void TestCtlBadInput::descriptionsAreJudgedOrRefused_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("code");
    const struct {
        const char *command;
        int judged; // of bytes that describe nothing
    } commands[] = {{"sdp check", 1}, {"sdp fix -o out.sdp", 2}, {"sdp load", 0}};
    for (const auto &row : commands) {
        for (const char *file : {"empty", "half", "huge", "deep", "zeros", "latin1", "words"})
            QTest::addRow("%s %s", row.command, file)
                << QByteArray(row.command) << QByteArray(file) << row.judged;
        for (const char *file : {"folder", "fifo", "missing", "/dev/null", "/proc/self/mem"})
            QTest::addRow("%s %s", row.command, file) << QByteArray(row.command) << QByteArray(file) << 2;
    }
}

void TestCtlBadInput::descriptionsAreJudgedOrRefused()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, file);
    QFETCH(int, code);
    QStringList more{QString::fromUtf8(file)};
    if (command.endsWith("load"))
        more << QStringLiteral("0");
    const CtlResult result = m_home.run(command.constData(), more);
    QCOMPARE(result.code, code);
    QVERIFY(!result.err.contains("terminate called"));
    QVERIFY(code != 2 || result.err.startsWith("corvelctl: "));
    QCOMPARE(m_home.rows(), m_rows);
    QVERIFY(!QFile::exists(m_home.path("out.sdp")));
}

void TestCtlBadInput::standardInputIsRefused_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("input");
    for (const char *command : {"restore -y -", "ipp import -", "table import --apply -", "set -"}) {
        QTest::addRow("%s zeros", command) << QByteArray(command) << QByteArray(100, '\0');
        QTest::addRow("%s not utf-8", command) << QByteArray(command) << QByteArray("0 gm=\xff\xfe\n");
        QTest::addRow("%s half", command) << QByteArray(command) << QByteArray("0 domain=1\n0 doma");
        QTest::addRow("%s one long line", command) << QByteArray(command) << QByteArray(3000000, 'x');
    }
}

void TestCtlBadInput::standardInputIsRefused()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, input);
    refuses(m_home.run(command.constData(), {}, input));
}

void TestCtlBadInput::wordsAreRefused_data()
{
    QTest::addColumn<QByteArray>("words");
    const char *const lines[] = {"set",
                                 "set 0",
                                 "set 0 domain",
                                 "set 0 domain=128",
                                 "set 0/video rx.dst=1.2.3",
                                 "set 0/vidoe rx.dst=1.2.3.4",
                                 "set 99 domain=1",
                                 "set nowhere domain=1",
                                 "set - domain=1",
                                 "set 0 SiteOwn=1",
                                 "set 0 SiteOwn:=x --force",
                                 "unset 0",
                                 "unset 0 domain --all",
                                 "unset server --all",
                                 "get",
                                 "get 0-3",
                                 "show 99999999999999999999",
                                 "show 0/audio/9",
                                 "copy 0",
                                 "copy 0 0 -y",
                                 "copy 0 99 -y",
                                 "copy 0 1 --step dst=9999999999999 -y",
                                 "copy 0 1 --step dst=-1.0.0.0 -y",
                                 "copy 0 1 --fields zebra -y",
                                 "flows 0",
                                 "flows 0 --from 239.1.1.1",
                                 "flows 0 --from 239.1.1.1:5 --count 9",
                                 "flows 0 --from 239.1.1.1:5 --side up",
                                 "undo --batch -1",
                                 "undo --batch 99999999999999999999",
                                 "undo --batch x",
                                 "undo --since 1",
                                 "undo --batch 1 --since 1h",
                                 "blame 0",
                                 "blame 0/video/zebra",
                                 "history --most -1",
                                 "watch --count x",
                                 "diff store",
                                 "diff store nowhere.json",
                                 "diff store good.json#other",
                                 "restore good.json --from other -y",
                                 "restore",
                                 "config",
                                 "config new",
                                 "config new .hidden",
                                 "config new a/b",
                                 "config copy nowhere b",
                                 "config rename default b",
                                 "config delete default -y",
                                 "config use nowhere",
                                 "ipp export x.ipp --flows 9",
                                 "table",
                                 "ptp --domain 128",
                                 "ptp --interface zebra",
                                 "ptp --interface 10.0.0",
                                 "ptp --gm zebra",
                                 "ptp --gm 00-1D",
                                 "ptp --channel 99",
                                 "ptp doctor --gm ::",
                                 "ptp doctor --channel 99",
                                 "sdp write 99",
                                 "sdp write 99/video -o x",
                                 "sdp load good.sdp 99",
                                 "sdp load good.sdp x",
                                 "sdp check good.sdp --of 99",
                                 "sdp fix good.sdp -o y.sdp --of 99",
                                 "ptp doctor --wait -1",
                                 "zebra",
                                 "--zebra"};
    for (const char *line : lines)
        QTest::newRow(line) << QByteArray(line);
    QTest::newRow("a word of 100000 bytes") << "set 0 " + QByteArray(100000, 'x') + "=1";
    QTest::newRow("a place of 100000 bytes") << "set " + QByteArray(100000, '1') + " domain=1";
    QTest::newRow("a name of 100000 bytes") << "config new " + QByteArray(100000, 'x');
}

void TestCtlBadInput::wordsAreRefused()
{
    QFETCH(QByteArray, words);
    refuses(m_home.run(words.constData()));
}

void TestCtlBadInput::filesThatCannotBeWritten_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("file");
    for (const char *command : {"dump", "ipp export", "table export"}) {
        for (const char *file : {"folder", "missing/file", "/proc/file"})
            QTest::addRow("%s %s", command, file) << QByteArray(command) << QByteArray(file);
    }
}

void TestCtlBadInput::filesThatCannotBeWritten()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, file);
    const CtlResult result = m_home.run(command.constData(), {QString::fromUtf8(file)});
    QCOMPARE(result.code, 3);
    QVERIFY(result.err.startsWith("corvelctl: cannot write "));
}

QTEST_GUILESS_MAIN(TestCtlBadInput)
#include "test_ctl_badinput.moc"
