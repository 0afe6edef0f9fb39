// SPDX-License-Identifier: MIT
//
// QCorvel: the "IP Video Setup" dialog. It shows the SMPTE ST 2110 settings of one channel and element
// at a time and writes every edit to the configuration store at once.
//
// What others may use of it is declared here, everything else stands behind one pointer. Every control is a
// public member whose object name is the member's name (array members carry the index), so that tests,
// style sheets and assistive tools find it. Everything runs on the user interface thread; store calls may
// block it for as long as the disk does.
#ifndef CORVEL_CORVEL_H
#define CORVEL_CORVEL_H

#include "app/mediacommand.h"
#include "channel/channelkeys.h"
#include "rkptp.h"

#include <QDialog>
#include <QJsonDocument>
#include <QList>
#include <QMap>
#include <QString>
#include <QUrl>

#include <memory>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QLineAddress;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedLayout;
class QTextEdit;
class QTimer;
class QTreeWidgetItem;
struct QCorvelPrivate;

class QCorvel : public QDialog {
    Q_OBJECT

public:
    // The stand-alone program passes true and gets the dark style sheet; false applies none.
    QCorvel(bool standAlone, QWidget *parent);
    // Embedded in a host, which may supply the style sheet ":/theme/default.qss".
    Q_INVOKABLE explicit QCorvel(QWidget *parent);
    ~QCorvel() override;

    void setLiveUpdates(bool on);
    void CenterOnScreen();
    void shutdown();

signals:
    void loadFile(QString);
    void nmosCloseThread();

    // The order of the slots is part of the dialog's interface: hosts call some of them by index.
public slots:
    void ok();
    void load();
    void save();
    void saveElement();
    void cancel();
    void showurls();
    void onSettingChanged();
    void onBoardSettingChanged(bool value);
    void onSelectionChanged(bool value);
    void onFileSettingChanged(bool value);
    void onTypeSettingChanged(int index);
    void onChannelSettingChanged(int index);
    void onSettingChanged(int index);
    void onSettingChanged(bool value);
    void onItemChanged(QTreeWidgetItem *pItem, int column);
    void timerEvent(QTimerEvent *event) override;
    void onLockSetting(bool);
    void onLockGroup(bool);
    void updateLockedItems(QObject *sender);
    void updateLockedItemsForScopes(QObject *sender);
    void onFormatChanged(int);
    void enableAudChannel(int);
    void enableAudFlow(int);
    void onInterfaceEdit();
    void onInterfaceAlert();
    void audChanUseSingle(bool);
    void onUseGmId(bool);
    void onSendSdp(void *sdp, int size, int channel, bool isSender);
    void onShowNmosCfg();
    void onSetNmosCfg();
    void onSetConfig();
    void onMdnsDeviceFound(QString serviceName, QUrl url, QJsonDocument selfDoc);
    void onMdnsConnect();
    void onNmosThreadReady(int);
    void toggleNmosLog(bool);

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

public:
    // Frame: construction, style sheet
    void init(bool standAlone);
    void applyStyleSheet(const QString &resource);
    static bool isStandAlone();
    static double fontFactor();

    // Frame: controls, combo contents, signal wiring
    void initCtrls();
    void popCombos();
    void connectSignals();
    void disconnectSignals();

    // Channel settings: store to controls and back
    void loadData();
    void loadDataStandAlone();
    void saveDataStandAlone();
    void updateSettings(bool final);
    void reloadMedia();
    QString cfgValue(const char *name, bool isString, int channel, bool isPort = false) const;
    void setCfgValue(const char *name, const QString &value, bool isString, int channel);
    QString channelIpKeyName(int channel) const;
    void selectFromData(QComboBox *combo, quint32 value);
    void useSetting(QCheckBox *checkBox, quint32 flags, quint32 bit);
    bool isType(quint32 type) const;
    bool isMultiType(quint32 type) const;
    bool isMultiType() const;
    bool isVideo() const;
    bool isAudio() const;
    bool isAnc() const;
    void getRecSndTypes(quint32 *receive, quint32 *send) const;
    void getSignalFormatValues(QString *width, QString *height, QString *rate) const;

