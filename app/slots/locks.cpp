// SPDX-License-Identifier: MIT
//
// Slots, locks: a locked field holds one value for all elements of its channel. Locks live in the dialog
// only.
#include "app/corvel.h"
#include "app/dialog/private.h"
#include "channel/channelstore.h"

#include <QCheckBox>

namespace {

// The order in which locked fields are copied. In the store interfaces are not copied with them: their own
// slot does that. The engine gets the interfaces as well, last.
// clang-format off
const FieldStep kCopyOrder[] = {
    {Side::Receive, Field::DestinationAddress},
    {Side::Receive, Field::SourceAddress},
    {Side::Send,    Field::DestinationAddress},
    {Side::Send,    Field::SourceAddress},
    {Side::Receive, Field::DestinationPort},
    {Side::Receive, Field::SourcePort},
    {Side::Send,    Field::DestinationPort},
    {Side::Send,    Field::SourcePort},
};

const FieldStep kInterfaces[] = {
    {Side::Receive, Field::Interface},
    {Side::Send,    Field::Interface},
};

// The order in which "lock all" sets the boxes.
const FieldStep kGroupOrder[] = {
    {Side::Receive, Field::SourceAddress},
    {Side::Receive, Field::SourcePort},
    {Side::Receive, Field::DestinationPort},
    {Side::Receive, Field::DestinationAddress},
    {Side::Receive, Field::Interface},
    {Side::Send,    Field::SourceAddress},
    {Side::Send,    Field::SourcePort},
    {Side::Send,    Field::DestinationAddress},
    {Side::Send,    Field::DestinationPort},
    {Side::Send,    Field::Interface},
};
// clang-format on

} // namespace

// Interfaces are locked from the start, on every channel, on purpose: a machine's elements normally
// share their network interfaces.
void QCorvelPrivate::lockInterfaces()
{
    q->m_pCheckLockRecDstIFace->setChecked(true);
    q->m_pCheckLockSndDstIFace->setChecked(true);
    const int channels = channelCount();
    for (int channel = 0; channel < channels; ++channel) {
        q->m_LockValues[QStringLiteral("ReceiveInterface%1").arg(channel)] = true;
        q->m_LockValues[QStringLiteral("TransmitInterface%1").arg(channel)] = true;
    }
}

// The video value name stands for the field of all elements, with the channel number behind it.
QString QCorvelPrivate::lockName(const NetworkField &field, int channel) const
{
    const ChannelKey *key = findChannelKey(Element::Video, field.side, field.field);
    return QLatin1String(key->name) + QString::number(channel);
}

bool QCorvelPrivate::isLocked(const NetworkField &field) const
{
    return q->m_LockValues.value(lockName(field, currentChannel()), false);
}

// A field is copied when it changed itself, when its lock was set, or when all locks were.
bool QCorvelPrivate::concerns(const NetworkField &field, const QObject *sender) const
{
    return sender && (sender == field.control() || sender == field.lock || sender == q->m_pCheckLockGroup);
}

void QCorvel::checkLocksForConfig()
{
    const SignalBracket bracket(this);
    const int channel = d->currentChannel();
    for (const NetworkField &field : qAsConst(d->fields))
        field.lock->setChecked(m_LockValues[d->lockName(field, channel)]);
}

void QCorvel::onLockSetting(bool)
{
    d->recordLocks(sender());
}

void QCorvelPrivate::recordLocks(QObject *from)
{
    const int channel = currentChannel();
    for (const NetworkField &field : qAsConst(fields))
        q->m_LockValues[lockName(field, channel)] = field.lock->isChecked();
    q->updateLockedItems(from);
}

void QCorvel::onLockGroup(bool)
{
    QObject *const from = sender();
    {
        const SignalBracket bracket(this);
        for (const FieldStep &step : kGroupOrder)
            d->networkField(step.side, step.field).lock->setChecked(m_pCheckLockGroup->isChecked());
    }
    d->recordLocks(from);
}

void QCorvel::updateLockedItems(QObject *sender)
{
    if (!isStandAlone()) {
        updateLockedItemsForScopes(sender);
        return;
    }
    const SignalBracket bracket(this);
    const int channel = d->currentChannel();
    bool copied = false;
    for (const FieldStep &step : kCopyOrder) {
        const NetworkField &field = d->networkField(step.side, step.field);
        if (!d->concerns(field, sender) || !d->isLocked(field))
            continue;
        d->propagate(field, channel);
        copied = true;
    }
    if (copied)
        commitStore();
}

// Flow 0 is written once more before all flows, as always.
void QCorvelPrivate::propagate(const NetworkField &field, int channel)
{
    const QString value = field.value();
    const auto write = [&](Element element, const QByteArray &suffix) {
        const ChannelKey *key = findChannelKey(element, field.side, field.field);
        q->setCfgValue(valueName(*key, suffix).constData(), value, key->stored == Stored::Text, channel);
    };
    write(Element::Audio, "0");
    for (int flow = 0; flow < kFlowCount; ++flow)
        write(Element::Audio, QByteArray::number(flow));
    write(Element::Anc, QByteArray());
    write(Element::Video, QByteArray());
}

// Embedded: the engine gets the locked value once for each element and flow.
void QCorvel::updateLockedItemsForScopes(QObject *sender)
{
    const SignalBracket bracket(this);
    const auto sendLocked = [&](const FieldStep &step) {
        const NetworkField &field = d->networkField(step.side, step.field);
        if (d->concerns(field, sender) && d->isLocked(field))
            d->sendMediaField(field);
    };
    for (const FieldStep &step : kCopyOrder)
        sendLocked(step);
    for (const FieldStep &step : kInterfaces)
        sendLocked(step);
}
