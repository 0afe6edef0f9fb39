// SPDX-License-Identifier: MIT
// The client against three real members: what each call gives, and what comes of certificates, roles and lost
// members.
#include "fleet/etcd/etcdcluster.h"
#include "fleet/plant.h"

#include <QFile>
#include <QMutex>

namespace {

// What a watch told, in words.
class Told : public fleet::WatchSink {
public:
    void watching() override { add("watching"); }
    void events(const std::vector<fleet::Entry> &entries, std::int64_t revision) override
    {
        for (const fleet::Entry &entry : entries)
            add(QByteArray::fromStdString(entry.key) +
                (entry.deleted ? " gone" : '=' + QByteArray::fromStdString(entry.value)));
        const QMutexLocker locker(&m_mutex);
        m_revision = revision;
    }
    void lost(End why, const std::string &reason) override
    {
        const char *const names[] = {"gone", "compacted", "denied"};
        add(QByteArray("lost: ") + names[static_cast<int>(why)]);
        const QMutexLocker locker(&m_mutex);
        m_reason = reason;
    }
    QByteArrayList words() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_words;
    }
    bool has(const QByteArray &word) const { return words().contains(word); }
    std::int64_t revision() const
    {
        const QMutexLocker locker(&m_mutex);
        return m_revision;
    }

private:
    void add(const QByteArray &word)
    {
        const QMutexLocker locker(&m_mutex);
        m_words.append(word);
    }

    mutable QMutex m_mutex;
    QByteArrayList m_words;
    std::string m_reason;
    std::int64_t m_revision = 0;
};

fleet::Put put(const std::string &key, const std::string &value,
               std::int64_t expected = fleet::Put::kAnyRevision)
{
    fleet::Put put;
    put.key = key;
    put.value = value;
    put.expectedRevision = expected;
    return put;
}

fleet::Put removal(const std::string &key, std::int64_t expected)
{
    fleet::Put put;
    put.key = key;
    put.expectedRevision = expected;
    put.remove = true;
    return put;
}

const std::string kOwn = "/corvel/v1/london/servers/lon-1/";
const std::string kOther = "/corvel/v1/london/servers/lon-2/";

} // namespace

Q_DECLARE_METATYPE(fleet::Outcome)
Q_DECLARE_METATYPE(std::string)

class TestEtcdCluster : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(m_plant.start() && m_plant.addServer("lon-1") && m_plant.addServer("lon-2") &&
                     m_plant.addDesk("desk-1", {QStringLiteral("lon-1")}) &&
                     m_plant.addCertificate("stranger"),
                 m_plant.error().constData());
    }

    void whatIsPutIsRead();
    void aComparisonThatFailsChangesNothing();
    void allOfATransactionOrNone();
    void aRangeOfManyPagesIsOneMoment();
    void aPrefixEndsWhereItsNextBegins_data();
    void aPrefixEndsWhereItsNextBegins();
    void aWatchTellsEveryChangeInOrder();
    void aWatchFromTheRangesRevisionMissesNothing();
    void aWatchFromACompactedRevisionSaysSo();
    void aDeletedWatchIsSilent();
    void rolesDecide_data();
    void rolesDecide();
    void aWatchBeyondTheRoleIsDenied();
    void aForeignAuthorityIsNotSpokenTo();
    void tooMuchIsRefused();
    void aLargeValueOfOthersIsReadOrLeftEmpty();
    void aLeaseKeepsAKeyAndItsEndTakesIt();
    void aLeaseThatTheClusterForgotIsMadeAnew();
    void aLostLeaderIsGoneAround();
    void noMemberIsUnreachable();

