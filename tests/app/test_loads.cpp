// SPDX-License-Identifier: MIT
//
// Loading a channel: what is shown for what is stored, what stays when the stored value fits nothing, and
// that looking at things never writes.
#include "channel/videoformats.h"
#include "fake/recorder.h"
#include "support/dialog.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestLoads : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_unique<FreshStore>();
        setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    }
    void cleanup()
    {
        m_dialog.reset();
        m_store.reset();
    }
    void lookingWritesNothing();
    void switchingConfigurationWritesNothing();
    void channelSwitchLeavesTheOldChannelAlone();
    void neverWrittenAddresses();
    void shortAddressKeepsTheRest();
    void readOrder_data();
    void readOrder();
    void theNodeIsAskedForInAnyCase();
    void flowCount();
    void flowButtonsAreNotEnabledAgain();
    void firstFlowIsLoadedLastIsSaved();
    void audioFlagsComeFromFlowZero();
    void unknownFlagBitsAreLost();
    void unknownNumbersKeepTheSelection();
    void unknownFormat();
    void formatValues();
    void foreignFormatEntry();
    void channelCountOfTheSendSideWins();
    void selectFromData();
    void useSetting();
    void boardSettingsFollowTheStore();
    void typeEight();
    void typeOfOneElement();
    void typeChangeChecksErrors();
    void elementCodesOfTheTypes();
    void lockAllIsClearedSilently();
    void defaultInterfaceIsNeverSet();

private:
    void open()
    {
        m_dialog = std::make_unique<QCorvel>(true, nullptr);
        show(m_dialog.get());
    }
    void addType(quint32 type) { m_dialog->m_pComboType->addItem(QString::number(type), type); }
    QString buttons() const;

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

// One character a flow button: enabled or not.
QString TestLoads::buttons() const
{
    QString text;
    for (const QRadioButton *flow : m_dialog->m_pAudFlowSelect)
        text += flow->isEnabled() ? QLatin1Char('e') : QLatin1Char('-');
    return text;
}

// The store holds much that a save would write differently.
void TestLoads::lookingWritesNothing()
{
    setGlobalDword(StorePath::Debug, "NMOSUseLog", 0);
    put(0, "ReceiveFlags", 0xffffffffu);
    put(0, "SignalFormat", 12345u);
    put(0, "ClockType", 99u);
    put(0, "TransmitDestinationIp", QStringLiteral("nonsense"));
    put(1, "ReceiveAudTotalChannels", 16u);
    put(1, "ReceiveAudFlags0", 0x3fu);
    put(2, "VideoType", 8u);
    put(3, "ReceiveInterface", QStringLiteral("1.0.0.0"));
    const QByteArray before = dump();
    open();
    for (const quint32 channel : {1u, 2u, 3u, 0u, 1u}) {
        choose(m_dialog->m_pChannel, channel);
        for (QRadioButton *element : {m_dialog->m_pAudioConfig, m_dialog->m_pAncConfig,
                                      m_dialog->m_pVideoConfig, m_dialog->m_pAudioConfig})
            click(element);
        for (QRadioButton *flow : m_dialog->m_pAudFlowSelect)
            click(flow);
    }
    m_dialog->loadData();
    letItTick(m_dialog.get());
    QCOMPARE(dump(), before);
    m_dialog.reset();
    QCOMPARE(dump(), before);
}

void TestLoads::switchingConfigurationWritesNothing()
{
    put(0, "ReceiveSourcePort", 1111u);
    QCOMPARE(rkCFGSetDefaultName("Studio B"), 0);
    put(0, "ReceiveSourcePort", 2222u);
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    setGlobalDword(StorePath::Debug, "NMOSUseLog", 0);
    const QByteArray studio = dump();
    QCOMPARE(rkCFGSetDefaultName("default"), 0);
    setGlobalDword(StorePath::Debug, "NMOSUseLog", 0);
    const QByteArray first = dump();
    open();
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("default"));
    QCOMPARE(m_dialog->m_pConfig->count(), 2);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("1111"));
    m_dialog->m_pConfig->setFocus();
    const int other = m_dialog->m_pConfig->findText(QStringLiteral("Studio B"));
    QTest::keyClick(m_dialog->m_pConfig, other == 0 ? Qt::Key_Home : Qt::Key_End);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("2222"));
    QCOMPARE(m_dialog->m_pChannel->count(), 4);
    QCOMPARE(dump(), studio);
    QTest::keyClick(m_dialog->m_pConfig, other == 0 ? Qt::Key_End : Qt::Key_Home);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("1111"));
    QCOMPARE(dump(), first);
}

