// SPDX-License-Identifier: MIT
//
// Comma separated values (RFC 4180) as spreadsheets read and write them. Pure; any thread.
#ifndef CORVEL_OPS_CSV_H
#define CORVEL_OPS_CSV_H

#include "ops/outcome.h"

#include <QByteArrayList>

#include <vector>

namespace ops {

// One line with CR LF at its end. Cells with a separator, quote or line end in them are quoted.
QByteArray csvLine(const QByteArrayList &cells);

struct CsvRow {
    int line; // in the file, from 1
    QByteArrayList cells;
};

// Separated by comma, semicolon or tab, whichever the first line has; a byte order mark, LF and CR LF are
// fine, and blank lines are left out. Fails, naming the line, for quotes that do not close or stand inside a
// cell, a zero byte, and a text that is no UTF-8.
Outcome<std::vector<CsvRow>> readCsv(const QByteArray &text);

// A cell that a spreadsheet would take for a formula gets an apostrophe in front, and one that already has an
// apostrophe or a bracket (which mark cells of ours) too; safeCell and its opposite.
QByteArray safeCell(const QByteArray &text);
QByteArray plainCell(const QByteArray &cell);

} // namespace ops

#endif
