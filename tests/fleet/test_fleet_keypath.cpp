// SPDX-License-Identifier: MIT
#include "fleet/keypath.h"
#include "fleet/push.h"

#include <QtTest>

#include <set>

using namespace fleet;

class TestFleetKeypath : public QObject {
    Q_OBJECT

private slots:
    void keys_data();
    void keys();
    void partsComeBack_data();
    void partsComeBack();
    void noParts_data();
    void noParts();
    void differentPathsHaveDifferentKeys();
    void places();
    void aliveIsNoConfiguration();
    void receiptsUseAHundredKeys();
};

void TestFleetKeypath::keys_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("key");
    const auto row = [](const char *path, const char *key) {
        QTest::newRow(key) << QByteArray(path) << QByteArray(key);
    };
    row("KWX\\Internal0\\IpConfig", "kwx/internal0/ipconfig");
    row("a b", "a%20b");
    row("a/b", "a%2Fb");
    row("100%", "100%25");
    row("\\", "/");
    row("\xc3\x84", "%C3%84");
    row("Aa.-_9", "aa.-_9");
}

void TestFleetKeypath::keys()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, key);
    QCOMPARE(QByteArray::fromStdString(keyOfPath(path)), key);
}

void TestFleetKeypath::partsComeBack_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *name : {"lon-play-17", "Lon Play", "a/b", "%41", "\xe2\x82\xac", "alive", "a\\b"})
        QTest::newRow(name) << QByteArray(name);
}

void TestFleetKeypath::partsComeBack()
{
    QFETCH(QByteArray, name);
    const std::string part = keyPart(name);
    QCOMPARE(part.find('/'), std::string::npos);
    QCOMPARE(nameOfPart(part).value_or("nothing"), name);
}

void TestFleetKeypath::noParts_data()
{
    QTest::addColumn<QByteArray>("part");
    for (const char *part : {"Upper", "a b", "%", "%4", "%4g", "%61", "%c3", "a/b"})
        QTest::newRow(part) << QByteArray(part);
}

void TestFleetKeypath::noParts()
{
    QFETCH(QByteArray, part);
    QVERIFY(!nameOfPart(part.toStdString()));
}

// Those of one key are one path to the store, too.
void TestFleetKeypath::differentPathsHaveDifferentKeys()
{
    const QByteArrayList paths = {"a", "a\\", "\\a", "a\\b", "a/b", "a%2fb", "a%5Cb", "a.b", "ab", "a b"};
    std::map<std::string, QByteArray> keys;
    for (const QByteArray &path : paths)
        QVERIFY2(keys.emplace(keyOfPath(path), path).second, path.constData());
    QCOMPARE(keyOfPath("KWX\\A"), keyOfPath("kwx\\a"));
}

void TestFleetKeypath::places()
{
    const Place place{"London", "lon-play-17", "Night shift"};
    QCOMPARE(documentPrefix(place), std::string("/corvel/v1/%4Condon/servers/lon-play-17/%4Eight%20shift/"));
    QCOMPARE(conflictPrefix(place),
             std::string("/corvel/v1/%4Condon/conflicts/lon-play-17/%4Eight%20shift/"));
    QCOMPARE(historyPrefix("London", "s"), std::string("/corvel/v1/%4Condon/history/s/"));
    QCOMPARE(aliveKey("a", "s"), std::string("/corvel/v1/a/servers/s/alive"));
    QCOMPARE(keptKey(place), historyPrefix("London", "lon-play-17") + "KEPT/%4Eight%20shift");
}

void TestFleetKeypath::aliveIsNoConfiguration()
{
    const std::string prefix = documentPrefix({"a", "s", "alive"});
    QVERIFY(aliveKey("a", "s").compare(0, prefix.size(), prefix) != 0);
}

void TestFleetKeypath::receiptsUseAHundredKeys()
{
    const Place place{"a", "s", "c"};
    Documents documents;
    documents["p"].path = "P";
    documents["p"].by.who = "desk-1";
    std::set<std::string> keys;
    std::set<std::string> marks;
    for (std::uint64_t number = 1; number <= 250; ++number) {
        const Receipt receipt = receiptOf(place, "desk-1", number, documents);
        keys.insert(receipt.key);
        marks.insert(receiptMark(receipt.value));
        QCOMPARE(receipt.key, receiptKey(place, "desk-1", number));
    }
    QCOMPARE(keys.size(), std::size_t(100));
    QCOMPARE(*keys.begin(), std::string("/corvel/v1/a/history/s/desk-1/00"));
    QCOMPARE(marks.size(), std::size_t(250));
}

QTEST_GUILESS_MAIN(TestFleetKeypath)
#include "test_fleet_keypath.moc"
