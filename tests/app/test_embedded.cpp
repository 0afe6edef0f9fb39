// SPDX-License-Identifier: MIT
//
// The embedded dialog and its engine: for each thing a person does, the whole list of commands that the
// engine gets, in order and with every member that is not zero.
#include "app/fakeengine.h"
#include "support/dialog.h"

#include <memory>

using namespace DialogTest;

namespace {

constexpr quint32 kVideoRx = 0x1000, kAudioRx = 0x2000, kAncRx = 0x4000;
constexpr quint32 kVideoTx = 0x10000, kAudioTx = 0x20000, kAncTx = 0x40000;
constexpr quint32 kLayout = 8 << 16 | 2; // four flows of two channels

QStringList list(std::initializer_list<const char *> lines)
{
    QStringList texts;
    for (const char *line : lines)
        texts.append(QLatin1String(line));
    return texts;
}

// What updateSettings sends for the video element as the engine below answers it.
const QStringList kVideoUpdate = list({
    "tell 75123 channel 0 type 1",
    "tell 75121 channel 0 element 4096 from 10.1.1.1 port 101 to 239.1.1.1 port 102 interface 10.0.0.1 flags "
    "26 "
    "layout 524290",
    "tell 75122 channel 0 element 65536 from 10.2.2.2 port 201 to 239.2.2.2 port 202 interface 10.0.0.2 "
    "flags 5 "
    "layout 524290",
    "tell 75124 channel 0 clock 131072 domain 9",
});

// That list with one text exchanged in every line.
QStringList changed(QStringList lines, const char *before, const char *after)
{
    return lines.replaceInStrings(QLatin1String(before), QLatin1String(after));
}

// One locked field for every element, audio flow by flow.
QStringList fieldForAll(bool receive, const QString &field)
{
    QStringList lines;
    const quint32 codes[] = {receive ? kVideoRx : kVideoTx, receive ? kAudioRx : kAudioTx,
                             receive ? kAncRx : kAncTx};
    for (const quint32 code : codes) {
        const int flows = code == kAudioRx || code == kAudioTx ? 8 : 1;
        for (int flow = 0; flow < flows; ++flow) {
            lines += QStringLiteral("tell 75125 channel 0 element %1%2 field %3")
                         .arg(code)
                         .arg(flow ? QStringLiteral(" flow %1").arg(flow) : QString(), field);
        }
    }
    return lines;
}

// An engine with type 1 on two channels and other values for each element.
class TwoChannelEngine : public FakeEngine {
public:
    TwoChannelEngine()
    {
        for (const int channel : {0, 1})
            configs[channel].type = 1;
        configs[0].clockSource = 0x20000;
        configs[0].domain = 9;
        streams[{kVideoRx, 0}] = stream("10.1.1.1", 101, "239.1.1.1", 102, "10.0.0.1", 26, kLayout);
        streams[{kVideoTx, 0}] = stream("10.2.2.2", 201, "239.2.2.2", 202, "10.0.0.2", 5, kLayout);
        streams[{kAudioRx, 0}] = stream("10.3.3.3", 301, "239.3.3.3", 302, "10.0.0.3", 1, kLayout);
        streams[{kAudioTx, 0}] = stream("10.4.4.4", 401, "239.4.4.4", 402, "10.0.0.4", 2, kLayout);
        streams[{kAudioRx, 2}] = stream("10.3.3.5", 321, "239.3.3.5", 322, "10.0.0.3", 3, kLayout);
        streams[{kAudioTx, 2}] = stream("10.4.4.5", 421, "239.4.4.5", 422, "10.0.0.4", 4, kLayout);
        streams[{kAncRx, 0}] = stream("10.5.5.5", 501, "239.5.5.5", 502, "10.0.0.5", 8, kLayout);
        streams[{kAncTx, 0}] = stream("10.6.6.6", 601, "239.6.6.6", 602, "10.0.0.6", 16, kLayout);
    }
};

} // namespace

