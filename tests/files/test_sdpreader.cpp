// SPDX-License-Identifier: MIT
#include "files/sdptext.h"

#include <QtTest>

namespace {

QStringList stored(const char *text)
{
    return storedValues(readSdpText(text));
}

QStringList list(std::initializer_list<const char *> texts)
{
    QStringList result;
    for (const char *text : texts)
        result << QString::fromUtf8(text);
    return result;
}

// A video block to receive with the given lines in it.
QByteArray videoBlock(const QByteArray &lines)
{
    return "v=0\nm=video 5004 RTP/AVP 96\n" + lines + "\na=recvonly\n";
}

} // namespace

class TestSdpReader : public QObject {
    Q_OBJECT

private slots:
    void everyElementAndSideHasItsNames_data();
    void everyElementAndSideHasItsNames();
    void valueTypes();
    void videoTicksReceiveBoxesOnBothSides_data();
    void videoTicksReceiveBoxesOnBothSides();
    void audioAndAncTickNothing();
    void locksAreThoseOfTheVideoValues();
    void noDirectionMeansBothSides();
    void sendrecvMeansBothSides();
    void directionsAddUp_data();
    void directionsAddUp();
    void anyFirstLineWithAVIsSkipped();
    void rtpmapMayStandAnywhereInTheAttribute();
    void audioBlocksCountFlowsWhateverTheirDirection();
    void audioBlocksThatStoreNothingCountToo();
    void audioFlowsHaveNoUpperBound();
    void ancIsRecognisedWhateverItsMediaWord_data();
    void ancIsRecognisedWhateverItsMediaWord();
    void otherMediaStoreNothing();
    void connectionAddress_data();
    void connectionAddress();
    void sourceFilter_data();
    void sourceFilter();
    void shortTexts_data();
    void shortTexts();
    void portsAreNotCheckedToBeNumbers();
    void sessionLevelConnectionIsTheVideoDestination();
    void sessionLevelSourceFilterAndDirection();
    void nothingIsCarriedFromOneBlockToTheNext();
    void theSourceMayStandBehindTheVersionLine();
    void onlyOneVersionLineIsSkipped();
    void mediaLineFirst();
    void lineEndsAreStripped();
    void nulBytesEndLines();
    void emptyTexts_data();
    void emptyTexts();
    void tokensAreComparedExactly_data();
    void tokensAreComparedExactly();
};

void TestSdpReader::everyElementAndSideHasItsNames_data()
{
    QTest::addColumn<QByteArray>("media");
    QTest::addColumn<QByteArray>("direction");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *media, const char *direction, const char *dst, const char *src,
                        const char *port) {
        const QString format = QStringLiteral("%1=239.9.8.7 %2=10.1.2.3 %3=5004");
        const QString all = format.arg(QLatin1String(dst), QLatin1String(src), QLatin1String(port));
        QTest::newRow(qPrintable(QString::fromLatin1(media) + QLatin1Char(' ') + QLatin1String(direction)))
            << QByteArray(media) << QByteArray(direction) << all.split(QLatin1Char(' '));
    };
    row("video", "recvonly", "ReceiveDestinationIp", "ReceiveSourceIp", "ReceiveDestinationPort");
    row("video", "sendonly", "TransmitDestinationIp", "TransmitIp", "TransmitRemotePort");
    row("audio", "recvonly", "ReceiveAudDestinationIp0", "ReceiveAudSourceIp0", "ReceiveAudDestinationPort0");
    row("audio", "sendonly", "TransmitAudDestinationIp0", "TransmitAudIp0", "TransmitAudRemotePort0");
    row("data", "recvonly", "ReceiveAncDestinationIp", "ReceiveAncSourceIp", "ReceiveAncDestinationPort");
    row("data", "sendonly", "TransmitAncDestinationIp", "TransmitAncIp", "TransmitAncRemotePort");
    row("text", "recvonly", "ReceiveAncDestinationIp", "ReceiveAncSourceIp", "ReceiveAncDestinationPort");
}

void TestSdpReader::everyElementAndSideHasItsNames()
{
    QFETCH(QByteArray, media);
    QFETCH(QByteArray, direction);
    QFETCH(QStringList, expected);
    const QByteArray text = "v=0\nm=" + media + " 5004 RTP/AVP 96\nc=IN IP4 239.9.8.7\n" +
                            "a=source-filter: incl IN IP4 239.9.8.7 10.1.2.3\na=" + direction + "\n";
    QCOMPARE(storedValues(readSdpText(text)), expected);
}

