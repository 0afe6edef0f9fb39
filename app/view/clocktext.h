// SPDX-License-Identifier: MIT
//
// View: the texts of the two clock lines. Pure functions; the caller asks the clocks.
#ifndef CORVEL_VIEW_CLOCKTEXT_H
#define CORVEL_VIEW_CLOCKTEXT_H

#include <QByteArray>

// Clock information of a software PTP client: "2 D:127 00:11:22.fffe.33-1".
QByteArray ptpClockInfo(const QByteArray &version, const QByteArray &domain, const QByteArray &portId);

// Its time, with the offset from the master in nanoseconds: "2026-01-31 12:00:00.000000000 (-1,234 ns)".
QByteArray ptpClockTime(const QByteArray &date, const QByteArray &time, qint64 offsetNs);

// Any other clock's time. Ends in a blank.
QByteArray clockTime(const QByteArray &date, const QByteArray &time);

#endif
