// SPDX-License-Identifier: MIT
//
// Slots, trouble with the store: it is told while it lasts, and so is a second dialog on the same store.
// Whether a write or a read failed is found by those who do it.
#include "app/dialog/private.h"
#include "channel/storehealth.h"
#include "rkos.h"

#include <QFileInfo>

namespace {

constexpr int kTicksBetweenLooks = 100;

QString told(const QString &path, const QString &obstacle)
{
    const QString reason = obstacle.isEmpty() ? QCorvel::tr("held by another program") : obstacle;
    return QCorvel::tr("%1: %2; edits are not kept").arg(path, reason);
}

} // namespace

// A library that cannot tell of news need not give its results the meaning that ours has.
void QCorvelPrivate::noteResult(bool good)
{
    if (good || !storeTellsNews())
        return;
    ticksOfTrouble = 1;
    const QString path = storePath();
    showBar(told(path, storeObstacle(path)));
}

// When it is over, what is shown is what is stored again: what was typed meanwhile is not.
void QCorvelPrivate::watchTrouble()
{
    if (ticksOfTrouble == 0 || ticksOfTrouble++ % kTicksBetweenLooks != 0)
        return;
    const QString path = storePath();
    const QString obstacle = storeObstacle(path);
    const bool well =
        obstacle.isEmpty() && storeNews(&mark) != StoreNews::Unreadable && StoreTransaction().isOpen();
    if (!well) {
        showBar(told(path, obstacle));
        return;
    }
    ticksOfTrouble = 0;
    showBar(QString());
    showNews();
}

void QCorvelPrivate::meetNeighbours()
{
    if (!QCorvel::isStandAlone())
        return;
    neighbours = std::make_unique<Neighbours>([this](int pid) {
        const QString text = QCorvel::tr("A second IP Video Setup (process %1) is open on this store");
        neighbourLine = pid ? text.arg(pid) : QString();
        showStandingLines();
        if (pid)
            ErrOut("a second dialog, process %d, is open on this store", pid);
        else
            ErrOut("no second dialog is open on this store any more");
    });
    neighbours->meet(QFileInfo(storePath()).path());
}
