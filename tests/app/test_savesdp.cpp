// SPDX-License-Identifier: MIT
//
// "Save File" with a session description and "Save ... SDP": which files, of which channel and element, what
// is taken from the screen and what from the store, and how they are written.
#include "fake/recorder.h"
#include "support/filefixture.h"

#include <QTextCodec>

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestSaveSdp : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m = std::make_unique<FileFixture>();
        Recorder::clear();
    }
    void cleanup() { m.reset(); }

    void sdpFilesAreOfChannelZero();
    void sdpFilesLeaveTheOverride();
    void theBlindCut_data();
    void theBlindCut();
    void oneOfAPairThatCannotBeCreated();
    void elementVideo();
    void elementAudioAndAnc();
    void elementOfTheShownChannel();
    void clockLines();

    void theCallsOfAPair();
    void theCallsOfAnElement();
    void closesAlsoWhatDidNotOpen();

    void shownNotStored();
    void noFlowsThroughTheDialog();
    void anUnknownFormatThroughTheDialog();
    void otherTypesSaveVideo();
    void noElementSavesAncillaryData();
    void localCharacters();

private:
    std::unique_ptr<FileFixture> m;
};

// ------------------------------------------------------------------------------------------ which files

// Values of channel 0, boxes and flow count as shown.
void TestSaveSdp::sdpFilesAreOfChannelZero()
{
    put(0, "ReceiveSourceIp", QStringLiteral("10.5.5.5"));
    choose(m->dialog->m_pChannel, 2);
    click(m->dialog->m_pCheckRecSrcAddr);
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    const QByteArray send = m->read(QStringLiteral("x.tx.sdp"));
    QVERIFY(receive.contains("IN IP4 10.9.9.0\n"));
    QVERIFY(receive.contains("c=IN IP4 239.1.1.0\na=source-filter: incl IN IP4 * 10.5.5.5\n"));
    QVERIFY(!send.contains("source-filter"));
    QCOMPARE(receive.count("m="), 4); // video, two flows, ancillary data
    QCOMPARE(receive.count("m=audio"), 2);
    QCOMPARE(receive.count("m=data"), 1);
    QCOMPARE(receive.count("a=recvonly\n"), 4);
    QCOMPARE(send.count("a=sendonly\n"), 4);
    QCOMPARE(receive.split('\n').at(1), send.split('\n').at(1)); // one identifier for both
}

void TestSaveSdp::sdpFilesLeaveTheOverride()
{
    const Snapshot before = snapshot();
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestSaveSdp::theBlindCut_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("made");
    const auto pair = [](const char *stem) {
        return QStringList{QLatin1String(stem) + QLatin1String(".rx.sdp"),
                           QLatin1String(stem) + QLatin1String(".tx.sdp")};
    };
    QTest::newRow("name.sdp") << QStringLiteral("name.sdp") << pair("name");
    QTest::newRow("name.txt") << QStringLiteral("name.txt") << pair("name");
    QTest::newRow("abcdef") << QStringLiteral("abcdef") << pair("ab");
    QTest::newRow("name") << QStringLiteral("name") << pair("");
    QTest::newRow("longer suffix") << QStringLiteral("name.session") << pair("name.ses");
}

void TestSaveSdp::theBlindCut()
{
    QFETCH(QString, name);
    QVERIFY(m->saveElement(name));
    QTEST(m->files(), "made");
}

void TestSaveSdp::oneOfAPairThatCannotBeCreated()
{
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("x.rx.sdp")));
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(m->files(), QStringList{QStringLiteral("x.tx.sdp")});
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QVERIFY(m->read(QStringLiteral("x.tx.sdp")).contains("m=audio"));
}

void TestSaveSdp::elementVideo()
{
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    const QByteArray send = m->read(QStringLiteral("x.tx.sdp"));
    QCOMPARE(receive.count("m="), 1);
    QVERIFY(receive.contains("m=video 0 RTP/AVP 100\n"));
    QVERIFY(receive.endsWith("a=recvonly\n"));
    QCOMPARE(send.count("m="), 1);
    QVERIFY(send.contains("m=video 0 RTP/AVP 101\n"));
    QVERIFY(send.endsWith("a=sendonly\n"));
    QVERIFY(receive.contains("width=1920; height=1080;"));
}

void TestSaveSdp::elementAudioAndAnc()
{
    click(m->dialog->m_pAudioConfig);
    QVERIFY(m->saveElement(QStringLiteral("a.sdp")));
    const QByteArray audio = m->read(QStringLiteral("a.rx.sdp"));
    QCOMPARE(m->read(QStringLiteral("a.tx.sdp")), audio);
    QCOMPARE(audio.count("m=audio"), 4);
    QVERIFY(audio.indexOf("a=recvonly") < audio.indexOf("a=sendonly"));
    click(m->dialog->m_pAncConfig);
    QVERIFY(m->saveElement(QStringLiteral("b.sdp")));
    const QByteArray anc = m->read(QStringLiteral("b.rx.sdp"));
    QCOMPARE(m->read(QStringLiteral("b.tx.sdp")), anc);
    QCOMPARE(anc.count("m=video"), 2);
    QCOMPARE(anc.count("smpte291"), 2);
}

void TestSaveSdp::elementOfTheShownChannel()
{
    choose(m->dialog->m_pChannel, 2);
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    QVERIFY(receive.contains("IN IP4 10.9.9.2\n"));
    QVERIFY(receive.contains("c=IN IP4 239.1.1.2\n"));
}

