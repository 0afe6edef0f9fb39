// SPDX-License-Identifier: MIT
//
// The controls: names, texts, combo contents, start values, places; and what is wired to what.
#include "channel/videoformats.h"
#include "fake/recorder.h"
#include "support/dialog.h"
#include "support/snapshot.h"

#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QMap>
#include <QRegularExpression>
#include <QValidator>

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

QByteArray stylesheetOf(const QWidget *widget)
{
    return widget->styleSheet().toLatin1();
}

// "text:data" of each entry.
QStringList entries(const QComboBox *combo)
{
    QStringList list;
    for (int i = 0; i < combo->count(); ++i)
        list.append(combo->itemText(i) + QLatin1Char(':') + combo->itemData(i).toString());
    return list;
}

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(';'));
}

// Takes one connection away; false when it was not there.
template<class Sender, class Signal, class Slot>
bool unlink(Sender *sender, Signal signal, QCorvel *dialog, Slot slot)
{
    return QObject::disconnect(sender, signal, dialog, slot);
}

} // namespace

class TestControls : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup()
    {
        m_dialog.reset();
        m_store.reset();
    }
    void everyMemberHasItsName();
    void texts();
    void fieldLabels();
    void combos();
    void channelList_data();
    void channelList();
    void fourChannelsWhenNothingIsStored();
    void firstStartWritesTwoValues();
    void switchesComeFromTheStore();
    void interfacesStartLocked();
    void videoIsChosenFirst();
    void grandmasterStartsOff();
    void standAloneControls();
    void embeddedControls();
    void commandOrder();
    void gridBands();
    void styleSheets();
    void returnPressesNoButton();
    void freeTextInPortsAndDomains();
    void boardSettingsHoldNothing();
    void wiring();
    void wiredOnceForAll();
    void signalBracketsNest();
    void reconnectingTwiceConnectsOnce();

private:
    void open(bool standAlone = true) { m_dialog = std::make_unique<QCorvel>(standAlone, nullptr); }
    QWidget *control(const QByteArray &name) const
    {
        return m_dialog->findChild<QWidget *>(QLatin1String(name));
    }
    QString textOf(const char *name) const { return control(name)->property("text").toString(); }

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

