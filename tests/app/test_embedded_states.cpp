// SPDX-License-Identifier: MIT
//
// The embedded dialog apart from its command lists: what it shows without an engine, how a host makes it,
// and answers that no engine should give.
#include "app/fakeengine.h"
#include "support/dialog.h"

#include <QAbstractItemView>
#include <QPointer>

#include <memory>

using namespace DialogTest;

namespace {

constexpr quint32 kVideoRx = 0x1000, kVideoTx = 0x10000;

} // namespace

class TestEmbeddedStates : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup() { m_store.reset(); }
    void withoutAHookNothingIsSent();
    void hookMayReplaceItself();
    void withoutAnEngineTheTypeIsNotAvailable();
    void channelWithoutTypeLeavesTheRestAlone();
    void typeComesBackWithTheNextChannel();
    void editWithoutTypeIsStillSent();
    void machineWithoutChannelsSendsNothing();
    void startWritesOnlyTheTwoSwitches();
    void hostMakesItThroughTheMetaObject();
    void onlyTheHostsThemeIsUsed();
    void controlsOfTheEmbeddedDialog();
    void textsWithoutAnEndAreCut();
    void audioLayoutOfNothing();
    void settingsFileShowsTheStore();
    void doneChecksTheInterfaces();
    void hostDeletesItWhileABoxIsOpen_data();
    void hostDeletesItWhileABoxIsOpen();
    void hostDeletesItInsideASlot_data();
    void hostDeletesItInsideASlot();

private:
    static void useControl(QCorvel *dialog, const QString &how);

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestEmbeddedStates::withoutAHookNothingIsSent()
{
    setMediaHook({});
    MEDIACMD command;
    command.code = MediaCode::GetConfig;
    QCOMPARE(ipSetMode(&command, MediaMode::Ask), 0);
    QCOMPARE(command.type, 0u);
    setMediaHook([](MEDIACMD *, int mode) { return mode + 41; });
    QCOMPARE(ipSetMode(&command, MediaMode::Ask), 42);
    QCOMPARE(ipSetMode(nullptr, MediaMode::Ask), 0);
    setMediaHook({});
}

void TestEmbeddedStates::hookMayReplaceItself()
{
    const QByteArray big(1000, 'x'); // so that the function owns memory
    setMediaHook([big](MEDIACMD *, int) {
        setMediaHook({});
        return static_cast<int>(big.size());
    });
    MEDIACMD command;
    QCOMPARE(ipSetMode(&command, MediaMode::Tell), 1000);
    QCOMPARE(ipSetMode(&command, MediaMode::Tell), 0);
}

void TestEmbeddedStates::withoutAnEngineTheTypeIsNotAvailable()
{
    StoreTest::put(0, "VideoType", 1);
    QCorvel dialog(nullptr);
    show(&dialog);
    QCOMPARE(dialog.m_pComboType->count(), 1);
    QCOMPARE(dialog.m_pComboType->currentText(), QStringLiteral("N/A"));
    QCOMPARE(dialog.m_pComboType->currentData().toInt(), -1);
    QVERIFY(!dialog.isMultiType() && dialog.isVideo() && !dialog.isAudio() && !dialog.isAnc());
    QVERIFY(!dialog.m_pVideoConfig->isHidden());
    QVERIFY(dialog.m_pAudioConfig->isHidden() && dialog.m_pAncConfig->isHidden());
    dialog.loadData();
    QCOMPARE(dialog.m_pComboType->count(), 1);
}

void TestEmbeddedStates::channelWithoutTypeLeavesTheRestAlone()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    FakeEngine engine;
    engine.configs[0].type = 1;
    engine.streams[{kVideoRx, 0}] = stream("10.1.1.1", 101, "239.1.1.1", 102, "10.0.0.1", 31);
    QCorvel dialog(nullptr);
    show(&dialog);
    click(dialog.m_pAudioConfig);
    engine.streams.clear();
    dialog.m_pLineRecSrcAddr->setAddress(QStringLiteral("9.8.7.6"));
    engine.taken();
    choose(dialog.m_pChannel, 1); // the engine knows nothing of it
    QCOMPARE(engine.taken(), QStringList(QStringLiteral("ask 75110 channel 1")));
    QCOMPARE(dialog.m_pComboType->currentText(), QStringLiteral("N/A"));
    QCOMPARE(dialog.m_pLineRecSrcAddr->address(), QStringLiteral("9.8.7.6"));
    // What only a type with several elements has is gone.
    QVERIFY(dialog.m_pAudioConfig->isHidden() && dialog.m_pAudFlowGroup->isHidden());
    QVERIFY(!dialog.m_pComboAudChan->isEnabled());
    QCOMPARE(dialog.m_pCmdSaveElement->text(), QStringLiteral("Save Video SDP"));
}

