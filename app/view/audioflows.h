// SPDX-License-Identifier: MIT
//
// View: the eight flow selectors. In single-flow mode the audio values carry no flow number; no selector
// can be chosen then and the selectors do not exclude each other.
#ifndef CORVEL_VIEW_AUDIOFLOWS_H
#define CORVEL_VIEW_AUDIOFLOWS_H

#include "channel/channelkeys.h"

#include <array>

class QRadioButton;

class AudioFlows {
public:
    using Buttons = std::array<QRadioButton *, kFlowCount>;

    AudioFlows() = default;
    explicit AudioFlows(const Buttons &buttons) : m_buttons(buttons) {}

    bool isSingle() const { return m_single; }
    void setSingle(bool single) { m_single = single; }

    // The next choice leaves the selectors unchecked when none is checked.
    void setKeepNone(bool keep) { m_keepNone = keep; }

    // The first flows can be chosen, the others cannot; none in single-flow mode.
    void enable(quint32 flows) const;

    // Disables what lies past the last flow, but for the selector next to it, and enables nothing.
    void disablePast(quint32 flows) const;

    // Checks this selector and no other one, also while they do not exclude each other.
    void selectOnly(int flow) const;

    // Unchecks all of them and makes them what the mode wants: exclusive and enabled, or neither.
    void clear() const;

    // All checked flows, flow 0 as the lowest bit.
    quint32 checked() const;
    void setChecked(quint32 flows) const;

    // The lowest and the highest checked flow, -1 when none is.
    int first() const;
    int last() const;

    // The suffix of the names that a load reads: the first checked flow. With none flow 0 gets checked,
    // except in single-flow mode and while "keep none" is set; the suffix is empty then.
    QByteArray loadSuffix() const;

    // The suffix of the names that a save writes: the last checked flow, empty with none. It differs from
    // the one of a load only when several are checked, which needs single-flow mode.
    QByteArray saveSuffix() const;

private:
    Buttons m_buttons = {};
    bool m_single = false;
    bool m_keepNone = false;
};

#endif
