// SPDX-License-Identifier: MIT
#include "channel/storecalls.h"

#include "channel/channelstore.h"
#include "channel/storerecord.h"

#include <QByteArray>

#include <dlfcn.h>

namespace {

// The call of that name, or null where the library has none.
template<class Call>
Call lookUp(const char *name)
{
    return reinterpret_cast<Call>(dlsym(RTLD_DEFAULT, name));
}

using ChangedCall = int (*)(void *, quint64 *);
using BeginCall = int (*)(void *);
using EndCall = int (*)(void *, int);
using LabelCall = int (*)(void *, const char *);
using VisitCall = int (*)(void *, const StoreRecord *);
using HistoryCall = int (*)(void *, qint64, VisitCall, void *);
using TakeBackCall = int (*)(void *, qint64, int, int, VisitCall, void *, qint64 *);

struct Calls {
    ChangedCall changed = lookUp<ChangedCall>("rkCFGChanged");
    BeginCall begin = lookUp<BeginCall>("rkCFGBegin");
    EndCall end = lookUp<EndCall>("rkCFGEnd");
    LabelCall label = lookUp<LabelCall>("rkCFGLabel");
    HistoryCall history = lookUp<HistoryCall>("rkCFGHistory");
    TakeBackCall takeBack = lookUp<TakeBackCall>("rkCFGTakeBack");
};

const Calls &calls()
{
    static const Calls found;
    return found;
}

StoreChange::Value valueOf(int type, const char *text, quint32 size, quint32 number)
{
    StoreChange::Value value;
    value.type = static_cast<StoreChange::Value::Type>(type);
    if (text && size > 0)
        value.text = QByteArray(text, static_cast<int>(size) - 1);
    value.number = number;
    return value;
}

StoreChange changeOf(const StoreRecord &record)
{
    StoreChange change;
    change.id = record.id;
    change.batch = record.batch;
    change.timeUs = record.timeUs;
    change.program = QString::fromUtf8(record.program);
    change.user = QString::fromUtf8(record.user);
    change.label = QString::fromUtf8(record.label);
    change.pid = record.pid;
    change.path = record.keyPath;
    change.name = record.valueName;
    change.before = valueOf(record.oldType, record.oldText, record.oldSize, record.oldNumber);
    change.after = valueOf(record.newType, record.newText, record.newSize, record.newNumber);
    change.undoes = record.undoes;
    return change;
}

using Visit = std::function<bool(const StoreChange &)>;

int visitRecord(void *context, const StoreRecord *record)
{
    const Visit &visit = *static_cast<const Visit *>(context);
    return !visit || visit(changeOf(*record)) ? 0 : 1;
}

} // namespace

bool storeTellsNews()
{
    return calls().changed != nullptr;
}

bool storeHasTransactions()
{
    return calls().begin && calls().end;
}

StoreNews storeNews(quint64 *mark)
{
    if (!calls().changed)
        return StoreNews::None;
    const int answer = calls().changed(defaultStore(), mark);
    if (answer < 0)
        return StoreNews::Unreadable;
    return answer ? StoreNews::Others : StoreNews::None;
}

StoreTransaction::StoreTransaction() : m_open(storeHasTransactions() && calls().begin(defaultStore()) == 0) {}

StoreTransaction::~StoreTransaction()
{
    if (m_open)
        calls().end(defaultStore(), 0);
}

bool StoreTransaction::keep()
{
    if (!m_open)
        return true; // each write stood alone
    m_open = false;
    return calls().end(defaultStore(), 1) == 0;
}

void labelNextBatch(const QString &label)
{
    constexpr int kMostBytes = 200;
    if (!calls().label)
        return;
    QString cut = label;
    while (cut.toUtf8().size() > kMostBytes)
        cut.chop(1);
    calls().label(defaultStore(), cut.toUtf8().constData());
}

bool storeHasHistory()
{
    return calls().history && calls().takeBack;
}

bool walkHistory(qint64 after, const Visit &visit)
{
    if (!calls().history)
        return false;
    Visit visitor = visit;
    return calls().history(defaultStore(), after, visitRecord, &visitor) == 0;
}

int takeBatchBack(qint64 batch, bool force, bool dryRun, const Visit &conflict, qint64 *newBatch)
{
    if (!calls().takeBack)
        return -1;
    Visit visitor = conflict;
    return calls().takeBack(defaultStore(), batch, force, dryRun, visitRecord, &visitor, newBatch);
}
