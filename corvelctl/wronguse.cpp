// SPDX-License-Identifier: MIT
#include "corvelctl/wronguse.h"

#include "corvelctl/context.h"
#include "ops/suggest.h"

#include <CLI/CLI.hpp>

namespace {

QByteArrayList commandNames(const CLI::App &app)
{
    QByteArrayList names;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; }))
        names.append(bytes(command->get_name()));
    return names;
}

QByteArrayList optionNames(const CLI::App &app)
{
    QByteArrayList names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames())
            names.append("--" + bytes(name));
    }
    return names;
}

// The words that are no options and no values of options: commands, then their arguments.
QByteArrayList plainWords(int argc, char **argv)
{
    QByteArrayList words;
    for (int at = 1; at < argc; ++at) {
        const QByteArray word = argv[at];
        if (word == "-c" || word == "--config")
            ++at;
        else if (!word.startsWith('-'))
            words.append(word);
    }
    return words;
}

// The last command that the words name, and what may have been meant where one is none.
struct Reached {
    const CLI::App *command;
    QByteArray unknown;
};

Reached follow(const CLI::App &app, const QByteArrayList &words)
{
    const CLI::App *at = &app;
    for (const QByteArray &word : words) {
        const QByteArrayList names = commandNames(*at);
        if (names.contains(word))
            at = at->get_subcommand(word.toStdString());
        else if (at->get_require_subcommand_min() > 0)
            return {at, "no command \"" + word.left(80) + '"' + ops::didYouMean(word, names)};
        else
            break;
    }
    return {at, QByteArray()};
}

// A group of commands was named and none of it, or nothing at all.
QByteArray missingCommand(const CLI::App &app, const CLI::App &reached)
{
    if (&reached == &app)
        return "name a command; corvelctl --help lists them";
    return bytes(reached.get_name()) + " needs one of " + commandNames(reached).join(", ");
}

// An option that neither the command nor all have.
QByteArray unknownOption(const CLI::App &app, const CLI::App &reached, int argc, char **argv)
{
    const QByteArrayList names = optionNames(reached) + optionNames(app);
    for (int at = 1; at < argc; ++at) {
        const QByteArray word = QByteArray(argv[at]).split('=').first();
        if (word.size() > 2 && word.startsWith("--") && !names.contains(word))
            return "no option \"" + word.left(80) + '"' + ops::didYouMean(word, names);
    }
    return QByteArray();
}

} // namespace

QByteArray wrongUse(const CLI::App &app, const CLI::ParseError &error, int argc, char **argv)
{
    const Reached reached = follow(app, plainWords(argc, argv));
    if (!reached.unknown.isEmpty())
        return reached.unknown;
    const bool none = reached.command->get_require_subcommand_min() > 0;
    if (none && dynamic_cast<const CLI::RequiredError *>(&error))
        return missingCommand(app, *reached.command);
    const bool extra = dynamic_cast<const CLI::ExtrasError *>(&error);
    const QByteArray option = extra ? unknownOption(app, *reached.command, argc, argv) : QByteArray();
    return option.isEmpty() ? QByteArray(error.what()) : option;
}
