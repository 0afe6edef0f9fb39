// SPDX-License-Identifier: MIT
// corvelctl: the whole server from a shell. docs/corvelctl.1 is its manual.
#include "corvelctl/complete.h"
#include "corvelctl/context.h"
#include "corvelctl/families.h"
#include "corvelctl/options.h"
#include "ops/suggest.h"

namespace {

constexpr char kAbout[] =
    "Looks at and changes everything that the corvel dialog sets up, for all channels at once.";

constexpr char kExitCodes[] =
    "Exit status: 0 done, 1 something was found or differs, 2 wrong use, 3 the store or the "
    "system refused,\n4 partly done, 5 nothing to do (with --fail-if-none).";

void addOptions(CLI::App &app, Context &context)
{
    app.add_option("-c,--config", context.configuration,
                   "Work on this configuration; the server keeps its own");
    addCommonOptions(app, context);
    app.add_flag("--fail-if-none", context.failIfNone, "Exit status 5 when there is nothing to do");
}

void addFamilies(CLI::App &app, Context &context)
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

QByteArrayList commandNames(const CLI::App &app)
{
    QByteArrayList names;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
        if (!command->get_name().empty())
            names.append(bytes(command->get_name()));
    }
    return names;
}

// The first word that is no option.
QByteArray firstWord(int argc, char **argv)
{
    for (int at = 1; at < argc; ++at) {
        if (argv[at][0] != '-')
            return argv[at];
    }
    return QByteArray();
}

int wrongUse(const CLI::App &app, const CLI::ParseError &error, int argc, char **argv)
{
    const QByteArrayList names = commandNames(app);
    const QByteArray word = firstWord(argc, argv);
    if (!word.isEmpty() && !names.contains(word))
        Output::error("no command \"" + word + '"' + ops::didYouMean(word, names));
    else
        Output::error(error.what());
    return Usage;
}

int run(CLI::App &app, Context &context, int argc, char **argv)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &wanted) { // --help, --version
        app.exit(wanted);
        return context.out.finish() ? Done : StoreFailed;
    } catch (const CLI::ParseError &error) {
        return wrongUse(app, error, argc, argv);
    }
    if (context.out.finish())
        return context.exit;
    Output::error("the output could not be written");
    return StoreFailed;
}

// "__complete" and the words so far; before everything else, as they are no words of ours yet.
int complete(const CLI::App &app, Context &context, int argc, char **argv)
{
    QByteArrayList words;
    for (int at = 2; at < argc; ++at)
        words.append(argv[at]);
    for (const QByteArray &candidate : completions(app, context, words))
        context.out.line(candidate);
    return context.out.finish() ? Done : StoreFailed;
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app(kAbout, "corvelctl");
    Context context;
    app.footer(kExitCodes);
    app.set_version_flag("--version", "corvelctl " CORVELCTL_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    addOptions(app, context);
    addFamilies(app, context);
    if (argc > 1 && qstrcmp(argv[1], "__complete") == 0)
        return complete(app, context, argc, argv);
    return run(app, context, argc, argv);
}
