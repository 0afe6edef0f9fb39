// SPDX-License-Identifier: MIT
//
// Slots, locks: a locked field holds one value for all elements of its channel. Locks live in the dialog
// only.
#include "app/dialog/private.h"
#include "channel/channelstore.h"

#include <QCheckBox>

#include <iterator>

namespace {

// The order in which locked fields are copied. In the store interfaces are not copied with them: their
// own slot does that. The engine gets the interfaces as well, last.
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

const FieldStep kInterfaces[] = {
    {Side::Receive, Field::Interface},
    {Side::Send,    Field::Interface},
};
// clang-format on

TableView<FieldStep> lockedCopyOrder()
{
    return {kCopyOrder, std::size(kCopyOrder)};
}

TableView<FieldStep> lockedInterfaceOrder()
{
    return {kInterfaces, std::size(kInterfaces)};
}

// The video value name stands for the field of all elements, with the channel number behind it.
QString lockName(const NetworkField &field, int channel)
{
    const ChannelKey *key = findChannelKey(Element::Video, field.side, field.field);
    return QLatin1String(key->name) + QString::number(channel);
}

// A field is copied when it changed itself, when its lock was set, or when all locks were.
bool concerns(const QCorvel *q, const NetworkField &field, const QObject *sender)
{
    return sender && (sender == field.control() || sender == field.lock || sender == q->m_pCheckLockGroup);
}

void recordLocks(QCorvelPrivate *d, QObject *from)
{
    for (const NetworkField &field : d->view.fields())
        d->q->m_LockValues[lockName(field, d->channel())] = field.lock->isChecked();
    d->q->updateLockedItems(from);
}

// The locked fields of the order that the sender concerns.
QVector<NetworkField> fieldsToCopy(const QCorvelPrivate *d, TableView<FieldStep> order, const QObject *sender)
{
    QVector<NetworkField> fields;
    for (const FieldStep &step : order) {
        const NetworkField &field = d->networkField(step.side, step.field);
        if (concerns(d->q, field, sender) && d->isLocked(field))
            fields.append(field);
    }
    return fields;
}

// Flow 0 is written once more before all flows.
void propagate(QCorvel *q, const NetworkField &field, int channel)
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

} // namespace

// Interfaces are locked from the start, on every channel: a machine's elements normally share their
// network interfaces.
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

bool QCorvelPrivate::isLocked(const NetworkField &field) const
{
    return q->m_LockValues.value(lockName(field, channel()), false);
}

// Asks the map with [], so that every lock of the channel stands in it from now on.
void QCorvel::checkLocksForConfig()
{
    const SignalBracket bracket(this);
    for (const NetworkField &field : d->view.fields())
        field.lock->setChecked(m_LockValues[lockName(field, d->channel())]);
}

void QCorvel::onLockSetting(bool)
{
    recordLocks(d.get(), sender());
}

void QCorvel::onLockGroup(bool)
{
    QObject *const from = sender();
    {
        const SignalBracket bracket(this);
        for (const FieldStep &step : kGroupOrder)
            d->networkField(step.side, step.field).lock->setChecked(m_pCheckLockGroup->isChecked());
    }
    recordLocks(d.get(), from);
}

void QCorvel::updateLockedItems(QObject *sender)
{
    if (!isStandAlone()) {
        updateLockedItemsForScopes(sender);
        return;
    }
    const SignalBracket bracket(this);
    const QVector<NetworkField> fields = fieldsToCopy(d.get(), lockedCopyOrder(), sender);
    if (fields.isEmpty())
        return;
    d->write([&] {
        for (const NetworkField &field : fields)
            propagate(this, field, d->channel());
    });
}

// Embedded: the engine gets the locked value once for each element and flow.
void QCorvel::updateLockedItemsForScopes(QObject *sender)
{
    const SignalBracket bracket(this);
    for (const TableView<FieldStep> order : {lockedCopyOrder(), lockedInterfaceOrder()}) {
        for (const NetworkField &field : fieldsToCopy(d.get(), order, sender))
            d->sendField(field);
    }
}