void TestSdpReader::valueTypes()
{
    const auto stores = readSdpText(videoBlock("c=IN IP4 239.1.1.1\n"
                                               "a=source-filter: incl IN IP4 * 10.0.0.1"));
    QCOMPARE(stores.size(), 3);
    for (const SdpStore &store : stores)
        QCOMPARE(store.isString, !store.valueName.contains("Port"));
}

void TestSdpReader::videoTicksReceiveBoxesOnBothSides_data()
{
    QTest::addColumn<QByteArray>("direction");
    QTest::newRow("receive") << QByteArray("recvonly");
    QTest::newRow("send") << QByteArray("sendonly");
}

void TestSdpReader::videoTicksReceiveBoxesOnBothSides()
{
    QFETCH(QByteArray, direction);
    const auto stores = readSdpText("m=video 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1\n"
                                    "a=source-filter: incl IN IP4 * 10.0.0.1\na=" +
                                    direction);
    QCOMPARE(stores.size(), 3);
    QCOMPARE(stores.at(0).box, SdpTick::RecDstAddr);
    QCOMPARE(stores.at(1).box, SdpTick::RecSrcAddr);
    QCOMPARE(stores.at(2).box, SdpTick::RecDstPort);
}

void TestSdpReader::audioAndAncTickNothing()
{
    for (const char *media : {"audio", "text", "data"}) {
        const auto stores = readSdpText(QByteArray("m=") + media + " 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1\n" +
                                        "a=source-filter: incl IN IP4 * 10.0.0.1\na=sendrecv\n");
        QCOMPARE(stores.size(), 6);
        for (const SdpStore &store : stores)
            QCOMPARE(store.box, SdpTick::None);
    }
}

void TestSdpReader::locksAreThoseOfTheVideoValues()
{
    for (const char *media : {"video", "audio", "data"}) {
        const auto stores = readSdpText(QByteArray("m=") + media + " 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1\n" +
                                        "a=source-filter: incl IN IP4 * 10.0.0.1\na=sendrecv\n");
        QStringList locks;
        for (const SdpStore &store : stores)
            locks << QString::fromLatin1(store.lockName);
        QCOMPARE(locks, list({"ReceiveDestinationIp", "ReceiveSourceIp", "ReceiveDestinationPort",
                              "TransmitDestinationIp", "TransmitIp", "TransmitRemotePort"}));
    }
}

void TestSdpReader::noDirectionMeansBothSides()
{
    QCOMPARE(stored("v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1\n"),
             list({"ReceiveDestinationIp=239.1.1.1", "ReceiveDestinationPort=5004",
                   "TransmitDestinationIp=239.1.1.1", "TransmitRemotePort=5004"}));
}

void TestSdpReader::sendrecvMeansBothSides()
{
    QCOMPARE(stored("v=0\nm=audio 5004 RTP/AVP 96\na=sendrecv\n"),
             list({"ReceiveAudDestinationPort0=5004", "TransmitAudRemotePort0=5004"}));
}

// What the element writer makes of two flows comes back as four: the direction does not count.
void TestSdpReader::directionsAddUp_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("receive, send") << QByteArray("a=recvonly\na=sendonly\n");
    QTest::newRow("send, receive") << QByteArray("a=sendonly\na=recvonly\n");
}

void TestSdpReader::directionsAddUp()
{
    QFETCH(QByteArray, lines);
    QCOMPARE(storedValues(readSdpText("v=0\nm=video 5004 RTP/AVP 96\n" + lines)),
             list({"ReceiveDestinationPort=5004", "TransmitRemotePort=5004"}));
}

void TestSdpReader::anyFirstLineWithAVIsSkipped()
{
    QCOMPARE(stored("video\nm=video 5004\na=recvonly\n"), list({"ReceiveDestinationPort=5004"}));
    QCOMPARE(stored("v\nc=IN IP4 239.1.1.1\na=recvonly\n"), list({"ReceiveDestinationIp=239.1.1.1"}));
}

void TestSdpReader::rtpmapMayStandAnywhereInTheAttribute()
{
    QCOMPARE(stored("v=0\nm=video 5004\na=x-rtpmap:98 smpte291/90000\na=recvonly\n"),
             list({"ReceiveAncDestinationPort=5004"}));
}

