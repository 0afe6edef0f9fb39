// SPDX-License-Identifier: MIT
//
// Documents and conflicts: one spelling out, and nothing else in.
#include "fleet/conflict.h"
#include "fleet/document.h"

#include <QtTest>

using namespace fleet;

class TestFleetDocument : public QObject {
    Q_OBJECT

private slots:
    void isWrittenSo();
    void comesBack_data();
    void comesBack();
    void equalValuesAreEqualStates();
    void namesAreSorted();
    void deletedIsAState();
    void refused_data();
    void refused();
    void cannotBeShared_data();
    void cannotBeShared();
    void longest();
    void times_data();
    void times();
    void conflictsComeBack();
    void conflictsAreCountedOnce();
    void conflictRefused_data();
    void conflictRefused();
};

namespace {

Document sample()
{
    Document document;
    document.path = "KWX\\Internal0\\IpConfig";
    document.by = {"desk-3", "anna", "corvel", 42};
    document.atMs = 1795269540123;
    document.values["TransmitIp"] = ops::Value::ofText("10.0.0.1");
    document.values["port"] = ops::Value::ofNumber(20000);
    return document;
}

const char *const kSample =
    R"({"format":1,"path":"KWX\\Internal0\\IpConfig","by":{"who":"desk-3","user":"anna","program":"corvel",)"
    R"("pid":42},"at":"2026-11-21T13:59:00.123Z","values":{"port":{"type":"dword","value":20000},)"
    R"("TransmitIp":{"type":"string","value":"10.0.0.1"}}})";

QByteArray replaced(const char *before, const char *after)
{
    return QByteArray(kSample).replace(before, after);
}

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

Conflict conflict()
{
    return {sample(), {"lon-play-17", "root", "corvelctl", 7}, 1795269541000};
}

} // namespace

void TestFleetDocument::isWrittenSo()
{
    const ops::Outcome<std::string> text = writeDocument(sample());
    QVERIFY(text);
    QCOMPARE(QByteArray::fromStdString(*text), QByteArray(kSample));
}

void TestFleetDocument::comesBack_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("plain") << QByteArray("10.0.0.1");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("quotes and line ends") << QByteArray("\"\\\n\t/");
    QTest::newRow("zeros") << QByteArray("a\0b", 3);
    QTest::newRow("other letters") << QByteArray("\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80");
    QTest::newRow("no UTF-8") << QByteArray("\xff\xfe");
    QTest::newRow("half a character") << QByteArray("\xe2\x82");
}

void TestFleetDocument::comesBack()
{
    QFETCH(QByteArray, text);
    Document document = sample();
    document.values["other"] = ops::Value::ofText(text);
    document.values["Other"] = ops::Value::ofNumber(0xffffffffu);
    const ops::Outcome<std::string> written = writeDocument(document);
    QVERIFY(written);
    const ops::Outcome<Document> read = readDocument(*written);
    QVERIFY2(read, read ? "" : read.failure().text.constData());
    QCOMPARE(read->path, document.path);
    QCOMPARE(read->by.who, document.by.who);
    QCOMPARE(read->by.user, document.by.user);
    QCOMPARE(read->by.program, document.by.program);
    QCOMPARE(read->by.pid, document.by.pid);
    QCOMPARE(read->atMs, document.atMs);
    QVERIFY(sameState(*read, document));
    QCOMPARE(*writeDocument(*read), *written);
}

void TestFleetDocument::equalValuesAreEqualStates()
{
    Document other = sample();
    other.by = {"desk-4", "bert", "rkcfg", 1};
    other.atMs = 1;
    other.path = "kwx\\internal0\\ipconfig";
    QVERIFY(sameState(sample(), other));
    other.values["port"] = ops::Value::ofNumber(20001);
    QVERIFY(!sameState(sample(), other));
    other.values["port"] = ops::Value::ofText("20000");
    QVERIFY(!sameState(sample(), other));
}

void TestFleetDocument::namesAreSorted()
{
    Document document = sample();
    document.values.clear();
    for (const char *name : {"b", "A", "a", "C", "B"})
        document.values[name] = ops::Value::ofNumber(1);
    const std::string text = *writeDocument(document);
    std::size_t last = 0;
    for (const char *name : {"\"A\":", "\"a\":", "\"B\":", "\"b\":", "\"C\":"}) {
        const std::size_t at = text.find(name);
        QVERIFY(at != std::string::npos && at > last);
        last = at;
    }
}

