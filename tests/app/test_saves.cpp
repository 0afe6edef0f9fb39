// SPDX-License-Identifier: MIT
//
// What a save does, call by call: the order of the writes, the log lines byte for byte, the one commit at
// the end, and what runs before it.
#include "fake/recorder.h"
#include "support/dialog.h"
#include "support/snapshot.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestSaves : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_unique<FreshStore>();
        put(0, "VideoType", 1u);
    }
    void cleanup()
    {
        m_dialog.reset();
        m_store.reset();
    }
    void videoOrder();
    void audioOrder();
    void audioOrderWithoutFlow();
    void ancOrder();
    void typeEightWritesTheDomainTwice();
    void simpleAddressWins();
    void simpleAddressLeavesOtherElementsAlone();
    void userTextIsNoFormat();
    void checkThenLocksThenSave();
    void comboChecksTheClockFirst();
    void boxDoesNotCheckTheClock();
    void formatIsWrittenAlone();
    void typeIsWrittenAlone();
    void savedToTheShownChannel();
    void saveTwiceChangesNothing();
    void noChannelWritesNothing();

private:
    // Values that differ from field to field.
    void fill();
    void open(bool overrideNmos)
    {
        setGlobalDword(StorePath::AvHAL, "nmosoverride", overrideNmos ? 1 : 0);
        m_dialog = std::make_unique<QCorvel>(true, nullptr);
        show(m_dialog.get());
    }
    QByteArrayList savedCalls()
    {
        fill();
        Recorder::clear();
        m_dialog->saveDataStandAlone();
        return Recorder::calls();
    }

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestSaves::fill()
{
    const SignalBracket bracket(m_dialog.get());
    m_dialog->m_pLineRecSrcAddr->setAddress(QStringLiteral("10.0.0.1"));
    m_dialog->m_pEditRecSrcPort->setText(QStringLiteral("11"));
    m_dialog->m_pLineRecDstAddr->setAddress(QStringLiteral("239.0.0.1"));
    m_dialog->m_pEditRecDstPort->setText(QStringLiteral("12"));
    m_dialog->m_pEditRecIFace->setAddress(QStringLiteral("192.168.0.1"));
    m_dialog->m_pLineSndSrcAddr->setAddress(QStringLiteral("10.0.0.2"));
    m_dialog->m_pEditSndSrcPort->setText(QStringLiteral("21"));
    m_dialog->m_pLineSndDstAddr->setAddress(QStringLiteral("239.0.0.2"));
    m_dialog->m_pEditSndDstPort->setText(QStringLiteral("22"));
    m_dialog->m_pEditSndIFace->setAddress(QStringLiteral("192.168.0.2"));
    m_dialog->m_pCheckRecSrcPort->setChecked(true);
    m_dialog->m_pCheckRecDstIFace->setChecked(true);
    for (QCheckBox *box :
         {m_dialog->m_pCheckSndSrcPort, m_dialog->m_pCheckSndDstPort, m_dialog->m_pCheckSndSrcAddr,
          m_dialog->m_pCheckSndDstAddr, m_dialog->m_pCheckSndDstIFace})
        box->setChecked(true);
    m_dialog->m_pSimpleAddress->setAddress(QStringLiteral("239.9.9.9"));
    m_dialog->m_pComboPTimeRx->setCurrentIndex(1);
    m_dialog->m_pComboAudChan->setCurrentIndex(3);
    m_dialog->m_pComboClkSrc->setCurrentIndex(3);
    m_dialog->m_pComboVidFormat->setCurrentIndex(1);
    m_dialog->m_pEditGmAddress->setText(QStringLiteral("00-1D"));
    m_dialog->m_pEditGmId->setText(QStringLiteral("7"));
    m_dialog->m_pEditClockDomain->setText(QStringLiteral("8"));
}

