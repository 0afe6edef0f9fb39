// SPDX-License-Identifier: MIT
#include "ops/ipv4.h"
#include "ops/sdpstream.h"
#include "ops/sdptexts.h"

using namespace sdptexts;

class TestSdpText : public QObject {
    Q_OBJECT

private slots:
    void linesAreCountedAndCut();
    void lineEndsAreNoted();
    void aTextIsTheSameAgain();
    void attributesAreFoundByTheirWholeName();
    void addresses_data();
    void addresses();
    void blocksOfAddresses();
};

void TestSdpText::linesAreCountedAndCut()
{
    const ops::SdpText text = parsed("v=0\r\ns=x\nm=video 1 RTP/AVP 96\na=b\nm=audio");
    QCOMPARE(int(text.session.lines.size()), 2);
    QCOMPARE(int(text.media.size()), 2);
    QCOMPARE(text.media[0].number(), 3);
    QCOMPARE(text.media[1].number(), 5);
    QCOMPARE(text.media[0].lines[1].text, QByteArray("a=b"));
    QCOMPARE(int(text.lines().size()), 5);
    QCOMPARE(text.lines().back()->value(), QByteArray("audio"));
}

void TestSdpText::lineEndsAreNoted()
{
    QVERIFY(!parsed("v=0\r\n").bareLineFeeds);
    QVERIFY(!parsed("v=0\r\n").openEnd);
    QVERIFY(parsed("v=0\n").bareLineFeeds);
    QVERIFY(parsed("v=0").openEnd);
    QVERIFY(parsed(QByteArray()).lines().empty());
}

void TestSdpText::aTextIsTheSameAgain()
{
    QCOMPARE(ops::sdpBytes(parsed(faultless())), faultless());
    QCOMPARE(ops::sdpBytes(parsed("x\n\ny")), QByteArray("x\r\n\r\ny\r\n"));
}

void TestSdpText::attributesAreFoundByTheirWholeName()
{
    const ops::SdpText text = parsed("a=ptimes:1\na=ptime\na=ptime:2\na=mid:\na=m\n");
    QCOMPARE(text.session.attribute("ptime")->number, 2);
    QCOMPARE(int(text.session.attributes("ptime").size()), 2);
    QCOMPARE(text.session.attribute("mid")->attributeValue(), QByteArray());
    QVERIFY(!text.session.attribute("pti"));
    QVERIFY(!text.session.find('v'));
}

void TestSdpText::addresses_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("valid");
    for (const char *valid : {"0.0.0.0", "10.0.0.5", "239.255.255.255", "255.255.255.255"})
        QTest::newRow(valid) << QByteArray(valid) << true;
    for (const char *wrong : {"", "1", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.04", " 1.2.3.4", "1.2.3.4 ",
                              "1.2.3.4/24", "a.b.c.d", "::1"})
        QTest::newRow(wrong) << QByteArray(wrong) << false;
    QTest::newRow("with a NUL") << QByteArray("1.2.3.4\0", 8) << false;
}

void TestSdpText::addresses()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, valid);
    const auto address = ops::parseIpv4(text);
    QCOMPARE(address.has_value(), valid);
    if (valid)
        QCOMPARE(ops::ipv4Text(*address), text);
}

void TestSdpText::blocksOfAddresses()
{
    const auto at = [](const char *text) { return ops::parseIpv4(text).value(); };
    QVERIFY(ops::isMulticast(at("224.0.0.0")) && ops::isMulticast(at("239.255.255.255")));
    QVERIFY(!ops::isMulticast(at("223.255.255.255")) && !ops::isMulticast(at("240.0.0.0")));
    QVERIFY(ops::isControlBlock(at("224.0.0.251")) && ops::isControlBlock(at("224.0.1.129")));
    QVERIFY(!ops::isControlBlock(at("224.0.2.1")) && !ops::isControlBlock(at("239.0.0.1")));
    QVERIFY(ops::isSourceSpecific(at("232.1.1.1")) && !ops::isSourceSpecific(at("233.1.1.1")));
    QVERIFY(ops::isUsableSource(at("10.0.0.1")));
    QVERIFY(!ops::isUsableSource(at("0.0.0.0")) && !ops::isUsableSource(at("224.0.0.1")) &&
            !ops::isUsableSource(at("255.255.255.255")));
    QCOMPARE(ops::ethernetBits(at("239.129.1.1")), ops::ethernetBits(at("224.1.1.1")));
    QVERIFY(ops::ethernetBits(at("239.1.1.1")) != ops::ethernetBits(at("239.1.1.2")));
}

QTEST_GUILESS_MAIN(TestSdpText)
#include "test_sdptext.moc"
