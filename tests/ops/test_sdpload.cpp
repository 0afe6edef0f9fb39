// SPDX-License-Identifier: MIT
#include "files/sdptext.h"
#include "ops/place.h"
#include "ops/sdpdescribe.h"
#include "ops/sdpload.h"
#include "ops/sdptexts.h"
#include "ops/vocabulary.h"

using namespace sdptexts;

namespace {

QStringList changed(const ops::SdpLoadPlan &plan)
{
    QStringList list;
    for (const ops::Change &change : plan.changes)
        list << QString::fromUtf8(ops::keyInWords(change.path, change.name) + '=' +
                                  ops::valueInWords(change.path, change.name, change.after));
    list.sort();
    return list;
}

QStringList warnings(const ops::SdpLoadPlan &plan)
{
    QStringList list;
    for (const ops::SdpLoadNote &note : plan.notes) {
        if (note.warning)
            list << QString::number(note.line) + QLatin1String(": ") + QString::fromUtf8(note.text);
    }
    return list;
}

QString ignored(const ops::SdpLoadPlan &plan, int line)
{
    for (const ops::SdpLoadNote &note : plan.notes) {
        if (note.line == line && note.text.startsWith("ignored: "))
            return QString::fromUtf8(note.text.mid(9));
    }
    return QString();
}

ops::SdpLoadPlan plan(const QByteArray &text, const ops::Snapshot &snapshot = {}, int channel = 2)
{
    return ops::planSdpLoad(text, snapshot, channel);
}

const char audioFile[] = "v=0\no=- 1 1 IN IP4 10.0.0.5\ns=x\nc=IN IP4 239.9.9.9/64\nt=0 0\n"
                         "m=audio 20010 RTP/AVP 97\na=rtpmap:97 L24/48000/8\na=recvonly\n";

} // namespace

class TestSdpLoad : public QObject {
    Q_OBJECT

private slots:
    void aReceivedPictureIsPlanned();
    void nothingToChangeIsNoChange();
    void whatTheDialogStoresIsWhatIsPlanned_data();
    void whatTheDialogStoresIsWhatIsPlanned();
    void theLastLegOfAPairWins();
    void videoLosesByTheAddressOfAnAudioSession();
    void aSectionWithoutDirectionSetsBothSides();
    void audioSectionsTakeFlowAfterFlow();
    void flowsBeyondTheEighthAreNamed();
    void linesThatCountForNothing_data();
    void linesThatCountForNothing();
    void aPortOfOneDigitIsNotStored();
    void aSectionOfAnotherKindStoresNothing();
    void anyBytesArePlanned();
    void aDescribedChannelIsTheDialogsText();
    void aDescribedElementTakesItsOwnFlags();
    void theClockMayBeLeftOut();
};

void TestSdpLoad::aReceivedPictureIsPlanned()
{
    const auto planned = plan("v=0\nm=video 20000 RTP/AVP 96\nc=IN IP4 239.1.1.1/64\n"
                              "a=source-filter: incl IN IP4 239.1.1.1 10.0.0.5\na=recvonly\n");
    QCOMPARE(changed(planned), QStringList({QStringLiteral("2/video rx.dst-port=20000"),
                                            QStringLiteral("2/video rx.dst=239.1.1.1"),
                                            QStringLiteral("2/video rx.src=10.0.0.5"),
                                            QStringLiteral("2/video rx.use=src,dst,dst-port")}));
    QCOMPARE(planned.values, 3);
    QCOMPARE(warnings(planned), QStringList());
}

void TestSdpLoad::nothingToChangeIsNoChange()
{
    const QByteArray text = "m=video 20000 RTP/AVP 96\nc=IN IP4 239.1.1.1/64\na=recvonly\n";
    ops::Snapshot snapshot;
    for (const ops::Change &change : plan(text).changes)
        snapshot.set(change.path, change.name, *change.after);
    QCOMPARE(int(plan(text, snapshot).changes.size()), 0);
    QCOMPARE(plan(text, snapshot).values, 2);
}

void TestSdpLoad::whatTheDialogStoresIsWhatIsPlanned_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("faultless") << faultless();
    QTest::newRow("audio with a session address") << QByteArray(audioFile);
    QTest::newRow("line of 5000 bytes")
        << "m=video 20000 RTP/AVP 96\nc=IN IP4 239.1.1.1 " + QByteArray(5000, 'x') + "\n";
    QTest::newRow("media line first") << QByteArray("m=audio 20 RTP/AVP 97\nc=IN IP4 1.2.3.4\n");
    QTest::newRow("two versions") << QByteArray("v=0\nv=0\nc=IN IP4 1.2.3.4\n");
    QTest::newRow("stray bytes") << QByteArray("v=0\nm=video 20\0 9\nc=IN IP4 1.2.3.4\0.5\n", 38);
}