// Not even a value the user has typed and not finished.
void TestLoads::channelSwitchLeavesTheOldChannelAlone()
{
    put(0, "ReceiveSourcePort", 1u);
    put(1, "ReceiveSourcePort", 2u);
    open();
    const QByteArray before = dump();
    m_dialog->m_pEditRecSrcPort->setText(QStringLiteral("777"));
    m_dialog->m_pLineRecDstAddr->setAddress(QStringLiteral("239.7.7.7"));
    m_dialog->m_pChannel->setCurrentIndex(1);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("2"));
    QCOMPARE(dump(), before);
    m_dialog->m_pChannel->setCurrentIndex(0);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("1"));
    QCOMPARE(dump(), before);
}

// An empty address shows as the widget's default, which the first save then stores; until then it reads
// as empty.
void TestLoads::neverWrittenAddresses()
{
    open();
    for (const QLineAddress *address :
         {m_dialog->m_pLineRecSrcAddr, m_dialog->m_pLineRecDstAddr, m_dialog->m_pEditRecIFace,
          m_dialog->m_pLineSndSrcAddr, m_dialog->m_pLineSndDstAddr, m_dialog->m_pEditSndIFace,
          m_dialog->m_pSimpleAddress})
        QCOMPARE(address->address(), QStringLiteral("1.0.0.0"));
    for (const QLineEdit *port :
         {m_dialog->m_pEditRecSrcPort, m_dialog->m_pEditRecDstPort, m_dialog->m_pEditSndSrcPort,
          m_dialog->m_pEditSndDstPort, m_dialog->m_pEditGmId})
        QCOMPARE(port->text(), QStringLiteral("0"));
    QCOMPARE(m_dialog->m_pEditGmAddress->text(), QString());
    QVERIFY(!hasText("KWX\\Internal0\\IpConfig", "ReceiveSourceIp"));
    click(m_dialog->m_pCheckRecDstPort);
    QCOMPARE(text(0, "ReceiveSourceIp"), QStringLiteral("1.0.0.0"));
}

// A stored text with fewer parts leaves the octets of the channel shown before: see docs/deliberate.md.
void TestLoads::shortAddressKeepsTheRest()
{
    put(0, "ReceiveSourceIp", QStringLiteral("10.20.30.40"));
    put(1, "ReceiveSourceIp", QStringLiteral("99.88"));
    open();
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_pLineRecSrcAddr->address(), QStringLiteral("99.88.30.40"));
}

void TestLoads::readOrder_data()
{
    QTest::addColumn<QString>("radio");
    QTest::addColumn<QString>("reads");
    QTest::newRow("video") << QStringLiteral("m_pVideoConfig")
                           << QStringLiteral(
                                  "ReceiveSourceIp ReceiveSourcePort ReceiveDestinationIp "
                                  "ReceiveDestinationPort ReceiveInterface TransmitIp TransmitSourcePort "
                                  "TransmitDestinationIp TransmitRemotePort TransmitInterface "
                                  "ReceiveFlags TransmitFlags");
    QTest::newRow("audio") << QStringLiteral("m_pAudioConfig")
                           << QStringLiteral(
                                  "ReceiveAudSourceIp3 ReceiveAudSourcePort3 ReceiveAudDestinationIp3 "
                                  "ReceiveAudDestinationPort3 ReceiveAudChannels ReceiveAudInterface "
                                  "ReceiveAudFlags0 ReceiveAudPacketLength TransmitAudIp3 "
                                  "TransmitAudSourcePort3 TransmitAudDestinationIp3 "
                                  "TransmitAudRemotePort3 TransmitAudChannels TransmitAudInterface "
                                  "TransmitAudFlags0 TransmitAudPacketLength");
    QTest::newRow("anc") << QStringLiteral("m_pAncConfig")
                         << QStringLiteral(
                                "ReceiveAncSourceIp ReceiveAncSourcePort ReceiveAncDestinationIp "
                                "ReceiveAncDestinationPort ReceiveAncInterface TransmitAncIp "
                                "TransmitAncSourcePort TransmitAncDestinationIp TransmitAncRemotePort "
                                "TransmitAncInterface ReceiveAncFlags TransmitAncFlags");
}

