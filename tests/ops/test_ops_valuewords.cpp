// SPDX-License-Identifier: MIT
#include "channel/videoformats.h"
#include "ops/valuewords.h"
#include "rows.h"

#include <set>

using ops::Kind;

class TestValueWords : public QObject {
    Q_OBJECT

private slots:
    void areRead_data();
    void areRead();
    void wrongOnesAreRefused_data();
    void wrongOnesAreRefused();
    void everyWordComesBack_data();
    void everyWordComesBack();
    void everyFormatHasAShortName();
    void unknownBitsOfUseAreKept();
    void unknownNumbersAreShownAsTheyAre();
    void aTextWhereANumberBelongsStandsInQuotes_data();
    void aTextWhereANumberBelongsStandsInQuotes();
    void theReasonIsTold_data();
    void theReasonIsTold();
    void rangesEndWhereTheySay_data();
    void rangesEndWhereTheySay();
    void addressBits();
};

void TestValueWords::areRead_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const char *name, Kind kind, const char *words, const char *value) {
        QTest::newRow(name) << int(kind) << QByteArray(words) << QByteArray(value);
    };
    row("address", Kind::Address, "239.20.2.1", "\"239.20.2.1\"");
    row("empty address", Kind::Address, "", "\"\"");
    row("port", Kind::Port, "20000", "20000");
    row("highest port", Kind::Port, "65535", "65535");
    row("hexadecimal", Kind::Port, "0x10", "16");
    row("use", Kind::Use, "dst,dst-port", "10");
    row("use in other words", Kind::Use, "dst,port", "10");
    row("use with blanks", Kind::Use, "src, if", "20");
    row("use all", Kind::Use, "all", "31");
    row("use none", Kind::Use, "none", "0");
    row("use a number", Kind::Use, "0x3f", "63");
    row("format of the dialog", Kind::Format, "1080P 50fps (1920)", "595636786");
    row("format in short", Kind::Format, "1080p50", "595636786");
    row("format with width", Kind::Format, "3840x2160p59.94", "641790011");
    row("interlaced", Kind::Format, "1080i59.94", "327201309");
    row("format as number", Kind::Format, "0x2380b232", "595636786");
    row("clock", Kind::Clock, "sw-ptp", "65536");
    row("clock of a site", Kind::Clock, "7", "7");
    row("type", Kind::Type, "smpte-2110", "1");
    row("domain", Kind::Domain, "127", "127");
    row("identity", Kind::GrandMaster, "00-1D-C1-FF-FE-12-34-56", "\"00-1D-C1-FF-FE-12-34-56\"");
    row("mac", Kind::GrandMaster, "00:1d:c1:12:34:56", "\"00:1d:c1:12:34:56\"");
    row("any master", Kind::GrandMaster, "", "\"\"");
    row("switch", Kind::Switch, "ON", "1");
    row("flow mode", Kind::FlowMode, "single", "0");
    row("packet time", Kind::PacketTime, "125", "125");
    row("text", Kind::Text, "anything at all", "\"anything at all\"");
}

void TestValueWords::areRead()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, words);
    QFETCH(QByteArray, value);
    const auto read = ops::fromWords(Kind(kind), words);
    QVERIFY(read);
    QCOMPARE(told(*read), value);
}

void TestValueWords::wrongOnesAreRefused_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("words");
    const auto row = [](Kind kind, const char *words) {
        QTest::addRow("%d %s", int(kind), words) << int(kind) << QByteArray(words);
    };
    for (const char *words : {"239.20.2", "239.20.2.256", "239.20.2.1.1", "a.b.c.d", " 239.1.1.1",
                              "239.1.1.1 ", "::1", "239.01.1.1x"})
        row(Kind::Address, words);
    for (const char *words : {"", "65536", "-1", "20000x", "2e4", "0x", "4294967296", "99999999999999999999",
                              " 5", "5 ", "5\n", "+5", "0x1G", "1e3", "0x-5"})
        row(Kind::Port, words);
    for (const char *words : {"", "dst,", "dts", "src;dst"})
        row(Kind::Use, words);
    for (const char *words : {"1080p51", "", "p50"})
        row(Kind::Format, words);
    for (const char *words : {"128", "-1", ""})
        row(Kind::Domain, words);
    for (const char *words : {"00-1D", "00-1D-C1-FF-FE-12-34-5", "zz", "00 1D C1 12 34 56", "::", "-"})
        row(Kind::GrandMaster, words);
    for (const char *words : {"0", "4001", "fast"})
        row(Kind::PacketTime, words);
    row(Kind::Switch, "2");
    row(Kind::ChannelCount, "65537");
    QTest::newRow("zero byte in a text") << int(Kind::Text) << QByteArray("a\0b", 3);
    QTest::newRow("zero byte in an address") << int(Kind::Address) << QByteArray("1.2.3.4\0", 8);
}

