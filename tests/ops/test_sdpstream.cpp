// SPDX-License-Identifier: MIT
// The fields of a session description, taken apart one by one: what is a value, and what is none.
#include "ops/sdpstream.h"

#include "sdptexts.h"

using namespace ops;

class TestSdpStream : public QObject {
    Q_OBJECT

private slots:
    void rates_data();
    void rates();
    void numbers_data();
    void numbers();
    void fields_data();
    void fields();
    void formatParameters_data();
    void formatParameters();
    void kinds_data();
    void kinds();
    void directions_data();
    void directions();
    void groups_data();
    void groups();
    void whatIsMissingIsTheSessions();
    void faultlessStreams();
};

namespace {

using Shown = QByteArray (*)(const SdpLine &line);

SdpLine line(const QByteArray &text)
{
    return {1, text};
}

QByteArray number(int value)
{
    return QByteArray::number(value);
}

// Each field of a line behind the other, or "none" where the line is no such one.
QByteArray media(const SdpLine &line)
{
    const auto read = parseMediaLine(line);
    return read ? read->word + '|' + number(read->port) + '|' + read->protocol + '|' + read->formats.join(',')
                : QByteArray("none");
}

QByteArray connection(const SdpLine &line)
{
    const auto read = parseConnection(line);
    return read ? read->address + '|' + read->suffix + '|' + (read->ipv4 ? "4" : "-") : QByteArray("none");
}

QByteArray map(const SdpLine &line)
{
    const auto read = parseRtpMap(line);
    return read ? number(read->payload) + '|' + read->encoding + '|' + number(read->clockRate) + '|' +
                      number(read->channels)
                : QByteArray("none");
}

QByteArray filter(const SdpLine &line)
{
    const auto read = parseFilter(line);
    return read ? read->mode + '|' + read->network + '|' + read->family + '|' + read->destination + '|' +
                      read->sources.join(',')
                : QByteArray("none");
}

SdpStream only(const SdpText &text)
{
    return streamsOf(text).at(0);
}

} // namespace

Q_DECLARE_METATYPE(Shown)

void TestSdpStream::rates_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("lowest"); // empty: none
    const auto row = [](const char *text, const char *lowest) {
        QTest::newRow(*text ? text : "empty") << QByteArray(text) << QByteArray(lowest);
    };
    row("50", "50");
    row("60000/1001", "60000/1001");
    row("30000/1001", "30000/1001");
    row("50/1", "50");
    row("100/2", "50");
    row("120000/2002", "60000/1001");
    row("29.97", "2997/100");
    row("25.0", "25");
    row("25.000000", "25");
    row("0.125", "1/8");
    row("9999999999", "9999999999");
    row("", "");
    row("0", "");
    row("0/1", "");
    row("50/0", "");
    row("-50", "");
    row("+50", "");
    row(" 50", "");
    row("50 ", "");
    row("50.", "");
    row(".5", "");
    row("1.2.3", "");
    row("1/2/3", "");
    row("1e3", "");
    row("25.0000000", ""); // more digits than anybody writes
    row("99999999999", "");
    row("x", "");
}

void TestSdpStream::rates()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, lowest);
    const auto rate = parseRate(text);
    QCOMPARE(rate ? rate->text() : QByteArray(), lowest);
    if (rate)
        QVERIFY(rate->value() > 0);
}

void TestSdpStream::numbers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("value"); // below 0: none
    const auto row = [](const char *text, int value) {
        QTest::newRow(*text ? text : "empty") << QByteArray(text) << value;
    };
    row("0", 0);
    row("127", 127);
    row("0127", 127);
    row("128", -1);
    row("", -1);
    row("-1", -1);
    row("+1", -1);
    row("1 ", -1);
    row(" 1", -1);
    row("0x7", -1);
    row("1.0", -1);
    row("4294967296", -1);
    row("99999999999999999999", -1);
}

void TestSdpStream::numbers()
{
    QFETCH(QByteArray, text);
    QFETCH(int, value);
    QCOMPARE(parseNumber(text, 127).value_or(-1), value);
}

