// SPDX-License-Identifier: MIT
// The commands for people, against three members, two servers and a desk.
#include "fleet/machine.h"

namespace {

const char kPlace[] = "0/video";

QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '));
}

} // namespace

class TestFleetCommands : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void statusHasALineForEveryServer();
    void diffTellsWhatDiffers();
    void setChangesManyAndWaitsForEach();
    void aDryRunChangesNothing();
    void aWrongWordChangesNothing();
    void aServerThatIsOffStopsTheRun();
    void copyGivesWhatAnotherHas();
    void aRoleThatDoesNotAllowItIsTold();
    void checkSeesTheWholePlant();
    void whatWasOverruledIsListedAndTaken();
    void joinTellsWhatDiffersAndTakesIt();
    void leavingKeepsTheSettings();
    void corvelctlHandsItsWordsOver();

private:
    bool eventuallyHas(const Machine &machine, const QByteArray &value)
    {
        return eventually([&] { return machine.get({}, kPlace, "tx.dst") == value; });
    }

    Plant m_plant;
    std::unique_ptr<Machine> m_first, m_second, m_desk;
};

void TestFleetCommands::initTestCase()
{
    QVERIFY2(m_plant.start() && m_plant.addServer("lon-1") && m_plant.addServer("lon-2") &&
                 m_plant.addDesk("desk-1", words("lon-1 lon-2")) && m_plant.addDesk("desk-2", words("lon-1")),
             m_plant.error().constData());
    m_first = std::make_unique<Machine>(m_plant, "server", "lon-1");
    m_second = std::make_unique<Machine>(m_plant, "server", "lon-2");
    m_desk = std::make_unique<Machine>(m_plant, "desk", "desk-1", "[follow]\nservers = *\n");
    QVERIFY(m_first->set({}, kPlace, "tx.dst=239.1.1.1:5000") &&
            m_second->set({}, kPlace, "tx.dst=239.1.1.2:5000"));
    m_first->start();
    m_second->start();
    QVERIFY(eventually([&] { return m_desk->fleet(words("status")).out.count("in step") == 2; }));
}

void TestFleetCommands::statusHasALineForEveryServer()
{
    const ProgramResult result = m_desk->fleet(words("status"));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out.count('\n'), 3);
    QVERIFY2(result.out.contains("lon-1   in step") && result.out.contains("8."), result.out.constData());
    QCOMPARE(m_desk->fleet(words("status lon-2")).out.count('\n'), 2);
    QVERIFY(m_desk->fleet(words("--json status")).out.contains("\"state\""));
    const ProgramResult own = m_first->fleet(words("status")); // a server may read its own only
    QCOMPARE(own.out.count('\n'), 2);
}

void TestFleetCommands::diffTellsWhatDiffers()
{
    const ProgramResult result = m_desk->fleet(words("diff lon-1 lon-2"));
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QByteArray("0/video tx.dst: 239.1.1.1 -> 239.1.1.2\n"));
    QCOMPARE(m_desk->fleet(words("diff lon-1 lon-1")).code, 0);
    QCOMPARE(m_desk->fleet(words("diff lon-1 par-1")).code, 2);
}

void TestFleetCommands::setChangesManyAndWaitsForEach()
{
    const ProgramResult result =
        m_desk->fleet(words("--yes set 0/video tx.dst=239.1.2.1 --where lon-* --canary 1 --wait"));
    QVERIFY2(result.code == 0, result.err.constData());
    QVERIFY2(result.err.contains("lon-1: taken") && result.err.contains("lon-2: taken"),
             result.err.constData());
    QCOMPARE(m_first->get({}, kPlace, "tx.dst"), QByteArray("239.1.2.1"));
    QCOMPARE(m_second->get({}, kPlace, "tx.dst"), QByteArray("239.1.2.1"));
}

void TestFleetCommands::aDryRunChangesNothing()
{
    const ProgramResult result = m_desk->fleet(words("--dry-run set 0/video tx.dst=239.1.3.1 --where *"));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out.count("239.1.2.1 -> 239.1.3.1"), 2);
    QCOMPARE(m_desk->fleet(words("diff lon-1 lon-2")).code, 0);
    QCOMPARE(m_first->get({}, kPlace, "tx.dst"), QByteArray("239.1.2.1"));
}

void TestFleetCommands::aWrongWordChangesNothing()
{
    const ProgramResult result = m_desk->fleet(words("--yes set 0/video tx.dts=239.1.3.1 --where *"));
    QCOMPARE(result.code, 2);
    QVERIFY2(result.err.contains("tx.dst"), result.err.constData());              // what was meant
    QCOMPARE(m_desk->fleet(words("--yes set 0/video tx.dst=239.1.3.1")).code, 2); // where?
}

void TestFleetCommands::aServerThatIsOffStopsTheRun()
{
    QCOMPARE(m_first->stop(), 0);
    QCOMPARE(m_second->stop(), 0);
    // Written without waiting: it is taken when the server is on again.
    QCOMPARE(m_desk->fleet(words("--yes set 0/video tx.dst=239.1.4.1 --where *")).code, 0);
    QVERIFY(m_desk->fleet(words("status")).out.contains("off"));
    m_first->start();
    m_second->start();
    QVERIFY(eventuallyHas(*m_first, "239.1.4.1"));
    QVERIFY(eventuallyHas(*m_second, "239.1.4.1"));
}