void TestValueWords::wrongOnesAreRefused()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, words);
    const auto read = ops::fromWords(Kind(kind), words);
    QVERIFY(!read);
    QVERIFY(!read.failure().text.isEmpty());
}

void TestValueWords::everyWordComesBack_data()
{
    QTest::addColumn<int>("kind");
    for (const Kind kind :
         {Kind::Type, Kind::Clock, Kind::FlowMode, Kind::Switch, Kind::Format, Kind::Use, Kind::PacketTime})
        QTest::addRow("%d", int(kind)) << int(kind);
}

void TestValueWords::everyWordComesBack()
{
    QFETCH(int, kind);
    QVERIFY(!ops::wordsOf(Kind(kind)).isEmpty());
    for (const QByteArray &word : ops::wordsOf(Kind(kind))) {
        const auto value = ops::fromWords(Kind(kind), word);
        QVERIFY(value);
        const auto again = ops::fromWords(Kind(kind), ops::inWords(Kind(kind), *value));
        QVERIFY(again);
        QCOMPARE(*again, *value);
    }
}

void TestValueWords::everyFormatHasAShortName()
{
    const QByteArrayList names = ops::wordsOf(Kind::Format);
    QCOMPARE(names.size(), int(videoFormats().size()));
    QCOMPARE(std::set<QByteArray>(names.begin(), names.end()).size(), videoFormats().size());
    int at = 0;
    for (const VideoFormat &format : videoFormats())
        QCOMPARE(ops::fromWords(Kind::Format, names[at++])->number, format.id);
}

void TestValueWords::unknownBitsOfUseAreKept()
{
    QCOMPARE(ops::inWords(Kind::Use, number(0x28)), QByteArray("dst,0x20"));
    QCOMPARE(*ops::fromWords(Kind::Use, "dst,0x20"), number(0x28));
}

void TestValueWords::unknownNumbersAreShownAsTheyAre()
{
    QCOMPARE(ops::inWords(Kind::Clock, number(7)), QByteArray("7"));
    QCOMPARE(ops::inWords(Kind::Format, number(5)), QByteArray("5"));
    QCOMPARE(ops::inWords(Kind::Use, number(0xffffffe0)), QByteArray("0xffffffe0"));
    QCOMPARE(ops::inWords(Kind::Switch, number(2)), QByteArray("2"));
}

// A port that is stored as a text is none, whatever it looks like.
void TestValueWords::aTextWhereANumberBelongsStandsInQuotes_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("quoted");
    for (const Kind kind : {Kind::Address, Kind::Interface, Kind::GrandMaster, Kind::Text})
        QTest::addRow("text %d", int(kind)) << int(kind) << false;
    for (const Kind kind : {Kind::Port, Kind::Use, Kind::Number, Kind::AudioCount, Kind::AudioTotal,
                            Kind::PacketTime, Kind::Type, Kind::Format, Kind::Clock, Kind::Domain,
                            Kind::FlowMode, Kind::Switch, Kind::ChannelCount})
        QTest::addRow("number %d", int(kind)) << int(kind) << true;
}

void TestValueWords::aTextWhereANumberBelongsStandsInQuotes()
{
    QFETCH(int, kind);
    QFETCH(bool, quoted);
    QCOMPARE(ops::isTextKind(Kind(kind)), !quoted);
    QCOMPARE(ops::inWords(Kind(kind), text("20000")), QByteArray(quoted ? "\"20000\"" : "20000"));
    QCOMPARE(ops::inWords(Kind(kind), text("")), QByteArray(quoted ? "\"\"" : ""));
}

