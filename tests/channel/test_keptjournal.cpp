// SPDX-License-Identifier: MIT
//
// The file in which what waits for a held store outlives its process.
#include "channel/backlog.h"
#include "channel/configurations.h"
#include "channel/keptjournal.h"
#include "support/store.h"
#include "support/storeholder.h"

#include <csignal>
#include <functional>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

using namespace StoreTest;

// What happens just before the next lock is asked for: as when another process is quicker.
static std::function<void()> beforeLock;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow" // the C library has a function and a structure of this name
extern "C" int flock(int file, int operation)
{
    if (beforeLock)
        std::exchange(beforeLock, nullptr)();
    return static_cast<int>(syscall(SYS_flock, file, operation));
}
#pragma GCC diagnostic pop

namespace {

using Type = StoreChange::Value::Type;

StoreChange textWrite(const QByteArray &name, const QByteArray &before, const QByteArray &after)
{
    StoreChange write;
    write.path = "KWX\\Internal0\\IpConfig";
    write.name = name;
    write.before = {Type::Text, before, 0};
    write.after = {Type::Text, after, 0};
    return write;
}

StoreChange numberWrite(const QByteArray &name, quint32 after)
{
    StoreChange write;
    write.path = "KWX\\Internal0\\IpConfig";
    write.name = name;
    write.after = {Type::Number, QByteArray(), after};
    return write;
}

const char kOneWrite[] = "[{\"configuration\": \"default\", \"writes\": [{\"path\": \"p\", \"name\": \"x\","
                         " \"before\": null, \"after\": 1}]}]";

// What another process does that keeps edits and ends before it can store them.
template<typename Work>
void inAProcessThatEnds(const Work &work)
{
    const pid_t process = fork();
    if (process == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(process, &status, 0), process);
    QCOMPARE(status, 0);
}

} // namespace

class TestKeptJournal : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_store.reset(); }
    void nothingWaitsNoFile();
    void oneFileNobodyElseReads();
    void comesBackAsItWas();
    void whatIsAliveIsLeftAlone();
    void adoptedIsKept();
    void severalInTheirOrder();
    void unfinishedIsCleared();
    void addedToWhatIsThere();
    void aDiskThatIsFull();
    void goneInTheMeantime();
    void aLinkIsNotFollowed();
    void notUnderstood_data();
    void notUnderstood();
    void foreignFilesAreLeftAlone();
    void folderThatIsNotThere();
    void editsOfAProcessThatEnded();
    void whatOthersChangedSinceStays();
    void otherConfigurationsWaitOn();

private:
    QStringList files() const
    {
        return QDir(m_folder).entryList({QStringLiteral(".corvel-kept-*")},
                                        QDir::AllEntries | QDir::Hidden | QDir::System);
    }
    void leave(const QByteArray &content, const QString &name)
    {
        QFile file(m_folder + QStringLiteral("/.corvel-kept-") + name);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    std::unique_ptr<FreshStore> m_store;
    QString m_folder;
    QVector<StoreChange> m_left;
};

void TestKeptJournal::init()
{
    m_store = std::make_unique<FreshStore>();
    m_folder = m_store->folder() + QStringLiteral("/corvel");
    m_left.clear();
    put(0, ChannelValue::ClockDomain, 1);
    commitStore();
}

void TestKeptJournal::nothingWaitsNoFile()
{
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QVERIFY(journal.save(steps));
    QCOMPARE(journal.adopt(&steps), 0);
    QVERIFY(files().isEmpty());
}

void TestKeptJournal::oneFileNobodyElseReads()
{
    KeptJournal journal;
    QVERIFY(journal.save({{QStringLiteral("default"), {numberWrite("ClockDomain", 5)}}}));
    const QStringList first = files();
    QCOMPARE(first.size(), 1);
    struct stat state = {};
    QCOMPARE(stat(QFile::encodeName(m_folder + QLatin1Char('/') + first.first()).constData(), &state), 0);
    QCOMPARE(state.st_mode & 0777, mode_t(0600));
    QVERIFY(journal.save({{QStringLiteral("default"), {numberWrite("ClockDomain", 6)}}}));
    QCOMPARE(files(), first);
    QVERIFY(journal.save({}));
    QVERIFY(files().isEmpty());
}