// The values by name, last one first, as the dialog's own reader gives them.
void TestSdpLoad::whatTheDialogStoresIsWhatIsPlanned()
{
    QFETCH(QByteArray, text);
    const SdpStores stores = readSdpText(text);
    const auto planned = plan(text);
    QCOMPARE(planned.values, stores.size());
    QMap<QByteArray, QString> last;
    for (const SdpStore &store : stores)
        last.insert(store.valueName, store.text);
    int found = 0;
    for (const ops::Change &change : planned.changes) {
        if (change.name == "ReceiveFlags")
            continue;
        ++found;
        QCOMPARE(change.after->isText ? QString::fromUtf8(change.after->text)
                                      : QString::number(change.after->number),
                 last.value(change.name));
    }
    QCOMPARE(found, last.size());
}

void TestSdpLoad::theLastLegOfAPairWins()
{
    const auto planned = plan(faultless());
    QVERIFY(changed(planned).contains(QStringLiteral("2/video tx.dst=239.2.1.1")));
    QCOMPARE(
        warnings(planned),
        QStringList(
            {QStringLiteral(
                 "16: 2/video tx.dst: 239.2.1.1 wins over 239.1.1.1 of line 6; of a pair the last leg stays"),
             QStringLiteral("16: 2/video tx.src: 10.1.0.5 wins over 10.0.0.5 of line 6; of a pair the last "
                            "leg stays")}));
}

void TestSdpLoad::videoLosesByTheAddressOfAnAudioSession()
{
    const auto planned = plan(audioFile);
    QVERIFY(changed(planned).contains(QStringLiteral("2/video rx.dst=239.9.9.9")));
    QVERIFY(changed(planned).contains(QStringLiteral("2/video tx.dst=239.9.9.9")));
    QCOMPARE(warnings(planned),
             QStringList({QStringLiteral("4: the session's address becomes video's destination, received and "
                                         "sent, though the text describes no video")}));
    QByteArray video = audioFile;
    video.replace("m=audio", "m=video").replace("L24/48000/8", "raw/90000");
    QCOMPARE(warnings(plan(video)), QStringList());
}

void TestSdpLoad::aSectionWithoutDirectionSetsBothSides()
{
    const auto planned = plan("m=video 20000 RTP/AVP 96\nc=IN IP4 239.1.1.1/64\n");
    QCOMPARE(planned.values, 4);
    QCOMPARE(warnings(planned),
             QStringList({QStringLiteral(
                 "1: without a direction the section sets both sides, what is received and what is sent")}));
}

void TestSdpLoad::audioSectionsTakeFlowAfterFlow()
{
    QByteArray text;
    for (const char *direction : {"recvonly", "sendonly", "recvonly"})
        text += QByteArray("m=audio 20010 RTP/AVP 97\na=") + direction + "\n";
    QCOMPARE(changed(plan(text)), QStringList({QStringLiteral("2/audio/0 rx.dst-port=20010"),
                                               QStringLiteral("2/audio/1 tx.dst-port=20010"),
                                               QStringLiteral("2/audio/2 rx.dst-port=20010")}));
}

void TestSdpLoad::flowsBeyondTheEighthAreNamed()
{
    QByteArray text;
    for (int flow = 0; flow < 9; ++flow)
        text += "m=audio 20010 RTP/AVP 97\na=recvonly\n";
    QCOMPARE(warnings(plan(text)),
             QStringList({QStringLiteral(
                 "17: ReceiveAudDestinationPort8: a flow beyond the eighth, which nothing reads")}));
}

void TestSdpLoad::linesThatCountForNothing_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("reason"); // empty: the line counts
    const auto row = [](const char *line, const char *reason) {
        QTest::newRow(line) << QByteArray(line) << QString::fromUtf8(reason);
    };
    row("c=IN IP4 239.1.1.1/64", "");
    row("c=IN IP4 239.1.1.1", "");
    row("c=IN IP6 ff15::1", "no IPv4 address at its end");
    row("a=source-filter: incl IN IP4 * 10.0.0.5", "");
    row("a=source-filter:incl IN IP4 * 10.0.0.5", "not read without a blank behind \"source-filter:\"");
    row("a=recvonly", "");
    row("a=sendrecv", "");
    row("a=rtpmap:98 smpte291/90000", "");
    row("a=rtpmap:98 raw/90000", "encoding and channels are chosen in the channel, not read");
    row("a=fmtp:98 width=1920;", "the format is chosen in the channel, not read");
    row("a=framerate:50", "the format is chosen in the channel, not read");
    row("a=ptime:1", "the packet time is chosen in the channel, not read");
    row("a=ts-refclk:localmac=AC-DE-48-23-45-67", "the clock is chosen in the channel, not read");
    row("a=mediaclk:direct=0", "the clock is chosen in the channel, not read");
    row("a=group:DUP a b", "a channel has one leg; pairs are not known");
    row("a=mid:a", "a channel has one leg; pairs are not known");
    row("a=extmap:1 urn:x", "not an attribute that is read");
    row("b=AS:1", "of no meaning to the settings");
    row("", "of no meaning to the settings");
}