void TestSdpStream::fields_data()
{
    QTest::addColumn<Shown>("shown");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](Shown shown, const char *text, const char *wanted) {
        QTest::newRow(text) << shown << QByteArray(text) << QByteArray(wanted);
    };
    row(media, "m=video 20000 RTP/AVP 96", "video|20000|RTP/AVP|96");
    row(media, "m=audio 5004/2 RTP/AVP 97 98", "audio|5004|RTP/AVP|97,98");
    row(media, "m=video 0 RTP/AVP 96", "video|0|RTP/AVP|96");
    row(media, "m=video 65535 x y", "video|65535|x|y");
    row(media, "m=video 65536 RTP/AVP 96", "none");
    row(media, "m=video -1 RTP/AVP 96", "none");
    row(media, "m=video x RTP/AVP 96", "none");
    row(media, "m=video 20000 RTP/AVP", "none");
    row(media, "m=video 20000 RTP/AVP ", "none");
    row(media, "m=video  20000 RTP/AVP 96", "none");
    row(media, "m= 20000 RTP/AVP 96", "none");
    row(media, "m=", "none");
    row(connection, "c=IN IP4 239.1.1.1/64", "239.1.1.1|64|4");
    row(connection, "c=IN IP4 239.1.1.1", "239.1.1.1||4");
    row(connection, "c=IN IP4 239.1.1.1/64/2", "239.1.1.1|64/2|4");
    row(connection, "c=IN IP4 239.1.1.1/", "239.1.1.1||4");
    row(connection, "c=IN IP4 239.1.1", "239.1.1||-");
    row(connection, "c=IN IP4 host.example.org", "host.example.org||-");
    row(connection, "c=IN IP6 ff02::1", "ff02::1||-");
    row(connection, "c=IN IP6 239.1.1.1", "239.1.1.1||-");
    row(connection, "c=IN IP5 239.1.1.1", "none");
    row(connection, "c=XX IP4 239.1.1.1", "none");
    row(connection, "c=IN IP4 ", "none");
    row(connection, "c=IN IP4", "none");
    row(connection, "c=IN  IP4 239.1.1.1", "none");
    row(connection, "c=IN IP4 239.1.1.1 x", "none");
    row(map, "a=rtpmap:96 raw/90000", "96|raw|90000|0");
    row(map, "a=rtpmap:97 L24/48000/8", "97|L24|48000|8");
    row(map, "a=rtpmap: 97  L24/48000/8 ", "97|L24|48000|8");
    row(map, "a=rtpmap:97 L24/48000/1024", "97|L24|48000|1024");
    row(map, "a=rtpmap:97 L24/48000/1025", "none");
    row(map, "a=rtpmap:97 L24/48000/", "none");
    row(map, "a=rtpmap:97 L24/48000/8/1", "none");
    row(map, "a=rtpmap:97 L24", "none");
    row(map, "a=rtpmap:97 /48000", "none");
    row(map, "a=rtpmap:128 L24/48000", "none");
    row(map, "a=rtpmap:L24/48000", "none");
    row(map, "a=rtpmap:", "none");
    row(map, "a=rtpmap", "none");
    row(filter, "a=source-filter: incl IN IP4 239.1.1.1 10.0.0.5", "incl|IN|IP4|239.1.1.1|10.0.0.5");
    row(filter, "a=source-filter:excl IN IP4 * 10.0.0.5 10.0.0.6", "excl|IN|IP4|*|10.0.0.5,10.0.0.6");
    row(filter, "a=source-filter: incl IN IP4 239.1.1.1", "incl|IN|IP4|239.1.1.1|");
    row(filter, "a=source-filter: incl IN IP4", "none");
    row(filter, "a=source-filter:", "none");
}

void TestSdpStream::fields()
{
    QFETCH(Shown, shown);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, wanted);
    QCOMPARE(shown(line(text)), wanted);
}

void TestSdpStream::formatParameters_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("wanted"); // payload type, then each parameter; "=" when it has a value
    const auto row = [](const char *text, const char *wanted) {
        QTest::newRow(text) << QByteArray(text) << QByteArray(wanted);
    };
    row("a=fmtp:96 width=1920; interlace;", "96|width=1920|interlace");
    row("a=fmtp:96 width=1920;interlace", "96|width=1920|interlace");
    row("a=fmtp:96 a=b=c;", "96|a=b=c");
    row("a=fmtp:96 width=;", "96|width=");
    row("a=fmtp:96 ;; ;", "96");
    row("a=fmtp:96", "96");
    row("a=fmtp:", "");
    row("a=fmtp: 96 x", "|96 x");
}

void TestSdpStream::formatParameters()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, wanted);
    const SdpLine given = line(text);
    const SdpFmtp read = parseFmtp(given);
    QByteArrayList shown{read.payload};
    for (const SdpParameter &parameter : read.parameters) {
        shown.append(parameter.name + (parameter.hasValue ? '=' + parameter.value : QByteArray()));
        QVERIFY(read.find(parameter.name.constData()));
        QCOMPARE(read.value(parameter.name.constData()), parameter.value);
    }
    QCOMPARE(shown.join('|'), wanted);
    QVERIFY(!read.find("absent"));
    QCOMPARE(read.value("absent"), QByteArray());
}

