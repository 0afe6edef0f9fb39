// SPDX-License-Identifier: MIT
#include "corvelctl/complete.h"

#include "corvelctl/candidates.h"
#include "ops/configurations.h"
#include "ops/shellwords.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace {

struct Offered {
    QByteArrayList words;
    bool files = false; // a file name is right as well
};

// What a word behind a command, or behind an option, is.
enum class Wanted {
    Nothing,
    File,
    Path,
    Place,
    PlaceAndWord,
    Word,
    Assignment,
    Configuration,
    Channel,
    Interface,
    Field,
    Step,
    Operand
};

const struct {
    const char *command;
    Wanted first, others;
} kArguments[] = {
    {"show", Wanted::Place, Wanted::Nothing},
    {"get", Wanted::Place, Wanted::Word},
    {"set", Wanted::Place, Wanted::Assignment},
    {"unset", Wanted::Place, Wanted::Word},
    {"history", Wanted::Place, Wanted::Nothing},
    {"blame", Wanted::PlaceAndWord, Wanted::Word},
    {"copy", Wanted::Channel, Wanted::Channel},
    {"flows", Wanted::Channel, Wanted::Nothing},
    {"list", Wanted::Path, Wanted::Nothing},
    {"diff", Wanted::Operand, Wanted::Operand},
    {"dump", Wanted::File, Wanted::Nothing},
    {"restore", Wanted::File, Wanted::Nothing},
    {"ipp export", Wanted::File, Wanted::Nothing},
    {"ipp import", Wanted::File, Wanted::Nothing},
    {"ipp check", Wanted::File, Wanted::Nothing},
    {"table export", Wanted::File, Wanted::Nothing},
    {"table import", Wanted::File, Wanted::Nothing},
    {"sdp check", Wanted::File, Wanted::File},
    {"sdp fix", Wanted::File, Wanted::Nothing},
    {"config copy", Wanted::Configuration, Wanted::Nothing},
    {"config rename", Wanted::Configuration, Wanted::Nothing},
    {"config delete", Wanted::Configuration, Wanted::Nothing},
    {"config use", Wanted::Configuration, Wanted::Nothing},
    {"sdp load", Wanted::File, Wanted::Channel},
    {"sdp write", Wanted::Place, Wanted::Nothing},
    {"fleet status", Wanted::Configuration, Wanted::Configuration}, // a desk's copies have the servers' names
    {"fleet conflicts list", Wanted::Configuration, Wanted::Configuration},
    {"fleet diff", Wanted::Configuration, Wanted::Configuration},
    {"fleet set", Wanted::Place, Wanted::Assignment},
    {"fleet copy", Wanted::Configuration, Wanted::Place},
    {"fleet restore", Wanted::File, Wanted::Nothing},
};

// Options whose values are known to the server. Those with a list of their own are asked themselves.
const struct {
    const char *option;
    Wanted value;
} kValues[] = {
    {"-c", Wanted::Configuration}, {"--config", Wanted::Configuration}, {"--interface", Wanted::Interface},
    {"--of", Wanted::Channel},     {"--channel", Wanted::Channel},      {"--fields", Wanted::Field},
    {"--step", Wanted::Step},      {"--where", Wanted::Configuration},  {"-o", Wanted::File},
    {"--output", Wanted::File},
};

constexpr char kForAnyShell[] = "__complete";
constexpr char kForBash[] = "__complete_bash";
constexpr char kConfiguration[] = "config:";

// Where the words lead: the command, and what stands behind it.
struct Line {
    const CLI::App *command;
    QByteArray path;          // "config copy"
    QByteArrayList arguments; // without options
    QByteArray option;        // the last word but one, when it is an option
    QByteArray current;
};

const CLI::App *childOf(const CLI::App &app, const QByteArray &name)
{
    for (const CLI::App *child : app.get_subcommands([](const CLI::App *) { return true; })) {
        if (child->get_name() == name.toStdString())
            return child;
    }
    return nullptr;
}

