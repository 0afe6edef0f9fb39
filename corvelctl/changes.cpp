// SPDX-License-Identifier: MIT
#include "corvelctl/changes.h"

#include "ops/vocabulary.h"

#include <QStringBuilder>

#include <cstdio>
#include <unistd.h>

namespace {

Json valueItem(const std::optional<ops::Value> &value)
{
    if (!value)
        return nullptr;
    return value->isText ? jsonText(value->text) : Json(value->number);
}

} // namespace

QByteArray counted(std::size_t number, const char *thing)
{
    return QByteArray::number(static_cast<qulonglong>(number)) + ' ' + thing + (number == 1 ? "" : "s");
}

Json changeItem(const ops::Change &change)
{
    return {{"key", jsonText(ops::keyInWords(change.path, change.name))},
            {"path", jsonText(change.path)},
            {"name", jsonText(change.name)},
            {"before", valueItem(change.before)},
            {"after", valueItem(change.after)}};
}

QByteArray changeText(const Output &out, const ops::Change &change)
{
    const QByteArray before = printable(ops::valueInWords(change.path, change.name, change.before));
    const QByteArray after = printable(ops::valueInWords(change.path, change.name, change.after));
    return printable(ops::keyInWords(change.path, change.name)) % ": " %
           out.coloured(before, Output::Colour::Old) % " -> " % out.coloured(after, Output::Colour::New);
}

void printChange(Output &out, const ops::Change &change)
{
    out.item([&change] { return changeItem(change); });
    if (out.isText())
        out.line(changeText(out, change));
}

void printChanges(Output &out, const ops::Changes &changes)
{
    for (const ops::Change &change : changes)
        printChange(out, change);
}

bool agreed(const Context &context, const QByteArray &question)
{
    if (context.yes)
        return true;
    if (!isatty(STDIN_FILENO)) {
        Output::error(question + " Add --yes where nobody can be asked");
        return false;
    }
    fprintf(stderr, "%s [y/N] ", printable(question).constData());
    char answer[16] = "";
    return fgets(answer, sizeof answer, stdin) && (answer[0] == 'y' || answer[0] == 'Y');
}

namespace {

int tell(const Context &context, const ops::Changes &changes, const char *what)
{
    if (changes.empty())
        return context.nothing("nothing to change");
    context.out.note(counted(changes.size(), "value") + what);
    return Done;
}

ops::Outcome<ops::Changes> preview(Context &context, const ops::Store &store, const ops::Plan &plan)
{
    const auto now = store.read();
    if (!now)
        return now.failure();
    auto changes = plan(*now);
    if (changes)
        printChanges(context.out, *changes);
    return changes;
}

int apply(Context &context, ops::Store &store, const ops::Plan &plan, const QByteArray &label)
{
    const auto done = store.change(plan, label);
    if (!done)
        return context.fail(done.failure());
    printChanges(context.out, *done);
    return tell(context, *done, " changed");
}

// While somebody is reading the question the store belongs to everybody, so the plan is made once more.
int askAndApply(Context &context, ops::Store &store, const ops::Plan &plan, const QByteArray &label)
{
    const auto shown = preview(context, store, plan);
    if (!shown)
        return context.fail(shown.failure());
    if (shown->empty())
        return tell(context, *shown, "");
    Output::flush();
    if (!agreed(context, "Change " + counted(shown->size(), "value") + '?')) {
        Output::error("nothing was changed");
        return Usage;
    }
    const auto asShown = [&](const ops::Snapshot &now) -> ops::Outcome<ops::Changes> {
        auto changes = plan(now);
        if (changes && !(*changes == *shown))
            return ops::refused("the store was changed meanwhile; nothing was done");
        return changes;
    };
    const auto done = store.change(asShown, label);
    return done ? tell(context, *done, " changed") : context.fail(done.failure());
}

} // namespace

int applyPlan(Context &context, ops::Store &store, const ops::Plan &plan, const QByteArray &label, Ask ask)
{
    if (context.dryRun) {
        const auto shown = preview(context, store, plan);
        return shown ? tell(context, *shown, " would change") : context.fail(shown.failure());
    }
    if (ask == Ask::Always && !context.yes)
        return askAndApply(context, store, plan, label);
    return apply(context, store, plan, label);
}

QByteArray fileLabel(const char *command, const QByteArray &path)
{
    return command + (' ' + path.mid(path.lastIndexOf('/') + 1));
}
