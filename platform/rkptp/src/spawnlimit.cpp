// SPDX-License-Identifier: MIT
#include "spawnlimit.h"

#include "timebase.h"

#include <algorithm>

namespace rkptp {

namespace {

constexpr int64_t second = nanosPerSecond;
constexpr int64_t startWindow = 5 * second; // at most startCount starts of any client within it
constexpr size_t startCount = 5;
constexpr int64_t failureWindow = 10 * second;
constexpr size_t failureCount = 3;
constexpr int64_t shortRest = 1 * second;
constexpr int64_t firstLongRest = 5 * second;
constexpr int64_t longestRest = 60 * second;
constexpr int64_t forgetAfter = 60 * second;
constexpr int64_t logInterval = 60 * second;

void dropOlder(std::deque<int64_t> &times, int64_t limit)
{
    while (!times.empty() && times.front() <= limit)
        times.pop_front();
}

} // namespace

int64_t SpawnLimit::allowedAt(const std::string &key, int64_t now) const
{
    int64_t at = now;
    if (m_starts.size() >= startCount)
        at = std::max(at, m_starts[m_starts.size() - startCount] + startWindow);
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
    while (m_starts.size() > startCount)
        m_starts.pop_front();
}

void SpawnLimit::failed(const std::string &key, int64_t now)
{
    for (auto row = m_failures.begin(); row != m_failures.end();)
        row = now > row->second.blockedUntil + forgetAfter ? m_failures.erase(row) : std::next(row);
    Failures &failures = m_failures[key];
    dropOlder(failures.recent, now - failureWindow);
    failures.recent.push_back(now);
    if (failures.rest > 0)
        failures.rest = std::min(failures.rest * 2, longestRest);
    else if (failures.recent.size() >= failureCount)
        failures.rest = firstLongRest;
    failures.blockedUntil = now + (failures.rest > 0 ? failures.rest : shortRest);
}

bool LogLimit::allowed(int kind, int64_t now)
{
    const auto row = m_last.find(kind);
    if (row != m_last.end() && now - row->second < logInterval)
        return false;
    m_last[kind] = now;
    return true;
}

} // namespace rkptp
