// SPDX-License-Identifier: MIT
#include "spawnlimit.h"

#include "timebase.h"

#include <algorithm>

namespace rkptp {

namespace {

constexpr int64_t kSecond = kNanosPerSecond;
constexpr int64_t kStartWindow = 5 * kSecond; // at most startCount starts of any client within it
constexpr size_t kStartCount = 5;
constexpr int64_t kFailureWindow = 10 * kSecond;
constexpr size_t kFailureCount = 3;
constexpr int64_t kShortRest = 1 * kSecond;
constexpr int64_t kFirstLongRest = 5 * kSecond;
constexpr int64_t kLongestRest = 60 * kSecond;
constexpr int64_t kForgetAfter = 60 * kSecond;
constexpr int64_t kLogInterval = 60 * kSecond;

void dropOlder(std::deque<int64_t> &times, int64_t limit)
{
    while (!times.empty() && times.front() <= limit)
        times.pop_front();
}

} // namespace

int64_t SpawnLimit::allowedAt(const std::string &key, int64_t now) const
{
    int64_t at = now;
    if (m_starts.size() >= kStartCount)
        at = std::max(at, m_starts[m_starts.size() - kStartCount] + kStartWindow);
    const auto row = m_failures.find(key);
    return row == m_failures.end() ? at : std::max(at, row->second.blockedUntil);
}

bool SpawnLimit::failing(const std::string &key, int64_t now) const
{
    const auto row = m_failures.find(key);
    return row != m_failures.end() && now < row->second.blockedUntil;
}

void SpawnLimit::started(int64_t now)
{
    m_starts.push_back(now);
    while (m_starts.size() > kStartCount)
        m_starts.pop_front();
}

void SpawnLimit::failed(const std::string &key, int64_t now)
{
    for (auto row = m_failures.begin(); row != m_failures.end();)
        row = now > row->second.blockedUntil + kForgetAfter ? m_failures.erase(row) : std::next(row);
    Failures &failures = m_failures[key];
    dropOlder(failures.recent, now - kFailureWindow);
    failures.recent.push_back(now);
    if (failures.rest > 0)
        failures.rest = std::min(failures.rest * 2, kLongestRest);
    else if (failures.recent.size() >= kFailureCount)
        failures.rest = kFirstLongRest;
    failures.blockedUntil = now + (failures.rest > 0 ? failures.rest : kShortRest);
}

bool LogLimit::allowed(int kind, int64_t now)
{
    const auto row = m_last.find(kind);
    if (row != m_last.end() && now - row->second < kLogInterval)
        return false;
    m_last[kind] = now;
    return true;
}

} // namespace rkptp
