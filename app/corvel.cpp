// SPDX-License-Identifier: MIT
//
// Roof: construction of the whole dialog. It calls every floor below, and nothing calls it.
#include "app/corvel.h"

#include "app/dialog/frame.h"
#include "app/dialog/private.h"
#include "theme/wheelguard.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QStackedLayout>
#include <QTimer>

#include <cstring>

// The style sheet lives in a static library; its resources have to be asked for by name, outside any
// namespace.
static void initResources()
{
    Q_INIT_RESOURCE(corvel);
}

namespace {

constexpr int kPollIntervalMs = 10;
constexpr int kTellSeconds = 10;

} // namespace

QCorvel::QCorvel(bool standAlone, QWidget *parent)
    : QDialog(parent), d(std::make_unique<QCorvelPrivate>(this))
{
    initResources();
    // Before there is a control: each one that a style sheet comes upon looks for its rules anew, and its
    // combo boxes make their lists.
    if (standAlone)
        applyStyleSheet(QStringLiteral(":/resources/default.qss"));
    init(standAlone);
}

QCorvel::QCorvel(QWidget *parent) : QDialog(parent), d(std::make_unique<QCorvelPrivate>(this))
{
    initResources();
    init(false);
    // The host's theme. Without it the dialog stays as the host's style draws it.
    applyStyleSheet(QStringLiteral(":/theme/default.qss"));
}

QCorvel::~QCorvel()
{
    // Hiding the dialog moves the focus; no slot may run on a dialog that is going away.
    disconnectSignals();
    killTimer(timerId);
    d->leaveKept();
    rkPTPEnd(hPTP);
    d->watches.clear();
    d->survivors->takeOver(this);
    qDeleteAll(m_pNmosEventTimers);
}

void QCorvel::init(bool standAlone)
{
    m_bClosing = false;
    m_dwPTPDom = 0xffffffff;
    setStandAlone(standAlone);
    m_bReloadChannel = false;
    m_liveUpdates = true;
    m_szMacAddr.clear();
    memset(m_szIPAddress, 0, sizeof m_szIPAddress);
    hPTP = nullptr;
    setObjectName(QStringLiteral("QCorvel"));
    setWindowTitle(tr("IP Video Setup"));

    // The controls are sized by the factor, so it is needed before they are made.
    setFontFactor(qMax(1.0, scaleOf(this)));
    const QString kept = d->takeUpKept();
    m_fontFamily = QApplication::font().family();
    initCtrls();
    d->connectButtons(); // after findConfigs, or filling the list would switch configurations
    d->showNews = [this] { d->takeOver(); };
    d->atTick = [this] {
        d->followStore();
        d->watchTrouble();
    };
    popCombos();
    d->noteStore();
    loadData();
    d->listConnections();
    d->connectHistory();
    connectSignals();
    d->watchMarks();
    d->watchEscape();
    d->watchTips();

    m_pComboReceive->setEnabled(false);
    m_pComboSend->setEnabled(false);
    const bool multi = isMultiType();
    d->showElementRadios(true, multi);
    d->applyFixedSize();
    checkPTP();
    d->watchStore();
    d->meetNeighbours();
    if (!kept.isEmpty())
        d->tell(kept, kTellSeconds);
    timerId = startTimer(kPollIntervalMs, Qt::CoarseTimer);
    if (!m_pNmosOverride->isChecked())
        m_pSwapLayout->setCurrentIndex(1);
}

// What was told before stood in no layout yet.
void QCorvel::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    d->placeNotices();
    d->tellSize();
}

void QCorvel::initCtrls()
{
    setFont(QFont(m_fontFamily, m_fontSize));
    d->createPages();
    d->createHeader();
    if (m_pConfig)
        findConfigs();
    d->createNmosRow();
    d->createFormatRows();
    d->createElementRow();
    d->createReceiveBlock();
    d->createSendBlock();
    d->createClockBlock();
    d->createSimplePage();
    d->createCommands();
    d->createErrorDialog();
    d->createNmosDialog();
    d->takeView();
    d->loadNmosSwitches();
    d->lockInterfaces();
    d->buildLayout();
    d->notices.make(this, d->controlFont());
    d->describeControls();
    d->setTabOrders();
    d->showElementControls();
    guardCombosFromWheel(this);
}
