// SPDX-License-Identifier: MIT
#include "fleet/service/ptpsign.h"

#include "channel/clockstate.h"
#include "rkptp.h"

#include <dlfcn.h>

#include <tuple>

namespace fleet {

namespace {

// Calls that a site's own library may lack.
template<class Function>
Function *call(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_DEFAULT, name));
}

using StartReading = PTP_HANDLE(const char *);
using GetState = int(PTP_HANDLE);

QByteArray textOf(int (*get)(PTP_HANDLE, char *), PTP_HANDLE client)
{
    char text[RKPTP_TEXT_SIZE] = "";
    get(client, text);
    return text;
}

auto tied(const ops::PtpTarget &target)
{
    return std::tie(target.interface, target.domain, target.grandmaster);
}

} // namespace

PtpSign::~PtpSign()
{
    end();
}

void PtpSign::end()
{
    if (m_client)
        rkPTPEnd(m_client);
    m_client = nullptr;
}

void PtpSign::want(const std::optional<ops::PtpTarget> &target)
{
    if (m_target.has_value() == target.has_value() && (!target || tied(*m_target) == tied(*target)))
        return;
    end();
    m_target = target;
    auto *start = call<StartReading>("rkPTPStartReading");
    if (!target || !start)
        return;
    m_client = start(target->interface.constData());
    rkPTPSetTargetDomain(m_client, target->domain);
    rkPTPSetTargetMacAddress(m_client, target->grandmaster.constData());
}

std::optional<PtpSeen> PtpSign::seen() const
{
    if (!m_target)
        return PtpSeen{clockStateWord(ClockState::NoPtp), 0, {}};
    auto *state = call<GetState>("rkPTPGetState");
    if (!m_client || !state)
        return std::nullopt;
    PtpSeen seen{clockStateWord(clockStateFromNumber(state(m_client))), m_target->domain,
                 textOf(rkPTPGetGrandmasterID, m_client)};
    const QByteArray domain = textOf(rkPTPGetDomain, m_client);
    if (!domain.isEmpty())
        seen.domain = domain.toUInt();
    return seen;
}

} // namespace fleet
