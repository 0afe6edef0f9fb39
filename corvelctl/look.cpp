// SPDX-License-Identifier: MIT
// Looking: show, get, list.
#include "corvelctl/context.h"
#include "corvelctl/families.h"
#include "corvelctl/showtext.h"
#include "ops/assignment.h"

#include <cctype>

namespace {

struct ShowOptions {
    std::string place;
};

// A channel that the server does not offer is shown when something is stored for it all the same.
bool isShown(const ops::Snapshot &values, const ops::Place &place)
{
    return place.channel < ops::channelCount(values) ||
           !values.rowsOf(ops::channelPath(place.channel)).empty();
}

int show(Context &context, const ShowOptions &options)
{
    return withValues(context, [&](const ops::Store &, const ops::Snapshot &values) -> int {
        if (options.place.empty()) {
            showTable(context.out, values);
            return Done;
        }
        const auto places = ops::parsePlaces(bytes(options.place), ops::channelCount(values));
        if (!places)
            return context.fail(places.failure());
        for (const ops::Place &place : *places) {
            if (!isShown(values, place))
                return context.usage("the server has no channel " + QByteArray::number(place.channel));
        }
        for (const ops::Place &place : *places)
            showPlace(context.out, values, place, places->size() > 1);
        return Done;
    });
}

void declareShow(Command &command, ShowOptions &options)
{
    command.option("place", options.place, "CHANNEL[/ELEMENT[/FLOW]], server; all channels when left out");
}

struct GetOptions {
    std::string place;
    std::vector<std::string> words;
};

Json valueItem(const ops::Key &key, const ops::Value &value)
{
    Json item;
    item["key"] = jsonText(ops::keyInWords(key.path, key.name));
    item["path"] = jsonText(key.path);
    item["name"] = jsonText(key.name);
    item["type"] = value.isText ? "text" : "number";
    item["value"] = value.isText ? jsonText(value.text) : Json(value.number);
    if (!value.isText)
        item["words"] = jsonText(ops::valueInWords(key.path, key.name, value));
    return item;
}

// Prints what is stored of these keys and returns how many there are. Alone: the value without its word.
int printKeys(Context &context, const ops::Snapshot &snapshot, const std::vector<ops::Key> &keys, bool alone)
{
    int found = 0;
    for (const ops::Key &key : keys) {
        const ops::Value *value = snapshot.find(key.path, key.name);
        if (!value)
            continue;
        ++found;
        context.out.item([&] { return valueItem(key, *value); });
        const ops::KnownName *known = ops::knownByKey(key.path, key.name);
        const QByteArray text = printable(ops::inWords(ops::kindOf(known, *value), *value));
        context.out.line(alone ? text : printable(known ? known->word : key.name) + '=' + text);
    }
    return found;
}

// With one word its value alone, for scripts; with several, or none, "word=value". A word that means nothing
// is only right when a site has stored something under it.
int getPlace(Context &context, const ops::Snapshot &snapshot, const ops::Place &place,
             const GetOptions &options)
{
    QByteArrayList words;
    for (const std::string &word : options.words)
        words.append(bytes(word));
    int found = 0;
    for (const QByteArray &word : words.isEmpty() ? ops::wordsIn(snapshot, place) : words) {
        const auto keys = ops::select(place, word, ops::Foreign::Allow);
        if (!keys)
            return context.fail(keys.failure());
        const int there = printKeys(context, snapshot, *keys, words.size() == 1 && keys->size() == 1);
        found += there;
        const bool strange = there == 0 && place.path.isEmpty();
        const auto known = ops::select(place, word, strange ? ops::Foreign::Refuse : ops::Foreign::Allow);
        if (!known)
            return context.fail(known.failure());
    }
    return found > 0 || words.isEmpty() ? Done : Found;
}

// "2/video/rx.dst" is what blame and the history call "2/video rx.dst". Behind an element of audio a number
// is a flow.
GetOptions split(GetOptions options)
{
    const std::size_t slash = options.place.rfind('/');
    if (!options.words.empty() || slash == std::string::npos || ops::parsePlace(bytes(options.place)))
        return options;
    const std::string word = options.place.substr(slash + 1);
    const auto place = ops::parsePlace(bytes(options.place.substr(0, slash)));
    if (place && place->element && !word.empty() &&
        std::isalpha(static_cast<unsigned char>(word.front())) != 0) {
        options.place.resize(slash);
        options.words.push_back(word);
    }
    return options;
}

int get(Context &context, const GetOptions &given)
{
    const GetOptions options = split(given);
    const auto place = ops::parsePlace(bytes(options.place));
    if (!place)
        return context.fail(place.failure());
    return withValues(context, [&](const ops::Store &, const ops::Snapshot &values) {
        return getPlace(context, values, *place, options);
    });
}

void declareGet(Command &command, GetOptions &options)
{
    command.option("place", options.place, "CHANNEL[/ELEMENT[/FLOW]], server, or a key path").required();
    command.option("words", options.words, "Fields such as rx.dst, or value names; all when left out");
}

struct ListOptions {
    std::string path;
    bool types = false;
};

int list(Context &context, const ListOptions &options)
{
    const auto store = context.open();
    if (!store)
        return context.fail(store.failure());
    const auto snapshot = store->read(bytes(options.path));
    if (!snapshot)
        return context.fail(snapshot.failure());
    for (const ops::Row &row : snapshot->rows()) {
        context.out.item([&row] { return valueItem({row.path, row.name}, row.value); });
        const QByteArray value = row.value.isText ? row.value.text : QByteArray::number(row.value.number);
        const QByteArray type = !options.types ? "" : row.value.isText ? "text\t" : "number\t";
        context.out.line(printable(row.path) + '\t' + printable(row.name) + '\t' + type + printable(value));
    }
    return Done;
}

void declareList(Command &command, ListOptions &options)
{
    command.option("path", options.path, "A key path; everything when left out");
    command.flag("--types", options.types, "With the type of each value");
}

} // namespace

void addLookCommands(Command &app, Context &context)
{
    addCommand<ShowOptions>(app, context, "show", "Show channels in words, or all of them as a table",
                            "corvelctl show 2/audio/3", declareShow, show);
    addCommand<GetOptions>(app, context, "get", "Print values; exit status 1 when there is none",
                           "corvelctl get 2/video rx.dst", declareGet, get);
    addCommand<ListOptions>(app, context, "list", "List everything as it is stored: path, name, value",
                            "corvelctl list --types 'KWX\\Config'", declareList, list);
}
