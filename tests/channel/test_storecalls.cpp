// SPDX-License-Identifier: MIT
//
// The optional calls of the store, on the real library and a real store on disk.
#include "channel/channelstore.h"
#include "channel/storecalls.h"
#include "channel/storerecord.h"
#include "rkcfg.h"
#include "support/store.h"

#include <QtTest>

#include <cstddef>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

// The record is the library's own, member by member.
#define SAME_PLACE(ours, theirs) static_assert(offsetof(StoreRecord, ours) == offsetof(RKCFG_CHANGE, theirs))
SAME_PLACE(id, id);
SAME_PLACE(timeUs, time_us);
SAME_PLACE(program, program);
SAME_PLACE(user, user);
SAME_PLACE(keyPath, keyPath);
SAME_PLACE(oldType, oldType);
SAME_PLACE(newText, newText);
SAME_PLACE(newNumber, newNumber);
SAME_PLACE(undoes, undoes);
static_assert(sizeof(StoreRecord) == sizeof(RKCFG_CHANGE));

namespace {

const char *const kName = ChannelValue::ClockGrandMaster;

void writeByOther(const QString &value)
{
    const pid_t child = fork();
    if (child == 0) {
        setCfgValue(kName, value, true, 0);
        commitStore();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
}

QList<StoreChange> history()
{
    QList<StoreChange> changes;
    walkHistory(-1, [&](const StoreChange &change) {
        changes.append(change);
        return true;
    });
    return changes;
}

} // namespace

class TestStoreCalls : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup() { m_store.reset(); }
    void newsOfOthersOnly();
    void transactionIsOneStep();
    void droppedTransactionLeavesNothing();
    void innerTransactionStandsInTheOuter();
    void historyTellsWhatAndWhy();
    void longLabelsAreCut();
    void takenBack();
    void conflictsAreShownAndLeft();

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestStoreCalls::newsOfOthersOnly()
{
    quint64 mark = 0;
    QVERIFY(storeTellsNews());
    QCOMPARE(storeNews(&mark), StoreNews::Others); // the first answer
    setCfgValue(kName, QStringLiteral("ours"), true, 0);
    commitStore();
    QCOMPARE(storeNews(&mark), StoreNews::None);
    writeByOther(QStringLiteral("theirs"));
    QCOMPARE(storeNews(&mark), StoreNews::Others);
    QCOMPARE(storeNews(&mark), StoreNews::None);
}

void TestStoreCalls::transactionIsOneStep()
{
    StoreTransaction step;
    QVERIFY(step.isOpen());
    setCfgValue(kName, QStringLiteral("inside"), true, 0);
    QCOMPARE(StoreTest::text(0, kName), QStringLiteral("inside"));
    QVERIFY(step.keep());
    QVERIFY(!step.isOpen());
    QCOMPARE(StoreTest::text(0, kName), QStringLiteral("inside"));
}

void TestStoreCalls::droppedTransactionLeavesNothing()
{
    {
        StoreTransaction step;
        setCfgValue(kName, QStringLiteral("inside"), true, 0);
    }
    QCOMPARE(StoreTest::text(0, kName), QString());
}

void TestStoreCalls::innerTransactionStandsInTheOuter()
{
    StoreTransaction outer;
    {
        StoreTransaction inner;
        QVERIFY(!inner.isOpen());
        setCfgValue(kName, QStringLiteral("inside"), true, 0);
        QVERIFY(inner.keep());
    }
    QVERIFY(outer.keep());
    QCOMPARE(StoreTest::text(0, kName), QStringLiteral("inside"));
}

void TestStoreCalls::historyTellsWhatAndWhy()
{
    QVERIFY(storeHasHistory());
    setCfgValue(kName, QStringLiteral("before"), true, 3);
    commitStore();
    labelNextBatch(QStringLiteral("a \u03bc reason"));
    setCfgValue(kName, QStringLiteral("after"), true, 3);
    commitStore();
    const QList<StoreChange> changes = history();
    QCOMPARE(changes.size(), 2);
    const StoreChange &last = changes.first();
    QCOMPARE(last.label, QStringLiteral("a \u03bc reason"));
    QCOMPARE(last.pid, static_cast<quint32>(getpid()));
    QCOMPARE(last.path, channelIpKeyName(3).toLatin1());
    QCOMPARE(last.name, QByteArray(kName));
    QCOMPARE(last.before.text, QByteArray("before"));
    QCOMPARE(last.after.text, QByteArray("after"));
    QVERIFY(last.batch != changes.last().batch);
    QVERIFY(changes.last().before.type == StoreChange::Value::Type::Absent);
}

void TestStoreCalls::longLabelsAreCut()
{
    labelNextBatch(QString(300, QChar(0x03bc)));
    setCfgValue(kName, QStringLiteral("x"), true, 0);
    commitStore();
    QCOMPARE(history().first().label, QString(100, QChar(0x03bc)));
}

void TestStoreCalls::takenBack()
{
    setCfgValue(kName, QStringLiteral("first"), true, 0);
    commitStore();
    setCfgValue(kName, QStringLiteral("second"), true, 0);
    commitStore();
    qint64 made = 0;
    QCOMPARE(takeBatchBack(history().first().batch, false, false, nullptr, &made), 0);
    QCOMPARE(StoreTest::text(0, kName), QStringLiteral("first"));
    QCOMPARE(takeBatchBack(made, false, false, nullptr, nullptr), 0);
    QCOMPARE(StoreTest::text(0, kName), QStringLiteral("second"));
    QCOMPARE(takeBatchBack(987654, false, false, nullptr, nullptr), -1);
}

void TestStoreCalls::conflictsAreShownAndLeft()
{
    setCfgValue(kName, QStringLiteral("first"), true, 0);
    commitStore();
    const qint64 batch = history().first().batch;
    setCfgValue(kName, QStringLiteral("second"), true, 0);
    commitStore();
    QList<StoreChange> conflicts;
    const auto note = [&](const StoreChange &conflict) {
        conflicts.append(conflict);
        return true;
    };
    QCOMPARE(takeBatchBack(batch, false, true, note, nullptr), 1);
    QCOMPARE(conflicts.size(), 1);
    QCOMPARE(conflicts.first().after.text, QByteArray("second"));
    QCOMPARE(StoreTest::text(0, kName), QStringLiteral("second"));
}

QTEST_GUILESS_MAIN(TestStoreCalls)

#include "test_storecalls.moc"