private:
    std::string pem(const QString &name) const
    {
        QFile file(m_plant.file(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
    }
    fleet::EtcdOptions options(const QString &name) const
    {
        fleet::EtcdOptions options;
        for (int node = 0; node < Plant::kNodes; ++node)
            options.endpoints.push_back(m_plant.endpoint(node).toStdString());
        options.tls = {pem(QStringLiteral("ca.crt")), pem(name + QStringLiteral(".crt")),
                       pem(name + QStringLiteral(".key"))};
        return options;
    }
    std::unique_ptr<fleet::EtcdCluster> as(const QString &name) const
    {
        return fleet::etcdCluster(options(name));
    }
    std::unique_ptr<fleet::EtcdCluster> server() const { return as(QStringLiteral("lon-1")); }
    std::unique_ptr<fleet::EtcdCluster> root() const { return as(QStringLiteral("root")); }

    Plant m_plant;
};

void TestEtcdCluster::whatIsPutIsRead()
{
    const auto cluster = server();
    std::int64_t revision = 0;
    QCOMPARE(cluster->commit({put(kOwn + "read/a", "one"), put(kOwn + "read/b", "two")}, &revision),
             fleet::Outcome::Done);
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn + "read/", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), std::size_t(2));
    QCOMPARE(range.entries[0].key, kOwn + "read/a");
    QCOMPARE(range.entries[1].value, std::string("two"));
    QCOMPARE(range.entries[1].modRevision, revision);
    QVERIFY(range.revision >= revision);
    QVERIFY(range.cluster != 0);
    QCOMPARE(cluster->get(kOwn + "read/b", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), std::size_t(1));
    QCOMPARE(cluster->get(kOwn + "read/", &range), fleet::Outcome::Done);
    QVERIFY(range.entries.empty());
}

void TestEtcdCluster::aComparisonThatFailsChangesNothing()
{
    const auto cluster = server();
    const std::string key = kOwn + "compare/a";
    std::int64_t first = 0;
    QCOMPARE(cluster->commit({put(key, "one", fleet::Put::kAbsent)}, &first), fleet::Outcome::Done);
    QCOMPARE(cluster->commit({put(key, "two", fleet::Put::kAbsent)}, nullptr), fleet::Outcome::Refused);
    QCOMPARE(cluster->commit({put(key, "two", first)}, nullptr), fleet::Outcome::Done);
    QCOMPARE(cluster->commit({put(key, "three", first)}, nullptr), fleet::Outcome::Refused);
    QCOMPARE(cluster->commit({removal(key, first)}, nullptr), fleet::Outcome::Refused);
    QVERIFY(!cluster->reason().empty());
    fleet::Range range;
    QCOMPARE(cluster->get(key, &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.at(0).value, std::string("two"));
    QCOMPARE(cluster->commit({removal(key, range.entries.at(0).modRevision)}, nullptr), fleet::Outcome::Done);
    QCOMPARE(cluster->commit({put(key, "four", fleet::Put::kAbsent)}, nullptr), fleet::Outcome::Done);
}

void TestEtcdCluster::allOfATransactionOrNone()
{
    const auto cluster = server();
    QCOMPARE(cluster->commit({put(kOwn + "all/a", "one")}, nullptr), fleet::Outcome::Done);
    QCOMPARE(cluster->commit({put(kOwn + "all/b", "two"), put(kOwn + "all/a", "other", fleet::Put::kAbsent)},
                             nullptr),
             fleet::Outcome::Refused);
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn + "all/", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), std::size_t(1));
}

void TestEtcdCluster::aRangeOfManyPagesIsOneMoment()
{
    const auto cluster = server();
    constexpr std::size_t kKeys = 600;
    std::vector<fleet::Put> puts;
    for (std::size_t number = 0; number < kKeys; ++number) {
        puts.push_back(put(kOwn + "many/" + std::to_string(1000 + number), "x"));
        if (puts.size() < fleet::kMaxPuts && number + 1 < kKeys)
            continue;
        QCOMPARE(cluster->commit(puts, nullptr), fleet::Outcome::Done);
        puts.clear();
    }
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn + "many/", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), kKeys);
    QCOMPARE(range.entries.front().key, kOwn + "many/1000");
    QCOMPARE(range.entries.back().key, kOwn + "many/1599");
    std::vector<std::string> keys;
    QCOMPARE(cluster->keys(kOwn + "many/", &keys), fleet::Outcome::Done);
    QCOMPARE(keys.size(), kKeys);
    QCOMPARE(keys.back(), kOwn + "many/1599");
    fleet::Range names;
    QCOMPARE(cluster->names(kOwn + "many/", &names), fleet::Outcome::Done);
    QCOMPARE(names.entries.size(), kKeys);
    QCOMPARE(names.entries.back().modRevision, range.entries.back().modRevision);
    QVERIFY(names.entries.back().value.empty());
    keys.push_back(kOwn + "nowhere");
    QCOMPARE(cluster->getAll(keys, &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), kKeys); // and not the one that is not there
    QCOMPARE(range.entries.back().key, kOwn + "many/1599");
    QCOMPARE(range.entries.back().value, std::string("x"));
    keys.push_back("/corvel/v1/paris/x"); // not this server's
    QCOMPARE(cluster->getAll(keys, &range), fleet::Outcome::Denied);
    QCOMPARE(range.entries.size(), kKeys);
}

