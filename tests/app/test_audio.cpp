// SPDX-License-Identifier: MIT
//
// Audio flows, the choice of the element, and the single-flow mode.
#include "support/dialog.h"
#include "support/snapshot.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestAudio : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void flowsAndElementsAreTwoSets();
    void totalsFollowBothCombos();
    void oneComboWritesBothSides();
    void flowCountEnablesSelectors();
    void flowCountWorksWhileVideoIsShown();
    void bothCombosSaveWhatIsShown();
    void switchesBelongToTheShownChannel();
    void loadLeavesTheButtonBehindTheLastFlow();
    void choosingAudioEnablesTheFlowsOnly();
    void sevenFlowsDisableNone();
    void choosingAFlowShowsItsValues();
    void anEditGoesToTheChosenFlow();
    void flagsAreReadFromFlowZero();
    void interfacesAndPacketTimesHaveNoFlow();
    void firstCheckedLoadsLastCheckedSaves();
    void sendChannelCountWins();
    void singleFlowWritesTotals();
    void leavingSingleFlowKeepsTotals();
    void noFlowIsCheckedAfterASwitch_data();
    void noFlowIsCheckedAfterASwitch();
    void singleFlowUsesNamesWithoutNumber();
    void singleFlowFlags();
    void singleFlowSurvivesElementSwitch();
    void choosingVideoHidesTheFlows();
    void saveButtonNamesTheElement();
    void choosingAnElementWritesNothing();
    void elementCodes();
    void otherTypesAreVideo();
    void fileSettings();

private:
    void open();
    void audio() { click(m_dialog->m_pAudioConfig); }
    QList<int> enabledFlows() const;
    QList<int> checkedFlows() const;
    void single(bool on) { QMetaObject::invokeMethod(m_dialog.get(), "audChanUseSingle", Q_ARG(bool, on)); }

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestAudio::init()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    put(0, "VideoType", 1);
    put(0, "ReceiveAudChannels", 2);
    put(0, "TransmitAudChannels", 2);
    put(0, "ReceiveAudTotalChannels", 8);
    put(0, "TransmitAudTotalChannels", 8);
    for (int flow = 0; flow < kFlowCount; ++flow) {
        const QByteArray n = QByteArray::number(flow);
        put(0, "ReceiveAudDestinationIp" + n, QStringLiteral("239.1.1.%1").arg(flow));
        put(0, "TransmitAudRemotePort" + n, 6000 + quint32(flow));
        put(0, "ReceiveAudFlags" + n, flow == 0 ? 8 : 4);
    }
    put(0, "ReceiveAudDestinationIp", QStringLiteral("239.9.9.9"));
    put(0, "TransmitAudRemotePort", 6999);
    put(1, "VideoType", 1);
    put(1, "ReceiveAudChannels", 2);
    put(1, "ReceiveAudTotalChannels", 4);
    commitStore();
    open();
}

void TestAudio::open()
{
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
}

void TestAudio::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

QList<int> TestAudio::enabledFlows() const
{
    QList<int> flows;
    for (int flow = 0; flow < kFlowCount; ++flow) {
        if (m_dialog->m_pAudFlowSelect[flow]->isEnabled())
            flows.append(flow);
    }
    return flows;
}

QList<int> TestAudio::checkedFlows() const
{
    QList<int> flows;
    for (int flow = 0; flow < kFlowCount; ++flow) {
        if (m_dialog->m_pAudFlowSelect[flow]->isChecked())
            flows.append(flow);
    }
    return flows;
}

// ------------------------------------------------------------------------------------------- layout

void TestAudio::flowsAndElementsAreTwoSets()
{
    audio();
    QCOMPARE(checkedFlows(), QList<int>{0});
    click(m_dialog->m_pAudFlowSelect[2]);
    QCOMPARE(checkedFlows(), QList<int>{2});
    QVERIFY(m_dialog->m_pAudioConfig->isChecked());
    click(m_dialog->m_pAncConfig);
    QCOMPARE(checkedFlows(), QList<int>{2});
    QVERIFY(!m_dialog->m_pAudioConfig->isChecked());
}

