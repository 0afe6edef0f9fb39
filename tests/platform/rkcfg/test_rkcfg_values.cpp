// SPDX-License-Identifier: MIT
// One value at a time: what comes back, what the result says, and what bad calls do.
#include "storehome.h"

#include <QFile>
#include <QtTest>

class TestRkcfgValues : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void absentTextLeavesVariablesAlone();
    void absentNumberLeavesVariableAlone();
    void textRoundTrip_data();
    void textRoundTrip();
    void textWithoutZeroGetsOne();
    void sizeIsToldForNullBufferAndSizeZero();
    void shortBufferGetsTheFirstBytes();
    void bufferWithoutRoomForTheZero();
    void numberRoundTrip_data();
    void numberRoundTrip();
    void writeTellsWhetherSomethingChanged();
    void equalWriteTouchesNoFile();
    void textIsNoNumber();
    void numberIsNoText();
    void pathsIgnoreCase();
    void pathsKeepTheCaseOfTheirFirstWriting();
    void onlyAsciiCaseIsIgnored();
    void valueNamesAreExact();
    void emptyNamesAreNamesToo();
    void anyHandleButTheDefaultIsRefused_data();
    void anyHandleButTheDefaultIsRefused();
    void nullPointersAreRefused();
    void sameFailureIsLoggedOnce();
    void saveTakesTheCurrentNameOnly();
    void saveOpensAndCloseForgives();
    void walkGoesInOrder();
    void walkStaysBelowItsPath();
    void walkPassesOverNeighbours();
    void walkEndsWhenTold();
    void walkMayUseTheStore();

private:
    std::unique_ptr<StoreHome> m_home;
};

void TestRkcfgValues::absentTextLeavesVariablesAlone()
{
    char buffer[8] = "as was";
    uint32_t size = sizeof buffer;
    QVERIFY(rkCFGValueString(store, "KWX\\Config", "None", buffer, &size, 0) != 0);
    QCOMPARE(buffer, "as was");
    QCOMPARE(size, uint32_t(sizeof buffer));
    QVERIFY(rkCFGValueString(store, "KWX\\Config", "None", nullptr, &size, 0) != 0);
    QCOMPARE(size, uint32_t(sizeof buffer));
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgValues::absentNumberLeavesVariableAlone()
{
    uint32_t value = 4;
    QVERIFY(rkCFGValueDword(store, "KWX\\Config", "MaxIntChannels", &value, 0) != 0);
    QCOMPARE(value, 4u);
    QVERIFY(putNumber("KWX\\Config", "MaxIntChannels", 0));
    QCOMPARE(rkCFGValueDword(store, "KWX\\Config", "MaxIntChannels", &value, 0), 0);
    QCOMPARE(value, 0u);
}

void TestRkcfgValues::textRoundTrip_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("address") << QByteArray("239.1.2.3");
    QTest::newRow("number") << QByteArray("5004");
    QTest::newRow("utf-8") << QByteArray("Stra\xC3\x9F"
                                         "e \xF0\x9F\x93\xBA");
    QTest::newRow("latin-1") << QByteArray("Stra\xDF"
                                           "e");
    QTest::newRow("all bytes") << noise(1000, 1);
    QTest::newRow("zero inside") << QByteArray("a\0b", 3);
    QTest::newRow("zero last") << QByteArray("ab\0", 3);
    QTest::newRow("only zeros") << QByteArray(3, '\0');
    QTest::newRow("lines") << QByteArray("one\r\ntwo\n");
    QTest::newRow("quotes") << QByteArray("it's \"so\"; DROP TABLE setting; --");
    QTest::newRow("4095 bytes") << QByteArray(4095, 'x');
    QTest::newRow("4096 bytes") << QByteArray(4096, 'x');
    QTest::newRow("4097 bytes") << QByteArray(4097, 'x');
    QTest::newRow("1 MiB") << noise(1 << 20, 2);
}

void TestRkcfgValues::textRoundTrip()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(putText("KWX\\Internal0\\IpConfig", "Text", bytes));
    QCOMPARE(text("KWX\\Internal0\\IpConfig", "Text"), bytes);
    closeStore();
    QCOMPARE(text("KWX\\Internal0\\IpConfig", "Text"), bytes);
    QVERIFY(!putText("KWX\\Internal0\\IpConfig", "Text", bytes));
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgValues::textWithoutZeroGetsOne()
{
    char bytes[] = {'a', 'b', 'c'};
    uint32_t size = 3;
    QVERIFY(rkCFGValueString(store, "p", "n", bytes, &size, 1) != 0);
    QCOMPARE(text("p", "n"), QByteArray("abc"));
    QVERIFY(!putText("p", "n", "abc"));
    size = 0;
    QVERIFY(rkCFGValueString(store, "p", "n", bytes, &size, 1) != 0);
    QCOMPARE(text("p", "n"), QByteArray(""));
}

