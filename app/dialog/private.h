// SPDX-License-Identifier: MIT
//
// The private side of QCorvel: what its own files share and a host never sees. This header is not
// installed, so a change here leaves a host's build alone. What only one file needs stays in that file.
#ifndef CORVEL_DIALOG_PRIVATE_H
#define CORVEL_DIALOG_PRIVATE_H

#include "app/corvel.h"
#include "app/view/channelview.h"
#include "app/view/clockstate.h"
#include "app/view/notices.h"
#include "app/view/signalwiring.h"
#include "app/view/survivors.h"
#include "files/fileload.h"

#include <QFont>

#include <functional>
#include <memory>
#include <vector>

class QFrame;
class QHBoxLayout;

struct QCorvelPrivate {
    explicit QCorvelPrivate(QCorvel *dialog) : q(dialog) {}

    // ---- roof
    void listConnections();
    void connectButtons();

    // ---- class floor: frame
    int px(double pixels) const;
    void applyFixedSize();

    // ---- class floor: controls
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
    bool askForNmos(bool ask); // true: NMOS may take over. The dialog may be gone afterwards
    void fillNmosQuestion(QDialog *question);
    void takeView(); // after all controls are made
    void fillTypes();

    // ---- class floor: layout
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

    // ---- class floor: notices
    void placeNotices();
    void showBar(const QString &text);      // over the top of the page; empty: none
    void showStanding(const QString &text); // in the command band, while nothing else is told; empty: none
    void tell(const QString &text, int seconds); // in the command band

    // ---- class floor: accessibility
    void describeControls();
    void describeFields();
    void setBuddies();
    void setTabOrders();

    // ---- class floor: what is shown
    int channel() const { return view.channel(); }
    const NetworkField &networkField(Side side, Field field) const { return view.fields().at(side, field); }
    void showElementRadios(bool video, bool others);
    void showElementControls();
    void enableFlowSelectors();

    // ---- slots: what one subject offers to the others
    // Every write that the user causes: values, one commit. While values runs, a host may delete the dialog.
    void write(const std::function<void()> &values);
    void loadFile(const QString &path);
    DescriptionLoad storeDescription(const QList<SdpStore> &values);
    void saveSettings(const QString &path);
    void saveDescriptions(const QString &path);
    void saveElementDescriptions(const QString &path, int channel);
    void connectHistory();
    void loadNmosSwitches();
    void lockInterfaces();
    bool isLocked(const NetworkField &field) const;
    void loadEmbedded();
    void sendSettings(bool final);
    void sendType(quint32 audioLayout);
    void sendField(const NetworkField &field);
    void showErrors(const QString &text);
    void watchMarks();
    void markLater();
    void markFields();
    void tellStored(QWidget *field);
    QString storedIn(const QWidget *control);
    void watchEscape();
    void restoreField(QWidget *focus);
    void showClockState();
    void watchTips();
    void updateLoadTip();
    void updateLockAllTip();

    QCorvel *const q;
    ChannelView view;
    SignalWiring wiring;
    Notices notices;
    QWidget *fullPage = nullptr;
    QLabel *rowLabels[10] = {}; // beside the network fields, in their order
    bool showsErrors = false;   // the error list's event loop runs
    bool toldSize = false;      // the log knows that the screen is too small
    bool marksDue = false;      // markFields() comes from the event loop
    int clockTicks = 0;         // of the status timer
    ClockStateLines clockLines;
    std::shared_ptr<Survivors> survivors = std::make_shared<Survivors>();
    std::vector<std::unique_ptr<QObject>> watches; // event filters; gone before the controls are
    bool fileWorkRuns = false; // a file is being loaded or saved, and its event loop may run
    std::vector<std::function<void()>> afterFileWork;
};

#endif
