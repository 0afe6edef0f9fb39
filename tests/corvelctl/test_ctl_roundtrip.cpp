// SPDX-License-Identifier: MIT
// Whatever stands in a store comes back from a dump, and whatever stands in its channels from a table:
// compared row by row in the database itself. CORVEL_ROUNDS asks for more stores, for a long run by hand
// (and QTEST_FUNCTION_TIMEOUT for more than five minutes).
#include "ctlhome.h"

#include "../ops/randomstore.h"
#include "ops/store.h"
#include "rkcfg.h"

#include <sqlite3.h>

class TestCtlRoundTrip : public QObject {
    Q_OBJECT

private slots:
    void restoreOfADumpIsExact();
    void restoreOfAllIsExact();
    void importOfATableIsExact();
    void undoOfARestoreIsExact();
};

namespace {

int rounds()
{
    const int wanted = qEnvironmentVariableIntValue("CORVEL_ROUNDS");
    return wanted > 0 ? wanted : 6;
}

// Puts values into the store past the command line.
void put(const CtlHome &home, const ops::Snapshot &values, const QByteArray &name = "default")
{
    qputenv("XDG_CONFIG_HOME", home.path("").toUtf8());
    auto store = ops::Store::open(name, true);
    QVERIFY(store);
    QVERIFY(store->apply(ops::difference(*store->read(), values, ops::Spelling::Exact), "random"));
}

// Each row as the database has it: path, name, type and the bytes of the value.
QByteArrayList rowsOf(const CtlHome &home, const QString &name = QStringLiteral("default"))
{
    QByteArrayList rows;
    const QStringList found =
        QDir(home.path("corvel")).entryList({name + QStringLiteral(".rkcfg")}, QDir::Files);
    sqlite3 *database = nullptr;
    sqlite3_stmt *statement = nullptr;
    if (found.size() == 1 &&
        sqlite3_open_v2(home.path(("corvel/" + found.first().toUtf8()).constData()).toUtf8().constData(),
                        &database, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK)
        sqlite3_prepare_v2(database,
                           "SELECT path, name, type, CAST(value AS BLOB) FROM setting ORDER BY path, name",
                           -1, &statement, nullptr);
    while (statement && sqlite3_step(statement) == SQLITE_ROW) {
        QByteArray row;
        for (int column = 0; column < 4; ++column) {
            const int size = sqlite3_column_bytes(statement, column);
            row +=
                QByteArray(static_cast<const char *>(sqlite3_column_blob(statement, column)), size).toHex() +
                ' ';
        }
        rows.append(row);
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return rows;
}

} // namespace

void TestCtlRoundTrip::restoreOfADumpIsExact()
{
    const CtlHome home;
    for (int round = 0; round < rounds(); ++round) {
        const auto seed = static_cast<unsigned>(round);
        put(home, RandomStore(seed).anything());
        const QByteArrayList before = rowsOf(home);
        QCOMPARE(home.run("dump -q kept.json").code, 0);
        put(home, RandomStore(seed + 5000).anything());
        QVERIFY(rowsOf(home) != before);
        QCOMPARE(home.run("restore -q -y kept.json").code, 0);
        QCOMPARE(rowsOf(home), before);
        QCOMPARE(home.run("dump").out, home.read("kept.json"));
    }
}

// Configurations that are not there yet are made; those that the dump does not know stay as they are.
void TestCtlRoundTrip::restoreOfAllIsExact()
{
    const CtlHome home;
    for (int round = 0; round < qMax(2, rounds() / 10); ++round) {
        const auto seed = static_cast<unsigned>(round);
        put(home, RandomStore(seed).anything());
        put(home, RandomStore(seed + 100).anything(), "night");
        const QByteArrayList first = rowsOf(home), night = rowsOf(home, QStringLiteral("night"));
        QCOMPARE(home.run("dump -q --all all.json").code, 0);
        put(home, RandomStore(seed + 200).anything());
        QCOMPARE(home.run("config delete night -y").code, 0);
        const CtlResult dry = home.run("restore -n --all all.json");
        QCOMPARE(dry.code, 0);
        QVERIFY(!home.run("config list").out.contains("night"));
        const CtlResult real = home.run("restore -y --all all.json");
        QCOMPARE(real.code, 0);
        QCOMPARE(real.out, dry.out);
        QCOMPARE(rowsOf(home), first);
        QCOMPARE(rowsOf(home, QStringLiteral("night")), night);
        QCOMPARE(home.run("restore -y --all all.json --fail-if-none").code, 5);
    }
}

void TestCtlRoundTrip::importOfATableIsExact()
{
    for (int round = 0; round < rounds(); ++round) {
        const CtlHome from, to;
        put(from, RandomStore(static_cast<unsigned>(round)).channels(3));
        QCOMPARE(from.run("table export table.csv").code, 0);
        QCOMPARE(from.run("table import table.csv --apply --fail-if-none").code, 5);
        QCOMPARE(to.run("set server channels=3").code, 0);
        to.write("table.csv", from.read("table.csv"));
        QCOMPARE(to.run("table import table.csv --apply -q").code, 0);
        QCOMPARE(rowsOf(to), rowsOf(from));
        QCOMPARE(to.run("table export -").out, from.read("table.csv"));
    }
}

void TestCtlRoundTrip::undoOfARestoreIsExact()
{
    const CtlHome home;
    for (int round = 0; round < qMax(2, rounds() / 4); ++round) {
        const auto seed = static_cast<unsigned>(round);
        put(home, RandomStore(seed).channels(2));
        const QByteArrayList before = rowsOf(home);
        home.write("other.json", home.run("dump").out);
        put(home, RandomStore(seed + 300).anything());
        const QByteArrayList between = rowsOf(home);
        QCOMPARE(home.run("restore -q -y other.json").code, 0);
        QCOMPARE(rowsOf(home), before);
        QCOMPARE(home.run("undo -q").code, 0);
        QCOMPARE(rowsOf(home), between);
        QCOMPARE(home.run("redo -q").code, 0);
        QCOMPARE(rowsOf(home), before);
    }
}

QTEST_GUILESS_MAIN(TestCtlRoundTrip)
#include "test_ctl_roundtrip.moc"
