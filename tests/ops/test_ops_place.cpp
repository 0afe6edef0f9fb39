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

QTEST_APPLESS_MAIN(TestPlace)
#include "test_ops_place.moc"
