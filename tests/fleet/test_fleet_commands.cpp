// SPDX-License-Identifier: MIT
// The commands for people, against three members, two servers and a desk.
#include "fleet/machine.h"

#include <QFile>

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
    void whereChoosesByWhatServersAre();
    void statusTellsWhatIsSeenOfPtp();
    void theFirstFailureEndsTheRun();
    void aLargeServerIsWrittenInSeveralTransactions();
    void restoreGivesBackWhatADumpHolds();
    void restoreGivesEachItsOwn();
    void whatIsNoDumpRestoresNothing();
    void anotherSiteIsReadWhereTheRoleAllowsIt();
    void checkSeesTheWholePlant();
    void whatWasOverruledIsListedAndTaken();
    void joinTellsWhatDiffersAndTakesIt();
    void leavingKeepsTheSettings();
    void corvelctlHandsItsWordsOver();
    void whatThePaperSaysIsTrue();

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
    const QByteArray lines =
        m_desk->fleet(words("--dry-run --lines set 0/video tx.dst=239.1.3.1 --where lon-2")).out;
    QVERIFY2(lines.count('\n') == 1 && lines.contains("\"server\":\"lon-2\""), lines.constData());
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
    QVERIFY(m_first->set({}, "server", "nmos.ip=10.1.1.1") &&
            m_first->set({}, "2/video", "tx.dst=239.1.5.2"));
    QVERIFY(eventually(
        [&] { return m_desk->fleet(words("status --where server/nmos.ip=10.*")).out.contains("lon-1"); }));
    const QByteArray server = m_desk->fleet(words("--dry-run copy lon-1 server --where lon-2")).out;
    QCOMPARE(server, QByteArray("lon-2:\nserver nmos.ip: (absent) -> 10.1.1.1\n"));
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

void TestFleetCommands::whereChoosesByWhatServersAre()
{
    const auto chosen = [&](const QStringList &where) {
        return m_desk->fleet(words("status") + where).out.count('\n') - 1;
    };
    QCOMPARE(chosen(words("--where alive")), 2);
    QCOMPARE(chosen(words("--where 0/video/tx.dst=239.1.6.1")), 1);
    QCOMPARE(chosen(words("--where *,!lon-1")), 1);
    QCOMPARE(chosen(words("--where lon-* --where lon-2")), 1);
    const ProgramResult nobody = m_desk->fleet(words("--yes set 0/video tx.dst=239.1.9.9 --where away"));
    QCOMPARE(nobody.code, 2);
    QVERIFY2(nobody.err.contains("no server is meant by --where away"), nobody.err.constData());
    const ProgramResult none = m_desk->fleet(words("status --where away")); // which is no mistake
    QVERIFY2(none.code == 0 && none.out.isEmpty() && none.err.contains("no server is meant"),
             none.err.constData());
    const ProgramResult slip = m_desk->fleet(words("status --where ptpp=locked"));
    QCOMPARE(slip.code, 2);
    QVERIFY2(slip.err.contains("did you mean ptp?"), slip.err.constData());
}

void TestFleetCommands::statusTellsWhatIsSeenOfPtp()
{
    QVERIFY(m_desk->fleet(words("--lines status lon-1")).out.contains("\"state\":\"no ptp\""));
    QCOMPARE(m_second->ctl({}, words("set 0 clock=sw-ptp domain=7")).code, 0);
    QVERIFY(eventually([&] {
        return m_desk->fleet(words("--lines status --where ptp.domain=7")).out.contains("\"domain\":7");
    }));
    QCOMPARE(m_second->ctl({}, words("unset 0 clock domain")).code, 0);
    QVERIFY(eventually([&] { return m_desk->fleet(words("status --where ptp=no*")).out.count('\n') == 3; }));
}

void TestFleetCommands::theFirstFailureEndsTheRun()
{
    QCOMPARE(m_first->stop(), 0);
    const ProgramResult result =
        m_desk->fleet(words("--yes set 0/video tx.dst=239.1.6.9 --where * --canary 1 --within 1"));
    QCOMPARE(result.code, 4);
    QVERIFY2(
        result.err.contains("lon-1: the server has not taken it within 1 s; 1 of 2 servers were written to"),
        result.err.constData());
    QCOMPARE(m_second->get({}, kPlace, "tx.dst"), QByteArray("239.1.4.1"));
    m_first->start();
    QVERIFY(eventuallyHas(*m_first, "239.1.6.9"));
}

