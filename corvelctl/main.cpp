// SPDX-License-Identifier: MIT
// corvelctl: the whole server from a shell. docs/corvelctl.1 is its manual.
#include "corvelctl/complete.h"
#include "corvelctl/context.h"
#include "corvelctl/families.h"
#include "corvelctl/options.h"
#include "corvelctl/wronguse.h"

#include <QTextCodec>

#include <CLI/CLI.hpp>

namespace {

constexpr char kAbout[] =
    "Looks at and changes everything that the corvel dialog sets up, for all channels at once.";

constexpr char kFooter[] =
    "Example:\n  corvelctl set 2/video rx.dst=239.20.2.1:20000\n\n"
    "Exit status: 0 done, 1 something was found or differs, 2 wrong use, 3 the store or the "
    "system refused,\n4 partly done, 5 nothing to do (with --fail-if-none).";

void addOptions(CLI::App &app, Context &context)
{
    Argument(app.add_option("-c,--config", context.configuration,
                            "Work on this configuration; the server keeps its own"))
        .notEmpty();
    addCommonOptions(app, context);
    app.add_flag("--fail-if-none", context.failIfNone, "Exit status 5 when there is nothing to do");
}

void addFamilies(Command app, Context &context)
{
    addLookCommands(app, context);
    addChangeCommands(app, context);
    addDumpCommands(app, context);
    addIppCommands(app, context);
    addConfigCommands(app, context);
    addManyCommands(app, context);
    addTimeCommands(app, context);
    addWatchCommand(app, context);
    addClockCommands(app, context);
    addSdpCommands(app, context);
    addCheckCommands(app, context);
    addFleetCommand(app, context);
}

// What a group of commands shows as its example is its first command's.
void giveExamples(CLI::App &app)
{
    for (CLI::App *group : app.get_subcommands([](CLI::App *) { return true; })) {
        const auto commands = group->get_subcommands([](CLI::App *) { return true; });
        if (group->get_footer().empty() && !commands.empty())
            group->footer(commands.front()->get_footer());
    }
}

int run(CLI::App &app, Context &context, int argc, char **argv)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &wanted) { // --help, --version
        app.exit(wanted);
        return context.out.finish() ? Done : StoreFailed;
    } catch (const CLI::ParseError &error) {
        Output::error(wrongUse(app, error, argc, argv));
        return Usage;
    }
    if (context.out.finish())
        return context.exit;
    Output::error("the output could not be written");
    return StoreFailed;
}

} // namespace

int main(int argc, char **argv)
{
    guardStandardStreams();
    // Names of files and configurations are bytes, whatever the locale: Latin-1 takes each as it is.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    CLI::App app(kAbout, "corvelctl");
    Context context;
    app.set_version_flag("--version", "corvelctl " CORVELCTL_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    addOptions(app, context);
    addFamilies(Command(app), context);
    giveExamples(app);
    app.footer(kFooter); // after the others, which would inherit it
    if (isCompletion(argc, argv))
        return completesUnder("fleet", argc, argv) ? completeFleet(context, argc, argv)
                                                   : complete(app, context, argc, argv);
    return run(app, context, argc, argv);
}
