// SPDX-License-Identifier: MIT
#include "files/settingstext.h"

#include <QFile>
#include <QtTest>

namespace {

// A text is "<name>#<channel>"; a number is made of the name's bytes, weighted by their place, and the
// channel. make_golden.py states the same.
QString value(const char *name, bool isString, int channel)
{
    if (isString)
        return QStringLiteral("%1#%2").arg(QLatin1String(name)).arg(channel);
    int sum = 0;
    for (int at = 0; name[at]; ++at)
        sum += (at + 1) * uchar(name[at]);
    return QString::number(sum * 1000 + channel);
}

QByteArray withHeader(const QByteArray &lines)
{
    return "[HalvectIpConfig]\n" + lines;
}

ReadSettings readChannel(const QByteArray &lines)
{
    return readSettingsText(withHeader("[channel0]\n" + lines));
}

using Values = QMap<QString, QString>;

Values one(const char *key, const char *text)
{
    return {{QString::fromUtf8(key), QString::fromUtf8(text)}};
}

} // namespace

class TestSettingsFile : public QObject {
    Q_OBJECT

private slots:
    void golden_data();
    void golden();
    void secondLineRunsTogether();
    void fourChannelsWithOneFlow();
    void everySectionCarriesOverrideZero();
    void keysOfASectionAreUnique();
    void noChannelsLeaveTheHeader();
    void noFlows();
    void numbersAreNormalised_data();
    void numbersAreNormalised();
    void someNumbersAreWrittenAsTheyRead();
    void audioInterfacesAreThoseOfVideo();
    void templateMarksInValuesAreLeftAlone();
    void valuesAreWrittenInUtf8();

    void signature_data();
    void signature();
    void acceptedKeys_data();
    void acceptedKeys();
    void acceptedKeysIgnoreCase_data();
    void acceptedKeysIgnoreCase();
    void interfacesAreIgnored_data();
    void interfacesAreIgnored();
    void unknownKeysAreIgnored_data();
    void unknownKeysAreIgnored();
    void flowKeys_data();
    void flowKeys();
    void firstSectionIsChannelZero();
    void lowerSectionStops();
    void sectionAfterAStopStaysStopped();
    void sameSectionAgainGoesOn();
    void sectionNumber_data();
    void sectionNumber();
    void linesBeforeASectionHaveNoEffect();
    void commentsAndEmptyLines();
    void headerOnly();
    void valueText_data();
    void valueText();
    void globalOverride();
    void ignoredLinesLeaveTheResultAlone();
    void numberText_data();
    void numberText();
    void longLines();
    void nulBytesEndLines();
    void carriageReturns();
};

void TestSettingsFile::golden_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("flows");
    for (int channels : {1, 4, 12}) {
        for (int flows : {1, 8})
            QTest::addRow("%dx%d", channels, flows) << channels << flows;
    }
}

void TestSettingsFile::golden()
{
    QFETCH(int, channels);
    QFETCH(int, flows);
    QFile file(QStringLiteral(CORVEL_TEST_DATA "/settings/%1x%2.ipp").arg(channels).arg(flows));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(writeSettingsFile(value, channels, flows), file.readAll());
}

void TestSettingsFile::secondLineRunsTogether()
{
    const QList<QByteArray> lines = writeSettingsFile(value, 1, 1).split('\n');
    QCOMPARE(lines.at(0), QByteArray("[HalvectIpConfig]"));
    QCOMPARE(lines.at(1), QByteArray(";Network Config fileName=Quorlex"));
    QCOMPARE(lines.at(2), QByteArray("Version=1.0"));
    QCOMPARE(lines.at(3), QByteArray());
}

void TestSettingsFile::fourChannelsWithOneFlow()
{
    const QByteArray text = writeSettingsFile(value, 4, 1);
    const QList<QByteArray> stems = {
        "TransmitAudIp",           "TransmitAudDestinationIp", "TransmitAudSourcePort",
        "TransmitAudRemotePort",   "TransmitAudFlags",         "ReceiveAudSourceIp",
        "ReceiveAudDestinationIp", "ReceiveAudSourcePort",     "ReceiveAudDestinationPort",
        "ReceiveAudFlags"};
    for (int channel = 0; channel < 4; ++channel)
        QCOMPARE(text.count("\n[channel" + QByteArray::number(channel) + "]\n"), 1);
    for (const QByteArray &stem : stems) {
        QCOMPARE(text.count('\n' + stem + "0="), 4);
        QCOMPARE(text.count('\n' + stem + "1="), 0);
    }
    QCOMPARE(text.count("\n\n"), 5);
    QVERIFY(text.endsWith("\n\n"));
}

