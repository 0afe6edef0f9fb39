// SPDX-License-Identifier: MIT
#include "channel/storecalls.h"

#include "channel/channelstore.h"
#include "channel/librarycalls.h"
#include "rkcfg.h"

#include <QByteArray>

namespace {

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
    return libraryCalls().changed != nullptr;
}

bool storeHasTransactions()
{
    return libraryCalls().begin && libraryCalls().end;
}

StoreNews storeNews(quint64 *mark)
{
    if (!libraryCalls().changed)
        return StoreNews::None;
    uint64_t seen = *mark;
    const int answer = libraryCalls().changed(defaultStore(), &seen);
    *mark = seen;
    if (answer < 0)
        return StoreNews::Unreadable;
    return answer ? StoreNews::Others : StoreNews::None;
}

StoreTransaction::StoreTransaction() : StoreTransaction(defaultStore()) {}

StoreTransaction::StoreTransaction(void *store)
    : m_store(store), m_open(storeHasTransactions() && libraryCalls().begin(store) == 0)
{
}

StoreTransaction::~StoreTransaction()
{
    if (m_open)
        libraryCalls().end(m_store, 0);
}

bool StoreTransaction::keep()
{
    if (!m_open)
        return true; // each write stood alone
    m_open = false;
    return libraryCalls().end(m_store, 1) == 0;
}

void labelNextBatch(const QString &label)
{
    constexpr int kMostBytes = 200;
    if (!libraryCalls().label)
        return;
    QString cut = label;
    while (cut.toUtf8().size() > kMostBytes)
        cut.chop(1);
    libraryCalls().label(defaultStore(), cut.toUtf8().constData());
}

bool storeHasHistory()
{
    return libraryCalls().history && libraryCalls().takeBack;
}

bool walkHistory(qint64 after, const Visit &visit)
{
    if (!libraryCalls().history)
        return false;
    Visit visitor = visit;
    return libraryCalls().history(defaultStore(), after, visitRecord, &visitor) == 0;
}

int takeBatchBack(qint64 batch, bool force, bool dryRun, const Visit &conflict, qint64 *newBatch)
{
    if (!libraryCalls().takeBack)
        return -1;
    Visit visitor = conflict;
    int64_t made = 0;
    const int left =
        libraryCalls().takeBack(defaultStore(), batch, force, dryRun, visitRecord, &visitor, &made);
    if (newBatch && left >= 0)
        *newBatch = made;
    return left;
}