// The lower-case "video" of the receive line and the blank at each end: see docs/deliberate.md.
void TestSaves::videoOrder()
{
    open(true);
    QCOMPARE(savedCalls(), (QByteArrayList{
                               "VideoType=1",
                               "ReceiveSourceIp=10.0.0.1",
                               "ReceiveDestinationIp=239.0.0.1",
                               "ReceiveSourcePort=11",
                               "ReceiveDestinationPort=12",
                               "ReceiveInterface=192.168.0.1",
                               "ReceiveFlags=17",
                               "TransmitIp=10.0.0.2",
                               "TransmitDestinationIp=239.0.0.2",
                               "TransmitSourcePort=21",
                               "TransmitRemotePort=22",
                               "TransmitInterface=192.168.0.2",
                               "TransmitFlags=31",
                               "log \nTransmit Video Chan 0 Source 10.0.0.2:21 Dest 239.0.0.2:22 interface "
                               "192.168.0.2 Flags (0x0000001F) ",
                               "log \nReceive video Chan 0 Source 10.0.0.1:11 Dest 239.0.0.1:12 interface "
                               "192.168.0.1 Flags (0x00000011) ",
                               "ClockType=8388608",
                               "SignalFormat=327201305",
                               "ClockGrandMaster=00-1D",
                               "ClockDomain=7",
                               "save",
                           }));
}

void TestSaves::audioOrder()
{
    put(0, "ReceiveAudTotalChannels", 16u);
    open(true);
    click(m_dialog->m_pAudioConfig);
    click(m_dialog->m_pAudFlowSelect[3]);
    QCOMPARE(savedCalls(), (QByteArrayList{
                               "VideoType=1",
                               "ReceiveAudPacketLength=1000",
                               "ReceiveAudFlags3=17",
                               "ReceiveAudInterface=192.168.0.1",
                               "TransmitAudInterface=192.168.0.2",
                               "TransmitAudFlags3=31",
                               "TransmitAudPacketLength=125",
                               "ReceiveAudSourceIp3=10.0.0.1",
                               "ReceiveAudDestinationIp3=239.0.0.1",
                               "ReceiveAudSourcePort3=11",
                               "ReceiveAudDestinationPort3=12",
                               "ReceiveAudChannels=6",
                               "TransmitAudIp3=10.0.0.2",
                               "TransmitAudDestinationIp3=239.0.0.2",
                               "TransmitAudSourcePort3=21",
                               "TransmitAudRemotePort3=22",
                               "TransmitAudChannels=6",
                               "log \nTransmit Audio Chan 0 Source 10.0.0.2:21 Dest 239.0.0.2:22 interface "
                               "192.168.0.2 Flags (0x0000001F) ",
                               "log \nReceive Audio Chan 0 Source 10.0.0.1:11 Dest 239.0.0.1:12 interface "
                               "192.168.0.1 Flags (0x00000011) ",
                               "ClockType=8388608",
                               "SignalFormat=327201305",
                               "ClockGrandMaster=00-1D",
                               "ClockDomain=7",
                               "save",
                           }));
}

// With no flow chosen the names carry no number, the flags' too.
void TestSaves::audioOrderWithoutFlow()
{
    open(true);
    click(m_dialog->m_pAudioConfig);
    m_dialog->audChanUseSingle(true);
    const QByteArrayList calls = savedCalls();
    for (const char *name :
         {"ReceiveAudFlags=17", "TransmitAudFlags=31", "ReceiveAudSourceIp=10.0.0.1",
          "ReceiveAudDestinationPort=12", "TransmitAudIp=10.0.0.2", "TransmitAudRemotePort=22"})
        QVERIFY2(calls.contains(name), name);
}