void TestSettingsFile::everySectionCarriesOverrideZero()
{
    QCOMPARE(writeSettingsFile(value, 4, 1).count("]\nnmosoverride=0\nClockGrandMaster="), 4);
}

void TestSettingsFile::keysOfASectionAreUnique()
{
    QSet<QByteArray> keys;
    const QByteArray text = writeSettingsFile(value, 1, 8);
    for (const QByteArray &line : text.mid(text.indexOf("[channel0]")).split('\n')) {
        const QByteArray key = line.split('=').first();
        QVERIFY2(key.isEmpty() || !keys.contains(key), key.constData());
        keys << key;
    }
    QCOMPARE(keys.size(), 1 + 1 + 42 + 80); // empty line, section, single keys, ten per flow
}

void TestSettingsFile::noChannelsLeaveTheHeader()
{
    const QByteArray header = "[HalvectIpConfig]\n;Network Config fileName=Quorlex\nVersion=1.0\n\n";
    QCOMPARE(writeSettingsFile(value, 0, 8), header);
    QCOMPARE(writeSettingsFile(value, -1, 8), header);
}

void TestSettingsFile::noFlows()
{
    for (int flows : {0, -1}) {
        const QByteArray text = writeSettingsFile(value, 1, flows);
        QVERIFY(text.contains("\nTransmitFlags=9443000\nTransmitAudInterface=TransmitInterface#0\n"));
    }
}

void TestSettingsFile::numbersAreNormalised_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("plain") << QStringLiteral("5004") << QByteArray("5004");
    QTest::newRow("largest") << QStringLiteral("4294967295") << QByteArray("4294967295");
    QTest::newRow("beyond 32 bits") << QStringLiteral("4294967297") << QByteArray("1");
    QTest::newRow("leading zeros") << QStringLiteral("007") << QByteArray("7");
    QTest::newRow("empty") << QString() << QByteArray("0");
    QTest::newRow("text") << QStringLiteral("abc") << QByteArray("0");
}

void TestSettingsFile::numbersAreNormalised()
{
    QFETCH(QString, stored);
    QFETCH(QByteArray, written);
    const auto source = [&](const char *, bool, int) { return stored; };
    QVERIFY(writeSettingsFile(source, 1, 0).contains("\nTransmitSourcePort=" + written + '\n'));
}

void TestSettingsFile::someNumbersAreWrittenAsTheyRead()
{
    const auto source = [](const char *, bool, int) { return QStringLiteral("007"); };
    const QByteArray text = writeSettingsFile(source, 1, 1);
    for (const char *key : {"ReceiveAudChannels", "ReceiveAudTotalChannels", "TransmitAudSourcePort0",
                            "TransmitAudFlags0", "ReceiveAudDestinationPort0"})
        QVERIFY2(text.contains(QByteArray("\n") + key + "=007\n"), key);
    QVERIFY(text.contains("\nTransmitAudChannels=7\n"));
    QVERIFY(text.contains("\nTransmitAudTotalChannels=7\n"));
}

void TestSettingsFile::audioInterfacesAreThoseOfVideo()
{
    const QByteArray text = writeSettingsFile(value, 1, 1);
    QVERIFY(text.contains("\nTransmitAudInterface=TransmitInterface#0\n"));
    QVERIFY(text.contains("\nReceiveAudInterface=ReceiveInterface#0\n"));
    QVERIFY(text.contains("\nReceiveAncInterface=ReceiveAncInterface#0\n"));
}

void TestSettingsFile::templateMarksInValuesAreLeftAlone()
{
    const auto source = [](const char *, bool, int) { return QStringLiteral("%1%2%3"); };
    QVERIFY(writeSettingsFile(source, 1, 1).contains("\nTransmitAudIp0=%1%2%3\n"));
}