void TestFleetDocument::deletedIsAState()
{
    Document document = sample();
    document.values.clear();
    QVERIFY(document.deleted());
    const std::string text = *writeDocument(document);
    QVERIFY(text.find(R"("values":{},"deleted":true})") != std::string::npos);
    QVERIFY(readDocument(text));
    QVERIFY(readDocument(text)->deleted());
}

void TestFleetDocument::refused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("why");
    const auto row = [](const char *name, const QByteArray &text, const char *why) {
        QTest::newRow(name) << text << QByteArray(why);
    };
    const QByteArray sampleText(kSample);
    row("nothing", "", "no JSON");
    row("no JSON", "hello", "no JSON");
    row("a list", "[1]", "no JSON");
    row("cut", sampleText.left(sampleText.size() - 1), "no JSON");
    row("something behind it", sampleText + "x", "no JSON");
    row("no UTF-8", replaced("anna", "\xff"), "no JSON");
    row("a space behind it", sampleText + " ", "one spelling");
    row("no format", replaced("\"format\":1,", ""), "no format");
    row("format is a text", replaced("\"format\":1", "\"format\":\"1\""), "no format");
    row("newer format", replaced("\"format\":1", "\"format\":2"), "newer version (format 2)");
    row("older format", replaced("\"format\":1", "\"format\":0"), "one spelling");
    row("too deep", replaced("\"10.0.0.1\"", R"({"a":{"b":1}})"), "deeper than 4");
    row("far too deep", QByteArray(5000, '['), "no JSON");
    row("no path", replaced("\"path\"", "\"pith\""), "a path that");
    row("no author", replaced("\"who\":\"desk-3\"", "\"who\":\"\""), "no author");
    row("author is no object", replaced("\"by\":{", "\"by\":1,\"x\":{"), "no author");
    row("pid too large", replaced("\"pid\":42", "\"pid\":4294967296"), "no author");
    row("a negative pid", replaced("\"pid\":42", "\"pid\":-1"), "no author");
    row("no time", replaced("2026-11-21T13:59:00.123Z", "yesterday"), "no time");
    row("a time of another form", replaced("00.123Z", "00Z"), "no time");
    row("a day that is none", replaced("2026-11-21", "2026-02-30"), "no time");
    row("number too large", replaced("20000", "4294967296"), "a value that");
    row("negative number", replaced("20000", "-1"), "a value that");
    row("broken number", replaced("20000", "1.5"), "a value that");
    row("a number as a text", replaced("20000", "\"20000\""), "a value that");
    row("a text as a number", replaced("\"10.0.0.1\"", "1"), "a value that");
    row("unknown type", replaced("dword", "qword"), "a value that");
    row("a value that is no object", replaced(R"({"type":"dword","value":20000})", "20000"), "a value that");
    row("values are a list", replaced("\"values\":{\"port\"", "\"values\":[],\"x\":{\"port\""),
        "a value that");
    row("control character in a name", replaced("\"port\"", "\"po\\u0001rt\""), "a name that");
    row("control character in the path", replaced("KWX\\\\", "KWX\\u0085"), "a path that");
    row("empty name", replaced("\"port\"", "\"\""), "a name that");
    row("another order", replaced("\"port\"", "\"zport\""), "one spelling");
    row("one more member", replaced("\"format\":1", "\"format\":1,\"more\":1"), "one spelling");
    row("a name twice", replaced("\"values\":{", R"("values":{"port":{"type":"dword","value":1},)"),
        "one spelling");
    row("deleted with values", replaced("}}}", "}},\"deleted\":true}"), "one spelling");
    row("packed without need", replaced("\"10.0.0.1\"", R"({"base64":"MTA="})"), "one spelling");
    row("packed badly", replaced("\"10.0.0.1\"", R"({"base64":"*"})"), "a value that");
    row("10 MB", QByteArray(10 * 1024 * 1024, ' '), "longer than 65536");
}

void TestFleetDocument::refused()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, why);
    const ops::Outcome<Document> document = readDocument(view(text));
    QVERIFY(!document);
    QVERIFY2(document.failure().text.contains(why), document.failure().text.constData());
}

