// SPDX-License-Identifier: MIT
//
// Slots, trouble with the store: it is told while it lasts, and so is a second dialog on the same store; what
// could not be stored meanwhile is stored afterwards. Whether a write or a read failed is found by those who
// do it.
#include "app/dialog/private.h"
#include "channel/storehealth.h"
#include "ops/changewords.h"
#include "rkos.h"

#include <QFileInfo>

namespace {

constexpr int kTicksBetweenLooks = 100;
constexpr int kTicksBetweenTries = 10; // while something waits to be stored
constexpr int kTellSeconds = 10;

QString told(const QString &path, const QString &obstacle)
{
    if (obstacle.isEmpty() && backlogWaits())
        return QCorvel::tr("%1: held by another program; edits wait until it lets go").arg(path);
    const QString reason = obstacle.isEmpty() ? QCorvel::tr("held by another program") : obstacle;
    return QCorvel::tr("%1: %2; edits are not kept").arg(path, reason);
}

void logLeft(const QVector<StoreChange> &left)
{
    for (const StoreChange &write : left)
        ErrOut("%s %s: changed by another program meanwhile, not stored", write.path.constData(),
               write.name.constData());
}

QString toldOf(const QVector<StoreChange> &left)
{
    const StoreChange &first = left.first();
    return QCorvel::tr("Changed by another program meanwhile and left so: %1")
        .arg(ops::keysInWords(first.path, first.name, left.size() - 1));
}

} // namespace

// A library that cannot tell of news need not give its results the meaning that ours has.
void QCorvelPrivate::noteResult(bool good)
{
    const QString path = storePlace();
    if ((good && !backlogWaits()) || !storeTellsNews())
        return;
    ticksOfTrouble = 1;
    showBar(told(path, storeObstacle(path)));
}

// The library names no folder that it cannot make: then it is where it was before.
QString QCorvelPrivate::storePlace()
{
    const QString path = storePath();
    if (!path.isEmpty())
        lastStorePath = path;
    return lastStorePath;
}

// When it is over, what is shown is what is stored again: what was typed meanwhile either is by now, or is
// not at all. A load that runs the event loop holds the store itself.
void QCorvelPrivate::watchTrouble()
{
    const int between = backlogWaits() ? kTicksBetweenTries : kTicksBetweenLooks;
    if (steps > 0 || ticksOfTrouble == 0 || ticksOfTrouble++ % between != 0)
        return;
    const QString path = storePlace();
    const QString obstacle = storeObstacle(path);
    quint64 anyMark = 0; // what others wrote is still news
    const bool isFree =
        obstacle.isEmpty() && storeNews(&anyMark) != StoreNews::Unreadable && StoreTransaction().isOpen();
    if (!isFree || !storeKept()) {
        showBar(told(path, obstacle));
        return;
    }
    ticksOfTrouble = 0; // what is left waits for another configuration
    if (notices.bar().isEmpty())
        return;
    showBar(QString());
    showNews();
}

// What another program changed meanwhile is shown: else the next edit would write over it after all.
bool QCorvelPrivate::storeKept()
{
    QVector<StoreChange> left;
    const bool done = storeBacklog(&left);
    if (left.isEmpty())
        return done;
    logLeft(left);
    tell(toldOf(left), kTellSeconds);
    showNews();
    return done;
}

// Nothing is shown yet.
QString QCorvelPrivate::takeUpKept()
{
    if (!QCorvel::isStandAlone() || !storeHasTransactions())
        return {};
    const int values = adoptBacklog();
    if (values == 0)
        return {};
    ErrOut("%d values waited for the store when the program was closed", values);
    QVector<StoreChange> left;
    storeBacklog(&left);
    logLeft(left);
    if (!left.isEmpty())
        return toldOf(left);
    return backlogWaits() ? QString() : QCorvel::tr("Stored now: what waited when the program was closed");
}

// Nobody is there to be told any more. What is held still waits in the journal.
void QCorvelPrivate::leaveKept()
{
    QVector<StoreChange> left;
    storeBacklog(&left);
    logLeft(left);
    if (backlogSize() > 0)
        ErrOut("%d values wait for the next start, another program held the store to the end", backlogSize());
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
