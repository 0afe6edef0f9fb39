// SPDX-License-Identifier: MIT
//
// Single changes put together to batches, and batches to the steps that a person takes back.
#include "channel/storehistory.h"
#include "support/store.h"

#include <QtTest>

#include <memory>
#include <unistd.h>

namespace {

constexpr qint64 kSecond = 1000000;

// A batch of this process with one change of one value.
StoreBatch batch(qint64 number, const char *name, qint64 timeUs)
{
    StoreChange change;
    change.batch = number;
    change.path = "KWX\\Internal0\\IpConfig";
    change.name = name;
    change.timeUs = timeUs;
    change.pid = static_cast<quint32>(getpid());
    return {change, false, {change}};
}

StoreBatch takeBack(qint64 number, qint64 undone, const QString &label)
{
    StoreBatch made = batch(number, "Port", number * kSecond);
    made.head.undoes = undone;
    made.head.label = label;
    return made;
}

QVector<qint64> numbers(const QVector<StoreBatch> &batches)
{
    QVector<qint64> found;
    for (const StoreBatch &one : batches)
        found.append(one.head.batch);
    return found;
}

QString textBefore(const StoreChange &change)
{
    return QString::fromUtf8(change.before.text);
}

} // namespace

class TestStoreHistory : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup() { m_store.reset(); }
    void nothingIsNoStep();
    void oneChangeForEachValueOfABatch();
    void takenBackIsMarked();
    void noMoreThanAskedFor();
    void typingIsOneStep();
    void whatEndsTyping_data();
    void whatEndsTyping();
    void othersAndTakenBackAreNoStep();
    void takeBacksOfOneCommandArePutBackTogether();
    void aPutBackIsNotPutBack();

private:
    std::unique_ptr<FreshStore> m_store;
};

void TestStoreHistory::nothingIsNoStep()
{
    QVERIFY(storeBatches(100).isEmpty());
    QVERIFY(lastStep({}).isEmpty());
    QVERIFY(lastStepTakenBack({}).isEmpty());
}

// From before the batch to after it, the newest batch first.
void TestStoreHistory::oneChangeForEachValueOfABatch()
{
    StoreTest::put(0, "Name", QStringLiteral("first"));
    commitStore();
    StoreTest::put(0, "Name", QStringLiteral("second"));
    StoreTest::put(0, "Name", QStringLiteral("third"));
    StoreTest::put(1, "Name", QStringLiteral("elsewhere"));
    commitStore();
    const QVector<StoreBatch> batches = storeBatches(100);
    QCOMPARE(batches.size(), 2);
    QCOMPARE(batches[0].changes.size(), 2);
    const StoreChange &name = batches[0].changes.last();
    QCOMPARE(textBefore(name), QStringLiteral("first"));
    QCOMPARE(name.after.text, QByteArray("third"));
    QCOMPARE(batches[1].changes.first().before.type, StoreChange::Value::Type::Absent);
}

void TestStoreHistory::takenBackIsMarked()
{
    StoreTest::put(0, "Name", QStringLiteral("first"));
    commitStore();
    const qint64 first = storeBatches(1).first().head.batch;
    qint64 second = 0;
    QCOMPARE(takeBatchBack(first, false, false, nullptr, &second), 0);
    QVERIFY(storeBatches(100).last().isTakenBack);
    QVERIFY(!storeBatches(100).first().isTakenBack);
    QCOMPARE(takeBatchBack(second, false, false, nullptr, nullptr), 0);
    const QVector<StoreBatch> batches = storeBatches(100);
    QVERIFY(batches[1].isTakenBack);
    QVERIFY(!batches.last().isTakenBack); // it holds again
}

void TestStoreHistory::noMoreThanAskedFor()
{
    for (quint32 i = 1; i <= 5; ++i) {
        StoreTest::put(0, "Port", i);
        commitStore();
    }
    QCOMPARE(storeBatches(3).size(), 3);
}

void TestStoreHistory::typingIsOneStep()
{
    const QVector<StoreBatch> keys{batch(3, "Port", 5 * kSecond), batch(2, "Port", 4 * kSecond),
                                   batch(1, "Port", 2 * kSecond)};
    QCOMPARE(numbers(lastStep(keys)), (QVector<qint64>{3, 2, 1}));
}

void TestStoreHistory::whatEndsTyping_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<qint64>("timeUs");
    QTest::addColumn<QString>("label");
    QTest::newRow("another value") << QByteArray("Address") << qint64(9 * kSecond) << QString();
    QTest::newRow("a while before") << QByteArray("Port") << qint64(5 * kSecond) << QString();
    QTest::newRow("a command") << QByteArray("Port") << qint64(9 * kSecond) << QStringLiteral("Load File x");
}

void TestStoreHistory::whatEndsTyping()
{
    QFETCH(QByteArray, name);
    QFETCH(qint64, timeUs);
    QFETCH(QString, label);
    StoreBatch before = batch(1, name.constData(), timeUs);
    before.head.label = label;
    QCOMPARE(numbers(lastStep({batch(2, "Port", 10 * kSecond), before})), QVector<qint64>{2});
}

void TestStoreHistory::othersAndTakenBackAreNoStep()
{
    StoreBatch others = batch(5, "Port", 5 * kSecond);
    ++others.head.pid;
    StoreBatch takenBack = batch(3, "Port", 3 * kSecond);
    takenBack.isTakenBack = true;
    const QVector<StoreBatch> batches{others, takeBack(4, 3, QString()), takenBack, batch(1, "Port", 0)};
    QCOMPARE(numbers(lastStep(batches)), QVector<qint64>{1});
}

void TestStoreHistory::takeBacksOfOneCommandArePutBackTogether()
{
    const QString label = QStringLiteral("take back #2: Port");
    const QVector<StoreBatch> batches{batch(6, "Port", 6 * kSecond), takeBack(5, 1, label),
                                      takeBack(4, 2, label), takeBack(3, 0, QString())};
    QCOMPARE(numbers(lastStepTakenBack(batches)), (QVector<qint64>{5, 4}));
    const QVector<StoreBatch> two{takeBack(5, 1, QStringLiteral("another")), takeBack(4, 2, label)};
    QCOMPARE(numbers(lastStepTakenBack(two)), QVector<qint64>{5});
}

// It is a take-back of a take-back: what it brought can be taken back, and no more.
void TestStoreHistory::aPutBackIsNotPutBack()
{
    StoreBatch taken = takeBack(2, 1, QStringLiteral("take back #1"));
    taken.isTakenBack = true;
    const QVector<StoreBatch> batches{takeBack(3, 2, QStringLiteral("put back #1")), taken,
                                      batch(1, "Port", 0)};
    QVERIFY(lastStepTakenBack(batches).isEmpty());
    QCOMPARE(numbers(lastStep(batches)), QVector<qint64>{1});
}

QTEST_GUILESS_MAIN(TestStoreHistory)
#include "test_storehistory.moc"
