// SPDX-License-Identifier: MIT
// Many channels at once: copy, flows, table export and import.
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/batch.h"
#include "ops/copychannels.h"
#include "ops/inputfile.h"
#include "ops/table.h"

#include <algorithm>

namespace {

QByteArrayList listOf(const std::vector<std::string> &words)
{
    QByteArrayList list;
    for (const std::string &word : words)
        list.append(bytes(word));
    return list;
}

// The channels of a text, all of them offered by the server.
ops::Outcome<std::vector<int>> channelsOf(const std::string &text, const ops::Snapshot &snapshot)
{
    const int count = ops::channelCount(snapshot);
    const auto places = ops::parsePlaces(bytes(text), count);
    if (!places)
        return places.failure();
    std::vector<int> channels;
    for (const ops::Place &place : *places) {
        if (place.channel < 0 || place.element)
            return ops::wrong("channels are needed, such as 0 or 1-7");
        if (place.channel >= count)
            return ops::wrong(ops::noSuchChannel(place.channel, count));
        channels.push_back(place.channel);
    }
    return channels;
}

struct CopyOptions {
    std::string from, to;
    std::vector<std::string> fields, steps;
};

int copy(Context &context, const CopyOptions &options)
{
    const QByteArray label = ops::batchLabel(QByteArrayList{"copy", bytes(options.from), bytes(options.to)} +
                                             listOf(options.steps));
    return applyDraft(context, label, Ask::Always, [&](ops::Draft &draft) -> ops::Outcome<ops::Done> {
        const auto from = channelsOf(options.from, draft.base());
        if (!from)
            return from.failure();
        const auto to = channelsOf(options.to, draft.base());
        if (!to)
            return to.failure();
        if (from->size() != 1)
            return ops::wrong("one channel is copied at a time");
        return ops::copyChannels({from->front(), *to, listOf(options.fields), listOf(options.steps)}, draft);
    });
}

void declareCopy(Command &command, CopyOptions &options)
{
    command.option("from", options.from, "The channel to copy").required();
    command.option("to", options.to, "Where to: 1-7, or 1,3,5").required();
    command
        .option("--fields", options.fields, "Only these: rx, tx, video, audio, anc, rx.dst, dst, format ...")
        .withCommas()
        .oneEachTime();
    command.option("--step", options.steps, "Added from channel to channel: dst=0.0.1.0, port=2")
        .oneEachTime();
}

struct FlowOptions {
    std::string channels, from, step, side = "tx";
    int count = 8, portStep = 0;
};

int flows(Context &context, const FlowOptions &options)
{
    const ops::FlowOrder order{bytes(options.from), options.count,        bytes(options.step),
                               options.portStep,    options.side != "tx", options.side != "rx"};
    const QByteArray label =
        ops::batchLabel({"flows", bytes(options.channels), "--from", bytes(options.from)});
    return applyDraft(context, label, Ask::Never, [&](ops::Draft &draft) -> ops::Outcome<ops::Done> {
        const auto channels = channelsOf(options.channels, draft.base());
        if (!channels)
            return channels.failure();
        if (channels->size() != 1)
            return ops::wrong(
                "flows are set for one channel at a time, or all would have the same addresses");
        return ops::setFlows(channels->front(), order, draft);
    });
}

void declareFlows(Command &command, FlowOptions &options)
{
    command.option("channel", options.channels, "The channel").required();
    command.option("--from", options.from, "Destination and port of flow 0: IP:PORT").required();
    command.option("--count", options.count, "Number of flows, 1 to 8").within(1, 8);
    command.option("--step", options.step, "Added to the address from flow to flow, 0.0.0.1 when left out");
    command.option("--port-step", options.portStep, "Added to the port from flow to flow");
    command.option("--side", options.side, "rx, tx or both; tx when left out").oneOf({"rx", "tx", "both"});
}

struct TableOptions {
    std::string file;
    bool apply = false;
    bool force = false;
};

int exportFile(Context &context, const TableOptions &options)
{
    return withValues(context, [&](const ops::Store &, const ops::Snapshot &values) {
        return context.writeFile(bytes(options.file), ops::exportTable(values));
    });
}

bool isSame(const ops::Row &left, const ops::Row &right)
{
    return left.path == right.path && left.name == right.name && left.value == right.value;
}

bool holdTheSame(const ops::Snapshot &left, const ops::Snapshot &right)
{
    return std::equal(left.rows().begin(), left.rows().end(), right.rows().begin(), right.rows().end(),
                      isSame);
}

// What is wrong with the table is told before anything is held up by a transaction, so it has been read into
// the draft already. Inside the transaction it is read once more only when the server is another one by now.
ops::Plan asRead(const ops::Draft &draft, const QByteArray &table, bool anyChannel)
{
    return [&draft, &table, anyChannel](const ops::Snapshot &now) -> ops::Outcome<ops::Changes> {
        if (holdTheSame(draft.base(), now))
            return draft.changes();
        ops::Draft again(now);
        if (!ops::importTable(table, anyChannel, again).isEmpty())
            return ops::wrong("the server has other channels by now; nothing was changed");
        return again.changes();
    };
}

// changes: whether the table would change anything.
int importTable(Context &context, const QByteArray &table, const TableOptions &options, bool &changes)
{
    auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const auto values = store->read();
    if (!values)
        return context.fail(values.failure());
    ops::Draft draft(*values);
    const QByteArrayList complaints = ops::importTable(table, options.force, draft);
    for (const QByteArray &complaint : complaints)
        Output::error(bytes(options.file) + ", " + complaint);
    if (!complaints.isEmpty())
        return context.usage(counted(static_cast<std::size_t>(complaints.size()), "error") +
                             "; nothing was changed");
    changes = !draft.changes().empty();
    return applyPlan(context, *store, asRead(draft, table, options.force),
                     fileLabel("table import", bytes(options.file)), Ask::Never);
}

int importFile(Context &context, const TableOptions &options)
{
    const auto text = ops::readInput(bytes(options.file));
    if (!text)
        return context.fail(text.failure());
    const bool dry = !options.apply || context.dryRun;
    context.dryRun = dry;
    bool changes = false;
    const int code = importTable(context, *text, options, changes);
    if (code == Done && dry && changes)
        context.out.note("nothing was changed; --apply does it");
    return code;
}

void declareExport(Command &command, TableOptions &options)
{
    command.option("file", options.file, "The table; - is standard input or output").required();
}

void declareImport(Command &command, TableOptions &options)
{
    declareExport(command, options);
    command.flag("--apply", options.apply, "Change the store; without it the changes are only printed");
    command.flag("--force", options.force, "Also channels beyond the server's");
}

} // namespace

void addManyCommands(Command &app, Context &context)
{
    addCommand<CopyOptions>(app, context, "copy", "Make channels what another one is, with steps",
                            "corvelctl copy 0 1-7 --step dst=0.0.1.0 --step port=2", declareCopy, copy);
    addCommand<FlowOptions>(app, context, "flows", "Give the audio flows of a channel addresses in a row",
                            "corvelctl flows 0 --from 239.30.0.1:20000 --count 8", declareFlows, flows);
    Command table = app.addGroup("table", "All channels as one table for spreadsheets");
    addCommand<TableOptions>(table, context, "export", "Write the table", "corvelctl table export site.csv",
                             declareExport, exportFile);
    addCommand<TableOptions>(table, context, "import", "Say what a table would change, or change it",
                             "corvelctl table import site.csv --apply", declareImport, importFile);
}