// The public members of the header are the list; every one is there at the first show under its own name.
void TestControls::everyMemberHasItsName()
{
    QFile header(QDir::cleanPath(QStringLiteral(CORVEL_TEST_DATA "/../../app/corvel.h")));
    QVERIFY(header.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(header.readAll()).section(QLatin1String("\nprivate:"), 0, 0);
    const QRegularExpression line(QStringLiteral("^    (Q\\w+) \\*(m_p\\w+)(\\[kFlowCount\\])? = "),
                                  QRegularExpression::MultilineOption);
    open();
    show(m_dialog.get());
    QCorvel embedded(false, nullptr); // has the one button the other mode does not
    int members = 0;
    for (auto match = line.globalMatch(text); match.hasNext(); ++members) {
        const QRegularExpressionMatch member = match.next();
        const QCorvel *dialog =
            member.captured(2) == QLatin1String("m_pCmdURLs") ? &embedded : m_dialog.get();
        const bool isArray = !member.captured(3).isEmpty();
        for (int i = 0; i < (isArray ? kFlowCount : 1); ++i) {
            const QString name = member.captured(2) + (isArray ? QString::number(i) : QString());
            const QList<QObject *> found = dialog->findChildren<QObject *>(name);
            QVERIFY2(found.size() == 1, qPrintable(name));
            QVERIFY2(found.first()->inherits(member.captured(1).toLatin1().constData()), qPrintable(name));
        }
    }
    QVERIFY(members > 80);
    // A name could stand on another control; these show that it does not.
    QCOMPARE(m_dialog->m_pEditGmId->objectName(), QStringLiteral("m_pEditGmId"));
    QCOMPARE(m_dialog->m_pComboClkMstr->objectName(), QStringLiteral("m_pComboClkMstr"));
    QCOMPARE(m_dialog->m_pAudFlowSelect[7]->objectName(), QStringLiteral("m_pAudFlowSelect7"));
}

void TestControls::texts()
{
    const struct {
        const char *name;
        const char *text;
    } rows[] = {
        {"m_pChannelLbl", "Channel/Instance"},
        {"m_pTypeLbl", "Type"},
        {"m_pVidFormatLbl", "Video Format"},
        {"m_pAudChanLbl", "Audio Channels per Flow"},
        {"m_pAudFlowLbl", "Audio Flows"},
        {"m_pReceiveLbl", "Receive"},
        {"m_pSendLbl", "Send / \xce\xbc"
                       "s"}, // Greek mu, not the micro sign
        {"m_pVideoConfig", "Video"},
        {"m_pAudioConfig", "Audio"},
        {"m_pAncConfig", "Anc"},
        {"m_pPTimeLblTx", "Packet Time Tx"},
        {"m_pPTimeLblRx", "Packet Time Rx"},
        {"m_pCheckLockGroup", "lock all"},
        {"m_pCheckLockRecSrcAddr", "lock"},
        {"m_pCheckLockSndDstIFace", "lock"},
        {"m_pClockSrcLbl", "Clock Source"},
        {"m_pClockMstrLbl", "Clock Info"},
        {"m_pClockDomainLbl", "Clock Time"},
        {"m_pUseGmId", "Clock Mac Address / ID"},
        {"m_pDomainLbl", "Domain"},
        {"m_pSimpleLabel", "Multicast Address"},
        {"m_pNmosOverride", "Override NMOS Settings"},
        {"m_pNmosOutLog", "NMOS Log to file"},
        {"m_pOpenNmosCfg", "NMOS Config"},
        {"m_pCheckErrs", "Check and display errors"},
        {"m_pCmdLoad", "Load File"},
        {"m_pCmdSave", "Save File"},
        {"m_pCmdSaveElement", "Save Video SDP"},
        {"m_pCmdAccept", "Done"},
        {"m_pCmdCancel", "Cancel"},
        {"m_pComboClkMstr", "No PTP Found"},
    };
    open();
    for (const auto &row : rows)
        QCOMPARE(textOf(row.name), QString::fromUtf8(row.text));
    QCOMPARE(m_dialog->m_pErrDlg->windowTitle(), QStringLiteral("Error List"));
}

// "Source port" of the receive block and "Source Port" of the send block: see docs/deliberate.md.
void TestControls::fieldLabels()
{
    open();
    const QStringList texts =
        words("Source Address;Source port;Destination Address;Destination Port;Interface;"
              "Source Address;Source Port;Destination Address;Destination Port;Interface");
    const int rows[] = {5, 6, 7, 8, 9, 11, 12, 13, 14, 15};
    QStringList found;
    for (const int row : rows) {
        for (QLabel *label : m_dialog->m_pFullLayout->parentWidget()->findChildren<QLabel *>()) {
            int place[4] = {};
            const int index = m_dialog->m_pFullLayout->indexOf(label);
            m_dialog->m_pFullLayout->getItemPosition(index, &place[0], &place[1], &place[2], &place[3]);
            if (index >= 0 && place[0] == row && place[1] == 0)
                found.append(label->text());
        }
    }
    QCOMPARE(found, texts);
}

void TestControls::combos()
{
    QMap<QByteArray, QStringList> wanted;
    wanted["m_pChannel"] = words("Channel-0:0;Channel-1:1;Channel-2:2;Channel-3:3");
    wanted["m_pComboType"] = words("SMPTE-2110:1");
    wanted["m_pComboClkSrc"] =
        words("Internal:0;H/W SMPTE 2059/PTP:131072;S/W SMPTE 2059/PTP:65536;Free Run:8388608");
    wanted["m_pComboReceive"] = words("IPv4:4;IPv6:6");
    wanted["m_pComboSend"] = words("IPv4:4;IPv6:6");
    wanted["m_pComboAudChan"] = words("0:0;2:2;4:4;6:6;8:8;10:10;12:12;14:14;16:16");
    wanted["m_pComboAudFlow"] = words("1:1;2:2;3:3;4:4;5:5;6:6;7:7;8:8");
    wanted["m_pComboPTimeTx"] = words("125:125;1000:1000");
    wanted["m_pComboPTimeRx"] = words("125:125;1000:1000");
    QStringList formats;
    for (const VideoFormat &format : videoFormats())
        formats.append(QStringLiteral("%1:%2").arg(QLatin1String(format.text)).arg(format.id));
    wanted["m_pComboVidFormat"] = formats;
    open();
    const auto check = [&] {
        for (auto row = wanted.cbegin(); row != wanted.cend(); ++row) {
            const QComboBox *combo = qobject_cast<QComboBox *>(control(row.key()));
            QVERIFY2(combo, row.key().constData());
            QCOMPARE(entries(combo), row.value());
            QCOMPARE(combo->currentIndex(), 0);
        }
    };
    check();
    const SignalBracket bracket(m_dialog.get());
    m_dialog->popCombos(); // every combo is cleared first
    check();
}

void TestControls::channelList_data()
{
    QTest::addColumn<quint32>("stored");
    QTest::addColumn<int>("offered");
    QTest::newRow("0") << 0u << 0;
    QTest::newRow("1") << 1u << 1;
    QTest::newRow("12") << 12u << 12;
    QTest::newRow("all bits") << 4294967295u << 0;
}

void TestControls::channelList()
{
    QFETCH(quint32, stored);
    QFETCH(int, offered);
    setGlobalDword(StorePath::Config, "MaxIntChannels", stored);
    open();
    show(m_dialog.get());
    QCOMPARE(m_dialog->m_pChannel->count(), offered);
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), offered ? 0 : -1);
    QCOMPARE(m_dialog->m_LockValues.contains(QStringLiteral("ReceiveInterface%1").arg(offered)), false);
    if (offered == 0)
        return;
    QCOMPARE(m_dialog->m_pChannel->itemText(offered - 1), QStringLiteral("Channel-%1").arg(offered - 1));
    QCOMPARE(m_dialog->m_pChannel->itemData(offered - 1).toInt(), offered - 1);
}

