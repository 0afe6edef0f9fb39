// SPDX-License-Identifier: MIT
#include "app/view/clockstate.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QLineEdit>
#include <QStyle>

namespace {

struct StateRow {
    ClockState state;
    const char *advice;
};

// clang-format off
// Found by their place.
constexpr StateRow kStates[] = {
    {ClockState::NoPtp,        QT_TRANSLATE_NOOP("QCorvel", "The time of this machine. PTP is not used.")},
    {ClockState::NotRunning,   QT_TRANSLATE_NOOP("QCorvel", "No PTP client runs. Check the domain (0 to 127); the log says more.")},
    {ClockState::Starting,     QT_TRANSLATE_NOOP("QCorvel", "The PTP client starts.")},
    {ClockState::Locked,       QT_TRANSLATE_NOOP("QCorvel", "Locked to the grandmaster.")},
    {ClockState::OtherMaster,  QT_TRANSLATE_NOOP("QCorvel", "The time comes from another grandmaster than the one entered. Check the clock's identity or the master.")},
    {ClockState::NoMaster,     QT_TRANSLATE_NOOP("QCorvel", "No master is heard in this domain. Check the domain, the interface and the cable.")},
    {ClockState::Stale,        QT_TRANSLATE_NOOP("QCorvel", "The master is no longer heard. The time is carried on from its last message, and so is the offset.")},
    {ClockState::NoInterface,  QT_TRANSLATE_NOOP("QCorvel", "The interface is down, or this machine has none with that address. Check the interface of the side that is in use.")},
    {ClockState::NotAllowed,   QT_TRANSLATE_NOOP("QCorvel", "The PTP client may not open its ports. The log has the command that allows it.")},
    {ClockState::SystemClient, QT_TRANSLATE_NOOP("QCorvel", "Another program has the PTP ports of this interface and cannot be read.")},
    {ClockState::Failed,       QT_TRANSLATE_NOOP("QCorvel", "The PTP client ended or could not be started. The log says why; it is tried again.")},
};

// clang-format on

constexpr bool everyStateHasItsPlace()
{
    int place = 0;
    for (const StateRow &row : kStates) {
        if (static_cast<int>(row.state) != place++)
            return false;
    }
    return place == static_cast<int>(ClockState::Failed) + 1;
}
static_assert(everyStateHasItsPlace(), "a state has no words, or stands at another one's place");

const StateRow &rowOf(ClockState state)
{
    return kStates[static_cast<int>(state)];
}

void ignore(QAccessibleEvent *) {}

// While it lives assistive tools hear nothing.
class Silence {
public:
    Silence() : m_before(QAccessible::installUpdateHandler(ignore)) {}
    ~Silence() { QAccessible::installUpdateHandler(m_before); }
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

private:
    QAccessible::UpdateHandler m_before;
};

} // namespace

QString clockStateName(ClockState state)
{
    return QLatin1String(clockStateWord(state));
}

QString clockStateAdvice(ClockState state)
{
    return QCoreApplication::translate("QCorvel", rowOf(state).advice);
}

void ClockStateLines::show(ClockState state, const QString &words)
{
    const bool isNew = m_shown != static_cast<int>(state);
    if (!isNew && words == m_words)
        return;
    m_shown = static_cast<int>(state);
    m_words = words;
    for (QLineEdit *line : m_lines) {
        line->setToolTip(words);
        if (!isNew)
            continue;
        line->setProperty("state", clockStateName(state));
        line->style()->unpolish(line);
        line->style()->polish(line);
        line->setAccessibleDescription(words); // tells of itself
    }
}

void showClockLine(QLineEdit *line, const QString &text)
{
    if (line->text() == text)
        return;
    const Silence silence;
    line->setText(text);
    line->setCursorPosition(0);
}
