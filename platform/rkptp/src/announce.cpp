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
constexpr size_t kAtPriority1 = 47;
constexpr size_t kAtClass = 48;
constexpr size_t kAtAccuracy = 49;
constexpr size_t kAtVariance = 50;
constexpr size_t kAtPriority2 = 52;
constexpr size_t kAtGrandmaster = 53;
constexpr size_t kAtSteps = 61;
constexpr size_t kAnnounceSize = 64;

constexpr uint8_t kAnnounceType = 0x0b;
constexpr int kMissedAnnounces = 4;

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
    const int64_t interval = power < 0 ? kNanosPerSecond >> -power : kNanosPerSecond << power;
    return std::max(kMissedAnnounces * interval, 3 * kNanosPerSecond);
}

} // namespace

std::optional<HeardMaster> parseAnnounce(const uint8_t *bytes, size_t size)
{
    if (size < kAnnounceSize || !isMessage(bytes, kAnnounceType) ||
        get16(bytes + kAtLength) < kAnnounceSize || get16(bytes + kAtLength) > size)
        return std::nullopt;
    HeardMaster master;
    master.domain = bytes[kAtDomain];
    master.source = getPort(bytes + kAtSource);
    master.logInterval = static_cast<int8_t>(bytes[kAtInterval]);
    master.priority1 = bytes[kAtPriority1];
    master.clockClass = bytes[kAtClass];
    master.clockAccuracy = bytes[kAtAccuracy];
    master.variance = get16(bytes + kAtVariance);
    master.priority2 = bytes[kAtPriority2];
    master.grandmaster = getClock(bytes + kAtGrandmaster);
    master.stepsRemoved = get16(bytes + kAtSteps);
    return master;
}

std::optional<HeardMaster> parseHeardLine(std::string_view line)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    const size_t blank = line.find(' ');
    if (blank == std::string_view::npos || blank == 0 || (line.size() - blank) % 2 != 1)
        return std::nullopt;
    std::vector<uint8_t> bytes;
    for (size_t i = blank + 1; i < line.size(); i += 2) {
        const size_t high = kDigits.find(line[i]);
        const size_t low = kDigits.find(line[i + 1]);
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
    constexpr size_t kMost = 256; // somebody may invent masters without end
    if (m_masters.size() < kMost)
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