void TestControls::fourChannelsWhenNothingIsStored()
{
    open();
    QCOMPARE(m_dialog->m_pChannel->count(), 4);
    QCOMPARE(m_dialog->m_pChannel->currentText(), QStringLiteral("Channel-0"));
}

void TestControls::firstStartWritesTwoValues()
{
    open();
    show(m_dialog.get());
    letItTick(m_dialog.get());
    const Snapshot two = firstStart();
    QCOMPARE(snapshot(), two);
    m_dialog.reset();
    open();
    QCOMPARE(snapshot(), two);
}

void TestControls::switchesComeFromTheStore()
{
    setGlobalDword(StorePath::AvHal, "nmosoverride", 2); // any number but 0
    setGlobalDword(StorePath::Debug, "NMOSUseLog", 1);
    const QByteArray before = dump();
    open();
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    QVERIFY(m_dialog->m_pNmosOutLog->isChecked());
    QVERIFY(m_dialog->bNmosUseLog);
    QVERIFY(m_dialog->m_pBoardSettings->isChecked());
    QCOMPARE(dump(), before);
}

// On every channel, not only the shown one.
void TestControls::interfacesStartLocked()
{
    setGlobalDword(StorePath::Config, "MaxIntChannels", 3);
    open();
    for (int channel = 0; channel < 3; ++channel) {
        m_dialog->m_pChannel->setCurrentIndex(channel);
        QVERIFY(m_dialog->m_pCheckLockRecDstIFace->isChecked() &&
                m_dialog->m_pCheckLockSndDstIFace->isChecked());
        for (const char *name : {"m_pCheckLockRecSrcAddr", "m_pCheckLockRecSrcPort", "m_pCheckLockRecDstAddr",
                                 "m_pCheckLockRecDstPort", "m_pCheckLockSndSrcAddr", "m_pCheckLockSndSrcPort",
                                 "m_pCheckLockSndDstAddr", "m_pCheckLockSndDstPort", "m_pCheckLockGroup"})
            QVERIFY2(!qobject_cast<QCheckBox *>(control(name))->isChecked(), name);
        QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("ReceiveInterface%1").arg(channel)));
        QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("TransmitInterface%1").arg(channel)));
    }
}

