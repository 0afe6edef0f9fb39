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
    return withValues(context, [&](const ops::Store &, const ops::Snapshot &values) -> int {
        const auto which = options.all ? ops::Preflight::All : ops::Preflight::Used;
        const ops::Findings findings = ops::runPreflight(values, ops::machinePicture(), which);
        if (findings.empty() && !options.junit)
            context.out.note("nothing found");
        return options.junit ? showJunit(context, findings, "check", ops::preflightRuleNames())
                             : showFindings(context, findings);
    });
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
