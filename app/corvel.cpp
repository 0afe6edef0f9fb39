// SPDX-License-Identifier: MIT
//
// Frame: construction, style sheet, size, closing.
#include "app/corvel.h"
#include "channel/channelstore.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScreen>
#include <QStackedLayout>
#include <QTimer>
#include <QWindow>

#include <cstdlib>
#include <cstring>

// The style sheet lives in a static library; its resources have to be asked for by name, outside any
// namespace.
static void initResources()
{
    Q_INIT_RESOURCE(corvel);
}

namespace {

constexpr double kReferenceDpi = 96.0;
constexpr int kPollIntervalMs = 10;

// One process shows one kind of dialog at one scale, so both are process-wide.
bool standAloneFlag = true;
double currentFontFactor = 1.0;

// The screen that holds the widget; before it has a window, the primary one.
QScreen *screenOf(const QWidget *widget)
{
    const QWindow *window = widget->windowHandle();
    QScreen *screen = window ? window->screen() : widget->screen();
    return screen ? screen : QGuiApplication::primaryScreen();
}

double scaleOf(const QWidget *widget)
{
    const QScreen *screen = screenOf(widget);
    return screen ? screen->logicalDotsPerInchY() / kReferenceDpi : 1.0;
}

} // namespace

QCorvel::QCorvel(bool standAlone, QWidget *parent) : QDialog(parent)
{
    initResources();
    init(standAlone);
    if (standAlone)
        applyStyleSheet(QStringLiteral(":/resources/default.qss"));
}

QCorvel::QCorvel(QWidget *parent) : QDialog(parent)
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
    rkPTPEnd(hPTP);
    qDeleteAll(m_pNmosEventTimers);
}

bool QCorvel::isStandAlone()
{
    return standAloneFlag;
}

double QCorvel::fontFactor()
{
    return currentFontFactor;
}

void QCorvel::init(bool standAlone)
{
    m_bClosing = false;
    m_dwPTPDom = 0xffffffff;
    standAloneFlag = standAlone;
    m_bReloadChannel = false;
    m_liveUpdates = true;
    m_szMacAddr.clear();
    memset(m_szIPAddress, 0, sizeof m_szIPAddress);
    hPTP = nullptr;
    setObjectName(QStringLiteral("QCorvel"));
    setWindowTitle(tr("IP Video Setup"));

    // The controls are sized by the factor, so it is needed before they are made.
    currentFontFactor = qMax(1.0, scaleOf(this));
    m_fontFamily = QApplication::font().family();
    initCtrls();
    popCombos();
    loadData();
    connectSignals();

    m_pComboReceive->setEnabled(false);
    m_pComboSend->setEnabled(false);
    const bool multi = isMultiType();
    showElementRadios(true, multi);
    applyFixedSize();
    checkPTP();
    timerId = startTimer(kPollIntervalMs, Qt::CoarseTimer);
    if (!m_pNmosOverride->isChecked())
        m_pSwapLayout->setCurrentIndex(1);
}

void QCorvel::applyStyleSheet(const QString &resource)
{
    QFile file(resource);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    setStyleSheet(QString::fromLatin1(bytes.constData())); // up to the first zero byte
}

void QCorvel::showElementRadios(bool video, bool others)
{
    m_pVideoConfig->setVisible(video);
    m_pAudioConfig->setVisible(others);
    m_pAncConfig->setVisible(others);
}

void QCorvel::applyFixedSize()
{
    setFixedSize(px(660), px(640));
}

// Whole pixels of a length given for 96 dpi, rounded down.
int QCorvel::px(double pixels) const
{
    return static_cast<int>(pixels * currentFontFactor);
}

void QCorvel::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        followConfig();
}

void QCorvel::setLiveUpdates(bool on)
{
    m_liveUpdates = on;
}

void QCorvel::CenterOnScreen()
{
    const QRect area = screenOf(this)->geometry();
    move((area.left() + area.right()) / 2 - width() / 2, (area.top() + area.bottom()) / 2 - height() / 2);
}

void QCorvel::shutdown()
{
    killTimer(timerId);
    rkPTPEnd(hPTP);
    ::exit(0);
}

// The type decides which elements can be shown. Unlike at start the scale has no lower bound here, and
// the clock line is hidden for the one type whose load and save use it; both on purpose.
void QCorvel::onTypeSettingChanged(int index)
{
    currentFontFactor = scaleOf(this);
    const bool multi = isMultiType(static_cast<quint32>(m_pComboType->itemData(index).toUInt()));
    showElementRadios(multi, multi);
    const bool showDomain = multi && !isType(ChannelType::ClockDomainOwner);
    m_pClockDomainLbl->setVisible(showDomain);
    m_pEditClockDomain->setVisible(showDomain);
    applyFixedSize();
    setCfgValue(ChannelValue::VideoType, QString::number(comboData(m_pComboType)), false, currentChannel());
    commitStore();
    loadData();
    if (isType(ChannelType::Smpte2110))
        checkErrors();
}
