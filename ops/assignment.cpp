// SPDX-License-Identifier: MIT
#include "ops/assignment.h"

#include "channel/channelstore.h"
#include "channel/valuenames.h"
#include "ops/suggest.h"

#include <algorithm>

namespace ops {

namespace {

constexpr int kDefaultChannels = 4;

const char *const kSides[] = {"rx.", "tx."};

QByteArray audioName(Side side, Field field)
{
    return findChannelKey(Element::Audio, side, field)->name;
}

// The place at which a word of a whole channel is looked for.
Place audioOf(Place place)
{
    if (place.channel >= 0 && !place.element)
        place.element = Element::Audio;
    return place;
}

Failure unknownWord(const Place &place, const QByteArray &word)
{
    const QByteArray text = placeText(place) + " has no \"" + word.left(80) + '"';
    if (place.element == Element::Audio && place.flow == kNoFlow &&
        knownByWord({0, Element::Audio, 0, {}}, word))
        return wrong(text + ": each flow has its own, as in " + placeText(place) + "/0");
    if (place.channel >= 0 && !place.element && knownByWord({0, Element::Video, kNoFlow, {}}, word))
        return wrong(text + ": name an element, as in " + placeText(place) + "/video");
    const QByteArray near = didYouMean(word, wordsAt(place));
    return wrong(text + (near.isEmpty() ? didYouMean(word, valueNamesAt(place)) : near));
}

std::vector<const KnownName *> findWords(const Place &place, const QByteArray &word)
{
    if (const KnownName *known = knownByWord(place, word))
        return {known};
    std::vector<const KnownName *> both;
    for (const char *side : kSides) {
        const KnownName *known = knownByWord(audioOf(place), side + word);
        if (known && (place.element || known->place == "audio"))
            both.push_back(known);
    }
    return both;
}

bool mayBeForeign(const Place &place, const QByteArray &name)
{
    const bool channelOrPath = !place.path.isEmpty() || (place.channel >= 0 && !place.element);
    return channelOrPath && !name.isEmpty() && !name.contains('\0');
}

Outcome<Done> assignForeign(const Place &place, const QByteArray &name, bool number, const QByteArray &words,
                            Draft &draft)
{
    const Outcome<Value> value = fromWords(number ? Kind::Number : Kind::Text, words);
    if (!value)
        return value.failure();
    draft.set(place.path.isEmpty() ? channelPath(place.channel) : place.path, name, *value);
    return Done();
}

void setTotals(const QByteArray &path, quint32 flows, quint32 perFlow, Draft &draft)
{
    for (const Side side : {Side::Receive, Side::Send})
        draft.set(path, audioName(side, Field::TotalChannels), Value::ofNumber(flows * perFlow));
}

quint32 channelsPerFlow(const QByteArray &path, const Draft &draft)
{
    const quint32 stored = draft.number(path, audioName(Side::Receive, Field::Channels));
    return stored > 0 ? stored : kDefaultAudioChannels;
}

quint32 flowsOf(const QByteArray &path, const Draft &draft)
{
    return draft.number(path, audioName(Side::Receive, Field::TotalChannels)) / channelsPerFlow(path, draft);
}

// "channels=8": the number of flows stays and the totals follow, as in the dialog.
Outcome<Done> assignLayout(const Place &place, const QByteArray &word, const QByteArray &words, Draft &draft)
{
    const Outcome<Value> value = fromWords(Kind::AudioCount, words);
    if (!value)
        return wrong(word + ": " + value.failure().text);
    const QByteArray path = channelPath(place.channel);
    const quint32 most = word == "flows" ? kFlowCount : 64;
    if (value->number < 1 || value->number > most)
        return wrong(word + "=" + words + ": a number from 1 to " + QByteArray::number(most));
    quint32 flows = std::max(1u, flowsOf(path, draft));
    if (word == "flows") {
        flows = value->number;
        for (const Side side : {Side::Receive, Side::Send})
            draft.set(path, audioName(side, Field::Channels), Value::ofNumber(channelsPerFlow(path, draft)));
    } else {
        for (const Side side : {Side::Receive, Side::Send})
            draft.set(path, audioName(side, Field::Channels), *value);
    }
    setTotals(path, flows, channelsPerFlow(path, draft), draft);
    return Done();
}

bool isLayoutWord(const Place &place, const QByteArray &word)
{
    const bool audio = place.channel >= 0 && (!place.element || place.element == Element::Audio);
    return audio && (word == "channels" || (word == "flows" && place.flow == kNoFlow));
}

// "239.20.2.1:20000" of an address word is "239.20.2.1" and the port beside it.
Outcome<Done> assignKnown(const Place &place, const KnownName &known, const QByteArray &words, Draft &draft)
{
    const int colon = words.indexOf(':');
    const KnownName *port = known.kind == Kind::Address ? knownByWord(place, known.word + "-port") : nullptr;
    const bool pair = port && colon >= 0;
    if (pair && colon == 0)
        return wrong(placeText(place) + ' ' + known.word + "=" + words + ": the address is missing");
    const Outcome<Value> value = fromWords(known.kind, pair ? words.left(colon) : words);
    if (!value)
        return wrong(placeText(place) + ' ' + known.word + ": " + value.failure().text);
    draft.set(pathOf(place, known), known.name, *value);
    return pair ? assignKnown(place, *port, words.mid(colon + 1), draft) : Done();
}

} // namespace

Outcome<std::vector<Key>> select(const Place &place, const QByteArray &word, Foreign foreign)
{
    std::vector<Key> keys;
    if (isLayoutWord(place, word) && word == "flows") {
        for (const Side side : {Side::Receive, Side::Send})
            keys.push_back({channelPath(place.channel), audioName(side, Field::TotalChannels)});
        return keys;
    }
    for (const KnownName *known : findWords(place, word))
        keys.push_back({pathOf(place, *known), known->name});
    if (!keys.empty())
        return keys;
    if (foreign == Foreign::Refuse || !mayBeForeign(place, word))
        return unknownWord(place, word);
    return std::vector<Key>{{place.path.isEmpty() ? channelPath(place.channel) : place.path, word}};
}

Outcome<Done> assign(const Place &place, const QByteArray &assignment, Foreign foreign, Draft &draft)
{
    const int equals = assignment.indexOf('=');
    if (equals < 1)
        return wrong('"' + assignment.left(80) + "\" is no WORD=VALUE");
    const bool number = assignment[equals - 1] == ':';
    const QByteArray word = assignment.left(number ? equals - 1 : equals);
    const QByteArray words = assignment.mid(equals + 1);
    if (isLayoutWord(place, word))
        return assignLayout(place, word, words, draft);
    const auto found = findWords(place, word);
    if (found.empty() && foreign == Foreign::Allow && mayBeForeign(place, word))
        return assignForeign(place, word, number, words, draft);
    if (found.empty())
        return unknownWord(place, word);
    for (const KnownName *known : found) {
        const bool audio = known->place.startsWith("audio");
        const Outcome<Done> done = assignKnown(audio ? audioOf(place) : place, *known, words, draft);
        if (!done)
            return done;
    }
    return Done();
}

QByteArrayList wordsIn(const Snapshot &snapshot, const Place &place)
{
    if (place.path.isEmpty())
        return wordsAt(place);
    QByteArrayList names;
    for (const Row *row : snapshot.rowsOf(place.path))
        names.append(row->name);
    return names;
}

int channelCount(const Snapshot &snapshot)
{
    const Place server;
    const KnownName *known = knownByWord(server, "channels");
    const Value *value = snapshot.find(known->path, known->name);
    if (!value || value->isText)
        return kDefaultChannels;
    return static_cast<int>(std::min<quint32>(value->number, kMaxChannels));
}

int flowCount(const Snapshot &snapshot, int channel)
{
    const Draft draft(snapshot);
    return static_cast<int>(std::min<quint32>(flowsOf(channelPath(channel), draft), kFlowCount));
}

} // namespace ops
