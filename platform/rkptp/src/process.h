// SPDX-License-Identifier: MIT
#ifndef RKPTP_PROCESS_H
#define RKPTP_PROCESS_H

// One ptp4l, started through the launcher: its process descriptor, its output, its end.

#include "descriptor.h"
#include "outputlines.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace rkptp {

using rk::Descriptor;

/* How a process ended. */
struct ProcessEnd {
    bool exited = false; // false: by a signal, or unknown
    int code = 0;        // exit code or signal
};

struct ProcessRequest {
    std::string launcher;
    std::vector<std::string> interfaces;
    unsigned domain = 0;
    std::string identity;
    std::string socketPath;
    bool listen = false; // hear masters instead of running a ptp4l; then only launcher and interfaces count
};

class Process {
public:
    Process() = default;
    /* Kills and reaps a process that still runs. */
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    /* Starts the launcher. 0, or an errno value when it cannot be started. The thread that calls this must
       live on: the child is killed by the kernel when it ends. */
    int start(const ProcessRequest &request);

    pid_t pid() const { return m_pid; }
    int pidFd() const { return m_pidFd.get(); }
    int logFd() const { return m_log.get(); }
    void signal(int number);

    /* The end of the process once it has ended; reaps it, this process only. */
    std::optional<ProcessEnd> reap();

    /* Reads what the process has written and keeps the last two lines; closes the pipe at its end. */
    void drainLog();
    const std::string &lastLines() const { return m_output.last(); }

    /* Who gets each line first; a line that he takes (true) is not kept. */
    void setReader(std::function<bool(const std::string &)> reader) { m_output.setReader(std::move(reader)); }

private:
    pid_t m_pid = -1;
    Descriptor m_pidFd;
    Descriptor m_log;
    OutputLines m_output;
};

/* Path of the launcher beside this library: in the build tree and when installed. Empty when there is none.
 */
std::string findLauncher();

/* Where the launcher is expected, for messages. */
std::string expectedLauncher();

} // namespace rkptp

#endif // RKPTP_PROCESS_H
