// SPDX-License-Identifier: MIT
#include "channel/storehistory.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <unistd.h>

namespace {

constexpr qint64 kTypingUs = 3000000; // from one key to the next, in one field

QByteArray keyOf(const StoreChange &change)
{
    return change.path.toLower() + '\0' + change.name;
}

// Puts single changes together. They come newest first: a value that is there already gets an older "before".
class Collector {
public:
    void add(const StoreChange &change)
    {
        if (!m_places.contains(change.batch)) {
            m_places.insert(change.batch, batches.size());
            batches.append({change, false, {}});
        }
        StoreBatch &batch = batches[m_places.value(change.batch)];
        const QByteArray key = QByteArray::number(change.batch) + '\0' + keyOf(change);
        const auto known = m_changes.constFind(key);
        if (known != m_changes.constEnd()) {
            batch.changes[*known].before = change.before;
            return;
        }
        m_changes.insert(key, batch.changes.size());
        batch.changes.append(change);
    }

    QVector<StoreBatch> batches;

private:
    QHash<qint64, int> m_places;
    QHash<QByteArray, int> m_changes;
};

void markTakenBack(QVector<StoreBatch> &batches)
{
    QSet<qint64> undone;
    for (StoreBatch &batch : batches) {
        batch.isTakenBack = undone.contains(batch.head.batch);
        if (batch.head.undoes != 0 && !batch.isTakenBack)
            undone.insert(batch.head.undoes);
    }
}

bool isOwn(const StoreBatch &batch)
{
    return batch.head.pid == static_cast<quint32>(getpid());
}

QSet<QByteArray> keysOf(const StoreBatch &batch)
{
    QSet<QByteArray> keys;
    for (const StoreChange &change : batch.changes)
        keys.insert(keyOf(change));
    return keys;
}

// Every key of an address is stored for itself.
bool isTypedOn(const StoreBatch &older, const StoreBatch &newer)
{
    return older.head.label.isEmpty() && newer.head.label.isEmpty() &&
           newer.head.timeUs - older.head.timeUs < kTypingUs && keysOf(older) == keysOf(newer);
}

// The active batches of this process, take-backs or others.
QVector<StoreBatch> ownActive(const QVector<StoreBatch> &batches, bool takeBacks)
{
    QVector<StoreBatch> own;
    for (const StoreBatch &batch : batches) {
        if (isOwn(batch) && !batch.isTakenBack && (batch.head.undoes != 0) == takeBacks)
            own.append(batch);
    }
    return own;
}

bool isTakeBackOfTakeBack(const QVector<StoreBatch> &batches, const StoreBatch &batch)
{
    return std::any_of(batches.begin(), batches.end(), [&](const StoreBatch &other) {
        return other.head.batch == batch.head.undoes && other.head.undoes != 0;
    });
}

} // namespace

QVector<StoreBatch> storeBatches(int mostChanges)
{
    Collector all;
    int left = mostChanges;
    walkHistory(-1, [&](const StoreChange &change) {
        all.add(change);
        return --left > 0;
    });
    markTakenBack(all.batches);
    return all.batches;
}

QVector<StoreBatch> lastStep(const QVector<StoreBatch> &batches)
{
    QVector<StoreBatch> step = ownActive(batches, false);
    int size = qMin(1, step.size());
    while (size < step.size() && isTypedOn(step.at(size), step.at(size - 1)))
        ++size;
    step.resize(size);
    return step;
}

// One "Take Back" gives all its batches one label.
QVector<StoreBatch> lastStepTakenBack(const QVector<StoreBatch> &batches)
{
    QVector<StoreBatch> step;
    for (const StoreBatch &batch : ownActive(batches, true)) {
        const bool belongs = step.isEmpty() || batch.head.label == step.first().head.label;
        if (belongs && !isTakeBackOfTakeBack(batches, batch))
            step.append(batch);
        else if (!step.isEmpty())
            break;
    }
    return step;
}
