/* SPDX-License-Identifier: MIT */
#ifndef RKPTP_LAUNCHCODES_H
#define RKPTP_LAUNCHCODES_H

/* Exit codes of ptp_launch, apart from those of ptp4l itself (0, 1 and 255). */
enum {
    LAUNCH_BAD_ARGUMENT = 100,
    LAUNCH_NO_CAPABILITY = 101, /* the ports 319 and 320 cannot be opened */
    LAUNCH_NO_PTP4L = 102,
    LAUNCH_PARENT_GONE = 103,
    LAUNCH_SYSTEM = 104, /* a system call failed; the reason is on standard error */
};

#endif /* RKPTP_LAUNCHCODES_H */
