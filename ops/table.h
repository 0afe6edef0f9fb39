// SPDX-License-Identifier: MIT
//
// All channels as one table: a row for each channel, each element and each audio flow, a column for each
// word. Cells hold values in words. An empty cell says nothing; "(absent)" deletes, "(empty)" is the empty
// text, and
// "(number)5", "(text)abc" and "(base64)..." stand for values that no word can say. Pure; any thread.
#ifndef CORVEL_OPS_TABLE_H
#define CORVEL_OPS_TABLE_H

#include "ops/draft.h"
#include "ops/outcome.h"

#include <QByteArrayList>

namespace ops {

QByteArray exportTable(const Snapshot &values);

// Puts the table into the draft and returns the complaints, each with row and column: as long as there is
// one, nothing of the draft may be written. At most 20 are told.
QByteArrayList importTable(const QByteArray &text, bool anyChannel, Draft &draft);

} // namespace ops

#endif