bool takesValue(const Line &line, const QByteArray &word)
{
    const CLI::Option *option = line.command->get_option_no_throw(word.toStdString());
    const CLI::App *parent = line.command->get_parent();
    if (!option && parent)
        option = parent->get_option_no_throw(word.toStdString());
    return option ? option->get_items_expected_max() > 0 : word == "-c" || word == "--config";
}

Line readLine(const CLI::App &app, Context &context, const QByteArrayList &words)
{
    Line line{&app, {}, {}, {}, words.isEmpty() ? QByteArray() : words.last()};
    for (int at = 0; at + 1 < words.size(); ++at) {
        const QByteArray &word = words[at];
        line.option.clear();
        if (word.startsWith("--config="))
            context.configuration = word.mid(9).toStdString();
        if (word.startsWith('-')) {
            line.option = takesValue(line, word) ? word : QByteArray();
            const bool value = !line.option.isEmpty() && at + 2 < words.size();
            if (value && (word == "-c" || word == "--config"))
                context.configuration = words[at + 1].toStdString();
            if (value)
                line.option.clear();
            at += value;
            continue;
        }
        const CLI::App *child = line.arguments.isEmpty() ? childOf(*line.command, word) : nullptr;
        if (child) {
            line.command = child;
            line.path += (line.path.isEmpty() ? "" : " ") + word;
        } else {
            line.arguments.append(word);
        }
    }
    return line;
}

// The place of the line, "2/video", or nothing.
std::optional<ops::Place> placeOf(const Line &line)
{
    const auto places = line.arguments.isEmpty() ? ops::Outcome<std::vector<ops::Place>>(ops::wrong(""))
                                                 : ops::parsePlaces(line.arguments.first(), 1);
    return places && !places->empty() ? std::optional<ops::Place>(places->front()) : std::nullopt;
}

QByteArrayList assignments(const Line &line)
{
    const auto place = placeOf(line);
    if (!place)
        return {};
    if (line.current.contains('='))
        return valuesOf(*place, line.current);
    QByteArrayList found;
    for (const QByteArray &word : wordsAndNames(*place, line.current))
        found.append(word + '=');
    return found;
}

QByteArrayList operands(const Line &line, const Context &context)
{
    QByteArrayList found{"store"};
    const bool named = line.current.startsWith(kConfiguration);
    for (const QByteArray &name : ops::configurationNames())
        found.append(named ? kConfiguration + name : name);
    return found + channelNumbers(context);
}

QByteArrayList wanted(const Line &line, const Context &context, Wanted what)
{
    const auto place = placeOf(line);
    switch (what) {
    case Wanted::Nothing:
    case Wanted::File:
        return {};
    case Wanted::Path:
        return paths(context);
    case Wanted::Place:
        return places(context, line.current);
    case Wanted::PlaceAndWord:
        return placesAndWords(context, line.current);
    case Wanted::Word:
        return place ? wordsAndNames(*place, line.current) : QByteArrayList();
    case Wanted::Assignment:
        return assignments(line);
    case Wanted::Configuration:
        return ops::configurationNames();
    case Wanted::Channel:
        return channelNumbers(context);
    case Wanted::Interface:
        return interfaceAddresses();
    case Wanted::Field:
        return fieldWords(line.current, false);
    case Wanted::Step:
        return fieldWords(line.current, true);
    case Wanted::Operand:
        return operands(line, context);
    }
    return {};
}

QByteArrayList commandsOf(const CLI::App &app)
{
    QByteArrayList names;
    for (const CLI::App *child : app.get_subcommands([](const CLI::App *) { return true; }))
        names.append(bytes(child->get_name()));
    return names;
}

QByteArrayList optionsOf(const CLI::App &app)
{
    QByteArrayList names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames())
            names.append("--" + bytes(name));
    }
    return names;
}

