// SPDX-License-Identifier: MIT
// What the store costs the user interface: an edit, a loaded file, the first call of a process. The edit by
// turns with SQLite alone, which runs the same statements in the same transaction, the record of the change
// among them, and syncs its log; what is left out there is all that the library adds: two names for one
// value, other processes, other configurations, damage.
#include "measure.h"
#include "rkcfg.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QVector>
#include <QtTest>
#include <algorithm>
#include <ctime>
#include <sqlite3.h>

class StoreBench : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    // One field changed, all values of the element handed over without a transaction, saved.
    void oneEdit();
    // The same as one transaction, by turns in the store and in SQLite alone.
    void editBesideSqlite_data();
    void editBesideSqlite();
    // The same with nothing changed.
    void nothingChanged();
    // A settings file: 10 channels of 60 values, all changed, one save.
    void loadedFile();
    // 1,000 channels with 8 flows as one transaction, and their walk.
    void plantLoaded();
    // The first call with that store and a full history.
    void plantOpened();
    // One channel's values read back.
    void oneChannelRead();
    // Closing, and the first call that opens and checks the store again.
    void reopened();

private:
    QTemporaryDir m_home;
};

namespace {

constexpr int channels = 10;
constexpr int valuesPerChannel = 60;
constexpr int valuesPerElement = 30;

void *const store = RKCFG_DEFAULT_STORE;

QByteArray path(int channel)
{
    return "KWX\\Internal" + QByteArray::number(channel) + "\\IpConfig";
}

QByteArray name(int index)
{
    return "TransmitDestinationValue" + QByteArray::number(index);
}

void put(int channel, int index, QByteArray text)
{
    auto size = static_cast<uint32_t>(text.size() + 1);
    rkCFGValueString(store, path(channel).constData(), name(index).constData(), text.data(), &size, 1);
}

QByteArray elementValue(int index, int changedValue)
{
    return index == 7 ? QByteArray::number(changedValue) : "239.10.20." + QByteArray::number(index);
}

void putElement(int channel, int changedValue)
{
    for (int index = 0; index < valuesPerElement; ++index)
        put(channel, index, elementValue(index, changedValue));
}

void putAll(int round)
{
    for (int channel = 0; channel < channels; ++channel) {
        for (int index = 0; index < valuesPerChannel; ++index)
            put(channel, index, "239.10." + QByteArray::number(round) + '.' + QByteArray::number(index));
    }
}

void save()
{
    QCOMPARE(rkCFGSave(store, nullptr, 0), 0);
}

// The same tables, settings and statements without the library around them.
class Bare {
public:
    explicit Bare(const QString &file)
    {
        sqlite3_open(QFile::encodeName(file).constData(), &m_db);
        for (const char *sql :
             {"PRAGMA page_size=1024", "PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL",
              "CREATE TABLE setting (path TEXT NOT NULL COLLATE NOCASE, name TEXT NOT NULL, type INTEGER "
              "NOT NULL, value NOT NULL, PRIMARY KEY (path, name)) WITHOUT ROWID",
              "CREATE TABLE history (id INTEGER PRIMARY KEY, batch INTEGER NOT NULL, time INTEGER NOT NULL, "
              "writer INTEGER NOT NULL, pid INTEGER NOT NULL, path TEXT NOT NULL, name TEXT NOT NULL, "
              "old_value, new_value, label TEXT, undoes INTEGER)"})
            sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr);
        prepare("BEGIN IMMEDIATE", &m_begin);
        prepare("COMMIT", &m_commit);
        prepare("SELECT value FROM setting WHERE path = ?1 AND name = ?2", &m_select);
        prepare("INSERT INTO setting (path, name, type, value)"
                " VALUES (?1, ?2, 1, ?3)"
                " ON CONFLICT (path, name) DO UPDATE SET type = excluded.type, value = excluded.value"
                " WHERE type IS NOT excluded.type OR value IS NOT excluded.value",
                &m_upsert);
        prepare("SELECT path FROM setting WHERE path = ?1 LIMIT 1", &m_spelling);
        prepare("SELECT coalesce(max(id), 0) + 1 FROM history", &m_next);
        prepare("INSERT INTO history (id, batch, time, writer, pid, path, name, old_value, new_value)"
                " VALUES (?1, ?1, ?2, 1, ?4, ?5, ?6, ?7, ?8)",
                &m_record);
    }
    ~Bare()
    {
        for (sqlite3_stmt *statement : {m_begin, m_commit, m_select, m_upsert, m_spelling, m_next, m_record})
            sqlite3_finalize(statement);
        sqlite3_close(m_db);
    }
    Bare(const Bare &) = delete;
    Bare &operator=(const Bare &) = delete;