class TestEmbedded : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void loadAsksTypeThenBothSides();
    void loadShowsTheAnswers();
    void otherTypeReloadsTheMedia();
    void elementAndFlowAreAskedFor();
    void channelIsAskedFor();
    void clockIsCheckedAfterALoad();
    void theGrandmasterIsTheChannels();
    void editSendsAllFour_data();
    void editSendsAllFour();
    void lockedAddressGoesToEveryElement();
    void lockedPortGoesAsNumber();
    void lockBoxSendsAtOnce();
    void lockAllSendsTenFieldsOnce();
    void lockedInterfaceGoesToEveryElement();
    void unlockedOrForeignInterfaceSendsNothing();
    void channelsPerFlowSendsTheLayout();
    void flowsSendTheTypeOnly();
    void formatGoesToTheStore();
    void editsLeaveTheStoreAlone();
    void doneSendsTheFinalSettings();
    void doneByNameTakesTheFieldAlong();
    void cancelGivesBackTheStored();
    void cancelInSingleFlowModeNamesEachFlow();
    void doneTakesTheLastKeyAlong();
    void theFirstCheckedFlowIsTheEngines();
    void cancelRightAfterAKey();
    void cancelFromALockedField_data();
    void cancelFromALockedField();
    void escapeGivesNothingBack();
    void urlsSendsNothing();

private:
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<TwoChannelEngine> m_engine;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestEmbedded::init()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1); // the full page
    StoreTest::put(0, "VideoType", 1);
    StoreTest::put(1, "VideoType", 1);
    m_engine = std::make_unique<TwoChannelEngine>();
    m_dialog = std::make_unique<QCorvel>(nullptr);
    show(m_dialog.get());
}

void TestEmbedded::cleanup()
{
    m_dialog.reset();
    m_engine.reset();
    m_store.reset();
}

void TestEmbedded::loadAsksTypeThenBothSides()
{
    const QStringList load = list(
        {"ask 75110 channel 0", "ask 75111 channel 0 element 4096", "ask 75111 channel 0 element 65536"});
    QCOMPARE(m_engine->taken(), load); // the dialog's own first load
    m_dialog->m_bReloadChannel = true;
    m_dialog->loadData();
    QCOMPARE(m_engine->taken(), load);
    QVERIFY(!m_dialog->m_bReloadChannel);
}

void TestEmbedded::loadShowsTheAnswers()
{
    QCOMPARE(m_dialog->m_pLineRecSrcAddr->address(), QStringLiteral("10.1.1.1"));
    QCOMPARE(m_dialog->m_pEditRecSrcPort->text(), QStringLiteral("101"));
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.1"));
    QCOMPARE(m_dialog->m_pEditRecDstPort->text(), QStringLiteral("102"));
    QCOMPARE(m_dialog->m_pEditRecIFace->address(), QStringLiteral("10.0.0.1"));
    QVERIFY(!m_dialog->m_pCheckRecSrcPort->isChecked() && m_dialog->m_pCheckRecDstPort->isChecked());
    QVERIFY(!m_dialog->m_pCheckRecSrcAddr->isChecked() && m_dialog->m_pCheckRecDstAddr->isChecked());
    QVERIFY(m_dialog->m_pCheckRecDstIFace->isChecked());
    QCOMPARE(m_dialog->m_pLineSndSrcAddr->address(), QStringLiteral("10.2.2.2"));
    QCOMPARE(m_dialog->m_pEditSndSrcPort->text(), QStringLiteral("201"));
    QCOMPARE(m_dialog->m_pLineSndDstAddr->address(), QStringLiteral("239.2.2.2"));
    QCOMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("202"));
    QCOMPARE(m_dialog->m_pEditSndIFace->address(), QStringLiteral("10.0.0.2"));
    QCOMPARE(m_dialog->m_pSimpleAddress->address(), QStringLiteral("239.2.2.2"));
    QCOMPARE(m_dialog->m_pComboClkSrc->currentData().toUInt(), 0x20000u);
    QCOMPARE(m_dialog->m_pEditGmId->text(), QStringLiteral("9"));
    QCOMPARE(m_dialog->m_pComboAudChan->currentData().toUInt(), 2u);
    QCOMPARE(m_dialog->m_pComboAudFlow->currentData().toUInt(), 4u);
    QVERIFY(m_dialog->m_pAudFlowSelect[0]->isChecked());
    QVERIFY(m_dialog->m_pAudFlowSelect[3]->isEnabled() && !m_dialog->m_pAudFlowSelect[4]->isEnabled());
}