void TestSettingsFile::valuesAreWrittenInUtf8()
{
    const auto source = [](const char *, bool, int) { return QString(QChar(0xe9)); };
    QVERIFY(writeSettingsFile(source, 1, 1).contains("\nClockGrandMaster=\xc3\xa9\n"));
}

void TestSettingsFile::signature_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("as written") << QByteArray("[HalvectIpConfig]") << true;
    QTest::newRow("lower case, text behind") << QByteArray("[halvectipconfig] extra") << true;
    QTest::newRow("line end left") << QByteArray("[HalvectIpConfig]\r") << true;
    QTest::newRow("cut") << QByteArray("[HalvectIpConfig") << false;
    QTest::newRow("blank before") << QByteArray(" [HalvectIpConfig]") << false;
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf[HalvectIpConfig]") << false;
    QTest::newRow("other section") << QByteArray("[channel0]") << false;
    QTest::newRow("session description") << QByteArray("v=0") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestSettingsFile::signature()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, accepted);
    QCOMPARE(isSettingsSignature(line), accepted);
}

void TestSettingsFile::acceptedKeys_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isString");
    const char texts[] = "ClockGrandMaster SfpTopIPAddress SfpBottomIPAddress SfpSubnetMask SfpGateway "
                         "TransmitIp TransmitDestinationIp TransmitAncIp TransmitAncDestinationIp "
                         "ReceiveSourceIp ReceiveDestinationIp ReceiveAncSourceIp ReceiveAncDestinationIp "
                         "TransmitAudIp5 TransmitAudDestinationIp5 ReceiveAudSourceIp5 "
                         "ReceiveAudDestinationIp5";
    const char numbers[] =
        "TransmitSourcePort TransmitRemotePort TransmitFlags TransmitAudPacketLength TransmitAudChannels "
        "TransmitAudTotalChannels TransmitAncSourcePort TransmitAncRemotePort TransmitAncFlags VideoType "
        "ClockType ClockSettings ClockDomain J2KTransmitUllMode J2KTransmitBitDepth "
        "J2KTransmitChromaSubSample J2KTransmitDataRate J2KTransmitStreamType J2KTransmitPmtPid "
        "J2KTransmitVideoPid J2KTransmitPcrPid J2KTransmitAudioPid J2KReceiveSelectMode "
        "J2kReceiveProgramNumber J2kReceiveProgramPid J2kReceiveAudioNumber ReceiveSourcePort "
        "ReceiveDestinationPort ReceiveFlags ReceiveAudPacketLength ReceiveAudChannels "
        "ReceiveAudTotalChannels ReceiveAncSourcePort ReceiveAncDestinationPort ReceiveAncFlags "
        "TransmitAudSourcePort5 TransmitAudRemotePort5 TransmitAudFlags5 ReceiveAudSourcePort5 "
        "ReceiveAudDestinationPort5 ReceiveAudFlags5";
    for (const QString &key : QString::fromLatin1(texts).split(QLatin1Char(' ')))
        QTest::newRow(qPrintable(key)) << key << true;
    for (const QString &key : QString::fromLatin1(numbers).split(QLatin1Char(' ')))
        QTest::newRow(qPrintable(key)) << key << false;
}

void TestSettingsFile::acceptedKeys()
{
    QFETCH(QString, key);
    QFETCH(bool, isString);
    SettingsReader reader;
    SettingsValue out;
    QCOMPARE(reader.feed("[channel0]", &out), SettingsReader::Result::Ignored);
    QCOMPARE(reader.feed(key.toLatin1() + "=4321", &out), SettingsReader::Result::Value);
    QCOMPARE(QString::fromLatin1(out.key), key);
    QCOMPARE(out.isString, isString);
    QCOMPARE(out.text, QStringLiteral("4321"));
    QCOMPARE(out.channel, 0);
    QVERIFY(!out.global);
}

void TestSettingsFile::acceptedKeysIgnoreCase_data()
{
    acceptedKeys_data();
}

void TestSettingsFile::acceptedKeysIgnoreCase()
{
    QFETCH(QString, key);
    const Values expected = {{QStringLiteral("0/") + key, QStringLiteral("17")}};
    QCOMPARE(readChannel(key.toLower().toLatin1() + "=17\n").values, expected);
    QCOMPARE(readChannel(key.toUpper().toLatin1() + "=17\n").values, expected);
}

