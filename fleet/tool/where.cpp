// SPDX-License-Identifier: MIT
#include "fleet/tool/where.h"

#include "ops/batch.h"
#include "ops/suggest.h"

#include <algorithm>
#include <cstring>

#include <fnmatch.h>

namespace fleet {

namespace {

bool fits(const QByteArray &glob, const QByteArray &text)
{
    return fnmatch(glob.constData(), text.constData(), 0) == 0;
}

bool isOneOf(const QByteArray &text, const char *letters)
{
    return std::any_of(text.begin(), text.end(), [&](char c) { return strchr(letters, c) != nullptr; });
}

const struct {
    const char *word;
    QByteArray (*of)(const ServerView &server);
} kWords[] = {
    {"name", [](const ServerView &server) { return server.name; }},
    {"site", [](const ServerView &server) { return server.site; }},
    {"state", stateOf},
    {"version", [](const ServerView &server) { return server.alive ? server.alive->version : QByteArray(); }},
    {"configuration", [](const ServerView &server) { return server.inUse; }},
    {"by", [](const ServerView &server) { return server.newest() ? server.newest()->by.who : QByteArray(); }},
    {"ptp", [](const ServerView &server) { return server.ptp().state; }},
    {"ptp.domain",
     [](const ServerView &server) {
         return server.ptp().state.isEmpty() ? QByteArray() : QByteArray::number(server.ptp().domain);
     }},
    {"ptp.master", [](const ServerView &server) { return server.ptp().grandmaster; }},
};

// "alive" and "away" are states that are asked for often.
const struct {
    const char *word;
    bool alive;
} kShort[] = {{"alive", true}, {"away", false}};

QByteArrayList allWords()
{
    QByteArrayList words;
    for (const auto &one : kWords)
        words.append(one.word);
    return words;
}

// The places of a server that has so many channels; a word that none of them has is an error.
ops::Outcome<std::vector<ops::Key>> keysOf(const QByteArray &places, const QByteArray &word, int channels)
{
    std::vector<ops::Key> keys;
    const auto list = ops::parsePlaces(places, channels);
    if (!list)
        return list.failure();
    for (const ops::Place &place : *list) {
        const auto selected = ops::select(place, word, ops::Foreign::Refuse);
        if (!selected)
            return selected.failure();
        keys.insert(keys.end(), selected->begin(), selected->end());
    }
    return keys;
}

bool hasValue(const ServerView &server, const QByteArray &places, const QByteArray &word,
              const QByteArray &glob)
{
    const SharedConfiguration *current = server.current();
    if (!current)
        return false;
    const ops::Snapshot values = current->snapshot();
    const auto keys = keysOf(places, word, ops::channelCount(values));
    return keys && std::any_of(keys->begin(), keys->end(), [&](const ops::Key &key) {
               const ops::Value *value = values.find(key.path, key.name);
               return fits(glob, value ? ops::valueInWords(key.path, key.name, *value) : QByteArray());
           });
}

} // namespace

bool Where::Terms::match(const ServerView &server) const
{
    const auto holds = [&](const Test &test) { return test(server); };
    return (any.empty() || std::any_of(any.begin(), any.end(), holds)) &&
           std::none_of(none.begin(), none.end(), holds);
}

bool Where::matches(const ServerView &server) const
{
    return std::all_of(m_all.begin(), m_all.end(), [&](const Terms &terms) { return terms.match(server); });
}

ops::Outcome<Where> Where::parse(const QByteArrayList &texts)
{
    Where where;
    for (const QByteArray &text : texts) {
        const auto added = where.add(text);
        if (!added)
            return ops::wrong("--where " + text + ": " + added.failure().text);
    }
    where.m_text = texts.join(" and ");
    return where;
}

ops::Outcome<ops::Done> Where::add(const QByteArray &text)
{
    Terms terms;
    for (const QByteArray &part : text.split(',')) {
        const QByteArray word = part.trimmed();
        const bool negated = word.startsWith('!');
        auto test = term(negated ? word.mid(1) : word);
        if (!test)
            return test.failure();
        (negated ? terms.none : terms.any).push_back(std::move(*test));
    }
    m_all.push_back(std::move(terms));
    return ops::Done();
}

ops::Outcome<Where::Test> Where::term(const QByteArray &text)
{
    const int equals = text.indexOf('=');
    if (equals >= 0) {
        const bool differs = equals > 0 && text.at(equals - 1) == '!';
        return comparison(text.left(differs ? equals - 1 : equals), text.mid(equals + 1), !differs);
    }
    for (const auto &one : kShort) {
        if (text == one.word)
            return Test(
                [alive = one.alive](const ServerView &server) { return server.alive.has_value() == alive; });
    }
    const bool plain = !text.isEmpty() && !isOneOf(text, " <>!\"'()");
    if (plain && text.count('/') <= 1 && !text.startsWith('/') && !text.endsWith('/'))
        return nameTest(text);
    return ops::wrong('"' + text + "\" is no name, no SITE/NAME, neither alive nor away, and no WORD=VALUE");
}

// "lon-*" is of this site, "paris/*" of that one.
Where::Test Where::nameTest(const QByteArray &text)
{
    const int slash = text.indexOf('/');
    if (slash < 0)
        return [text](const ServerView &server) { return server.ownSite && fits(text, server.name); };
    m_sites.append(text.left(slash));
    return [text](const ServerView &server) {
        return fnmatch(text.constData(), (server.site + '/' + server.name).constData(), FNM_PATHNAME) == 0;
    };
}

ops::Outcome<Where::Test> Where::comparison(const QByteArray &left, const QByteArray &glob, bool equal)
{
    for (const auto &one : kWords) {
        if (left != one.word)
            continue;
        if (left == "site" && equal)
            m_sites.append(glob);
        m_needsLast = m_needsLast || left == "by";
        return Test(
            [of = one.of, glob, equal](const ServerView &server) { return fits(glob, of(server)) == equal; });
    }
    const int slash = left.lastIndexOf('/');
    if (slash < 0)
        return ops::wrong("no such word: " + left + ops::didYouMean(left, allWords()) + "; there are " +
                          allWords().join(", ") + " and values as 0/video/rx.dst");
    const QByteArray places = left.left(slash), word = left.mid(slash + 1);
    const auto known = keysOf(places, word, 1);
    if (!known)
        return known.failure();
    m_needsDocuments = true;
    return Test([places, word, glob, equal](const ServerView &server) {
        return hasValue(server, places, word, glob) == equal;
    });
}

} // namespace fleet