void TestKeptJournal::comesBackAsItWas()
{
    const QByteArray odd("\"\\\xC3\xA9\xFF\n 239.1.1.1");
    const KeptWrites first{QString::fromUtf8("stud\xC3\xADo"),
                           {textWrite("ClockGrandMaster", odd, QByteArray()), numberWrite("A", 0xffffffff)}};
    const KeptWrites second{QStringLiteral("default"), {textWrite("ClockGrandMaster", QByteArray(), odd)}};
    inAProcessThatEnds([&] { KeptJournal().save({first, second}); });
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 3);
    QCOMPARE(steps.size(), 2);
    QCOMPARE(steps[0].configuration, first.configuration);
    QCOMPARE(steps[0].writes.size(), 2);
    QCOMPARE(steps[0].writes[0].path, first.writes[0].path);
    QCOMPARE(steps[0].writes[0].name, first.writes[0].name);
    QVERIFY(steps[0].writes[0].before == first.writes[0].before);
    QVERIFY(steps[0].writes[0].after == first.writes[0].after);
    QVERIFY(steps[0].writes[1].before.type == Type::Absent);
    QCOMPARE(steps[0].writes[1].after.number, 0xffffffffu);
    QVERIFY(steps[1].writes[0].after == second.writes[0].after);
    QVERIFY(journal.save({}));
}

void TestKeptJournal::whatIsAliveIsLeftAlone()
{
    KeptJournal alive, other;
    QVERIFY(alive.save({{QStringLiteral("default"), {numberWrite("ClockDomain", 5)}}}));
    QVector<KeptWrites> steps;
    QCOMPARE(other.adopt(&steps), 0);
    QCOMPARE(alive.adopt(&steps), 0); // nor its own
    QCOMPARE(files().size(), 1);
}

// Until it is stored; whoever ends in between leaves it to the next one.
void TestKeptJournal::adoptedIsKept()
{
    const QVector<KeptWrites> left{{QStringLiteral("default"), {numberWrite("ClockDomain", 5)}}};
    inAProcessThatEnds([&] { KeptJournal().save(left); });
    const QStringList before = files();
    QVector<KeptWrites> steps;
    inAProcessThatEnds([&] { KeptJournal().adopt(&steps); });
    QCOMPARE(files().size(), 1);
    QVERIFY(files() != before);
    KeptJournal journal;
    QCOMPARE(journal.adopt(&steps), 1);
    QVERIFY(journal.save({}));
}

void TestKeptJournal::severalInTheirOrder()
{
    for (quint32 number : {5, 6, 7}) {
        inAProcessThatEnds([&] {
            KeptJournal().save({{QStringLiteral("default"), {numberWrite("ClockDomain", number)}}});
        });
    }
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 3);
    QCOMPARE(files().size(), 1);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(steps[i].writes.first().after.number, quint32(5 + i));
    QVERIFY(journal.save({}));
}

void TestKeptJournal::unfinishedIsCleared()
{
    leave("[{\"configuration\"", QStringLiteral("1.new"));
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 0);
    QVERIFY(files().isEmpty());
}

void TestKeptJournal::addedToWhatIsThere()
{
    leave(kOneWrite, QStringLiteral("1"));
    KeptJournal journal;
    QVector<KeptWrites> steps{{QStringLiteral("default"), {numberWrite("ClockDomain", 5)}}};
    QCOMPARE(journal.adopt(&steps), 1);
    QCOMPARE(steps.size(), 2);
    QVERIFY(journal.save({}));
}

// What cannot be kept in a file of one's own stays in that of the process that ended.
void TestKeptJournal::aDiskThatIsFull()
{
    leave(kOneWrite, QStringLiteral("1"));
    const QStringList before = files();
    inAProcessThatEnds([] {
        std::signal(SIGXFSZ, SIG_IGN);
        const struct rlimit nothing = {0, 0};
        setrlimit(RLIMIT_FSIZE, &nothing);
        QVector<KeptWrites> steps;
        if (KeptJournal().adopt(&steps) != 1)
            _exit(1);
    });
    QCOMPARE(files(), before);
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 1);
    QVERIFY(journal.save({}));
}

// Its process stored what it held and removed it, after we had opened it.
void TestKeptJournal::goneInTheMeantime()
{
    leave(kOneWrite, QStringLiteral("1"));
    beforeLock = [this] { QFile::remove(m_folder + QStringLiteral("/.corvel-kept-1")); };
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 0);
    QVERIFY(steps.isEmpty() && files().isEmpty());
}

