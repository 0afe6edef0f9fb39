// SPDX-License-Identifier: MIT
#include "ops/dump.h"
#include "randomstore.h"
#include "rows.h"

#include <QCryptographicHash>
#include <QSet>

class TestDump : public QObject {
    Q_OBJECT

private slots:
    void looksLikeThis();
    void comesBackExactly();
    void severalConfigurations();
    void anEmptyOne();
    void layoutDoesNotMatter();
    void wrongOnesAreRefused_data();
    void wrongOnesAreRefused();
    void everyCutIsNoticed();
    void everyChangedValueIsNoticed();
    void deepNestingIsNoTrouble();
    void theReasonIsTold_data();
    void theReasonIsTold();
    void theChecksumIsOfThisForm_data();
    void theChecksumIsOfThisForm();
    void noTwoDumpsShareAChecksum();
    void theHighestNumberComesBack();
};

namespace {

ops::Snapshot small()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(8));
    values.set("KWX\\Config", "Name", text("a\"b"));
    values.set("Other", "Bytes", text("\xff\xfe"));
    return values;
}

} // namespace

void TestDump::looksLikeThis()
{
    QCOMPARE(ops::writeDump({{"default", small()}}),
             QByteArray("{\"format\": \"corvel-dump\",\n\"version\": 1,\n\"sha256\": \"") +
                 ops::dumpChecksum({{"default", small()}}) +
                 "\",\n\"configurations\": [\n{\"name\": \"default\", \"keys\": [\n"
                 "{\"path\": \"KWX\\\\Config\", \"values\": [\n[\"MaxIntChannels\", 8],\n[\"Name\", "
                 "\"a\\\"b\"]\n]},\n"
                 "{\"path\": \"Other\", \"values\": [\n[\"Bytes\", {\"base64\":\"//4=\"}]\n]}\n]}\n]}\n");
}

void TestDump::comesBackExactly()
{
    for (unsigned seed = 0; seed < 200; ++seed) {
        const ops::Snapshot values = RandomStore(seed).anything();
        const auto dump = ops::readDump(ops::writeDump({{"default", values}}));
        QVERIFY2(dump, dump ? "" : dump.failure().text.constData());
        QVERIFY(ops::difference(values, dump->front().values, ops::Spelling::Exact).empty());
        QCOMPARE(dump->front().values.rows().size(), values.rows().size());
    }
}

void TestDump::severalConfigurations()
{
    const auto dump = ops::readDump(
        ops::writeDump({{"default", small()}, {"n\xc3\xa4ght", ops::Snapshot()}, {"\xff", small()}}));
    QVERIFY(dump);
    QCOMPARE(int(dump->size()), 3);
    QCOMPARE((*dump)[1].name, QByteArray("n\xc3\xa4ght"));
    QVERIFY((*dump)[1].values.empty());
    QCOMPARE((*dump)[2].name, QByteArray("\xff"));
    QCOMPARE(int((*dump)[2].values.rows().size()), 3);
}

void TestDump::anEmptyOne()
{
    const auto dump = ops::readDump(ops::writeDump({}));
    QVERIFY(dump);
    QVERIFY(dump->empty());
}

void TestDump::layoutDoesNotMatter()
{
    QByteArray text = ops::writeDump({{"default", small()}});
    text.replace('\n', "").replace(": ", ":");
    QVERIFY(ops::readDump(text));
}

