// SPDX-License-Identifier: MIT
#include "takeback.h"

#include <algorithm>
#include <map>
#include <utility>

namespace rkcfg {

namespace {

// Paths compare without ASCII case, as in the store.
std::string folded(std::string text)
{
    for (char &c : text) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

// A value that changed several times in the batch has its first old and its last new value.
std::vector<Change> netChanges(std::vector<Change> changes)
{
    std::vector<Change> net;
    std::map<std::pair<std::string, std::string>, size_t> places;
    for (Change &change : changes) {
        const auto [place, fresh] = places.try_emplace({folded(change.path), change.name}, net.size());
        if (fresh)
            net.push_back(std::move(change));
        else
            net[place->second].after = std::move(change.after);
    }
    return net;
}

// Sets one value back or tells why not. The change becomes the conflict when there is one.
int takeOneBack(Connection &connection, const TakeBackOrder &order, Batch &batch, Change &change,
                bool &conflict)
{
    const Key key{change.path.c_str(), change.name.c_str()};
    Kept present;
    int code = connection.read(key, [&](const Value &value) { present = Kept(value); });
    if (code != SQLITE_OK || present.value() == change.before.value())
        return code;
    conflict = !(present.value() == change.after.value());
    change.after = std::move(present);
    if (order.dryRun || (conflict && !order.force))
        return SQLITE_OK;
    bool changed = false;
    return connection.change(key, change.before.value(), batch, changed);
}

} // namespace

int takeBack(Connection &connection, const TakeBackOrder &order, Batch &batch, TakeBackResult &result)
{
    std::vector<Change> changes;
    int code = connection.history().readBatch(order.batch, changes);
    result.known = !changes.empty();
    if (code != SQLITE_OK || !result.known)
        return code;
    batch.id = 0;
    batch.undoes = order.batch;
    for (Change &change : netChanges(std::move(changes))) {
        bool conflict = false;
        code = takeOneBack(connection, order, batch, change, conflict);
        if (code != SQLITE_OK)
            return code;
        if (conflict)
            result.conflicts.push_back(std::move(change));
    }
    result.newBatch = batch.id;
    return SQLITE_OK;
}

} // namespace rkcfg
