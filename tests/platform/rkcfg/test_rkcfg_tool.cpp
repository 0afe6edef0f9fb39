// SPDX-License-Identifier: MIT
// The command-line tool: exact output, exit status, and that it works on the same store.
#include "storehome.h"

#include <QFile>
#include <QtTest>

class TestRkcfgTool : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void getPrintsTheExactBytes_data();
    void getPrintsTheExactBytes();
    void getPrintsNumbers();
    void getTellsAbsence();
    void setStores();
    void setKeepsTheType();
    void setKnowsTheServersNames_data();
    void setKnowsTheServersNames();
    void setMendsTheTypeOfAKnownName();
    void forceKeepsTheTypeOfAKnownName();
    void setRefusesNewNames();
    void unsetRemoves();
    void setDwordTakesNumbersOnly_data();
    void setDwordTakesNumbersOnly();
    void listPrintsLines();
    void dumpStoresItAllAgain();
    void configsListsNames();
    void defaultPrintsAndChooses();
    void wrongUsage_data();
    void wrongUsage();
    void helpAndVersion();
    void failureIsTold();
    void fullOutputIsTold();
    void aClosedOutputIsNoFileOfTheStore();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

void TestRkcfgTool::getPrintsTheExactBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("address") << QByteArray("239.1.2.3");
    QTest::newRow("utf-8") << QByteArray("Stra\xC3\x9F"
                                         "e");
    QTest::newRow("noise") << noise(10000, 3);
    QTest::newRow("percent") << QByteArray("%s%n%d");
    QTest::newRow("zeros") << QByteArray("a\0b", 3);
}

void TestRkcfgTool::getPrintsTheExactBytes()
{
    QFETCH(QByteArray, bytes);
    putText("KWX\\A", "n", bytes);
    const ToolResult result = tool(words("get kwx\\a n"));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, bytes + '\n');
    QCOMPARE(result.err, QByteArray());
}

void TestRkcfgTool::getPrintsNumbers()
{
    putNumber("p", "n", 4294967295u);
    QCOMPARE(tool(words("get p n")).out, QByteArray("4294967295\n"));
}

void TestRkcfgTool::getTellsAbsence()
{
    const ToolResult result = tool(words("get p n"));
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QByteArray());
}

void TestRkcfgTool::setStores()
{
    QCOMPARE(
        tool({QStringLiteral("set-text"), QStringLiteral("p"), QStringLiteral("n"), QStringLiteral("a  b\n")})
            .code,
        0);
    QCOMPARE(text("p", "n"), QByteArray("a  b\n"));
    QCOMPARE(tool({QStringLiteral("set"), QStringLiteral("p"), QStringLiteral("n"), QString()}).code, 0);
    QCOMPARE(text("p", "n"), QByteArray(""));
    // Storing the same again is a success too.
    QCOMPARE(tool({QStringLiteral("set"), QStringLiteral("p"), QStringLiteral("n"), QString()}).code, 0);
    QCOMPARE(tool(words("set p n --help")).code, 0);
    QCOMPARE(text("p", "n"), QByteArray("--help"));
    QCOMPARE(tool(words("set-dword p n 7")).code, 0);
    QCOMPARE(number("p", "n"), 7u);
}

void TestRkcfgTool::setKeepsTheType()
{
    putNumber("p", "n", 1);
    putText("p", "t", "1");
    QCOMPARE(tool(words("set p n 0x10")).code, 0);
    QCOMPARE(number("p", "n"), 16u);
    const ToolResult refused = tool(words("set p n sixteen"));
    QCOMPARE(refused.code, 2);
    QVERIFY(refused.err.contains("not a number"));
    QCOMPARE(number("p", "n"), 16u);
    QCOMPARE(tool(words("set p t 7")).code, 0);
    QCOMPARE(text("p", "t"), QByteArray("7"));
    // "--" is what dump writes: a text, whatever was there.
    QCOMPARE(tool(words("set -- p n 7")).code, 0);
    QCOMPARE(text("p", "n"), QByteArray("7"));
}

