// SPDX-License-Identifier: MIT
//
// What this machine sees of PTP, for its sign of life: read through librkptp from a ptp4l that runs already,
// the system's or one that a dialog or an engine has started. It starts none itself and opens no port. Does
// not block. One thread.
#ifndef CORVEL_FLEET_SERVICE_PTPSIGN_H
#define CORVEL_FLEET_SERVICE_PTPSIGN_H

#include "fleet/statusfile.h"
#include "ops/ptpwish.h"

namespace fleet {

class PtpSign {
public:
    PtpSign() = default;
    ~PtpSign();
    PtpSign(const PtpSign &) = delete;
    PtpSign &operator=(const PtpSign &) = delete;

    // What the configuration in use asks for; nothing: no channel takes its clock from PTP.
    void want(const std::optional<ops::PtpTarget> &target);
    // Nothing where the library in use cannot look without starting a client.
    std::optional<PtpSeen> seen() const;

private:
    void end();

    std::optional<ops::PtpTarget> m_target;
    void *m_client = nullptr;
};

} // namespace fleet

#endif
