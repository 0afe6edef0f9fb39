// SPDX-License-Identifier: MIT
#include "process.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

// This header of the C library does not say for itself that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace rkptp {

namespace {

// Where the launcher stands as seen from the folder of this library: build tree first, then the installed
// tree.
const char *const kLauncherPlaces[] = {"/../libexec/corvel/ptp_launch", "/" RKPTP_INSTALLED_LAUNCHER};

std::string libraryFolder()
{
    Dl_info info{};
    char resolved[PATH_MAX];
    if (!dladdr(reinterpret_cast<const void *>(kLauncherPlaces), &info) || !info.dli_fname ||
        !realpath(info.dli_fname, resolved))
        return {};
    std::string path = resolved;
    return path.substr(0, path.rfind('/'));
}

std::string resolved(const std::string &path)
{
    char buffer[PATH_MAX];
    return realpath(path.c_str(), buffer) ? buffer : path;
}

std::vector<std::string> argumentsOf(const ProcessRequest &request)
{
    if (request.listen) {
        std::vector<std::string> few = {request.launcher, std::to_string(getpid()), "listen"};
        few.insert(few.end(), request.interfaces.begin(), request.interfaces.end());
        return few;
    }
    std::vector<std::string> arguments = {request.launcher, std::to_string(getpid()),
                                          std::to_string(request.domain), request.identity,
                                          request.socketPath};
    arguments.insert(arguments.end(), request.interfaces.begin(), request.interfaces.end());
    return arguments;
}

// Default handling of every signal, none blocked, a process group of its own: Ctrl-C in the terminal is for
// us.
void prepareAttributes(posix_spawnattr_t *attributes)
{
    sigset_t all;
    sigset_t none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(attributes, &all);
    posix_spawnattr_setsigmask(attributes, &none);
    posix_spawnattr_setpgroup(attributes, 0);
    posix_spawnattr_setflags(attributes,
                             POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
}

int spawn(pid_t *pid, const std::vector<std::string> &arguments, int output)
{
    std::vector<char *> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    char *const environment[] = {nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, 1);
    posix_spawn_file_actions_adddup2(&actions, output, 2);
    prepareAttributes(&attributes);
    const int error = posix_spawn(pid, argv[0], &actions, &attributes, argv.data(), environment);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

std::string expectedLauncher()
{
    return resolved(libraryFolder() + kLauncherPlaces[0]);
}

std::string findLauncher()
{
    const std::string folder = libraryFolder();
    for (const char *place : kLauncherPlaces)
        if (access((folder + place).c_str(), X_OK) == 0)
            return resolved(folder + place);
    return {};
}

Process::~Process()
{
    if (m_pid <= 0)
        return;
    signal(SIGKILL);
    siginfo_t info{};
    while (waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED) != 0 && errno == EINTR)
        continue;
}

int Process::start(const ProcessRequest &request)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return errno;
    m_log = Descriptor(ends[0]);
    const Descriptor writeEnd(ends[1]);
    // ptp4l writes its lines without minding a full pipe; only our end must not block.
    fcntl(writeEnd.get(), F_SETFL, 0);
    const int error = spawn(&m_pid, argumentsOf(request), writeEnd.get());
    if (error != 0) {
        m_pid = -1;
        return error;
    }
    // The process is ours to reap, so its number cannot have been given away yet.
    m_pidFd = Descriptor(pidfd_open(m_pid, 0));
    if (m_pidFd.valid())
        return 0;
    const int failure = errno;
    // Unless the program lets the kernel reap its children: then the number may be anybody's by now.
    if (failure == ESRCH)
        m_pid = -1;
    return failure;
}

void Process::signal(int number)
{
    if (m_pid <= 0)
        return;
    if (!m_pidFd.valid() || pidfd_send_signal(m_pidFd.get(), number, nullptr, 0) != 0)
        kill(m_pid, number);
}

std::optional<ProcessEnd> Process::reap()
{
    if (m_pid <= 0)
        return std::nullopt;
    siginfo_t info{};
    const int result = waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG);
    if (result == 0 && info.si_pid == 0)
        return std::nullopt;
    if (result != 0 && errno == EINTR)
        return std::nullopt;
    m_pid = -1;
    // A program that ignores SIGCHLD has its children reaped by the kernel: ended, with an unknown code.
    if (result != 0)
        return ProcessEnd{};
    return ProcessEnd{info.si_code == CLD_EXITED, info.si_status};
}

void Process::drainLog()
{
    char buffer[1024];
    constexpr int kReads = 16; // a chatty child must not keep the worker
    for (int i = 0; i < kReads && m_log.valid(); ++i) {
        const ssize_t got = read(m_log.get(), buffer, sizeof buffer);
        if (got > 0)
            m_output.take(buffer, static_cast<size_t>(got));
        else if (got == 0)
            m_log.reset();
        else if (errno != EINTR)
            return;
    }
}

} // namespace rkptp