void TestFleetCommands::aLargeServerIsWrittenInSeveralTransactions()
{
    QCOMPARE(m_first->ctl({}, words("set server channels=150")).code, 0);
    QVERIFY(eventually(
        [&] { return m_desk->fleet(words("status --where server/channels=150")).out.contains("lon-1"); }));
    const ProgramResult result =
        m_desk->fleet(words("--yes --quiet set 0-149/video rx.dst-port=5004 --where lon-1 --wait"));
    QVERIFY2(result.code == 0, result.err.constData());
    QCOMPARE(m_first->get({}, "149/video", "rx.dst-port"), QByteArray("5004"));
    QCOMPARE(m_first->get({}, "0/video", "rx.dst-port"), QByteArray("5004"));
}

void TestFleetCommands::restoreGivesBackWhatADumpHolds()
{
    const QString dump = m_plant.file(QStringLiteral("before.json"));
    QCOMPARE(m_first->ctl({}, {QStringLiteral("dump"), dump}).code, 0);
    QCOMPARE(
        m_desk->fleet(words("--yes set 0/video tx.dst=239.1.6.5 rx.dst=239.1.6.6 --where lon-1 --wait")).code,
        0);
    const QStringList restore{QStringLiteral("restore"), dump, QStringLiteral("--where"),
                              QStringLiteral("lon-1")};
    const ProgramResult dry = m_desk->fleet(words("--dry-run") + restore);
    QVERIFY2(dry.code == 0 && dry.out.contains("239.1.6.5 -> 239.1.6.9"), dry.out.constData());
    QVERIFY(dry.out.contains("239.1.6.6 -> (absent)")); // exactly the dump
    QCOMPARE(m_first->get({}, kPlace, "tx.dst"), QByteArray("239.1.6.5"));
    const ProgramResult done = m_desk->fleet(words("--yes") + restore + words("--wait"));
    QVERIFY2(done.code == 0 && done.err.contains("lon-1: taken"), done.err.constData());
    QCOMPARE(m_first->get({}, kPlace, "tx.dst"), QByteArray("239.1.6.9"));
    QVERIFY(m_desk->fleet(words("--yes") + restore).err.contains("nothing to change"));
}

void TestFleetCommands::restoreGivesEachItsOwn()
{
    m_desk->start();
    QVERIFY(eventually([&] {
        return m_desk->get("lon-1", kPlace, "tx.dst") == "239.1.6.9" &&
               m_desk->get("lon-2", kPlace, "tx.dst") == "239.1.4.1";
    }));
    const QString dump = m_plant.file(QStringLiteral("plant.json"));
    QCOMPARE(m_desk->ctl({}, {QStringLiteral("dump"), dump, QStringLiteral("--all")}).code, 0);
    QCOMPARE(m_desk->stop(), 0);
    QCOMPARE(m_desk->fleet(words("--yes set 0/video tx.dst=239.1.6.7 --where *")).code, 0);
    const QStringList restore{QStringLiteral("restore"), dump, QStringLiteral("--where"),
                              QStringLiteral("*")};
    const ProgramResult which = m_desk->fleet(words("--yes") + restore);
    QCOMPARE(which.code, 2);
    QVERIFY2(which.err.contains("--each"), which.err.constData());
    QCOMPARE(m_desk->fleet(words("--yes") + restore + words("--from par-1")).code, 2);
    const ProgramResult done = m_desk->fleet(words("--yes") + restore + words("--each --wait"));
    QVERIFY2(done.code == 0, done.err.constData());
    QCOMPARE(m_first->get({}, kPlace, "tx.dst"), QByteArray("239.1.6.9"));
    QCOMPARE(m_second->get({}, kPlace, "tx.dst"), QByteArray("239.1.4.1"));
}

void TestFleetCommands::whatIsNoDumpRestoresNothing()
{
    const QString rubbish = m_plant.file(QStringLiteral("ca.crt"));
    QCOMPARE(
        m_desk->fleet({QStringLiteral("restore"), rubbish, QStringLiteral("--where"), QStringLiteral("*")})
            .code,
        2);
    QCOMPARE(m_desk->fleet(words("restore /nowhere --where *")).code, 2);
    QCOMPARE(m_desk->fleet(words("restore x --each --from y --where *")).code, 2);
    QCOMPARE(m_desk->fleet(words("restore x")).code, 2); // where?
}

