// SPDX-License-Identifier: MIT
#include "ops/operand.h"

#include "ops/batch.h"
#include "ops/configurations.h"
#include "ops/dump.h"
#include "ops/inputfile.h"
#include "ops/place.h"
#include "ops/settings.h"

#include <QFile>

#include <algorithm>

namespace ops {

namespace {

constexpr char kConfiguration[] = "config:";

Outcome<Operand> fromStore(const Store &store)
{
    const Outcome<Snapshot> values = store.read();
    if (!values)
        return values.failure();
    return Operand{*values};
}

Outcome<Operand> fromConfiguration(const QByteArray &name)
{
    if (!hasConfiguration(name))
        return wrong("\"" + name + "\" is no file, no configuration and no channel");
    const Outcome<Store> store = Store::open(name);
    if (!store)
        return store.failure();
    return fromStore(*store);
}

Outcome<Operand> fromDump(const QByteArray &text, const QByteArray &file, const QByteArray &name)
{
    const Outcome<Dump> dump = readDump(text);
    if (!dump)
        return wrong(file + ": " + dump.failure().text);
    const auto named = [&name](const Configuration &configuration) { return configuration.name == name; };
    const auto at = name.isEmpty() ? dump->begin() : std::find_if(dump->begin(), dump->end(), named);
    if (at == dump->end())
        return wrong(file + " holds no configuration \"" + name + '"');
    if (name.isEmpty() && dump->size() > 1)
        return wrong(file + " holds several configurations; choose one, as in " + file + '#' + at->name);
    return Operand{at->values};
}

Outcome<Operand> fromFile(const QByteArray &file, const QByteArray &name)
{
    const Outcome<QByteArray> text = readInput(file);
    if (!text)
        return text.failure();
    if (text->trimmed().startsWith('{'))
        return fromDump(*text, file, name);
    const Snapshot nothing;
    Draft draft(nothing);
    const Outcome<SettingsRead> read = importSettings(*text, draft);
    if (!read)
        return wrong(file + ": neither a dump nor a settings file");
    std::vector<Row> rows;
    for (const Change &change : draft.changes())
        rows.push_back({change.path, change.name, *change.after});
    return Operand{Snapshot::fromRows(std::move(rows)), -1, true};
}

bool isChannel(const QByteArray &text)
{
    const Outcome<Place> place = parsePlace(text);
    return place && place->channel >= 0 && !place->element;
}

Outcome<Operand> fromChannel(int channel, const Store &store)
{
    Outcome<Operand> operand = fromStore(store);
    if (!operand)
        return operand;
    const Outcome<Done> known = checkChannel(channel, operand->values);
    if (!known)
        return known.failure();
    operand->channel = channel;
    return operand;
}

// One channel's rows, under the path of `as`.
Snapshot onlyChannel(const Snapshot &values, int channel, int as)
{
    std::vector<Row> rows;
    for (const Row *row : values.rowsOf(channelPath(channel)))
        rows.push_back({channelPath(as), row->name, row->value});
    return Snapshot::fromRows(std::move(rows));
}

} // namespace

Outcome<Operand> readOperand(const QByteArray &text, const Store &store)
{
    if (text == "store")
        return fromStore(store);
    if (text.startsWith(kConfiguration))
        return fromConfiguration(text.mid(static_cast<int>(sizeof kConfiguration) - 1));
    if (QFile::exists(QFile::decodeName(text)) || text == "-")
        return fromFile(text, QByteArray());
    const int hash = text.lastIndexOf('#');
    if (hash > 0 && QFile::exists(QFile::decodeName(text.left(hash))))
        return fromFile(text.left(hash), text.mid(hash + 1));
    if (!isChannel(text))
        return fromConfiguration(text);
    return fromChannel(parsePlace(text)->channel, store);
}

Changes compare(const Operand &left, const Operand &right)
{
    const int shown = left.channel >= 0 ? left.channel : right.channel;
    const int other = right.channel >= 0 ? right.channel : left.channel;
    Changes changes = shown < 0 ? difference(left.values, right.values)
                                : difference(onlyChannel(left.values, shown, shown),
                                             onlyChannel(right.values, other, shown));
    // A settings file says "empty" and 0 where the store has nothing.
    const auto isNothing = [](const std::optional<Value> &value) {
        return !value || (value->text.isEmpty() && value->number == 0);
    };
    const auto untold = [&](const Change &change) {
        const bool partial = (left.partial && !change.before) || (right.partial && !change.after);
        return partial ||
               ((left.partial || right.partial) && isNothing(change.before) && isNothing(change.after));
    };
    changes.erase(std::remove_if(changes.begin(), changes.end(), untold), changes.end());
    return changes;
}

} // namespace ops
