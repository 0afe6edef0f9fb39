// SPDX-License-Identifier: MIT
#include "corvelctl/complete.h"

#include "channel/channelstore.h"
#include "channel/valuenames.h"
#include "ops/assignment.h"
#include "ops/configurations.h"
#include "ops/ipv4.h"

#include <CLI/CLI.hpp>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>

namespace {

// What a word behind a command, or behind an option, is.
enum class Wanted {
    File,
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
    {"show", Wanted::Place, Wanted::Place},
    {"get", Wanted::Place, Wanted::Word},
    {"set", Wanted::Place, Wanted::Assignment},
    {"unset", Wanted::Place, Wanted::Word},
    {"history", Wanted::Place, Wanted::Place},
    {"blame", Wanted::PlaceAndWord, Wanted::Word},
    {"copy", Wanted::Channel, Wanted::Channel},
    {"flows", Wanted::Channel, Wanted::Channel},
    {"diff", Wanted::Operand, Wanted::Operand},
    {"config copy", Wanted::Configuration, Wanted::Configuration},
    {"config rename", Wanted::Configuration, Wanted::Configuration},
    {"config delete", Wanted::Configuration, Wanted::Configuration},
    {"config use", Wanted::Configuration, Wanted::Configuration},
    {"sdp load", Wanted::File, Wanted::Channel},
    {"sdp write", Wanted::Place, Wanted::Place},
    {"fleet status", Wanted::Configuration, Wanted::Configuration}, // a desk's copies have the servers' names
    {"fleet conflicts list", Wanted::Configuration, Wanted::Configuration},
    {"fleet diff", Wanted::Configuration, Wanted::Configuration},
    {"fleet set", Wanted::Place, Wanted::Assignment},
    {"fleet copy", Wanted::Configuration, Wanted::Place},
};

// Options whose values are known to the server. Those with a list of their own are asked themselves.
const struct {
    const char *option;
    Wanted value;
} kValues[] = {
    {"-c", Wanted::Configuration}, {"--config", Wanted::Configuration}, {"--interface", Wanted::Interface},
    {"--of", Wanted::Channel},     {"--channel", Wanted::Channel},      {"--fields", Wanted::Field},
    {"--step", Wanted::Step},      {"--where", Wanted::Configuration},
};

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

QByteArrayList interfaceAddresses()
{
    QByteArrayList addresses;
    ifaddrs *all = nullptr;
    if (getifaddrs(&all) != 0)
        return addresses;
    for (const ifaddrs *one = all; one; one = one->ifa_next) {
        if (!one->ifa_addr || one->ifa_addr->sa_family != AF_INET)
            continue;
        const auto *address = reinterpret_cast<const sockaddr_in *>(one->ifa_addr);
        addresses.append(ops::ipv4Text(ntohl(address->sin_addr.s_addr)));
    }
    freeifaddrs(all);
    return addresses;
}

QByteArrayList channelNumbers(const Context &context)
{
    const auto store = context.open();
    const auto values = store ? store->read(StorePath::Config) : ops::Outcome<ops::Snapshot>(store.failure());
    const int channels = values ? ops::channelCount(*values) : 0;
    QByteArrayList numbers;
    for (int channel = 0; channel < channels; ++channel)
        numbers.append(QByteArray::number(channel));
    return numbers;
}

QByteArrayList places(const Context &context, const QByteArray &current)
{
    QByteArrayList found;
    const int slash = current.indexOf('/');
    if (slash < 0) {
        found = channelNumbers(context);
        return found << "server";
    }
    const QByteArray channel = current.left(slash + 1);
    found << channel + "video" << channel + "audio" << channel + "anc";
    for (int flow = 0; flow < kFlowCount && current.startsWith(channel + "audio/"); ++flow)
        found << channel + "audio/" + QByteArray::number(flow);
    return found;
}

// The place of the line, "2/video", or nothing.
std::optional<ops::Place> placeOf(const Line &line)
{
    const auto places = line.arguments.isEmpty() ? ops::Outcome<std::vector<ops::Place>>(ops::wrong(""))
                                                 : ops::parsePlaces(line.arguments.first(), 1);
    return places && !places->empty() ? std::optional<ops::Place>(places->front()) : std::nullopt;
}

// The store's own names only once one is begun: there are many, and few people want them.
QByteArrayList wordsAndNames(const ops::Place &place, const QByteArray &current)
{
    const QByteArrayList names = current.isEmpty() ? QByteArrayList() : ops::valueNamesAt(place);
    return ops::wordsAt(place) + names;
}

// "2/video/rx.dst": a place and behind it a word.
QByteArrayList placesAndWords(const Context &context, const QByteArray &current)
{
    QByteArrayList found = places(context, current);
    const QByteArray before = current.left(current.lastIndexOf('/') + 1);
    const auto place = ops::parsePlace(before.chopped(before.isEmpty() ? 0 : 1));
    if (!place)
        return found;
    for (const QByteArray &word : wordsAndNames(*place, current.mid(before.size())))
        found.append(before + word);
    return found;
}

// What copy takes behind --fields and --step, the last of several.
QByteArrayList fieldWords(const QByteArray &current, bool steps)
{
    const QByteArray before = current.left(current.lastIndexOf(',') + 1);
    QByteArrayList found = steps ? QByteArrayList() : QByteArrayList{"rx", "tx", "video", "audio", "anc"};
    for (const QByteArray &word : ops::wordsAt({0, Element::Video, ops::kNoFlow, {}})) {
        const bool stepped = word.endsWith("src") || word.endsWith("dst") || word.endsWith("port");
        if (stepped || !steps)
            found << word.mid(3) << word;
    }
    for (QByteArray &word : found)
        word = steps ? word + '=' : before + word;
    return found;
}

// "rx.use=dst," completes to "rx.use=dst,if".
QByteArrayList valuesOf(const ops::Place &place, const QByteArray &current)
{
    const int equals = current.indexOf('=');
    const ops::KnownName *known = ops::knownByWord(place, current.left(equals));
    if (!known)
        return {};
    const int comma = known->kind == ops::Kind::Use ? current.lastIndexOf(',') : -1;
    const QByteArray before = current.left(std::max(equals, comma) + 1);
    QByteArrayList found;
    for (const QByteArray &word :
         known->kind == ops::Kind::Interface ? interfaceAddresses() : ops::wordsOf(known->kind))
        found.append(before + word);
    return found;
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

QByteArrayList wanted(const Line &line, const Context &context, Wanted what)
{
    const auto place = placeOf(line);
    switch (what) {
    case Wanted::File:
        return {};
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
        return QByteArrayList{"store"} + ops::configurationNames() + channelNumbers(context);
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

QByteArrayList optionValues(const Line &line, const Context &context)
{
    for (const auto &row : kValues) {
        if (line.option == row.option)
            return wanted(line, context, row.value);
    }
    return listedValues(line);
}

QByteArrayList candidates(const CLI::App &app, const Context &context, const Line &line)
{
    if (!line.option.isEmpty())
        return optionValues(line, context);
    if (line.current.startsWith('-'))
        return optionsOf(*line.command) + (line.command == &app ? QByteArrayList() : optionsOf(app));
    QByteArrayList found;
    if (line.arguments.isEmpty())
        found = commandsOf(*line.command);
    for (const auto &row : kArguments) {
        if (line.path == row.command)
            found += wanted(line, context, line.arguments.isEmpty() ? row.first : row.others);
    }
    return found;
}

} // namespace

int complete(const CLI::App &app, Context &context, int argc, char **argv, const char *under)
{
    QByteArrayList words;
    for (int at = 2; at < argc; ++at)
        words.append(argv[at]);
    Line line = readLine(app, context, words);
    line.path.prepend(under);
    QByteArrayList found;
    for (const QByteArray &candidate : candidates(app, context, line)) {
        if (candidate.startsWith(line.current) && !found.contains(candidate))
            found.append(candidate);
    }
    for (const QByteArray &candidate : found)
        context.out.line(candidate);
    return context.out.finish() ? Done : StoreFailed;
}
