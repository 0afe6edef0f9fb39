// SPDX-License-Identifier: MIT
#include "corvelctl/changes.h"

#include "ops/vocabulary.h"

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
    return printable(ops::keyInWords(change.path, change.name)) + ": " +
           out.coloured(before, Output::Colour::Old) + " -> " + out.coloured(after, Output::Colour::New);
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

int applyChanges(Context &context, ops::Store &store, const ops::Changes &changes, const QByteArray &label,
                 Ask ask)
{
    if (changes.empty())
        return context.nothing("nothing to change");
    printChanges(context.out, changes);
    context.out.flush();
    const QByteArray values = counted(changes.size(), "value");
    if (context.dryRun) {
        context.out.note(values + " would change");
        return Done;
    }
    if (ask == Ask::Always && !agreed(context, "Change " + values + '?')) {
        Output::error("nothing was changed");
        return Usage;
    }
    const auto done = store.apply(changes, label);
    if (!done)
        return context.fail(done.failure());
    context.out.note(values + " changed");
    return Done;
}
