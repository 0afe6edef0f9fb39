// SPDX-License-Identifier: MIT
#include "fleet/plant.h"

#include <QDir>

#include <unistd.h>

Plant::Plant() = default;

Plant::~Plant()
{
    for (int node = 0; node < kNodes; ++node)
        killNode(node);
}

// Unless told otherwise every process has four loopback addresses for itself, so that the ports can always be
// the same.
QByteArray Plant::host(int node) const
{
    if (!m_hosts.isEmpty())
        return m_hosts.at(node);
    const int id = static_cast<int>(getpid());
    const auto part = [](int number) { return '.' + QByteArray::number(number); };
    return "127" + part(64 + ((id >> 14) & 63)) + part((id >> 6) & 255) + part((id & 63) * 4 + node);
}

QByteArray Plant::members() const
{
    QByteArrayList list;
    for (int node = 0; node < kNodes; ++node)
        list.append("node" + QByteArray::number(node) + '=' + host(node));
    return list.join(',');
}

QByteArray Plant::endpoint(int node) const
{
    return host(node) + ":2379";
}

QByteArray Plant::endpoints() const
{
    QByteArrayList list;
    for (int node = 0; node < kNodes; ++node)
        list.append(endpoint(node));
    return list.join(',');
}

bool Plant::succeeded(const ProgramResult &result, const char *what)
{
    if (result.code != 0)
        m_error = QByteArray(what) + ": " + result.out + result.err;
    return result.code == 0;
}

ProgramResult Plant::setup(const QStringList &arguments) const
{
    return runProgram(QStringLiteral(CORVEL_SOURCE_DIR "/packaging/fleet/corvel-fleet-setup"), arguments);
}

ProgramResult Plant::etcdctlAt(const QByteArray &endpoints, const QStringList &arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ETCDCTL_API"), QStringLiteral("3"));
    return runProgram(QStringLiteral("etcdctl"),
                      QStringList{QStringLiteral("--endpoints=") + QString::fromLatin1(endpoints),
                                  QStringLiteral("--cacert=") + file(QStringLiteral("ca.crt")),
                                  QStringLiteral("--cert=") + file(QStringLiteral("root.crt")),
                                  QStringLiteral("--key=") + file(QStringLiteral("root.key"))} +
                          arguments,
                      environment);
}

bool Plant::startNode(int node, const QStringList &flags)
{
    auto process = std::make_unique<QProcess>();
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(file(QStringLiteral("node%1.log").arg(node)), QIODevice::Append);
    process->start(QStringLiteral(CORVEL_SOURCE_DIR "/tools/fleet-node"),
                   QStringList{folder(), QStringLiteral("node%1").arg(node), QString::fromLatin1(host(node)),
                               QString::fromLatin1(members())} +
                       m_flags + flags);
    m_nodes[node] = std::move(process);
    return m_nodes[node]->waitForStarted();
}

void Plant::killNode(int node)
{
    if (!m_nodes[node])
        return;
    m_nodes[node]->kill();
    m_nodes[node]->waitForFinished();
    m_nodes[node].reset();
}

bool Plant::healthy() const
{
    return etcdctl({QStringLiteral("endpoint"), QStringLiteral("health")}).code == 0;
}

// "endpoint, id, version, size, leader, ..." in one line each.
int Plant::leader() const
{
    const QByteArray status = etcdctl({QStringLiteral("endpoint"), QStringLiteral("status")}).out;
    for (const QByteArray &line : status.split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        for (int node = 0; node < kNodes; ++node) {
            if (fields.size() > 4 && fields.at(4).trimmed() == "true" &&
                fields.at(0).trimmed() == endpoint(node))
                return node;
        }
    }
    return -1;
}

bool Plant::start(const QStringList &flags)
{
    m_flags = flags;
    if (!succeeded(setup({QStringLiteral("ca"), folder()}), "the authority"))
        return false;
    for (int node = 0; node < kNodes; ++node) {
        QStringList words{QStringLiteral("node"), folder(), QStringLiteral("node%1").arg(node),
                          QString::fromLatin1(host(node)),
                          QStringLiteral("127.0.0.1")}; // where members come from on this interface
        for (const QByteArray &other : m_hosts)         // or from the address that they call
            words.append(QString::fromLatin1(other));
        if (!succeeded(setup(words), "a member's certificate"))
            return false;
    }
    for (int node = 0; node < kNodes; ++node)
        startNode(node);
    return succeeded(setup({QStringLiteral("admin"), folder(), QStringLiteral("root")}), "root") && users();
}

bool Plant::users()
{
    if (!eventually([this] { return healthy(); })) {
        m_error = "the members do not find each other";
        return false;
    }
    return succeeded(setup({QStringLiteral("roles"), folder(), QString::fromLatin1(endpoints())}), "users");
}

void Plant::wipe()
{
    for (int node = 0; node < kNodes; ++node) {
        killNode(node);
        QDir(file(QStringLiteral("node%1.data").arg(node))).removeRecursively();
    }
    for (int node = 0; node < kNodes; ++node)
        startNode(node);
}

// Of one member, which has it all.
bool Plant::snapshot(const QString &name)
{
    return succeeded(etcdctlAt(endpoint(0), {QStringLiteral("snapshot"), QStringLiteral("save"), name}),
                     "a snapshot");
}

bool Plant::restore(const QString &snapshot)
{
    QByteArrayList peers;
    for (int node = 0; node < kNodes; ++node)
        peers.append("node" + QByteArray::number(node) + "=https://" + host(node) + ":2380");
    const QString cluster = QString::fromLatin1(peers.join(','));
    bool restored = true;
    for (int node = 0; node < kNodes; ++node) {
        killNode(node);
        const QString name = QStringLiteral("node%1").arg(node);
        const QString data = file(name + QStringLiteral(".data"));
        QDir(data).removeRecursively();
        const QStringList words{QStringLiteral("snapshot"),
                                QStringLiteral("restore"),
                                snapshot,
                                QStringLiteral("--name=") + name,
                                QStringLiteral("--data-dir=") + data,
                                QStringLiteral("--initial-cluster=") + cluster,
                                QStringLiteral("--initial-cluster-token=restored"),
                                QStringLiteral("--initial-advertise-peer-urls=https://%1:2380")
                                    .arg(QString::fromLatin1(host(node)))};
        restored = succeeded(etcdctl(words), "restoring a member") && restored;
    }
    for (int node = 0; node < kNodes; ++node)
        startNode(node);
    return restored && eventually([this] { return healthy(); });
}

bool Plant::addCertificate(const QByteArray &name)
{
    return succeeded(setup({QStringLiteral("server"), folder(), QString::fromLatin1(name)}), "a certificate");
}

bool Plant::allowServer(const QByteArray &name, const QByteArray &site)
{
    return succeeded(
        setup({QStringLiteral("allow"), folder(), QString::fromLatin1(site), QString::fromLatin1(endpoints()),
               QStringLiteral("server"), QString::fromLatin1(name)}),
        "a server's role");
}

bool Plant::allowDesk(const QByteArray &name, const QStringList &servers)
{
    return succeeded(setup(QStringList{QStringLiteral("allow"), folder(), QStringLiteral("london"),
                                       QString::fromLatin1(endpoints()), QStringLiteral("desk"),
                                       QString::fromLatin1(name)} +
                           servers),
                     "a desk's role");
}

bool Plant::addServer(const QByteArray &name)
{
    return addCertificate(name) && allowServer(name);
}

bool Plant::addDesk(const QByteArray &name, const QStringList &servers)
{
    return addCertificate(name) && allowDesk(name, servers);
}
