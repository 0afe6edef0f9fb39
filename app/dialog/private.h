// SPDX-License-Identifier: MIT
//
// The private side of QCorvel: what its own files share and a host never sees. This header is not
// installed, so that a change here leaves a host's build alone.
#ifndef CORVEL_DIALOG_PRIVATE_H
#define CORVEL_DIALOG_PRIVATE_H

#include "app/corvel.h"

#include <QFont>

class QFrame;
class QHBoxLayout;
struct SdpInput;

// One network field on the page: its value control (an address or a text), boxes and key.
struct NetworkField {
    Side side;
    Field field;
    QLineAddress *address;
    QLineEdit *edit;
    QCheckBox *use;
    QCheckBox *lock;
    QString value() const;
    void setValue(const QString &value) const;
    QWidget *control() const;
};

struct QCorvelPrivate {
    explicit QCorvelPrivate(QCorvel *dialog) : q(dialog) {}

    // Controls, their places and names
    void fillTypes();
    QFont controlFont() const;
    QLabel *newLabel(const char *name, const QString &text);
    QComboBox *newCombo(const char *name, QWidget *parent = nullptr);
    QCheckBox *newCheckBox(const char *name, const QString &text);
    QPushButton *newButton(const char *name, const QString &text);
    QLineEdit *newLineEdit(const char *name);
    QLineAddress *newAddress(const char *name);
    QRadioButton *newRadio(const char *name, const QString &text, QWidget *parent);
    void createHeader();
    void createNmosRow();
    void createFormatRows();
    void createElementRow();
    void createReceiveBlock();
    void createSendBlock();
    void createClockBlock();
    void createSimplePage();
    void createCommands();
    void createErrorDialog();
    void createNmosDialog();
    void loadNmosSwitches();
    void lockInterfaces();
    void buildLayout();
    void layoutHeader(QFrame *band);
    void layoutNmosRow(QHBoxLayout *row);
    void layoutFormatRows();
    void layoutElementRow();
    void layoutBlock(Side side, int row);
    void layoutBlockRows(Side side, int row);
    void layoutClockBlock();
    void underlay(const char *name, int row, int rows, int columns);
    void layoutSimplePage(QWidget *page);
    void layoutCommands(QFrame *band);
    void layoutErrorDialog();
    void layoutNmosDialog();
    void describeControls();
    void setBuddies();
    void setTabOrders();
    int px(double pixels) const;

    // Wiring
    void wire(bool on);

    // Channel settings
    QVector<NetworkField> networkFields() const;
    const NetworkField &networkField(Side side, Field field) const;
    Element currentElement() const;
    int currentChannel() const;
    QByteArray loadFlowSuffix();
    QByteArray saveFlowSuffix() const;
    void loadFlowCount(int channel);
    void loadElement(int channel, const QByteArray &suffix);
    void showValue(Side side, Field field, const QString &value);
    void showFlags(Side side, quint32 flags);
    void loadClock(int channel);
    void loadCommon(int channel);
    void lookForInterfaces();
    void saveShownElement(int channel);
    QString shownValue(Side side, Field field) const;
    quint32 shownFlags(Side side) const;
    void logElement(Side side, int channel) const;
    void showElementRadios(bool video, bool others);
    void applyFixedSize();
    void loadEmbedded();
    void showNoType();
    void showMediaConfig(const MEDIACMD &config);
    void showMediaSettings(Side side, const MEDIACMD &answer);
    void showAudioLayout(Side side, quint32 layout);
    void sendType(quint32 layout);
    void sendMediaSettings(Side side, quint32 code);
    void sendMediaField(const NetworkField &field);
    MEDIACMD mediaCommand(quint32 code) const;
    MEDIACMD elementCommand(quint32 code, Side side) const;
    int engineFlow() const;
    quint32 audioLayout() const;

    // Audio flows
    void writeAudioTotals(quint32 total);
    void enableFlowSelectors();
    void selectOnlyFlow(QRadioButton *flow);
    void showElementControls();
    quint32 comboData(const QComboBox *combo) const;

    // Locks
    QString lockName(const NetworkField &field, int channel) const;
    bool isLocked(const NetworkField &field) const;
    bool concerns(const NetworkField &field, const QObject *sender) const;
    void recordLocks(QObject *from);
    void propagate(const NetworkField &field, int channel);

    // Validation
    void showErrors(const QString &text);
    void finishKeys();
    void leaveField();

    // Clock status
    void showSoftwareClock();
    void showHardwareClock();
    void showSystemClock();

    // Files
    QString settingsFilter() const;
    SdpInput sdpInput(int channel) const;
    void saveSettings(const QString &path);
    void saveSdpFiles(const QString &answer);
    void writeSdpFile(const QString &path, const QString &text);
    bool loadSettings(quint64 file);

    QCorvel *const q;
    QVector<NetworkField> fields; // in the order of the eye: receive, then send
    QFrame *headerBand = nullptr;
    QFrame *commandBand = nullptr;
    QWidget *fullPage = nullptr;
    QWidget *simplePage = nullptr;
    QLabel *rowLabels[10] = {};
    QLabel *useHeads[2] = {};
    int signalDepth = 1; // 0: connected; the dialog starts disconnected
    bool singleFlow = false;
    bool keepNoFlow = false;  // the next load leaves the flow selectors unchecked
    bool showsErrors = false; // the error list's event loop runs
};

#endif