    void begin() { run(m_begin); }
    void commit() { run(m_commit); }
    void put(int channel, int index, const QByteArray &text)
    {
        const QByteArray key = path(channel), word = name(index);
        bind(m_select, 1, key, word);
        const bool same = sqlite3_step(m_select) == SQLITE_ROW && text == columnText();
        const QByteArray before = columnText();
        sqlite3_reset(m_select);
        if (same)
            return;
        sqlite3_bind_text(m_spelling, 1, key.constData(), key.size(), SQLITE_STATIC);
        sqlite3_step(m_spelling);
        sqlite3_reset(m_spelling);
        bind(m_upsert, 1, key, word);
        sqlite3_bind_text(m_upsert, 3, text.constData(), text.size(), SQLITE_STATIC);
        run(m_upsert);
        record(key, word, before, text);
    }
    void sync()
    {
        sqlite3_file *log = nullptr;
        sqlite3_file_control(m_db, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
        QCOMPARE(log->pMethods->xSync(log, SQLITE_SYNC_NORMAL), SQLITE_OK);
    }

private:
    void prepare(const char *sql, sqlite3_stmt **statement)
    {
        QCOMPARE(sqlite3_prepare_v3(m_db, sql, -1, SQLITE_PREPARE_PERSISTENT, statement, nullptr), SQLITE_OK);
    }
    void record(const QByteArray &key, const QByteArray &word, const QByteArray &before,
                const QByteArray &after)
    {
        sqlite3_step(m_next);
        sqlite3_bind_int64(m_record, 1, sqlite3_column_int64(m_next, 0));
        sqlite3_reset(m_next);
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        sqlite3_bind_int64(m_record, 2, now.tv_sec * 1000000LL + now.tv_nsec / 1000);
        sqlite3_bind_int64(m_record, 4, getpid());
        bind(m_record, 5, key, word);
        sqlite3_bind_text(m_record, 7, before.constData(), before.size(), SQLITE_STATIC);
        sqlite3_bind_text(m_record, 8, after.constData(), after.size(), SQLITE_STATIC);
        run(m_record);
    }
    static void run(sqlite3_stmt *statement)
    {
        QCOMPARE(sqlite3_step(statement), SQLITE_DONE);
        sqlite3_reset(statement);
    }
    QByteArray columnText() const
    {
        return QByteArray(static_cast<const char *>(sqlite3_column_blob(m_select, 0)),
                          sqlite3_column_bytes(m_select, 0));
    }
    static void bind(sqlite3_stmt *statement, int column, const QByteArray &key, const QByteArray &word)
    {
        sqlite3_bind_text(statement, column, key.constData(), key.size(), SQLITE_STATIC);
        sqlite3_bind_text(statement, column + 1, word.constData(), word.size(), SQLITE_STATIC);
    }

    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_begin = nullptr;
    sqlite3_stmt *m_commit = nullptr;
    sqlite3_stmt *m_select = nullptr;
    sqlite3_stmt *m_upsert = nullptr;
    sqlite3_stmt *m_spelling = nullptr;
    sqlite3_stmt *m_next = nullptr;
    sqlite3_stmt *m_record = nullptr;
};

// The values of all channels once more, others than those of the round before, into either of the two.
void fill(int round, Bare &bare)
{
    QCOMPARE(rkCFGBegin(store), 0);
    putAll(1000 + round);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    bare.begin();
    for (int channel = 0; channel < channels; ++channel) {
        for (int index = 0; index < valuesPerChannel; ++index)
            bare.put(channel, index, "239.10." + QByteArray::number(round) + '.' + QByteArray::number(index));
    }
    bare.commit();
}

double milliseconds(QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

double percentile(QVector<double> times, int percent)
{
    std::sort(times.begin(), times.end());
    return times[(times.size() - 1) * percent / 100];
}

int countEntry(void *context, const char *, const char *, const char *, uint32_t, uint32_t)
{
    ++*static_cast<int *>(context);
    return 0;
}

int64_t historySize()
{
    int64_t last = 0;
    const auto newest = [](void *context, const RKCFG_CHANGE *change) {
        *static_cast<int64_t *>(context) = change->id;
        return 1;
    };
    rkCFGHistory(store, -1, newest, &last);
    return last;
}

} // namespace

void StoreBench::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", m_home.path().toLocal8Bit());
    putAll(0);
    putElement(3, 0);
    save();
}