void TestSdpLoad::linesThatCountForNothing()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, reason);
    QCOMPARE(ignored(plan("m=video 20000 RTP/AVP 96\n" + line + "\n"), 2), reason);
    QCOMPARE(ignored(plan("m=video 20000 RTP/AVP 96\n"), 1), QString());
}

void TestSdpLoad::aPortOfOneDigitIsNotStored()
{
    const auto planned = plan("m=video 7 RTP/AVP 96\nc=IN IP4 239.1.1.1/64\na=recvonly\n");
    QVERIFY(warnings(planned).contains(QStringLiteral("1: a port of one digit is not stored")));
    QCOMPARE(planned.values, 1);
}

void TestSdpLoad::aSectionOfAnotherKindStoresNothing()
{
    const auto planned = plan("m=application 20000 RTP/AVP 96\nc=IN IP4 239.1.1.1/64\n");
    QCOMPARE(planned.values, 0);
    QCOMPARE(warnings(planned).size(), 1);
}

void TestSdpLoad::anyBytesArePlanned()
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all += char(byte);
    for (const QByteArray &text :
         {QByteArray(), all, QByteArray("m="), QByteArray("c=\nc=\nm=\n\n"), QByteArray(10000, '\n')})
        QCOMPARE(plan(text).values, 0);
}

void TestSdpLoad::aDescribedChannelIsTheDialogsText()
{
    ops::Snapshot snapshot;
    for (const ops::Change &change : plan(faultless()).changes)
        snapshot.set(change.path, change.name, *change.after);
    const QByteArray path = ops::channelPath(2);
    snapshot.set(path, ChannelValue::SignalFormat, ops::Value::ofNumber(0x1380b219));
    snapshot.set(path, ChannelValue::ClockType, ops::Value::ofNumber(ClockSource::SoftwarePtp));
    snapshot.set(path, ChannelValue::ClockGrandMaster, ops::Value::ofText("AC-DE-48-FF-FE-23-45-67"));
    snapshot.set(path, ChannelValue::ClockDomain, ops::Value::ofNumber(127));
    const ops::SdpPair pair = ops::describeChannel(snapshot, *ops::parsePlace("2"), {true, -1, 77});
    const QString tx = pair.tx;
    QVERIFY(tx.startsWith(QLatin1String("v=0\no=- 77 0 IN IP4 \n")));
    QVERIFY(tx.contains(QLatin1String("m=video 20000 RTP/AVP 101\nc=IN IP4 239.2.1.1\n")));
    QVERIFY(tx.contains(QLatin1String("exactframerate=50;")));
    QCOMPARE(tx.count(QLatin1String("a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127\n")), 3);
    QVERIFY(tx.contains(QLatin1String("m=data 20020 ")));
    QCOMPARE(tx.count(QLatin1String("m=audio ")), 1);
    QCOMPARE(ops::describeChannel(snapshot, *ops::parsePlace("2"), {true, 3, 77})
                 .tx.count(QLatin1String("m=audio ")),
             3);
    QVERIFY(pair.rx.contains(QLatin1String("a=recvonly")) && !pair.rx.contains(QLatin1String("a=sendonly")));
}

void TestSdpLoad::aDescribedElementTakesItsOwnFlags()
{
    ops::Snapshot snapshot;
    const QByteArray path = ops::channelPath(0);
    snapshot.set(path, "TransmitAudIp0", ops::Value::ofText("10.0.0.5"));
    snapshot.set(path, "TransmitAudFlags0", ops::Value::ofNumber(4 + 8));
    snapshot.set(path, "TransmitAncFlags", ops::Value::ofNumber(4));
    snapshot.set(path, "TransmitAncIp", ops::Value::ofText("10.0.0.6"));
    const auto text = [&](const char *place) {
        return ops::describeChannel(snapshot, *ops::parsePlace(place), {}).tx;
    };
    QVERIFY(text("0/audio").contains(QLatin1String("a=source-filter: incl IN IP4  10.0.0.5\n")));
    QVERIFY(text("0/anc").contains(QLatin1String("a=source-filter: incl IN IP4 * 10.0.0.6\n")));
    QVERIFY(!text("0/video").contains(QLatin1String("source-filter")));
    QVERIFY(!text("0").contains(QLatin1String("source-filter")));
}

void TestSdpLoad::theClockMayBeLeftOut()
{
    ops::Snapshot snapshot;
    snapshot.set(ops::channelPath(0), ChannelValue::ClockGrandMaster,
                 ops::Value::ofText("AC-DE-48-23-45-67"));
    const auto text = [&](bool clock) {
        return ops::describeChannel(snapshot, *ops::parsePlace("0/video"), {clock, -1, 1}).rx;
    };
    QVERIFY(
        text(true).contains(QLatin1String("a=ts-refclk:localmac=AC-DE-48-23-45-67\na=mediaclk:direct=0\n")));
    QVERIFY(!text(false).contains(QLatin1String("clk")));
}

QTEST_GUILESS_MAIN(TestSdpLoad)
#include "test_sdpload.moc"
