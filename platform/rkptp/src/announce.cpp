// SPDX-License-Identifier: MIT
#include "announce.h"

#include "timebase.h"
#include "wire.h"

#include <algorithm>
#include <tuple>

namespace rkptp {

namespace {

using namespace wire;

// Behind the header: origin time stamp 34 to 43, then the announce itself.
constexpr size_t atPriority1 = 47;
constexpr size_t atClass = 48;
constexpr size_t atAccuracy = 49;
constexpr size_t atVariance = 50;
constexpr size_t atPriority2 = 52;
constexpr size_t atGrandmaster = 53;
constexpr size_t atSteps = 61;
constexpr size_t announceSize = 64;

constexpr uint8_t announceType = 0x0b;
constexpr int missedAnnounces = 4;

// The order of the best master clock algorithm, as far as it does not depend on who asks.
auto rank(const HeardMaster &one)
{
    return std::tie(one.domain, one.priority1, one.clockClass, one.clockAccuracy, one.variance, one.priority2,
                    one.grandmaster, one.stepsRemoved, one.source.clock, one.source.port, one.interface);
}

// How long a master is believed in without a word of it. Intervals beyond 2^-7 to 2^6 s are taken for those.
int64_t patience(const HeardMaster &master)
{
    const int power = std::clamp<int>(master.logInterval, -7, 6);
    const int64_t interval = power < 0 ? nanosPerSecond >> -power : nanosPerSecond << power;
    return std::max(missedAnnounces * interval, 3 * nanosPerSecond);
}

} // namespace

std::optional<HeardMaster> parseAnnounce(const uint8_t *bytes, size_t size)
{
    if (size < announceSize || !isMessage(bytes, announceType) || get16(bytes + atLength) < announceSize ||
        get16(bytes + atLength) > size)
        return std::nullopt;
    HeardMaster master;
    master.domain = bytes[atDomain];
    master.source = getPort(bytes + atSource);
    master.logInterval = static_cast<int8_t>(bytes[atInterval]);
    master.priority1 = bytes[atPriority1];
    master.clockClass = bytes[atClass];
    master.clockAccuracy = bytes[atAccuracy];
    master.variance = get16(bytes + atVariance);
    master.priority2 = bytes[atPriority2];
    master.grandmaster = getClock(bytes + atGrandmaster);
    master.stepsRemoved = get16(bytes + atSteps);
    return master;
}

std::optional<HeardMaster> parseHeardLine(std::string_view line)
{
    constexpr std::string_view digits = "0123456789abcdef";
    const size_t blank = line.find(' ');
    if (blank == std::string_view::npos || blank == 0 || (line.size() - blank) % 2 != 1)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    for (size_t i = blank + 1; i < line.size(); i += 2) {
        const size_t high = digits.find(line[i]);
        const size_t low = digits.find(line[i + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return std::nullopt;
        bytes.push_back(static_cast<uint8_t>(high * 16 + low));
    }
    auto master = parseAnnounce(bytes.data(), bytes.size());
    if (master)
        master->interface = line.substr(0, blank);
    return master;
}

void MasterList::hear(const HeardMaster &master)
{
    const auto known = std::find_if(m_masters.begin(), m_masters.end(), [&master](const HeardMaster &one) {
        return one.domain == master.domain && one.source == master.source &&
               one.interface == master.interface;
    });
    if (known != m_masters.end()) {
        *known = master;
        return;
    }
    constexpr size_t most = 256; // somebody may invent masters without end
    if (m_masters.size() < most)
        m_masters.push_back(master);
}

bool MasterList::forget(int64_t now)
{
    const auto gone = std::remove_if(m_masters.begin(), m_masters.end(), [now](const HeardMaster &one) {
        return now - one.heardAt > patience(one);
    });
    const bool any = gone != m_masters.end();
    m_masters.erase(gone, m_masters.end());
    return any;
}

std::vector<HeardMaster> MasterList::sorted() const
{
    std::vector<HeardMaster> list = m_masters;
    std::sort(list.begin(), list.end(),
              [](const HeardMaster &a, const HeardMaster &b) { return rank(a) < rank(b); });
    return list;
}

} // namespace rkptp