    // Named configurations
    void findConfigs();
    void followConfig();

    // Locks
    void checkLocksForConfig();

    // Validation
    int checkErrors();
    int findDefaultInterface();
    QString GetIP(QString text) const;

    // Clock status
    void checkPTP();

    // Files
    void loadSdp(quint64 file);

    // NMOS link
    void loadNmosCfg();
    void overrideNmos(bool checked);
    void nmosEventTimeout(int channel);
    QTimer *nmosTimer(int channel);
    void restartNmos();
    void asyncPopulateSenders();

    // Header band
    QLabel *m_pChannelLbl = nullptr;
    QComboBox *m_pChannel = nullptr;
    QComboBox *m_pConfig = nullptr; // stand-alone only

    // NMOS row
    QCheckBox *m_pNmosOverride = nullptr;
    QCheckBox *m_pNmosOutLog = nullptr;
    QPushButton *m_pOpenNmosCfg = nullptr;
    QCheckBox *m_pCheckErrs = nullptr;

    // Type, format and audio rows
    QLabel *m_pTypeLbl = nullptr;
    QComboBox *m_pComboType = nullptr;
    QLabel *m_pVidFormatLbl = nullptr;
    QComboBox *m_pComboVidFormat = nullptr;
    QLabel *m_pAudChanLbl = nullptr;
    QComboBox *m_pComboAudChan = nullptr;
    QLabel *m_pAudFlowLbl = nullptr;
    QComboBox *m_pComboAudFlow = nullptr;
    QCheckBox *m_pAudFlowUseSingle = nullptr;

    // Element row
    QGroupBox *m_pRadioGroup = nullptr;
    QRadioButton *m_pVideoConfig = nullptr;
    QRadioButton *m_pAudioConfig = nullptr;
    QRadioButton *m_pAncConfig = nullptr;
    QLabel *m_pAudFlowSelectLbl = nullptr;
    QGroupBox *m_pAudFlowGroup = nullptr;
    QRadioButton *m_pAudFlowSelect[kFlowCount] = {};
    QCheckBox *m_pCheckLockGroup = nullptr;

    // Receive block
    QLabel *m_pReceiveLbl = nullptr;
    QComboBox *m_pComboReceive = nullptr;
    QLabel *m_pPTimeLblRx = nullptr;
    QComboBox *m_pComboPTimeRx = nullptr;
    QLineAddress *m_pLineRecSrcAddr = nullptr;
    QLineEdit *m_pEditRecSrcPort = nullptr;
    QLineAddress *m_pLineRecDstAddr = nullptr;
    QLineEdit *m_pEditRecDstPort = nullptr;
    QLineAddress *m_pEditRecIFace = nullptr;
    QCheckBox *m_pCheckRecSrcAddr = nullptr;
    QCheckBox *m_pCheckRecSrcPort = nullptr;
    QCheckBox *m_pCheckRecDstAddr = nullptr;
    QCheckBox *m_pCheckRecDstPort = nullptr;
    QCheckBox *m_pCheckRecDstIFace = nullptr;
    QCheckBox *m_pCheckLockRecSrcAddr = nullptr;
    QCheckBox *m_pCheckLockRecSrcPort = nullptr;
    QCheckBox *m_pCheckLockRecDstAddr = nullptr;
    QCheckBox *m_pCheckLockRecDstPort = nullptr;
    QCheckBox *m_pCheckLockRecDstIFace = nullptr;