void StoreBench::cleanupTestCase()
{
    rkCFGClose(store, 1);
}

void StoreBench::oneEdit()
{
    int value = 1000;
    QBENCHMARK
    {
        putElement(3, ++value);
        save();
    }
}

void StoreBench::editBesideSqlite_data()
{
    QTest::addColumn<int>("records");
    QTest::newRow("young") << 0;
    QTest::newRow("full") << 100000;
}

// As the dialog does it: one transaction around everything that the action of the user writes.
void StoreBench::editBesideSqlite()
{
    QFETCH(int, records);
    constexpr int edits = 2000;
    Bare bare(m_home.filePath(QStringLiteral("bare-%1").arg(records)));
    for (int round = 1; historySize() < records; ++round)
        fill(round, bare);
    QVector<double> ours, alone, ratios;
    QElapsedTimer timer;
    for (int edit = 1; edit <= edits; ++edit) {
        timer.start();
        QCOMPARE(rkCFGBegin(store), 0);
        putElement(3, edit + records);
        QCOMPARE(rkCFGEnd(store, 1), 0);
        save();
        ours << milliseconds(timer);
        timer.start();
        bare.begin();
        for (int index = 0; index < valuesPerElement; ++index)
            bare.put(3, index, elementValue(index, edit + records));
        bare.commit();
        bare.sync();
        alone << milliseconds(timer);
        ratios << ours.last() / alone.last();
    }
    const QByteArray key = QByteArray("edit.") + QTest::currentDataTag();
    tell(key + ".ms", percentile(ours, 50));
    tell(key + ".p99", percentile(ours, 99));
    tell(key + ".peer", percentile(alone, 50));
    tell(key + ".peer99", percentile(alone, 99));
    tell(key + ".ratio", percentile(ratios, 50));
}

void StoreBench::plantLoaded()
{
    constexpr int plantChannels = 1000;
    constexpr int plantValues = 116;
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(rkCFGBegin(store), 0);
    for (int channel = 0; channel < plantChannels; ++channel) {
        for (int index = 0; index < plantValues; ++index)
            put(channel, index, "239.77.1." + QByteArray::number(index));
    }
    QCOMPARE(rkCFGEnd(store, 1), 0);
    save();
    tell("plant.load.ms", milliseconds(timer));
    int count = 0;
    timer.start();
    QCOMPARE(rkCFGForEach(store, nullptr, countEntry, &count), 0);
    QVERIFY(count >= plantChannels * plantValues);
    tell("plant.walk.ms", milliseconds(timer));
}

void StoreBench::plantOpened()
{
    QVector<double> times;
    for (int round = 0; round < 11; ++round) {
        rkCFGClose(store, 0);
        QElapsedTimer timer;
        timer.start();
        uint32_t size = 0;
        QCOMPARE(rkCFGValueString(store, path(3).constData(), name(0).constData(), nullptr, &size, 0), 0);
        times << milliseconds(timer);
    }
    tell("plant.open.ms", percentile(times, 50));
}

void StoreBench::nothingChanged()
{
    putElement(3, 1);
    QBENCHMARK
    {
        putElement(3, 1);
        save();
    }
}

void StoreBench::loadedFile()
{
    int round = 0;
    QBENCHMARK
    {
        putAll(++round);
        save();
    }
}

void StoreBench::oneChannelRead()
{
    char buffer[4096];
    QBENCHMARK
    {
        for (int index = 0; index < valuesPerChannel; ++index) {
            uint32_t size = sizeof buffer;
            QCOMPARE(rkCFGValueString(store, path(3).constData(), name(index).constData(), buffer, &size, 0),
                     0);
        }
    }
}

void StoreBench::reopened()
{
    uint32_t size = 0;
    QBENCHMARK
    {
        rkCFGClose(store, 0);
        QCOMPARE(rkCFGValueString(store, path(3).constData(), name(0).constData(), nullptr, &size, 0), 0);
    }
}

QTEST_GUILESS_MAIN(StoreBench)
#include "store_bench.moc"
