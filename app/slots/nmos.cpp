// SPDX-License-Identifier: MIT
//
// Slots, NMOS: the node's connection settings, the override switch, and session descriptions pushed from
// outside. The node itself runs in a service of its own; it hears of a change by a named event.
#include "app/dialog/private.h"
#include "app/nmosthread.h"
#include "app/view/localinterface.h"
#include "channel/channelstore.h"
#include "channel/storecalls.h"
#include "files/ownfolder.h"
#include "rkcfg.h"
#include "rkos.h"
#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStackedLayout>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <memory>

namespace {

constexpr int kNotifyDelayMs = 100;
constexpr int kEventNameBytes = 256;
constexpr int kTempPathBytes = 256;
constexpr char kTempFile[] = "ipcfg_nmos_temp.sdp";
constexpr char kTempFolder[] = "sdp-"; // the process number follows
constexpr int kMostBytes = 1 << 20;    // of a description
constexpr char kEventName[] = "HalvectNMOSConfigChange_%d_%cx_{8ba14a78-0bb2-b00b-5f55-bfe29a74a8d8}";
constexpr quint32 kReadWrite = RKOS_GENERIC_READ | RKOS_GENERIC_WRITE;

using HeapBlock = std::unique_ptr<void, void (*)(void *)>;

// Where a description waits to be read, apart from other processes of this user; empty when this machine has
// no place for it. The folder goes when the process ends.
QByteArray descriptionPath()
{
    static OwnFolder own(kTempFolder, kTempFile);
    char folder[kTempPathBytes] = {};
    rkOSGetTempPath(folder, sizeof folder);
    return folder[0] ? own.file(folder) : QByteArray();
}

// Writes the description to the file, all of it or not at all. False when it could not.
bool writeDescription(const char *path, const void *data, int size)
{
    const quint32 disposition = rkOSFileExists(path) ? RKOS_TRUNCATE_EXISTING : RKOS_CREATE_ALWAYS;
    const quint64 file = rkOSCreateFile(path, kReadWrite, RKOS_SHARE_READ, nullptr, disposition,
                                        RKOS_ATTRIBUTE_NORMAL, nullptr);
    if (file == RKOS_INVALID_HANDLE)
        return false;
    quint32 written = 0;
    const quint32 length = static_cast<quint32>(size);
    rkOSWriteFile(file, data, length, &written, nullptr);
    rkOSCloseFile(file);
    return written == length;
}

// All node settings belong to channel 0. A node address this machine does not have is left out.
void saveNode(QCorvel *q)
{
    q->setCfgValue(FirstChannelValue::NmosDomain, q->m_pEditNmosDmn->text(), true, 0);
    const QString node = q->m_pLineNmosIp->address();
    if (isLocalInterface(node))
        q->setCfgValue(FirstChannelValue::NmosIp, node, true, 0);
    q->setCfgValue(FirstChannelValue::NmosServerIp, q->m_pLineNmosSrv->address(), true, 0);
    q->setCfgValue(FirstChannelValue::NmosServerPort, q->m_pEditNmosPort->text(), true, 0);
}

} // namespace

// -------------------------------------------------------------------------------------------- node settings

// But for what the user has begun to change while others wrote.
void QCorvel::loadNmosCfg()
{
    const auto isShown = [this](const QObject *control) { return !d->view.held().contains(control); };
    if (isShown(m_pEditNmosDmn))
        m_pEditNmosDmn->setText(cfgValue(FirstChannelValue::NmosDomain, true, 0));
    if (isShown(m_pLineNmosIp))
        m_pLineNmosIp->setAddress(cfgValue(FirstChannelValue::NmosIp, true, 0));
    if (isShown(m_pLineNmosSrv))
        m_pLineNmosSrv->setAddress(cfgValue(FirstChannelValue::NmosServerIp, true, 0));
    if (isShown(m_pEditNmosPort))
        m_pEditNmosPort->setText(cfgValue(FirstChannelValue::NmosServerPort, true, 0));
}

void QCorvel::onShowNmosCfg()
{
    loadNmosCfg();
    m_pNmosCfg->show();
    m_pNmosCfg->raise();
    m_pNmosCfg->activateWindow();
}

void QCorvel::onSetNmosCfg()
{
    d->write([this] { saveNode(this); });
    restartNmos();
    m_pNmosCfg->close();
}

// ------------------------------------------------------------------------------------------------- switches

// Both switches exist in the store after the first start: one that is not there is written. Of a store that
// cannot be read nobody knows what is there.
void QCorvelPrivate::loadNmosSwitches()
{
    struct Switch {
        const char *path;
        const char *name;
        QCheckBox *box;
    };
    const Switch switches[] = {
        {StorePath::AvHAL, MachineValue::NmosOverride, q->m_pNmosOverride},
        {StorePath::Debug, MachineValue::NmosUseLog, q->m_pNmosOutLog},
    };
    void *const store = defaultStore();
    const bool canBeRead = storeNews(&mark) != StoreNews::Unreadable;
    for (const Switch &row : switches) {
        quint32 value = 0;
        if (rkCFGValueDword(store, row.path, row.name, &value, 0) != 0 && canBeRead) {
            rkCFGValueDword(store, row.path, row.name, &value, 1);
            commitStore();
        }
        if (const StoreChange::Value *kept = keptValue(row.path, row.name))
            value = kept->number;
        row.box->setChecked(value != 0);
    }
    q->bNmosUseLog = q->m_pNmosOutLog->isChecked();
    nmosOverride = q->m_pNmosOverride->isChecked() ? 1 : 0;
}

