// SPDX-License-Identifier: MIT
// Bytes as JSON and as a terminal may have them.
#include "ops/jsontext.h"
#include "ops/printable.h"

#include <QtTest>

#include <random>

#include <nlohmann/json.hpp>

class TestJsonText : public QObject {
    Q_OBJECT

private slots:
    void utf8_data();
    void utf8();
    void anyBytesComeBack();
    void otherJsonIsNoText_data();
    void otherJsonIsNoText();
    void printable_data();
    void printable();
    void nothingPrintableMovesATerminal();
};

namespace {

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray made;
    for (const int value : values)
        made += static_cast<char>(value);
    return made;
}

QByteArray noise(std::mt19937 &random, unsigned most)
{
    QByteArray made;
    for (unsigned size = random() % (most + 1); size > 0; --size)
        made += static_cast<char>(random() & 0xff);
    return made;
}

} // namespace

void TestJsonText::utf8_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("valid");
    const auto row = [](const char *name, const QByteArray &text, bool valid) {
        QTest::newRow(name) << text << valid;
    };
    row("empty", QByteArray(), true);
    row("ascii", "239.1.1.1", true);
    row("a zero byte", bytes({'a', 0, 'b'}), true);
    row("two bytes", bytes({0xc3, 0x9f}), true);
    row("three bytes", bytes({0xe2, 0x86, 0x90}), true);
    row("four bytes", bytes({0xf0, 0x9f, 0x8e, 0xa5}), true);
    row("the highest one", bytes({0xf4, 0x8f, 0xbf, 0xbf}), true);
    row("latin-1", bytes({'S', 0xfc, 'd'}), false);
    row("cut after the first of two", bytes({'a', 0xc3}), false);
    row("cut after the second of three", bytes({0xe2, 0x86}), false);
    row("cut after the third of four", bytes({0xf0, 0x9f, 0x8e}), false);
    row("a follower alone", bytes({0x80}), false);
    row("two followers behind a first of two", bytes({0xc3, 0x9f, 0x9f}), false);
    row("a slash in two bytes", bytes({0xc0, 0xaf}), false);
    row("a zero in two bytes", bytes({0xc0, 0x80}), false);
    row("beyond the highest", bytes({0xf4, 0x90, 0x80, 0x80}), false);
    row("half of a pair of UTF-16", bytes({0xed, 0xa0, 0x80}), false);
    row("never used", bytes({0xff}), false);
}

void TestJsonText::utf8()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, valid);
    QCOMPARE(ops::isUtf8(text), valid);
    QCOMPARE(ops::jsonText(text).is_string(), valid);
    const auto back = ops::textOfJson(ops::jsonText(text));
    QVERIFY(back);
    QCOMPARE(*back, text);
}

// Through the text of a file as well: what nlohmann writes it reads.
void TestJsonText::anyBytesComeBack()
{
    std::mt19937 random(11);
    for (int round = 0; round < 2000; ++round) {
        const QByteArray text = noise(random, 30);
        const auto read = ops::Json::parse(ops::jsonText(text).dump(), nullptr, false);
        const auto back = ops::textOfJson(read);
        QVERIFY(back);
        QCOMPARE(*back, text);
    }
}

void TestJsonText::otherJsonIsNoText_data()
{
    QTest::addColumn<QByteArray>("json");
    for (const char *json :
         {"1", "null", "true", "[]", "{}", "[\"a\"]", "{\"base64\": 5}", "{\"base64\": null}",
          "{\"base64\": \"//4=\", \"more\": 1}", "{\"base64\": \"/*4=\"}", "{\"base64\": \"//4\\u0000\"}",
          "{\"base46\": \"//4=\"}", "{\"base64\": {\"base64\": \"//4=\"}}"})
        QTest::newRow(json) << QByteArray(json);
}

void TestJsonText::otherJsonIsNoText()
{
    QFETCH(QByteArray, json);
    const auto parsed = ops::Json::parse(json.toStdString(), nullptr, false);
    QVERIFY(!parsed.is_discarded());
    QVERIFY(!ops::textOfJson(parsed));
}

void TestJsonText::printable_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("shown");
    const auto row = [](const char *name, const QByteArray &text, const char *shown) {
        QTest::newRow(name) << text << QByteArray(shown);
    };
    row("empty", QByteArray(), "");
    row("plain", "239.1.1.1:20000", "239.1.1.1:20000");
    row("utf-8", bytes({0xc3, 0x9f}), "\xc3\x9f");
    row("escape", "\x1b[31mred", "\\x1b[31mred");
    row("line end", "a\nb", "a\\x0ab");
    row("tabulator", "a\tb", "a\\x09b");
    row("carriage return", "a\rb", "a\\x0db");
    row("bell", "\a", "\\x07");
    row("delete", "\x7f", "\\x7f");
    row("zero", bytes({'a', 0, 'b'}), "a\\x00b");
    row("latin-1", bytes({'S', 0xfc, 'd'}), "S\\xfcd");
    row("one wrong byte among right ones", bytes({0xc3, 0x9f, 0xff}), "\\xc3\\x9f\\xff");
}

void TestJsonText::printable()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, shown);
    QCOMPARE(ops::printable(text), shown);
    QCOMPARE(ops::printable(shown), shown);
}

void TestJsonText::nothingPrintableMovesATerminal()
{
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round) {
        const QByteArray shown = ops::printable(noise(random, 20));
        QVERIFY(ops::isUtf8(shown));
        for (const char c : shown)
            QVERIFY(static_cast<unsigned char>(c) >= 0x20 && c != 0x7f);
    }
}

QTEST_APPLESS_MAIN(TestJsonText)
#include "test_ops_jsontext.moc"