    // Send block
    QLabel *m_pSendLbl = nullptr;
    QComboBox *m_pComboSend = nullptr;
    QLabel *m_pPTimeLblTx = nullptr;
    QComboBox *m_pComboPTimeTx = nullptr;
    QLineAddress *m_pLineSndSrcAddr = nullptr;
    QLineEdit *m_pEditSndSrcPort = nullptr;
    QLineAddress *m_pLineSndDstAddr = nullptr;
    QLineEdit *m_pEditSndDstPort = nullptr;
    QLineAddress *m_pEditSndIFace = nullptr;
    QCheckBox *m_pCheckSndSrcAddr = nullptr;
    QCheckBox *m_pCheckSndSrcPort = nullptr;
    QCheckBox *m_pCheckSndDstAddr = nullptr;
    QCheckBox *m_pCheckSndDstPort = nullptr;
    QCheckBox *m_pCheckSndDstIFace = nullptr;
    QCheckBox *m_pCheckLockSndSrcAddr = nullptr;
    QCheckBox *m_pCheckLockSndSrcPort = nullptr;
    QCheckBox *m_pCheckLockSndDstAddr = nullptr;
    QCheckBox *m_pCheckLockSndDstPort = nullptr;
    QCheckBox *m_pCheckLockSndDstIFace = nullptr;

    // Clock block
    QLabel *m_pClockSrcLbl = nullptr;
    QComboBox *m_pComboClkSrc = nullptr;
    QLabel *m_pDomainLbl = nullptr;
    QLineEdit *m_pEditGmId = nullptr; // the PTP domain, "ClockDomain"
    QCheckBox *m_pUseGmId = nullptr;
    QLineEdit *m_pEditGmAddress = nullptr;
    QLabel *m_pClockMstrLbl = nullptr;
    QLineEdit *m_pComboClkMstr = nullptr; // read-only clock information
    QLabel *m_pClockDomainLbl = nullptr;
    QLineEdit *m_pEditClockDomain = nullptr; // clock time

    // Simple page
    QLabel *m_pSimpleLabel = nullptr;
    QLineAddress *m_pSimpleAddress = nullptr;

    // Command band
    QPushButton *m_pCmdLoad = nullptr;
    QPushButton *m_pCmdSave = nullptr;
    QPushButton *m_pCmdSaveElement = nullptr;
    QPushButton *m_pCmdAccept = nullptr;
    QPushButton *m_pCmdCancel = nullptr;
    QPushButton *m_pCmdURLs = nullptr; // embedded only

    // Board settings: state only, never shown
    QGroupBox *m_pBoardSettings = nullptr;

    // Error list
    QDialog *m_pErrDlg = nullptr;
    QTextEdit *m_pEditErrMsg = nullptr;
    QPushButton *m_pErrOk = nullptr;

    // "NMOS Config" dialog
    QDialog *m_pNmosCfg = nullptr;
    QLineEdit *m_pEditNmosDmn = nullptr;
    QLineAddress *m_pLineNmosIp = nullptr;
    QLineAddress *m_pLineNmosSrv = nullptr;
    QLineEdit *m_pEditNmosPort = nullptr;
    QPushButton *m_pSetNmosCfg = nullptr;

    // Layouts
    QStackedLayout *m_pSwapLayout = nullptr; // page 0 full, page 1 simple
    QGridLayout *m_pFullLayout = nullptr;
    QGridLayout *m_pSimpleLayout = nullptr;

    // State
    bool m_bReloadChannel = false;
    bool m_liveUpdates = true;
    bool m_bClosing = false;
    bool bNmosUseLog = false;
    quint32 m_dwPTPDom = 0xffffffff;
    PTP_HANDLE hPTP = nullptr;
    int timerId = 0;
    char m_szIPAddress[16] = {};
    QString m_szMacAddr;
    QString m_fontFamily;
    int m_fontSize = 10;
    QString m_lastPath;
    QMap<QString, bool> m_LockValues;
    QList<QTimer *> m_pNmosEventTimers;
    char m_szNmosTxRx[kFlowCount] = {'r', 'r', 'r', 'r', 'r', 'r', 'r', 'r'};

private:
    const std::unique_ptr<QCorvelPrivate> d;
};

// Holds the dialog's signals disconnected while it lives; only the outermost one reconnects.
class SignalBracket {
public:
    explicit SignalBracket(QCorvel *dialog) : m_dialog(dialog) { m_dialog->disconnectSignals(); }
    ~SignalBracket() { m_dialog->connectSignals(); }
    SignalBracket(const SignalBracket &) = delete;
    SignalBracket &operator=(const SignalBracket &) = delete;

private:
    QCorvel *m_dialog;
};

#endif