void TestRkcfgValues::sizeIsToldForNullBufferAndSizeZero()
{
    putText("p", "n", "12345");
    uint32_t size = 99;
    QCOMPARE(rkCFGValueString(store, "p", "n", nullptr, &size, 0), 0);
    QCOMPARE(size, 6u);
    char buffer[] = "untouched";
    size = 0;
    QCOMPARE(rkCFGValueString(store, "p", "n", buffer, &size, 0), 0);
    QCOMPARE(size, 6u);
    QCOMPARE(buffer, "untouched");
    putText("p", "n", "");
    QCOMPARE(rkCFGValueString(store, "p", "n", nullptr, &size, 0), 0);
    QCOMPARE(size, 1u);
}

void TestRkcfgValues::shortBufferGetsTheFirstBytes()
{
    const QByteArray bytes = QByteArray(5000, 'y').replace(4094, 4, "abcd");
    putText("p", "n", bytes);
    QByteArray buffer(5001, '#');
    uint32_t size = 4096;
    QCOMPARE(rkCFGValueString(store, "p", "n", buffer.data(), &size, 0), 0);
    QCOMPARE(size, 5001u);
    QCOMPARE(buffer.left(4096), bytes.left(4096));
    QCOMPARE(buffer.mid(4096), QByteArray(905, '#'));
}

void TestRkcfgValues::bufferWithoutRoomForTheZero()
{
    putText("p", "n", "12345");
    char buffer[] = "#######";
    uint32_t size = 5;
    QCOMPARE(rkCFGValueString(store, "p", "n", buffer, &size, 0), 0);
    QCOMPARE(buffer, "12345##");
    size = 6;
    QCOMPARE(rkCFGValueString(store, "p", "n", buffer, &size, 0), 0);
    QCOMPARE(QByteArray(buffer, 7), QByteArray("12345\0#", 7));
}

