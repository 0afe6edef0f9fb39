// SPDX-License-Identifier: MIT
#include "files/sdpsample.h"

#include <QCryptographicHash>
#include <QFile>
#include <QtTest>

using namespace sdpsample;

namespace {

QByteArray dataFile(const QString &name)
{
    QFile file(QStringLiteral(CORVEL_TEST_DATA "/sdp/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("test data missing: %s", qPrintable(file.fileName()));
    return file.readAll();
}

QStringList linesStartingWith(const QString &text, const QString &start)
{
    return text.split(QLatin1Char('\n'))
        .filter(QRegularExpression(QLatin1Char('^') + QRegularExpression::escape(start)));
}

// Everything a clock could need, but with the box as given.
SdpInput clockInput(bool useGmId, int clockIndex, const QString &address)
{
    SdpInput in = input(1, 0, NoClock);
    in.useGmId = useGmId;
    in.clockIndex = clockIndex;
    in.gmAddress = address;
    return in;
}

} // namespace

class TestSdpWriter : public QObject {
    Q_OBJECT

private slots:
    void golden_data();
    void golden();
    void matrix_data();
    void matrix();
    void videoElementIsSplitBySide();
    void audioOfTwoFlowsHasFourSectionsInOrder();
    void audioAndAncFilesOfAPairAreTheSame();
    void noFlowsLeaveOnlyTheHeader_data();
    void noFlowsLeaveOnlyTheHeader();
    void sourceBoxWithoutDestinationBoxWritesStar_data();
    void sourceBoxWithoutDestinationBoxWritesStar();
    void destinationBoxAloneWritesNoFilter();
    void clockLines_data();
    void clockLines();
    void unknownFormatWritesEmptyValues();
    void missingValuesAreWrittenAsTheyRead();
    void templateMarksInValuesAreLeftAlone();
    void ancIsVideoForTheElementAndDataForTheFile();
    void addressesAreAskedForAsTextsAndPortsAsNumbers();
    void originIsTheSendInterfaceOnBothSides();
    void identifierMayUseAllBits();
    void linesEndInLineFeedsOnly();
    void fileNames_data();
    void fileNames();
};

void TestSdpWriter::golden_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("flows");
    QTest::addColumn<int>("boxes");
    QTest::addColumn<int>("clock");
    QTest::addColumn<QByteArray>("expected");

    const QRegularExpression heading(QStringLiteral("==== flows=(\\d) boxes=([01]{4}) clock=(\\w+)\n"));
    const QStringList clocks = {QStringLiteral("none"), QStringLiteral("ptp"), QStringLiteral("mac")};
    for (int kind = 0; kind < kinds().size(); ++kind) {
        const QString name = QLatin1String(kinds().at(kind).name);
        const QString all = QString::fromLatin1(dataFile(name + QStringLiteral(".golden")));
        auto match = heading.match(all);
        QVERIFY2(match.hasMatch(), "empty golden file");
        while (match.hasMatch()) {
            const auto next = heading.match(all, match.capturedEnd());
            const int end = next.hasMatch() ? next.capturedStart() : all.size();
            const QString text = all.mid(match.capturedEnd(), end - match.capturedEnd());
            QTest::newRow(qPrintable(name + QLatin1Char(' ') + match.captured().mid(5).trimmed()))
                << kind << match.captured(1).toInt() << match.captured(2).toInt(nullptr, 2)
                << clocks.indexOf(match.captured(3)) << text.toLatin1();
            match = next;
        }
    }
}

void TestSdpWriter::golden()
{
    QFETCH(int, kind);
    QFETCH(int, flows);
    QFETCH(int, boxes);
    QFETCH(int, clock);
    QFETCH(QByteArray, expected);
    QCOMPARE(kinds().at(kind).write(input(flows, boxes, Clock(clock))).toLatin1(), expected);
}

// The readable golden files hold a part of the combinations; the digests cover all of them.
void TestSdpWriter::matrix_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("flows");
    QTest::addColumn<QByteArray>("digest");
    for (const QByteArray &line : dataFile(QStringLiteral("matrix.sha256")).trimmed().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        for (int kind = 0; kind < kinds().size(); ++kind) {
            if (fields.at(0) == kinds().at(kind).name)
                QTest::newRow((fields.at(0) + ", flows " + fields.at(1)).constData())
                    << kind << fields.at(1).toInt() << fields.at(2);
        }
    }
}

