// SPDX-License-Identifier: MIT
#include "channel/backlog.h"

#include "channel/channelstore.h"
#include "channel/configurations.h"
#include "channel/keptjournal.h"
#include "rkcfg.h"

#include <algorithm>
#include <numeric>

namespace {

using Step = KeptWrites;

struct Backlog {
    QVector<Step> steps;
    bool keeps = false; // the last step is being kept
    KeptJournal journal;
};

Backlog &backlog()
{
    static Backlog own;
    return own;
}

bool isOf(const StoreChange &write, const char *path, const char *name)
{
    return write.name == name && qstricmp(write.path.constData(), path) == 0;
}

StoreChange::Value storedValue(const char *path, const char *name)
{
    StoreChange::Value value;
    quint32 size = 0;
    if (rkCFGValueString(defaultStore(), path, name, nullptr, &size, 0) == 0) {
        value.type = StoreChange::Value::Type::Text;
        quint32 room = size;
        value.text.resize(static_cast<int>(room));
        rkCFGValueString(defaultStore(), path, name, value.text.data(), &size, 0);
        value.text.resize(static_cast<int>(qMin(room, size)) - 1);
    } else if (rkCFGValueDword(defaultStore(), path, name, &value.number, 0) == 0) {
        value.type = StoreChange::Value::Type::Number;
    }
    return value;
}

void storeValue(const StoreChange &write)
{
    const char *path = write.path.constData(), *name = write.name.constData();
    if (write.after.type == StoreChange::Value::Type::Text) {
        QByteArray text = write.after.text;
        quint32 size = static_cast<quint32>(text.size()) + 1;
        rkCFGValueString(defaultStore(), path, name, text.data(), &size, 1);
    } else {
        quint32 number = write.after.number;
        rkCFGValueDword(defaultStore(), path, name, &number, 1);
    }
}

// Returns what others changed meanwhile.
QVector<StoreChange> storeStep(const Step &step)
{
    QVector<StoreChange> left;
    labelNextBatch(QString()); // one given before the store was found to be held names nothing of this
    for (const StoreChange &write : step.writes) {
        const StoreChange::Value now = storedValue(write.path.constData(), write.name.constData());
        if (now == write.before || now == write.after)
            storeValue(write);
        else
            left.append(write);
    }
    commitStore();
    return left;
}

auto nextStep()
{
    QVector<Step> &steps = backlog().steps;
    const QString inUse = steps.isEmpty() ? QString() : configurationInUse();
    return std::find_if(steps.begin(), steps.end(),
                        [&inUse](const Step &step) { return step.configuration == inUse; });
}

// False while the store is held still.
bool storeSteps(QVector<StoreChange> *left)
{
    while (nextStep() != backlog().steps.end()) {
        StoreTransaction whole;
        const auto step = nextStep(); // of the configuration that the transaction is in
        if (!whole.isOpen())
            return false;
        if (step == backlog().steps.end())
            break;
        const QVector<StoreChange> others = storeStep(*step);
        if (!whole.keep())
            return false;
        left->append(others);
        backlog().steps.erase(step);
    }
    return true;
}

} // namespace

KeptStep::KeptStep(const QString &configuration)
{
    backlog().steps.append({configuration, {}});
    backlog().keeps = true;
}

KeptStep::~KeptStep()
{
    backlog().keeps = false;
    if (backlog().steps.last().writes.isEmpty())
        backlog().steps.removeLast();
    else
        backlog().journal.save(backlog().steps);
}

bool writesAreKept()
{
    return backlog().keeps;
}

bool keepWrite(const char *path, const char *name, const StoreChange::Value &value)
{
    const StoreChange::Value *kept = keptValue(path, name);
    StoreChange write;
    write.path = path;
    write.name = name;
    write.before = kept ? *kept : storedValue(path, name);
    write.after = value;
    if (write.before == write.after)
        return false;
    backlog().steps.last().writes.append(write);
    return true;
}

const StoreChange::Value *keptValue(const char *path, const char *name)
{
    const QVector<Step> &steps = backlog().steps;
    if (steps.isEmpty())
        return nullptr;
    const QString inUse = configurationInUse();
    const StoreChange::Value *value = nullptr;
    for (const Step &step : steps) {
        if (step.configuration != inUse)
            continue;
        for (const StoreChange &write : step.writes) {
            if (isOf(write, path, name))
                value = &write.after;
        }
    }
    return value;
}

int backlogSize()
{
    const QVector<Step> &steps = backlog().steps;
    return std::accumulate(steps.begin(), steps.end(), 0,
                           [](int sum, const Step &step) { return sum + step.writes.size(); });
}

bool backlogWaits()
{
    return nextStep() != backlog().steps.end();
}

int adoptBacklog()
{
    return backlog().journal.adopt(&backlog().steps);
}

// A step that is stored and still in the journal does no harm: stored once more, nothing changes.
bool storeBacklog(QVector<StoreChange> *left)
{
    const int before = backlog().steps.size();
    const bool done = storeSteps(left);
    if (backlog().steps.size() != before)
        backlog().journal.save(backlog().steps);
    return done;
}