void TestAudio::totalsFollowBothCombos()
{
    audio();
    choose(m_dialog->m_pComboAudChan, 6);
    QCOMPARE(number(0, "ReceiveAudTotalChannels"), 24u);
    QCOMPARE(number(0, "TransmitAudTotalChannels"), 24u);
    choose(m_dialog->m_pComboAudFlow, 8);
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:ReceiveAudTotalChannels")), QStringLiteral("48"));
    QCOMPARE(now.value(QStringLiteral("0:TransmitAudTotalChannels")), QStringLiteral("48"));
    choose(m_dialog->m_pComboAudChan, 0);
    QCOMPARE(number(0, "TransmitAudTotalChannels"), 0u);
}

void TestAudio::oneComboWritesBothSides()
{
    audio();
    choose(m_dialog->m_pComboAudChan, 4);
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:ReceiveAudChannels")), QStringLiteral("4"));
    QCOMPARE(now.value(QStringLiteral("0:TransmitAudChannels")), QStringLiteral("4"));
}

void TestAudio::flowCountEnablesSelectors()
{
    audio();
    choose(m_dialog->m_pComboAudFlow, 3);
    QCOMPARE(enabledFlows(), (QList<int>{0, 1, 2}));
    choose(m_dialog->m_pComboAudFlow, 8);
    QCOMPARE(enabledFlows().size(), kFlowCount);
}

// The combo cannot be reached by hand then; a host may set it.
void TestAudio::flowCountWorksWhileVideoIsShown()
{
    QVERIFY(!m_dialog->m_pComboAudFlow->isEnabled());
    m_dialog->m_pComboAudFlow->setCurrentIndex(m_dialog->m_pComboAudFlow->findData(3));
    QCOMPARE(enabledFlows(), (QList<int>{0, 1, 2}));
    const quint32 total = 3 * m_dialog->m_pComboAudChan->currentData().toUInt();
    QCOMPARE(number(0, "ReceiveAudTotalChannels"), total);
    QCOMPARE(number(0, "TransmitAudTotalChannels"), total);
}

// What else is shown is saved with them.
void TestAudio::bothCombosSaveWhatIsShown()
{
    audio();
    const auto typedBehindItsBack = [this](const char *port) {
        m_dialog->disconnectSignals();
        m_dialog->m_pEditRecSrcPort->setText(QLatin1String(port));
        m_dialog->connectSignals();
    };
    typedBehindItsBack("1111");
    choose(m_dialog->m_pComboAudChan, 6);
    QCOMPARE(number(0, "ReceiveAudSourcePort0"), 1111u);
    typedBehindItsBack("2222");
    choose(m_dialog->m_pComboAudFlow, 3);
    QCOMPARE(number(0, "ReceiveAudSourcePort0"), 2222u);
}

void TestAudio::switchesBelongToTheShownChannel()
{
    choose(m_dialog->m_pChannel, 1);
    single(true);
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onFileSettingChanged", Q_ARG(bool, true)));
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("1:AudioFlowType")), QStringLiteral("0"));
    QCOMPARE(now.value(QStringLiteral("1:IpUseFileSettings")), QStringLiteral("1"));
    QVERIFY(!now.contains(QStringLiteral("0:AudioFlowType")));
    QVERIFY(!now.contains(QStringLiteral("0:IpUseFileSettings")));
}

// One past the last flow stays enabled, and nothing is enabled again when a channel has more flows.
void TestAudio::loadLeavesTheButtonBehindTheLastFlow()
{
    QCOMPARE(enabledFlows(), (QList<int>{0, 1, 2, 3, 4}));
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toInt(), 2);
    QCOMPARE(enabledFlows(), (QList<int>{0, 1, 2}));
    choose(m_dialog->m_pChannel, 0);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toInt(), 4);
    QCOMPARE(enabledFlows(), (QList<int>{0, 1, 2}));
}