// "TEXT:{rx,tx,both}" is how an option with a list of values tells of itself.
QByteArrayList listedValues(const Line &line)
{
    const CLI::Option *option = line.command->get_option_no_throw(line.option.toStdString());
    const QByteArray type = option ? bytes(option->get_type_name()) : QByteArray();
    const int from = type.indexOf('{'), to = type.lastIndexOf('}');
    return from >= 0 && to > from ? type.mid(from + 1, to - from - 1).split(',') : QByteArrayList();
}

Wanted optionWants(const QByteArray &option)
{
    for (const auto &row : kValues) {
        if (option == row.option)
            return row.value;
    }
    return Wanted::Nothing;
}

Offered valuesOfOption(const Line &line, const Context &context)
{
    const Wanted what = optionWants(line.option);
    return {what == Wanted::Nothing ? listedValues(line) : wanted(line, context, what), what == Wanted::File};
}

// "--side=t" completes to "--side=tx".
Offered valuesBehindEquals(Line line, const Context &context)
{
    const QByteArray before = line.current.left(line.current.indexOf('=') + 1);
    line.option = before.chopped(1);
    line.current.remove(0, before.size());
    Offered found = valuesOfOption(line, context);
    for (QByteArray &word : found.words)
        word.prepend(before);
    return found;
}

Offered argumentsOf(const Line &line, const Context &context)
{
    Offered found;
    if (line.arguments.isEmpty())
        found.words = commandsOf(*line.command);
    for (const auto &row : kArguments) {
        if (line.path != row.command)
            continue;
        const Wanted what = line.arguments.isEmpty() ? row.first : row.others;
        found.words += wanted(line, context, what);
        found.files = what == Wanted::File || what == Wanted::Operand;
    }
    return found;
}

Offered candidates(const CLI::App &app, const Context &context, const Line &line)
{
    if (!line.option.isEmpty())
        return valuesOfOption(line, context);
    if (line.current.startsWith("--") && line.current.contains('='))
        return valuesBehindEquals(line, context);
    if (line.current.startsWith('-'))
        return {optionsOf(*line.command) + (line.command == &app ? QByteArrayList() : optionsOf(app)), false};
    return argumentsOf(line, context);
}

// What begins as the last word does, each once.
QByteArrayList fitting(const QByteArrayList &words, const QByteArray &begun)
{
    QByteArrayList found;
    for (const QByteArray &word : words) {
        if (word.startsWith(begun) && !found.contains(word))
            found.append(word);
    }
    return found;
}

// What bash's line is, and nothing but the words where a shell gives those.
ops::TypedLine typedLine(int argc, char **argv)
{
    if (qstrcmp(argv[1], kForBash) == 0)
        return ops::typedLine(argc > 2 ? argv[2] : "", argc > 3 ? argv[3] : "=:");
    ops::TypedLine line;
    for (int at = 2; at < argc; ++at)
        line.words.append(argv[at]);
    return line;
}

} // namespace

bool isCompletion(int argc, char **argv)
{
    return argc > 1 && (qstrcmp(argv[1], kForAnyShell) == 0 || qstrcmp(argv[1], kForBash) == 0);
}

bool completesUnder(const char *command, int argc, char **argv)
{
    const QByteArrayList words = typedLine(argc, argv).words;
    return words.size() > 1 && words.first() == command;
}

int complete(const CLI::App &app, Context &context, int argc, char **argv, const QByteArray &under)
{
    const ops::TypedLine typed = typedLine(argc, argv);
    Line line = readLine(app, context, typed.words.mid(under.isEmpty() ? 0 : 1));
    if (!under.isEmpty())
        line.path.prepend(under + ' ');
    const bool bash = qstrcmp(argv[1], kForBash) == 0;
    const Offered offered = candidates(app, context, line);
    for (const QByteArray &word : fitting(offered.words, line.current))
        context.out.line(bash ? ops::spelled(word, typed) : word);
    if (!context.out.finish())
        return StoreFailed;
    return offered.files ? Found : Done;
}
