// SPDX-License-Identifier: MIT
// What the store costs the user interface: an edit, a loaded file, the first call of a process, each
// beside SQLite alone doing the same work without a record of changes.
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

    // One field changed, all values of the element handed over, saved. Goal: 0.5 ms.
    void oneEdit();
    // The same edits by turns in the store and in SQLite alone. Goals: median 0.35 ms, ratio 1.3.
    void editBesideSqlite_data();
    void editBesideSqlite();
    // The same with nothing changed.
    void nothingChanged();
    // A settings file: 10 channels of 60 values, all changed, one save. Goal: 30 ms.
    void loadedFile();
    // 1,000 channels with 8 flows as one transaction, and their walk. Goals: 2 s, 0.3 s.
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

// The same table and settings without the library around them.
class Bare {
public:
    explicit Bare(const QString &file)
    {
        sqlite3_open(QFile::encodeName(file).constData(), &m_db);
        for (const char *sql :
             {"PRAGMA page_size=1024", "PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL",
              "CREATE TABLE setting (path TEXT NOT NULL COLLATE NOCASE, name TEXT NOT NULL, type INTEGER "
              "NOT NULL, value NOT NULL, PRIMARY KEY (path, name)) WITHOUT ROWID"})
            sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr);
        prepare("SELECT value FROM setting WHERE path = ?1 AND name = ?2", &m_select);
        prepare("INSERT INTO setting VALUES (?1, ?2, 1, ?3) ON CONFLICT DO UPDATE SET value = excluded.value",
                &m_upsert);
    }
    ~Bare()
    {
        sqlite3_finalize(m_select);
        sqlite3_finalize(m_upsert);
        sqlite3_close(m_db);
    }
    Bare(const Bare &) = delete;
    Bare &operator=(const Bare &) = delete;

    void put(int channel, int index, const QByteArray &text)
    {
        bind(m_select, path(channel), name(index));
        const bool same = sqlite3_step(m_select) == SQLITE_ROW && text == columnText();
        sqlite3_reset(m_select);
        if (same)
            return;
        bind(m_upsert, path(channel), name(index));
        sqlite3_bind_text(m_upsert, 3, text.constData(), text.size(), SQLITE_TRANSIENT);
        sqlite3_step(m_upsert);
        sqlite3_reset(m_upsert);
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
        QCOMPARE(sqlite3_prepare_v2(m_db, sql, -1, statement, nullptr), SQLITE_OK);
    }
    QByteArray columnText() const
    {
        return QByteArray(static_cast<const char *>(sqlite3_column_blob(m_select, 0)),
                          sqlite3_column_bytes(m_select, 0));
    }
    static void bind(sqlite3_stmt *statement, const QByteArray &path, const QByteArray &name)
    {
        sqlite3_bind_text(statement, 1, path.constData(), path.size(), SQLITE_TRANSIENT);
        sqlite3_bind_text(statement, 2, name.constData(), name.size(), SQLITE_TRANSIENT);
    }

    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_select = nullptr;
    sqlite3_stmt *m_upsert = nullptr;
};

double milliseconds(QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// What this process has computed; other programs on the machine do not show in it.
double cpuMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
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
    QTest::newRow("young history") << 0;
    QTest::newRow("full history") << 100000;
}

void StoreBench::editBesideSqlite()
{
    QFETCH(int, records);
    constexpr int edits = 2000;
    for (int round = 1; historySize() < records; ++round) {
        QCOMPARE(rkCFGBegin(store), 0);
        putAll(1000 + round);
        QCOMPARE(rkCFGEnd(store, 1), 0);
    }
    Bare bare(m_home.filePath(QStringLiteral("bare-%1").arg(records)));
    for (int index = 0; index < valuesPerElement; ++index)
        bare.put(3, index, elementValue(index, 0));
    QVector<double> ours;
    QVector<double> alone;
    double ourCpu = 0;
    double aloneCpu = 0;
    QElapsedTimer timer;
    for (int edit = 1; edit <= edits; ++edit) {
        const double start = cpuMilliseconds();
        timer.start();
        putElement(3, edit + records);
        save();
        ours << milliseconds(timer);
        const double between = cpuMilliseconds();
        timer.start();
        for (int index = 0; index < valuesPerElement; ++index)
            bare.put(3, index, elementValue(index, edit));
        bare.sync();
        alone << milliseconds(timer);
        ourCpu += between - start;
        aloneCpu += cpuMilliseconds() - between;
    }
    qInfo("edit: mean cpu %.3f ms; SQLite alone: %.3f ms", ourCpu / edits, aloneCpu / edits);
    qInfo("edit: median %.3f ms, p99 %.3f ms; SQLite alone: %.3f, %.3f ms; ratio %.2f", percentile(ours, 50),
          percentile(ours, 99), percentile(alone, 50), percentile(alone, 99),
          percentile(ours, 50) / percentile(alone, 50));
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
    qInfo("%d values in one transaction: %.0f ms", plantChannels * plantValues, milliseconds(timer));
    int count = 0;
    timer.start();
    QCOMPARE(rkCFGForEach(store, nullptr, countEntry, &count), 0);
    qInfo("walk over %d values: %.0f ms", count, milliseconds(timer));
}

void StoreBench::plantOpened()
{
    for (int round = 0; round < 5; ++round) {
        rkCFGClose(store, 0);
        QElapsedTimer timer;
        timer.start();
        uint32_t size = 0;
        QCOMPARE(rkCFGValueString(store, path(3).constData(), name(0).constData(), nullptr, &size, 0), 0);
        qInfo("open with %lld recorded changes: %.1f ms", static_cast<long long>(historySize()),
              milliseconds(timer));
    }
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