void TestFleetCommands::copyGivesWhatAnotherHas()
{
    QVERIFY(m_first->set({}, "1/video", "tx.dst=239.1.5.1"));
    QVERIFY(eventually([&] { return m_desk->fleet(words("diff lon-1 lon-2")).code == 1; }));
    QCOMPARE(m_desk->fleet(words("--yes copy lon-1 1 --where lon-2")).code, 0);
    QVERIFY(eventually([&] { return m_second->get({}, "1/video", "tx.dst") == "239.1.5.1"; }));
}

void TestFleetCommands::aRoleThatDoesNotAllowItIsTold()
{
    const Machine desk(m_plant, "desk", "desk-2", "[follow]\nservers = *\n");
    const ProgramResult result = desk.fleet(words("--yes set 0/video tx.dst=239.1.6.1 --where *"));
    QCOMPARE(result.code, 4); // lon-1 was changed, lon-2 not
    QVERIFY2(result.err.contains("lon-2: this machine's role does not allow it; 1 of 2"),
             result.err.constData());
    QVERIFY(eventuallyHas(*m_first, "239.1.6.1"));
    QCOMPARE(m_second->get({}, kPlace, "tx.dst"), QByteArray("239.1.4.1"));
}

void TestFleetCommands::checkSeesTheWholePlant()
{
    QCOMPARE(
        m_desk->fleet(words("--yes set 0/video tx.dst=239.1.7.1:5000 tx.use=dst,dst-port --where *")).code,
        0);
    const ProgramResult result = m_desk->fleet(words("check"));
    QCOMPARE(result.code, 1);
    QVERIFY2(result.out.contains(
                 "lon-2 0/video tx.dst: error: 239.1.7.1:5000 is sent by lon-1 0/video tx.dst as well"),
             result.out.constData());
}

void TestFleetCommands::whatWasOverruledIsListedAndTaken()
{
    QVERIFY(eventuallyHas(*m_first, "239.1.7.1"));
    QCOMPARE(m_first->stop(), 0);
    QVERIFY(m_first->set({}, kPlace, "tx.dst=239.1.8.1"));
    QCOMPARE(m_desk->fleet(words("--yes set 0/video tx.dst=239.1.8.2 --where lon-1")).code, 0);
    m_first->start();
    QVERIFY(eventually([&] { return m_desk->fleet(words("conflicts list")).code == 1; }));
    const QByteArray list = m_desk->fleet(words("conflicts list")).out;
    QVERIFY2(list.contains("desk-1") && list.contains("lon-1"), list.constData());
    const QByteArray id = list.split('\n').at(1).split(' ').at(0);
    const QStringList one{QStringLiteral("conflicts"), QStringLiteral("show"),
                          QString::fromLatin1(id.left(6))};
    QVERIFY(m_desk->fleet(one).out.contains("239.1.8.1 -> 239.1.8.2"));
    QCOMPARE(
        m_desk->fleet({QStringLiteral("conflicts"), QStringLiteral("take"), QString::fromLatin1(id)}).code,
        0);
    QVERIFY(eventuallyHas(*m_first, "239.1.8.2"));
    QCOMPARE(m_desk->fleet(words("conflicts list")).code, 0);
    QCOMPARE(m_desk->fleet(words("conflicts show nothing")).code, 2);
}

void TestFleetCommands::joinTellsWhatDiffersAndTakesIt()
{
    const Machine anew(m_plant, "server", "lon-2"); // its disk was lost
    QVERIFY(anew.set({}, kPlace, "tx.dst=10.1.1.1"));
    const ProgramResult told = anew.fleet(words("join"));
    QCOMPARE(told.code, 1);
    QVERIFY2(told.out.contains("10.1.1.1 -> 239.1.7.1"), told.out.constData());
    QCOMPARE(anew.get({}, kPlace, "tx.dst"), QByteArray("10.1.1.1"));
    QCOMPARE(anew.fleet(words("--yes join --take cluster")).code, 0);
    QCOMPARE(anew.get({}, kPlace, "tx.dst"), QByteArray("239.1.7.1"));
    QCOMPARE(anew.fleet(words("join")).code, 0);
}

void TestFleetCommands::leavingKeepsTheSettings()
{
    const ProgramResult result = m_second->fleet(words("leave"));
    QVERIFY2(result.code == 0 && result.out.contains("left the fleet"),
             (result.out + result.err).constData());
    QVERIFY(eventually([&] { return !m_second->running(); }));
    QCOMPARE(m_second->get({}, kPlace, "tx.dst"), QByteArray("239.1.7.1"));
    QVERIFY(m_second->fleet(words("leave")).out.isEmpty()); // nothing is left to leave
}

void TestFleetCommands::corvelctlHandsItsWordsOver()
{
    const ProgramResult handed = m_desk->ctl({}, words("fleet status"));
    QCOMPARE(handed.code, 0);
    QVERIFY2(handed.out.contains("lon-1"), handed.err.constData());
    QCOMPARE(m_desk->ctl({}, words("fleet diff lon-1 par-1")).code, 2);
    QVERIFY(m_desk->ctl({}, words("--json fleet status")).out.contains("\"state\""));
}

QTEST_GUILESS_MAIN(TestFleetCommands)
#include "test_fleet_commands.moc"