void TestRkcfgTool::setKnowsTheServersNames_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("listed"); // empty: refused
    const auto row = [](const char *path, const char *name, const char *value, const char *listed) {
        QTest::addRow("%s %s %s", path, name, value)
            << QString::fromLatin1(path) << QString::fromLatin1(name) << QString::fromLatin1(value)
            << QString::fromLatin1(listed);
    };
    row("KWX\\Internal0\\IpConfig", "ReceiveDestinationPort", "5004", "5004");
    row("KWX\\Internal117\\IpConfig", "ReceiveAudDestinationPort7", "0x10", "16");
    row("kwx\\internal0\\ipconfig", "TransmitDestinationIp", "239.1.1.1", "239.1.1.1");
    row("KWX\\Internal1\\IpConfig", "ClockGrandMaster", "7", "7");
    row("KWX\\Config", "MaxIntChannels", "8", "8");
    row("KWX\\Advanced\\AvHAL", "nmosoverride", "1", "1");
    row("KWX\\Internal0\\IpConfig", "nmosdomain", "local", "local");
    row("KWX\\Internal0\\IpConfig", "ReceiveDestinationPort", "five", "");
    row("KWX\\Internal0\\IpConfig", "RecieveDestinationPort", "5004", "");
    row("KWX\\Internal0\\IpConfig", "ReceiveAudDestinationPort8", "5004", "");
    row("KWX\\Internal0\\IpConfg", "ReceiveDestinationPort", "5004", "");
    row("KWX\\Internal\\IpConfig", "ReceiveDestinationPort", "5004", "");
    row("KWX\\Internal1\\IpConfig", "nmosdomain", "local", "");
}

void TestRkcfgTool::setKnowsTheServersNames()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, listed);
    QCOMPARE(tool({QStringLiteral("set"), path, name, value}).code, listed.isEmpty() ? 2 : 0);
    QCOMPARE(tool({QStringLiteral("get"), path, name}).out,
             listed.isEmpty() ? QByteArray() : listed.toLatin1() + '\n');
}

// A text where the server reads a number would read as none.
void TestRkcfgTool::setMendsTheTypeOfAKnownName()
{
    putText("KWX\\Internal0\\IpConfig", "ReceiveDestinationPort", "5004");
    QCOMPARE(tool(words("set KWX\\Internal0\\IpConfig ReceiveDestinationPort 5006")).code, 0);
    QCOMPARE(number("KWX\\Internal0\\IpConfig", "ReceiveDestinationPort"), 5006u);
    putNumber("KWX\\Internal0\\IpConfig", "ReceiveDestinationIp", 7);
    QCOMPARE(tool(words("set --force KWX\\Internal0\\IpConfig ReceiveDestinationIp 10.0.0.1")).code, 0);
    QCOMPARE(text("KWX\\Internal0\\IpConfig", "ReceiveDestinationIp"), QByteArray("10.0.0.1"));
}

// It is for names that nobody knows; what is known stays what the server reads.
void TestRkcfgTool::forceKeepsTheTypeOfAKnownName()
{
    const char *const path = "KWX\\Internal3\\IpConfig";
    QCOMPARE(tool(words("set --force KWX\\Internal3\\IpConfig ReceiveDestinationPort 5006")).code, 0);
    QCOMPARE(number(path, "ReceiveDestinationPort"), 5006u);
    QCOMPARE(tool(words("set --force kwx\\internal3\\ipconfig ClockDomain 127")).code, 0);
    QCOMPARE(number(path, "ClockDomain"), 127u);
    QCOMPARE(tool(words("set --force KWX\\Internal3\\IpConfig ReceiveDestinationPort many")).code, 2);
    QCOMPARE(number(path, "ReceiveDestinationPort"), 5006u);
    QCOMPARE(text(path, "ReceiveDestinationPort"), std::nullopt);
}

