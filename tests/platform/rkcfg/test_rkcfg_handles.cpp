// SPDX-License-Identifier: MIT
// Named configurations through handles of their own; deleting and renaming them.
#include "changes.h"

#include <QFile>
#include <QtTest>
#include <sys/wait.h>
#include <unistd.h>

class TestRkcfgHandles : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void opensBesideTheDefault();
    void mustExistOrIsMade();
    void strangeNamesAreRefused();
    void closedHandleIsRefused();
    void everyCallTakesIt();
    void saveTakesItsOwnNameOnly();
    void twoHandlesOfOneConfiguration();
    void childAfterForkUsesIt();
    void deletedIsGone();
    void deletedIsNotMadeAnewByAHandle();
    void defaultIsNeitherDeletedNorRenamed();
    void busyIsRefused();
    void renamedKeepsAll();
    void renamedTakesTheLogAlong();
    void renameRefusesWhatIsThere();
    void damagedIsNotRenamed();
    void copiedIsWhole();
    void copyOfTheDefaultTakesItsLogAlong();
    void copyRefusesWhatIsThere();
    void copyWaitsForNobody();
    void damagedIsNotCopied();
    void whatAKilledCopyLeftIsInNobodysWay();
    void versionIsTold();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

bool put(void *handle, const char *name, uint32_t value)
{
    return rkCFGValueDword(handle, "p", name, &value, 1) != 0;
}

std::optional<uint32_t> get(void *handle, const char *name)
{
    uint32_t value = 0;
    if (rkCFGValueDword(handle, "p", name, &value, 0) != 0)
        return std::nullopt;
    return value;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// A configuration with one value in it, closed.
void make(const char *name, uint32_t value)
{
    void *const handle = rkCFGOpen(name, 1);
    put(handle, "n", value);
    rkCFGClose(handle, 1);
}

} // namespace