void TestKeptJournal::aLinkIsNotFollowed()
{
    const QString outside = m_store->folder() + QStringLiteral("/outside");
    leave(kOneWrite, QStringLiteral("1"));
    QVERIFY(QFile::rename(m_folder + QStringLiteral("/.corvel-kept-1"), outside));
    QVERIFY(QFile::link(outside, m_folder + QStringLiteral("/.corvel-kept-1")));
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 0);
    QVERIFY(QFile::exists(outside));
    QCOMPARE(files().size(), 1);
}

void TestKeptJournal::notUnderstood_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut") << QByteArray("[{\"configuration\": \"default\", \"wri");
    QTest::newRow("an object") << QByteArray("{}");
    QTest::newRow("bytes") << QByteArray("\0\1\2\xFF", 4);
}

void TestKeptJournal::notUnderstood()
{
    QFETCH(const QByteArray, content);
    leave(content, QStringLiteral("1"));
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 0);
    QCOMPARE(files(), QStringList{QStringLiteral(".corvel-kept-1")});
}

void TestKeptJournal::foreignFilesAreLeftAlone()
{
    QFile::link(QStringLiteral("/etc/passwd"), m_folder + QStringLiteral("/.corvel-kept-link"));
    QCOMPARE(mkfifo(QFile::encodeName(m_folder + QStringLiteral("/.corvel-kept-pipe")).constData(), 0600), 0);
    leave("[{\"configuration\": \"default\", \"writes\": [{\"path\": \"\", \"name\": \"x\", \"after\": 1},"
          "{\"path\": \"p\", \"name\": \"x\", \"after\": null}, 5, []]}, 7, null]",
          QStringLiteral("odd"));
    KeptJournal journal;
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 0);
    QVERIFY(files().contains(QStringLiteral(".corvel-kept-link")));
    QVERIFY(files().contains(QStringLiteral(".corvel-kept-pipe")));
}

void TestKeptJournal::folderThatIsNotThere()
{
    QVERIFY(QDir(m_folder).removeRecursively());
    QFile inTheWay(m_folder);
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    KeptJournal journal;
    QVERIFY(!journal.save({{QStringLiteral("default"), {numberWrite("ClockDomain", 5)}}}));
    QVector<KeptWrites> steps;
    QCOMPARE(journal.adopt(&steps), 0);
}

void TestKeptJournal::editsOfAProcessThatEnded()
{
    {
        const StoreHolder holder;
        inAProcessThatEnds([] {
            const KeptStep step(configurationInUse());
            put(0, ChannelValue::ClockDomain, 7);
            put(0, ChannelValue::ClockGrandMaster, QStringLiteral("00:11"));
        });
        QCOMPARE(adoptBacklog(), 2);
        QCOMPARE(number(0, ChannelValue::ClockDomain), 7u); // as if it were stored
        QVERIFY(!storeBacklog(&m_left));
        QCOMPARE(files().size(), 1);
    }
    QVERIFY(storeBacklog(&m_left));
    QVERIFY(files().isEmpty());
    QCOMPARE(backlogSize(), 0);
    QCOMPARE(number(0, ChannelValue::ClockDomain), 7u);
    QCOMPARE(text(0, ChannelValue::ClockGrandMaster), QStringLiteral("00:11"));
}

void TestKeptJournal::whatOthersChangedSinceStays()
{
    inAProcessThatEnds([] {
        const KeptStep step(configurationInUse());
        put(0, ChannelValue::ClockDomain, 7);
        put(0, ChannelValue::ClockGrandMaster, QStringLiteral("00:11"));
    });
    put(0, ChannelValue::ClockDomain, 99);
    commitStore();
    QCOMPARE(adoptBacklog(), 2);
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(m_left.size(), 1);
    QCOMPARE(number(0, ChannelValue::ClockDomain), 99u);
    QCOMPARE(text(0, ChannelValue::ClockGrandMaster), QStringLiteral("00:11"));
    QVERIFY(files().isEmpty());
}

void TestKeptJournal::otherConfigurationsWaitOn()
{
    inAProcessThatEnds([] {
        const KeptStep step(QStringLiteral("van"));
        put(0, ChannelValue::ClockDomain, 7);
    });
    QCOMPARE(adoptBacklog(), 1);
    QVERIFY(!backlogWaits());
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 1);
    QCOMPARE(files().size(), 1);
    useConfiguration(QStringLiteral("van"));
    QVERIFY(storeBacklog(&m_left));
    QCOMPARE(backlogSize(), 0);
    QVERIFY(files().isEmpty());
}

QTEST_GUILESS_MAIN(TestKeptJournal)
#include "test_keptjournal.moc"