void TestRkcfgTool::setRefusesNewNames()
{
    const ToolResult refused = tool(words("set p n 7"));
    QCOMPARE(refused.code, 2);
    QVERIFY(refused.err.contains("p n: unknown and not there"));
    QCOMPARE(text("p", "n"), std::nullopt);
    QCOMPARE(tool(words("set --force p n 7")).code, 0);
    QCOMPARE(text("p", "n"), QByteArray("7"));
    QCOMPARE(tool(words("set --force -- -p -n -t")).code, 0);
    QCOMPARE(text("-p", "-n"), QByteArray("-t"));
}

void TestRkcfgTool::unsetRemoves()
{
    putNumber("p", "n", 1);
    putText("p", "t", "x");
    QCOMPARE(tool(words("unset p n")).code, 0);
    QCOMPARE(tool(words("unset P t")).code, 0);
    QCOMPARE(tool(words("list")).out, QByteArray());
    const ToolResult again = tool(words("unset p n"));
    QCOMPARE(again.code, 1);
    QCOMPARE(again.err, QByteArray());
}

void TestRkcfgTool::setDwordTakesNumbersOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("code");
    QTest::addColumn<uint32_t>("value");
    QTest::newRow("zero") << QStringLiteral("0") << 0 << 0u;
    QTest::newRow("largest") << QStringLiteral("4294967295") << 0 << 4294967295u;
    QTest::newRow("hexadecimal") << QStringLiteral("0x1F") << 0 << 31u;
    QTest::newRow("too large") << QStringLiteral("4294967296") << 2 << 1u;
    QTest::newRow("far too large") << QStringLiteral("99999999999999999999999") << 2 << 1u;
    QTest::newRow("negative") << QStringLiteral("-1") << 2 << 1u;
    QTest::newRow("empty") << QString() << 2 << 1u;
    QTest::newRow("letters") << QStringLiteral("abc") << 2 << 1u;
    QTest::newRow("tail") << QStringLiteral("5x") << 2 << 1u;
    QTest::newRow("space") << QStringLiteral(" 5") << 2 << 1u;
}

void TestRkcfgTool::setDwordTakesNumbersOnly()
{
    QFETCH(QString, text);
    QFETCH(int, code);
    QFETCH(uint32_t, value);
    putNumber("p", "n", 1);
    const ToolResult result =
        tool({QStringLiteral("set-dword"), QStringLiteral("p"), QStringLiteral("n"), text});
    QCOMPARE(result.code, code);
    QCOMPARE(result.err.isEmpty(), code == 0);
    QCOMPARE(number("p", "n"), value);
}

void TestRkcfgTool::listPrintsLines()
{
    QCOMPARE(tool(words("list")).out, QByteArray());
    putNumber("KWX\\B", "n", 5);
    putText("KWX\\A\\C", "n", "x y");
    QCOMPARE(tool(words("list")).out, QByteArray("KWX\\A\\C\tn\tx y\nKWX\\B\tn\t5\n"));
    QCOMPARE(tool(words("list kwx\\a")).out, QByteArray("KWX\\A\\C\tn\tx y\n"));
    QCOMPARE(tool(words("list none")).out, QByteArray());
    QCOMPARE(tool(words("list none")).code, 0);
}

void TestRkcfgTool::dumpStoresItAllAgain()
{
    putText("KWX\\A b", "it's", "a 'b' \"c\" $d `e` \\ \n end");
    putText("-p", "-n", "-t");
    putText("p", "empty", "");
    putNumber("p", "n", 7);
    const QByteArray listed = tool(words("list")).out;
    const QByteArray dumped = tool(words("dump")).out;
    const StoreHome fresh;
    QProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"),
                       QStringLiteral(CORVEL_BIN_DIR ":") + environment.value(QStringLiteral("PATH")));
    shell.setProcessEnvironment(environment);
    shell.start(QStringLiteral("sh"), {QStringLiteral("-e")});
    shell.write(dumped);
    shell.closeWriteChannel();
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.exitCode(), 0);
    QCOMPARE(tool(words("list")).out, listed);
}