void TestRkcfgHandles::opensBesideTheDefault()
{
    putNumber("p", "n", 1);
    void *const night = rkCFGOpen("night", 1);
    QVERIFY(night != nullptr && night != store);
    QCOMPARE(get(night, "n"), std::nullopt);
    QVERIFY(put(night, "n", 2));
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(rkCFGSave(night, nullptr, 0), 0);
    QVERIFY(!QFile::exists(m_home->path(QStringLiteral("default-config"))));
    QCOMPARE(rkCFGSetDefaultName("night"), 0);
    QCOMPARE(number("p", "n"), 2u);
    QCOMPARE(get(night, "n"), 2u);
    QCOMPARE(rkCFGSetDefaultName("default"), 0);
    QCOMPARE(get(night, "n"), 2u);
    QCOMPARE(rkCFGClose(night, 0), 0);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgHandles::mustExistOrIsMade()
{
    QCOMPARE(rkCFGOpen("night", 0), nullptr);
    QCOMPARE(takeLog().size(), 1);
    QCOMPARE(m_home->files(QStringLiteral("night*")), QStringList());
    make("night", 3);
    void *const night = rkCFGOpen("night", 0);
    QCOMPARE(get(night, "n"), 3u);
    rkCFGClose(night, 0);
}

void TestRkcfgHandles::strangeNamesAreRefused()
{
    for (const char *name : {"", ".a", "a/b", "a\n", "Gr\xF6"})
        QCOMPARE(rkCFGOpen(name, 1), nullptr);
    QCOMPARE(rkCFGOpen(nullptr, 1), nullptr);
    QVERIFY(rkCFGDelete(nullptr) != 0);
    QVERIFY(rkCFGDelete("../a") != 0);
    QVERIFY(rkCFGRename("a", nullptr) != 0);
    QVERIFY(rkCFGRename("a", "a/b") != 0);
    QVERIFY(rkCFGCopy(nullptr, "a") != 0);
    QVERIFY(rkCFGCopy("a", nullptr) != 0);
    QVERIFY(rkCFGCopy("a", ".b") != 0);
    QCOMPARE(m_home->files(QStringLiteral("*.rkcfg")), QStringList());
}

void TestRkcfgHandles::closedHandleIsRefused()
{
    void *const one = rkCFGOpen("one", 1);
    QCOMPARE(rkCFGClose(one, 0), 0);
    QVERIFY(rkCFGClose(one, 0) != 0);
    QVERIFY(!put(one, "n", 1));
    QCOMPARE(get(one, "n"), std::nullopt);
    // The next handle is another one.
    void *const two = rkCFGOpen("two", 1);
    QVERIFY(two != one);
    QVERIFY(!put(one, "n", 1));
    rkCFGClose(two, 0);
}

void TestRkcfgHandles::everyCallTakesIt()
{
    void *const night = rkCFGOpen("night", 1);
    uint64_t mark = 0;
    QCOMPARE(rkCFGChanged(night, &mark), 1);
    QCOMPARE(rkCFGLabel(night, "by night"), 0);
    QCOMPARE(rkCFGBegin(night), 0);
    // Each store has its own transaction.
    char text[] = "x";
    uint32_t size = 2;
    QVERIFY(rkCFGValueString(night, "p", "t", text, &size, 1) != 0);
    QCOMPARE(rkCFGEnd(night, 1), 0);
    QVERIFY(put(night, "n", 1));
    QVERIFY(rkCFGRemove(night, "p", "n") != 0);
    QCOMPARE(rkCFGSave(night, nullptr, 0), 0);
    QCOMPARE(rkCFGChanged(night, &mark), 0);
    QCOMPARE(values(night), words("p|t|'x'"));
    QCOMPARE(changes(night), words("p|t|->'x' p|n|->1 p|n|1>-"));
    int64_t batch = 0;
    QCOMPARE(rkCFGTakeBack(night, 1, 0, 0, nullptr, nullptr, &batch), 0);
    QCOMPARE(batch, 4);
    QCOMPARE(values(night), QStringList());
    QCOMPARE(changes(), QStringList());
    QCOMPARE(rkCFGClose(night, 1), 0);
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgHandles::saveTakesItsOwnNameOnly()
{
    void *const night = rkCFGOpen("night", 1);
    QCOMPARE(rkCFGSave(night, "night", 0), 0);
    QVERIFY(rkCFGSave(night, "default", 0) != 0);
    rkCFGClose(night, 0);
}

void TestRkcfgHandles::twoHandlesOfOneConfiguration()
{
    void *const first = rkCFGOpen("night", 1);
    void *const second = rkCFGOpen("night", 0);
    QVERIFY(first != second);
    uint64_t mark = 0;
    rkCFGChanged(first, &mark);
    QVERIFY(put(second, "n", 1));
    QCOMPARE(get(first, "n"), 1u);
    QCOMPARE(rkCFGChanged(first, &mark), 1);
    QCOMPARE(rkCFGClose(second, 1), 0);
    QVERIFY(put(first, "n", 2));
    QCOMPARE(rkCFGClose(first, 1), 0);
}

void TestRkcfgHandles::childAfterForkUsesIt()
{
    void *const night = rkCFGOpen("night", 1);
    put(night, "n", 1);
    Worker worker;
    const pid_t child = fork();
    if (child == 0)
        _exit(get(night, "n") == 1u && put(night, "n", 2) ? 0 : 1);
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QCOMPARE(get(night, "n"), 2u);
    rkCFGClose(night, 0);
}

void TestRkcfgHandles::deletedIsGone()
{
    make("night", 1);
    QVERIFY(m_home->files(QStringLiteral("night*")).size() >= 2);
    QCOMPARE(rkCFGDelete("night"), 0);
    QCOMPARE(m_home->files(QStringLiteral("night*")), QStringList());
    QVERIFY(rkCFGDelete("night") != 0);
    make("night", 2);
    void *const night = rkCFGOpen("night", 0);
    QCOMPARE(values(night), words("p|n|2"));
    rkCFGClose(night, 0);
}

void TestRkcfgHandles::deletedIsNotMadeAnewByAHandle()
{
    void *const night = rkCFGOpen("night", 1);
    put(night, "n", 1);
    QCOMPARE(tool({QStringLiteral("configs")}).out, QByteArray("default\nnight\n"));
    QCOMPARE(rkCFGDelete("night"), 0);
    QVERIFY(!put(night, "n", 2));
    QCOMPARE(get(night, "n"), std::nullopt);
    QVERIFY(rkCFGSave(night, nullptr, 0) != 0);
    QCOMPARE(m_home->files(QStringLiteral("night*")), QStringList());
    // Somebody makes it again: then it is that one.
    make("night", 3);
    QCOMPARE(get(night, "n"), 3u);
    rkCFGClose(night, 0);
}

void TestRkcfgHandles::defaultIsNeitherDeletedNorRenamed()
{
    putNumber("p", "n", 1);
    QVERIFY(rkCFGDelete("default") != 0);
    QVERIFY(rkCFGRename("default", "other") != 0);
    QCOMPARE(number("p", "n"), 1u);
    make("night", 1);
    rkCFGSetDefaultName("night");
    QVERIFY(rkCFGDelete("night") != 0);
    QCOMPARE(rkCFGDelete("default"), 0);
}

void TestRkcfgHandles::busyIsRefused()
{
    putNumber("p", "n", 1);
    make("night", 1);
    Worker worker;
    QCOMPARE(worker.ask("begin"), QByteArray("0"));
    QVERIFY(rkCFGDelete("night") != 0);
    QVERIFY(rkCFGRename("night", "day") != 0);
    QCOMPARE(worker.ask("end 1"), QByteArray("0"));
    QCOMPARE(rkCFGRename("night", "day"), 0);
    QCOMPARE(rkCFGDelete("day"), 0);
}

void TestRkcfgHandles::renamedKeepsAll()
{
    make("night", 1);
    make("night", 2);
    QCOMPARE(rkCFGRename("night", "day"), 0);
    QCOMPARE(m_home->files(QStringLiteral("night*")), QStringList());
    QVERIFY(QFile::exists(m_home->database(QStringLiteral("day")) + QStringLiteral(".good")));
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(values(day), words("p|n|2"));
    QCOMPARE(changes(day), words("p|n|->1 p|n|1>2"));
    QVERIFY(put(day, "n", 3));
    rkCFGClose(day, 1);
    QCOMPARE(Direct(m_home->database(QStringLiteral("day"))).ask("PRAGMA integrity_check"), QByteArray("ok"));
    QVERIFY(rkCFGRename("night", "day") != 0);
}

void TestRkcfgHandles::renamedTakesTheLogAlong()
{
    Worker worker;
    worker.ask("default night");
    worker.ask("setn p n 1");
    worker.ask("default default");
    worker.ask("default night");
    worker.ask("setn p n 2");
    worker.kill();
    QCOMPARE(rkCFGSetDefaultName("default"), 0);
    QVERIFY(QFile::exists(m_home->database(QStringLiteral("night")) + QStringLiteral("-wal")));
    QCOMPARE(rkCFGRename("night", "day"), 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(get(day, "n"), 2u);
    rkCFGClose(day, 0);
    QCOMPARE(m_home->files(QStringLiteral("night*")), QStringList());
}

void TestRkcfgHandles::renameRefusesWhatIsThere()
{
    make("night", 1);
    make("day", 2);
    QVERIFY(rkCFGRename("night", "day") != 0);
    QVERIFY(rkCFGRename("night", "night") != 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(get(day, "n"), 2u);
    rkCFGClose(day, 0);
    QVERIFY(rkCFGRename("none", "other") != 0);
    QCOMPARE(m_home->files(QStringLiteral("other*")), QStringList());
}

void TestRkcfgHandles::damagedIsNotRenamed()
{
    make("night", 1);
    const QByteArray damage = noise(5000, 3);
    overwrite(m_home->database(QStringLiteral("night")), damage);
    QVERIFY(rkCFGRename("night", "day") != 0);
    QCOMPARE(content(m_home->database(QStringLiteral("night"))), damage);
    QCOMPARE(m_home->files(QStringLiteral("day*")), QStringList());
}

void TestRkcfgHandles::copiedIsWhole()
{
    make("night", 1);
    make("night", 2);
    void *const night = rkCFGOpen("night", 0);
    QCOMPARE(rkCFGSetNote(night, "owner", "key", "note", 4), 0);
    QCOMPARE(rkCFGCopy("night", "day"), 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(values(day), words("p|n|2"));
    QCOMPARE(changes(day), words("p|n|->1 p|n|1>2"));
    uint32_t size = 0;
    QVERIFY(rkCFGNote(day, "owner", "key", nullptr, &size) != 0); // it speaks of the other one
    QCOMPARE(rkCFGNote(night, "owner", "key", nullptr, &size), 0);
    // Two configurations from now on.
    QVERIFY(put(day, "n", 3));
    QVERIFY(put(night, "n", 4));
    QCOMPARE(get(day, "n"), 3u);
    QCOMPARE(get(night, "n"), 4u);
    rkCFGClose(day, 1);
    rkCFGClose(night, 1);
    QCOMPARE(Direct(m_home->database(QStringLiteral("day"))).ask("PRAGMA integrity_check"), QByteArray("ok"));
    QCOMPARE(m_home->files(QStringLiteral("*.new*")), QStringList());
}

void TestRkcfgHandles::copyOfTheDefaultTakesItsLogAlong()
{
    Worker worker;
    worker.ask("setn p n 1");
    worker.ask("setn p n 2");
    worker.kill();
    QVERIFY(QFile::exists(m_home->database() + QStringLiteral("-wal")));
    QCOMPARE(rkCFGCopy("default", "day"), 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(get(day, "n"), 2u);
    rkCFGClose(day, 0);
    QCOMPARE(number("p", "n"), 2u);
}

void TestRkcfgHandles::copyRefusesWhatIsThere()
{
    make("night", 1);
    make("day", 2);
    QVERIFY(rkCFGCopy("night", "day") != 0);
    QVERIFY(rkCFGCopy("night", "night") != 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(get(day, "n"), 2u);
    rkCFGClose(day, 0);
    QVERIFY(rkCFGCopy("none", "other") != 0);
    QCOMPARE(m_home->files(QStringLiteral("other*")), QStringList());
}

// Neither another process's transaction nor one of this process ends up in a copy by half.
void TestRkcfgHandles::copyWaitsForNobody()
{
    make("night", 1);
    Worker worker;
    QCOMPARE(worker.ask("begin"), QByteArray("0"));
    QVERIFY(rkCFGCopy("night", "day") != 0);
    QCOMPARE(worker.ask("end 1"), QByteArray("0"));
    putNumber("p", "n", 5);
    QCOMPARE(rkCFGBegin(store), 0);
    QVERIFY(rkCFGCopy("night", "day") != 0);
    QCOMPARE(rkCFGEnd(store, 1), 0);
    QCOMPARE(m_home->files(QStringLiteral("day*")), QStringList());
    QCOMPARE(rkCFGCopy("night", "day"), 0);
}

void TestRkcfgHandles::damagedIsNotCopied()
{
    make("night", 1);
    const QByteArray damage = noise(5000, 3);
    overwrite(m_home->database(QStringLiteral("night")), damage);
    QVERIFY(rkCFGCopy("night", "day") != 0);
    QCOMPARE(content(m_home->database(QStringLiteral("night"))), damage);
    QCOMPARE(m_home->files(QStringLiteral("day*")), QStringList());
}

void TestRkcfgHandles::whatAKilledCopyLeftIsInNobodysWay()
{
    make("night", 1);
    overwrite(m_home->database(QStringLiteral("day")) + QStringLiteral(".new"), noise(5000, 4));
    QCOMPARE(tool({QStringLiteral("configs")}).out, QByteArray("default\nnight\n"));
    QCOMPARE(rkCFGCopy("night", "day"), 0);
    void *const day = rkCFGOpen("day", 0);
    QCOMPARE(get(day, "n"), 1u);
    rkCFGClose(day, 0);
    QCOMPARE(m_home->files(QStringLiteral("*.new*")), QStringList());
}

void TestRkcfgHandles::versionIsTold()
{
    QCOMPARE(rkCFGVersion(), "2.2");
}

QTEST_GUILESS_MAIN(TestRkcfgHandles)
#include "test_rkcfg_handles.moc"