void TestDump::wrongOnesAreRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("says");
    const QByteArray good = ops::writeDump({{"default", small()}});
    const auto row = [&good](const char *name, const char *from, const char *to, const char *says) {
        QTest::newRow(name) << QByteArray(good).replace(from, to) << QByteArray(says);
    };
    QTest::newRow("empty") << QByteArray() << QByteArray("no JSON");
    QTest::newRow("a list") << QByteArray("[1]") << QByteArray("no dump");
    QTest::newRow("a number") << QByteArray("5") << QByteArray("no dump");
    QTest::newRow("not utf-8") << QByteArray("{\"\xff\": 1}") << QByteArray("no JSON");
    QTest::newRow("zeros") << QByteArray(100, '\0') << QByteArray("no JSON");
    row("another format", "corvel-dump", "corvel-dmup", "no dump");
    row("another version", "\"version\": 1", "\"version\": 2", "version");
    row("a value changed", ", 8]", ", 9]", "checksum");
    row("a type changed", ", 8]", ", \"8\"]", "checksum");
    row("a name changed", "MaxInt", "MinInt", "checksum");
    row("a path changed", "Other", "Othar", "checksum");
    row("the name changed", "\"default\"", "\"night\"", "checksum");
    row("no checksum", "sha256", "sha", "checksum");
    row("too large a number", ", 8]", ", 4294967296]", "0 to 4294967295");
    row("a negative number", ", 8]", ", -1]", "0 to 4294967295");
    row("a fraction", ", 8]", ", 8.0]", "0 to 4294967295");
    row("true", ", 8]", ", true]", "0 to 4294967295");
    row("null", ", 8]", ", null]", "0 to 4294967295");
    row("wrong base64", "//4=", "/*4=", "0 to 4294967295");
    row("a pair of three", ", 8]", ", 8, 8]", "no pair");
    row("a zero byte in a name", "Name", "Na\\u0000e", "no pair");
    row("no path", "\"path\"", "\"pfad\"", "");
    row("no values", "\"values\"", "\"werte\"", "");
    row("no configurations", "\"configurations\"", "\"configs\"", "");
}

void TestDump::wrongOnesAreRefused()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, says);
    const auto dump = ops::readDump(text);
    QVERIFY(!dump);
    QVERIFY2(dump.failure().text.contains(says), dump.failure().text.constData());
}

void TestDump::everyCutIsNoticed()
{
    const QByteArray good = ops::writeDump({{"default", small()}}).trimmed();
    for (int size = 0; size < good.size(); ++size)
        QVERIFY(!ops::readDump(good.left(size)));
}

void TestDump::everyChangedValueIsNoticed()
{
    const QByteArray good = ops::writeDump({{"default", small()}});
    const auto before = ops::readDump(good);
    for (int at = 0; at < good.size(); ++at) {
        QByteArray changed = good;
        changed[at] = char(changed[at] ^ 1);
        const auto dump = ops::readDump(changed);
        // Blanks may change, and nothing else.
        QVERIFY(!dump || ops::dumpChecksum(*dump) == ops::dumpChecksum(*before));
    }
}

void TestDump::deepNestingIsNoTrouble()
{
    QVERIFY(!ops::readDump(QByteArray(1000000, '[')));
    QVERIFY(!ops::readDump(QByteArray(100000, '[') + QByteArray(100000, ']')));
}

// One key or configuration that is none, in a dump that is right in everything else; what is wrong inside is
// told before the checksum is.
void TestDump::theReasonIsTold_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char *configuration, const char *reason) {
        QTest::newRow(configuration) << QByteArray(configuration) << QByteArray(reason);
    };
    const char *const noKey = "a key without a path or without values";
    const char *const noConfiguration = "a configuration without a name or with a key that is none";
    row(R"({"name":"n","keys":[{"path":5,"values":[]}]})", noKey);
    row(R"({"name":"n","keys":[{"path":"a\u0000b","values":[]}]})", noKey);
    row(R"({"name":"n","keys":[{"path":"p","values":5}]})", noKey);
    row(R"({"name":"n","keys":[{"path":"p","values":{}}]})", noKey);
    row(R"({"name":"n","keys":[{"path":null,"values":[]}]})", noKey);
    row(R"({"name":"n","keys":[{"path":"p"}]})", noConfiguration);
    row(R"({"name":"n","keys":[{"values":[]}]})", noConfiguration);
    row(R"({"name":"n","keys":[5]})", noConfiguration);
    row(R"({"name":"n","keys":5})", noConfiguration);
    row(R"({"name":"n","keys":{}})", noConfiguration);
    row(R"({"name":5,"keys":[]})", noConfiguration);
    row(R"({"name":null,"keys":[]})", noConfiguration);
    row(R"({"name":"n"})", "a configuration that is none");
    row(R"({"keys":[]})", "a configuration that is none");
    row("5", "a configuration that is none");
    row(R"([{"name":"n","keys":[]}])", "a configuration that is none");
    row(R"({"name":"n","keys":[{"path":"p","values":[5]}]})", "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[[]]}]})", "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[["a"]]}]})",
        "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[["a",1,2]]}]})",
        "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[[1,1]]}]})",
        "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[["a\u0000",1]]}]})",
        "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[{"a":1,"b":2}]}]})",
        "a value of p is no pair of name and value");
    row(R"({"name":"n","keys":[{"path":"p","values":[["a",4294967296]]}]})",
        "p a: neither a text nor a number from 0 to 4294967295");
    row(R"({"name":"n","keys":[{"path":"p","values":[["a",[]]]}]})",
        "p a: neither a text nor a number from 0 to 4294967295");
    row(R"({"name":"n","keys":[{"path":"p","values":[["a",-1],["b"]]}]})",
        "p a: neither a text nor a number from 0 to 4294967295"); // the first one is told
}

