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
#include "app/view/storewatch.h"
#include "app/view/survivors.h"
#include "channel/backlog.h"
#include "channel/neighbours.h"
#include "channel/storecalls.h"
#include "files/fileload.h"

#include <QFont>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
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
    void tellSize(); // to the log, once, when the screen has no room for it

    // ---- class floor: controls
    QFont controlFont() const;
    QLabel *newLabel(const char *name, const QString &text);
    QComboBox *newCombo(const char *name);
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
    void createPages(); // before the controls that stand on them
    void buildLayout();
    void layoutHeader();
    void layoutNmosRow(QHBoxLayout *row);
    void layoutFormatRows();
    void layoutElementRow();
    void layoutBlock(Side side, int row);
    void layoutBlockRows(Side side, int row);
    void layoutClockBlock();
    void underlay(const char *name, int row, int rows, int columns);
    void layoutSimplePage();
    void layoutCommands();
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
    DescriptionLoad storeDescription(const SdpStores &values);
    void saveSettings(const QString &path);
    void saveDescriptions(const QString &path);
    void saveElementDescriptions(const QString &path, int channel);
    void connectHistory();
    void refreshHistory();
    void listConfigs(); // in the header, as they are on disk now
    void watchStore();
    void meetNeighbours();
    void showFleet(); // what the fleet's service tells of the shown configuration
    void showStandingLines();
    void followStore(); // at each tick
    void takeOver();    // shows what others wrote
    void followNode();  // shows the NMOS switches and settings that no load shows
    void followSwitches(quint32 nmosOverride);
    QString shownConfiguration() const; // empty where none is shown
    bool namesStore() const;            // the header shows the configuration that is written to
    void noteStore();                   // all that is there now is about to be shown
    void finishKeys();
    void finishPort();
    void noteResult(bool stored); // of a write
    QString storePlace();         // as the user is told of it
    bool storeKept();             // what waits for the store; false while another program holds it still
    QString takeUpKept();         // at the start: from a run that ended before; returns what to tell of it
    void leaveKept();             // at the end
    void watchTrouble();          // at each tick
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
    QVector<QLineAddress *> addresses;
    Notices notices;
    QFrame *headerBand = nullptr, *commandBand = nullptr;
    QWidget *fullPage = nullptr, *simplePage = nullptr;
    QWidget *ground = nullptr;  // where the next controls are made: to move one is to style it anew
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

    // What the shown values belong to: where a key belongs that is still to be told of.
    struct Place {
        ChannelView::Place view = {};
        QString configuration;
    };
    Place place() const;
    void go(const Place &place);
    Place shown;

    // Set by the roof, because what they run stands above those who call them.
    std::function<void()> showNews = [] {}; // takeOver
    std::function<void()> atTick = [] {};

    StoreWatch storeWatch;
    std::unique_ptr<Neighbours> neighbours;
    QString neighbourLine, fleetLine;
    QString lastStorePath;
    quint64 mark = 0;         // of what is shown, see storeNews
    quint32 nmosOverride = 0; // as last read or written
    bool takingOver = false;
    int steps = 0;          // UserStep
    bool stored = true;     // all writes of the step so far
    int ticksOfTrouble = 0; // since the store was last looked at; 0: it is well
};

// All that one action of the user writes, as one step: what others wrote before is shown first, but for the
// control that the user changed, and nothing of others gets between. While another program holds the store
// the values are kept and stored when it lets go. Steps nest, the outermost counts. No box and no event loop
// inside. Without the library's optional calls it does nothing.
class UserStep {
public:
    // changed: the control that keeps what it shows; may be null.
    explicit UserStep(QCorvelPrivate *dialog, QObject *changed = nullptr);
    ~UserStep(); // keeps what was neither kept nor dropped; takes it back when the dialog is gone
    UserStep(const UserStep &) = delete;
    UserStep &operator=(const UserStep &) = delete;

    // True when all that is written meanwhile is one transaction.
    bool isOneStep() const { return m_transaction && m_transaction->isOpen(); }
    // True when they wait until another program lets go of the store.
    bool isKept() const { return m_kept.has_value(); }
    // Ends the transaction. False when nothing of it is stored.
    bool keep();
    // Takes back what the transaction holds.
    void drop();

private:
    bool begin(bool mustOpen);

    QCorvelPrivate *const d;
    const QPointer<QCorvel> m_alive; // a host may delete the dialog meanwhile
    bool m_outermost;
    std::optional<StoreTransaction> m_transaction;
    std::optional<KeptStep> m_kept;
};

#endif