// Everything a load asks the store for, in its order.
void TestLoads::readOrder()
{
    QFETCH(QString, radio);
    QFETCH(QString, reads);
    put(0, "VideoType", 1u);
    put(0, "ReceiveAudTotalChannels", 16u);
    open();
    click(m_dialog->findChild<QRadioButton *>(radio));
    m_dialog->disconnectSignals();
    m_dialog->m_pAudFlowSelect[3]->setChecked(true);
    m_dialog->connectSignals();
    Recorder::clear();
    m_dialog->loadData();
    const QString all = QStringLiteral("ReceiveAudTotalChannels ReceiveAudChannels VideoType "
                                       "KWX\\Advanced\\AvHAL\\nmosoverride SignalFormat %1 ClockType "
                                       "ClockDomain ClockGrandMaster TransmitDestinationIp nmosip size");
    QCOMPARE(QString::fromLatin1(Recorder::reads().join(' ')), all.arg(reads));
    QCOMPARE(Recorder::callsOf("ptp"), QByteArrayList{"ptp end"});
}

// Also where the addresses alone decide.
void TestLoads::theNodeIsAskedForInAnyCase()
{
    put(0, "VideoType", 1u);
    open();
    QCOMPARE(m_dialog->m_pEditRecIFace->address(), QStringLiteral("1.0.0.0"));
    Recorder::clear();
    m_dialog->loadDataStandAlone();
    QCOMPARE(Recorder::reads().last(), QByteArray("nmosip size"));
    for (const char *name : {"ReceiveInterface", "TransmitInterface", "TransmitDestinationIp"})
        put(0, name, QStringLiteral("10.1.1.1"));
    Recorder::clear();
    m_dialog->loadDataStandAlone();
    QCOMPARE(Recorder::reads().last(), QByteArray("nmosip size"));
}

void TestLoads::flowCount()
{
    const struct {
        const char *name;
        quint32 total;
        quint32 perFlow;
        int shown; // 1 is what an empty store shows
        const char *enabled;
    } rows[] = {
        {"16 with no count per flow", 16, 0, 8, "eeeeeeee"},
        {"8 by 4: the one past the last stays", 8, 4, 2, "eee-----"},
        {"1 by 1", 1, 1, 1, "ee------"},
        {"nothing stored", 0, 0, 1, "e-------"},
        {"6 flows", 12, 2, 6, "eeeeeee-"},
        {"7 flows disable none", 14, 2, 7, "eeeeeeee"},
        {"8 flows disable none", 16, 2, 8, "eeeeeeee"},
        {"9 flows are no entry", 18, 2, 1, "eeeeeeee"},
        {"rounded down", 7, 2, 3, "eeee----"},
        {"more per flow than in all", 2, 16, 1, "e-------"},
        {"all bits by one", 4294967295u, 1, 1, "eeeeeeee"},
    };
    for (const auto &row : rows) {
        put(0, "ReceiveAudTotalChannels", row.total);
        put(0, "ReceiveAudChannels", row.perFlow);
        m_dialog = std::make_unique<QCorvel>(true, nullptr);
        QVERIFY2(m_dialog->m_pComboAudFlow->currentData().toInt() == row.shown, row.name);
        QVERIFY2(buttons() == QLatin1String(row.enabled), row.name);
        QVERIFY(m_dialog->m_pAudFlowSelect[0]->isChecked());
    }
}

// A load only disables: see docs/deliberate.md.
void TestLoads::flowButtonsAreNotEnabledAgain()
{
    put(0, "ReceiveAudTotalChannels", 4u);
    put(1, "ReceiveAudTotalChannels", 16u);
    open();
    QCOMPARE(buttons(), QStringLiteral("eee-----"));
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toInt(), 8);
    QCOMPARE(buttons(), QStringLiteral("eee-----"));
}

// With several buttons checked a load takes the first and a save the last: see docs/deliberate.md.
void TestLoads::firstFlowIsLoadedLastIsSaved()
{
    put(0, "ReceiveAudSourcePort2", 222u);
    put(0, "ReceiveAudSourcePort5", 555u);
    open();
    {
        const SignalBracket bracket(m_dialog.get());
        m_dialog->m_pAudioConfig->setChecked(true);
        for (int flow = 0; flow < kFlowCount; ++flow) {
            m_dialog->m_pAudFlowSelect[flow]->setAutoExclusive(false);
            m_dialog->m_pAudFlowSelect[flow]->setChecked(flow == 2 || flow == 5);
        }
    }
    m_dialog->loadData();
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("222"));
    m_dialog->saveDataStandAlone();
    QCOMPARE(number(0, "ReceiveAudSourcePort5"), 222u);
    QVERIFY(!hasNumber("KWX\\Internal0\\IpConfig", "ReceiveAudSourcePort0"));
}