void TestDump::theReasonIsTold()
{
    QFETCH(QByteArray, configuration);
    QFETCH(QByteArray, reason);
    const auto dump = ops::readDump("{\"format\":\"corvel-dump\",\"version\":1,\"sha256\":\"\","
                                    "\"configurations\":[" +
                                    configuration + "]}");
    QVERIFY(!dump);
    QCOMPARE(dump.failure().text, reason);
    QCOMPARE(dump.failure().kind, ops::Failure::Input);
}

// As docs/file-formats.md has it, so that other programs can write one: each text with its length before it.
void TestDump::theChecksumIsOfThisForm_data()
{
    QTest::addColumn<int>("rows");
    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("many") << 5000; // more than is hashed at a time
}

void TestDump::theChecksumIsOfThisForm()
{
    QFETCH(int, rows);
    std::vector<ops::Row> values;
    QByteArray stream = "5:night" + QByteArray::number(rows) + ';';
    for (int row = 0; row < rows; ++row) {
        const QByteArray name = QByteArray::number(100000 + row);
        const bool isText = row % 2 == 1;
        values.push_back({"path", name, isText ? text("words") : number(quint32(row))});
        const QByteArray value = isText ? QByteArray("words") : QByteArray::number(row);
        stream += "4:path6:" + name + (isText ? 't' : 'n') + QByteArray::number(value.size()) + ':' + value;
    }
    const ops::Dump dump{{"night", ops::Snapshot::fromRows(values)}};
    QCOMPARE(ops::dumpChecksum(dump), QCryptographicHash::hash(stream, QCryptographicHash::Sha256).toHex());
    const auto back = ops::readDump(ops::writeDump(dump));
    QVERIFY(back);
    QCOMPARE(int(back->front().values.rows().size()), rows);
}

// The same bytes, parted otherwise.
void TestDump::noTwoDumpsShareAChecksum()
{
    const auto one = [](const char *path, const char *name, const ops::Value &value) {
        ops::Snapshot values;
        values.set(path, name, value);
        return ops::Dump{{"n", values}};
    };
    const std::vector<ops::Dump> dumps{
        {},
        {{"n", {}}},
        {{"n", {}}, {"n", {}}},
        {{"nn", {}}},
        one("ab", "c", number(1)),
        one("a", "bc", number(1)),
        one("ab", "c", text("1")),
        one("ab", "c", text("")),
        one("ab", "c1", text("")),
        one("ab", "c", number(11)),
        one("AB", "c", number(1)),
    };
    QSet<QByteArray> sums;
    for (const ops::Dump &dump : dumps)
        sums.insert(ops::dumpChecksum(dump));
    QCOMPARE(sums.size(), int(dumps.size()));
}

void TestDump::theHighestNumberComesBack()
{
    ops::Snapshot values;
    values.set("p", "a", number(0xffffffff));
    values.set("p", "b", number(0));
    const auto dump = ops::readDump(ops::writeDump({{"n", values}}));
    QVERIFY(dump);
    QCOMPARE(dump->front().values.number("p", "a"), 0xffffffffu);
    QCOMPARE(*dump->front().values.find("p", "b"), number(0));
}

QTEST_APPLESS_MAIN(TestDump)
#include "test_ops_dump.moc"
