// SPDX-License-Identifier: MIT
// A stored channel as the dialog's writer gets it: what comes from which value.
#include "ops/sdpdescribe.h"

#include "rows.h"

class TestSdpDescribe : public QObject {
    Q_OBJECT

private slots:
    void eachLineComesFromItsValue_data();
    void eachLineComesFromItsValue();
    void filtersFollowTheFlags_data();
    void filtersFollowTheFlags();
    void clockLines_data();
    void clockLines();
    void flows_data();
    void flows();
    void aWholeChannelAndItsElements();
    void theSessionIsTheCallers();
    void otherChannelsAreNotLookedAt();
    void anEmptyChannelIsDescribedToo();
};

namespace {

// A channel with an address of its own in every field.
ops::Snapshot filled()
{
    ops::Snapshot values;
    const QByteArray path = channel(2);
    const auto put = [&](const char *name, const ops::Value &value) { values.set(path, name, value); };
    put("SignalFormat", number(0x2380b232));
    put("ClockType", number(0x10000));
    put("ClockDomain", number(5));
    put("ClockGrandMaster", text("AC-DE-48-FF-FE-23-45-67"));
    put("ReceiveSourceIp", text("10.0.0.1"));
    put("ReceiveDestinationIp", text("239.0.0.1"));
    put("ReceiveDestinationPort", number(20001));
    put("TransmitIp", text("10.0.0.2"));
    put("TransmitDestinationIp", text("239.0.0.2"));
    put("TransmitRemotePort", number(20002));
    put("TransmitInterface", text("10.0.0.9"));
    put("ReceiveAudChannels", number(8));
    put("ReceiveAudTotalChannels", number(16));
    put("ReceiveAudPacketLength", number(1000));
    put("ReceiveAudDestinationIp0", text("239.0.0.3"));
    put("ReceiveAudDestinationPort0", number(20003));
    put("ReceiveAudDestinationIp1", text("239.0.0.4"));
    put("TransmitAudDestinationIp1", text("239.0.0.5"));
    put("ReceiveAncDestinationIp", text("239.0.0.6"));
    put("TransmitAncDestinationIp", text("239.0.0.7"));
    return values;
}

ops::SdpPair describe(const ops::Snapshot &values, const char *place, const ops::SdpDescription &wanted = {})
{
    return ops::describeChannel(values, *ops::parsePlace(place), wanted);
}

int lines(const QString &text, const char *start)
{
    int found = 0;
    for (const QString &line : text.split(QLatin1Char('\n')))
        found += line.startsWith(QLatin1String(start));
    return found;
}

} // namespace

void TestSdpDescribe::eachLineComesFromItsValue_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<bool>("send");
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *place, bool send, const char *line) {
        QTest::addRow("%s %s %s", place, send ? "tx" : "rx", line)
            << QByteArray(place) << send << QByteArray(line);
    };
    row("2/video", false, "m=video 20001 RTP/AVP 100");
    row("2/video", false, "c=IN IP4 239.0.0.1");
    row("2/video", true, "m=video 20002 RTP/AVP 101");
    row("2/video", true, "c=IN IP4 239.0.0.2");
    row("2/audio", false, "m=audio 20003 RTP/AVP 96");
    row("2/audio", false, "c=IN IP4 239.0.0.3");
    row("2/audio", false, "c=IN IP4 239.0.0.4");
    row("2/audio", true, "c=IN IP4 239.0.0.5");
    row("2/anc", false, "c=IN IP4 239.0.0.6");
    row("2/anc", true, "c=IN IP4 239.0.0.7");
    row("2", false, "c=IN IP4 239.0.0.1");
    row("2", false, "c=IN IP4 239.0.0.6");
    row("2", true, "c=IN IP4 239.0.0.2");
    row("2", true, "c=IN IP4 239.0.0.7");
}

void TestSdpDescribe::eachLineComesFromItsValue()
{
    QFETCH(QByteArray, place);
    QFETCH(bool, send);
    QFETCH(QByteArray, line);
    const ops::SdpPair pair = describe(filled(), place.constData());
    const QString text = send ? pair.tx : pair.rx;
    QVERIFY2(text.split(QLatin1Char('\n')).contains(QString::fromLatin1(line)), qPrintable(text));
}

void TestSdpDescribe::filtersFollowTheFlags_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<quint32>("flags");
    QTest::addColumn<int>("filters"); // in the text of what is received
    const auto row = [](const char *place, const char *name, quint32 flags, int filters) {
        QTest::addRow("%s %s=%u", place, name, flags)
            << QByteArray(place) << QByteArray(name) << flags << filters;
    };
    row("2/video", "ReceiveFlags", 0, 0);
    row("2/video", "ReceiveFlags", 4, 1);  // source
    row("2/video", "ReceiveFlags", 12, 1); // source and destination
    row("2/video", "ReceiveFlags", 8, 0);  // a destination alone filters nothing
    row("2/video", "ReceiveFlags", 19, 0); // ports and interface neither
    row("2/video", "TransmitFlags", 4, 0); // the other side
    row("2/anc", "ReceiveFlags", 4, 0);    // another element's
    row("2", "ReceiveAncFlags", 4, 0);     // video's govern a whole channel
}