// Shown from flow 0, written to the flow that is selected: see docs/deliberate.md.
void TestLoads::audioFlagsComeFromFlowZero()
{
    put(0, "ReceiveAudTotalChannels", 16u);
    put(0, "ReceiveAudFlags0", 1u);
    put(0, "TransmitAudFlags0", 8u);
    put(0, "ReceiveAudFlags4", 30u);
    put(0, "TransmitAudFlags4", 30u);
    open();
    click(m_dialog->m_pAudioConfig);
    click(m_dialog->m_pAudFlowSelect[4]);
    QVERIFY(m_dialog->m_pCheckRecSrcPort->isChecked() && !m_dialog->m_pCheckRecDstAddr->isChecked());
    QVERIFY(m_dialog->m_pCheckSndDstAddr->isChecked() && !m_dialog->m_pCheckSndSrcAddr->isChecked());
    click(m_dialog->m_pCheckRecDstPort);
    QCOMPARE(number(0, "ReceiveAudFlags4"), 3u);
    QCOMPARE(number(0, "TransmitAudFlags4"), 8u);
    QCOMPARE(number(0, "ReceiveAudFlags0"), 1u);
    // In single-flow mode they are read from flow 0 too, and written to the name without a number.
    m_dialog->audChanUseSingle(true);
    QVERIFY(m_dialog->m_pCheckRecSrcPort->isChecked() && !m_dialog->m_pCheckRecDstPort->isChecked());
    click(m_dialog->m_pCheckRecDstIFace);
    QCOMPARE(number(0, "ReceiveAudFlags"), 17u);
}

void TestLoads::unknownFlagBitsAreLost()
{
    put(0, "ReceiveFlags", 0x3fu);
    open();
    for (const QCheckBox *box :
         {m_dialog->m_pCheckRecSrcPort, m_dialog->m_pCheckRecDstPort, m_dialog->m_pCheckRecSrcAddr,
          m_dialog->m_pCheckRecDstAddr, m_dialog->m_pCheckRecDstIFace})
        QVERIFY2(box->isChecked(), qPrintable(box->objectName()));
    QVERIFY(!m_dialog->m_pCheckSndSrcPort->isChecked());
    QCOMPARE(number(0, "ReceiveFlags"), 0x3fu);
    click(m_dialog->m_pCheckSndSrcPort);
    QCOMPARE(number(0, "ReceiveFlags"), 0x1fu);
    QCOMPARE(number(0, "TransmitFlags"), 1u);
}

void TestLoads::unknownNumbersKeepTheSelection()
{
    const struct {
        const char *combo;
        const char *name;
        quint32 known;
        quint32 unknown;
    } rows[] = {
        {"m_pComboType", "VideoType", 1, 0},
        {"m_pComboVidFormat", "SignalFormat", 641789982, 0},
        {"m_pComboClkSrc", "ClockType", 8388608, 1},
        {"m_pComboAudChan", "TransmitAudChannels", 6, 3},
        {"m_pComboPTimeRx", "ReceiveAudPacketLength", 1000, 0},
        {"m_pComboPTimeTx", "TransmitAudPacketLength", 1000, 250},
    };
    put(1, "ReceiveAudChannels", 3u); // no entry either
    for (const auto &row : rows) {
        put(0, row.name, row.known);
        put(1, row.name, row.unknown);
    }
    open();
    click(m_dialog->m_pAudioConfig);
    for (const quint32 channel : {0u, 1u}) {
        choose(m_dialog->m_pChannel, channel);
        for (const auto &row : rows)
            QVERIFY2(m_dialog->findChild<QComboBox *>(QLatin1String(row.combo))->currentData().toUInt() ==
                         row.known,
                     row.combo);
    }
}

// The selection stays, and what it stands for with it.
void TestLoads::unknownFormat()
{
    put(0, "SignalFormat", 641794096u);
    put(1, "SignalFormat", 641794097u);
    open();
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_pComboVidFormat->currentText(), QStringLiteral("4K 4096x2160 48fps"));
    QString rate;
    QString width;
    QString height;
    m_dialog->getSignalFormatValues(&width, &height, &rate);
    QCOMPARE(rate, QStringLiteral("48"));
}