void TestSdpStream::kinds_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("kind");
    const auto row = [](const char *word, const char *encoding, SdpKind kind) {
        const QByteArray text = QByteArray("m=") + word + " 20000 RTP/AVP 96\n" +
                                (*encoding ? QByteArray("a=rtpmap:96 ") + encoding + '\n' : QByteArray());
        QTest::addRow("%s %s", word, encoding) << text << int(kind);
    };
    row("video", "raw/90000", SdpKind::Video);
    row("video", "RAW/90000", SdpKind::Video);
    row("video", "", SdpKind::Video);
    row("video", "H264/90000", SdpKind::Other);
    row("video", "smpte291/90000", SdpKind::Anc);
    row("data", "smpte291/90000", SdpKind::Anc);
    row("audio", "L24/48000", SdpKind::Audio);
    row("audio", "", SdpKind::Audio);
    row("data", "raw/90000", SdpKind::Other);
    row("application", "", SdpKind::Other);
}

void TestSdpStream::kinds()
{
    QFETCH(QByteArray, text);
    QFETCH(int, kind);
    const SdpText parsed = parseSdp(text, "a.sdp");
    QCOMPARE(int(only(parsed).kind), kind);
}

void TestSdpStream::directions_data()
{
    QTest::addColumn<QByteArray>("session");
    QTest::addColumn<QByteArray>("own");
    QTest::addColumn<int>("direction");
    const auto row = [](const char *session, const char *own, SdpDirection direction) {
        QTest::addRow("session %s, own %s", session, own)
            << QByteArray(session) << QByteArray(own) << int(direction);
    };
    row("", "", Both);
    row("", "a=sendonly", Sends);
    row("", "a=recvonly", Receives);
    row("", "a=sendrecv", Both);
    row("", "a=inactive", Inactive);
    row("a=sendonly", "", Sends);
    row("a=sendonly", "a=recvonly", Receives);
    row("a=inactive", "a=sendrecv", Both);
    row("a=recvonly", "a=nonsense", Receives);
}

void TestSdpStream::directions()
{
    QFETCH(QByteArray, session);
    QFETCH(QByteArray, own);
    QFETCH(int, direction);
    const SdpText parsed = parseSdp("v=0\n" + session + "\nm=video 1 RTP/AVP 96\n" + own + '\n', "a.sdp");
    QCOMPARE(int(only(parsed).direction), direction);
}

void TestSdpStream::groups_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("group");
    for (const char *address : {"224.0.0.0", "239.255.255.255", "232.1.1.1"})
        QTest::newRow(address) << QByteArray(address) << true;
    for (const char *address : {"223.255.255.255", "240.0.0.0", "10.0.0.1", "host", "239.1.1", "ff02::1"})
        QTest::newRow(address) << QByteArray(address) << false;
}

void TestSdpStream::groups()
{
    QFETCH(QByteArray, address);
    QFETCH(bool, group);
    const auto read = parseConnection(line("c=IN IP4 " + address));
    QVERIFY(read);
    QCOMPARE(read->isGroup(), group);
}

void TestSdpStream::whatIsMissingIsTheSessions()
{
    const SdpText parsed =
        parseSdp("v=0\nc=IN IP4 239.1.1.9/64\na=source-filter: incl IN IP4 239.1.1.9 10.0.0.1\n"
                 "m=video 20000 RTP/AVP 96\nm=audio 20010 RTP/AVP 97\nc=IN IP4 239.1.1.2/64\n"
                 "a=source-filter: excl IN IP4 239.1.1.2 10.0.0.2\n",
                 "a.sdp");
    const auto streams = streamsOf(parsed);
    QCOMPARE(int(streams.size()), 2);
    QCOMPARE(streams[0].destination(), QByteArray("239.1.1.9:20000"));
    QCOMPARE(streams[0].source(), QByteArray("10.0.0.1"));
    QCOMPARE(streams[0].connectionLine->number, 2);
    QCOMPARE(streams[1].destination(), QByteArray("239.1.1.2:20010"));
    QCOMPARE(streams[1].source(), QByteArray()); // its own filter excludes
    QVERIFY(!streams[0].map && !streams[0].mapLine && !streams[0].fmtp.line);
    const SdpText bare = parseSdp("m=video 20000 RTP/AVP 96\n", "a.sdp");
    QCOMPARE(only(bare).destination(), QByteArray());
    const SdpText broken = parseSdp("m=video\nc=IN IP4 239.1.1.1/64\n", "a.sdp");
    QCOMPARE(only(broken).destination(), QByteArray());
}

void TestSdpStream::faultlessStreams()
{
    const SdpText parsed = parseSdp(sdptexts::faultless(), "a.sdp");
    const auto streams = streamsOf(parsed);
    QByteArrayList shown;
    for (const SdpStream &stream : streams)
        shown.append(number(stream.line()) + ' ' + number(int(stream.kind)) + ' ' + stream.destination() +
                     ' ' + stream.source());
    QCOMPARE(shown.join('\n'), QByteArray("6 0 239.1.1.1:20000 10.0.0.5\n16 0 239.2.1.1:20000 10.1.0.5\n"
                                          "26 1 239.1.1.2:20010 10.0.0.5\n34 2 239.1.1.3:20020 10.0.0.5"));
}

QTEST_APPLESS_MAIN(TestSdpStream)
#include "test_sdpstream.moc"