void TestEmbedded::otherTypeReloadsTheMedia()
{
    m_engine->taken();
    m_engine->configs[0].type = 8;
    m_dialog->m_bReloadChannel = true;
    m_dialog->loadData();
    QCOMPARE(m_engine->taken(),
             list({"ask 75110 channel 0", "tell 75100 channel 0", "ask 75111 channel 0 element 4096",
                   "ask 75111 channel 0 element 65536"}));
    QVERIFY(m_dialog->m_bReloadChannel);
    QCOMPARE(m_dialog->m_pComboType->currentData().toUInt(), 1u); // the stored one
}

void TestEmbedded::elementAndFlowAreAskedFor()
{
    m_engine->taken();
    click(m_dialog->m_pAudioConfig);
    QCOMPARE(m_engine->taken(), list({"ask 75110 channel 0", "ask 75111 channel 0 element 8192",
                                      "ask 75111 channel 0 element 131072"}));
    click(m_dialog->m_pAudFlowSelect[2]);
    QCOMPARE(m_engine->taken(), list({"ask 75110 channel 0", "ask 75111 channel 0 element 8192 flow 2",
                                      "ask 75111 channel 0 element 131072 flow 2"}));
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.3.3.5"));
    QCOMPARE(m_dialog->m_pSimpleAddress->address(), QStringLiteral("239.2.2.2")); // still video's
    click(m_dialog->m_pAncConfig);
    QCOMPARE(m_engine->taken(), list({"ask 75110 channel 0", "ask 75111 channel 0 element 16384",
                                      "ask 75111 channel 0 element 262144"}));
    QCOMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("602"));
}

void TestEmbedded::channelIsAskedFor()
{
    m_engine->taken();
    StoreTest::put(1, "SignalFormat", 641790011);
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_engine->taken(), list({"ask 75110 channel 1", "ask 75111 channel 1 element 4096",
                                      "ask 75111 channel 1 element 65536"}));
    QCOMPARE(m_dialog->m_pComboVidFormat->currentData().toUInt(), 641790011u);
    QCOMPARE(m_dialog->m_pComboClkSrc->currentData().toUInt(), 0u); // this channel's own
}

// The clock is started for what the load has shown, not for what was shown before.
void TestEmbedded::clockIsCheckedAfterALoad()
{
    QCOMPARE(m_dialog->m_dwPTPDom, 0xffffffffu);
    m_engine->configs[1].clockSource = 0x10000;
    m_engine->configs[1].domain = 77;
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_dwPTPDom, 77u);
    QCOMPARE(QByteArray(m_dialog->m_szIPAddress), QByteArray("10.0.0.1")); // the receive side's, in use
}

// From the store, as stand-alone: the engine knows no grandmaster.
void TestEmbedded::theGrandmasterIsTheChannels()
{
    StoreTest::put(0, "ClockGrandMaster", QStringLiteral("00-1D-C1-FF-FE-00-00-01"));
    StoreTest::put(1, "ClockGrandMaster", QStringLiteral("00-1D-C1-FF-FE-00-00-02"));
    m_dialog->loadData();
    QCOMPARE(m_dialog->m_pEditGmAddress->text(), QStringLiteral("00-1D-C1-FF-FE-00-00-01"));
    m_engine->configs[1].type = 1;
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(m_dialog->m_pEditGmAddress->text(), QStringLiteral("00-1D-C1-FF-FE-00-00-02"));
}

