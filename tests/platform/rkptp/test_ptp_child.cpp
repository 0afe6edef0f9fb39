// SPDX-License-Identifier: MIT
// The conversation with one ptp4l, seen from both sides: what is asked, and what the answers add up to. The
// other side is a socket of this test, so that it can be silent, slow, wrong and somebody else.
#include "child.h"

#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace rkptp;

namespace {

const ClockId kClock = {0x02, 0x1d, 0xc1, 0xff, 0xfe, 0x12, 0x34, 0x57};
const ClockId kMaster = {0x00, 0x1d, 0xc1, 0xff, 0xfe, 0x00, 0x00, 0x01};
constexpr int64_t kSeconds = kNanosPerSecond;

struct Port {
    PortState state = PortState::Slave;
    QByteArray interface = "v0";
};

// Numbers as they travel, the most significant byte first.
template<typename Number>
QByteArray wire(Number number)
{
    QByteArray bytes;
    for (int shift = int(sizeof number) * 8 - 8; shift >= 0; shift -= 8)
        bytes += char(static_cast<quint64>(number) >> shift & 0xff);
    return bytes;
}

QByteArray wire(const ClockId &id)
{
    return QByteArray(reinterpret_cast<const char *>(id.data()), int(id.size()));
}

quint16 number16(const QByteArray &bytes, int at)
{
    return static_cast<quint16>(quint8(bytes[at]) << 8 | quint8(bytes[at + 1]));
}

// A ptp4l as far as it can be asked.
class Responder {
public:
    explicit Responder(const QString &path)
        : m_socket(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)),
          m_path(QFile::encodeName(path))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (size_t(m_path.size()) >= sizeof address.sun_path)
            qFatal("no room for %s", m_path.constData());
        memcpy(address.sun_path, m_path.constData(), size_t(m_path.size()));
        if (bind(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            qFatal("cannot bind %s", m_path.constData());
    }

    // Answers everything that has been asked so far.
    void serve()
    {
        QByteArray question(2000, '\0');
        sockaddr_un from{};
        socklen_t length = sizeof from;
        ssize_t size = 0;
        while ((size = recvfrom(m_socket.get(), question.data(), size_t(question.size()), 0,
                                reinterpret_cast<sockaddr *>(&from), &length)) > 0) {
            const QByteArray asked = question.left(int(size));
            domains << quint8(asked[4]);
            dataSets << number16(asked, 52);
            if (quint8(asked[4]) != domain || silent)
                continue;
            for (const QByteArray &bytes : distort(answerTo(asked)))
                sendto(m_socket.get(), bytes.constData(), size_t(bytes.size()), 0,
                       reinterpret_cast<const sockaddr *>(&from), length);
        }
    }

    SystemClient asClient() const
    {
        SystemClient client;
        client.sockets = {m_path.toStdString()};
        return client;
    }
    QByteArray path() const { return m_path; }
    int count(DataSet dataSet) const { return dataSets.count(quint16(dataSet)); }

    // What it says.
    quint8 domain = 0;
    quint16 portCount = 1; // as it tells; `ports` are those it answers for
    QVector<Port> ports = {Port()};
    bool hasMaster = true;
    qint64 pathDelay = qint64{1000} << 16;
    bool silent = false;
    // What really goes out; the answer alone unless set.
    std::function<QList<QByteArray>(const QByteArray &)> distort = [](const QByteArray &answer) {
        return QList<QByteArray>{answer};
    };
    // What it was asked.
    QVector<quint8> domains;
    QVector<quint16> dataSets;

private:
    QByteArray dataOf(DataSet dataSet, quint16 port) const
    {
        const Port one = ports.value(port - 1);
        const QByteArray portId = wire(kClock) + wire(port);
        switch (dataSet) {
        case DataSet::Default:
            return QByteArray(2, '\0') + wire(portCount) + QByteArray(6, '\0') + wire(kClock) + char(domain) +
                   '\0';
        case DataSet::Current:
            return wire(quint16(1)) + wire(qint64(0)) + wire(pathDelay);
        case DataSet::Parent:
            return wire(kMaster) + wire(quint16(3)) + QByteArray(14, '\0') + wire(kMaster);
        case DataSet::TimeProperties:
            return wire(quint16(37)) + char(8) + char(0x20);
        case DataSet::Port:
            return portId + char(one.state) + QByteArray(14, '\0') + char(2);
        case DataSet::TimeStatus:
            return wire(qint64(-1500)) + wire(qint64(readClocks().realtime)) + QByteArray(22, '\0') +
                   wire(quint32(hasMaster)) + wire(kMaster);
        case DataSet::GrandmasterSettings:
            return QByteArray(4, '\0') + wire(quint16(37)) + QByteArray(2, '\0');
        case DataSet::PortProperties:
            return portId + char(one.state) + char(1) + char(one.interface.size()) + one.interface;
        }
        return {};
    }

    QByteArray answerTo(const QByteArray &asked) const
    {
        const quint16 port = number16(asked, 42);
        const QByteArray data = dataOf(static_cast<DataSet>(number16(asked, 52)), port);
        QByteArray answer = asked.left(54);
        answer.replace(2, 2, wire(quint16(54 + data.size())));
        answer.replace(20, 10, wire(kClock) + wire(port));
        answer.replace(34, 10, asked.mid(20, 10));
        answer[46] = 2;
        answer.replace(50, 2, wire(quint16(2 + data.size())));
        return answer + data;
    }

    Descriptor m_socket;
    QByteArray m_path;
};

} // namespace

