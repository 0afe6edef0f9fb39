// SPDX-License-Identifier: MIT
// The look at the whole server before it goes on air: check.
#include "ops/preflight.h"
#include "corvelctl/families.h"
#include "corvelctl/findingsout.h"

namespace {

struct CheckOptions {
    bool all = false;
    bool junit = false;
};

int check(Context &context, const CheckOptions &options)
{
    const auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const auto snapshot = store->read();
    if (!snapshot)
        return context.fail(snapshot.failure());
    const ops::Findings findings = ops::runPreflight(
        *snapshot, ops::machinePicture(), options.all ? ops::Preflight::All : ops::Preflight::Used);
    if (options.junit) {
        context.out.begin("");
        return showJunit(findings, "check", ops::preflightRuleNames());
    }
    if (findings.empty())
        context.out.note("nothing found");
    return showFindings(context, findings);
}

void declareCheck(Command &command, CheckOptions &options)
{
    command.flag("--all", options.all, "Also name the channels that were never set up");
    command.flag("--junit", options.junit, "JUnit XML as result, one test case per rule");
}

} // namespace

void addCheckCommands(Command &app, Context &context)
{
    addCommand<CheckOptions>(app, context, "check", "Look at every channel, the machine and what clashes",
                             "corvelctl check --all", declareCheck, check);
}
