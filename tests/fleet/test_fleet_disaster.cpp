// SPDX-License-Identifier: MIT
// The cluster is lost: what is on the machines comes back from them, and nothing on them is lost by that.
#include "fleet/machine.h"

namespace {

const char kPlace[] = "0/video";
const char kWord[] = "tx.dst";

} // namespace

class TestFleetDisaster : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void anEmptyClusterGetsWhatTheServersHave();
    void aServerThatWasOffMeanwhileKeepsWhatItHas();
    void aSnapshotFromYesterdayTakesNothingBack();

private:
    bool agree(const Machine &server, const QByteArray &copy, const QByteArray &value) const
    {
        return eventually([&] {
            return server.get({}, kPlace, kWord) == value && m_desk->get(copy, kPlace, kWord) == value;
        });
    }
    bool allowAll()
    {
        return m_plant.allowServer("lon-1") && m_plant.allowServer("lon-2") &&
               m_plant.allowDesk("desk-1", {QStringLiteral("*")});
    }

    Plant m_plant;
    std::unique_ptr<Machine> m_first, m_second, m_desk;
};

void TestFleetDisaster::initTestCase()
{
    QVERIFY2(m_plant.start() && m_plant.addCertificate("lon-1") && m_plant.addCertificate("lon-2") &&
                 m_plant.addCertificate("desk-1") && allowAll(),
             m_plant.error().constData());
    m_first = std::make_unique<Machine>(m_plant, "server", "lon-1");
    m_second = std::make_unique<Machine>(m_plant, "server", "lon-2");
    m_desk = std::make_unique<Machine>(m_plant, "desk", "desk-1", "[follow]\nservers = *\n");
    QVERIFY(m_first->set({}, kPlace, "tx.dst=239.1.1.1") && m_first->set({}, "1/video", "tx.dst=239.1.9.1") &&
            m_second->set({}, kPlace, "tx.dst=239.1.1.2"));
    m_first->start();
    m_second->start();
    m_desk->start();
    QVERIFY(agree(*m_first, "lon-1", "239.1.1.1") && agree(*m_second, "lon-2", "239.1.1.2"));
}

// The services run on; both sides edit while there is no cluster.
void TestFleetDisaster::anEmptyClusterGetsWhatTheServersHave()
{
    QCOMPARE(m_second->stop(), 0);
    for (int node = 0; node < Plant::kNodes; ++node)
        m_plant.killNode(node);
    QVERIFY(m_first->set({}, kPlace, "tx.dst=239.1.2.1"));
    QVERIFY(m_desk->set("lon-1", "1/video", "tx.dst=239.1.9.2"));
    m_plant.wipe();
    QVERIFY2(m_plant.users() && allowAll(), m_plant.error().constData());
    QVERIFY2(agree(*m_first, "lon-1", "239.1.2.1"), m_first->said().constData());
    QVERIFY2(eventually([&] { return m_first->get({}, "1/video", kWord) == "239.1.9.2"; }),
             m_desk->said().constData());
    QVERIFY(m_first->said().contains("the cluster was set up again"));
}

// The desk has a copy of it, and an edit to it, from before; the empty cluster deletes neither.
void TestFleetDisaster::aServerThatWasOffMeanwhileKeepsWhatItHas()
{
    QCOMPARE(m_second->get({}, kPlace, kWord), QByteArray("239.1.1.2"));
    QCOMPARE(m_desk->get("lon-2", kPlace, kWord), QByteArray("239.1.1.2"));
    QVERIFY(m_second->set({}, kPlace, "tx.dst=239.1.3.2"));
    m_second->start();
    QVERIFY2(agree(*m_second, "lon-2", "239.1.3.2"), m_second->said().constData());
}

void TestFleetDisaster::aSnapshotFromYesterdayTakesNothingBack()
{
    const QString snapshot = m_plant.file(QStringLiteral("plant.db"));
    QVERIFY(m_plant.snapshot(snapshot));
    QVERIFY(m_first->set({}, kPlace, "tx.dst=239.1.4.1"));
    QVERIFY(agree(*m_first, "lon-1", "239.1.4.1"));
    QVERIFY(m_desk->set("lon-2", kPlace, "tx.dst=239.1.4.2"));
    QVERIFY(agree(*m_second, "lon-2", "239.1.4.2"));
    QVERIFY2(m_plant.restore(snapshot), m_plant.error().constData());
    QVERIFY(eventually([&] {
        const auto list = m_plant.etcdctl({QStringLiteral("get"), QStringLiteral("--prefix"),
                                           QStringLiteral("/corvel/v1/london/servers/")});
        return list.out.contains("239.1.4.1") && list.out.contains("239.1.4.2");
    }));
    QVERIFY(agree(*m_first, "lon-1", "239.1.4.1") && agree(*m_second, "lon-2", "239.1.4.2"));
}

QTEST_GUILESS_MAIN(TestFleetDisaster)
#include "test_fleet_disaster.moc"