void TestValueWords::theReasonIsTold_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](Kind kind, const char *words, const char *reason) {
        QTest::addRow("%d %s", int(kind), words) << int(kind) << QByteArray(words) << QByteArray(reason);
    };
    row(Kind::Address, "1.2.3", "\"1.2.3\" is no IPv4 address: four numbers from 0 to 255 with dots between");
    row(Kind::Interface, "eth0", "\"eth0\" is no IPv4 address: four numbers from 0 to 255 with dots between");
    row(Kind::GrandMaster, "zz", "\"zz\" is neither a clock identity nor a MAC address");
    row(Kind::GrandMaster, "00-1D",
        "\"00-1D\": a clock identity has 16 hexadecimal digits, a MAC address 12");
    row(Kind::Port, "65536", "\"65536\": a port is a number from 0 to 65535");
    row(Kind::Number, "4294967296", "\"4294967296\": a number from 0 to 4294967295 is needed");
    row(Kind::AudioCount, "65", "\"65\": a flow has 0 to 64 audio channels");
    row(Kind::AudioTotal, "513", "\"513\": a number of audio channels is from 0 to 512");
    row(Kind::PacketTime, "4001", "\"4001\": a packet time is 1 to 4000 microseconds, such as 125 or 1000");
    row(Kind::Domain, "128", "\"128\": a PTP domain is a number from 0 to 127");
    row(Kind::ChannelCount, "65537", "\"65537\": a server has 0 to 65536 channels");
    row(Kind::Type, "SMTPE-2110",
        "\"SMTPE-2110\": a channel type is SMPTE-2110 or a number; did you mean SMPTE-2110?");
    row(Kind::Format, "1080p51",
        "\"1080p51\": a video format is one of the dialog's, such as 1080p50 or 3840x2160p59.94");
    row(Kind::Clock, "swptp",
        "\"swptp\": a clock is internal, hw-ptp, sw-ptp, free-run or a number; did you mean sw-ptp?");
    row(Kind::FlowMode, "singel", "\"singel\": a flow mode is single or flows; did you mean single?");
    row(Kind::Switch, "yes", "\"yes\": a switch is on or off");
}

void TestValueWords::theReasonIsTold()
{
    QFETCH(int, kind);
    QFETCH(QByteArray, words);
    QFETCH(QByteArray, reason);
    const auto read = ops::fromWords(Kind(kind), words);
    QVERIFY(!read);
    QCOMPARE(read.failure().text, reason);
    QCOMPARE(read.failure().kind, ops::Failure::Input);
}

// Both ends of each range, and the number behind the last.
void TestValueWords::rangesEndWhereTheySay_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<quint32>("least");
    QTest::addColumn<quint32>("most");
    const struct {
        Kind kind;
        quint32 least, most;
    } rows[] = {{Kind::Port, 0, 65535},         {Kind::Number, 0, 0xffffffff}, {Kind::AudioCount, 0, 64},
                {Kind::AudioTotal, 0, 512},     {Kind::PacketTime, 1, 4000},   {Kind::Domain, 0, 127},
                {Kind::ChannelCount, 0, 65536}, {Kind::Type, 0, 0xffffffff},   {Kind::Format, 0, 0xffffffff},
                {Kind::Clock, 0, 0xffffffff},   {Kind::FlowMode, 0, 1},        {Kind::Switch, 0, 1}};
    for (const auto &row : rows)
        QTest::addRow("%d", int(row.kind)) << int(row.kind) << row.least << row.most;
}

void TestValueWords::rangesEndWhereTheySay()
{
    QFETCH(int, kind);
    QFETCH(quint32, least);
    QFETCH(quint32, most);
    for (const quint32 fits : {least, most}) {
        const auto read = ops::fromWords(Kind(kind), QByteArray::number(fits));
        QVERIFY(read);
        QCOMPARE(*read, number(fits));
        QCOMPARE(*ops::fromWords(Kind(kind), "0x" + QByteArray::number(fits, 16)), number(fits));
    }
    QVERIFY(!ops::fromWords(Kind(kind), QByteArray::number(quint64(most) + 1)));
    QVERIFY(least == 0 || !ops::fromWords(Kind(kind), QByteArray::number(least - 1)));
}

void TestValueWords::addressBits()
{
    QCOMPARE(*ops::addressBits("239.20.2.1"), 0xef140201u);
    QVERIFY(!ops::addressBits("239.20.2"));
}

QTEST_APPLESS_MAIN(TestValueWords)
#include "test_ops_valuewords.moc"
