// SPDX-License-Identifier: MIT
//
// Slots, writing: the one way from the user to the store. What is written is the caller's business.
#include "app/dialog/private.h"
#include "channel/channelstore.h"
#include "channel/configurations.h"
#include "channel/storehealth.h"

namespace {

constexpr int kMostAttempts = 100;
constexpr int kAttemptsToOpen = 3; // only the first waits for another program

// It can be read, and nothing is wrong with the place where it is: only its lock cannot be had.
bool isStoreHeld()
{
    quint64 anyMark = 0;
    return storeHasTransactions() && storeObstacle(storePath()).isEmpty() &&
           storeNews(&anyMark) != StoreNews::Unreadable;
}

} // namespace

bool QCorvelPrivate::namesStore() const
{
    const QString inUse = configurationInUse();
    return inUse.isEmpty() || !q->m_pConfig || inUse == shownConfiguration();
}

void QCorvelPrivate::write(const std::function<void()> &values)
{
    const QPointer<QCorvel> self(q);
    const UserStep step(this);
    values();
    const bool committed = commitStore();
    if (self)
        stored = committed && stored;
}

UserStep::UserStep(QCorvelPrivate *dialog, QObject *changed)
    : d(dialog), m_alive(dialog->q),
      m_outermost(dialog->steps++ == 0 && QCorvel::isStandAlone() && storeTellsNews())
{
    if (!m_outermost)
        return;
    d->stored = true;
    d->view.held().hold(changed);
    d->storeKept();
    for (int attempt = 0; attempt < kMostAttempts && !begin(attempt < kAttemptsToOpen); ++attempt)
        d->showNews();
    if (!isOneStep() && isStoreHeld())
        m_kept.emplace(d->shownConfiguration());
}

// The configuration in use is the transaction's until that ends. False when it is not the one in the header.
// Where no transaction can be had in the end, what is written is kept for later while the store is held, and
// else tried value by value.
bool UserStep::begin(bool mustOpen)
{
    m_transaction.emplace();
    if (!d->namesStore() || (mustOpen && !isOneStep())) {
        m_transaction.reset();
        return false;
    }
    if (storeNews(&d->mark) == StoreNews::Others)
        d->showNews();
    return true;
}

bool UserStep::keep()
{
    return !m_transaction || m_transaction->keep();
}

void UserStep::drop()
{
    m_transaction.reset();
}

UserStep::~UserStep()
{
    if (!m_alive)
        return;
    --d->steps;
    if (!m_outermost)
        return;
    const bool done = keep();
    m_kept.reset();
    d->view.held().release();
    settleFields(d->q);
    d->noteResult(done && d->stored);
}
