// SPDX-License-Identifier: MIT
//
// Slots, locks: a locked field holds one value for all elements of its channel. Locks live in the dialog
// only.
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "channel/elementvalues.h"
#include "channel/lockbook.h"
#include "channel/storecalls.h"

#include <QCheckBox>

namespace {

// A field is copied when it changed itself, when its lock was set, or when all locks were.
bool concerns(const QCorvel *q, const NetworkField &field, const QObject *sender)
{
    return sender && (sender == field.control() || sender == field.lock || sender == q->m_pCheckLockGroup);
}

void recordLocks(QCorvelPrivate *d, QObject *from)
{
    for (const NetworkField &field : d->view.fields())
        setLocked(d->q->m_LockValues, field.side, field.field, d->channel(), field.lock->isChecked());
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

} // namespace

// Interfaces are locked from the start, on every channel: a machine's elements normally share their
// network interfaces.
void QCorvelPrivate::lockInterfaces()
{
    q->m_pCheckLockRecDstIFace->setChecked(true);
    q->m_pCheckLockSndDstIFace->setChecked(true);
    ::lockInterfaces(q->m_LockValues, channelCount());
}

bool QCorvelPrivate::isLocked(const NetworkField &field) const
{
    return ::isLocked(q->m_LockValues, field.side, field.field, channel());
}

// Asks the map with [], so that every lock of the channel stands in it from now on.
void QCorvel::checkLocksForConfig()
{
    const SignalBracket bracket(this);
    for (const NetworkField &field : d->view.fields())
        field.lock->setChecked(m_LockValues[lockName(field.side, field.field, d->channel())]);
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
        for (const FieldStep &step : lockAllOrder())
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
    if (sender == m_pCheckLockGroup)
        labelNextBatch(tr("lock all of channel %1").arg(d->channel()));
    d->write([&] {
        for (const NetworkField &field : fields)
            copyToAllElements(field.side, field.field, field.value(), d->channel());
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