void TestSettingsFile::interfacesAreIgnored_data()
{
    QTest::addColumn<QByteArray>("key");
    for (const char *key : {"TransmitInterface", "TransmitAudInterface", "TransmitAncInterface",
                            "ReceiveInterface", "ReceiveAudInterface", "ReceiveAncInterface"})
        QTest::newRow(key) << QByteArray(key);
}

void TestSettingsFile::interfacesAreIgnored()
{
    QFETCH(QByteArray, key);
    QCOMPARE(readChannel(key + "=eth1\n").values, Values());
}

void TestSettingsFile::unknownKeysAreIgnored_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char *line : {"SignalFormat=1", "=", "=5", "Transmit=1", "TransmitIp =1", " TransmitIp=1",
                             "xTransmitIp=1", "TransmitIp0=1", "[channel1]=5", "AudioFlowType=1",
                             "TransmitAudI=1", "lastConfigPath=/", "TransmitIp", "[other]"})
        QTest::newRow(line) << QByteArray(line);
}

void TestSettingsFile::unknownKeysAreIgnored()
{
    QFETCH(QByteArray, line);
    QCOMPARE(readChannel(line + '\n').values, Values());
}

void TestSettingsFile::flowKeys_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QString>("stored");
    const auto row = [](const char *key, const char *stored) {
        QTest::newRow(key) << QByteArray(key) << QString::fromUtf8(stored);
    };
    row("TransmitAudIp", "TransmitAudIp0");
    row("transmitaudip", "TransmitAudIp0");
    row("TransmitAudIp3", "TransmitAudIp3");
    row("TransmitAudIp13", "TransmitAudIp3");
    row("TransmitAudIp15", "TransmitAudIp5");
    row("xTransmitAudIpZ", "TransmitAudIpZ");
    row("xTransmitAudIp", "TransmitAudIpp");
    row("TransmitAudIp ", "TransmitAudIp ");
    row("TransmitAudIp\xc3\xa9", "TransmitAudIp\xc3\xa9");
    row("TransmitAudIp\xf0\x9f\x8e\xac", "TransmitAudIp\xf0\x9f\x8e\xac");
    row("TransmitAudIp\xff", "TransmitAudIp\xef\xbf\xbd");
    row("ReceiveAudFlagsTransmitAudIp2", "TransmitAudIp2"); // the first row that matches wins
}

void TestSettingsFile::flowKeys()
{
    QFETCH(QByteArray, key);
    QFETCH(QString, stored);
    const Values expected = {{QStringLiteral("0/") + stored, QStringLiteral("239.0.0.1")}};
    QCOMPARE(readChannel(key + "=239.0.0.1\n").values, expected);
}

void TestSettingsFile::firstSectionIsChannelZero()
{
    const auto read = readSettingsText(withHeader("[channel2]\nTransmitIp=a\n[channel3]\nTransmitIp=b\n"
                                                  "[channel7]\nTransmitIp=c\n"));
    const Values expected = {{QStringLiteral("0/TransmitIp"), QStringLiteral("a")},
                             {QStringLiteral("1/TransmitIp"), QStringLiteral("b")},
                             {QStringLiteral("5/TransmitIp"), QStringLiteral("c")}};
    QCOMPARE(read.values, expected);
    QVERIFY(!read.stopped);
}

void TestSettingsFile::lowerSectionStops()
{
    const auto read =
        readSettingsText(withHeader("[channel1]\nTransmitIp=a\n[channel0]\nTransmitIp=b\nClockDomain=1\n"));
    QCOMPARE(read.values, one("0/TransmitIp", "a"));
    QVERIFY(read.stopped);
}

void TestSettingsFile::sectionAfterAStopStaysStopped()
{
    SettingsReader reader;
    SettingsValue out;
    QCOMPARE(reader.feed("[channel1]", &out), SettingsReader::Result::Ignored);
    QCOMPARE(reader.feed("[channel0]", &out), SettingsReader::Result::Stop);
    QCOMPARE(reader.feed("[channel1]", &out), SettingsReader::Result::Stop);
    QCOMPARE(reader.feed("TransmitIp=a", &out), SettingsReader::Result::Stop);
}

