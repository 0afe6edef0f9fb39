// SPDX-License-Identifier: MIT
//
// Session descriptions in the shapes that other senders give them, and broken ones: what is stored of
// each. The texts are tests/data/sdp/corpus/*.sdp, made for these tests.
#include "files/sdptext.h"

#include <QDir>
#include <QtTest>

namespace {

struct Row {
    const char *name;
    const char *stored; // name=text, in order, separated by blanks
};

// clang-format off
const Row rows[] = {
    // The connection of the session goes to video, the audio block gets none.
    {"dante-aes67",
     "ReceiveDestinationIp=239.65.45.154 TransmitDestinationIp=239.65.45.154 ReceiveAudDestinationPort0=5004"},
    {"aes67-multicast",
     "ReceiveDestinationIp=239.0.0.1 TransmitDestinationIp=239.0.0.1 ReceiveAudDestinationPort0=5004"},
    {"aes67-two-streams",
     "ReceiveAudDestinationIp0=239.69.1.1 ReceiveAudDestinationPort0=5004 "
     "ReceiveAudDestinationIp1=239.69.1.2 ReceiveAudDestinationPort1=5006"},
    {"aes67-unicast-sender",
     "ReceiveDestinationIp=192.168.5.90 TransmitDestinationIp=192.168.5.90 TransmitAudRemotePort0=51720"},
    {"aes67-sap-blanks-in-name",
     "ReceiveAudDestinationIp0=239.7.7.7 ReceiveAudDestinationPort0=5004"},
    // Its filter lacks the blank, so only the connection counts; its direction belongs to the session.
    {"st2110-20-hd",
     "ReceiveDestinationIp=239.100.9.10 ReceiveDestinationPort=50000 "
     "TransmitDestinationIp=239.100.9.10 TransmitRemotePort=50000"},
    {"st2110-20-uhd",
     "ReceiveDestinationIp=239.20.1.1 ReceiveSourceIp=10.20.0.1 ReceiveDestinationPort=20000"},
    // The second leg of a pair replaces the first.
    {"st2022-7-pair",
     "ReceiveDestinationIp=239.1.1.1 ReceiveSourceIp=192.168.1.20 ReceiveDestinationPort=50020 "
     "ReceiveDestinationIp=239.2.1.1 ReceiveSourceIp=192.168.2.20 ReceiveDestinationPort=50120"},
    // The second leg of an audio pair is the next flow.
    {"st2022-7-audio-pair",
     "ReceiveAudDestinationIp0=239.1.2.1 ReceiveAudSourceIp0=192.168.1.20 ReceiveAudDestinationPort0=5010 "
     "TransmitAudDestinationIp0=239.1.2.1 TransmitAudIp0=192.168.1.20 TransmitAudRemotePort0=5010 "
     "ReceiveAudDestinationIp1=239.2.2.1 ReceiveAudSourceIp1=192.168.2.20 ReceiveAudDestinationPort1=5010 "
     "TransmitAudDestinationIp1=239.2.2.1 TransmitAudIp1=192.168.2.20 TransmitAudRemotePort1=5010"},
    {"st2110-40-video-word",
     "ReceiveAncDestinationIp=239.1.4.1 ReceiveAncSourceIp=192.168.1.20 ReceiveAncDestinationPort=50040"},
    {"st2110-40-direction-first",
     "ReceiveAncDestinationIp=239.1.4.2 ReceiveAncDestinationPort=50040"},
    {"st2110-40-data-word",
     "TransmitAncDestinationIp=239.1.4.3 TransmitAncRemotePort=50042"},
    {"st2110-40-text-word",
     "ReceiveAncDestinationIp=239.1.4.4 ReceiveAncDestinationPort=50044"},
    {"st2110-all-essences",
     "ReceiveDestinationIp=239.10.0.1 ReceiveDestinationPort=50000 "
     "ReceiveAudDestinationIp0=239.10.0.2 ReceiveAudDestinationPort0=50010 "
     "ReceiveAudDestinationIp1=239.10.0.3 ReceiveAudDestinationPort1=50012 "
     "ReceiveAncDestinationIp=239.10.0.4 ReceiveAncDestinationPort=50020"},
    {"st2110-22-jxsv",
     "ReceiveDestinationIp=239.22.0.1 ReceiveDestinationPort=50030"},

    {"crlf",
     "ReceiveDestinationIp=239.3.3.3 ReceiveSourceIp=10.3.3.3 ReceiveDestinationPort=5004"},
    {"crlf-mixed",
     "TransmitDestinationIp=239.3.3.4 TransmitRemotePort=5004"},
    {"crlf-no-final-end",
     "ReceiveAudDestinationIp0=239.3.3.5 ReceiveAudDestinationPort0=5004"},
    // One line to the file layer, and it starts with "v".
    {"cr-only", ""},
    {"no-final-end",
     "ReceiveAudDestinationIp0=239.3.3.7 ReceiveAudDestinationPort0=5004"},
    {"address-count",
     "ReceiveDestinationIp=233.252.0.1 ReceiveDestinationPort=49170/2"},
    {"ipv6-media", "ReceiveDestinationPort=5004"},
    {"ipv6-mapped", "ReceiveDestinationPort=5004"},
    {"ipv6-origin-ipv4-media",
     "ReceiveDestinationIp=239.3.4.1 ReceiveDestinationPort=5004"},
    {"dual-stack-connections",
     "ReceiveDestinationIp=239.3.4.2 ReceiveDestinationPort=5004"},
    // The last one counts.
    {"two-connections",
     "ReceiveDestinationIp=239.3.4.4 ReceiveDestinationPort=5004"},
    {"host-name", "ReceiveAudDestinationPort0=5004"},

    {"session-connection",
     "ReceiveDestinationIp=239.4.4.4 TransmitDestinationIp=239.4.4.4 ReceiveDestinationPort=5004 "
     "ReceiveAudDestinationPort0=5006"},
    {"session-connection-and-own",
     "ReceiveDestinationIp=239.4.4.5 TransmitDestinationIp=239.4.4.5 "
     "ReceiveDestinationIp=239.4.4.6 ReceiveDestinationPort=5004"},
    {"session-filter",
     "ReceiveDestinationIp=239.4.4.7 ReceiveSourceIp=10.4.4.7 TransmitDestinationIp=239.4.4.7 "
     "TransmitIp=10.4.4.7 ReceiveDestinationIp=239.4.4.7 ReceiveDestinationPort=5004"},
    {"session-direction",
     "ReceiveDestinationIp=239.4.4.8 ReceiveDestinationPort=5004 "
     "TransmitDestinationIp=239.4.4.8 TransmitRemotePort=5004"},
    {"session-direction-and-connection", "TransmitDestinationIp=239.4.4.9"},
    {"no-direction",
     "ReceiveAudDestinationIp0=239.5.5.1 ReceiveAudDestinationPort0=5008 "
     "TransmitAudDestinationIp0=239.5.5.1 TransmitAudRemotePort0=5008"},
    // A direction that names no side is none.
    {"inactive",
     "ReceiveDestinationIp=239.5.5.2 ReceiveDestinationPort=5008 "
     "TransmitDestinationIp=239.5.5.2 TransmitRemotePort=5008"},
    {"sendrecv",
     "ReceiveAncDestinationIp=239.5.5.3 ReceiveAncDestinationPort=5008 "
     "TransmitAncDestinationIp=239.5.5.3 TransmitAncRemotePort=5008"},
    {"both-directions-named",
     "ReceiveDestinationIp=239.5.5.4 ReceiveDestinationPort=5008 "
     "TransmitDestinationIp=239.5.5.4 TransmitRemotePort=5008"},

    // The last token of the connection is empty; the direction is the first token, so it counts.
    {"blanks-at-line-ends", "ReceiveDestinationPort=5004"},
    // Each doubled blank moves what follows by one token: the port is empty, and the filter's destination
    // stands where its source should.
    {"blanks-doubled",
     "ReceiveDestinationIp=239.6.6.2 ReceiveSourceIp=239.6.6.2"},
    {"blanks-before-lines", ""},
    // "m" alone is an empty media word.
    {"blanks-round-equals", ""},
    {"tabs", ""},
    {"blank-lines",
     "ReceiveDestinationIp=239.6.6.6 ReceiveDestinationPort=5004"},

    {"line-of-4095-bytes",
     "ReceiveDestinationIp=239.7.1.1 ReceiveDestinationPort=5004"},
    {"line-of-4096-bytes",
     "ReceiveDestinationIp=239.7.1.2 ReceiveDestinationPort=5004"},
    // What goes beyond 4095 bytes is delivered as a line of its own.
    {"long-line-rest-looks-like-a-line",
     "ReceiveDestinationIp=239.7.1.3 ReceiveDestinationPort=5004"},
    {"nul-in-line",
     "ReceiveDestinationIp=239.7.2.1 ReceiveDestinationPort=5004"},
    {"nul-at-line-start", "ReceiveDestinationPort=5004"},
    {"not-ascii",
     "ReceiveDestinationIp=239.7.2.3 ReceiveDestinationPort=5004"},
    // The port is stored as text; as a number it is 0.
    {"not-utf8",
     "ReceiveDestinationIp=239.7.2.4 ReceiveDestinationPort=\xef\xbf\xbd\xef\xbf\xbd"},
    {"byte-order-mark",
     "ReceiveDestinationIp=239.7.2.5 ReceiveDestinationPort=5004"},
    {"nul-bytes-only", ""},
    {"empty", ""},
    {"no-media", ""},

    // One digit is too short, and so is no port.
    {"port-zero", "ReceiveAudDestinationIp0=239.8.1.1"},
    {"port-missing", "ReceiveDestinationIp=239.8.1.2"},
    {"port-too-large",
     "ReceiveDestinationIp=239.8.1.3 ReceiveDestinationPort=4294967297"},
    {"addresses-broken", "ReceiveDestinationPort=5004"},
    // The first source counts.
    {"many-sources",
     "ReceiveDestinationIp=239.8.1.4 ReceiveSourceIp=10.8.0.1 ReceiveDestinationPort=5004"},
    // The mode is not looked at.
    {"excluding-filter",
     "ReceiveDestinationIp=239.8.1.5 ReceiveSourceIp=10.8.0.4 ReceiveDestinationPort=5004"},
    {"application-and-video",
     "ReceiveDestinationIp=239.8.1.7 ReceiveDestinationPort=5004"},
    {"nine-audio-flows",
     "ReceiveAudDestinationPort0=5100 ReceiveAudDestinationPort1=5101 ReceiveAudDestinationPort2=5102 "
     "ReceiveAudDestinationPort3=5103 ReceiveAudDestinationPort4=5104 ReceiveAudDestinationPort5=5105 "
     "ReceiveAudDestinationPort6=5106 ReceiveAudDestinationPort7=5107 ReceiveAudDestinationPort8=5108"},
    {"version-later",
     "ReceiveDestinationIp=239.8.1.8 ReceiveDestinationPort=5004"},
    {"web-page", ""},
    // 0.0.0.0 is a valid address, port 9 is too short.
    {"webrtc-offer",
     "ReceiveAudDestinationIp0=0.0.0.0 TransmitAudDestinationIp0=0.0.0.0"},
    {"rtsp-describe",
     "ReceiveDestinationIp=0.0.0.0 TransmitDestinationIp=0.0.0.0"},
};
// clang-format on

} // namespace

