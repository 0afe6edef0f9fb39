// SPDX-License-Identifier: MIT
#include "ops/place.h"
#include "rows.h"

class TestPlace : public QObject {
    Q_OBJECT

private slots:
    void isRead_data();
    void isRead();
    void wrongOnesAreRefused_data();
    void wrongOnesAreRefused();
    void severalAtOnce_data();
    void severalAtOnce();
    void aNearMissIsNamed();
    void channelOfAPath_data();
    void channelOfAPath();
    void everyChannelHasItsPath();
    void theReasonIsTold_data();
    void theReasonIsTold();
    void numbers_data();
    void numbers();
    void placesAreAlikeInAllTheirParts();
    void whatStandsBehindTheChannel_data();
    void whatStandsBehindTheChannel();
    void allOfNoChannels();
};

void TestPlace::isRead_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"0", "2", "65535", "2/video", "2/audio", "2/audio/0", "2/audio/7",
                             "2/audio/single", "2/anc", "server", "KWX\\Config"})
        QTest::newRow(text) << QByteArray(text);
}

void TestPlace::isRead()
{
    QFETCH(QByteArray, text);
    const auto place = ops::parsePlace(text);
    QVERIFY(place);
    QCOMPARE(ops::placeText(*place), text);
}

void TestPlace::wrongOnesAreRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    const char *const texts[] = {"",          " 2",        "-1",          "2/",    "2/vid",       "2/video/1",
                                 "2/audio/8", "2/audio/x", "2/audio/1/2", "65536", "99999999999", "2-1/video",
                                 "1-",        "x",         "2/anc/0",     "2,3",   "*",           "0-7/video",
                                 "2/audio/*", "\xff\xfe"};
    for (const char *text : texts)
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
    QTest::newRow("zero byte") << QByteArray("2/vid\0eo", 8);
}

void TestPlace::wrongOnesAreRefused()
{
    QFETCH(QByteArray, text);
    const auto place = ops::parsePlace(text);
    QVERIFY(!place);
    QVERIFY(!place.failure().text.isEmpty());
    QCOMPARE(place.failure().kind, ops::Failure::Input);
}

void TestPlace::severalAtOnce_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("places");
    QTest::newRow("range") << QByteArray("1-3/video") << QByteArray("1/video 2/video 3/video");
    QTest::newRow("list") << QByteArray("3,1") << QByteArray("3 1");
    QTest::newRow("each once") << QByteArray("1,0-2,1") << QByteArray("1 0 2");
    QTest::newRow("all channels") << QByteArray("*/anc") << QByteArray("0/anc 1/anc 2/anc 3/anc");
    QTest::newRow("flows") << QByteArray("0-1/audio/2-3")
                           << QByteArray("0/audio/2 0/audio/3 1/audio/2 1/audio/3");
    QTest::newRow("all flows")
        << QByteArray("0/audio/*")
        << QByteArray("0/audio/0 0/audio/1 0/audio/2 0/audio/3 0/audio/4 0/audio/5 0/audio/6 0/audio/7");
}

void TestPlace::severalAtOnce()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, places);
    const auto found = ops::parsePlaces(text, 4);
    QVERIFY(found);
    QByteArrayList words;
    for (const ops::Place &place : *found)
        words.append(ops::placeText(place));
    QCOMPARE(words.join(' '), places);
}

void TestPlace::aNearMissIsNamed()
{
    QVERIFY(ops::parsePlace("2/vidoe").failure().text.contains("did you mean video?"));
    QVERIFY(ops::parsePlace("sevrer").failure().text.contains("did you mean server?"));
}

void TestPlace::channelOfAPath_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<int>("number");
    QTest::newRow("0") << QByteArray("KWX\\Internal0\\IpConfig") << 0;
    QTest::newRow("12") << QByteArray("KWX\\Internal12\\IpConfig") << 12;
    QTest::newRow("any case") << QByteArray("kwx\\INTERNAL3\\ipconfig") << 3;
    QTest::newRow("leading zero") << QByteArray("KWX\\Internal02\\IpConfig") << -1;
    QTest::newRow("no number") << QByteArray("KWX\\Internal\\IpConfig") << -1;
    QTest::newRow("below it") << QByteArray("KWX\\Internal0\\IpConfig\\More") << -1;
    QTest::newRow("too high") << QByteArray("KWX\\Internal65536\\IpConfig") << -1;
    QTest::newRow("another") << QByteArray("KWX\\Config") << -1;
    QTest::newRow("empty") << QByteArray() << -1;
}

void TestPlace::channelOfAPath()
{
    QFETCH(QByteArray, path);
    QFETCH(int, number);
    QCOMPARE(ops::channelOfPath(path), number);
}

void TestPlace::everyChannelHasItsPath()
{
    for (const int number : {0, 9, 10, 99, 100, 65535}) {
        QCOMPARE(ops::channelPath(number), "KWX\\Internal" + QByteArray::number(number) + "\\IpConfig");
        QCOMPARE(ops::channelOfPath(ops::channelPath(number)), number);
    }
    QCOMPARE(ops::channelOfPath("KWX\\Internal1x\\IpConfig"), -1);
    QCOMPARE(ops::channelOfPath("KWX\\Internal1\\IpConfih"), -1);
    QCOMPARE(ops::channelOfPath("KWY\\Internal1\\IpConfig"), -1);
    QCOMPARE(ops::channelOfPath("KWX\\Internal00\\IpConfig"), -1);
    QCOMPARE(ops::channelOfPath("KWX\\Internal4294967296\\IpConfig"), -1);
}