void TestSaveSdp::clockLines()
{
    m->dialog->m_pUseGmId->setChecked(true);
    typeText(m->dialog->m_pEditGmAddress, QStringLiteral("00-1D-C1-12-34-56"));
    QVERIFY(m->saveElement(QStringLiteral("a.sdp")));
    QVERIFY(m->read(QStringLiteral("a.rx.sdp"))
                .contains("a=ts-refclk:localmac=00-1D-C1-12-34-56\na=mediaclk:direct=0\n"));
    choose(m->dialog->m_pComboClkSrc, 8388608);
    typeText(m->dialog->m_pEditGmId, QStringLiteral("127"));
    QVERIFY(m->saveElement(QStringLiteral("b.sdp")));
    QVERIFY(m->read(QStringLiteral("b.rx.sdp"))
                .contains("a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-12-34-56:127\na=mediaclk:direct=0\n"));
    m->dialog->m_pUseGmId->setChecked(false);
    QVERIFY(m->saveElement(QStringLiteral("c.sdp")));
    QVERIFY(!m->read(QStringLiteral("c.rx.sdp")).contains("clk"));
}

// --------------------------------------------------------------------------------- how they are written

void TestSaveSdp::theCallsOfAPair()
{
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QCOMPARE(Recorder::fileCalls(),
             (QByteArrayList{"makedir 777", "*micro", "*create x.rx.sdp 40000000 1 2 128", "*put v=0|o=- ",
                             "*close", "*create x.tx.sdp 40000000 1 2 128", "*put v=0|o=- ", "*close"}));
}

void TestSaveSdp::theCallsOfAnElement()
{
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(Recorder::fileCalls(),
             (QByteArrayList{"micro", "grandmaster", "create x.rx.sdp 40000000 1 2 128", "put v=0|o=- ",
                             "close", "create x.tx.sdp 40000000 1 2 128", "put v=0|o=- ", "close"}));
}

void TestSaveSdp::closesAlsoWhatDidNotOpen()
{
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("x.rx.sdp")));
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(Recorder::fileCalls().count("close nothing"), 1);
    QCOMPARE(Recorder::fileCalls().count("close"), 1);
}

// ------------------------------------------------------------------- from the screen and from the store

// Format, boxes and number of flows are those on screen; addresses and ports those in the store.
void TestSaveSdp::shownNotStored()
{
    QCorvel &d = *m->dialog;
    put(0, "ReceiveSourceIp", QStringLiteral("10.5.5.5"));
    put(0, "SignalFormat", 641794096);
    put(0, "ReceiveAudTotalChannels", 16);
    d.disconnectSignals();
    d.m_pCheckRecSrcAddr->setChecked(true);
    d.m_pCheckRecDstAddr->setChecked(true);
    d.m_pLineRecDstAddr->setAddress(QStringLiteral("9.9.9.9"));
    d.connectSignals();
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    QVERIFY(receive.contains("c=IN IP4 239.1.1.0\na=source-filter: incl IN IP4 239.1.1.0 10.5.5.5\n"));
    QVERIFY(receive.contains("width=1920; height=1080;"));
    QVERIFY(receive.contains("a=framerate:60000/1001\n"));
    QCOMPARE(receive.count("m=audio"), 2);
    QVERIFY(!m->read(QStringLiteral("x.tx.sdp")).contains("source-filter"));
}

void TestSaveSdp::noFlowsThroughTheDialog()
{
    click(m->dialog->m_pAudioConfig);
    m->dialog->disconnectSignals();
    m->dialog->m_pComboAudFlow->addItem(QStringLiteral("0"), 0);
    m->dialog->m_pComboAudFlow->setCurrentIndex(m->dialog->m_pComboAudFlow->count() - 1);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(m->read(QStringLiteral("x.rx.sdp")).count('\n'), 4);
    QVERIFY(m->read(QStringLiteral("x.rx.sdp")).endsWith("s=Halvect IP Config\nt=0 0\n"));
}

void TestSaveSdp::anUnknownFormatThroughTheDialog()
{
    m->dialog->disconnectSignals();
    m->dialog->m_pComboVidFormat->addItem(QStringLiteral("another"), 1);
    m->dialog->m_pComboVidFormat->setCurrentIndex(m->dialog->m_pComboVidFormat->count() - 1);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    const QByteArray send = m->read(QStringLiteral("x.tx.sdp"));
    QVERIFY(send.contains("a=framerate:\na=fmtp:101 width=; height=; TP=2110TPNL; exactframerate=; PM="));
}

// A type without elements has video only, whatever button is down.
void TestSaveSdp::otherTypesSaveVideo()
{
    click(m->dialog->m_pAudioConfig);
    m->dialog->disconnectSignals();
    m->dialog->m_pComboType->addItem(QStringLiteral("another"), 3);
    m->dialog->m_pComboType->setCurrentIndex(1);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QVERIFY(m->read(QStringLiteral("x.rx.sdp")).contains("m=video 0 RTP/AVP 100\n"));
}

void TestSaveSdp::noElementSavesAncillaryData()
{
    QRadioButton *video = m->dialog->m_pVideoConfig;
    m->dialog->disconnectSignals();
    video->setAutoExclusive(false);
    video->setChecked(false);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(m->read(QStringLiteral("x.rx.sdp")).count("smpte291"), 2);
}

// In the encoding of the machine, not always in UTF-8.
void TestSaveSdp::localCharacters()
{
    QTextCodec *before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    m->dialog->m_pUseGmId->setChecked(true);
    m->dialog->m_pEditGmAddress->setText(QString::fromUtf8("\xC3\xA9"));
    const bool saved = m->saveElement(QStringLiteral("x.sdp"));
    QTextCodec::setCodecForLocale(before);
    QVERIFY(saved);
    QVERIFY(m->read(QStringLiteral("x.rx.sdp")).contains("localmac=\xE9\n"));
}

CORVEL_DIALOG_TEST_MAIN(TestSaveSdp)
#include "test_savesdp.moc"
