// SPDX-License-Identifier: MIT
#include "listener.h"

#include "timebase.h"

#include <algorithm>

namespace rkptp {

namespace {

constexpr int64_t kRetryInterval = 5 * kNanosPerSecond; // after a launcher that ended
constexpr int64_t kForgetInterval = kNanosPerSecond;

} // namespace

Listener::Listener() = default;

void Listener::want(const std::vector<Interface> &interfaces, int64_t now)
{
    if (interfaces == m_interfaces && (m_process || interfaces.empty() || now < m_retryAt))
        return;
    m_interfaces = interfaces;
    m_process.reset();
    m_masters = MasterList();
    if (!interfaces.empty())
        start(now);
}

void Listener::start(int64_t now)
{
    ProcessRequest request;
    request.launcher = findLauncher();
    request.listen = true;
    for (const Interface &interface : m_interfaces)
        request.interfaces.push_back(interface.name);
    m_retryAt = now + kRetryInterval;
    m_process = std::make_unique<Process>();
    m_process->setReader([this](const std::string &line) {
        auto master = parseHeardLine(line);
        if (!master)
            return false;
        master->heardAt = m_now;
        m_masters.hear(*master);
        m_heard = true;
        return true;
    });
    if (request.launcher.empty() || m_process->start(request) != 0)
        m_process.reset();
}

bool Listener::serve(bool ended, bool told, int64_t now)
{
    m_now = now;
    m_heard = false;
    if (m_process && told)
        m_process->drainLog();
    if (m_process && ended && m_process->reap())
        m_process.reset();
    const bool forgotten = m_masters.forget(now);
    return m_heard || forgotten;
}

int64_t Listener::nextDue(int64_t now) const
{
    if (!m_process && !m_interfaces.empty())
        return std::max(m_retryAt, now + kForgetInterval);
    return m_interfaces.empty() ? INT64_MAX : now + kForgetInterval;
}

} // namespace rkptp