void TestEmbedded::editSendsAllFour_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("port") << QStringLiteral("m_pEditRecSrcPort") << QByteArray("port 101")
                          << QByteArray("port 9");
    QTest::newRow("port, no number") << QStringLiteral("m_pEditSndDstPort") << QByteArray("port 202 ")
                                     << QByteArray("");
    QTest::newRow("domain") << QStringLiteral("m_pEditGmId") << QByteArray("domain 9")
                            << QByteArray("domain 9");
    QTest::newRow("use") << QStringLiteral("m_pCheckRecSrcPort") << QByteArray("flags 26")
                         << QByteArray("flags 27");
    QTest::newRow("do not use") << QStringLiteral("m_pCheckSndSrcAddr") << QByteArray("flags 5")
                                << QByteArray("flags 1");
    QTest::newRow("clock") << QStringLiteral("m_pComboClkSrc") << QByteArray("clock 131072 ")
                           << QByteArray("clock 8388608 ");
}

void TestEmbedded::editSendsAllFour()
{
    QFETCH(QString, control);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    m_engine->taken();
    QWidget *widget = m_dialog->findChild<QWidget *>(control);
    if (QLineEdit *edit = qobject_cast<QLineEdit *>(widget))
        typeText(edit, after.isEmpty() ? QStringLiteral("abc") : QStringLiteral("9"));
    else if (QCheckBox *box = qobject_cast<QCheckBox *>(widget))
        click(box);
    else
        choose(m_dialog->m_pComboClkSrc, 0x800000);
    const QStringList sent = m_engine->taken();
    QCOMPARE(sent.mid(sent.size() - 4), changed(kVideoUpdate, before.constData(), after.constData()));
    QCOMPARE(sent.size() % 4, 0); // nothing but whole updates
}

void TestEmbedded::lockedAddressGoesToEveryElement()
{
    m_dialog->m_pCheckLockSndDstAddr->click();
    m_engine->taken();
    QLineEdit *last = m_dialog->m_pLineSndDstAddr->m_pLineEdit[3];
    QTest::mouseClick(last, Qt::LeftButton);
    QTest::keyClick(last, Qt::Key_A, Qt::ControlModifier);
    QCoreApplication::processEvents();
    m_engine->taken();
    QTest::keyClicks(last, QStringLiteral("7"));
    QTRY_VERIFY(!m_engine->record.isEmpty());
    QCOMPARE(m_engine->taken(), fieldForAll(false, QStringLiteral("8 text 239.2.2.7")) +
                                    changed(kVideoUpdate, "239.2.2.2", "239.2.2.7"));
}

void TestEmbedded::lockedPortGoesAsNumber()
{
    m_dialog->m_pCheckLockRecDstPort->click();
    m_engine->taken();
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(m_engine->taken(), fieldForAll(true, QStringLiteral("2 value 5004")) +
                                    changed(kVideoUpdate, "port 102 ", "port 5004 "));
    // The neighbour without a lock stays between the dialog and its own element.
    typeText(m_dialog->m_pEditRecSrcPort, QStringLiteral("5"));
    QCOMPARE(m_engine->taken().size(), 4);
}

void TestEmbedded::lockBoxSendsAtOnce()
{
    m_engine->taken();
    click(m_dialog->m_pCheckLockRecSrcAddr);
    QCOMPARE(m_engine->taken(), fieldForAll(true, QStringLiteral("4 text 10.1.1.1")));
    click(m_dialog->m_pCheckLockRecSrcAddr);
    QCOMPARE(m_engine->taken(), QStringList());
}

void TestEmbedded::lockAllSendsTenFieldsOnce()
{
    m_engine->taken();
    click(m_dialog->m_pCheckLockGroup);
    QStringList all;
    all += fieldForAll(true, QStringLiteral("8 text 239.1.1.1"));
    all += fieldForAll(true, QStringLiteral("4 text 10.1.1.1"));
    all += fieldForAll(false, QStringLiteral("8 text 239.2.2.2"));
    all += fieldForAll(false, QStringLiteral("4 text 10.2.2.2"));
    all += fieldForAll(true, QStringLiteral("2 value 102"));
    all += fieldForAll(true, QStringLiteral("1 value 101"));
    all += fieldForAll(false, QStringLiteral("2 value 202"));
    all += fieldForAll(false, QStringLiteral("1 value 201"));
    all += fieldForAll(true, QStringLiteral("16 text 10.0.0.1"));
    all += fieldForAll(false, QStringLiteral("16 text 10.0.0.2"));
    QCOMPARE(m_engine->taken(), all);
    click(m_dialog->m_pCheckLockGroup);
    QCOMPARE(m_engine->taken(), QStringList());
}