void TestSdpWriter::matrix()
{
    QFETCH(int, kind);
    QFETCH(int, flows);
    QFETCH(QByteArray, digest);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (int boxes = 0; boxes < 16; ++boxes) {
        for (Clock clock : {NoClock, Ptp, LocalMac})
            hash.addData(kinds().at(kind).write(input(flows, boxes, clock)).toLatin1());
    }
    QCOMPARE(hash.result().toHex(), digest);
}

void TestSdpWriter::videoElementIsSplitBySide()
{
    const SdpInput in = input(2, 0, NoClock);
    const QString rx = writeElementSdp(in, Element::Video, Side::Receive);
    const QString tx = writeElementSdp(in, Element::Video, Side::Send);
    QCOMPARE(linesStartingWith(rx, QStringLiteral("m=")),
             QStringList(QStringLiteral("m=video 20000 RTP/AVP 100")));
    QVERIFY(rx.endsWith(QLatin1String("\na=recvonly\n")));
    QCOMPARE(linesStartingWith(tx, QStringLiteral("m=")),
             QStringList(QStringLiteral("m=video 30000 RTP/AVP 101")));
    QVERIFY(tx.endsWith(QLatin1String("\na=sendonly\n")));
}

void TestSdpWriter::audioOfTwoFlowsHasFourSectionsInOrder()
{
    const QString text = writeElementSdp(input(2, 0, NoClock), Element::Audio, Side::Receive);
    const QStringList expected = {
        QStringLiteral("m=audio 20100 RTP/AVP 96"), QStringLiteral("m=audio 30100 RTP/AVP 97"),
        QStringLiteral("m=audio 20101 RTP/AVP 96"), QStringLiteral("m=audio 30101 RTP/AVP 97")};
    QCOMPARE(linesStartingWith(text, QStringLiteral("m=")), expected);
}

void TestSdpWriter::audioAndAncFilesOfAPairAreTheSame()
{
    const SdpInput in = input(3, 15, Ptp);
    for (Element element : {Element::Audio, Element::Anc})
        QCOMPARE(writeElementSdp(in, element, Side::Receive), writeElementSdp(in, element, Side::Send));
}

void TestSdpWriter::noFlowsLeaveOnlyTheHeader_data()
{
    QTest::addColumn<int>("flows");
    QTest::newRow("none") << 0;
    QTest::newRow("no entry selected") << -1;
}

void TestSdpWriter::noFlowsLeaveOnlyTheHeader()
{
    QFETCH(int, flows);
    const QString text = writeElementSdp(input(flows, 15, Ptp), Element::Audio, Side::Send);
    QCOMPARE(text, QStringLiteral("v=0\no=- 1700000000123456 0 IN IP4 192.168.10.2\ns=Halvect IP Config\n"
                                  "t=0 0\n"));
}

void TestSdpWriter::sourceBoxWithoutDestinationBoxWritesStar_data()
{
    QTest::addColumn<int>("boxes");
    QTest::addColumn<int>("side");
    QTest::addColumn<QString>("expected");
    const QString start = QStringLiteral("a=source-filter: incl IN IP4 ");
    QTest::newRow("receive") << 8 << int(Side::Receive) << start + QStringLiteral("* 192.168.20.1");
    QTest::newRow("receive, both boxes")
        << 12 << int(Side::Receive) << start + QStringLiteral("239.1.1.1 192.168.20.1");
    QTest::newRow("receive, other side's destination box")
        << 9 << int(Side::Receive) << start + QStringLiteral("* 192.168.20.1");
    QTest::newRow("send") << 2 << int(Side::Send) << start + QStringLiteral("* 192.168.10.1");
    QTest::newRow("send, both boxes")
        << 3 << int(Side::Send) << start + QStringLiteral("239.2.1.1 192.168.10.1");
}