void TestSdpReader::audioBlocksCountFlowsWhateverTheirDirection()
{
    QCOMPARE(stored("v=0\nm=audio 5000 RTP/AVP 96\na=recvonly\nm=audio 5001 RTP/AVP 97\na=sendonly\n"
                    "m=audio 5002 RTP/AVP 96\na=recvonly\nm=audio 5003 RTP/AVP 97\na=sendonly\n"),
             list({"ReceiveAudDestinationPort0=5000", "TransmitAudRemotePort1=5001",
                   "ReceiveAudDestinationPort2=5002", "TransmitAudRemotePort3=5003"}));
}

void TestSdpReader::audioBlocksThatStoreNothingCountToo()
{
    QCOMPARE(stored("v=0\nm=audio 0 RTP/AVP 96\na=recvonly\nm=audio 5002 RTP/AVP 96\na=recvonly\n"),
             list({"ReceiveAudDestinationPort1=5002"}));
}

void TestSdpReader::audioFlowsHaveNoUpperBound()
{
    QByteArray text = "v=0\n";
    for (int block = 0; block < 11; ++block)
        text += "m=audio 50" + QByteArray::number(10 + block) + " RTP/AVP 96\na=recvonly\n";
    const QStringList values = storedValues(readSdpText(text));
    QCOMPARE(values.size(), 11);
    QCOMPARE(values.at(8), QStringLiteral("ReceiveAudDestinationPort8=5018"));
    QCOMPARE(values.at(10), QStringLiteral("ReceiveAudDestinationPort10=5020"));
}

void TestSdpReader::ancIsRecognisedWhateverItsMediaWord_data()
{
    QTest::addColumn<QByteArray>("media");
    QTest::addColumn<QByteArray>("rtpmap");
    QTest::newRow("video") << QByteArray("video") << QByteArray("a=rtpmap:98 smpte291/90000");
    QTest::newRow("audio") << QByteArray("audio") << QByteArray("a=rtpmap:98 smpte291/90000");
    QTest::newRow("unknown word") << QByteArray("application") << QByteArray("a=rtpmap:98 smpte291/90000");
    QTest::newRow("two blanks") << QByteArray("video") << QByteArray("a=rtpmap:98  smpte291/90000");
    QTest::newRow("without blank") << QByteArray("video") << QByteArray("a=rtpmap:98smpte291");
}

void TestSdpReader::ancIsRecognisedWhateverItsMediaWord()
{
    QFETCH(QByteArray, media);
    QFETCH(QByteArray, rtpmap);
    QCOMPARE(storedValues(readSdpText("v=0\nm=" + media + " 5004 RTP/AVP 98\n" + rtpmap + "\na=recvonly\n")),
             list({"ReceiveAncDestinationPort=5004"}));
}

void TestSdpReader::otherMediaStoreNothing()
{
    for (const char *media : {"application", "message", "image", "Video", "videos", "", "al"})
        QCOMPARE(stored(QByteArray("v=0\nm=" + QByteArray(media) + " 5004 RTP/AVP 96\nc=IN IP4 239.1.1.1\n")
                            .constData()),
                 QStringList());
}

void TestSdpReader::connectionAddress_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("address");
    const auto row = [](const char *line, const char *address) {
        QTest::newRow(line) << QByteArray(line) << QString::fromLatin1(address);
    };
    row("c=IN IP4 239.1.2.3", "239.1.2.3");
    row("c=IN IP4 239.1.2.3/64", "239.1.2.3");
    row("c=IN IP4 239.1.2.3/64/4", "239.1.2.3");
    row("c=IN IP4  239.1.2.3", "239.1.2.3");
    row("c=239.1.2.3", "");
    row("c= 239.1.2.3", "239.1.2.3");
    row("c=IN IP4 239.1.2.3 ", "");
    row("c=IN IP4 239.1.2", "");
    row("c=IN IP4 239.1.2.256", "");
    row("c=IN IP4 239.1.2.3.4", "");
    row("c=IN IP4 1239.1.2.3", "");
    row("c=IN IP4 /64", "");
    row("c=IN IP4 ff02::1", "");
    row("c=IN IP4 host.example.org", "");
    row("c=IN IP4\t239.1.2.3", "");
    row("c=", "");
    row("c", "");
}