void TestEmbedded::lockedInterfaceGoesToEveryElement()
{
    m_dialog->m_pEditRecIFace->setAddress(QStringLiteral("127.0.0.9"));
    QLineEdit *last = m_dialog->m_pEditRecIFace->m_pLineEdit[3];
    QTest::mouseClick(last, Qt::LeftButton);
    QTest::keyClick(last, Qt::Key_A, Qt::ControlModifier);
    QCoreApplication::processEvents();
    QCOMPARE(m_engine->taken().size(), 3); // the load
    QTest::keyClicks(last, QStringLiteral("1"));
    QTRY_COMPARE(m_engine->record, fieldForAll(true, QStringLiteral("16 text 127.0.0.1")));
    // Leaving the field runs the alert, which is off; Return itself counts as one more edit.
    m_engine->taken();
    QTest::keyClick(last, Qt::Key_Return);
    QTRY_COMPARE(m_engine->record, fieldForAll(true, QStringLiteral("16 text 127.0.0.1")));
}

void TestEmbedded::unlockedOrForeignInterfaceSendsNothing()
{
    typeAddress(m_dialog->m_pEditSndIFace, QStringLiteral("203.0.113.1")); // locked, of another machine
    click(m_dialog->m_pCheckLockSndDstIFace);                              // unlocked from here
    m_engine->taken();
    typeAddress(m_dialog->m_pEditSndIFace, QStringLiteral("127.0.0.1"));
    QCoreApplication::processEvents();
    QCOMPARE(m_dialog->m_pEditSndIFace->address(), QStringLiteral("127.0.0.1"));
    QCOMPARE(m_engine->taken(), QStringList());
    typeText(m_dialog->m_pEditSndSrcPort, QStringLiteral("201")); // the next edit takes it along
    QCOMPARE(m_engine->taken(), changed(kVideoUpdate, "10.0.0.2", "127.0.0.1"));
}

void TestEmbedded::channelsPerFlowSendsTheLayout()
{
    click(m_dialog->m_pAudioConfig);
    m_engine->taken();
    m_dialog->m_pComboAudChan->setFocus();
    QTest::keyClick(m_dialog->m_pComboAudChan, Qt::Key_Down); // from 2 to 4
    QCOMPARE(m_engine->taken(),
             list({"tell 75123 channel 0 type 1 layout 1048580", // 16 << 16 | 4
                   "tell 75123 channel 0 type 1",
                   "tell 75121 channel 0 element 8192 from 10.3.3.3 port 301 to 239.3.3.3 port 302 "
                   "interface 10.0.0.3 flags 1 layout 1048580",
                   "tell 75122 channel 0 element 131072 from 10.4.4.4 port 401 to 239.4.4.4 port 402 "
                   "interface 10.0.0.4 flags 2 layout 1048580",
                   "tell 75124 channel 0 clock 131072 domain 9"}));
}

void TestEmbedded::flowsSendTheTypeOnly()
{
    click(m_dialog->m_pAudioConfig);
    click(m_dialog->m_pAudFlowSelect[2]);
    m_engine->taken();
    m_dialog->m_pComboAudFlow->setFocus();
    QTest::keyClick(m_dialog->m_pComboAudFlow, Qt::Key_Down); // from 4 to 5
    QCOMPARE(m_engine->taken(),
             list({"tell 75123 channel 0 type 1", "tell 75123 channel 0 type 1",
                   "tell 75121 channel 0 element 8192 flow 2 from 10.3.3.5 port 321 to 239.3.3.5 port 322 "
                   "interface 10.0.0.3 flags 3 layout 655362", // 10 << 16 | 2
                   "tell 75122 channel 0 element 131072 flow 2 from 10.4.4.5 port 421 to 239.4.4.5 "
                   "port 422 interface 10.0.0.4 flags 4 layout 655362",
                   "tell 75124 channel 0 clock 131072 domain 9"}));
    QVERIFY(m_dialog->m_pAudFlowSelect[4]->isEnabled() && !m_dialog->m_pAudFlowSelect[5]->isEnabled());
}

