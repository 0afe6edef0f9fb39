// SPDX-License-Identifier: MIT
// The library has an order of paths of its own making. Any other program has to find the same one.
#include "storehome.h"

#include <QtTest>

class TestRkcfgOrder : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void sqliteFindsItsOwnOrder_data();
    void sqliteFindsItsOwnOrder();
    void storeOfSqliteIsFound();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

// Differs from its neighbours at one place, in case or otherwise; that place moves over several words.
QByteArrayList pathsAround(int place)
{
    QByteArrayList paths;
    for (const char letter : {'A', 'a', 'B', 'b', '@', '[', '_', '\\', '\xc3', '\x01'}) {
        for (const int rest : {0, 1, 7, 8, 20})
            paths.append(QByteArray("KWX\\Config\\Internal\\Sections").left(place) + letter +
                         QByteArray("\\Video\\Output\\Last").left(rest));
    }
    return paths;
}

int append(void *context, const char *path, const char *, const char *, uint32_t, uint32_t)
{
    *static_cast<QByteArray *>(context) += QByteArray(path) + '\n';
    return 0;
}

QByteArray pathsInOrder()
{
    QByteArray paths;
    rkCFGForEach(store, nullptr, append, &paths);
    return paths;
}

} // namespace

void TestRkcfgOrder::sqliteFindsItsOwnOrder_data()
{
    QTest::addColumn<int>("place");
    for (const int place : {0, 1, 6, 7, 8, 9, 15, 16, 17, 24})
        QTest::addRow("%d", place) << place;
}

void TestRkcfgOrder::sqliteFindsItsOwnOrder()
{
    QFETCH(int, place);
    QCOMPARE(rkCFGBegin(store), 0);
    for (const QByteArray &path : pathsAround(place))
        putNumber(path.constData(), "n", 1);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    const QByteArray ours = pathsInOrder();
    closeStore();
    Direct plain(m_home->database());
    QCOMPARE(plain.ask("PRAGMA integrity_check"), QByteArray("ok"));
    QCOMPARE(plain.ask("SELECT group_concat(path || char(10), '') FROM"
                       " (SELECT path FROM setting ORDER BY +path COLLATE NOCASE, name)"),
             ours);
}

void TestRkcfgOrder::storeOfSqliteIsFound()
{
    putNumber("p", "n", 1);
    closeStore();
    const QByteArrayList paths = pathsAround(13);
    {
        Direct plain(m_home->database());
        for (const QByteArray &path : paths)
            plain.ask(
                QByteArray("INSERT OR IGNORE INTO setting VALUES ('" + path + "', 'n', 2, 7)").constData());
    }
    for (const QByteArray &path : paths) {
        QCOMPARE(number(path.constData(), "n"), std::optional<uint32_t>(7));
        QCOMPARE(number(path.toUpper().constData(), "n"), std::optional<uint32_t>(7));
    }
}

QTEST_GUILESS_MAIN(TestRkcfgOrder)
#include "test_rkcfg_order.moc"