void TestSdpReader::connectionAddress()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, address);
    QStringList expected;
    if (!address.isEmpty())
        expected << QStringLiteral("ReceiveDestinationIp=") + address;
    QCOMPARE(storedValues(readSdpText(videoBlock(line))),
             expected << QStringLiteral("ReceiveDestinationPort=5004"));
}

void TestSdpReader::sourceFilter_data()
{
    QTest::addColumn<QByteArray>("filter");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QString>("source");
    const auto row = [](const char *filter, const char *destination, const char *source) {
        QTest::newRow(filter) << QByteArray(filter) << QString::fromLatin1(destination)
                              << QString::fromLatin1(source);
    };
    row(" incl IN IP4 * 10.0.0.5", "239.1.1.1", "10.0.0.5");
    row(" incl IN IP4 239.9.9.9 10.0.0.5", "239.9.9.9", "10.0.0.5");
    row(" excl IN IP4 239.9.9.9 10.0.0.5", "239.9.9.9", "10.0.0.5");
    row(" incl IN IP4 239.9.9.9", "239.9.9.9", "");
    row(" incl IN IP4 * 10.0.0.5 10.0.0.6", "239.1.1.1", "10.0.0.5");
    row(" incl IN IP4 239.9.9.9/64 10.0.0.5", "239.1.1.1", "10.0.0.5");
    row(" incl IN IP6 ff02::1 fe80::1", "239.1.1.1", "");
    row(" incl  IN IP4 * 10.0.0.5", "239.1.1.1", ""); // the blank moves the tokens
    row("incl IN IP4 * 10.0.0.5", "239.1.1.1", "");   // another attribute
    row("", "239.1.1.1", "");
}

void TestSdpReader::sourceFilter()
{
    QFETCH(QByteArray, filter);
    QFETCH(QString, destination);
    QFETCH(QString, source);
    QStringList expected(QStringLiteral("ReceiveDestinationIp=") + destination);
    if (!source.isEmpty())
        expected << QStringLiteral("ReceiveSourceIp=") + source;
    expected << QStringLiteral("ReceiveDestinationPort=5004");
    QCOMPARE(storedValues(readSdpText(videoBlock("c=IN IP4 239.1.1.1\na=source-filter:" + filter))),
             expected);
}

void TestSdpReader::shortTexts_data()
{
    QTest::addColumn<QByteArray>("port");
    QTest::addColumn<bool>("isStored");
    QTest::newRow("one digit") << QByteArray("7") << false;
    QTest::newRow("two digits") << QByteArray("17") << true;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("one character of two bytes") << QByteArray("\xc3\xa9") << false;
}

void TestSdpReader::shortTexts()
{
    QFETCH(QByteArray, port);
    QFETCH(bool, isStored);
    const auto stores = readSdpText("v=0\nm=video " + port + " RTP/AVP 96\na=recvonly\n");
    QCOMPARE(stores.size(), isStored ? 1 : 0);
}

void TestSdpReader::portsAreNotCheckedToBeNumbers()
{
    QCOMPARE(stored("m=video 5004/2 RTP/AVP 96\na=recvonly\n"), list({"ReceiveDestinationPort=5004/2"}));
    QCOMPARE(stored("m=video RTP/AVP 96\na=recvonly\n"), list({"ReceiveDestinationPort=RTP/AVP"}));
}

// Audio and ancillary data do not inherit it: it goes to video, whether or not there is a video block.
void TestSdpReader::sessionLevelConnectionIsTheVideoDestination()
{
    QCOMPARE(stored("v=0\no=- 1 1 IN IP4 10.0.0.1\ns=x\nc=IN IP4 239.1.1.1/32\nt=0 0\n"
                    "m=audio 5004 RTP/AVP 96\na=recvonly\n"),
             list({"ReceiveDestinationIp=239.1.1.1", "TransmitDestinationIp=239.1.1.1",
                   "ReceiveAudDestinationPort0=5004"}));
}

void TestSdpReader::sessionLevelSourceFilterAndDirection()
{
    QCOMPARE(stored("v=0\ns=x\na=source-filter: incl IN IP4 * 10.0.0.5\na=recvonly\nt=0 0\n"),
             list({"ReceiveSourceIp=10.0.0.5"}));
}