void TestControls::videoIsChosenFirst()
{
    open();
    QVERIFY(m_dialog->m_pVideoConfig->isChecked());
    QVERIFY(m_dialog->isVideo() && !m_dialog->isAudio() && !m_dialog->isAnc());
    QVERIFY(m_dialog->m_pAudFlowGroup->isHidden() && m_dialog->m_pAudFlowSelectLbl->isHidden());
    for (const QComboBox *combo : {m_dialog->m_pComboAudChan, m_dialog->m_pComboAudFlow,
                                   m_dialog->m_pComboPTimeRx, m_dialog->m_pComboPTimeTx})
        QVERIFY(!combo->isEnabled());
    QVERIFY(m_dialog->m_pAudFlowSelect[0]->isChecked());
    // Eleven radio buttons in two sets: choosing a flow leaves the element alone.
    m_dialog->m_pAudFlowSelect[5]->setChecked(true);
    QVERIFY(m_dialog->m_pVideoConfig->isChecked() && !m_dialog->m_pAudFlowSelect[0]->isChecked());
    QVERIFY(!m_dialog->m_pCheckErrs->isChecked());
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
}

void TestControls::grandmasterStartsOff()
{
    put(0, "ClockGrandMaster", QStringLiteral("00-1D-C1"));
    open();
    QVERIFY(!m_dialog->m_pUseGmId->isChecked());
    QVERIFY(!m_dialog->m_pEditGmAddress->isEnabled());
    QCOMPARE(stylesheetOf(m_dialog->m_pEditGmAddress), QByteArray("background-color:#404040;"));
    QCOMPARE(m_dialog->m_pEditGmAddress->text(), QStringLiteral("00-1D-C1"));
    QVERIFY(m_dialog->m_pComboClkMstr->isReadOnly());
    QVERIFY(!m_dialog->m_pEditClockDomain->isReadOnly()); // see docs/deliberate.md
}

void TestControls::standAloneControls()
{
    open();
    show(m_dialog.get());
    QVERIFY(m_dialog->m_pConfig && m_dialog->m_pConfig->isVisible());
    QVERIFY(m_dialog->m_pCmdCancel && !m_dialog->m_pCmdCancel->isVisible());
    QVERIFY(!m_dialog->m_pCmdURLs);
}

void TestControls::embeddedControls()
{
    open(false);
    show(m_dialog.get());
    QVERIFY(!m_dialog->m_pConfig);
    QVERIFY(m_dialog->m_pCmdCancel->isVisible());
    QVERIFY(m_dialog->m_pCmdURLs && m_dialog->m_pCmdURLs->isVisible());
    QCOMPARE(m_dialog->m_pCmdURLs->text(), QStringLiteral("Show URLs"));
    QCOMPARE(m_dialog->m_pChannelLbl->text(), QStringLiteral("Channel"));
    m_dialog->onSetConfig(); // no selector: nothing to switch to
    QCOMPARE(entries(m_dialog->m_pComboType), words("N/A:-1"));
}

void TestControls::commandOrder()
{
    open(false);
    show(m_dialog.get());
    int left = -1;
    for (const QPushButton *button : {m_dialog->m_pCmdLoad, m_dialog->m_pCmdSave, m_dialog->m_pCmdAccept,
                                      m_dialog->m_pCmdCancel, m_dialog->m_pCmdURLs}) {
        const QPoint place = button->mapTo(m_dialog.get(), QPoint());
        QVERIFY2(place.x() > left, qPrintable(button->text()));
        QVERIFY(place.y() > 590);
        left = place.x();
    }
}