void TestFleetDocument::cannotBeShared_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("no path") << QByteArray() << QByteArray("n");
    QTest::newRow("long path") << QByteArray(kMaxPathBytes + 1, 'p') << QByteArray("n");
    QTest::newRow("path is no UTF-8") << QByteArray("\xc3") << QByteArray("n");
    QTest::newRow("line end in the path") << QByteArray("a\nb") << QByteArray("n");
    QTest::newRow("no name") << QByteArray("p") << QByteArray();
    QTest::newRow("long name") << QByteArray("p") << QByteArray(kMaxNameBytes + 1, 'n');
    QTest::newRow("name is no UTF-8") << QByteArray("p") << QByteArray("\xff");
    QTest::newRow("delete character") << QByteArray("p") << QByteArray("n\x7f");
}

void TestFleetDocument::cannotBeShared()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, name);
    Document document = sample();
    document.path = path;
    document.values[name] = ops::Value::ofNumber(1);
    QVERIFY(!writeDocument(document));
}

void TestFleetDocument::longest()
{
    Document document = sample();
    document.values["long"] = ops::Value::ofText("");
    const auto room = static_cast<int>(kMaxDocumentBytes - writeDocument(document)->size());
    document.values["long"] = ops::Value::ofText(QByteArray(room, 'x'));
    const ops::Outcome<std::string> text = writeDocument(document);
    QVERIFY(text);
    QCOMPARE(text->size(), kMaxDocumentBytes);
    QVERIFY(readDocument(*text));
    document.values["long"] = ops::Value::ofText(QByteArray(room + 1, 'x'));
    QVERIFY(!writeDocument(document));
}

void TestFleetDocument::times_data()
{
    QTest::addColumn<qint64>("atMs");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("first") << qint64(0) << QByteArray("1970-01-01T00:00:00.000Z");
    QTest::newRow("leap day") << qint64(1709164800999) << QByteArray("2024-02-29T00:00:00.999Z");
    QTest::newRow("last") << qint64(253402300799999) << QByteArray("9999-12-31T23:59:59.999Z");
}

void TestFleetDocument::times()
{
    QFETCH(qint64, atMs);
    QFETCH(QByteArray, text);
    QCOMPARE(timeText(atMs), text);
    QCOMPARE(timeOfText(text), atMs);
}

void TestFleetDocument::conflictsComeBack()
{
    const ops::Outcome<std::string> text = writeConflict(conflict());
    QVERIFY(text);
    const ops::Outcome<Conflict> read = readConflict(*text);
    QVERIFY2(read, read ? "" : read.failure().text.constData());
    QCOMPARE(read->stoodBy.who, QByteArray("lon-play-17"));
    QCOMPARE(read->stoodAtMs, conflict().stoodAtMs);
    QCOMPARE(*writeDocument(read->overruled), std::string(kSample));
    QCOMPARE(conflictId(*read), conflictId(conflict()));
}

void TestFleetDocument::conflictsAreCountedOnce()
{
    Conflict again = conflict();
    again.stoodBy.who = "desk-9";
    QCOMPARE(conflictId(again), conflictId(conflict()));
    again.overruled.atMs += 1;
    QVERIFY(conflictId(again) != conflictId(conflict()));
    QCOMPARE(conflictId(again).size(), std::size_t(16));
}

void TestFleetDocument::conflictRefused_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("nobody stood") << QByteArray("\"stood\"") << QByteArray("\"sat\"");
    QTest::newRow("nothing overruled") << QByteArray("\"overruled\"") << QByteArray("\"other\"");
    QTest::newRow("a document that is none") << QByteArray("dword") << QByteArray("word");
    QTest::newRow("a space") << QByteArray("\"overruled\":") << QByteArray("\"overruled\": ");
    QTest::newRow("newer") << QByteArray("{\"format\":1,\"stood\"") << QByteArray("{\"format\":9,\"stood\"");
}

void TestFleetDocument::conflictRefused()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const QByteArray text = QByteArray::fromStdString(*writeConflict(conflict())).replace(before, after);
    QVERIFY(!readConflict(view(text)));
}

QTEST_GUILESS_MAIN(TestFleetDocument)
#include "test_fleet_document.moc"