void TestEmbeddedStates::typeComesBackWithTheNextChannel()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    StoreTest::put(1, "VideoType", 1);
    FakeEngine engine;
    engine.configs[1].type = 1;
    engine.streams[{kVideoRx, 0}] = stream("10.1.1.1", 101, "239.1.1.1", 102, "10.0.0.1", 31);
    QCorvel dialog(nullptr);
    show(&dialog);
    QCOMPARE(dialog.m_pComboType->currentText(), QStringLiteral("N/A"));
    engine.taken();
    choose(dialog.m_pChannel, 1);
    QCOMPARE(dialog.m_pComboType->count(), 1);
    QCOMPARE(dialog.m_pComboType->currentData().toUInt(), 1u);
    QVERIFY(!dialog.m_pAudioConfig->isHidden() && !dialog.m_pAncConfig->isHidden());
    QCOMPARE(dialog.m_pLineRecSrcAddr->address(), QStringLiteral("10.1.1.1"));
    QCOMPARE(engine.taken().size(), 3); // filling the combo again has told the engine nothing
    choose(dialog.m_pChannel, 0);
    QCOMPARE(dialog.m_pComboType->currentText(), QStringLiteral("N/A"));
}

// The signals are back after a load that stopped early.
void TestEmbeddedStates::editWithoutTypeIsStillSent()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    FakeEngine engine;
    QCorvel dialog(nullptr);
    show(&dialog);
    engine.taken();
    click(dialog.m_pCheckRecSrcPort);
    const QStringList sent = engine.taken();
    QCOMPARE(sent.size(), 4);
    QCOMPARE(sent.first(), QStringLiteral("tell 75123 channel 0 type 4294967295"));
}

void TestEmbeddedStates::machineWithoutChannelsSendsNothing()
{
    setGlobalDword(StorePath::Config, "MaxIntChannels", 0);
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    FakeEngine engine;
    engine.configs[-1].type = 1;
    QCorvel dialog(nullptr);
    show(&dialog);
    QCOMPARE(dialog.m_pComboType->currentText(), QStringLiteral("N/A"));
    click(dialog.m_pCheckRecSrcPort);
    click(dialog.m_pCheckLockGroup);
    dialog.cancel();
    QCOMPARE(engine.taken(), QStringList());
}

void TestEmbeddedStates::startWritesOnlyTheTwoSwitches()
{
    FakeEngine engine;
    engine.configs[0].type = 1;
    QCorvel dialog(nullptr);
    show(&dialog);
    choose(dialog.m_pChannel, 1);
    choose(dialog.m_pChannel, 0);
    const QList<QByteArray> lines = StoreTest::dump().trimmed().split('\n');
    QCOMPARE(lines.size(), 2);
    QVERIFY(StoreTest::hasNumber(StorePath::AvHAL, "nmosoverride"));
    QVERIFY(StoreTest::hasNumber(StorePath::Debug, "NMOSUseLog"));
}

void TestEmbeddedStates::hostMakesItThroughTheMetaObject()
{
    FakeEngine engine;
    engine.configs[0].type = 1;
    QWidget host;
    const std::unique_ptr<QObject> made(QCorvel::staticMetaObject.newInstance(Q_ARG(QWidget *, &host)));
    QVERIFY(made);
    QCorvel *dialog = qobject_cast<QCorvel *>(made.get());
    QVERIFY(dialog && dialog->parentWidget() == &host);
    QVERIFY(!QCorvel::isStandAlone());
    QCOMPARE(engine.taken().first(), QStringLiteral("ask 75110 channel 0"));
}

// This program has no ":/theme/default.qss", so the dialog that asks for it has no style sheet either.
void TestEmbeddedStates::onlyTheHostsThemeIsUsed()
{
    QCOMPARE(QCorvel(nullptr).styleSheet(), QString());
    QCOMPARE(QCorvel(false, nullptr).styleSheet(), QString());
    QVERIFY(!QCorvel::isStandAlone());
    QVERIFY(!QCorvel(true, nullptr).styleSheet().isEmpty());
    QVERIFY(QCorvel::isStandAlone()); // the last one made decides for the process
}

