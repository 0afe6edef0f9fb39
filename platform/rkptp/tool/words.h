// SPDX-License-Identifier: MIT
#ifndef PTPSTATUS_WORDS_H
#define PTPSTATUS_WORDS_H

// What ptpstatus prints: the view of one client in words or as JSON, and the masters that were heard.

#include "rkptp.h"

#include <string>
#include <vector>

namespace ptpstatus {

/* One look at a client. */
struct View {
    int status = RKPTP_NO_CLIENT;
    int state = RKPTP_STATE_NOT_RUNNING;
    bool ofSystem = false;
    bool offsetKnown = false;
    int64_t offset = 0;
    uint32_t offsetAgeMs = 0;
    uint64_t seconds = 0;
    uint32_t nanoseconds = 0;
    std::string grandmaster;
    std::string sourcePort;
    std::string domain;
    std::string address;
    std::string reason;
};

View look(PTP_HANDLE handle);
std::vector<RKPTP_MASTER> mastersOf(PTP_HANDLE handle);

/* "locked to ..., offset 12 ns, PTP time ...", "no master seen": without the reason. */
std::string inWords(const View &view, const std::string &wantedGrandmaster);

/* One line for each master. */
std::string inWords(const RKPTP_MASTER &master);

/* One object on one line. */
std::string asJson(const View &view, const std::vector<RKPTP_MASTER> &masters);

} // namespace ptpstatus

#endif // PTPSTATUS_WORDS_H
