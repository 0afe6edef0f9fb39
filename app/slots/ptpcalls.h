// SPDX-License-Identifier: MIT
//
// Calls of the PTP library that a site's own library may lack. They are looked up when they are first needed;
// without one its function says so, and its caller does with what every library has. None blocks.
#ifndef CORVEL_SLOTS_PTPCALLS_H
#define CORVEL_SLOTS_PTPCALLS_H

#include "rkptp.h"

#include <QString>

#include <optional>

// What the client is doing, by the library's numbers.
std::optional<int> ptpState(PTP_HANDLE handle);

// Why, in one sentence without a full stop; empty when the library cannot tell.
QString ptpReason(PTP_HANDLE handle);

// How old the offset is; none when there is none or the library cannot tell.
std::optional<quint32> ptpOffsetAgeMs(PTP_HANDLE handle);

#endif