void TestEtcdCluster::aPrefixEndsWhereItsNextBegins_data()
{
    QTest::addColumn<QByteArray>("prefix");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("a letter") << QByteArray("/a") << QByteArray("/b");
    QTest::newRow("a slash") << QByteArray("/a/") << QByteArray("/a0");
    QTest::newRow("the last byte") << QByteArray("/a\xff") << QByteArray("/b");
    QTest::newRow("nothing but last bytes") << QByteArray("\xff\xff") << QByteArray(1, '\0');
    QTest::newRow("everything") << QByteArray() << QByteArray(1, '\0');
}

void TestEtcdCluster::aPrefixEndsWhereItsNextBegins()
{
    QFETCH(QByteArray, prefix);
    QFETCH(QByteArray, end);
    QCOMPARE(QByteArray::fromStdString(fleet::prefixEnd(prefix.toStdString())), end);
}

void TestEtcdCluster::aWatchTellsEveryChangeInOrder()
{
    const auto cluster = server();
    std::int64_t revision = 0;
    QCOMPARE(cluster->commit({put(kOwn + "watch/a", "before")}, &revision), fleet::Outcome::Done);
    Told told;
    const auto watch = cluster->watch(kOwn + "watch/", revision + 1, &told);
    QVERIFY(eventually([&] { return told.has("watching"); }));
    QCOMPARE(cluster->commit({put(kOwn + "watch/a", "one"), put(kOwn + "watch/b", "two")}, &revision),
             fleet::Outcome::Done);
    QCOMPARE(cluster->commit({put(kOwn + "elsewhere", "no")}, nullptr), fleet::Outcome::Done);
    QCOMPARE(cluster->commit({removal(kOwn + "watch/a", revision)}, &revision), fleet::Outcome::Done);
    const QByteArray gone = QByteArray::fromStdString(kOwn) + "watch/a gone";
    QVERIFY(eventually([&] { return told.has(gone); }));
    const QByteArray own = QByteArray::fromStdString(kOwn);
    QCOMPARE(told.words(), QByteArrayList({"watching", own + "watch/a=one", own + "watch/b=two", gone}));
    QCOMPARE(told.revision(), revision);
}

void TestEtcdCluster::aWatchFromTheRangesRevisionMissesNothing()
{
    const auto cluster = server();
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Done);
    QCOMPARE(cluster->commit({put(kOwn + "gap/a", "between")}, nullptr), fleet::Outcome::Done);
    Told told;
    const auto watch = cluster->watch(kOwn, range.revision + 1, &told);
    QVERIFY(eventually([&] { return told.has(QByteArray::fromStdString(kOwn) + "gap/a=between"); }));
}

void TestEtcdCluster::aWatchFromACompactedRevisionSaysSo()
{
    const auto cluster = server();
    std::int64_t revision = 0;
    for (int round = 0; round < 3; ++round)
        QCOMPARE(cluster->commit({put(kOwn + "compact/a", std::to_string(round))}, &revision),
                 fleet::Outcome::Done);
    QCOMPARE(m_plant.etcdctl({QStringLiteral("compact"), QString::number(revision)}).code, 0);
    Told told;
    const auto watch = cluster->watch(kOwn, revision - 2, &told);
    QVERIFY(eventually([&] { return told.has("lost: compacted"); }));
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Done); // what there is now is there
}

void TestEtcdCluster::aDeletedWatchIsSilent()
{
    const auto cluster = server();
    Told told;
    auto watch = cluster->watch(kOwn, 0, &told);
    QVERIFY(eventually([&] { return told.has("watching"); }));
    watch.reset();
    QCOMPARE(cluster->commit({put(kOwn + "silent", "x")}, nullptr), fleet::Outcome::Done);
    QCOMPARE(told.words(), QByteArrayList({"watching"}));
}

