// SPDX-License-Identifier: MIT
//
// Settings files (".ipp") of whole configurations, through the dialog's own reader and writer, and what the
// format cannot carry. Pure; any thread.
#ifndef CORVEL_OPS_SETTINGS_H
#define CORVEL_OPS_SETTINGS_H

#include "ops/draft.h"
#include "ops/outcome.h"

#include <QByteArrayList>

namespace ops {

// What the dialog writes for this configuration when it shows so many audio flows; below 0: as many as the
// channel with most flows has, so that none is left out.
QByteArray exportSettings(const Snapshot &values, int flows = -1);

struct SettingsRead {
    int values = 0;       // lines that store something
    int channels = 0;     // channels that get a value
    QByteArrayList notes; // what was left out or read otherwise than somebody may expect, in words
};

// Puts what the dialog would store into the draft, or fails when it is no settings file.
Outcome<SettingsRead> importSettings(const QByteArray &text, Draft &draft);

// What of this configuration does not come back from a settings file, in words, with counts.
QByteArrayList settingsLosses(const Snapshot &values);

} // namespace ops

#endif
