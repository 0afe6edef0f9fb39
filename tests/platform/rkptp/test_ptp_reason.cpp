// SPDX-License-Identifier: MIT
// The state of a client and the sentence that goes with it.
#include "reason.h"

#include <QtTest>

using namespace rkptp;

namespace {

constexpr int64_t now = 1000 * kNanosPerSecond;

Circumstances circumstances(ClientState state)
{
    Circumstances all;
    all.addressValid = true;
    all.domain = 127;
    all.now = now;
    all.seen.state = state;
    all.seen.since = now - 12 * kNanosPerSecond;
    all.seen.setInterfaces({{"eth1", "10.0.0.1", 3}});
    return all;
}

Circumstances following(int64_t age)
{
    Circumstances all = circumstances(ClientState::Following);
    all.seen.carried = {true, 0, 0, now - age};
    all.seen.grandmaster = {0, 0x1d, 0xc1, 0xff, 0xfe, 1, 2, 3};
    all.seen.setText(Text::Grandmaster, formatIdentity(all.seen.grandmaster));
    all.seen.setText(Text::Domain, "127");
    return all;
}

HeardMaster heard(uint32_t domain)
{
    HeardMaster one;
    one.domain = domain;
    return one;
}

Circumstances troubled(Trouble trouble, const char *detail)
{
    Circumstances all = circumstances(ClientState::None);
    all.seen.trouble = trouble;
    snprintf(all.seen.detail.data(), all.seen.detail.size(), "%s", detail);
    return all;
}

} // namespace

Q_DECLARE_METATYPE(rkptp::Circumstances)

class TestPtpReason : public QObject {
    Q_OBJECT
private slots:
    void sentences_data()
    {
        QTest::addColumn<rkptp::Circumstances>("all");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const Circumstances &all, int state, const char *expected) {
            QTest::newRow(name) << all << state << QString::fromLatin1(expected);
        };
        row("starting", circumstances(ClientState::Starting), RKPTP_STATE_STARTING,
            "the PTP client is starting");
        row("locked", following(0), RKPTP_STATE_LOCKED,
            "locked to 00-1D-C1-FF-FE-01-02-03 in domain 127 on eth1");
        Circumstances all = following(0);
        all.seen.ofSystem = true;
        row("locked through the system's", all, RKPTP_STATE_LOCKED,
            "locked to 00-1D-C1-FF-FE-01-02-03 in domain 127 on eth1, seen through the system's own ptp4l");
        all.seen.otherDomain = true;
        all.domain = 5;
        row("the system's in another domain", all, RKPTP_STATE_OTHER_MASTER,
            "the system's own ptp4l follows 00-1D-C1-FF-FE-01-02-03 in domain 127 on eth1, seen through the "
            "system's "
            "own ptp4l; asked was domain 5");
        all = following(0);
        all.wish = {false, {1, 1, 1, 1, 1, 1, 1, 1}};
        row("another master", all, RKPTP_STATE_OTHER_MASTER,
            "follows 00-1D-C1-FF-FE-01-02-03 in domain 127 on eth1; asked was 01-01-01-01-01-01-01-01");
        all.wish.id = {};
        row("an unreadable wish", all, RKPTP_STATE_OTHER_MASTER,
            "follows 00-1D-C1-FF-FE-01-02-03 in domain 127 on eth1; asked was an identity that cannot be "
            "read");
        row("stale", following(7 * kNanosPerSecond), RKPTP_STATE_STALE,
            "no sync on eth1, domain 127, for 7 s; time and offset are carried on from the last one");
        all = circumstances(ClientState::Listening);
        row("no master", all, RKPTP_STATE_NO_MASTER,
            "no master heard on eth1, domain 127, for 12 s; check cable, interface and domain, and multicast "
            "224.0.1.129 in the switch");
        all.masters = {heard(0)};
        row("one elsewhere", all, RKPTP_STATE_NO_MASTER,
            "no master heard on eth1, domain 127, for 12 s; a master of domain 0 is heard");
        all.masters = {heard(0), heard(0), heard(4)};
        row("several elsewhere", all, RKPTP_STATE_NO_MASTER,
            "no master heard on eth1, domain 127, for 12 s; masters are heard of the domains 0, 4");
        all.masters = {heard(127)};
        row("one that gives no time", all, RKPTP_STATE_NO_MASTER,
            "a master of domain 127 is heard on eth1, but gives no time yet");
        all.seen.isMaster = all.seen.ofSystem = true;
        row("the system is the master", all, RKPTP_STATE_NO_MASTER,
            "the system's own ptp4l gives the time on eth1 itself, so it follows nobody");
        row("no link", circumstances(ClientState::Faulty), RKPTP_STATE_NO_INTERFACE,
            "the link of eth1 is down, or the interface is gone");
        row("no interface", troubled(Trouble::NoInterface, "no network interface has the address 10.0.0.1"),
            RKPTP_STATE_NO_INTERFACE, "no network interface has the address 10.0.0.1");
        row("no capability", troubled(Trouble::NotAllowed, "x"), RKPTP_STATE_NOT_ALLOWED, "x");
        row("somebody else", troubled(Trouble::SystemClient, "y"), RKPTP_STATE_SYSTEM_CLIENT, "y");
        row("failed", troubled(Trouble::Failed, ""), RKPTP_STATE_FAILED, "ptp4l cannot be started");
        all = circumstances(ClientState::None);
        row("not running", all, RKPTP_STATE_NOT_RUNNING, "no PTP client runs");
        all.domain = 128;
        row("no such domain", all, RKPTP_STATE_NOT_RUNNING, "domain 128 is none; domains go from 0 to 127");
        all.addressValid = false;
        row("no address", all, RKPTP_STATE_NOT_RUNNING, "the interface's address is none");
    }
    void sentences()
    {
        QFETCH(rkptp::Circumstances, all);
        QFETCH(int, state);
        QFETCH(QString, expected);
        QCOMPARE(stateOf(all.seen, all.wish, all.now), state);
        QCOMPARE(QString::fromStdString(reasonFor(all)), expected);
    }

    void interfacesAreNamedAsInASentence()
    {
        Snapshot snapshot;
        snapshot.setInterfaces({{"a", "", 1}, {"b", "", 2}, {"c", "", 3}});
        QCOMPARE(QByteArray(snapshot.interfaces.data()), QByteArray("a, b and c"));
        snapshot.setInterfaces(std::vector<Interface>(8, {"a_long_long_nam", "", 1}));
        QCOMPARE(strlen(snapshot.interfaces.data()), snapshot.interfaces.size() - 1);
    }
};

QTEST_GUILESS_MAIN(TestPtpReason)
#include "test_ptp_reason.moc"
