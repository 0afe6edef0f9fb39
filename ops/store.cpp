// SPDX-License-Identifier: MIT
#include "ops/store.h"

#include "channel/librarycalls.h"
#include "channel/storecalls.h"
#include "rkcfg.h"

#include <QSet>

#include <utility>

namespace ops {

namespace {

// Names repeat in every channel and paths in every value: each is kept once.
struct Filler {
    Snapshot snapshot;
    QSet<QByteArray> names;
    QByteArray path;
};

int addRow(void *context, const char *path, const char *name, const char *text, uint32_t size,
           uint32_t number)
{
    auto &filler = *static_cast<Filler *>(context);
    if (filler.path != path)
        filler.path = path;
    const QByteArray shared = *filler.names.insert(QByteArray(name));
    const Value value = text ? Value::ofText(QByteArray(text, size > 0 ? static_cast<int>(size) - 1 : 0))
                             : Value::ofNumber(number);
    filler.snapshot.set(filler.path, shared, value);
    return 0;
}

// A write call says only whether something changed; reading back tells whether the value is there.
bool isThere(void *handle, const Change &change)
{
    const char *path = change.path.constData();
    const char *name = change.name.constData();
    uint32_t number = 0;
    if (!change.after->isText)
        return rkCFGValueDword(handle, path, name, &number, 0) == 0 && number == change.after->number;
    uint32_t size = static_cast<uint32_t>(change.after->text.size()) + 1;
    QByteArray now(static_cast<int>(size), '\0');
    if (rkCFGValueString(handle, path, name, now.data(), &size, 0) != 0)
        return false;
    return size == static_cast<uint32_t>(now.size()) && now.startsWith(change.after->text);
}

bool writeOne(void *handle, const Change &change)
{
    const char *path = change.path.constData();
    const char *name = change.name.constData();
    if (!change.after)
        return libraryCalls().remove && libraryCalls().remove(handle, path, name) != 0;
    if (change.after->isText) {
        QByteArray text = change.after->text;
        auto size = static_cast<uint32_t>(text.size()) + 1;
        return rkCFGValueString(handle, path, name, text.data(), &size, 1) != 0 || isThere(handle, change);
    }
    uint32_t number = change.after->number;
    return rkCFGValueDword(handle, path, name, &number, 1) != 0 || isThere(handle, change);
}

Failure notWritten(const Change &change)
{
    return refused("the store did not take " + change.path + ' ' + change.name + "; nothing was changed");
}

} // namespace

Store::Store() : m_handle(reinterpret_cast<void *>(static_cast<intptr_t>(-1))) {}

Outcome<Store> Store::open(const QByteArray &name, bool create)
{
    if (!libraryCalls().open)
        return refused("this configuration library opens the default configuration only");
    void *handle = libraryCalls().open(name.constData(), create ? 1 : 0);
    if (!handle)
        return refused("configuration \"" + name + "\" cannot be opened");
    return Store(handle);
}

Store::Store(Store &&other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}

Store &Store::operator=(Store &&other) noexcept
{
    std::swap(m_handle, other.m_handle);
    return *this;
}

// Closing leaves no log behind when nobody else has the store open.
Store::~Store()
{
    if (m_handle)
        rkCFGClose(m_handle, 0);
}

Outcome<Snapshot> Store::read(const QByteArray &path) const
{
    Filler filler;
    const char *from = path.isEmpty() ? nullptr : path.constData();
    if (!libraryCalls().forEach || libraryCalls().forEach(m_handle, from, addRow, &filler) != 0)
        return refused("the store cannot be read");
    return std::move(filler.snapshot);
}

Outcome<Done> Store::save()
{
    if (rkCFGSave(m_handle, nullptr, 0) != 0)
        return refused("the change is stored but could not be made durable");
    return Done();
}

Outcome<Done> Store::write(const Change &change)
{
    if (!writeOne(m_handle, change))
        return notWritten(change);
    return Done();
}

// The label goes with the first write, or the next batch would get that of one that never was.
Outcome<Done> Store::writeAll(const Changes &changes, const QByteArray &label)
{
    if (libraryCalls().label && !label.isEmpty() && !changes.empty())
        libraryCalls().label(m_handle, label.constData());
    for (const Change &change : changes) {
        const Outcome<Done> done = write(change);
        if (!done)
            return done;
    }
    return Done();
}

Outcome<Done> Store::together(const QByteArray &label, const std::function<Outcome<Done>()> &body)
{
    StoreTransaction transaction(m_handle);
    if (!transaction.isOpen() && libraryCalls().begin)
        return storeBusy();
    if (!transaction.isOpen())
        return refused("this configuration library cannot store several values as one; nothing was changed");
    if (libraryCalls().label && !label.isEmpty())
        libraryCalls().label(m_handle, label.constData());
    const Outcome<Done> done = body();
    if (done && !transaction.keep())
        return refused("the store did not take the change; nothing was changed");
    return done;
}

// Without transactions in the library, a single value can still be stored safely.
Outcome<Done> Store::apply(const Changes &changes, const QByteArray &label)
{
    if (changes.empty())
        return Done();
    const auto body = [&] { return writeAll(changes, label); };
    const bool alone = !libraryCalls().begin && changes.size() == 1;
    const Outcome<Done> done = alone ? body() : together(QByteArray(), body);
    return done ? save() : done;
}

Outcome<Changes> Store::change(const Plan &plan, const QByteArray &label)
{
    Outcome<Changes> changes = Changes();
    const auto ask = [&]() -> Outcome<Done> {
        const Outcome<Snapshot> now = read();
        if (!now)
            return now.failure();
        changes = plan(*now);
        return changes ? Outcome<Done>(Done()) : changes.failure();
    };
    const auto askAndWrite = [&]() -> Outcome<Done> {
        const Outcome<Done> asked = ask();
        return asked ? writeAll(*changes, label) : asked;
    };
    const bool safe = libraryCalls().begin;
    Outcome<Done> done = safe ? together(QByteArray(), askAndWrite) : ask();
    if (done && !changes->empty())
        done = safe ? save() : apply(*changes, label);
    return done ? std::move(changes) : done.failure();
}

Failure storeBusy()
{
    return refused("the store is busy or cannot be written; nothing was changed");
}

} // namespace ops