void TestSdpWriter::sourceBoxWithoutDestinationBoxWritesStar()
{
    QFETCH(int, boxes);
    QFETCH(int, side);
    QFETCH(QString, expected);
    const QString text = writeElementSdp(input(1, boxes, NoClock), Element::Video, Side(side));
    QCOMPARE(linesStartingWith(text, QStringLiteral("a=source-filter")), QStringList(expected));
}

void TestSdpWriter::destinationBoxAloneWritesNoFilter()
{
    const SdpInput in = input(1, 5, NoClock);
    for (Side side : {Side::Receive, Side::Send})
        QVERIFY(!writeFileSdp(in, side).contains(QLatin1String("source-filter")));
}

void TestSdpWriter::clockLines_data()
{
    QTest::addColumn<bool>("useGmId");
    QTest::addColumn<int>("clockIndex");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("expected");
    const QString none;
    const QString address = QStringLiteral("00-11-22-33-44-55");
    const QString mac = QStringLiteral("a=ts-refclk:localmac=00-11-22-33-44-55");
    const QString ptp = QStringLiteral("a=ts-refclk:ptp=IEEE1588-2008:00-11-22-33-44-55:127");
    QTest::newRow("box clear, internal") << false << 0 << address << none;
    QTest::newRow("box clear, hardware") << false << 1 << address << none;
    QTest::newRow("box clear, software") << false << 2 << address << none;
    QTest::newRow("internal") << true << 0 << address << mac;
    QTest::newRow("internal, no address") << true << 0 << QString() << none;
    QTest::newRow("hardware") << true << 1 << address << ptp;
    QTest::newRow("free run") << true << 3 << address << ptp;
    QTest::newRow("no clock source selected") << true << -1 << address << ptp;
    QTest::newRow("software, no address") << true << 2 << QString() << none;
    QTest::newRow("not validated") << true << 2 << QStringLiteral("any text: at all")
                                   << QStringLiteral("a=ts-refclk:ptp=IEEE1588-2008:any text: at all:127");
}

void TestSdpWriter::clockLines()
{
    QFETCH(bool, useGmId);
    QFETCH(int, clockIndex);
    QFETCH(QString, address);
    QFETCH(QString, expected);
    const QString text = writeFileSdp(clockInput(useGmId, clockIndex, address), Side::Receive);
    // Video, one audio flow and ancillary data each carry the same pair of lines.
    const int sections = expected.isEmpty() ? 0 : 3;
    QCOMPARE(text.count(QLatin1String("a=ts-refclk")), sections);
    QCOMPARE(text.count(QLatin1String("a=mediaclk")), sections);
    const QString pair = expected + QLatin1String("\na=mediaclk:direct=0\na=recvonly\n");
    QCOMPARE(text.count(pair), sections);
}

void TestSdpWriter::unknownFormatWritesEmptyValues()
{
    SdpInput in = input(0, 0, NoClock);
    in.width = in.height = in.rate = QString();
    const QString text = writeElementSdp(in, Element::Video, Side::Send);
    QVERIFY(text.contains(QLatin1String("\na=framerate:\n")));
    QVERIFY(text.contains(QLatin1String("\na=fmtp:101 width=; height=; TP=2110TPNL; exactframerate=; PM=")));
}

void TestSdpWriter::missingValuesAreWrittenAsTheyRead()
{
    SdpInput in = input(1, 15, NoClock);
    in.value = [](const char *, bool isString) { return isString ? QString() : QStringLiteral("0"); };
    QCOMPARE(writeElementSdp(in, Element::Audio, Side::Receive),
             QStringLiteral("v=0\no=- 1700000000123456 0 IN IP4 \ns=Halvect IP Config\nt=0 0\n"
                            "m=audio 0 RTP/AVP 96\nc=IN IP4 \na=source-filter: incl IN IP4  \n"
                            "a=rtpmap:96 L24/48000/1\na=ptime:0\na=recvonly\n"
                            "m=audio 0 RTP/AVP 97\nc=IN IP4 \na=source-filter: incl IN IP4  \n"
                            "a=rtpmap:97 L24/48000/1\na=ptime:0\na=sendonly\n"));
}