class TestPtpChild : public QObject {
    Q_OBJECT

    RunFolder m_folder;
    std::unique_ptr<QTemporaryDir> m_place;
    std::unique_ptr<Responder> m_responder;
    std::unique_ptr<Child> m_child;
    int64_t m_now = 0;

    void visit(unsigned domain, const SystemClient &client)
    {
        m_child = std::make_unique<Child>(
            ChildKey{0x0a090001, domain},
            std::vector<Interface>{{"v0", "10.9.0.1", 1}, {"v1", "10.9.1.1", 2}}, CarriedTime());
        QVERIFY(m_child->visit(client, m_folder, 1, m_now));
    }
    void visit(unsigned domain = 0) { visit(domain, m_responder->asClient()); }

    // Time passes in steps of five milliseconds until a round is complete; false when none is within `limit`.
    bool finishRound(int64_t limit = 4 * kSeconds)
    {
        for (const int64_t end = m_now + limit; m_now < end; m_now += 5 * kNanosPerMilli) {
            m_responder->serve();
            if (m_child->converse(m_now))
                return true;
        }
        return false;
    }

private slots:
    void initTestCase() { QVERIFY(m_folder.prepare()); }
    void init()
    {
        m_place = std::make_unique<QTemporaryDir>(QStringLiteral("/tmp/ptp-child-XXXXXX"));
        m_responder = std::make_unique<Responder>(m_place->filePath(QStringLiteral("socket")));
        m_now = monotonicNow();
    }
    void cleanup()
    {
        m_child.reset();
        m_responder.reset();
    }

    void theDomainItRunsInIsFound_data();
    void theDomainItRunsInIsFound();
    void theLikelyDomainsAreAskedFirst();
    void oneWithoutASocketIsNotVisited();
    void itsSocketStaysAndOursGoes();
    void whatItSaysIsShown();
    void aMasterIsFollowed();
    void theMeasuredDelayComesFirst();
    void states_data();
    void states();
    void theSecondPortMayBeTheOneThatFollows();
    void whatPortsItSaysItHas_data();
    void whatPortsItSaysItHas();
    void slowQuestionsAreAskedInEveryFourthRound();
    void answersThatAreNotMeantAreWaitedThrough_data();
    void answersThatAreNotMeantAreWaitedThrough();
    void aRefusedAnswerIsOne();
    void oneOnOtherInterfacesIsAMistake();
    void oneThatNeverAnswersIsAMistake();
    void silenceIsNoticedAfterTenSeconds();
};