// Only a section below the first one stops; going back to a later one does not.
void TestSettingsFile::sameSectionAgainGoesOn()
{
    const auto read = readSettingsText(
        withHeader("[channel1]\nTransmitIp=a\n[channel3]\nTransmitIp=b\n[channel1]\nTransmitIp=c\n"));
    const Values expected = {{QStringLiteral("0/TransmitIp"), QStringLiteral("c")},
                             {QStringLiteral("2/TransmitIp"), QStringLiteral("b")}};
    QCOMPARE(read.values, expected);
    QVERIFY(!read.stopped);
}

void TestSettingsFile::sectionNumber_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<int>("channel"); // relative to a first section 0
    QTest::newRow("plain") << QByteArray("[channel3]") << 3;
    QTest::newRow("upper case") << QByteArray("[CHANNEL3]") << 3;
    QTest::newRow("two digits") << QByteArray("[channel12]") << 1;
    QTest::newRow("no digit") << QByteArray("[channelx]") << 0;
    QTest::newRow("cut before the digit") << QByteArray("[channel") << 0;
    QTest::newRow("not closed") << QByteArray("[channel4") << 4;
    QTest::newRow("text before") << QByteArray("x[channel3]") << 0;
    QTest::newRow("blank before the digit") << QByteArray("[channel 3]") << 0;
    QTest::newRow("places are characters, not bytes") << QByteArray("\xc3\xa9[chann5[channel3]") << 0;
    QTest::newRow("digit that is not ASCII") << QByteArray("[channel\xd9\xa3]") << 0;
    QTest::newRow("digit at the place, header behind it") << QByteArray("12345678"
                                                                        "6[channel3]")
                                                          << 6;
}

void TestSettingsFile::sectionNumber()
{
    QFETCH(QByteArray, header);
    QFETCH(int, channel);
    const auto read = readSettingsText(withHeader("[channel0]\n" + header + "\nTransmitIp=a\n"));
    const Values expected = {{QString::number(channel) + QStringLiteral("/TransmitIp"), QStringLiteral("a")}};
    QCOMPARE(read.values, expected);
}

void TestSettingsFile::linesBeforeASectionHaveNoEffect()
{
    const auto read =
        readSettingsText(withHeader(";c\nVersion=1.0\nTransmitIp=a\nnmosoverride=1\n[other]\n"));
    QCOMPARE(read.order, QStringList());
    QCOMPARE(read.global, 0u);
}

void TestSettingsFile::commentsAndEmptyLines()
{
    QCOMPARE(readChannel("\n;TransmitIp=a\n\n;[channel5]\nTransmitIp=b\n").values, one("0/TransmitIp", "b"));
    QCOMPARE(readChannel(" ;TransmitIp=a\n").values, Values());
    // Neither a key that need only be contained nor a section that would stop the reading.
    const auto read =
        readSettingsText(withHeader("[channel1]\n;TransmitAudIp3=a\n;[channel0]\nTransmitIp=b\n"));
    QCOMPARE(read.values, one("0/TransmitIp", "b"));
    QVERIFY(!read.stopped);
}

void TestSettingsFile::headerOnly()
{
    QCOMPARE(readSettingsText(writeSettingsFile(value, 0, 0)).order, QStringList());
}

void TestSettingsFile::valueText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("stored");
    QTest::newRow("empty") << QByteArray("") << QStringLiteral("");
    QTest::newRow("not trimmed") << QByteArray(" 10.0.0.1\t") << QStringLiteral(" 10.0.0.1\t");
    QTest::newRow("further parts are dropped") << QByteArray("b=c=d") << QStringLiteral("b");
    QTest::newRow("equals sign only") << QByteArray("=") << QStringLiteral("");
    QTest::newRow("not ASCII") << QByteArray("\xc3\xa9") << QString(QChar(0xe9));
    QTest::newRow("not UTF-8") << QByteArray("\xff") << QString(QChar(0xfffd));
    QTest::newRow("quoted") << QByteArray("\"a;b\"") << QStringLiteral("\"a;b\"");
}

void TestSettingsFile::valueText()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, stored);
    const Values expected = {{QStringLiteral("0/ClockGrandMaster"), stored}};
    QCOMPARE(readChannel("ClockGrandMaster=" + text + '\n').values, expected);
}