void TestSdpWriter::templateMarksInValuesAreLeftAlone()
{
    SdpInput in = input(0, 0, NoClock);
    in.value = [](const char *, bool) { return QStringLiteral("%1%2"); };
    const QString text = writeElementSdp(in, Element::Video, Side::Receive);
    QVERIFY(text.contains(QLatin1String("m=video %1%2 RTP/AVP 100\nc=IN IP4 %1%2\n")));
}

void TestSdpWriter::ancIsVideoForTheElementAndDataForTheFile()
{
    const SdpInput in = input(0, 0, NoClock);
    QVERIFY(
        writeElementSdp(in, Element::Anc, Side::Send).contains(QLatin1String("m=video 30300 RTP/AVP 99\n")));
    QVERIFY(writeFileSdp(in, Side::Send).contains(QLatin1String("m=data 30300 RTP/AVP 99\n")));
}

void TestSdpWriter::addressesAreAskedForAsTextsAndPortsAsNumbers()
{
    QStringList wrong;
    SdpInput in = input(8, 15, Ptp);
    in.value = [&wrong](const char *name, bool isString) {
        const QString text = QString::fromLatin1(name);
        const bool number = text.contains(QLatin1String("Port")) || text.endsWith(QLatin1String("Length"));
        if (isString == number || (value(text).isEmpty()))
            wrong << text;
        return value(text);
    };
    for (const Kind &kind : kinds())
        kind.write(in);
    QCOMPARE(wrong, QStringList());
}

void TestSdpWriter::originIsTheSendInterfaceOnBothSides()
{
    const SdpInput in = input(0, 0, NoClock);
    const QString origin = QStringLiteral("o=- 1700000000123456 0 IN IP4 192.168.10.2");
    for (Side side : {Side::Receive, Side::Send})
        QCOMPARE(writeFileSdp(in, side).section(QLatin1Char('\n'), 1, 1), origin);
}

void TestSdpWriter::identifierMayUseAllBits()
{
    SdpInput in = input(0, 0, NoClock);
    in.sessionId = ~Q_UINT64_C(0);
    QVERIFY(writeFileSdp(in, Side::Send).contains(QLatin1String("\no=- 18446744073709551615 0 IN IP4 ")));
}

void TestSdpWriter::linesEndInLineFeedsOnly()
{
    for (const Kind &kind : kinds()) {
        const QString text = kind.write(input(8, 15, Ptp));
        QVERIFY(!text.contains(QLatin1Char('\r')));
        QVERIFY(!text.contains(QLatin1String("\n\n")));
        QVERIFY(text.endsWith(QLatin1Char('\n')));
    }
}

void TestSdpWriter::fileNames_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("rx");
    QTest::addColumn<QString>("tx");
    const auto row = [](const char *answer, const char *rx, const char *tx) {
        QTest::newRow(answer) << QString::fromUtf8(answer) << QString::fromUtf8(rx) << QString::fromUtf8(tx);
    };
    row("/d/name.sdp", "/d/name.rx.sdp", "/d/name.tx.sdp");
    row("/d/name.txt", "/d/name.rx.sdp", "/d/name.tx.sdp");
    row("/d/name", "/d/.rx.sdp", "/d/.tx.sdp");
    row("/d/abcdef", "/d/ab.rx.sdp", "/d/ab.tx.sdp");
    row("/d/ab", "/.rx.sdp", "/.tx.sdp"); // blind: it eats into the folder
    row("abc", ".rx.sdp", ".tx.sdp");
    row("", ".rx.sdp", ".tx.sdp");
    row("/d/größe.sdp", "/d/größe.rx.sdp", "/d/größe.tx.sdp");
}

void TestSdpWriter::fileNames()
{
    QFETCH(QString, answer);
    QFETCH(QString, rx);
    QFETCH(QString, tx);
    const SdpFileNames names = sdpFileNames(answer);
    QCOMPARE(names.rx, rx);
    QCOMPARE(names.tx, tx);
}

QTEST_APPLESS_MAIN(TestSdpWriter)
#include "test_sdpwriter.moc"
