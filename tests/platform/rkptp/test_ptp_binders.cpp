// SPDX-License-Identifier: MIT
// Whose sockets are whose: the sums, and what the kernel says of a socket of this very program.
#include "binders.h"

#include <QTemporaryDir>
#include <QtTest>

#include <arpa/inet.h>
#include <atomic>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace rkptp;

namespace {

PtpProcess ours(pid_t pid, uid_t user, const std::vector<std::string> &interfaces)
{
    PtpProcess process{pid,
                       user,
                       {"ptp4l", "-4", "-s", "--free_running=1", "--domainNumber=0",
                        "--uds_address=/run/user/1000/corvel/ptp-Ab12Cd/1.ptp4l"},
                       {}};
    for (const std::string &name : interfaces) {
        process.arguments.emplace_back("-i");
        process.arguments.push_back(name);
    }
    return process;
}

} // namespace

class TestPtpBinders : public QObject {
    Q_OBJECT

    const unsigned m_lo = if_nametoindex("lo");
    const std::vector<Interface> m_wanted = {{"lo", "127.0.0.1", m_lo}};

private slots:
    void oursIsKnownByItsCommandLine_data()
    {
        QTest::addColumn<QByteArray>("free");
        QTest::addColumn<QByteArray>("socket");
        QTest::addColumn<bool>("expected");
        const QByteArray running = "--free_running=1";
        QTest::newRow("ours") << running << QByteArray("--uds_address=/run/user/0/corvel/ptp-aaaaaa/12.ptp4l")
                              << true;
        QTest::newRow("in /tmp") << running << QByteArray("--uds_address=/tmp/corvel-ptp-aaaaaa/1.ptp4l")
                                 << true;
        QTest::newRow("adjusts the clock")
            << QByteArray("-s") << QByteArray("--uds_address=/x/ptp-aaaaaa/1.ptp4l") << false;
        QTest::newRow("usual socket") << running << QByteArray("--uds_address=/var/run/ptp4l") << false;
        QTest::newRow("no socket named") << running << QByteArray("-s") << false;
    }
    void oursIsKnownByItsCommandLine()
    {
        QFETCH(QByteArray, free);
        QFETCH(QByteArray, socket);
        QFETCH(bool, expected);
        const PtpProcess process{1, 0, {"ptp4l", free.toStdString(), socket.toStdString()}, {}};
        QCOMPARE(process.ours(), expected);
    }