void TestRkcfgValues::numberRoundTrip_data()
{
    QTest::addColumn<uint32_t>("value");
    for (const uint32_t value : {0u, 1u, 5004u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
        QTest::addRow("%u", value) << value;
}

void TestRkcfgValues::numberRoundTrip()
{
    QFETCH(uint32_t, value);
    QVERIFY(putNumber("p", "n", value));
    QCOMPARE(number("p", "n"), value);
    closeStore();
    QCOMPARE(number("p", "n"), value);
    QVERIFY(!putNumber("p", "n", value));
}

void TestRkcfgValues::writeTellsWhetherSomethingChanged()
{
    QVERIFY(putText("p", "text", "a"));
    QVERIFY(!putText("p", "text", "a"));
    QVERIFY(putText("p", "text", "b"));
    QVERIFY(putText("p", "text", ""));
    QVERIFY(!putText("p", "text", ""));
    QVERIFY(putNumber("p", "number", 0));
    QVERIFY(!putNumber("p", "number", 0));
    QVERIFY(putNumber("p", "number", 1));
}

void TestRkcfgValues::equalWriteTouchesNoFile()
{
    putText("p", "n", "a");
    const QByteArray database = content(m_home->database());
    const QByteArray log = content(m_home->database() + QStringLiteral("-wal"));
    QVERIFY(!log.isEmpty());
    putText("p", "n", "a");
    putText("P", "n", "a");
    QCOMPARE(content(m_home->database()), database);
    QCOMPARE(content(m_home->database() + QStringLiteral("-wal")), log);
}

void TestRkcfgValues::textIsNoNumber()
{
    putText("p", "n", "77");
    uint32_t value = 5;
    QVERIFY(rkCFGValueDword(store, "p", "n", &value, 0) != 0);
    QCOMPARE(value, 5u);
    QVERIFY(putNumber("p", "n", 77));
    QCOMPARE(number("p", "n"), 77u);
}

void TestRkcfgValues::numberIsNoText()
{
    putNumber("p", "n", 77);
    char buffer[4] = "abc";
    uint32_t size = sizeof buffer;
    QVERIFY(rkCFGValueString(store, "p", "n", buffer, &size, 0) != 0);
    QCOMPARE(size, 4u);
    QCOMPARE(buffer, "abc");
    QVERIFY(putText("p", "n", "77"));
    QCOMPARE(text("p", "n"), QByteArray("77"));
    QCOMPARE(number("p", "n"), std::nullopt);
}

void TestRkcfgValues::pathsIgnoreCase()
{
    QVERIFY(putNumber("KWX\\Advanced\\AvHal", "nmosoverride", 1));
    QCOMPARE(number("KWX\\Advanced\\AvHAL", "nmosoverride"), 1u);
    QVERIFY(!putNumber("kwx\\advanced\\avhal", "nmosoverride", 1));
    QVERIFY(putNumber("KWX\\ADVANCED\\AVHAL", "nmosoverride", 2));
    QCOMPARE(number("KWX\\Advanced\\AvHal", "nmosoverride"), 2u);
}

void TestRkcfgValues::pathsKeepTheCaseOfTheirFirstWriting()
{
    putText("KWX\\First", "a", "1");
    putText("kwx\\FIRST", "b", "2");
    putText("kwx\\first", "a", "3");
    QCOMPARE(tool({QStringLiteral("list")}).out, QByteArray("KWX\\First\ta\t3\nKWX\\First\tb\t2\n"));
}

void TestRkcfgValues::onlyAsciiCaseIsIgnored()
{
    putText("\xC3\xA4", "n", "small");
    putText("\xC3\x84", "n", "capital");
    QCOMPARE(text("\xC3\xA4", "n"), QByteArray("small"));
}

void TestRkcfgValues::valueNamesAreExact()
{
    putText("p", "Name", "a");
    putText("p", "name", "b");
    QCOMPARE(text("p", "Name"), QByteArray("a"));
    QCOMPARE(text("p", "name"), QByteArray("b"));
    QCOMPARE(text("p", "NAME"), std::nullopt);
    QCOMPARE(text("p", "Name "), std::nullopt);
}

void TestRkcfgValues::emptyNamesAreNamesToo()
{
    QVERIFY(putText("", "", "a"));
    QCOMPARE(text("", ""), QByteArray("a"));
}

void TestRkcfgValues::anyHandleButTheDefaultIsRefused_data()
{
    QTest::addColumn<qintptr>("handle");
    QTest::newRow("null") << qintptr(0);
    QTest::newRow("one") << qintptr(1);
    QTest::newRow("minus two") << qintptr(-2);
    QTest::newRow("32 bits") << qintptr(0xFFFFFFFF);
}

void TestRkcfgValues::anyHandleButTheDefaultIsRefused()
{
    QFETCH(qintptr, handle);
    void *const other = reinterpret_cast<void *>(handle);
    putNumber("p", "n", 1);
    uint32_t value = 9;
    char buffer[] = "abc";
    uint32_t size = 4;
    QVERIFY(rkCFGValueDword(other, "p", "n", &value, 0) != 0);
    QCOMPARE(rkCFGValueDword(other, "p", "n", &value, 1), 0);
    QVERIFY(rkCFGValueString(other, "p", "n", buffer, &size, 0) != 0);
    QCOMPARE(rkCFGValueString(other, "p", "n", buffer, &size, 1), 0);
    QVERIFY(rkCFGSave(other, nullptr, 0) != 0);
    QVERIFY(rkCFGClose(other, 1) != 0);
    QCOMPARE(value, 9u);
    QCOMPARE(number("p", "n"), 1u);
    QVERIFY(!takeLog().isEmpty());
}

void TestRkcfgValues::nullPointersAreRefused()
{
    uint32_t value = 9;
    uint32_t size = 4;
    char buffer[] = "abc";
    for (const int write : {0, 1}) {
        const int refused = write ? 0 : 1;
        QCOMPARE(rkCFGValueDword(store, nullptr, "n", &value, write), refused);
        QCOMPARE(rkCFGValueDword(store, "p", nullptr, &value, write), refused);
        QCOMPARE(rkCFGValueDword(store, "p", "n", nullptr, write), refused);
        QCOMPARE(rkCFGValueString(store, nullptr, "n", buffer, &size, write), refused);
        QCOMPARE(rkCFGValueString(store, "p", nullptr, buffer, &size, write), refused);
        QCOMPARE(rkCFGValueString(store, "p", "n", buffer, nullptr, write), refused);
    }
    QCOMPARE(rkCFGValueString(store, "p", "n", nullptr, &size, 1), 0);
    QVERIFY(rkCFGSetDefaultName(nullptr) != 0);
    QVERIFY(rkCFGGetDefaultName(nullptr, 10) != 0);
    QVERIFY(rkCFGGetDefaultName(buffer, 0) != 0);
    QVERIFY(rkCFGForEach(store, nullptr, nullptr, nullptr) != 0);
    QCOMPARE(value, 9u);
    QCOMPARE(size, 4u);
    QCOMPARE(buffer, "abc");
    // Nothing of it was stored, and nothing of it made a store.
    QCOMPARE(m_home->files(QStringLiteral("*.rkcfg")), QStringList());
}

void TestRkcfgValues::sameFailureIsLoggedOnce()
{
    uint32_t value = 0;
    for (int i = 0; i < 5; ++i)
        rkCFGValueDword(nullptr, "p", "n", &value, 0);
    QCOMPARE(takeLog().size(), 1);
    // A call that works lets it be told again.
    putNumber("p", "n", 1);
    rkCFGValueDword(nullptr, "p", "n", &value, 0);
    QCOMPARE(takeLog().size(), 1);
}

void TestRkcfgValues::saveTakesTheCurrentNameOnly()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGSave(store, nullptr, 0), 0);
    QCOMPARE(rkCFGSave(store, "default", 0), 0);
    QVERIFY(rkCFGSave(store, "other", 0) != 0);
    QCOMPARE(m_home->files(QStringLiteral("other*")), QStringList());
}