void TestFleetCommands::anotherSiteIsReadWhereTheRoleAllowsIt()
{
    QVERIFY2(m_plant.addCertificate("par-1") && m_plant.allowServer("par-1", "paris"),
             m_plant.error().constData());
    Machine paris(m_plant, "server", "par-1");
    paris.writeConfig(paris.config().replace("site = london", "site = paris"));
    QVERIFY(paris.set({}, kPlace, "tx.dst=239.1.4.1:5000"));
    paris.start();
    const Machine all(m_plant, "desk", "root", "[follow]\nservers = *\n"); // who may read everything
    QVERIFY(eventually(
        [&] { return all.fleet(words("status --where paris/*")).out.contains("paris/par-1  in step"); }));
    QCOMPARE(all.fleet(words("status --where */*")).out.count('\n'), 4);
    QVERIFY(all.fleet(words("diff lon-2 paris/par-1")).code <= 1);
    const ProgramResult denied = m_desk->fleet(words("status --where site=paris"));
    QCOMPARE(denied.code, 3);
    QVERIFY2(denied.err.contains("the site paris cannot be read"), denied.err.constData());
    QVERIFY2(m_plant.allowDesk("desk-1", words("lon-1 lon-2 paris/par-1")), m_plant.error().constData());
    QCOMPARE(m_desk->fleet(words("status --where site=paris")).code, 0);
    QCOMPARE(m_desk->fleet(words("--yes set 0/video tx.dst=239.1.4.7 --where paris/* --wait")).code, 0);
    QCOMPARE(paris.get({}, kPlace, "tx.dst"), QByteArray("239.1.4.7"));
    QVERIFY(!m_plant.allowDesk("desk-1", words("paris/par-1/x"))); // and nothing has changed
    QCOMPARE(m_desk->fleet(words("status --where *,paris/*")).code, 0);
    QVERIFY2(m_plant.allowDesk("desk-1", words("lon-1 lon-2")), m_plant.error().constData());
    QCOMPARE(m_desk->fleet(words("status --where site=paris")).code, 3);
    QCOMPARE(paris.stop(), 0);
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
    const auto offered = [&](const QStringList &line) {
        return m_desk->ctl({}, words("__complete fleet") + line).out;
    };
    QVERIFY(offered({QString()}).contains("restore\n") && offered(words("re")) == "restore\n");
    QVERIFY(offered({QStringLiteral("diff"), QString()})
                .contains("lon-1\n")); // the desk's copies have their names
    QVERIFY(offered(words("set 0/video tx.dst-p")).contains("tx.dst-port=\n"));
    QVERIFY(offered(words("restore x --c")).contains("--canary\n"));
    QVERIFY(m_desk->ctl({}, words("--json fleet status")).out.contains("\"state\""));
}

// The commands of docs/fleet.md for every day, typed on this desk in their order. They end with 0, or as
// their comment says.
void TestFleetCommands::whatThePaperSaysIsTrue()
{
    m_second->start();
    m_desk->start();
    QVERIFY(
        eventually([&] { return m_desk->fleet(words("status --where alive")).out.count("in step") == 2; }));
    QFile paper(QStringLiteral(CORVEL_SOURCE_DIR "/docs/fleet.md"));
    QVERIFY(paper.open(QIODevice::ReadOnly));
    const QByteArray text = paper.readAll();
    const int from = text.indexOf("\n## Every day\n"), to = text.indexOf("\n### The whole plant");
    int typed = 0;
    for (const QByteArray &line : text.mid(from, to - from).split('\n')) {
        if (!line.startsWith("    corvelctl "))
            continue;
        const ProgramResult result = m_desk->type(line.trimmed());
        const bool announced =
            line.contains("# exit ") && line.contains(QByteArray::number(result.code) + ": ");
        QVERIFY2(result.code == 0 || announced, (line + '\n' + result.err).constData());
        ++typed;
    }
    QVERIFY(typed > 10);
    QCOMPARE(m_desk->stop(), 0);
}

QTEST_GUILESS_MAIN(TestFleetCommands)
#include "test_fleet_commands.moc"