// The video format is no part of the commands: it belongs to the store in both modes.
void TestEmbedded::formatGoesToTheStore()
{
    m_engine->taken();
    choose(m_dialog->m_pComboVidFormat, 641790011);
    QCOMPARE(m_engine->taken(), QStringList());
    QCOMPARE(StoreTest::number(0, "SignalFormat"), 641790011u);
}

void TestEmbedded::editsLeaveTheStoreAlone()
{
    const QByteArray before = StoreTest::dump();
    QVERIFY2(before.contains("VideoType"), before.constData());
    m_engine->taken();
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    click(m_dialog->m_pCheckRecSrcPort);
    choose(m_dialog->m_pComboClkSrc, 0x800000);
    click(m_dialog->m_pCheckLockGroup);
    click(m_dialog->m_pAudioConfig);
    QTest::keyClick(m_dialog->m_pComboAudChan, Qt::Key_Down);
    QVERIFY(m_engine->taken().size() > 100);
    QCOMPARE(StoreTest::dump(), before);
}

void TestEmbedded::doneSendsTheFinalSettings()
{
    m_engine->taken();
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::mouseClick(m_dialog->m_pCmdAccept, Qt::LeftButton);
    QCOMPARE(m_engine->taken(), changed(kVideoUpdate, "75121", "75120"));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_dialog->result(), 1);
    QVERIFY(m_dialog->m_bClosing && !m_dialog->isVisible());
}

// A host may call the slot while a field is being typed into: that edit comes first, locks included, and
// nothing comes after the final settings.
void TestEmbedded::doneByNameTakesTheFieldAlong()
{
    click(m_dialog->m_pCheckLockRecDstPort);
    QLineEdit *port = m_dialog->m_pEditRecDstPort;
    QTest::mouseClick(port, Qt::LeftButton);
    QTest::keyClick(port, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(port, QStringLiteral("77"));
    m_engine->taken();
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "ok"));
    QCoreApplication::processEvents();
    const QStringList update = changed(kVideoUpdate, "port 102 ", "port 77 ");
    QCOMPARE(m_engine->taken(),
             fieldForAll(true, QStringLiteral("2 value 77")) + update + changed(update, "75121", "75120"));
}

// What an update of one element sends from a store whose addresses end in the number given.
static QStringList storedUpdate(quint32 receive, quint32 send, int flow, const QString &tail, int number,
                                const QString &layout)
{
    const QString side =
        QStringLiteral("tell %1 channel 0 element %2%3 from 10.0.%4.%5 port %6 to 239.0.%4.%5 "
                       "port %7 interface 10.9.9.%4%8%9");
    const QString named = flow ? QStringLiteral(" flow %1").arg(flow) : QString();
    return {
        QStringLiteral("tell 75123 channel 0 type 1"),
        side.arg(75121)
            .arg(receive)
            .arg(named, QStringLiteral("1"))
            .arg(number)
            .arg(1000 + number)
            .arg(2000 + number)
            .arg(tail, layout),
        side.arg(75122)
            .arg(send)
            .arg(named, QStringLiteral("2"))
            .arg(number)
            .arg(1000 + number)
            .arg(2000 + number)
            .arg(tail, layout),
        QStringLiteral("tell 75124 channel 0 clock 65536 domain 42"),
    };
}

