// SPDX-License-Identifier: MIT
//
// What the commands that change something share: print the changes, ask, write them as one batch.
#ifndef CORVELCTL_CHANGES_H
#define CORVELCTL_CHANGES_H

#include "corvelctl/context.h"
#include "ops/draft.h"

// One line or item per value, "2/video rx.dst: 239.20.2.1 -> 239.20.9.1"; a dry run and diff print the same.
void printChanges(Output &out, const ops::Changes &changes);
void printChange(Output &out, const ops::Change &change);
QByteArray changeText(const Output &out, const ops::Change &change);

// The JSON form of one change, which the history extends.
Json changeItem(const ops::Change &change);

enum class Ask { Never, Always };

// Makes the changes of the plan true and prints them, as one transaction with a label for the history; a dry
// run only prints them. With Ask somebody at a terminal sees them first and is asked (without a terminal
// --yes is needed), and nothing is done when the store is another one by then.
int applyPlan(Context &context, ops::Store &store, const ops::Plan &plan, const QByteArray &label,
              Ask ask = Ask::Never);

// The same on the configuration of the command line, with what fill(draft) puts into a draft.
template<class Fill>
int applyDraft(Context &context, const QByteArray &label, Ask ask, const Fill &fill)
{
    auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const auto plan = [&fill](const ops::Snapshot &values) -> ops::Outcome<ops::Changes> {
        ops::Draft draft(values);
        const ops::Outcome<ops::Done> filled = fill(draft);
        return filled ? ops::Outcome<ops::Changes>(draft.changes()) : filled.failure();
    };
    return applyPlan(context, *store, plan, label, ask);
}

// "3 values" or "1 value", "Load File site.ipp" of a path.
QByteArray counted(std::size_t number, const char *thing);
QByteArray fileLabel(const char *command, const QByteArray &path);

// True when the user agrees: --yes, or an answer at the terminal.
bool agreed(const Context &context, const QByteArray &question);

#endif