void TestSdpReader::nothingIsCarriedFromOneBlockToTheNext()
{
    QCOMPARE(
        stored("v=0\nm=video 5000 RTP/AVP 96\nc=IN IP4 239.1.1.1\na=source-filter: incl IN IP4 * 10.0.0.5\n"
               "a=recvonly\nm=data\n"),
        list({"ReceiveDestinationIp=239.1.1.1", "ReceiveSourceIp=10.0.0.5", "ReceiveDestinationPort=5000"}));
}

// A caller that has looked at the first line hands over the rest.
void TestSdpReader::theSourceMayStandBehindTheVersionLine()
{
    const char whole[] = "v=0\no=- 1 1 IN IP4 10.0.0.1\nc=IN IP4 239.1.1.1\nm=audio 5004 RTP/AVP 96\n";
    QCOMPARE(stored(whole + 4), stored(whole));
    QCOMPARE(stored("o=- 1 1 IN IP4 10.0.0.1\n"), QStringList());
}

void TestSdpReader::onlyOneVersionLineIsSkipped()
{
    QCOMPARE(stored("v=0\nv=0\nm=video 5004 RTP/AVP 96\na=recvonly\n"),
             list({"ReceiveDestinationPort=5004"}));
}

// The first line to be processed starts no new block, so nothing is applied for what stands before it.
void TestSdpReader::mediaLineFirst()
{
    QCOMPARE(stored("m=video 5004 RTP/AVP 96\na=recvonly\n"), list({"ReceiveDestinationPort=5004"}));
    QCOMPARE(stored("v=0\nm=video 5004 RTP/AVP 96\na=recvonly"), list({"ReceiveDestinationPort=5004"}));
}

void TestSdpReader::lineEndsAreStripped()
{
    QList<QByteArray> lines = {"v=0\r\n", "m=video 5004\r\n", "c=IN IP4 239.1.1.1\n", "a=recvonly\r\r\n"};
    const auto stores = readSdp([&lines](QByteArray &line) {
        if (lines.isEmpty())
            return false;
        line = lines.takeFirst();
        return true;
    });
    QCOMPARE(storedValues(stores), list({"ReceiveDestinationIp=239.1.1.1", "ReceiveDestinationPort=5004"}));
}

void TestSdpReader::nulBytesEndLines()
{
    QList<QByteArray> lines = {QByteArray("m=video 5004\0 x", 15), QByteArray("c=IN IP4 239.1.1.1\0/", 20),
                               QByteArray("a=recvonly\0", 11), QByteArray("\0m=audio 5006", 14)};
    const auto stores = readSdp([&lines](QByteArray &line) {
        if (lines.isEmpty())
            return false;
        line = lines.takeFirst();
        return true;
    });
    QCOMPARE(storedValues(stores), list({"ReceiveDestinationIp=239.1.1.1", "ReceiveDestinationPort=5004"}));
}

void TestSdpReader::emptyTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("version only") << QByteArray("v=0");
    QTest::newRow("version line only") << QByteArray("v=0\n");
    QTest::newRow("blank lines") << QByteArray("\n\n\n");
    QTest::newRow("media without media") << QByteArray("m\nm=\nm= \nm=video\n");
    QTest::newRow("attributes without text") << QByteArray("a\na=\na= \nc\nc=\n");
    QTest::newRow("NUL first") << QByteArray("\0\nm=video 5004 RTP", 16).left(2);
    QTest::newRow("no description") << QByteArray("<html><body>404</body></html>\n");
}

void TestSdpReader::emptyTexts()
{
    QFETCH(QByteArray, text);
    QCOMPARE(storedValues(readSdpText(text)), QStringList());
}

void TestSdpReader::tokensAreComparedExactly_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char *line :
         {"a=recvonly2", "a=Recvonly", " a=recvonly", "a= recvonly", "A=recvonly", "arecvonly"})
        QTest::newRow(line) << QByteArray(line);
}

// A direction that is none leaves the block without a direction.
void TestSdpReader::tokensAreComparedExactly()
{
    QFETCH(QByteArray, line);
    QCOMPARE(storedValues(readSdpText("v=0\nm=video 5004 RTP/AVP 96\n" + line + "\n")),
             list({"ReceiveDestinationPort=5004", "TransmitRemotePort=5004"}));
}

QTEST_APPLESS_MAIN(TestSdpReader)
#include "test_sdpreader.moc"