// Video gets number 1, ancillary data 2, audio flow k 10 + k.
static void fillStored()
{
    StoreTest::put(0, "ClockType", 65536);
    StoreTest::put(0, "ClockDomain", 42);
    StoreTest::put(0, "ReceiveAudChannels", 4);
    StoreTest::put(0, "TransmitAudChannels", 4);
    StoreTest::put(0, "ReceiveAudTotalChannels", 8);
    for (const ChannelKey &key : channelKeys()) {
        const int element = key.element == Element::Video ? 1 : key.element == Element::Anc ? 2 : 10;
        const int side = key.side == Side::Receive ? 1 : 2;
        for (int flow = 0; flow < (key.perFlow ? 8 : 1); ++flow) {
            const QByteArray name = valueName(key, QByteArray::number(flow));
            const int number = element + flow;
            if (key.field == Field::SourceAddress)
                StoreTest::put(0, name, QStringLiteral("10.0.%1.%2").arg(side).arg(number));
            else if (key.field == Field::DestinationAddress)
                StoreTest::put(0, name, QStringLiteral("239.0.%1.%2").arg(side).arg(number));
            else if (key.field == Field::Interface)
                StoreTest::put(0, name, QStringLiteral("10.9.9.%1").arg(side));
            else if (key.field == Field::SourcePort)
                StoreTest::put(0, name, static_cast<quint32>(1000 + number));
            else if (key.field == Field::DestinationPort)
                StoreTest::put(0, name, static_cast<quint32>(2000 + number));
            else if (key.field == Field::Flags)
                StoreTest::put(0, name, static_cast<quint32>(flow == 0 ? 17 : 31));
        }
    }
}

// Video, ancillary data, then audio flow by flow. Each carries the stored layout of the audio channels.
static QStringList storedList()
{
    const QString flags = QStringLiteral(" flags 17");
    const QString stored = QStringLiteral(" layout %1").arg(8 << 16 | 4);
    QStringList list = storedUpdate(kVideoRx, kVideoTx, 0, flags, 1, stored);
    list += storedUpdate(kAncRx, kAncTx, 0, flags, 2, stored);
    for (int flow = 0; flow < 8; ++flow)
        list += storedUpdate(kAudioRx, kAudioTx, flow, flags, 10 + flow, stored);
    return list;
}

void TestEmbedded::cancelGivesBackTheStored()
{
    fillStored();
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    click(m_dialog->m_pAudioConfig);
    const QByteArray before = StoreTest::dump();
    m_engine->taken();
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::mouseClick(m_dialog->m_pCmdCancel, Qt::LeftButton);
    QCOMPARE(m_engine->taken(), storedList());
    QCOMPARE(StoreTest::dump(), before);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_dialog->result(), 0);
    QVERIFY(!m_dialog->isVisible());
    // The dialog can be shown again, and its controls work.
    show(m_dialog.get());
    click(m_dialog->m_pCheckRecSrcAddr);
    QCOMPARE(m_engine->taken().size(), 4);
}

// There the flow buttons do not exclude each other, and still each flow is sent as itself.
void TestEmbedded::cancelInSingleFlowModeNamesEachFlow()
{
    fillStored();
    QMetaObject::invokeMethod(m_dialog.get(), "audChanUseSingle", Q_ARG(bool, true));
    fillStored(); // the switch has written its totals
    m_engine->taken();
    QTest::mouseClick(m_dialog->m_pCmdCancel, Qt::LeftButton);
    QCOMPARE(m_engine->taken(), storedList());
}

// "Cancel" takes no focus, so the field loses it when the dialog is hidden, and must not count as edited
// then: its lock would spread the last flow's value over everything that was just given back.
void TestEmbedded::cancelFromALockedField_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("lock");
    QTest::newRow("address") << QStringLiteral("m_pLineRecDstAddr")
                             << QStringLiteral("m_pCheckLockRecDstAddr");
    QTest::newRow("port") << QStringLiteral("m_pEditRecDstPort") << QStringLiteral("m_pCheckLockRecDstPort");
    QTest::newRow("interface") << QStringLiteral("m_pEditRecIFace")
                               << QStringLiteral("m_pCheckLockRecDstIFace");
}

void TestEmbedded::cancelFromALockedField()
{
    QFETCH(QString, control);
    QFETCH(QString, lock);
    fillStored();
    m_dialog->findChild<QCheckBox *>(lock)->setChecked(true);
    click(m_dialog->m_pCheckErrs);
    QWidget *field = m_dialog->findChild<QWidget *>(control);
    if (const QLineAddress *address = qobject_cast<QLineAddress *>(field))
        field = address->m_pLineEdit[3];
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClicks(field, QStringLiteral("5"));
    QCoreApplication::processEvents();
    QVERIFY(field->hasFocus());
    m_engine->taken();
    ModalAnswer answer(QStringLiteral("OK"));
    QTest::mouseClick(m_dialog->m_pCmdCancel, Qt::LeftButton);
    QCoreApplication::processEvents();
    QCOMPARE(m_engine->taken(), storedList());
    QCOMPARE(answer.shown(), 0);
}