void TestEmbeddedStates::controlsOfTheEmbeddedDialog()
{
    QCorvel dialog(nullptr);
    show(&dialog);
    QVERIFY(!dialog.m_pConfig);
    QVERIFY(dialog.m_pCmdCancel->isVisible() && dialog.m_pCmdURLs->isVisible());
    QCOMPARE(dialog.m_pChannelLbl->text(), QStringLiteral("Channel"));
    QCOMPARE(dialog.m_pSwapLayout->currentIndex(), 1); // NMOS is not overridden
    dialog.onSetConfig();                              // reachable by name; there is nothing to switch
}

void TestEmbeddedStates::textsWithoutAnEndAreCut()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    FakeEngine engine;
    engine.configs[0].type = 1;
    MEDIACMD &answer = engine.streams[{kVideoRx, 0}];
    memset(answer.sourceAddress, '1', sizeof answer.sourceAddress);
    memset(answer.destinationAddress, '.', sizeof answer.destinationAddress);
    memset(answer.interfaceAddress, '\xff', sizeof answer.interfaceAddress);
    answer.sourcePort = 0xffffffff;
    answer.flags = 0xffffffff;
    answer.audioLayout = 0xffffffff;
    QCorvel dialog(nullptr);
    show(&dialog);
    QCOMPARE(dialog.m_pLineRecSrcAddr->m_pLineEdit[0]->text().count(QLatin1Char('1')),
             dialog.m_pLineRecSrcAddr->m_pLineEdit[0]->text().size());
    QVERIFY(dialog.m_pLineRecSrcAddr->m_pLineEdit[0]->text().size() <= 64);
    QCOMPARE(dialog.m_pEditRecSrcPort->text(), QStringLiteral("4294967295"));
    engine.taken();
    click(dialog.m_pCheckSndSrcPort); // what came in goes out again, cut to the size of the record
    QCOMPARE(engine.taken().size(), 4);
}

void TestEmbeddedStates::audioLayoutOfNothing()
{
    FakeEngine engine;
    engine.configs[0].type = 1;
    QCorvel dialog(nullptr);
    QCOMPARE(dialog.m_pComboAudChan->currentData().toUInt(), 0u);
    engine.streams[{kVideoRx, 0}].audioLayout = 16u << 16; // total of 16, channels per flow unknown: 2 each
    dialog.loadData();
    QCOMPARE(dialog.m_pComboAudFlow->currentData().toUInt(), 8u);
    // The number of flows is the receive side's, the channels per flow the send side's.
    engine.streams[{kVideoRx, 0}].audioLayout = 8u << 16 | 4;
    engine.streams[{kVideoTx, 0}].audioLayout = 24u << 16 | 8;
    dialog.loadData();
    QCOMPARE(dialog.m_pComboAudFlow->currentData().toUInt(), 2u);
    QCOMPARE(dialog.m_pComboAudChan->currentData().toUInt(), 8u);
}

// A file goes to the store, and the dialog shows what it brought although the engine has other settings;
// the next edit sends it.
void TestEmbeddedStates::settingsFileShowsTheStore()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    StoreTest::put(0, "VideoType", 1);
    StoreTest::put(0, "ReceiveSourcePort", 4711);
    FakeEngine engine;
    engine.configs[0].type = 1;
    engine.streams[{kVideoRx, 0}].sourcePort = 101;
    QCorvel dialog(nullptr);
    show(&dialog);
    QCOMPARE(dialog.m_pEditRecSrcPort->text(), QStringLiteral("101"));
    engine.taken();
    dialog.loadDataStandAlone();
    QCOMPARE(dialog.m_pEditRecSrcPort->text(), QStringLiteral("4711"));
    QCOMPARE(engine.taken(), QStringList());
    click(dialog.m_pCheckRecSrcAddr);
    const QStringList sent = engine.taken();
    QCOMPARE(sent.size(), 4);
    QVERIFY2(sent[1].contains(QStringLiteral("port 4711")), qPrintable(sent[1]));
}

