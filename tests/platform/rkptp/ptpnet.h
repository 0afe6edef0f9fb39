// SPDX-License-Identifier: MIT
#ifndef PTPNET_H
#define PTPNET_H

// The surroundings of a PTP test: a second network namespace behind a veth pair, with real ptp4l masters in
// it. Everything started here is killed by the kernel when the test ends in whatever way.

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <sys/types.h>
#include <vector>

/* Runs a command to its end and returns what it wrote; fails the program when it fails. */
QByteArray runCommand(const QString &program, const QStringList &arguments);

/* Starts a command that dies with this program. */
std::unique_ptr<QProcess> startCommand(const QString &program, const QStringList &arguments,
                                       const QString &output = QProcess::nullDevice());

/* What a tool of ours answered. */
struct ToolResult {
    int code = -1;
    QByteArray text;
    QByteArray complaint;
};

/* Runs one of the built tools with arguments that are separated by blanks. */
ToolResult runTool(const char *name, const QString &arguments);

/* Numbers of the living processes named `name` below process `parent`, at any depth. */
std::vector<pid_t> childrenNamed(pid_t parent, const QByteArray &name);

/* False once a process has ended, reaped or not. */
bool isAlive(pid_t pid);

/* Entries of a folder of /proc/self: descriptors or threads of this program. */
int countOf(const char *folder);

/* One master: a ptp4l in the far namespace. */
class Master {
public:
    Master(const QString &socket, unsigned domain, std::unique_ptr<QProcess> process);
    ~Master();
    void kill();
    /* Waits until it plays the master: it listens for a better one first. */
    void waitUntilActive();
    /* What the master announces about its time: seconds, and the flags "valid and traceable", "PTP
     * timescale". */
    void announce(int utcOffset, bool valid, bool ptpTimescale);

private:
    QByteArray ask(const QString &command) const;

    QString m_socket;
    unsigned m_domain;
    std::unique_ptr<QProcess> m_process;
};

/* The machine's own ptp4l: in the near namespace, started from a settings file as a service would. */
class SystemClient {
public:
    /* `settings`: further lines of the file, those of the interface last. */
    SystemClient(const QString &near, unsigned domain, const QByteArray &settings = {});
    ~SystemClient();
    void kill();
    qint64 pid() const { return m_process->processId(); }
    /* Its management socket. */
    QString socket() const { return m_folder.filePath(QStringLiteral("socket")); }
    /* What it has written so far. */
    QByteArray log() const;
    /* Follows its master; free running it says "uncalibrated". */
    bool follows() const;
    /* How many answers to its delay requests it has got: they are meant for it alone in hybrid and unicast.
     */
    int delayAnswers() const;

private:
    QByteArray ask(const QString &command) const;

    QTemporaryDir m_folder;
    unsigned m_domain;
    std::unique_ptr<QProcess> m_process;
};

class PtpNet {
public:
    PtpNet();
    ~PtpNet();

    /* A veth pair: `near` here with the address 10.9.<number>.1, its far end with 10.9.<number>.2. */
    void addLink(const QString &near, int number);

    /* A master at the far end of a link: announces every 1/4 s, syncs every 1/8 s. `identity` as for ptp4l.
     */
    std::unique_ptr<Master> startMaster(const QString &near, unsigned domain, const QString &identity,
                                        const QStringList &more = {});

    /* With the link "v0", number 0, which most tests of tools take. */
    static std::unique_ptr<PtpNet> withOneLink();
    /* A master at its far end that is heard already. The domain, below 10, is the end of its identity. */
    std::unique_ptr<Master> activeMaster(unsigned domain, const QStringList &more = {});

private:
    QStringList inFar(const QStringList &command) const;

    std::unique_ptr<QProcess> m_far; // keeps the far namespace
    QTemporaryDir m_sockets;
    int m_masters = 0;
};

#endif // PTPNET_H