// An address tells of its last key a moment later, which must not be after everything was given back.
void TestEmbedded::cancelRightAfterAKey()
{
    fillStored();
    m_dialog->m_pCheckLockRecDstAddr->setChecked(true);
    QLineEdit *octet = m_dialog->m_pLineRecDstAddr->m_pLineEdit[3];
    QTest::mouseClick(octet, Qt::LeftButton);
    QCoreApplication::processEvents();
    m_engine->taken();
    QTest::keyClick(octet, Qt::Key_7);
    QTest::mouseClick(m_dialog->m_pCmdCancel, Qt::LeftButton);
    QCoreApplication::processEvents();
    QCOMPARE(m_engine->taken(), storedList());
}

// Nor after the final settings: the edit and its lock come first.
void TestEmbedded::doneTakesTheLastKeyAlong()
{
    m_dialog->m_pCheckLockRecDstAddr->setChecked(true);
    QLineEdit *octet = m_dialog->m_pLineRecDstAddr->m_pLineEdit[3];
    QTest::mouseClick(octet, Qt::LeftButton);
    QTest::keyClick(octet, Qt::Key_End);
    QCoreApplication::processEvents();
    m_engine->taken();
    QTest::keyClick(octet, Qt::Key_7);
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "ok"));
    QCoreApplication::processEvents();
    const QStringList sent = m_engine->taken();
    const QString typed = QStringLiteral("239.1.1.17");
    const QStringList spread = sent.filter(QStringLiteral("tell 75125 "));
    QCOMPARE(spread.size(), 20); // by the key, and by leaving the field
    QCOMPARE(spread.filter(typed).size(), 20);
    QCOMPARE(sent.filter(QStringLiteral("tell 75120 ")).size(), 1);
    QVERIFY(sent.filter(QStringLiteral("tell 75120 ")).first().contains(typed));
    QCOMPARE(sent.mid(sent.size() - 4),
             changed(changed(kVideoUpdate, "75121", "75120"), "239.1.1.1 ", "239.1.1.17 "));
}

// Several can be checked where the buttons do not exclude each other.
void TestEmbedded::theFirstCheckedFlowIsTheEngines()
{
    click(m_dialog->m_pAudioConfig);
    m_dialog->disconnectSignals();
    for (QRadioButton *flow : m_dialog->m_pAudFlowSelect) {
        flow->setAutoExclusive(false);
        flow->setChecked(flow == m_dialog->m_pAudFlowSelect[2] || flow == m_dialog->m_pAudFlowSelect[5]);
    }
    m_dialog->connectSignals();
    m_engine->taken();
    m_dialog->loadData();
    QCOMPARE(m_engine->taken(), list({"ask 75110 channel 0", "ask 75111 channel 0 element 8192 flow 2",
                                      "ask 75111 channel 0 element 131072 flow 2"}));
}

void TestEmbedded::escapeGivesNothingBack()
{
    m_engine->taken();
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_dialog->result(), 0);
    QCOMPARE(m_engine->taken(), QStringList());
}

void TestEmbedded::urlsSendsNothing()
{
    m_engine->taken();
    QSignalSpy finished(m_dialog.get(), &QDialog::finished);
    QTest::mouseClick(m_dialog->m_pCmdURLs, Qt::LeftButton);
    QCOMPARE(m_engine->taken(), QStringList());
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_dialog->result(), 3);
}

// No clock client is started here: what matters is which one the dialog asks for.
extern "C" PTP_HANDLE rkPTPStart(const char *)
{
    return nullptr;
}

CORVEL_DIALOG_TEST_MAIN(TestEmbedded)
#include "test_embedded.moc"