void TestPtpChild::theDomainItRunsInIsFound_data()
{
    QTest::addColumn<quint8>("runsIn");
    QTest::addColumn<unsigned>("wanted");
    QTest::addColumn<QByteArray>("told"); // on its command line
    QTest::newRow("the one wanted") << quint8(4) << 4U << QByteArray();
    QTest::newRow("the one told") << quint8(9) << 4U << QByteArray("9");
    QTest::newRow("told wrongly") << quint8(4) << 4U << QByteArray("9");
    QTest::newRow("neither") << quint8(77) << 4U << QByteArray("9");
    QTest::newRow("the highest") << quint8(127) << 0U << QByteArray();
}
void TestPtpChild::theDomainItRunsInIsFound()
{
    QFETCH(quint8, runsIn);
    QFETCH(unsigned, wanted);
    QFETCH(QByteArray, told);
    m_responder->domain = runsIn;
    SystemClient client = m_responder->asClient();
    client.domain = told.toStdString();
    visit(wanted, client);
    QVERIFY(finishRound());
    const Snapshot seen = m_child->view();
    QCOMPARE(QByteArray(seen.text(Text::Domain).data()), QByteArray::number(runsIn));
    QCOMPARE(seen.otherDomain, runsIn != wanted);
    QVERIFY(!m_child->mistaken(m_now));
}

void TestPtpChild::theLikelyDomainsAreAskedFirst()
{
    m_responder->silent = true;
    SystemClient client = m_responder->asClient();
    client.domain = "9";
    visit(4, client);
    QVERIFY(!finishRound(kSeconds));
    QVERIFY(m_responder->domains.size() >= 5);
    QCOMPARE(m_responder->domains.mid(0, 5), (QVector<quint8>{9, 4, 0, 1, 2}));
    QCOMPARE(m_child->view().state, ClientState::Starting);
}

void TestPtpChild::oneWithoutASocketIsNotVisited()
{
    Child child({0x0a090001, 0}, {{"v0", "10.9.0.1", 1}}, CarriedTime());
    QVERIFY(!child.visit(SystemClient(), m_folder, 2, m_now));
    SystemClient client;
    client.sockets = {"/nonexistent/socket", std::string(200, 'x')};
    Child another({0x0a090001, 0}, {{"v0", "10.9.0.1", 1}}, CarriedTime());
    QVERIFY(!another.visit(client, m_folder, 3, m_now));
    // The first that can be reached is taken.
    client.sockets.push_back(m_responder->asClient().sockets.front());
    visit(0, client);
    QVERIFY(finishRound());
}

void TestPtpChild::itsSocketStaysAndOursGoes()
{
    visit();
    const QString own = QString::fromStdString(m_folder.pathOf("1.ask"));
    QVERIFY(QFileInfo::exists(own));
    QVERIFY(m_child->ofSystem());
    m_child.reset();
    QVERIFY(!QFileInfo::exists(own));
    QVERIFY(QFileInfo::exists(QFile::decodeName(m_responder->path())));
}

void TestPtpChild::whatItSaysIsShown()
{
    visit();
    QVERIFY(finishRound());
    const Snapshot seen = m_child->view();
    QVERIFY(seen.ofSystem);
    QVERIFY(!seen.isMaster);
    QCOMPARE(seen.state, ClientState::Following);
    QCOMPARE(seen.text(Text::Version).data(), "PTPv2");
    QCOMPARE(seen.text(Text::Grandmaster).data(), "00-1D-C1-FF-FE-00-00-01");
    QCOMPARE(seen.text(Text::SourcePort).data(), "00-1D-C1-FF-FE-00-00-01-3");
    QCOMPARE(seen.text(Text::Address).data(), "10.9.0.1");
    QCOMPARE(seen.interfaces.data(), "v0 and v1");
}