void TestPlace::theReasonIsTold_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char *text, const char *reason) {
        QTest::newRow(*text ? text : "empty") << QByteArray(text) << QByteArray(reason);
    };
    row("", "no place \"\": a channel such as 2, 2/video, 2/audio/3, or server");
    row("zebra", "no place \"zebra\": a channel such as 2, 2/video, 2/audio/3, or server");
    row("Server",
        "no place \"Server\": a channel such as 2, 2/video, 2/audio/3, or server; did you mean server?");
    row("2/vidoe", "no element \"vidoe\": video, audio or anc; did you mean video?");
    row("2/", "no element \"\": video, audio or anc");
    row("2/video/1", "only audio has flows, as in 2/audio/3");
    row("2/anc/0", "only audio has flows, as in 2/audio/3");
    row("2/audio/1/2", "only audio has flows, as in 2/audio/3");
    row("2/audio/8", "no flow \"8\": flows have the numbers 0 to 7");
    row("2/audio/x", "no flow \"x\": 0 to 7, * or single");
    row("2/audio/", "no flow \"\": 0 to 7, * or single");
    row("3-1", "\"3-1\" is no channel and no range of channels such as 1-7");
    row("1-", "\"1-\" is no channel and no range of channels such as 1-7");
    row("1-2-3", "\"1-2-3\" is no channel and no range of channels such as 1-7");
    row("65536", "\"65536\" is no channel and no range of channels such as 1-7");
    row("0000001", "\"0000001\" is no channel and no range of channels such as 1-7");
    row("2,", "\"\" is no channel and no range of channels such as 1-7");
    row("0-1", "\"0-1\" names several places; one is needed");
    row("*", "\"*\" names several places; one is needed");
    row("2/audio/*", "\"2/audio/*\" names several places; one is needed");
    const QByteArray x(100, 'x');
    QTest::newRow("a long one") << x
                                << "no place \"" + x.left(80) +
                                       "\": a channel such as 2, 2/video, 2/audio/3, or server";
    QTest::newRow("zero byte") << QByteArray("2\0", 2) << QByteArray("a place holds no zero byte");
}

void TestPlace::theReasonIsTold()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, reason);
    const auto place = ops::parsePlace(text);
    QVERIFY(!place);
    QCOMPARE(place.failure().text, reason);
}

void TestPlace::numbers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("numbers");
    QTest::newRow("one") << QByteArray("5") << 1 << QByteArray("5");
    QTest::newRow("range") << QByteArray("1-3") << 1 << QByteArray("1 2 3");
    QTest::newRow("of one") << QByteArray("3-3") << 1 << QByteArray("3");
    QTest::newRow("in the order given") << QByteArray("5,1,3") << 1 << QByteArray("5 1 3");
    QTest::newRow("each once") << QByteArray("1,1-2,2,*") << 4 << QByteArray("1 2 0 3");
    QTest::newRow("all") << QByteArray("*") << 3 << QByteArray("0 1 2");
    QTest::newRow("all of one") << QByteArray("*") << 1 << QByteArray("0");
    QTest::newRow("all of none") << QByteArray("*") << 0 << QByteArray("");
    QTest::newRow("all of none, and one") << QByteArray("*,7") << 0 << QByteArray("7");
    QTest::newRow("leading zeros") << QByteArray("007") << 1 << QByteArray("7");
    QTest::newRow("the last one") << QByteArray("65534-65535") << 1 << QByteArray("65534 65535");
}

void TestPlace::numbers()
{
    QFETCH(QByteArray, text);
    QFETCH(int, count);
    QFETCH(QByteArray, numbers);
    const auto found = ops::parseNumbers(text, count);
    QVERIFY(found);
    QByteArrayList words;
    for (const int number : *found)
        words.append(QByteArray::number(number));
    QCOMPARE(words.join(' '), numbers);
}

void TestPlace::placesAreAlikeInAllTheirParts()
{
    const QByteArrayList texts{"0",      "1",         "0/video",   "0/audio",
                               "0/anc",  "0/audio/0", "0/audio/1", "0/audio/single",
                               "server", "KWX\\A",    "KWX\\B"};
    for (const QByteArray &left : texts) {
        for (const QByteArray &right : texts)
            QCOMPARE(*ops::parsePlace(left) == *ops::parsePlace(right), left == right);
    }
}

void TestPlace::whatStandsBehindTheChannel_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("behind");
    QTest::newRow("channel") << QByteArray("12") << QByteArray("");
    QTest::newRow("video") << QByteArray("12/video") << QByteArray("video");
    QTest::newRow("flow") << QByteArray("12/audio/3") << QByteArray("audio/3");
    QTest::newRow("single") << QByteArray("12/audio/single") << QByteArray("audio/single");
    QTest::newRow("server") << QByteArray("server") << QByteArray("");
    QTest::newRow("path") << QByteArray("KWX\\A") << QByteArray("");
}

void TestPlace::whatStandsBehindTheChannel()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, behind);
    QCOMPARE(ops::elementText(*ops::parsePlace(text)), behind);
}

// A server without channels has nothing behind "*", which is no mistake.
void TestPlace::allOfNoChannels()
{
    const auto places = ops::parsePlaces("*/audio/*", 0);
    QVERIFY(places);
    QVERIFY(places->empty());
}

QTEST_APPLESS_MAIN(TestPlace)
#include "test_ops_place.moc"