    void optionsComeFromTheCommandLineOrTheFile()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("x.conf")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[global]\n# uds_address /no\ndomainNumber\t24\nuds_address   /run/a b\nslaveOnly 1\n");
        file.close();
        const PtpProcess process{
            1, 0, {"ptp4l", "-f", file.fileName().toStdString(), "--domainNumber=3"}, {}};
        QCOMPARE(process.option("domainNumber"), std::string("3"));
        QCOMPARE(process.option("uds_address"), std::string("/run/a"));
        QCOMPARE(process.option("uds_ro_address"), std::string());
        const PtpProcess relative{1, 0, {"ptp4l", "-f", "x.conf"}, {}};
        QCOMPARE(relative.option("domainNumber"), std::string());
    }

    void eachOfOursAccountsForItsSockets_data()
    {
        QTest::addColumn<int>("ownProcesses");
        QTest::addColumn<uint>("ownUser");
        QTest::addColumn<uint>("binderUser");
        QTest::addColumn<uint>("binderInterface");
        QTest::addColumn<int>("pairs");
        QTest::addColumn<int>("left");
        QTest::newRow("nobody") << 0 << 0U << 0U << m_lo << 0 << 0;
        QTest::newRow("one of ours") << 1 << 7U << 7U << m_lo << 1 << 0;
        QTest::newRow("two of ours") << 2 << 7U << 7U << m_lo << 2 << 0;
        QTest::newRow("ours has not bound yet") << 2 << 7U << 7U << m_lo << 1 << 0;
        QTest::newRow("somebody else") << 0 << 0U << 7U << m_lo << 1 << 2;
        QTest::newRow("somebody else beside ours") << 1 << 7U << 7U << m_lo << 2 << 2;
        QTest::newRow("another user") << 1 << 7U << 8U << m_lo << 1 << 2;
        QTest::newRow("on any interface") << 0 << 0U << 7U << 0U << 1 << 2;
        QTest::newRow("on another interface") << 0 << 0U << 7U << m_lo + 1000 << 1 << 0;
    }
    void eachOfOursAccountsForItsSockets()
    {
        QFETCH(int, ownProcesses);
        QFETCH(uint, ownUser);
        QFETCH(uint, binderUser);
        QFETCH(uint, binderInterface);
        QFETCH(int, pairs);
        QFETCH(int, left);
        std::vector<PtpProcess> processes = {{99, binderUser, {"ptp4l", "-i", "lo"}, {}}};
        for (int i = 0; i < ownProcesses; ++i)
            processes.push_back(ours(100 + i, ownUser, {"lo"}));
        std::vector<PortBinder> binders;
        for (int i = 0; i < pairs; ++i)
            for (const uint16_t port : {uint16_t{319}, uint16_t{320}})
                binders.push_back({binderInterface, binderUser, static_cast<uint64_t>(i), port});
        QCOMPARE(static_cast<int>(foreignBinders(binders, processes, m_wanted).size()), left);
    }

    void knownSocketsAreNotMixedUp()
    {
        PtpProcess known = ours(100, 0, {"lo"});
        known.sockets = {11, 12, 99};
        const std::vector<PortBinder> binders = {
            {m_lo, 0, 21, 319}, {m_lo, 0, 22, 320}, {m_lo, 0, 11, 319}, {m_lo, 0, 12, 320}};
        const std::vector<PortBinder> left = foreignBinders(binders, {known}, m_wanted);
        QCOMPARE(left.size(), size_t{2});
        QCOMPARE(left[0].inode, uint64_t{21});
        QCOMPARE(left[1].inode, uint64_t{22});
    }

    // One of ours that is ending has closed its sockets; those that are there are another's.
    void oneThatIsEndingHidesNobody()
    {
        PtpProcess ending = ours(100, 0, {"lo"});
        ending.socketsKnown = true;
        const std::vector<PortBinder> binders = {{m_lo, 0, 21, 319}, {m_lo, 0, 22, 320}};
        QCOMPARE(foreignBinders(binders, {ending}, m_wanted).size(), size_t{2});
    }

    // A container has its own network, but often the same interface names, and its processes can be seen.
    void aClientOfTheHouseHasItsSocketsHere_data()
    {
        QTest::addColumn<bool>("socketsKnown");
        QTest::addColumn<bool>("holdsThem");
        QTest::addColumn<uint>("binderUser");
        QTest::addColumn<bool>("bound");
        QTest::addColumn<bool>("expected");
        QTest::newRow("its sockets are seen") << true << true << 7U << true << true;
        QTest::newRow("may not be looked at") << false << false << 7U << true << true;
        QTest::newRow("nothing is bound here") << false << false << 7U << false << false;
        QTest::newRow("the sockets are another's") << true << false << 7U << true << false;
        QTest::newRow("the sockets are another user's") << false << false << 8U << true << false;
    }
    void aClientOfTheHouseHasItsSocketsHere()
    {
        QFETCH(bool, socketsKnown);
        QFETCH(bool, holdsThem);
        QFETCH(uint, binderUser);
        QFETCH(bool, bound);
        QFETCH(bool, expected);
        PtpProcess process = ours(100, 7, {"lo"});
        process.socketsKnown = socketsKnown;
        if (holdsThem)
            process.sockets = {11, 12};
        std::vector<PortBinder> binders;
        if (bound)
            binders = {{m_lo, binderUser, 11, 319}, {m_lo, binderUser, 12, 320}};
        QCOMPARE(houseClient({process}, binders, m_wanted[0], 7) != nullptr, expected);
    }
    void theOneWhoseSocketsAreSeenIsPreferred()
    {
        const PtpProcess elsewhere = ours(100, 7, {"lo"});
        PtpProcess here = ours(101, 7, {"lo"});
        here.sockets = {11, 12};
        here.socketsKnown = true;
        const std::vector<PtpProcess> processes = {elsewhere, here, elsewhere};
        const std::vector<PortBinder> binders = {{m_lo, 7, 11, 319}, {m_lo, 7, 12, 320}};
        QCOMPARE(houseClient(processes, binders, m_wanted[0], 7), &processes[1]);
        QVERIFY(!houseClient(processes, binders, {"v7", "10.0.0.1", 7777}, 7));
        QVERIFY(!houseClient(processes, binders, m_wanted[0], 8));
    }

    // Processes come and go while they are looked at; at some moments nothing can be read of them any more.
    void processesThatEndMeanwhileDoNoHarm()
    {
        std::atomic<bool> done{false};
        std::thread comings([&done] {
            while (!done) {
                const pid_t child = fork();
                if (child == 0)
                    _exit(0);
                waitpid(child, nullptr, 0);
            }
        });
        for (int i = 0; i < 300; ++i)
            readPtpProcesses();
        done = true;
        comings.join();
    }

    // Where a port below 1024 may be opened: in a namespace of ours, as root.
    void aSocketOfThisProgramIsFound_data()
    {
        QTest::addColumn<int>("family");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("tied");
        QTest::addColumn<bool>("found");
        QTest::newRow("any") << AF_INET << QStringLiteral("0.0.0.0") << false << true;
        QTest::newRow("tied to the interface") << AF_INET << QStringLiteral("0.0.0.0") << true << true;
        QTest::newRow("any, version 6") << AF_INET6 << QStringLiteral("::") << false << true;
        QTest::newRow("the group only") << AF_INET << QStringLiteral("224.0.1.129") << false << false;
    }
    void aSocketOfThisProgramIsFound()
    {
        QFETCH(int, family);
        QFETCH(QString, address);
        QFETCH(bool, tied);
        QFETCH(bool, found);
        const int fd = socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (tied)
            QCOMPARE(setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, "lo", 2), 0);
        sockaddr_in6 six{};
        sockaddr_in four{};
        six.sin6_family = AF_INET6;
        six.sin6_port = four.sin_port = htons(320);
        four.sin_family = AF_INET;
        const QByteArray text = address.toLatin1();
        inet_pton(family, text.constData(),
                  family == AF_INET ? static_cast<void *>(&four.sin_addr) : &six.sin6_addr);
        const void *pointer = family == AF_INET ? static_cast<const void *>(&four) : &six;
        const socklen_t size = family == AF_INET ? sizeof four : sizeof six;
        QCOMPARE(bind(fd, static_cast<const sockaddr *>(pointer), size), 0);
        const auto client = findSystemClient(m_wanted, 0, 0);
        QCOMPARE(client.has_value(), found);
        if (client)
            QVERIFY2(client->who.find("test_ptp_binder") == 0, client->who.c_str());
        if (client)
            QVERIFY(findSystemClient(m_wanted, 0, client->inode)->who.empty());
        QVERIFY(!findSystemClient(m_wanted, 1, 0));
        close(fd);
        QVERIFY(!findSystemClient(m_wanted, 0, 0));
    }
};

QTEST_GUILESS_MAIN(TestPtpBinders)
#include "test_ptp_binders.moc"