void TestRkcfgValues::saveOpensAndCloseForgives()
{
    QCOMPARE(save(), 0);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(rkCFGClose(store, 0), 0);
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 0), 0);
    QCOMPARE(save(), 0);
    QCOMPARE(number("p", "n"), 1u);
}

namespace {

struct Walk {
    QStringList seen;
    int stopAfter = 1000;
};

int visit(void *context, const char *path, const char *name, const char *text, uint32_t size, uint32_t number)
{
    auto *walk = static_cast<Walk *>(context);
    const QString value =
        text ? QString::fromUtf8(text, static_cast<int>(size) - 1) : QString::number(number);
    walk->seen << QStringLiteral("%1|%2|%3").arg(QString::fromUtf8(path), QString::fromUtf8(name), value);
    return walk->seen.size() >= walk->stopAfter ? 1 : 0;
}

QStringList walk(const char *path, int stopAfter = 1000)
{
    Walk walk{{}, stopAfter};
    if (rkCFGForEach(store, path, visit, &walk) != 0)
        return {QStringLiteral("failed")};
    return walk.seen;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

void TestRkcfgValues::walkGoesInOrder()
{
    QCOMPARE(walk(nullptr), QStringList());
    putNumber("b", "n", 2);
    putText("a", "z", "last");
    putText("a", "b", "");
    QCOMPARE(walk(nullptr), words("a|b| a|z|last b|n|2"));
}

void TestRkcfgValues::walkStaysBelowItsPath()
{
    for (const char *path : {"KWX", "KWX\\A", "KWX\\A\\B", "KWX\\AB", "KWX_A", "K%"})
        putNumber(path, "n", 1);
    QCOMPARE(walk("kwx\\a"), words("KWX\\A|n|1 KWX\\A\\B|n|1"));
    QCOMPARE(walk("KWX\\A\\"), QStringList());
    QCOMPARE(walk("K%"), words("K%|n|1"));
    QCOMPARE(walk("none"), QStringList());
}

// Those that stand beside it in the store's order, or would in another one.
void TestRkcfgValues::walkPassesOverNeighbours()
{
    for (const char *path : {"k", "k\\b", "K\\C", "k\\c\\d", "k\xc3\xa4", "k]", "k[", "k\\]", "k 1", "k1\\b",
                             "kz", "KA\\b", "k^", "k_", "k{", "\\k", "k\\\xff"})
        putNumber(path, "n", 1);
    QStringList below;
    for (const QString &line : walk(nullptr)) {
        const QString lower = line.toLower();
        if (lower.startsWith(QLatin1String("k|")) || lower.startsWith(QLatin1String("k\\")))
            below << line;
    }
    QCOMPARE(below.size(), 6);
    QCOMPARE(walk("k"), below);
    QCOMPARE(walk("K"), below);
    QCOMPARE(walk(""), words("\\k|n|1"));
}

void TestRkcfgValues::walkEndsWhenTold()
{
    for (const char *name : {"a", "b", "c"})
        putNumber("p", name, 1);
    QCOMPARE(walk(nullptr, 2), words("p|a|1 p|b|1"));
}

void TestRkcfgValues::walkMayUseTheStore()
{
    putNumber("p", "a", 1);
    putNumber("p", "b", 1);
    const auto increase = [](void *, const char *path, const char *name, const char *, uint32_t, uint32_t n) {
        return putNumber(path, name, n + 1) ? 0 : 1;
    };
    QCOMPARE(rkCFGForEach(store, nullptr, increase, nullptr), 0);
    QCOMPARE(walk(nullptr), words("p|a|2 p|b|2"));
}

QTEST_GUILESS_MAIN(TestRkcfgValues)
#include "test_rkcfg_values.moc"
