// SPDX-License-Identifier: MIT
#include "ops/batch.h"

#include <QProcess>
#include <QTextCodec>

namespace ops {

namespace {

constexpr int kLongestLabel = 200;

Outcome<QByteArrayList> splitLine(const QByteArray &line)
{
    QTextCodec::ConverterState state;
    const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(line.constData(), line.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        return wrong("not UTF-8");
    if (line.contains('\0'))
        return wrong("a zero byte in a line of text");
    QByteArrayList words;
    for (const QString &word : QProcess::splitCommand(text))
        words.append(word.toUtf8());
    return words;
}

Outcome<Done> setLine(const QByteArray &line, const Rules &rules, Draft &draft)
{
    const Outcome<QByteArrayList> words = splitLine(line);
    if (!words)
        return words.failure();
    if (words->size() < 2)
        return wrong("a line is a place and at least one WORD=VALUE");
    return setWords(words->first(), words->mid(1), rules, draft);
}

void removeRows(const Place &place, Draft &draft)
{
    const QByteArray path = place.path.isEmpty() ? channelPath(place.channel) : place.path;
    const QByteArray behind = elementText(place);
    for (const Row *row : draft.base().rowsOf(path)) {
        const KnownName *known = knownByKey(row->path, row->name);
        const bool inside = known && (known->place == behind || known->place.startsWith(behind + '/'));
        if (!place.element || inside)
            draft.remove(row->path, row->name);
    }
}

} // namespace

QByteArray noSuchChannel(int channel, int channels)
{
    return "there is no channel " + QByteArray::number(channel) + ": the server has " +
           QByteArray::number(channels) + " (\"server channels\")";
}

Outcome<Done> checkChannel(int channel, const Snapshot &snapshot)
{
    const int channels = channelCount(snapshot);
    if (channel >= channels && snapshot.rowsOf(channelPath(channel)).empty())
        return wrong(noSuchChannel(channel, channels));
    return Done();
}

Outcome<std::vector<Place>> placesOf(const QByteArray &text, const Rules &rules, const Snapshot &snapshot)
{
    const int channels = channelCount(snapshot);
    Outcome<std::vector<Place>> places = parsePlaces(text, channels);
    if (!places || rules.anyChannel)
        return places;
    for (const Place &place : *places) {
        if (place.channel >= channels)
            return wrong(noSuchChannel(place.channel, channels) + "; --force stores it anyway");
    }
    return places;
}

Outcome<Done> setWords(const QByteArray &places, const QByteArrayList &assignments, const Rules &rules,
                       Draft &draft)
{
    const Outcome<std::vector<Place>> found = placesOf(places, rules, draft.base());
    if (!found)
        return found.failure();
    for (const Place &place : *found) {
        for (const QByteArray &assignment : assignments) {
            const Outcome<Done> done = assign(place, assignment, rules.foreign, draft);
            if (!done)
                return done;
        }
    }
    return Done();
}

Outcome<Done> unsetWords(const QByteArray &places, const QByteArrayList &words, const Rules &rules,
                         Draft &draft)
{
    const Outcome<std::vector<Place>> found = placesOf(places, {rules.foreign, true}, draft.base());
    if (!found)
        return found.failure();
    for (const Place &place : *found) {
        for (const QByteArray &word : words) {
            const Outcome<std::vector<Key>> keys = select(place, word, rules.foreign);
            if (!keys)
                return keys.failure();
            for (const Key &key : *keys)
                draft.remove(key.path, key.name);
        }
    }
    return Done();
}

Outcome<Done> unsetPlace(const QByteArray &places, Draft &draft)
{
    const Outcome<std::vector<Place>> found = placesOf(places, {Foreign::Allow, true}, draft.base());
    if (!found)
        return found.failure();
    for (const Place &place : *found) {
        if (place.channel < 0 && place.path.isEmpty())
            return wrong("the server's values are deleted by name only");
        removeRows(place, draft);
    }
    return Done();
}

Outcome<Done> setLines(const QByteArray &text, const Rules &rules, Draft &draft)
{
    int number = 0;
    for (const QByteArray &line : text.split('\n')) {
        ++number;
        const QByteArray bare = line.trimmed();
        if (bare.isEmpty() || bare.startsWith('#'))
            continue;
        const Outcome<Done> done = setLine(bare, rules, draft);
        if (!done)
            return Failure{done.failure().kind,
                           "line " + QByteArray::number(number) + ": " + done.failure().text};
    }
    return Done();
}

QByteArray batchLabel(const QByteArrayList &words)
{
    QByteArray label = words.join(' ');
    if (label.size() <= kLongestLabel)
        return label;
    int end = kLongestLabel - 3;
    while (end > 0 && (static_cast<unsigned char>(label[end]) & 0xc0) == 0x80)
        --end;
    return label.left(end) + "...";
}

} // namespace ops