void TestEtcdCluster::rolesDecide_data()
{
    QTest::addColumn<QString>("who");
    QTest::addColumn<std::string>("where");
    QTest::addColumn<fleet::Outcome>("read");
    QTest::addColumn<fleet::Outcome>("written");
    const auto done = fleet::Outcome::Done, denied = fleet::Outcome::Denied;
    QTest::newRow("a server, its own") << QStringLiteral("lon-1") << kOwn << done << done;
    QTest::newRow("a server, another's") << QStringLiteral("lon-1") << kOther << denied << denied;
    QTest::newRow("a server, one that begins like it")
        << QStringLiteral("lon-1") << std::string("/corvel/v1/london/servers/lon-10/") << denied << denied;
    QTest::newRow("a server, another site")
        << QStringLiteral("lon-1") << std::string("/corvel/v1/paris/servers/lon-1/") << denied << denied;
    QTest::newRow("a desk, a server it may write") << QStringLiteral("desk-1") << kOwn << done << done;
    QTest::newRow("a desk, another server") << QStringLiteral("desk-1") << kOther << done << denied;
    QTest::newRow("a desk, that server's conflicts")
        << QStringLiteral("desk-1") << std::string("/corvel/v1/london/conflicts/lon-2/") << done << denied;
    QTest::newRow("a certificate without a user") << QStringLiteral("stranger") << kOwn << denied << denied;
}

void TestEtcdCluster::rolesDecide()
{
    QFETCH(QString, who);
    QFETCH(std::string, where);
    const auto cluster = as(who);
    fleet::Range range;
    QTEST(cluster->range(where, &range), "read");
    QTEST(cluster->commit({put(where + "role/a", "x")}, nullptr), "written");
}

void TestEtcdCluster::aWatchBeyondTheRoleIsDenied()
{
    const auto cluster = server();
    Told told;
    const auto watch = cluster->watch(kOther, 0, &told);
    QVERIFY(eventually([&] { return told.has("lost: denied"); }));
    QVERIFY(!told.has("watching"));
}

void TestEtcdCluster::aForeignAuthorityIsNotSpokenTo()
{
    QTemporaryDir elsewhere;
    QCOMPARE(m_plant.setup({QStringLiteral("ca"), elsewhere.path()}).code, 0);
    QCOMPARE(m_plant.setup({QStringLiteral("server"), elsewhere.path(), QStringLiteral("lon-1")}).code, 0);
    const auto content = [&](const char *name) {
        QFile file(elsewhere.filePath(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
    };
    fleet::EtcdOptions theirs = options(QStringLiteral("lon-1"));
    theirs.tls.authority = content("ca.crt"); // the members are not who they say
    fleet::Range range;
    auto cluster = fleet::etcdCluster(theirs);
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Unreachable);
    QVERIFY2(cluster->reason().find('\n') == std::string::npos, cluster->reason().c_str());

    theirs = options(QStringLiteral("lon-1")); // the members do not believe us
    theirs.tls.certificate = content("lon-1.crt");
    theirs.tls.key = content("lon-1.key");
    cluster = fleet::etcdCluster(theirs);
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Unreachable);
    QVERIFY(!cluster->reason().empty());
}

void TestEtcdCluster::tooMuchIsRefused()
{
    const auto cluster = server();
    QCOMPARE(cluster->commit({put(kOwn + "large", std::string(3 << 20, 'x'))}, nullptr),
             fleet::Outcome::TooLarge);
    const std::vector<fleet::Put> many(fleet::kMaxPuts + 1, put(kOwn + "many", "x"));
    QCOMPARE(cluster->commit(many, nullptr), fleet::Outcome::TooLarge);
    QCOMPARE(cluster->commit({put(kOwn + "small", "x")}, nullptr), fleet::Outcome::Done);
}

void TestEtcdCluster::aLargeValueOfOthersIsReadOrLeftEmpty()
{
    const auto writer = server();
    const std::string large(300000, 'x'), huge(1100000, 'x');
    for (int number = 0; number < 8; ++number)
        QCOMPARE(writer->commit({put(kOwn + "pages/" + std::to_string(number), number == 3 ? huge : large)},
                                nullptr),
                 fleet::Outcome::Done);
    fleet::EtcdOptions narrow = options(QStringLiteral("lon-1"));
    narrow.largestAnswer = 1 << 20;
    fleet::Range range;
    QCOMPARE(fleet::etcdCluster(narrow)->range(kOwn + "pages/", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), std::size_t(8));
    QVERIFY(range.entries[3].value.empty());
    QVERIFY(range.entries[2].value == large && range.entries[4].value == large &&
            range.entries[7].value == large);
}