void TestSettingsFile::globalOverride()
{
    SettingsReader reader;
    SettingsValue out;
    reader.feed("[channel0]", &out);
    QCOMPARE(reader.feed("NMOSoverride=1", &out), SettingsReader::Result::Value);
    QVERIFY(out.global);
    QCOMPARE(out.key, QByteArray("nmosoverride"));
    const auto read = readSettingsText(
        withHeader("[channel0]\nnmosoverride=1\n[channel1]\nnmosoverride=5\nTransmitIp=a\n"));
    QCOMPARE(read.global, 5u); // the last one wins
    QCOMPARE(read.values, one("1/TransmitIp", "a"));
}

void TestSettingsFile::ignoredLinesLeaveTheResultAlone()
{
    SettingsReader reader;
    SettingsValue out;
    out.key = "untouched";
    for (const char *line : {"a=b", "[channel0]", "nothing", ";x", "", "unknown=1"}) {
        QCOMPARE(reader.feed(line, &out), SettingsReader::Result::Ignored);
        QCOMPARE(out.key, QByteArray("untouched"));
    }
}

void TestSettingsFile::numberText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("number");
    QTest::addColumn<quint32>("global");
    const auto row = [](const char *text, quint32 number, quint32 global) {
        QTest::newRow(text) << QString::fromLatin1(text) << number << global;
    };
    row("0", 0, 0);
    row("1", 1, 1);
    row("  5004\t", 5004, 5004);
    row("4294967295", 4294967295u, 4294967295u);
    row("4294967297", 1, 1);
    row("18446744073709551615", 4294967295u, 0);
    row("18446744073709551616", 0, 0);
    row("-1", 0, 4294967295u);
    row("abc", 0, 0);
    row("12abc", 0, 0);
    row("0x10", 0, 0);
    row("1.5", 0, 0);
    row("1,000", 0, 0);
    row("", 0, 0);
}

void TestSettingsFile::numberText()
{
    QFETCH(QString, text);
    QFETCH(quint32, number);
    QFETCH(quint32, global);
    QCOMPARE(settingsNumber(text), number);
    QCOMPARE(globalSettingsNumber(text), global);
}

// The rest of a line that is too long comes as a line of its own, as the file layer delivers it.
void TestSettingsFile::longLines()
{
    const QByteArray start = "ClockGrandMaster=";
    const QByteArray fits = QByteArray(4095 - start.size(), 'x');
    const Values expected = {{QStringLiteral("0/ClockGrandMaster"), QString::fromLatin1(fits)}};
    QCOMPARE(readChannel(start + fits + '\n').values, expected);
    const auto read = readChannel(start + fits + "TransmitIp=a\nClockDomain=5\n");
    QCOMPARE(read.order, QStringList({QStringLiteral("ClockGrandMaster"), QStringLiteral("TransmitIp"),
                                      QStringLiteral("ClockDomain")}));
    QCOMPARE(readChannel(QByteArray(100000, 'y') + "=1\nTransmitIp=a\n").values, one("0/TransmitIp", "a"));
}

void TestSettingsFile::nulBytesEndLines()
{
    SettingsReader reader;
    SettingsValue out;
    reader.feed("[channel0]", &out);
    QCOMPARE(reader.feed(QByteArray("TransmitIp=a\0b", 14), &out), SettingsReader::Result::Value);
    QCOMPARE(out.text, QStringLiteral("a"));
    QCOMPARE(reader.feed(QByteArray("Transmit\0Ip=a", 13), &out), SettingsReader::Result::Ignored);
    QCOMPARE(reader.feed(QByteArray("\0TransmitIp=a", 13), &out), SettingsReader::Result::Ignored);
}

// Values are not trimmed: a carriage return in the middle of a line stays, those at its end never come.
void TestSettingsFile::carriageReturns()
{
    const QByteArray crlf = writeSettingsFile(value, 2, 2).replace('\n', "\r\n");
    QCOMPARE(readSettingsText(crlf).values, readSettingsText(writeSettingsFile(value, 2, 2)).values);
    QCOMPARE(readChannel("TransmitIp=a\rb\n").values, one("0/TransmitIp", "a\rb"));
}

QTEST_APPLESS_MAIN(TestSettingsFile)
#include "test_settingsfile.moc"
