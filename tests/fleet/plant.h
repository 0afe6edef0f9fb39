// SPDX-License-Identifier: MIT
//
// A plant on the loopback interface: three real etcd members with certificates and roles, and machines that
// run the built corvel-fleet on stores of their own. Everything lies in a temporary folder; every process is
// ended by its own handle.
#ifndef TESTS_FLEET_PLANT_H
#define TESTS_FLEET_PLANT_H

#include <QByteArray>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

struct ProgramResult {
    int code = -1;
    QByteArray out;
    QByteArray err;
};

// Runs a program to its end.
inline ProgramResult
runProgram(const QString &name, const QStringList &arguments,
           const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(name, arguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return {-1, process.readAllStandardOutput(), process.readAllStandardError()};
    }
    const bool ended =
        process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

// Waits for something that will happen; the limit only ends a test that hangs.
template<class Condition>
bool eventually(const Condition &condition, int limitMs = 30000)
{
    return QTest::qWaitFor(condition, limitMs);
}

class Plant {
public:
    static constexpr int kNodes = 3;

    Plant();
    ~Plant();

    // Other addresses than loopback ones: this machine has them already. Before start().
    void useHosts(const QByteArrayList &hosts) { m_hosts = hosts; }

    // Certificates, members, users. False when that failed; error() says why. flags: for each member.
    bool start(const QStringList &flags = {});
    QByteArray error() const { return m_error; }

    QString folder() const { return m_folder.path(); }
    QString file(const QString &name) const { return m_folder.filePath(name); }
    QByteArray endpoint(int node) const;
    QByteArray endpoints() const;

    bool startNode(int node, const QStringList &flags = {});
    void killNode(int node);                                                                  // as kill -9
    qint64 nodePid(int node) const { return m_nodes[node] ? m_nodes[node]->processId() : 0; } // 0: ended
    // What the members know is lost for good, and an empty cluster takes their place. Then users() again.
    void wipe();
    // The same with what a snapshot of etcdctl holds.
    bool restore(const QString &snapshot);
    bool snapshot(const QString &name);
    bool users();
    bool healthy() const;
    int leader() const; // -1: none

    // User and role of a machine that has a certificate.
    bool allowServer(const QByteArray &name, const QByteArray &site = "london");
    bool allowDesk(const QByteArray &name, const QStringList &servers);
    // Certificate, user and role of a machine. Servers: what a desk may write.
    bool addServer(const QByteArray &name);
    bool addDesk(const QByteArray &name, const QStringList &servers);
    // Only a certificate: known to nobody.
    bool addCertificate(const QByteArray &name);

    ProgramResult setup(const QStringList &arguments) const;
    // As the cluster's root.
    ProgramResult etcdctl(const QStringList &arguments) const { return etcdctlAt(endpoints(), arguments); }

private:
    ProgramResult etcdctlAt(const QByteArray &endpoints, const QStringList &arguments) const;
    QByteArray host(int node) const;
    QByteArray members() const;
    bool succeeded(const ProgramResult &result, const char *what);

    QTemporaryDir m_folder;
    QByteArrayList m_hosts;
    QByteArray m_error;
    QStringList m_flags;
    std::unique_ptr<QProcess> m_nodes[kNodes];
};

#endif