void TestEtcdCluster::aLeaseKeepsAKeyAndItsEndTakesIt()
{
    const auto cluster = server(), other = as(QStringLiteral("desk-1"));
    QCOMPARE(cluster->keepAlive(kOwn + "alive", "here", 30), fleet::Outcome::Done);
    QCOMPARE(cluster->keepAlive(kOwn + "alive", "still here", 30), fleet::Outcome::Done);
    fleet::Range range;
    QCOMPARE(other->get(kOwn + "alive", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.at(0).value, std::string("still here"));
    const std::int64_t revision = range.entries.at(0).modRevision;
    QCOMPARE(cluster->keepAlive(kOwn + "alive", "still here", 30), fleet::Outcome::Done);
    QCOMPARE(other->get(kOwn + "alive", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.at(0).modRevision, revision); // what is so already is not written again
    QCOMPARE(cluster->endLease(), fleet::Outcome::Done);
    QCOMPARE(other->get(kOwn + "alive", &range), fleet::Outcome::Done);
    QVERIFY(range.entries.empty());
}

void TestEtcdCluster::aLeaseThatTheClusterForgotIsMadeAnew()
{
    const auto cluster = server(), admin = root();
    QCOMPARE(cluster->keepAlive(kOwn + "alive", "here", 30), fleet::Outcome::Done);
    const QByteArray leases = m_plant.etcdctl({QStringLiteral("lease"), QStringLiteral("list")}).out;
    for (const QByteArray &lease : leases.split('\n').mid(1)) {
        if (!lease.isEmpty())
            m_plant.etcdctl({QStringLiteral("lease"), QStringLiteral("revoke"), QString::fromLatin1(lease)});
    }
    fleet::Range range;
    QCOMPARE(admin->get(kOwn + "alive", &range), fleet::Outcome::Done);
    QVERIFY(range.entries.empty());
    QCOMPARE(cluster->keepAlive(kOwn + "alive", "here", 30), fleet::Outcome::Done);
    QCOMPARE(admin->get(kOwn + "alive", &range), fleet::Outcome::Done);
    QCOMPARE(range.entries.size(), std::size_t(1));
}

void TestEtcdCluster::aLostLeaderIsGoneAround()
{
    const auto cluster = server();
    Told told;
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Done);
    const auto watch = cluster->watch(kOwn + "leader/", range.revision + 1, &told);
    QVERIFY(eventually([&] { return told.has("watching"); }));
    const int leader = m_plant.leader();
    QVERIFY(leader >= 0);
    m_plant.killNode(leader);
    QVERIFY(eventually(
        [&] { return cluster->commit({put(kOwn + "leader/a", "after")}, nullptr) == fleet::Outcome::Done; }));
    const QByteArray after = QByteArray::fromStdString(kOwn) + "leader/a=after";
    QVERIFY(eventually(
        [&] { return told.has(after) || told.has("lost: gone"); })); // heard, or told that it was not
    QVERIFY(m_plant.startNode(leader));
    QVERIFY(eventually([&] { return m_plant.healthy(); }));
}

void TestEtcdCluster::noMemberIsUnreachable()
{
    fleet::EtcdOptions nobody = options(QStringLiteral("lon-1"));
    nobody.endpoints = {"127.0.0.1:1", "127.0.0.1:2"};
    nobody.watchCreatedMs = 300;
    const auto cluster = fleet::etcdCluster(nobody);
    fleet::Range range;
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Unreachable);
    QVERIFY(cluster->reason().find("127.0.0.1:1") == 0);
    QCOMPARE(cluster->range(kOwn, &range), fleet::Outcome::Unreachable);
    QVERIFY(cluster->reason().find("127.0.0.1:2") == 0); // the next one was asked
    Told told;
    const auto watch = cluster->watch(kOwn, 0, &told);
    QVERIFY(eventually([&] { return told.has("lost: gone"); }));
}

QTEST_GUILESS_MAIN(TestEtcdCluster)
#include "test_etcdcluster.moc"