void TestRkcfgTool::configsListsNames()
{
    QCOMPARE(tool(words("configs")).out, QByteArray("default\n"));
    rkCFGSetDefaultName("Gr\xC3\xB6\xC3\x9F"
                        "e");
    rkCFGSetDefaultName("a b");
    putNumber("p", "n", 1);
    save();
    QCOMPARE(tool(words("configs")).out, QByteArray("Gr\xC3\xB6\xC3\x9F"
                                                    "e\na b\n"));
}

void TestRkcfgTool::defaultPrintsAndChooses()
{
    QCOMPARE(tool(words("default")).out, QByteArray("default\n"));
    QCOMPARE(tool(words("default studio")).code, 0);
    QCOMPARE(tool(words("default")).out, QByteArray("studio\n"));
    const ToolResult refused = tool(words("default a/b"));
    QCOMPARE(refused.code, 3);
    QVERIFY(!refused.err.isEmpty());
    QCOMPARE(tool(words("default")).out, QByteArray("studio\n"));
}

void TestRkcfgTool::wrongUsage_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments : {"", "what", "get", "get p", "get p n x", "set p n", "set p n t u",
                                  "set --force", "unset p", "unset p n x", "set-text p n", "set-dword p n",
                                  "list a b", "dump x", "configs x", "default a b", "--help x", "-x"})
        QTest::newRow(arguments[0] ? arguments : "nothing") << QString::fromLatin1(arguments);
}

void TestRkcfgTool::wrongUsage()
{
    QFETCH(QString, arguments);
    const ToolResult result = tool(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QVERIFY(result.err.startsWith("Usage: rkcfg COMMAND"));
    QCOMPARE(m_home->files(), QStringList());
}

void TestRkcfgTool::helpAndVersion()
{
    const ToolResult help = tool(words("--help"));
    QCOMPARE(help.code, 0);
    for (const char *command : {"get PATH NAME", "set PATH NAME VALUE", "set-text PATH NAME TEXT",
                                "set-dword", "unset", "list", "dump", "configs", "default"})
        QVERIFY2(help.out.contains(command), command);
    QCOMPARE(tool(words("-h")).out, help.out);
    const ToolResult version = tool(words("--version"));
    QCOMPARE(version.code, 0);
    QVERIFY(QRegularExpression(QStringLiteral("^rkcfg \\d+\\.\\d+\\.\\d+\n$"))
                .match(QString::fromUtf8(version.out))
                .hasMatch());
    QCOMPARE(m_home->files(), QStringList());
}

void TestRkcfgTool::failureIsTold()
{
    overwrite(QString(m_home->folder()).chopped(1), "a file where the folder should be");
    for (const char *arguments : {"get p n", "set p n t", "set-text p n t", "unset p n", "set-dword p n 1",
                                  "list", "dump", "default x"}) {
        const ToolResult result = tool(words(arguments));
        QVERIFY2(result.code == 3, arguments);
        QVERIFY2(result.err.contains("rkcfg: "), arguments);
        QCOMPARE(result.out, QByteArray());
    }
}

void TestRkcfgTool::fullOutputIsTold()
{
    putText("p", "n", "text");
    QProcess process;
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), words("get p n"));
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 3);
}

// The first file that is opened would get the number of standard output, and what is printed would end in it.
void TestRkcfgTool::aClosedOutputIsNoFileOfTheStore()
{
    QCOMPARE(tool(words("set --force p n 7")).code, 0);
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), QStringLiteral(CORVEL_BIN_DIR "/rkcfg list >&-; " CORVEL_BIN_DIR
                                                                     "/rkcfg get p n >&- 2>&- <&-")});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(content(m_home->path(QStringLiteral("/.rkcfg-lock"))), QByteArray());
    QCOMPARE(text("p", "n"), QByteArray("7"));
}

QTEST_GUILESS_MAIN(TestRkcfgTool)
#include "test_rkcfg_tool.moc"