// "Done" sends before it checks, and closes whatever the check finds.
void TestEmbeddedStates::doneChecksTheInterfaces()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    for (const char *name : {"ReceiveInterface", "TransmitInterface", "ReceiveAudInterface",
                             "ReceiveAncInterface", "TransmitAncInterface"})
        StoreTest::put(0, name, QStringLiteral("127.0.0.1"));
    StoreTest::put(0, "TransmitAudInterface", QStringLiteral("203.0.113.1"));
    FakeEngine engine;
    engine.configs[0].type = 1;
    QCorvel dialog(nullptr);
    show(&dialog);
    click(dialog.m_pCheckErrs);
    engine.taken();
    ModalAnswer answer(QStringLiteral("OK"));
    QTest::mouseClick(dialog.m_pCmdAccept, Qt::LeftButton);
    QCOMPARE(answer.shown(), 1);
    QCOMPARE(answer.text(),
             QStringLiteral("Audio IP 203.0.113.1 does not exist!  Please correct the adapter or setting\n"));
    const QStringList sent = engine.taken();
    QCOMPARE(sent.size(), 4);
    QVERIFY(sent[1].startsWith(QStringLiteral("tell 75120 ")));
    QCOMPARE(dialog.result(), 1);
}

void TestEmbeddedStates::hostDeletesItWhileABoxIsOpen_data()
{
    QTest::addColumn<QString>("button");
    for (const char *button : {"m_pCmdAccept", "m_pCmdLoad", "m_pCmdSave", "m_pCmdSaveElement"})
        QTest::newRow(button) << QString::fromLatin1(button);
}

void TestEmbeddedStates::hostDeletesItWhileABoxIsOpen()
{
    QFETCH(QString, button);
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    StoreTest::put(0, "ReceiveInterface", QStringLiteral("203.0.113.1"));
    FakeEngine engine;
    engine.configs[0].type = 1;
    const QPointer<QCorvel> dialog(new QCorvel(nullptr));
    show(dialog);
    click(dialog->m_pCheckErrs);
    bool deleted = false;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        QPointer<QWidget> box = QApplication::activeModalWidget();
        if (!box || !box->isVisible())
            return;
        timer.stop();
        deleted = true;
        delete dialog;
        if (box) // a file dialog is not the dialog's own
            QMetaObject::invokeMethod(box, "reject", Qt::QueuedConnection);
    });
    timer.start(5);
    click(dialog->findChild<QAbstractButton *>(button));
    QVERIFY(deleted);
    QVERIFY(!dialog);
}

// The control that was used is still on the call stack when the dialog goes.
void TestEmbeddedStates::hostDeletesItInsideASlot_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"type by key", "type from the list", "nmos by mouse", "nmos by key", "alert"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void TestEmbeddedStates::useControl(QCorvel *dialog, const QString &how)
{
    if (how == QLatin1String("type by key")) {
        dialog->m_pComboType->setFocus();
        QTest::keyClick(dialog->m_pComboType, Qt::Key_Home);
    } else if (how == QLatin1String("type from the list")) {
        dialog->m_pComboType->showPopup();
        QAbstractItemView *list = dialog->m_pComboType->view();
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClick(list, Qt::Key_Return);
    } else if (how == QLatin1String("nmos by mouse")) {
        click(dialog->m_pNmosOverride);
    } else if (how == QLatin1String("nmos by key")) {
        dialog->m_pNmosOverride->setFocus();
        QTest::keyClick(dialog->m_pNmosOverride, Qt::Key_Space);
    } else {
        QTest::mouseClick(dialog->m_pEditRecIFace->m_pLineEdit[0], Qt::LeftButton);
        QTest::keyClick(dialog->m_pEditRecIFace->m_pLineEdit[0], Qt::Key_Return);
    }
}

void TestEmbeddedStates::hostDeletesItInsideASlot()
{
    QFETCH(QString, how);
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    StoreTest::put(0, "ReceiveInterface", QStringLiteral("203.0.113.1"));
    FakeEngine engine;
    engine.configs[0].type = 1;
    put(engine.streams[{kVideoRx, 0}].interfaceAddress, "203.0.113.1");
    const QPointer<QCorvel> dialog(new QCorvel(nullptr));
    show(dialog);
    click(dialog->m_pCheckErrs);
    {
        const SignalBracket bracket(dialog);
        dialog->m_pComboType->addItem(QStringLiteral("another"), 3);
        dialog->m_pComboType->setCurrentIndex(1);
    }
    QTimer timer;
    bool deleted = false;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (const QWidget *box = QApplication::activeModalWidget(); box && box->isVisible()) {
            timer.stop();
            delete dialog;
            deleted = true;
        }
    });
    timer.start(5);
    useControl(dialog, how);
    QVERIFY(deleted);
    QVERIFY(!dialog);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(QApplication::allWidgets().isEmpty());
}

CORVEL_DIALOG_TEST_MAIN(TestEmbeddedStates)
#include "test_embedded_states.moc"
