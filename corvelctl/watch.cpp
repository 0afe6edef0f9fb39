// SPDX-License-Identifier: MIT
// Watching: a line for every change as it happens, with who made it.
#include "channel/librarycalls.h"
#include "corvelctl/batchtext.h"
#include "corvelctl/changes.h"
#include "corvelctl/families.h"
#include "ops/configurations.h"
#include "ops/history.h"

#include <chrono>
#include <thread>

namespace {

constexpr auto kPause = std::chrono::milliseconds(50); // a look costs microseconds

struct WatchOptions {
    int count = 0;
};

void printChangeOf(Output &out, const ops::Batch &batch)
{
    const ops::Change &change = batch.changes.front();
    out.item([&] {
        Json item = batchItem(batch);
        item.update(changeItem(change));
        return item;
    });
    if (out.isText()) {
        const QByteArray who = batch.program + " (" + batch.user + ") ";
        out.line(ops::isoTime(batch.timeUs).mid(11, 12) + ' ' + printable(who) + changeText(out, change));
    }
    out.flush();
}

// Somebody deleted or renamed the configuration that is watched.
bool isGone(const Context &context)
{
    return !context.configuration.empty() && !ops::hasConfiguration(bytes(context.configuration));
}

// Ends after so many changes, or never. A JSON document would never end, so watching is always in lines.
int follow(Context &context, const ops::Store &store, qint64 after, int count)
{
    QByteArray used = ops::defaultConfiguration();
    int seen = 0;
    uint64_t mark = 0;
    while (count == 0 || seen < count) {
        const int changed = libraryCalls().changed(store.handle(), &mark);
        if (changed < 0 && isGone(context))
            return context.fail(
                ops::refused("the configuration \"" + bytes(context.configuration) + "\" is gone"));
        if (changed <= 0) { // nothing new, or not readable at this moment
            std::this_thread::sleep_for(kPause);
            continue;
        }
        const QByteArray now = ops::defaultConfiguration();
        const bool switched = context.configuration.empty() && now != used;
        if (switched)
            context.out.note("the server uses the configuration \"" + now + "\" from now on");
        used = now;
        const auto newest = switched ? ops::newestChange(store)
                                     : ops::followHistory(store, after, [&](const ops::Batch &batch) {
                                           if (count == 0 || seen++ < count)
                                               printChangeOf(context.out, batch);
                                       });
        if (!newest)
            return context.fail(newest.failure());
        after = *newest;
    }
    return Done;
}

int watch(Context &context, const WatchOptions &options)
{
    if (!context.out.isText())
        context.out.form = Output::Form::Lines;
    const auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    if (!libraryCalls().changed)
        return context.fail(ops::refused("this configuration library cannot be watched"));
    const auto newest = ops::newestChange(*store);
    if (!newest)
        return context.fail(newest.failure());
    context.out.note("watching; end with Ctrl+C");
    return follow(context, *store, *newest, options.count);
}

void declareWatch(Command &command, WatchOptions &options)
{
    command.option("--count", options.count, "End after so many changes").positive();
}

} // namespace

void addWatchCommand(Command &app, Context &context)
{
    addCommand<WatchOptions>(app, context, "watch", "Print changes as they happen, with who made them",
                             "corvelctl watch --lines --count 1", declareWatch, watch);
}