class TestSdpCorpus : public QObject {
    Q_OBJECT

private slots:
    void everyTextHasARow();
    void stored_data();
    void stored();
};

void TestSdpCorpus::everyTextHasARow()
{
    QStringList named;
    for (const Row &row : rows)
        named << QString::fromLatin1(row.name) + QStringLiteral(".sdp");
    named.sort();
    QCOMPARE(QDir(QStringLiteral(CORVEL_TEST_DATA "/sdp/corpus")).entryList(QDir::Files, QDir::Name), named);
    QVERIFY(named.size() >= 40);
}

void TestSdpCorpus::stored_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("expected");
    for (const Row &row : rows) {
        const QString all = QString::fromUtf8(row.stored);
        QTest::newRow(row.name) << QString::fromLatin1(row.name)
                                << all.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    }
}

void TestSdpCorpus::stored()
{
    QFETCH(QString, file);
    QFETCH(QStringList, expected);
    QFile text(QStringLiteral(CORVEL_TEST_DATA "/sdp/corpus/%1.sdp").arg(file));
    QVERIFY(text.open(QIODevice::ReadOnly));
    const QStringList values = storedValues(readSdpText(text.readAll()));
    QCOMPARE(values.join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')));
}

QTEST_APPLESS_MAIN(TestSdpCorpus)
#include "test_sdpcorpus.moc"