void TestSdpDescribe::filtersFollowTheFlags()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, name);
    QFETCH(quint32, flags);
    QFETCH(int, filters);
    ops::Snapshot values = filled();
    values.set(channel(2), name, number(flags));
    QCOMPARE(lines(describe(values, place.constData()).rx, "a=source-filter"), filters);
}

void TestSdpDescribe::clockLines_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("master");
    QTest::addColumn<bool>("box");
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *name, quint32 type, const char *master, bool box, const char *line) {
        QTest::newRow(name) << type << QByteArray(master) << box << QByteArray(line);
    };
    const char *const identity = "AC-DE-48-FF-FE-23-45-67";
    row("software PTP", 0x10000, identity, true, "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:5");
    row("hardware PTP", 0x20000, identity, true, "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:5");
    row("without the box", 0x10000, identity, false, "");
}

void TestSdpDescribe::clockLines()
{
    QFETCH(quint32, type);
    QFETCH(QByteArray, master);
    QFETCH(bool, box);
    QFETCH(QByteArray, line);
    ops::Snapshot values = filled();
    values.set(channel(2), "ClockType", number(type));
    values.set(channel(2), "ClockGrandMaster", ops::Value::ofText(master));
    ops::SdpDescription wanted;
    wanted.withClock = box;
    const QString text = describe(values, "2/video", wanted).rx;
    QCOMPARE(lines(text, "a=ts-refclk:"), line.isEmpty() ? 0 : 1);
    QVERIFY2(line.isEmpty() || text.contains(QString::fromLatin1(line + '\n')), qPrintable(text));
}

void TestSdpDescribe::flows_data()
{
    QTest::addColumn<quint32>("total");
    QTest::addColumn<int>("wanted");
    QTest::addColumn<int>("sections"); // both directions of each flow
    QTest::newRow("the channel's two") << 16u << -1 << 4;
    QTest::newRow("one at least") << 0u << -1 << 2;
    QTest::newRow("eight at most") << 400u << -1 << 16;
    QTest::newRow("as many as asked for") << 16u << 5 << 10;
    QTest::newRow("none when asked for none") << 16u << 0 << 0;
}

void TestSdpDescribe::flows()
{
    QFETCH(quint32, total);
    QFETCH(int, wanted);
    QFETCH(int, sections);
    ops::Snapshot values = filled();
    values.set(channel(2), "ReceiveAudTotalChannels", number(total));
    ops::SdpDescription how;
    how.flows = wanted;
    QCOMPARE(lines(describe(values, "2/audio", how).rx, "m=audio"), sections);
    QCOMPARE(lines(describe(values, "2", how).rx, "m=audio"), sections / 2);
}

void TestSdpDescribe::aWholeChannelAndItsElements()
{
    const ops::SdpPair whole = describe(filled(), "2");
    QCOMPARE(lines(whole.rx, "m="), 4); // video, two flows, ancillary data
    QVERIFY(whole.rx != whole.tx);
    const ops::SdpPair video = describe(filled(), "2/video");
    QCOMPARE(lines(video.rx, "m="), 1);
    QVERIFY(video.rx != video.tx);
    const ops::SdpPair audio = describe(filled(), "2/audio");
    QCOMPARE(audio.rx, audio.tx); // the dialog's two files of audio are the same
}

void TestSdpDescribe::theSessionIsTheCallers()
{
    ops::SdpDescription wanted;
    wanted.sessionId = 1234567890123ull;
    const ops::SdpPair pair = describe(filled(), "2/video", wanted);
    QVERIFY(pair.rx.contains(QLatin1String("o=- 1234567890123 ")));
    QVERIFY(pair.tx.contains(QLatin1String("o=- 1234567890123 ")));
}

void TestSdpDescribe::otherChannelsAreNotLookedAt()
{
    ops::Snapshot values = filled();
    const ops::SdpPair before = describe(values, "2");
    const ops::Snapshot given = filled();
    for (const ops::Row &row : given.rows())
        values.set(channel(3), row.name, row.value.isText ? text("10.9.9.9") : number(9));
    QCOMPARE(describe(values, "2").rx, before.rx);
    QVERIFY(describe(values, "3").rx != before.rx);
}

void TestSdpDescribe::anEmptyChannelIsDescribedToo()
{
    const QString text = describe(ops::Snapshot(), "0").rx;
    QVERIFY(text.startsWith(QLatin1String("v=0\n")));
    QCOMPARE(lines(text, "m="), 3);
    QCOMPARE(lines(text, "a=source-filter"), 0);
}

QTEST_APPLESS_MAIN(TestSdpDescribe)
#include "test_ops_sdpdescribe.moc"
