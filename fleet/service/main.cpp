// SPDX-License-Identifier: MIT
// corvel-fleet: the service, and its commands for people. docs/corvel-fleet.1 is its manual.
#include "corvelctl/complete.h"
#include "corvelctl/options.h"
#include "fleet/service/service.h"
#include "fleet/tool/fleetcontext.h"
#include "rkos.h"

#include <QCoreApplication>

#include <CLI/CLI.hpp>

namespace {

constexpr char kAbout[] =
    "Keeps this machine's settings and the site's equal, and shows and changes those of many servers.";

struct RunOptions {};

int runIt(Context &context, const RunOptions &)
{
    return fleet::runService(configFile(context));
}

void declareRun(Command &, RunOptions &) {}

void addCommands(Command app, FleetContext &context)
{
    addCommand<RunOptions>(app, context, "run", "The service itself, until SIGTERM", "corvel-fleet run",
                           declareRun, runIt);
    addStatusCommand(app, context);
    addConflictCommands(app, context);
    addMembershipCommands(app, context);
    addManyServersCommands(app, context);
    addRestoreCommand(app, context);
    addCheckCommand(app, context);
}

int run(CLI::App &app, Context &context, int argc, char **argv)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &wanted) { // --help, --version
        return app.exit(wanted);
    } catch (const CLI::ParseError &error) {
        Output::error(error.what());
        return Usage;
    }
    return context.out.finish() ? context.exit : StoreFailed;
}

} // namespace

int main(int argc, char **argv)
{
    guardStandardStreams();
    ErrLogSetFileName("corvel-fleet");
    const QCoreApplication application(argc, argv);
    CLI::App app(kAbout, "corvel-fleet");
    FleetContext context;
    app.set_version_flag("--version", "corvel-fleet " CORVEL_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--file", context.file, "The configuration file, when it is not the usual one");
    addCommonOptions(app, context);
    addCommands(Command(app), context);
    if (isCompletion(argc, argv)) // handed over by corvelctl
        return complete(app, context, argc, argv, "fleet");
    return run(app, context, argc, argv);
}