void TestAudio::choosingAudioEnablesTheFlowsOnly()
{
    audio();
    QCOMPARE(enabledFlows(), (QList<int>{0, 1, 2, 3}));
    QVERIFY(m_dialog->m_pComboAudChan->isEnabled());
    QVERIFY(m_dialog->m_pComboAudFlow->isEnabled());
    QVERIFY(m_dialog->m_pComboPTimeRx->isEnabled());
    QVERIFY(m_dialog->m_pComboPTimeTx->isEnabled());
}

void TestAudio::sevenFlowsDisableNone()
{
    put(0, "ReceiveAudTotalChannels", 14);
    open();
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toInt(), 7);
    QCOMPARE(enabledFlows().size(), kFlowCount);
    // No channels per flow counts as two.
    put(0, "ReceiveAudChannels", 0);
    put(0, "ReceiveAudTotalChannels", 16);
    open();
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toInt(), 8);
    QCOMPARE(enabledFlows().size(), kFlowCount);
}

// -------------------------------------------------------------------------------------------- flows

void TestAudio::choosingAFlowShowsItsValues()
{
    audio();
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    const Snapshot before = snapshot();
    click(m_dialog->m_pAudFlowSelect[3]);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.3"));
    QCOMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("6003"));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestAudio::anEditGoesToTheChosenFlow()
{
    audio();
    click(m_dialog->m_pAudFlowSelect[2]);
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("7100"));
    QCOMPARE(number(0, "TransmitAudRemotePort2"), 7100u);
    QCOMPARE(number(0, "TransmitAudRemotePort0"), 6000u);
    QCOMPARE(number(0, "TransmitAudRemotePort3"), 6003u);
    QCOMPARE(number(0, "TransmitAudRemotePort"), 6999u);
    QVERIFY(!hasNumber("KWX\\Internal0\\IpConfig", "TransmitRemotePort"));
}

// Read from flow 0 whatever flow is shown, written to the flow shown.
void TestAudio::flagsAreReadFromFlowZero()
{
    audio();
    click(m_dialog->m_pAudFlowSelect[3]);
    QVERIFY(m_dialog->m_pCheckRecDstAddr->isChecked());
    QVERIFY(!m_dialog->m_pCheckRecSrcAddr->isChecked());
    click(m_dialog->m_pCheckRecDstPort);
    QCOMPARE(number(0, "ReceiveAudFlags3"), 10u);
    QCOMPARE(number(0, "ReceiveAudFlags0"), 8u);
}

void TestAudio::interfacesAndPacketTimesHaveNoFlow()
{
    put(0, "ReceiveAudInterface", QStringLiteral("10.4.4.4"));
    put(0, "TransmitAudPacketLength", 1000);
    audio();
    click(m_dialog->m_pAudFlowSelect[1]);
    QCOMPARE(m_dialog->m_pEditRecIFace->address(), QStringLiteral("10.4.4.4"));
    QCOMPARE(m_dialog->m_pComboPTimeTx->currentData().toInt(), 1000);
    choose(m_dialog->m_pComboPTimeRx, 1000);
    QCOMPARE(number(0, "ReceiveAudPacketLength"), 1000u);
    for (const QString &name : snapshot().keys())
        QVERIFY2(!name.contains(QLatin1String("Interface1")) && !name.contains(QLatin1String("Length1")),
                 qPrintable(name));
}

void TestAudio::firstCheckedLoadsLastCheckedSaves()
{
    audio();
    for (QRadioButton *flow : m_dialog->m_pAudFlowSelect)
        flow->setAutoExclusive(false);
    m_dialog->m_pAudFlowSelect[0]->setChecked(false);
    m_dialog->m_pAudFlowSelect[1]->setChecked(true);
    m_dialog->m_pAudFlowSelect[3]->setChecked(true);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.1"));
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("7200"));
    QCOMPARE(number(0, "TransmitAudRemotePort3"), 7200u);
    QCOMPARE(number(0, "TransmitAudRemotePort1"), 6001u);
}

void TestAudio::sendChannelCountWins()
{
    put(0, "ReceiveAudChannels", 4);
    put(0, "TransmitAudChannels", 8);
    audio();
    QCOMPARE(m_dialog->m_pComboAudChan->currentData().toInt(), 8);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toInt(), 2); // by the receive values: 8 / 4
}