void TestControls::gridBands()
{
    open();
    const struct {
        const char *name;
        int row;
        int column;
    } places[] = {
        {"m_pReceiveLbl", 4, 0},           {"m_pLineRecSrcAddr", 5, 1},    {"m_pCheckRecSrcAddr", 5, 2},
        {"m_pCheckLockRecSrcAddr", 5, 3},  {"m_pEditRecSrcPort", 6, 1},    {"m_pLineRecDstAddr", 7, 1},
        {"m_pEditRecDstPort", 8, 1},       {"m_pEditRecIFace", 9, 1},      {"m_pCheckRecDstIFace", 9, 2},
        {"m_pCheckLockRecDstIFace", 9, 3}, {"m_pSendLbl", 10, 0},          {"m_pLineSndSrcAddr", 11, 1},
        {"m_pEditSndSrcPort", 12, 1},      {"m_pLineSndDstAddr", 13, 1},   {"m_pEditSndDstPort", 14, 1},
        {"m_pEditSndIFace", 15, 1},        {"m_pCheckSndDstIFace", 15, 2}, {"m_pCheckLockSndDstIFace", 15, 3},
        {"m_pCmdSaveElement", 19, 3},
    };
    for (const auto &place : places) {
        int row = -1;
        int column = -1;
        int unused = 0;
        const int index = m_dialog->m_pFullLayout->indexOf(control(place.name));
        QVERIFY2(index >= 0, place.name);
        m_dialog->m_pFullLayout->getItemPosition(index, &row, &column, &unused, &unused);
        QVERIFY2(row == place.row && column == place.column, place.name);
        QCOMPARE(m_dialog->m_pFullLayout->itemAtPosition(row, column)->widget(), control(place.name));
    }
    QCOMPARE(m_dialog->m_pSwapLayout->count(), 2);
    QCOMPARE(m_dialog->m_pSwapLayout->widget(0)->layout(), static_cast<QLayout *>(m_dialog->m_pFullLayout));
    QCOMPARE(m_dialog->m_pSwapLayout->widget(1)->layout(), static_cast<QLayout *>(m_dialog->m_pSimpleLayout));
    QVERIFY(m_dialog->m_pSimpleLayout->indexOf(m_dialog->m_pSimpleAddress) >= 0);
    QVERIFY(m_dialog->m_pSimpleLayout->indexOf(m_dialog->m_pSimpleLabel) >= 0);
}

void TestControls::styleSheets()
{
    open();
    QCOMPARE(stylesheetOf(m_dialog->m_pNmosOverride), QByteArray("QCheckBox{padding-top:10px;}"));
    QCOMPARE(stylesheetOf(m_dialog->m_pNmosOutLog), QByteArray("QCheckBox{padding-top:10px;}"));
    QCOMPARE(stylesheetOf(m_dialog->m_pRadioGroup), QByteArray("QGroupBox{margin-top:0px}"));
    QCOMPARE(stylesheetOf(m_dialog->m_pAudFlowGroup), QByteArray("QGroupBox{margin-top:0px}"));
    QCOMPARE(stylesheetOf(m_dialog->m_pCmdSaveElement), QByteArray("padding-top: 2px; padding-bottom: 2px;"));
    QCOMPARE(stylesheetOf(m_dialog->m_pEditRecSrcPort), QByteArray("padding-top: 2px; padding-bottom: 2px;"));
    QCOMPARE(m_dialog->m_pCmdSaveElement->focusPolicy(), Qt::NoFocus);
    QCOMPARE(m_dialog->m_pCmdCancel->focusPolicy(), Qt::NoFocus);
}

// Return in a field must not press "Load File", still less "Done".
void TestControls::returnPressesNoButton()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    open();
    show(m_dialog.get());
    for (const QPushButton *button : m_dialog->findChildren<QPushButton *>()) {
        if (button->window() == m_dialog->m_pErrDlg)
            continue;
        QVERIFY2(!button->autoDefault() && !button->isDefault(), qPrintable(button->objectName()));
    }
    for (const char *name : {"m_pCmdLoad", "m_pCmdSave", "m_pCmdSaveElement", "m_pOpenNmosCfg"}) {
        QPushButton *button = qobject_cast<QPushButton *>(control(name));
        connect(button, &QPushButton::clicked, [name] { QFAIL(name); });
    }
    for (QLineEdit *edit :
         {m_dialog->m_pEditRecSrcPort, m_dialog->m_pEditGmId, m_dialog->m_pLineRecDstAddr->m_pLineEdit[3]})
        QTest::keyClick(edit, Qt::Key_Return);
    QVERIFY(m_dialog->isVisible());
}

