// SPDX-License-Identifier: MIT
//
// What a configuration asks of PTP: the interface, the domain and the grandmaster of a channel. Pure; any
// thread.
#ifndef CORVEL_OPS_PTPWISH_H
#define CORVEL_OPS_PTPWISH_H

#include "ops/snapshot.h"

namespace ops {

struct PtpTarget {
    QByteArray interface; // address; empty: all interfaces
    quint32 domain = 0;
    QByteArray grandmaster; // empty: any
};

PtpTarget ptpTargetOf(const Snapshot &values, int channel);

// Of the first channel that takes its clock from PTP; nothing when none does.
std::optional<PtpTarget> firstPtpTarget(const Snapshot &values);

} // namespace ops

#endif
