// SPDX-License-Identifier: MIT
#include "ops/netpicture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <algorithm>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace ops {

namespace {

QByteArray fileText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Asks the kernel of one interface: the file tree in /sys may show another network namespace.
class Asker {
public:
    Asker() : m_socket(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Asker()
    {
        if (m_socket >= 0)
            close(m_socket);
    }
    Asker(const Asker &) = delete;
    Asker &operator=(const Asker &) = delete;

    int mtu(const QByteArray &name) const
    {
        ifreq question = about(name);
        return ioctl(m_socket, SIOCGIFMTU, &question) == 0 ? question.ifr_mtu : 0;
    }

    // 0 without a link, and for interfaces that have no speed.
    qint64 speedMbit(const QByteArray &name) const
    {
        ethtool_cmd settings{};
        settings.cmd = ETHTOOL_GSET;
        ifreq question = about(name);
        question.ifr_data = reinterpret_cast<char *>(&settings);
        if (ioctl(m_socket, SIOCETHTOOL, &question) != 0)
            return 0;
        const quint32 speed = ethtool_cmd_speed(&settings);
        return speed == quint32(SPEED_UNKNOWN) ? 0 : speed;
    }

private:
    static ifreq about(const QByteArray &name)
    {
        ifreq question{};
        qstrncpy(question.ifr_name, name.constData(), sizeof question.ifr_name);
        return question;
    }

    int m_socket;
};

NetInterface &interfaceNamed(std::vector<NetInterface> &interfaces, const ifaddrs &entry, const Asker &asker)
{
    for (NetInterface &known : interfaces) {
        if (known.name == entry.ifa_name)
            return known;
    }
    NetInterface made;
    made.name = entry.ifa_name;
    made.up = (entry.ifa_flags & IFF_UP) && (entry.ifa_flags & IFF_RUNNING);
    made.multicast =
        entry.ifa_flags & (IFF_MULTICAST | IFF_LOOPBACK); // the loopback takes groups without saying so
    made.loopback = entry.ifa_flags & IFF_LOOPBACK;
    made.mtu = asker.mtu(made.name);
    made.speedMbit = asker.speedMbit(made.name);
    interfaces.push_back(made);
    return interfaces.back();
}

std::vector<NetInterface> machineInterfaces()
{
    const Asker asker;
    std::vector<NetInterface> interfaces;
    ifaddrs *list = nullptr;
    if (getifaddrs(&list) != 0)
        return interfaces;
    for (const ifaddrs *entry = list; entry; entry = entry->ifa_next) {
        NetInterface &interface = interfaceNamed(interfaces, *entry, asker);
        if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_INET) {
            const auto *address = reinterpret_cast<const sockaddr_in *>(entry->ifa_addr);
            interface.addresses.push_back(ntohl(address->sin_addr.s_addr));
            const auto *netmask = reinterpret_cast<const sockaddr_in *>(entry->ifa_netmask);
            const quint32 mask = netmask ? ntohl(netmask->sin_addr.s_addr) : ~0U;
            interface.networks.push_back({interface.addresses.back() & mask, mask});
        }
    }
    freeifaddrs(list);
    return interfaces;
}

// The launcher may open the PTP ports by its file capability; without it only the administrator can.
QByteArray softwareClockTrouble()
{
    const char *const folders[] = {"/usr/sbin", "/usr/bin", "/sbin", "/bin", "/usr/local/sbin"};
    const bool found = std::any_of(std::begin(folders), std::end(folders), [](const char *folder) {
        return QFileInfo(QString::fromLatin1(folder) + QLatin1String("/ptp4l")).isExecutable();
    });
    if (!found)
        return "ptp4l is not installed";
    const QFileInfo program(QStringLiteral("/proc/self/exe"));
    const QString launcher =
        QFileInfo(program.symLinkTarget()).absolutePath() + QLatin1String("/../libexec/corvel/ptp_launch");
    const bool able =
        getxattr(QFile::encodeName(launcher).constData(), "security.capability", nullptr, 0) > 0;
    if (QFileInfo::exists(launcher) && !able && geteuid() != 0)
        return "ptp_launch has no capability to open the PTP ports";
    return QByteArray();
}

} // namespace

const NetInterface *NetPicture::withAddress(quint32 address) const
{
    for (const NetInterface &interface : interfaces) {
        if (std::count(interface.addresses.begin(), interface.addresses.end(), address) > 0)
            return &interface;
    }
    return nullptr;
}

bool NetPicture::hasRoute(quint32 destination) const
{
    return std::any_of(routes.begin(), routes.end(),
                       [=](const NetRoute &route) { return (destination & route.mask) == route.network; });
}

// Addresses stand there as hexadecimal numbers of the machine's own byte order.
std::vector<NetRoute> parseRoutes(const QByteArray &text)
{
    std::vector<NetRoute> routes;
    for (const QByteArray &line : text.split('\n').mid(1)) {
        const QList<QByteArray> columns = line.simplified().split(' ');
        bool numbers[3];
        const quint32 network = columns.value(1).toUInt(&numbers[0], 16);
        const quint32 flags = columns.value(3).toUInt(&numbers[1], 16);
        const quint32 mask = columns.value(7).toUInt(&numbers[2], 16);
        if (numbers[0] && numbers[1] && numbers[2] && (flags & RTF_UP) && !(flags & RTF_REJECT))
            routes.push_back({ntohl(network), ntohl(mask)});
    }
    return routes;
}

NetPicture machinePicture()
{
    NetPicture picture;
    picture.interfaces = machineInterfaces();
    picture.routes = parseRoutes(fileText(QStringLiteral("/proc/net/route")));
    picture.noSoftwareClock = softwareClockTrouble();
    const QDir devices(QStringLiteral("/dev"));
    picture.hardwareClock = !devices.entryList({QStringLiteral("ptp[0-9]*")}, QDir::System).isEmpty();
    return picture;
}

} // namespace ops
