// SPDX-License-Identifier: MIT
//
// The private side of QCorvel: what its own files share and a host never sees. This header is not
// installed, so a change here leaves a host's build alone. What only one file needs stays in that file.
#ifndef CORVEL_DIALOG_PRIVATE_H
#define CORVEL_DIALOG_PRIVATE_H

#include "app/corvel.h"
#include "app/view/channelview.h"
#include "app/view/notices.h"
#include "app/view/signalwiring.h"
#include "app/view/storewatch.h"
#include "channel/neighbours.h"
#include "channel/storecalls.h"

#include <QFont>

#include <functional>
#include <optional>

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
    void setBuddies();
    void setTabOrders();

    // ---- class floor: what is shown
    int channel() const { return view.channel(); }
    const NetworkField &networkField(Side side, Field field) const { return view.fields().at(side, field); }
    void showElementRadios(bool video, bool others);
    void showElementControls();
    void enableFlowSelectors();

    // ---- slots: what one subject offers to the others
    void write(const std::function<void()> &values); // every write that the user causes: values, one commit
    void listConfigs();                              // in the header, as they are on disk now
    void watchStore();
    void meetNeighbours();
    void followStore(); // at each tick
    void takeOver();    // shows what others wrote
    void followSwitches(quint32 nmosOverride);
    QString shownConfiguration() const; // empty where none is shown
    bool namesStore() const;            // the header shows the configuration that is written to
    void noteStore();                   // all that is there now is about to be shown
    void finishKeys();
    void finishPort();
    void noteResult(bool stored); // of a write
    void watchTrouble();          // at each tick
    void loadNmosSwitches();
    void lockInterfaces();
    bool isLocked(const NetworkField &field) const;
    void loadEmbedded();
    void sendSettings(bool final);
    void sendType(quint32 audioLayout);
    void sendField(const NetworkField &field);
    void showErrors(const QString &text);

    QCorvel *const q;
    ChannelView view;
    SignalWiring wiring;
    Notices notices;
    QWidget *fullPage = nullptr;
    QLabel *rowLabels[10] = {}; // beside the network fields, in their order
    bool showsErrors = false;   // the error list's event loop runs

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

    StoreWatch watch;
    std::unique_ptr<Neighbours> neighbours;
    quint64 mark = 0;         // of what is shown, see storeNews
    quint32 nmosOverride = 0; // as last read or written
    bool takingOver = false;
    int steps = 0;          // UserStep
    bool stored = true;     // all writes of the step so far
    int ticksOfTrouble = 0; // since the store was last looked at; 0: it is well
};

// All that one action of the user writes, as one step: what others wrote before is shown first, but for the
// control that the user changed, and nothing of others gets between. Steps nest, the outermost counts. No box
// and no event loop inside. Without the library's optional calls it does nothing.
class UserStep {
public:
    // changed: the control that keeps what it shows; may be null.
    explicit UserStep(QCorvelPrivate *dialog, QObject *changed = nullptr);
    ~UserStep();
    UserStep(const UserStep &) = delete;
    UserStep &operator=(const UserStep &) = delete;

private:
    bool begin(bool mustOpen);

    QCorvelPrivate *const d;
    bool m_outermost;
    std::optional<StoreTransaction> m_transaction;
};

#endif
