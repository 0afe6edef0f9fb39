// SPDX-License-Identifier: MIT
#include "fleet/storenotes.h"

#include "channel/librarycalls.h"
#include "fleet/documentjson.h"

#include <nlohmann/json.hpp>

#include <sstream>

namespace fleet {

namespace {

constexpr const char *kOwner = "corvel-fleet";
constexpr const char *kMark = "mark";
constexpr const char *kBase = "base/";
constexpr const char *kFlight = "flight/";
constexpr const char *kConflict = "conflict/";
constexpr const char *kOverruled = "overruled/";

// The rest of a key that begins so.
std::optional<std::string> behind(const std::string &key, const std::string &prefix)
{
    if (key.compare(0, prefix.size(), prefix) != 0)
        return std::nullopt;
    return key.substr(prefix.size());
}

std::string markText(const Mark &mark)
{
    const ops::Json json = {{"place", mark.place},
                            {"cluster", mark.cluster},
                            {"revision", mark.revision},
                            {"pushes", mark.pushes},
                            {"receipt", mark.receipt}};
    return json.dump();
}

// What cannot be read is as good as nothing: both sides are then compared anew.
Mark markOf(const std::string &text)
{
    const ops::Json json = ops::Json::parse(text, nullptr, false);
    const auto number = [&](const char *name) {
        const ops::Json *member = memberOf(json, name);
        return member && member->is_number_unsigned() ? member->get<std::uint64_t>() : 0;
    };
    Mark mark;
    mark.place = textMember(json, "place").toStdString();
    mark.cluster = number("cluster");
    mark.revision = static_cast<std::int64_t>(number("revision"));
    mark.pushes = number("pushes");
    mark.receipt = textMember(json, "receipt").toStdString();
    return mark;
}

// A line for each: the number of the push and the document, which has no line ends of its own.
std::string flightsText(const Flights &flights)
{
    std::string text;
    for (const Flight &flight : flights) {
        const ops::Outcome<std::string> document = writeDocument(flight.document);
        if (document)
            text += std::to_string(flight.push) + ' ' + *document + '\n';
    }
    return text;
}

Flights flightsOf(const std::string &text)
{
    Flights flights;
    std::istringstream lines(text);
    Flight flight;
    for (std::string line; lines >> flight.push && lines.get() && std::getline(lines, line);) {
        const ops::Outcome<Document> document = readDocument(line);
        if (!document)
            continue;
        flight.document = *document;
        flights.push_back(flight);
    }
    return flights;
}

void recallOne(const std::string &key, const std::string &data, Memory *memory)
{
    if (key == kMark)
        memory->mark = markOf(data);
    if (const std::optional<std::string> path = behind(key, kBase)) {
        const ops::Outcome<Document> document = readDocument(data);
        if (document)
            memory->bases.emplace(*path, *document);
    }
    if (const std::optional<std::string> path = behind(key, kFlight))
        memory->flights.emplace(*path, flightsOf(data));
    const std::optional<std::string> id = behind(key, kConflict);
    const ops::Outcome<Conflict> conflict = id ? readConflict(data) : ops::wrong("");
    if (id && conflict)
        memory->conflicts.emplace(*id, *conflict);
}

} // namespace

bool StoreNotes::available()
{
    return libraryCalls().setNote && libraryCalls().note && libraryCalls().forEachNote;
}

bool StoreNotes::set(const std::string &key, const std::string &data) const
{
    return libraryCalls().setNote(m_handle, kOwner, key.c_str(), data.data(),
                                  static_cast<uint32_t>(data.size())) == 0;
}

bool StoreNotes::walk(const Visit &visit) const
{
    const auto call = [](void *context, const char *key, const void *data, uint32_t size) {
        (*static_cast<const Visit *>(context))(key, std::string(static_cast<const char *>(data), size));
        return 0;
    };
    return libraryCalls().forEachNote(m_handle, kOwner, call, const_cast<Visit *>(&visit)) == 0;
}

bool StoreNotes::recall(Memory *memory) const
{
    return walk([&](const std::string &key, const std::string &data) { recallOne(key, data, memory); });
}

Mark StoreNotes::mark() const
{
    return markOf(get(kMark));
}

bool StoreNotes::rememberMark(const Mark &mark) const
{
    return set(kMark, markText(mark));
}

bool StoreNotes::rememberStep(const Step &step) const
{
    bool done = true;
    if (step.base) {
        const ops::Outcome<std::string> text = writeDocument(*step.base);
        done = text && set(kBase + step.key, *text);
    }
    if (step.flights)
        done = done && set(kFlight + step.key, flightsText(*step.flights));
    if (!step.conflict)
        return done;
    const ops::Outcome<std::string> text = writeConflict(*step.conflict);
    return done && text && set(kConflict + conflictId(*step.conflict), *text);
}

// Empty when there is none, or none that is ours.
std::string StoreNotes::get(const std::string &key) const
{
    std::uint32_t size = 0;
    if (libraryCalls().note(m_handle, kOwner, key.c_str(), nullptr, &size) != 0)
        return {};
    std::string data(size, '\0');
    const bool read = libraryCalls().note(m_handle, kOwner, key.c_str(), data.data(), &size) == 0;
    return read && size == data.size() ? data : std::string();
}

bool StoreNotes::forgetUploaded(const std::string &id, const QByteArray &who) const
{
    const std::string text = get(kConflict + id);
    const ops::Outcome<Conflict> conflict = readConflict(text);
    const bool own = conflict && conflict->overruled.by.who == who;
    return (!own || set(kOverruled + id, text)) && set(kConflict + id, {});
}

bool StoreNotes::overruled(const QByteArray &who, std::vector<Conflict> *conflicts) const
{
    return walk([&](const std::string &key, const std::string &data) {
        if (!behind(key, kConflict) && !behind(key, kOverruled))
            return;
        const ops::Outcome<Conflict> conflict = readConflict(data);
        if (conflict && conflict->overruled.by.who == who)
            conflicts->push_back(*conflict);
    });
}

bool StoreNotes::forgetOverruled() const
{
    return forget(kOverruled);
}

bool StoreNotes::forgetAll() const
{
    return forget({});
}

bool StoreNotes::forget(const std::string &prefix) const
{
    bool done = true;
    const bool walked = walk([&](const std::string &key, const std::string &) {
        done = done && (!behind(key, prefix) || set(key, {}));
    });
    return walked && done;
}

} // namespace fleet