void TestLoads::formatValues()
{
    open();
    QString width;
    QString height;
    QString rate;
    m_dialog->m_pComboVidFormat->setCurrentIndex(26);
    int index = 0;
    for (const VideoFormat &format : videoFormats()) {
        m_dialog->m_pComboVidFormat->setCurrentIndex(index++);
        QCOMPARE(number(0, "SignalFormat"), format.id); // stored at once
        m_dialog->getSignalFormatValues(&width, &height, &rate);
        QCOMPARE(width, QLatin1String(format.width));
        QCOMPARE(height, QLatin1String(format.height));
        QCOMPARE(rate, QLatin1String(format.rate));
    }
    choose(m_dialog->m_pComboVidFormat, 327201309);
    QCOMPARE(number(0, "SignalFormat"), 327201309u);
}

// Without a row for the current entry the caller's texts stay as they were.
void TestLoads::foreignFormatEntry()
{
    open();
    const SignalBracket bracket(m_dialog.get());
    m_dialog->m_pComboVidFormat->addItem(QStringLiteral("other"), 5);
    for (const int index : {27, -1}) {
        m_dialog->m_pComboVidFormat->setCurrentIndex(index);
        QString width = QStringLiteral("w");
        QString height = QStringLiteral("h");
        QString rate = QStringLiteral("r");
        m_dialog->getSignalFormatValues(&width, &height, &rate);
        QCOMPARE(width + height + rate, QStringLiteral("whr"));
    }
}

// One combo shows both sides' channels per flow; the send side is read last. The number of flows still
// comes from the receive side.
void TestLoads::channelCountOfTheSendSideWins()
{
    put(0, "ReceiveAudTotalChannels", 8u);
    put(0, "ReceiveAudChannels", 4u);
    put(0, "TransmitAudChannels", 16u);
    put(1, "ReceiveAudChannels", 4u);
    put(1, "TransmitAudChannels", 5u); // no entry: the receive side's stays
    open();
    click(m_dialog->m_pAudioConfig);
    QCOMPARE(m_dialog->m_pComboAudChan->currentData().toUInt(), 16u);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toUInt(), 2u);
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_pComboAudChan->currentData().toUInt(), 4u);
}

void TestLoads::selectFromData()
{
    open();
    QComboBox combo;
    combo.addItem(QStringLiteral("a"), 1);
    combo.addItem(QStringLiteral("b"), 2);
    combo.addItem(QStringLiteral("c"), 2);
    combo.addItem(QStringLiteral("d"), -1);
    combo.addItem(QStringLiteral("e"), Q_UINT64_C(0x700000009)); // its low 32 bits count
    m_dialog->selectFromData(&combo, 2);
    QCOMPARE(combo.currentText(), QStringLiteral("b")); // the first that matches
    m_dialog->selectFromData(&combo, 4294967295u);
    QCOMPARE(combo.currentText(), QStringLiteral("d"));
    m_dialog->selectFromData(&combo, 9);
    QCOMPARE(combo.currentText(), QStringLiteral("e"));
    m_dialog->selectFromData(&combo, 77);
    QCOMPARE(combo.currentText(), QStringLiteral("e"));
}

void TestLoads::useSetting()
{
    open();
    QCheckBox box;
    m_dialog->useSetting(&box, 0x1f, 8);
    QVERIFY(box.isChecked());
    m_dialog->useSetting(&box, 0x17, 8);
    QVERIFY(!box.isChecked());
}

// The hidden box shows the stored switch; the visible one is set at the start and by the user only.
void TestLoads::boardSettingsFollowTheStore()
{
    open();
    QVERIFY(m_dialog->m_pBoardSettings->isChecked());
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 0);
    m_dialog->loadData();
    QVERIFY(!m_dialog->m_pBoardSettings->isChecked());
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
}

// The clock line is hidden for the one type whose load and save use it: see docs/deliberate.md.
void TestLoads::typeEight()
{
    put(0, "VideoType", 1u);
    put(0, "ClockDomain", 44u);
    open();
    addType(8);
    QVERIFY(m_dialog->m_pEditClockDomain->isVisible());
    choose(m_dialog->m_pComboType, 8);
    QCOMPARE(number(0, "VideoType"), 8u);
    QVERIFY(!m_dialog->m_pEditClockDomain->isVisible() && !m_dialog->m_pClockDomainLbl->isVisible());
    QVERIFY(m_dialog->m_pVideoConfig->isVisible() && m_dialog->m_pAudioConfig->isVisible() &&
            m_dialog->m_pAncConfig->isVisible());
    QVERIFY(m_dialog->isMultiType() && m_dialog->isType(8));
    m_dialog->loadData();
    QCOMPARE(m_dialog->m_pEditClockDomain->text(), QStringLiteral("44"));
    QCOMPARE(m_dialog->m_pEditGmId->text(), QStringLiteral("44"));
    choose(m_dialog->m_pComboType, 1);
    QVERIFY(m_dialog->m_pEditClockDomain->isVisible() && m_dialog->m_pClockDomainLbl->isVisible());
}

