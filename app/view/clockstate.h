// SPDX-License-Identifier: MIT
//
// View: what the two clock lines mean, beside their texts: a dynamic property "state" for the style sheet, a
// tool tip in words, and the same words for assistive tools.
#ifndef CORVEL_VIEW_CLOCKSTATE_H
#define CORVEL_VIEW_CLOCKSTATE_H

#include "channel/clockstate.h"

#include <QString>

class QLineEdit;

// The value of the property: "locked", "other master", ...
QString clockStateName(ClockState state);

// What it means and what to do, in one or two sentences; for a client that gives no reason itself.
QString clockStateAdvice(ClockState state);

class ClockStateLines {
public:
    ClockStateLines() = default;
    ClockStateLines(QLineEdit *info, QLineEdit *time) : m_lines{info, time} {}

    // The lines are styled anew and assistive tools are told only when the state is another one; the words
    // may change more often.
    void show(ClockState state, const QString &words);

private:
    QLineEdit *m_lines[2] = {};
    int m_shown = -1;
    QString m_words;
};

// Shows the text, its start when it is too long. Assistive tools are not told: a clock line changes a hundred
// times a second. A line that reads the same is left alone.
void showClockLine(QLineEdit *line, const QString &text);

#endif
