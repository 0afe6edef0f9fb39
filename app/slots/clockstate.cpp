// SPDX-License-Identifier: MIT
//
// Slots, clock state: asks the PTP client what it is doing and has the clock lines show it.
#include "app/dialog/private.h"
#include "app/slots/ptpcalls.h"
#include "app/view/combos.h"
#include "channel/interfacecheck.h"

namespace {

constexpr int kTicksBetween = 25; // of the status timer: four times a second
constexpr quint32 kStaleMs = 3000;

bool clientsInterfaceExists(const QCorvel *q)
{
    const QString address = QString::fromLatin1(q->m_szIPAddress);
    return address == QLatin1String("0.0.0.0") || interfaceExistedLately(address);
}

ClockState stateOf(const QCorvel *q)
{
    if (comboData(q->m_pComboClkSrc) != ClockSource::SoftwarePtp)
        return ClockState::NoPtp;
    const std::optional<int> number = ptpState(q->hPTP);
    const ClockState state =
        number ? clockStateFromNumber(*number)
               : clockStateFromStatus(rkPTPGetStatus(q->hPTP, 0), clientsInterfaceExists(q));
    const bool stale = state == ClockState::Locked && ptpOffsetAgeMs(q->hPTP).value_or(0) >= kStaleMs;
    return stale ? ClockState::Stale : state;
}

// The client's own reason is more to the point, but says nothing of a lock that has become stale since.
QString wordsFor(const QCorvel *q, ClockState state)
{
    if (state == ClockState::NoPtp)
        return clockStateAdvice(state);
    QString words = ptpReason(q->hPTP);
    if (words.isEmpty())
        return clockStateAdvice(state);
    words[0] = words[0].toUpper();
    words += QLatin1Char('.');
    return state == ClockState::Stale ? words + QLatin1Char('\n') + clockStateAdvice(state) : words;
}

} // namespace

void QCorvelPrivate::showClockState()
{
    if (clockTicks++ % kTicksBetween != 0)
        return;
    const ClockState state = stateOf(q);
    clockLines.show(state, wordsFor(q, state));
}