// -------------------------------------------------------------------------------------- single flow

void TestAudio::singleFlowWritesTotals()
{
    audio();
    choose(m_dialog->m_pComboAudFlow, 4);
    QCOMPARE(number(0, "ReceiveAudTotalChannels"), 8u);
    single(true);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentIndex(), 0);
    QVERIFY(!m_dialog->m_pComboAudFlow->isEnabled());
    QVERIFY(m_dialog->m_pAudFlowUseSingle->isChecked());
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:AudioFlowType")), QStringLiteral("0"));
    QCOMPARE(now.value(QStringLiteral("0:ReceiveAudTotalChannels")), QStringLiteral("2"));
    QCOMPARE(now.value(QStringLiteral("0:TransmitAudTotalChannels")), QStringLiteral("2"));
}

void TestAudio::leavingSingleFlowKeepsTotals()
{
    audio();
    single(true);
    put(0, "TransmitAudTotalChannels", 77);
    single(false);
    QVERIFY(m_dialog->m_pComboAudFlow->isEnabled());
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:TransmitAudTotalChannels")), QStringLiteral("77"));
    QCOMPARE(now.value(QStringLiteral("0:AudioFlowType")), QStringLiteral("1"));
    QCOMPARE(now.value(QStringLiteral("0:ReceiveAudTotalChannels")), QStringLiteral("2"));
    choose(m_dialog->m_pComboAudFlow, 3);
    QCOMPARE(number(0, "ReceiveAudTotalChannels"), 6u);
}

void TestAudio::noFlowIsCheckedAfterASwitch_data()
{
    QTest::addColumn<bool>("first");
    QTest::addColumn<bool>("second");
    QTest::newRow("on, on") << true << true;
    QTest::newRow("on, off") << true << false;
    QTest::newRow("off, off") << false << false;
    QTest::newRow("off, on") << false << true;
}

void TestAudio::noFlowIsCheckedAfterASwitch()
{
    QFETCH(bool, first);
    QFETCH(bool, second);
    audio();
    click(m_dialog->m_pAudFlowSelect[1]);
    single(first);
    QCOMPARE(checkedFlows(), QList<int>());
    QCOMPARE(enabledFlows().isEmpty(), first);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.9.9.9"));
    single(second);
    QCOMPARE(checkedFlows(), QList<int>());
    QCOMPARE(enabledFlows().isEmpty(), second);
    // Only in single-flow mode does a later load leave it so.
    m_dialog->loadData();
    QCOMPARE(checkedFlows(), second ? QList<int>() : QList<int>{0});
    // And the set is exclusive again.
    if (second)
        return;
    click(m_dialog->m_pAudFlowSelect[1]);
    QCOMPARE(checkedFlows(), QList<int>{1});
}

void TestAudio::singleFlowUsesNamesWithoutNumber()
{
    audio();
    single(true);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.9.9.9"));
    QCOMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("6999"));
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("7300"));
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:TransmitAudRemotePort")), QStringLiteral("7300"));
    QCOMPARE(now.value(QStringLiteral("0:TransmitAudRemotePort0")), QStringLiteral("6000"));
}

void TestAudio::singleFlowFlags()
{
    put(0, "ReceiveAudFlags", 1);
    audio();
    single(true);
    QVERIFY(m_dialog->m_pCheckRecDstAddr->isChecked()); // flow 0 has 8
    QVERIFY(!m_dialog->m_pCheckRecSrcPort->isChecked());
    click(m_dialog->m_pCheckRecDstPort);
    QCOMPARE(number(0, "ReceiveAudFlags"), 10u);
    QCOMPARE(number(0, "ReceiveAudFlags0"), 8u);
}

void TestAudio::singleFlowSurvivesElementSwitch()
{
    audio();
    single(true);
    click(m_dialog->m_pVideoConfig);
    audio();
    QVERIFY(!m_dialog->m_pComboAudFlow->isEnabled());
    QVERIFY(m_dialog->m_pComboAudChan->isEnabled());
    QCOMPARE(enabledFlows(), QList<int>());
    QCOMPARE(checkedFlows(), QList<int>());
}