// Ancillary data is not logged.
void TestSaves::ancOrder()
{
    open(true);
    click(m_dialog->m_pAncConfig);
    QCOMPARE(savedCalls(), (QByteArrayList{
                               "VideoType=1",
                               "ReceiveAncSourceIp=10.0.0.1",
                               "ReceiveAncDestinationIp=239.0.0.1",
                               "ReceiveAncSourcePort=11",
                               "ReceiveAncDestinationPort=12",
                               "ReceiveAncInterface=192.168.0.1",
                               "ReceiveAncFlags=17",
                               "TransmitAncIp=10.0.0.2",
                               "TransmitAncDestinationIp=239.0.0.2",
                               "TransmitAncSourcePort=21",
                               "TransmitAncRemotePort=22",
                               "TransmitAncInterface=192.168.0.2",
                               "TransmitAncFlags=31",
                               "ClockType=8388608",
                               "SignalFormat=327201305",
                               "ClockGrandMaster=00-1D",
                               "ClockDomain=7",
                               "save",
                           }));
}

// The type with a domain of its own writes it first; the edit next to the clock source overrides it, on
// purpose.
void TestSaves::typeEightWritesTheDomainTwice()
{
    open(true);
    {
        const SignalBracket bracket(m_dialog.get());
        m_dialog->m_pComboType->addItem(QStringLiteral("eight"), 8);
        m_dialog->m_pComboType->setCurrentIndex(1);
    }
    const QByteArrayList calls = savedCalls();
    QCOMPARE(calls.first(), QByteArray("VideoType=8"));
    QCOMPARE(calls.mid(calls.size() - 6),
             (QByteArrayList{"ClockDomain=8", "ClockType=8388608", "SignalFormat=327201305",
                             "ClockGrandMaster=00-1D", "ClockDomain=7", "save"}));
    QCOMPARE(number(0, "ClockDomain"), 7u);
}

// While NMOS decides, the simple page's address is the one that is sent to, whatever the full page says.
void TestSaves::simpleAddressWins()
{
    open(false);
    const QByteArrayList calls = savedCalls();
    QCOMPARE(calls.mid(calls.size() - 3),
             (QByteArrayList{"ClockDomain=7", "TransmitDestinationIp=239.9.9.9", "save"}));
    QVERIFY(calls.contains("TransmitDestinationIp=239.0.0.2"));
    QCOMPARE(text(0, "TransmitDestinationIp"), QStringLiteral("239.9.9.9"));
    QCOMPARE(m_dialog->m_pLineSndDstAddr->address(),
             QStringLiteral("239.0.0.2")); // brought in line by a load only
    m_dialog->loadData();
    QCOMPARE(m_dialog->m_pLineSndDstAddr->address(), QStringLiteral("239.9.9.9"));
}

// Any edit of any element does it, also one of another field. The other elements' addresses stay.
void TestSaves::simpleAddressLeavesOtherElementsAlone()
{
    put(0, "TransmitAncDestinationIp", QStringLiteral("239.5.5.5"));
    put(0, "TransmitDestinationIp", QStringLiteral("239.6.6.6"));
    open(false);
    m_dialog->m_pAncConfig->setChecked(true);
    {
        const SignalBracket bracket(m_dialog.get());
        m_dialog->m_pSimpleAddress->setAddress(QStringLiteral("239.7.7.7"));
    }
    m_dialog->m_pCheckRecDstPort->toggle();
    QCOMPARE(text(0, "TransmitDestinationIp"), QStringLiteral("239.7.7.7"));
    QCOMPARE(text(0, "TransmitAncDestinationIp"), QStringLiteral("239.5.5.5"));
}

void TestSaves::userTextIsNoFormat()
{
    open(true);
    fill();
    m_dialog->m_pLineSndSrcAddr->setAddress(QStringLiteral("%s.%n.%d.1"));
    Recorder::clear();
    m_dialog->saveDataStandAlone();
    QCOMPARE(Recorder::callsOf("log \nTransmit"),
             QByteArrayList{
                 "log \nTransmit Video Chan 0 Source %s.%n.%d.1:21 Dest 239.0.0.2:22 interface 192.168.0.2 "
                 "Flags (0x0000001F) "});
}