void QCorvel::overrideNmos(bool checked)
{
    loadData();
    d->write([&] {
        setCfgValue(MachineValue::NmosOverride, checked ? QStringLiteral("1") : QStringLiteral("0"), false,
                    0);
    });
    m_pSwapLayout->setCurrentIndex(checked ? 0 : 1);
    if (!checked)
        restartNmos();
}

// Switching the override off asks first. When the answer is no, the box is checked again, which runs this
// slot once more for the checked state; the outer run then still ends with its own value, so that "Load File"
// stays disabled until the box is next changed.
void QCorvel::onBoardSettingChanged(bool value)
{
    QObject *const from = sender();
    const QPointer<QCorvel> self(this); // a host may delete the dialog while it asks
    d->finishKeys();
    {
        const UserStep step(d.get(), from);
        d->write([value] { setGlobalDword(StorePath::AvHal, MachineValue::NmosOverride, value ? 1 : 0); });
        d->nmosOverride = value ? 1 : 0;
    }
    const bool accepted = d->askForNmos(!value);
    if (!self)
        return;
    if (value)
        overrideNmos(true);
    else if (accepted)
        overrideNmos(false);
    else
        m_pNmosOverride->setChecked(true);
    m_pCmdLoad->setEnabled(value);
}

void QCorvel::toggleNmosLog(bool on)
{
    {
        const UserStep step(d.get(), sender());
        bNmosUseLog = on;
        if (setGlobalDword(StorePath::Debug, MachineValue::NmosUseLog, on ? 1 : 0))
            d->stored = commitStore();
    }
    if (!m_pNmosOverride->isChecked())
        restartNmos();
}

// -------------------------------------------------------------------------------------- pushed descriptions

namespace {

// A length beyond the block's end would read what is none of the sender's.
bool isDescription(void *sdp, int size)
{
    return sdp && size >= 0 && size <= kMostBytes && static_cast<size_t>(size) <= malloc_usable_size(sdp);
}

// Writes the description to its file and reads it from there, as one step of the history.
void applyDescription(QCorvel *q, HeapBlock block, int size, int channel)
{
    const QByteArray path = descriptionPath();
    const bool written = !path.isEmpty() && writeDescription(path.constData(), block.get(), size);
    block.reset();
    if (!written) {
        ErrOut("session description for channel %d: %s cannot be written", channel,
               path.isEmpty() ? kTempFile : path.constData());
        return;
    }
    const quint64 file = rkOSCreateFile(path.constData(), RKOS_GENERIC_READ, RKOS_SHARE_READ, nullptr,
                                        RKOS_OPEN_EXISTING, RKOS_ATTRIBUTE_NORMAL, nullptr);
    if (file != RKOS_INVALID_HANDLE) {
        labelNextBatch(QStringLiteral("pushed description for channel %1").arg(channel));
        q->loadSdp(file);
        rkOSCloseFile(file);
    }
    q->loadData();
}

} // namespace

// The description is applied even while NMOS is overridden; only the notification is left out then.
void QCorvel::onSendSdp(void *sdp, int size, int channel, bool isSender)
{
    HeapBlock block(sdp, std::free);
    if (!isDescription(sdp, size) || channel < 0 || channel >= m_pChannel->count()) {
        ErrOut("session description of %d bytes for channel %d refused", size, channel);
        return;
    }
    if (d->fileWorkRuns) {
        const auto kept = std::make_shared<HeapBlock>(std::move(block));
        d->afterFileWork.push_back([=] { onSendSdp(kept->release(), size, channel, isSender); });
        return;
    }
    d->finishKeys();
    d->finishPort();
    const int shown = m_pChannel->currentIndex();
    QTimer *timer = nullptr;
    if (!m_pNmosOverride->isChecked() && channel < kFlowCount) {
        timer = nmosTimer(channel);
        timer->stop();
    }
    m_pChannel->setCurrentIndex(channel);
    if (channel < kFlowCount)
        m_szNmosTxRx[channel] = isSender ? 't' : 'r';
    applyDescription(this, std::move(block), size, channel);
    if (timer)
        timer->start();
    m_pChannel->setCurrentIndex(shown);
}

// The channel's notification timer, made on first use.
QTimer *QCorvel::nmosTimer(int channel)
{
    while (m_pNmosEventTimers.size() <= channel)
        m_pNmosEventTimers.append(nullptr);
    QTimer *&timer = m_pNmosEventTimers[channel];
    if (!timer) {
        timer = new QTimer(this);
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        timer->setInterval(kNotifyDelayMs);
        connect(timer, &QTimer::timeout, this, [this, channel] { nmosEventTimeout(channel); });
    }
    return timer;
}

void QCorvel::nmosEventTimeout(int channel)
{
    if (channel < 0 || channel >= kFlowCount)
        return;
    char name[kEventNameBytes];
    snprintf(name, sizeof name, kEventName, channel, m_szNmosTxRx[channel]);
    const quint64 event = rkOSOpenEvent(kReadWrite, 0, name);
    if (event == 0 || event == RKOS_INVALID_HANDLE)
        return; // no service is listening
    rkOSSetEvent(event);
    rkOSCloseEvent(event);
}

// ----------------------------------------------------------------- hooks of a node inside the process

int nmosInitNode()
{
    return 0;
}

void NmosThread::run()
{
    nmosInitNode();
}

void QCorvel::restartNmos() {}

void QCorvel::asyncPopulateSenders() {}

void QCorvel::onMdnsDeviceFound(QString, QUrl, QJsonDocument) {}

void QCorvel::onMdnsConnect() {}

void QCorvel::onNmosThreadReady(int) {}
