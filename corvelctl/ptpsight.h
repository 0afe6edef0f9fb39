// SPDX-License-Identifier: MIT
//
// Looks at PTP through librkptp, as the dialog does. Blocks for the time that is given to find a master.
#ifndef CORVELCTL_PTPSIGHT_H
#define CORVELCTL_PTPSIGHT_H

#include "ops/ptpdoctor.h"
#include "ops/ptpwish.h"

struct PtpWish {
    ops::PtpTarget target;
    int seconds = 8; // how long a master is waited for
};

struct PtpView {
    ops::PtpSight sight;
    QByteArray domain, grandmaster, sourcePort, address; // of the master that the time comes from
    std::optional<qint64> offsetNs;
    std::optional<quint32> offsetAgeMs;
    bool systemClient = false;
};

// `thorough`: listens to the end, so that every master is heard; otherwise until there is an answer.
PtpView lookAtPtp(const PtpWish &wish, bool thorough);

#endif