// A validator would hold back the end of an edit for the very texts that are stored as 0.
void TestControls::freeTextInPortsAndDomains()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    open();
    show(m_dialog.get());
    for (const QLineEdit *edit :
         {m_dialog->m_pEditRecSrcPort, m_dialog->m_pEditRecDstPort, m_dialog->m_pEditSndSrcPort,
          m_dialog->m_pEditSndDstPort, m_dialog->m_pEditGmId, m_dialog->m_pEditGmAddress,
          m_dialog->m_pEditClockDomain, m_dialog->m_pEditNmosPort})
        QVERIFY2(!edit->validator() && edit->inputMask().isEmpty(), qPrintable(edit->objectName()));
    put(0, "ReceiveSourcePort", 9u);
    typeText(m_dialog->m_pEditRecSrcPort, QStringLiteral("abc"));
    QCOMPARE(number(0, "ReceiveSourcePort"), 0u);
    typeText(m_dialog->m_pEditRecSrcPort, QStringLiteral("4294967297"));
    QCOMPARE(number(0, "ReceiveSourcePort"), 1u);
}

// An unchecked group box would disable whatever it holds.
void TestControls::boardSettingsHoldNothing()
{
    open();
    show(m_dialog.get());
    QVERIFY(m_dialog->m_pBoardSettings->isCheckable());
    QVERIFY(!m_dialog->m_pBoardSettings->isVisible());
    QVERIFY(!m_dialog->m_pBoardSettings->isChecked());
    QCOMPARE(m_dialog->m_pBoardSettings->findChildren<QWidget *>().size(), 0);
    const QByteArray before = dump();
    m_dialog->m_pBoardSettings->setChecked(true); // not wired
    QCOMPARE(dump(), before);
}

void TestControls::wiring()
{
    open();
    QCorvel *d = m_dialog.get();
    const auto toggled = &QAbstractButton::toggled;
    const auto chosen = qOverload<int>(&QComboBox::currentIndexChanged);
    const auto edited = &QLineEdit::editingFinished;
    const auto setting = qOverload<>(&QCorvel::onSettingChanged);
    const auto settingInt = qOverload<int>(&QCorvel::onSettingChanged);
    const auto settingBool = qOverload<bool>(&QCorvel::onSettingChanged);
    const auto all = [=] {
        QList<bool> there;
        there << unlink(d->m_pNmosOverride, toggled, d, &QCorvel::onBoardSettingChanged);
        there << unlink(d->m_pNmosOutLog, toggled, d, &QCorvel::toggleNmosLog);
        for (const char *field : {"SrcAddr", "SrcPort", "DstAddr", "DstPort", "DstIFace"}) {
            for (const char *side : {"Rec", "Snd"}) {
                const QByteArray name = QByteArray(side) + field;
                there << unlink(qobject_cast<QCheckBox *>(control("m_pCheck" + name)), toggled, d,
                                settingBool);
                there << unlink(qobject_cast<QCheckBox *>(control("m_pCheckLock" + name)), toggled, d,
                                &QCorvel::onLockSetting);
            }
        }
        there << unlink(d->m_pChannel, chosen, d, &QCorvel::onChannelSettingChanged);
        there << unlink(d->m_pComboType, chosen, d, &QCorvel::onTypeSettingChanged);
        for (QComboBox *combo :
             {d->m_pComboReceive, d->m_pComboSend, d->m_pComboClkSrc, d->m_pComboPTimeTx, d->m_pComboPTimeRx})
            there << unlink(combo, chosen, d, settingInt);
        for (QLineEdit *edit :
             {d->m_pEditRecSrcPort, d->m_pEditRecDstPort, d->m_pEditSndSrcPort, d->m_pEditSndDstPort,
              d->m_pEditClockDomain, d->m_pEditGmId, d->m_pEditGmAddress})
            there << unlink(edit, edited, d, setting);
        for (QLineAddress *address : {d->m_pLineRecDstAddr, d->m_pLineRecSrcAddr, d->m_pSimpleAddress,
                                      d->m_pLineSndDstAddr, d->m_pLineSndSrcAddr}) {
            there << unlink(address, &QLineAddress::addressChanged, d, setting);
            there << unlink(address, &QLineAddress::processReturn, d, setting);
        }
        for (QLineAddress *address : {d->m_pEditRecIFace, d->m_pEditSndIFace}) {
            there << unlink(address, &QLineAddress::addressChanged, d, &QCorvel::onInterfaceEdit);
            there << unlink(address, &QLineAddress::processReturn, d, &QCorvel::onInterfaceAlert);
        }
        for (QRadioButton *radio : {d->m_pVideoConfig, d->m_pAudioConfig, d->m_pAncConfig})
            there << unlink(radio, toggled, d, &QCorvel::onSelectionChanged);
        for (QRadioButton *radio : d->m_pAudFlowSelect)
            there << unlink(radio, toggled, d, &QCorvel::onSelectionChanged);
        there << unlink(d->m_pCheckLockGroup, toggled, d, &QCorvel::onLockGroup);
        there << unlink(d->m_pComboVidFormat, chosen, d, &QCorvel::onFormatChanged);
        there << unlink(d->m_pComboAudChan, chosen, d, &QCorvel::enableAudChannel);
        there << unlink(d->m_pComboAudFlow, chosen, d, &QCorvel::enableAudFlow);
        there << unlink(d->m_pUseGmId, toggled, d, &QCorvel::onUseGmId);
        return there;
    };
    QCOMPARE(all().count(false), 0);
    QCOMPARE(all().count(true), 0);
    d->disconnectSignals();
    d->connectSignals();
    QCOMPARE(all().count(false), 0);
    d->connectSignals(); // the bracket's other half takes the same connections away
    d->disconnectSignals();
    QCOMPARE(all().count(true), 0);
}