void TestPtpChild::aMasterIsFollowed()
{
    visit();
    for (int round = 0; round < 20 && !m_child->view().carried.valid; ++round)
        QVERIFY(finishRound());
    const CarriedTime carried = m_child->view().carried;
    QVERIFY(carried.valid);
    QCOMPARE(carried.offset, int64_t{-1500});
}

// Until the first delay was measured ptp4l tells an offset of 0 that means nothing.
void TestPtpChild::theMeasuredDelayComesFirst()
{
    m_responder->pathDelay = 0;
    visit();
    for (int round = 0; round < 20; ++round)
        QVERIFY(finishRound());
    QVERIFY(!m_child->view().carried.valid);
}

void TestPtpChild::states_data()
{
    QTest::addColumn<int>("port");
    QTest::addColumn<bool>("hasMaster");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("isMaster");
    const auto row = [](const char *name, PortState port, bool hasMaster, ClientState expected,
                        bool isMaster) {
        QTest::newRow(name) << int(port) << hasMaster << int(expected) << isMaster;
    };
    row("listens", PortState::Listening, false, ClientState::Listening, false);
    row("uncalibrated", PortState::Uncalibrated, true, ClientState::Following, false);
    row("slave", PortState::Slave, true, ClientState::Following, false);
    row("slave of nobody", PortState::Slave, false, ClientState::Listening, false);
    row("passive", PortState::Passive, true, ClientState::Listening, false);
    row("gives the time itself", PortState::Master, false, ClientState::Listening, true);
    row("broken", PortState::Faulty, true, ClientState::Faulty, false);
    row("switched off", PortState::Disabled, true, ClientState::Faulty, false);
}
void TestPtpChild::states()
{
    QFETCH(int, port);
    QFETCH(bool, hasMaster);
    m_responder->ports = {{static_cast<PortState>(port), "v0"}};
    m_responder->hasMaster = hasMaster;
    visit();
    QVERIFY(finishRound());
    const Snapshot seen = m_child->view();
    QTEST(int(seen.state), "expected");
    QTEST(seen.isMaster, "isMaster");
    QCOMPARE(*seen.text(Text::Grandmaster).data() != '\0', seen.state == ClientState::Following);
}

void TestPtpChild::theSecondPortMayBeTheOneThatFollows()
{
    m_responder->portCount = 2;
    m_responder->ports = {{PortState::Listening, "v0"}, {PortState::Slave, "v1"}};
    visit();
    QVERIFY(finishRound());
    QCOMPARE(m_child->view().text(Text::Address).data(), "10.9.1.1");
    QCOMPARE(m_child->view().state, ClientState::Following);
    // One that is broken does not make the other so.
    m_responder->ports[0].state = PortState::Faulty;
    QVERIFY(finishRound());
    QCOMPARE(m_child->view().state, ClientState::Following);
}

// From one, because it answers, to as many as fit a round.
void TestPtpChild::whatPortsItSaysItHas_data()
{
    QTest::addColumn<quint16>("said");
    QTest::addColumn<int>("asked");
    QTest::newRow("none") << quint16(0) << 1;
    QTest::newRow("one") << quint16(1) << 1;
    QTest::newRow("three") << quint16(3) << 3;
    QTest::newRow("nonsense") << quint16(65535) << 64;
}
void TestPtpChild::whatPortsItSaysItHas()
{
    QFETCH(quint16, said);
    m_responder->portCount = said;
    m_responder->ports = QVector<Port>(64);
    visit();
    QVERIFY(finishRound());
    QTEST(m_responder->count(DataSet::Port), "asked");
    QTEST(m_responder->count(DataSet::PortProperties), "asked");
}