// Whatever element was chosen, such a type has the video values only.
void TestLoads::typeOfOneElement()
{
    put(0, "VideoType", 1u);
    put(0, "ReceiveSourcePort", 100u);
    put(0, "ReceiveAncSourcePort", 300u);
    open();
    addType(2);
    click(m_dialog->m_pAncConfig);
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("300"));
    choose(m_dialog->m_pComboType, 2);
    QVERIFY(m_dialog->isVideo() && !m_dialog->isAudio() && !m_dialog->isAnc());
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("100"));
    for (const QWidget *hidden : std::initializer_list<QWidget *>{
             m_dialog->m_pVideoConfig, m_dialog->m_pAudioConfig, m_dialog->m_pAncConfig,
             m_dialog->m_pClockDomainLbl, m_dialog->m_pEditClockDomain})
        QVERIFY2(!hidden->isVisible(), qPrintable(hidden->objectName()));
    typeText(m_dialog->m_pEditRecSrcPort, QStringLiteral("101"));
    QCOMPARE(number(0, "ReceiveSourcePort"), 101u);
    QCOMPARE(number(0, "ReceiveAncSourcePort"), 300u);
}

void TestLoads::typeChangeChecksErrors()
{
    put(0, "VideoType", 1u);
    open();
    addType(8);
    click(m_dialog->m_pCheckErrs);
    {
        ModalAnswer answer(QStringLiteral("OK"));
        choose(m_dialog->m_pComboType, 8);
        QCOMPARE(answer.shown(), 0);
    }
    ModalAnswer answer(QStringLiteral("OK"));
    choose(m_dialog->m_pComboType, 1);
    QCOMPARE(answer.shown(), 1);
    QCOMPARE(answer.title(), QStringLiteral("Error List"));
}

void TestLoads::elementCodesOfTheTypes()
{
    open();
    addType(2);
    quint32 receive = 0;
    quint32 send = 0;
    const auto codes = [&] {
        m_dialog->getRecSndTypes(&receive, &send);
        return QStringLiteral("%1 %2").arg(receive).arg(send);
    };
    QCOMPARE(codes(), QStringLiteral("4096 65536"));
    click(m_dialog->m_pAudioConfig);
    QCOMPARE(codes(), QStringLiteral("8192 131072"));
    click(m_dialog->m_pAncConfig);
    QCOMPARE(codes(), QStringLiteral("16384 262144"));
    choose(m_dialog->m_pComboType, 2);
    QCOMPARE(codes(), QStringLiteral("4096 65536"));
}

// Its handler would clear the locks of the channel that is about to be shown.
void TestLoads::lockAllIsClearedSilently()
{
    open();
    click(m_dialog->m_pCheckLockGroup);
    QVERIFY(m_dialog->m_pCheckLockRecSrcAddr->isChecked());
    const QByteArray before = dump();
    choose(m_dialog->m_pChannel, 1);
    QVERIFY(!m_dialog->m_pCheckLockGroup->isChecked());
    QVERIFY(m_dialog->m_pCheckLockRecDstIFace->isChecked() && m_dialog->m_pCheckLockSndDstIFace->isChecked());
    QCOMPARE(dump(), before);
    choose(m_dialog->m_pChannel, 0);
    QVERIFY(m_dialog->m_pCheckLockRecSrcAddr->isChecked());
    QVERIFY(!m_dialog->m_pCheckLockGroup->isChecked());
    click(m_dialog->m_pCheckLockGroup); // still wired
    click(m_dialog->m_pCheckLockGroup);
    QVERIFY(!m_dialog->m_pCheckLockRecSrcAddr->isChecked());
}

// An interface is looked for in four cases; none is ever chosen for the user.
void TestLoads::defaultInterfaceIsNeverSet()
{
    open();
    QCOMPARE(m_dialog->findDefaultInterface(), 0);
    QCOMPARE(m_dialog->m_pEditRecIFace->address(), QStringLiteral("1.0.0.0"));
    QVERIFY(!hasText("KWX\\Internal0\\IpConfig", "ReceiveInterface"));
}

CORVEL_DIALOG_TEST_MAIN(TestLoads)
#include "test_loads.moc"