void TestControls::wiredOnceForAll()
{
    open();
    m_dialog->disconnectSignals();
    QCorvel *d = m_dialog.get();
    const auto clicked = &QPushButton::clicked;
    QVERIFY(unlink(d->m_pOpenNmosCfg, clicked, d, &QCorvel::onShowNmosCfg));
    QVERIFY(unlink(d->m_pConfig, qOverload<int>(&QComboBox::currentIndexChanged), d, &QCorvel::onSetConfig));
    QVERIFY(unlink(d->m_pCmdLoad, clicked, d, &QCorvel::load));
    QVERIFY(unlink(d->m_pCmdSave, clicked, d, &QCorvel::save));
    QVERIFY(unlink(d->m_pCmdSaveElement, clicked, d, &QCorvel::saveElement));
    QVERIFY(unlink(d->m_pCmdAccept, clicked, d, &QCorvel::ok));
    QVERIFY(unlink(d->m_pCmdCancel, clicked, d, &QCorvel::cancel)); // hidden, yet wired
    QVERIFY(QObject::disconnect(d->m_pErrOk, clicked, d->m_pErrDlg, &QDialog::accept));
    QVERIFY(unlink(d->m_pSetNmosCfg, clicked, d, &QCorvel::onSetNmosCfg));
}

// Only the outermost bracket connects again.
void TestControls::signalBracketsNest()
{
    open();
    const auto tick = [this] {
        Recorder::clear();
        m_dialog->m_pCheckRecDstPort->toggle();
        return !Recorder::calls().isEmpty();
    };
    QVERIFY(tick());
    m_dialog->disconnectSignals();
    m_dialog->disconnectSignals();
    QVERIFY(!tick());
    m_dialog->connectSignals();
    QVERIFY(!tick());
    m_dialog->loadData(); // brackets itself
    QVERIFY(!tick());
    m_dialog->connectSignals();
    QVERIFY(tick());
}

// More calls of connectSignals than of disconnectSignals neither connect twice nor count.
void TestControls::reconnectingTwiceConnectsOnce()
{
    open();
    m_dialog->connectSignals();
    m_dialog->connectSignals();
    Recorder::clear();
    m_dialog->m_pCheckRecDstPort->toggle();
    QCOMPARE(Recorder::callsOf("save").size(), 1);
    m_dialog->disconnectSignals();
    Recorder::clear();
    m_dialog->m_pCheckRecDstPort->toggle();
    QVERIFY(Recorder::calls().isEmpty());
}

CORVEL_DIALOG_TEST_MAIN(TestControls)
#include "test_controls.moc"
