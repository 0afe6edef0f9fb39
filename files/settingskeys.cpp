// SPDX-License-Identifier: MIT
#include "files/settingskeys.h"

#include <QString>
#include <QVector> // for toUcs4

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace {

using std::string_view;

using Kind = SettingsKey::Kind;

// A flow's key is a stem with the number of the flow behind it.
enum class Place { Whole, Flow };

// clang-format off
// The keys the reader accepts, in the order in which it tries them. The interface keys are missing: a
// file never changes which network interface a channel uses.
const struct {
    const char *key;
    Kind kind;
    Place place;
} kAcceptedKeys[] = {
    {"nmosoverride",               Kind::Global, Place::Whole},
    {"ClockGrandMaster",           Kind::Text,   Place::Whole},
    {"SfpTopIPAddress",            Kind::Text,   Place::Whole},
    {"SfpBottomIPAddress",         Kind::Text,   Place::Whole},
    {"SfpSubnetMask",              Kind::Text,   Place::Whole},
    {"SfpGateway",                 Kind::Text,   Place::Whole},
    {"TransmitIp",                 Kind::Text,   Place::Whole},
    {"TransmitDestinationIp",      Kind::Text,   Place::Whole},
    {"TransmitSourcePort",         Kind::Number, Place::Whole},
    {"TransmitRemotePort",         Kind::Number, Place::Whole},
    {"TransmitFlags",              Kind::Number, Place::Whole},
    {"TransmitAudIp",              Kind::Text,   Place::Flow},
    {"TransmitAudDestinationIp",   Kind::Text,   Place::Flow},
    {"TransmitAudSourcePort",      Kind::Number, Place::Flow},
    {"TransmitAudRemotePort",      Kind::Number, Place::Flow},
    {"TransmitAudFlags",           Kind::Number, Place::Flow},
    {"TransmitAudPacketLength",    Kind::Number, Place::Whole},
    {"TransmitAudChannels",        Kind::Number, Place::Whole},
    {"TransmitAudTotalChannels",   Kind::Number, Place::Whole},
    {"TransmitAncIp",              Kind::Text,   Place::Whole},
    {"TransmitAncDestinationIp",   Kind::Text,   Place::Whole},
    {"TransmitAncSourcePort",      Kind::Number, Place::Whole},
    {"TransmitAncRemotePort",      Kind::Number, Place::Whole},
    {"TransmitAncFlags",           Kind::Number, Place::Whole},
    {"VideoType",                  Kind::Number, Place::Whole},
    {"ClockType",                  Kind::Number, Place::Whole},
    {"ClockSettings",              Kind::Number, Place::Whole},
    {"ClockDomain",                Kind::Number, Place::Whole},
    {"J2KTransmitUllMode",         Kind::Number, Place::Whole},
    {"J2KTransmitBitDepth",        Kind::Number, Place::Whole},
    {"J2KTransmitChromaSubSample", Kind::Number, Place::Whole},
    {"J2KTransmitDataRate",        Kind::Number, Place::Whole},
    {"J2KTransmitStreamType",      Kind::Number, Place::Whole},
    {"J2KTransmitPmtPid",          Kind::Number, Place::Whole},
    {"J2KTransmitVideoPid",        Kind::Number, Place::Whole},
    {"J2KTransmitPcrPid",          Kind::Number, Place::Whole},
    {"J2KTransmitAudioPid",        Kind::Number, Place::Whole},
    {"J2KReceiveSelectMode",       Kind::Number, Place::Whole},
    {"J2kReceiveProgramNumber",    Kind::Number, Place::Whole},
    {"J2kReceiveProgramPid",       Kind::Number, Place::Whole},
    {"J2kReceiveAudioNumber",      Kind::Number, Place::Whole},
    {"ReceiveSourceIp",            Kind::Text,   Place::Whole},
    {"ReceiveDestinationIp",       Kind::Text,   Place::Whole},
    {"ReceiveSourcePort",          Kind::Number, Place::Whole},
    {"ReceiveDestinationPort",     Kind::Number, Place::Whole},
    {"ReceiveFlags",               Kind::Number, Place::Whole},
    {"ReceiveAudSourceIp",         Kind::Text,   Place::Flow},
    {"ReceiveAudDestinationIp",    Kind::Text,   Place::Flow},
    {"ReceiveAudSourcePort",       Kind::Number, Place::Flow},
    {"ReceiveAudDestinationPort",  Kind::Number, Place::Flow},
    {"ReceiveAudFlags",            Kind::Number, Place::Flow},
    {"ReceiveAudPacketLength",     Kind::Number, Place::Whole},
    {"ReceiveAudChannels",         Kind::Number, Place::Whole},
    {"ReceiveAudTotalChannels",    Kind::Number, Place::Whole},
    {"ReceiveAncSourceIp",         Kind::Text,   Place::Whole},
    {"ReceiveAncDestinationIp",    Kind::Text,   Place::Whole},
    {"ReceiveAncSourcePort",       Kind::Number, Place::Whole},
    {"ReceiveAncDestinationPort",  Kind::Number, Place::Whole},
    {"ReceiveAncFlags",            Kind::Number, Place::Whole},
};
// clang-format on

// Keys are ASCII; other letters have no case here.
char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

void lowerInto(std::string &out, string_view text)
{
    out.resize(text.size());
    std::transform(text.begin(), text.end(), out.begin(), lower);
}

struct AcceptedKey {
    std::string lowered;
    QByteArray name;
    Kind kind;
    bool isFlow;

    bool matches(const std::string &key) const
    {
        return isFlow ? key.find(lowered) != std::string::npos : key == lowered;
    }
};

std::vector<AcceptedKey> makeAccepted()
{
    std::vector<AcceptedKey> rows;
    for (const auto &row : kAcceptedKeys) {
        rows.push_back({std::string(), QByteArray(row.key), row.kind, row.place == Place::Flow});
        lowerInto(rows.back().lowered, row.key);
    }
    return rows;
}

// The last character of a key, which may be several bytes.
QByteArray lastCharacter(string_view key)
{
    if (static_cast<unsigned char>(key.back()) < 0x80)
        return QByteArray(1, key.back());
    const auto characters = QString::fromUtf8(key.data(), static_cast<int>(key.size())).toUcs4();
    const uint last = characters.back();
    return QString::fromUcs4(&last, 1).toUtf8();
}

// A stem alone means flow 0; else the flow is the key's last character, whatever it is: deliberate.
QByteArray flowKey(const AcceptedKey &row, string_view key)
{
    if (key.size() == row.lowered.size())
        return row.name + '0';
    return row.name + lastCharacter(key);
}

// The first row that the key matches decides. lowered is scratch.
SettingsKey meaningInTable(string_view key, std::string &lowered)
{
    static const std::vector<AcceptedKey> rows = makeAccepted();
    lowerInto(lowered, key);
    for (const AcceptedKey &row : rows) {
        if (row.matches(lowered))
            return {row.isFlow ? flowKey(row, key) : row.name, row.kind};
    }
    return {};
}

// Keys in their usual spelling, which nearly every line of a file has: looked up instead of walked to.
using UsualKeys = std::unordered_map<std::string, SettingsKey>;

UsualKeys makeUsualKeys()
{
    UsualKeys keys;
    std::string lowered;
    const auto add = [&](const std::string &key) { keys.emplace(key, meaningInTable(key, lowered)); };
    for (const auto &row : kAcceptedKeys) {
        if (row.place == Place::Whole)
            add(row.key);
        for (char flow = '0'; row.place == Place::Flow && flow < '8'; ++flow)
            add(row.key + std::string(1, flow));
    }
    return keys;
}

} // namespace

SettingsKey meaningOf(string_view key, std::string &lowered)
{
    static const UsualKeys usual = makeUsualKeys();
    lowered = key;
    const auto known = usual.find(lowered);
    return known != usual.end() ? known->second : meaningInTable(key, lowered);
}
