// SPDX-License-Identifier: MIT
#ifndef RKPTP_PTPPROCESSES_H
#define RKPTP_PTPPROCESSES_H

// The ptp4l processes of this machine, and who holds a socket, from /proc.

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

namespace rkptp {

/* One ptp4l of this machine, as its command line shows it. */
struct PtpProcess {
    pid_t pid = 0;
    uid_t user = 0;
    std::vector<std::string> arguments;
    std::vector<uint64_t> sockets; // inodes, where they may be looked at: those of ours as root only
    bool socketsKnown = false;     // they were looked at; one that is ending has none any more

    /* Started by this library, here or in another program, of whatever user. */
    bool ours() const;
    std::vector<std::string> interfaces() const;
    bool runsOn(const std::string &interface) const;
    /* Whether the socket is one of `sockets`. */
    bool holds(uint64_t inode) const;
    /* Value of "--name=value" or, failing that, of a line "name value" in the file given with -f. */
    std::string option(const std::string &name) const;
};

std::vector<PtpProcess> readPtpProcesses();

/* The process that has the socket open; 0 where none may be looked at that has. */
pid_t holderOf(uint64_t inode);

/* "ptp4l (process 812)" */
std::string nameOf(pid_t pid);

} // namespace rkptp

#endif // RKPTP_PTPPROCESSES_H