void TestPtpChild::slowQuestionsAreAskedInEveryFourthRound()
{
    visit();
    for (int round = 0; round < 8; ++round)
        QVERIFY(finishRound());
    QCOMPARE(m_responder->count(DataSet::TimeStatus), 8);
    QCOMPARE(m_responder->count(DataSet::Port), 8);
    QCOMPARE(m_responder->count(DataSet::PortProperties), 2);
    QCOMPARE(m_responder->count(DataSet::Default), 2 + 1); // and once to meet it
}

void TestPtpChild::answersThatAreNotMeantAreWaitedThrough_data()
{
    QTest::addColumn<int>("at");
    QTest::newRow("of another message") << 0;
    QTest::newRow("of another PTP version") << 1;
    QTest::newRow("of another length") << 3;
    QTest::newRow("of another domain") << 4;
    QTest::newRow("to another question") << 31;
    QTest::newRow("to somebody else") << 40;
    QTest::newRow("a question") << 46;
    QTest::newRow("of another kind") << 49;
    QTest::newRow("of another data set") << 53;
}
void TestPtpChild::answersThatAreNotMeantAreWaitedThrough()
{
    QFETCH(int, at);
    m_responder->distort = [at](const QByteArray &answer) {
        QByteArray wrong = answer;
        wrong[at] = char(wrong[at] ^ 0x05);
        return QList<QByteArray>{wrong, QByteArray(), QByteArray(10, 'x'), answer};
    };
    visit();
    QVERIFY(finishRound());
    QCOMPARE(m_child->view().text(Text::Grandmaster).data(), "00-1D-C1-FF-FE-00-00-01");
    // With nothing else it is as if nobody answered.
    m_responder->distort = [at](const QByteArray &answer) {
        QByteArray wrong = answer;
        wrong[at] = char(wrong[at] ^ 0x05);
        return QList<QByteArray>{wrong};
    };
    QVERIFY(!finishRound());
}

// An older ptp4l does not know every data set: the rest is shown all the same.
void TestPtpChild::aRefusedAnswerIsOne()
{
    m_responder->distort = [](const QByteArray &answer) {
        if (number16(answer, 52) != quint16(DataSet::GrandmasterSettings))
            return QList<QByteArray>{answer};
        QByteArray refusal = answer;
        refusal[49] = 2;
        return QList<QByteArray>{refusal};
    };
    visit();
    QVERIFY(finishRound());
    QCOMPARE(m_child->view().state, ClientState::Following);
}

void TestPtpChild::oneOnOtherInterfacesIsAMistake()
{
    m_responder->ports = {{PortState::Slave, "eth7"}};
    visit();
    QVERIFY(!m_child->mistaken(m_now));
    QVERIFY(finishRound());
    QVERIFY(m_child->mistaken(m_now));
}

void TestPtpChild::oneThatNeverAnswersIsAMistake()
{
    m_responder->silent = true;
    visit();
    const int64_t begin = m_now;
    QVERIFY(!finishRound(5 * kSeconds));
    QVERIFY(!m_child->mistaken(begin + 5 * kSeconds));
    QVERIFY(m_child->mistaken(begin + 5 * kSeconds + 1));
}

void TestPtpChild::silenceIsNoticedAfterTenSeconds()
{
    visit();
    QVERIFY(finishRound());
    m_responder->silent = true;
    const int64_t begin = m_now;
    QVERIFY(!finishRound(10 * kSeconds - 10 * kNanosPerMilli));
    QVERIFY(!m_child->silent(begin + 10 * kSeconds));
    QVERIFY(m_child->silent(begin + 10 * kSeconds + 1));
    // And when it speaks again all is well.
    m_responder->silent = false;
    QVERIFY(finishRound());
    QVERIFY(!m_child->silent(m_now));
}

QTEST_GUILESS_MAIN(TestPtpChild)
#include "test_ptp_child.moc"
