// SPDX-License-Identifier: MIT
#include "ops/ptpdoctor.h"

#include <algorithm>

namespace ops {

namespace {

constexpr quint32 kAnnounceTimeoutMs = 3000; // three announce intervals of the slowest usual profile
constexpr int kWorstGoodClass = 7;           // 6: locked to a reference, 7: was, and still holds its time
constexpr char kProfile[] = "ST 2059-2";
constexpr char kStandard[] = "IEEE 1588";

QByteArray number(qint64 value)
{
    return QByteArray::number(static_cast<qlonglong>(value));
}

QByteArray masterText(const PtpMaster &master)
{
    return master.grandmaster + " in domain " + number(master.domain) + " on " + master.interface;
}

bool isHere(const PtpSight &sight, const PtpMaster &master)
{
    return master.domain == sight.domain;
}

class Doctor {
public:
    explicit Doctor(const PtpSight &sight) : m_sight(sight) {}
    Findings examine();

private:
    void say(Severity severity, const char *rule, const QByteArray &reason, const QByteArray &remedy,
             const char *clause);
    void client();
    void domains();
    void masters();
    void quality(const PtpMaster &master);

    const PtpSight &m_sight;
    Findings m_findings;
};

void Doctor::say(Severity severity, const char *rule, const QByteArray &reason, const QByteArray &remedy,
                 const char *clause)
{
    const QByteArray place = "ptp domain " + number(m_sight.domain);
    m_findings.push_back({severity, rule, place, reason, remedy, clause});
}

void Doctor::client()
{
    if (!m_sight.addressIsHere)
        say(Severity::Error, "ptp-interface",
            "no interface of this machine has the address " + m_sight.interface,
            "set rx.if to an address of this machine (ip -4 address)", "");
    else if (m_sight.state == ClockState::NoInterface)
        say(Severity::Error, "ptp-interface", "the interface is down or gone",
            "look at the link and the cable", "");
    if (m_sight.state == ClockState::NotAllowed)
        say(Severity::Error, "ptp-capability", "the PTP ports 319 and 320 may not be opened",
            "give the launcher its capability: setcap cap_net_bind_service=p on libexec/corvel/ptp_launch",
            "");
    if (m_sight.state == ClockState::SystemClient)
        say(Severity::Error, "ptp-ports", "another program has the PTP ports and cannot be read",
            "stop it (systemctl stop ptp4l), or let this user read its socket", "");
    if (m_sight.state == ClockState::Failed)
        say(Severity::Error, "ptp-program", "ptp4l cannot be started or ended",
            "install linuxptp; the log says more", "");
    if (m_sight.addressIsHere &&
        (m_sight.state == ClockState::NotRunning || m_sight.state == ClockState::Starting))
        say(Severity::Warning, "ptp-client", "the PTP client has not answered yet",
            "give it longer (--wait); the log says more", "");
    if (m_sight.joined == std::optional<bool>(false))
        say(Severity::Error, "ptp-igmp", "the interface has not joined the PTP group 224.0.1.129",
            "see that the interface allows multicast and the switch answers IGMP", kStandard);
}

// The usual mistake is the domain: a master that is heard, but elsewhere.
void Doctor::domains()
{
    const auto &all = m_sight.masters;
    const bool own =
        std::any_of(all.begin(), all.end(), [this](const PtpMaster &m) { return isHere(m_sight, m); });
    const bool silent = m_sight.state == ClockState::NoMaster || m_sight.state == ClockState::Stale;
    if (own && m_sight.state == ClockState::NoMaster)
        say(Severity::Warning, "ptp-not-followed",
            "a master is heard here, and the client does not follow it",
            "give it longer (--wait); then see that its announces and syncs both arrive", kStandard);
    if (own || !silent)
        return;
    if (all.empty())
        return say(Severity::Error, "ptp-no-master", "no master is heard in any domain",
                   "see that a grandmaster runs and that the switch lets 224.0.1.129 through", kStandard);
    for (const PtpMaster &master : all)
        say(Severity::Error, "ptp-domain",
            "nobody gives the time here, but a master is heard: " + masterText(master),
            "set the domain to " + number(master.domain) + ", or the master's to " + number(m_sight.domain),
            kProfile);
}

void Doctor::quality(const PtpMaster &master)
{
    if (master.ageMs > kAnnounceTimeoutMs)
        say(Severity::Warning, "ptp-announce",
            "no announce of " + masterText(master) + " for " + number(master.ageMs) + " ms",
            "see whether the master or the way to it fails", kStandard);
    if (master.clockClass > kWorstGoodClass)
        say(Severity::Warning, "ptp-quality",
            masterText(master) + " is not locked to a reference (clock class " + number(master.clockClass) +
                ')',
            "see to the grandmaster's antenna or reference input", kProfile);
}

void Doctor::masters()
{
    QByteArray first;
    for (const PtpMaster &master : m_sight.masters) {
        if (!isHere(m_sight, master))
            continue;
        quality(master);
        if (!first.isEmpty() && first != master.grandmaster)
            say(Severity::Warning, "ptp-two-masters",
                first + " and " + master.grandmaster + " both announce themselves",
                "let one of them be passive: give it a higher priority1, or another domain", kStandard);
        if (first.isEmpty())
            first = master.grandmaster;
    }
    if (m_sight.state == ClockState::OtherMaster)
        say(Severity::Error, "ptp-other-master",
            "the time comes from another grandmaster than " + m_sight.wanted,
            "correct the grandmaster (gm), or the priorities of the masters", kStandard);
    if (m_sight.state == ClockState::Stale)
        say(Severity::Error, "ptp-stale", "the syncs of the master have stopped",
            "see to the master and the network", kStandard);
}

Findings Doctor::examine()
{
    client();
    domains();
    masters();
    return m_findings;
}

} // namespace

Findings examinePtp(const PtpSight &sight)
{
    return Doctor(sight).examine();
}

} // namespace ops