// One typed port: the clock is checked, locked fields are copied, and the save comes last, so that with
// NMOS in charge the simple address wins over a copied one.
void TestSaves::checkThenLocksThenSave()
{
    open(true);
    click(m_dialog->m_pCheckLockSndDstPort);
    Recorder::clear();
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("5"));
    const QByteArrayList calls = Recorder::calls();
    const int check = calls.indexOf("ptp end");
    const int firstCopy = calls.indexOf("TransmitAudRemotePort0=5");
    const int lastCopy = calls.indexOf("TransmitAncRemotePort=5");
    const int save = calls.indexOf("VideoType=1");
    QVERIFY2(check == 0 && firstCopy > check && lastCopy > firstCopy && save > lastCopy,
             calls.join('|').constData());
    QCOMPARE(calls.last(), QByteArray("save"));
}

void TestSaves::comboChecksTheClockFirst()
{
    open(true);
    Recorder::clear();
    m_dialog->m_pComboClkSrc->setFocus();
    QTest::keyClick(m_dialog->m_pComboClkSrc, Qt::Key_End);
    QCOMPARE(Recorder::calls().first(), QByteArray("ptp end"));
    QCOMPARE(Recorder::callsOf("ptp end").size(), 1);
    QCOMPARE(Recorder::callsOf("ClockType"), QByteArrayList{"ClockType=8388608"});
}

void TestSaves::boxDoesNotCheckTheClock()
{
    open(true);
    Recorder::clear();
    click(m_dialog->m_pCheckSndDstIFace);
    QVERIFY(Recorder::callsOf("ptp").isEmpty());
    QCOMPARE(Recorder::callsOf("TransmitFlags"), QByteArrayList{"TransmitFlags=16"});
    QCOMPARE(Recorder::callsOf("save").size(), 1);
}

void TestSaves::formatIsWrittenAlone()
{
    for (const bool standAlone : {true, false}) { // in both modes
        setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
        m_dialog = std::make_unique<QCorvel>(standAlone, nullptr);
        Recorder::clear();
        m_dialog->m_pComboVidFormat->setCurrentIndex(23);
        QCOMPARE(Recorder::calls(), (QByteArrayList{"SignalFormat=641794096", "save"}));
    }
}

void TestSaves::typeIsWrittenAlone()
{
    open(true);
    m_dialog->m_pComboType->addItem(QStringLiteral("eight"), 8);
    Recorder::clear();
    choose(m_dialog->m_pComboType, 8);
    QCOMPARE(Recorder::calls(),
             (QByteArrayList{"VideoType=8", "save", "ptp end"})); // the load checks the clock
}

void TestSaves::savedToTheShownChannel()
{
    open(true);
    choose(m_dialog->m_pChannel, 3);
    const Snapshot before = snapshot();
    Recorder::clear();
    click(m_dialog->m_pCheckRecSrcPort);
    QCOMPARE(Recorder::lastChannel(), 3);
    QVERIFY(Recorder::callsOf("log \nTransmit Video Chan 3 ").size() == 1);
    for (const QString &changed : changes(before, snapshot()).keys())
        QVERIFY2(isOfChannel(3, changed), qPrintable(changed));
}

void TestSaves::saveTwiceChangesNothing()
{
    open(true);
    fill();
    m_dialog->saveDataStandAlone();
    const QByteArray before = dump();
    m_dialog->saveDataStandAlone();
    m_dialog->updateSettings(true);
    QCOMPARE(dump(), before);
}

void TestSaves::noChannelWritesNothing()
{
    setGlobalDword(StorePath::Config, "MaxIntChannels", 0);
    open(true);
    const QByteArray before = dump();
    fill();
    typeText(m_dialog->m_pEditRecSrcPort, QStringLiteral("99"));
    click(m_dialog->m_pCheckRecDstAddr);
    m_dialog->m_pComboVidFormat->setCurrentIndex(5);
    m_dialog->loadData();
    Recorder::clear();
    m_dialog->saveDataStandAlone();
    QVERIFY(Recorder::calls().isEmpty());
    QCOMPARE(dump(), before);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("0"));
}

CORVEL_DIALOG_TEST_MAIN(TestSaves)
#include "test_saves.moc"
