// SPDX-License-Identifier: MIT
#include "ops/vocabulary.h"

#include "channel/valuenames.h"

#include <QHash>
#include <QStringBuilder>

namespace ops {

namespace {

constexpr char kServer[] = "server";

// clang-format off
// Found by their place: each field stands where its number says.
constexpr struct { Field field; const char *word; Kind kind; } kFields[] = {
    {Field::SourceAddress,      "src",      Kind::Address},
    {Field::SourcePort,         "src-port", Kind::Port},
    {Field::DestinationAddress, "dst",      Kind::Address},
    {Field::DestinationPort,    "dst-port", Kind::Port},
    {Field::Interface,          "if",       Kind::Interface},
    {Field::Flags,              "use",      Kind::Use},
    {Field::Channels,           "channels", Kind::AudioCount},
    {Field::TotalChannels,      "total",    Kind::AudioTotal},
    {Field::PacketTime,         "ptime",    Kind::PacketTime},
};

const struct { const char *word; const char *name; Kind kind; } kChannelWords[] = {
    {"type",          ChannelValue::VideoType,         Kind::Type},
    {"format",        ChannelValue::SignalFormat,      Kind::Format},
    {"clock",         ChannelValue::ClockType,         Kind::Clock},
    {"domain",        ChannelValue::ClockDomain,       Kind::Domain},
    {"gm",            ChannelValue::ClockGrandMaster,  Kind::GrandMaster},
    {"flow-mode",     ChannelValue::AudioFlowType,     Kind::FlowMode},
    {"file-settings", ChannelValue::IpUseFileSettings, Kind::Switch},
};

// A null path: with channel 0.
const struct { const char *word; const char *path; const char *name; Kind kind; } kServerWords[] = {
    {"channels",         StorePath::Config, MachineValue::ChannelCount,        Kind::ChannelCount},
    {"nmos.override",    StorePath::AvHAL,  MachineValue::NmosOverride,        Kind::Switch},
    {"nmos.log",         StorePath::Debug,  MachineValue::NmosUseLog,          Kind::Switch},
    {"nmos.kept",        nullptr,           MachineValue::NmosOverride,        Kind::Switch},
    {"nmos.domain",      nullptr,           FirstChannelValue::NmosDomain,     Kind::Text},
    {"nmos.ip",          nullptr,           FirstChannelValue::NmosIp,         Kind::Address},
    {"nmos.server",      nullptr,           FirstChannelValue::NmosServerIp,   Kind::Address},
    {"nmos.port",        nullptr,           FirstChannelValue::NmosServerPort, Kind::Text},
};
// clang-format on

constexpr bool everyFieldHasItsPlace()
{
    int place = 0;
    for (const auto &row : kFields) {
        if (static_cast<int>(row.field) != place++)
            return false;
    }
    return place == kFieldCount;
}
static_assert(everyFieldHasItsPlace(), "a field has no word, or stands at another one's place");

KnownName fieldName(const ChannelKey &key, int flow)
{
    const auto &row = kFields[static_cast<int>(key.field)];
    const QByteArray side = key.side == Side::Receive ? "rx." : "tx.";
    Place place;
    place.element = key.element;
    place.flow = key.perFlow ? flow : kNoFlow;
    const QByteArray suffix = flow < kSingleFlow ? QByteArray::number(flow) : QByteArray();
    return {valueName(key, suffix), elementText(place), side + row.word, row.kind, QByteArray()};
}

void addElement(Element element, bool perFlow, int flow, std::vector<KnownName> &names)
{
    for (const ChannelKey &key : channelKeys()) {
        if (key.element == element && key.perFlow == perFlow) {
            KnownName known = fieldName(key, flow);
            known.name.detach(); // the table's bytes are not ours to keep without a copy
            names.push_back(known);
        }
    }
}

std::vector<KnownName> makeNames()
{
    std::vector<KnownName> names;
    for (const auto &row : kServerWords)
        names.push_back(
            {row.name, kServer, row.word, row.kind, row.path ? QByteArray(row.path) : channelPath(0)});
    for (const auto &row : kChannelWords)
        names.push_back({row.name, QByteArray(), row.word, row.kind, QByteArray()});
    addElement(Element::Video, false, kNoFlow, names);
    addElement(Element::Audio, false, kNoFlow, names);
    for (int flow = 0; flow <= kSingleFlow; ++flow)
        addElement(Element::Audio, true, flow, names);
    addElement(Element::Anc, false, kNoFlow, names);
    return names;
}

using Index = QHash<QByteArray, const KnownName *>;

Index indexChannelNames()
{
    Index index;
    for (const KnownName &known : knownNames()) {
        if (known.path.isEmpty())
            index.insert(known.name, &known);
    }
    return index;
}

const KnownName *machineName(const QByteArray &path, const QByteArray &name)
{
    for (const KnownName &known : knownNames()) {
        if (known.path.isEmpty())
            break; // the server's come first
        if (known.name == name && comparePaths(known.path, path) == 0)
            return &known;
    }
    return nullptr;
}

bool isAt(const KnownName &known, const Place &place, const QByteArray &behind)
{
    if (place.channel < 0 || known.place == kServer)
        return place.channel < 0 && known.place == kServer;
    const bool shared = place.flow != kNoFlow && known.place == "audio";
    return known.place == behind || shared;
}

} // namespace

const std::vector<KnownName> &knownNames()
{
    static const std::vector<KnownName> names = makeNames();
    return names;
}

const KnownName *knownByKey(const QByteArray &path, const QByteArray &name)
{
    static const Index index = indexChannelNames();
    const int channel = channelOfPath(path);
    if (channel > 0)
        return index.value(name);
    const KnownName *known = machineName(path, name);
    return known || channel < 0 ? known : index.value(name);
}

const KnownName *knownByWord(const Place &place, const QByteArray &word)
{
    if (!place.path.isEmpty())
        return knownByKey(place.path, word);
    const QByteArray behind = elementText(place);
    for (const KnownName &known : knownNames()) {
        if ((known.word == word || known.name == word) && isAt(known, place, behind))
            return &known;
    }
    // A value name says its element itself.
    return place.channel >= 0 && !place.element ? knownByKey(channelPath(place.channel), word) : nullptr;
}

QByteArray pathOf(const Place &place, const KnownName &known)
{
    if (!place.path.isEmpty())
        return place.path;
    return known.path.isEmpty() ? channelPath(place.channel) : known.path;
}

QByteArrayList wordsAt(const Place &place)
{
    QByteArrayList words;
    if (!place.path.isEmpty())
        return words; // the names are the words there
    const QByteArray behind = elementText(place);
    for (const KnownName &known : knownNames()) {
        if (isAt(known, place, behind))
            words.append(known.word);
    }
    return words;
}

QByteArrayList valueNamesAt(const Place &place)
{
    QByteArrayList names;
    const QByteArray behind = elementText(place);
    for (const KnownName &known : knownNames()) {
        const bool whole = place.channel >= 0 && !place.element && known.place != kServer;
        const bool stored = !place.path.isEmpty() && knownByKey(place.path, known.name);
        if (whole || stored || (place.path.isEmpty() && isAt(known, place, behind)))
            names.append(known.name);
    }
    return names;
}

Kind kindOf(const KnownName *known, const Value &value)
{
    if (known)
        return known->kind;
    return value.isText ? Kind::Text : Kind::Number;
}

QByteArray keyInWords(const QByteArray &path, const QByteArray &name)
{
    const KnownName *known = knownByKey(path, name);
    if (known && known->place == kServer)
        return "server " + known->word;
    const int channel = channelOfPath(path);
    const QByteArray where = channel < 0 ? path : QByteArray::number(channel);
    if (!known || known->place.isEmpty())
        return where % ' ' % (known ? known->word : name);
    return where % '/' % known->place % ' ' % known->word;
}

QByteArray valueInWords(const QByteArray &path, const QByteArray &name, const std::optional<Value> &value)
{
    if (!value)
        return "(absent)";
    const KnownName *known = knownByKey(path, name);
    const bool plain = known && isTextKind(known->kind) == value->isText;
    if (plain && !(value->isText && value->text.isEmpty()))
        return inWords(known->kind, *value);
    return value->isText ? '"' + value->text + '"' : QByteArray::number(value->number);
}

} // namespace ops