// ------------------------------------------------------------------------------------------ element

void TestAudio::choosingVideoHidesTheFlows()
{
    audio();
    QVERIFY(m_dialog->m_pAudFlowGroup->isVisible());
    QVERIFY(m_dialog->m_pAudFlowSelectLbl->isVisible());
    click(m_dialog->m_pVideoConfig);
    QVERIFY(!m_dialog->m_pAudFlowGroup->isVisible());
    QVERIFY(!m_dialog->m_pAudFlowSelectLbl->isVisible());
    for (const QComboBox *combo : {m_dialog->m_pComboPTimeRx, m_dialog->m_pComboPTimeTx,
                                   m_dialog->m_pComboAudChan, m_dialog->m_pComboAudFlow})
        QVERIFY2(!combo->isEnabled(), qPrintable(combo->objectName()));
}

void TestAudio::saveButtonNamesTheElement()
{
    QCOMPARE(m_dialog->m_pCmdSaveElement->text(), QStringLiteral("Save Video SDP"));
    audio();
    QCOMPARE(m_dialog->m_pCmdSaveElement->text(), QStringLiteral("Save Audio SDP"));
    click(m_dialog->m_pAncConfig);
    QCOMPARE(m_dialog->m_pCmdSaveElement->text(), QStringLiteral("Save Anc SDP"));
    click(m_dialog->m_pVideoConfig);
    QCOMPARE(m_dialog->m_pCmdSaveElement->text(), QStringLiteral("Save Video SDP"));
}

void TestAudio::choosingAnElementWritesNothing()
{
    click(m_dialog->m_pCheckLockGroup);
    const Snapshot before = snapshot();
    for (QRadioButton *radio : {m_dialog->m_pAudioConfig, m_dialog->m_pAncConfig, m_dialog->m_pVideoConfig})
        click(radio);
    QVERIFY(!m_dialog->m_pCheckLockGroup->isChecked());
    QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("TransmitIp0")));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestAudio::elementCodes()
{
    struct Row {
        QRadioButton *radio;
        quint32 receive;
        quint32 send;
    };
    const Row rows[] = {
        {m_dialog->m_pAudioConfig, 8192, 131072},
        {m_dialog->m_pAncConfig, 16384, 262144},
        {m_dialog->m_pVideoConfig, 4096, 65536},
    };
    for (const Row &row : rows) {
        click(row.radio);
        quint32 receive = 0;
        quint32 send = 0;
        m_dialog->getRecSndTypes(&receive, &send);
        QCOMPARE(receive, row.receive);
        QCOMPARE(send, row.send);
    }
}

void TestAudio::otherTypesAreVideo()
{
    m_dialog->m_pComboType->addItem(QStringLiteral("another"), 5);
    m_dialog->m_pComboType->setCurrentIndex(1);
    for (QRadioButton *radio : {m_dialog->m_pAudioConfig, m_dialog->m_pAncConfig, m_dialog->m_pVideoConfig}) {
        radio->setChecked(true);
        quint32 receive = 0;
        quint32 send = 0;
        m_dialog->getRecSndTypes(&receive, &send);
        QCOMPARE(receive, 4096u);
        QCOMPARE(send, 65536u);
        QVERIFY(m_dialog->isVideo() && !m_dialog->isAudio() && !m_dialog->isAnc());
    }
}

void TestAudio::fileSettings()
{
    put(0, "ReceiveDestinationPort", 4711);
    for (const bool on : {true, false}) {
        QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onFileSettingChanged", Q_ARG(bool, on)));
        QCOMPARE(snapshot().value(QStringLiteral("0:IpUseFileSettings")),
                 on ? QStringLiteral("1") : QStringLiteral("0"));
        QCOMPARE(m_dialog->m_pEditRecDstPort->text(), QStringLiteral("4711")); // shown anew
    }
}

CORVEL_DIALOG_TEST_MAIN(TestAudio)
#include "test_audio.moc"
