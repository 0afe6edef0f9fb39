// SPDX-License-Identifier: MIT
//
// A configuration of the real store as a replica: what is applied, remembered, refused and signed.
#include "fleet/keypath.h"
#include "fleet/storenotes.h"
#include "fleet/storereplica.h"
#include "ops/history.h"
#include "rkcfg.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace fleet;

class TestFleetReplica : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readsPathsAsDocuments();
    void appliesAsOneLabelledBatch();
    void takesAwayWhatIsNotInTheDocument();
    void leavesPathsBelowAlone();
    void refusesWhatHasMoved();
    void refusedLeavesNothing();
    void remembers();
    void rememberedStaysWhenThePathsSpellingDiffers();
    void uploadedConflicts();
    void signsWithTheHistory();
    void tellsOthersWrites();
    void whatTheStoreKeepsForItselfIsNotShared();
    void forgets();
    void aMissingConfiguration();

private:
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<StoreReplica> m_replica;
    void *m_other = nullptr; // another program's way to the same configuration
};

namespace {

Document documentOf(const QByteArray &path, const char *text)
{
    Document document;
    document.path = path;
    document.by = {"desk-3", "anna", "corvel", 5};
    document.atMs = 1795269540123;
    document.values["Text"] = ops::Value::ofText(text);
    document.values["number"] = ops::Value::ofNumber(7);
    return document;
}

Step stepOf(const Document &values)
{
    Step step;
    step.key = keyOfPath(values.path);
    step.values = step.base = values;
    return step;
}

void put(void *handle, const char *path, const char *name, QByteArray text)
{
    auto size = static_cast<uint32_t>(text.size()) + 1;
    rkCFGValueString(handle, path, name, text.data(), &size, 1);
}

QByteArray get(void *handle, const char *path, const char *name)
{
    QByteArray text(100, '\0');
    uint32_t size = 100;
    if (rkCFGValueString(handle, path, name, text.data(), &size, 0) != 0)
        return "absent";
    return text.left(static_cast<int>(size) - 1);
}

Transaction transactionOf(std::vector<Step> steps)
{
    Transaction transaction;
    transaction.label = "from desk-3";
    transaction.steps = std::move(steps);
    transaction.mark.place = "server x";
    return transaction;
}

} // namespace

void TestFleetReplica::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", m_home->path().toUtf8());
    rkCFGClose(RKCFG_DEFAULT_STORE, 0);
    ops::Outcome<std::unique_ptr<StoreReplica>> replica = StoreReplica::open("night", true, "desk-3");
    QVERIFY(replica);
    m_replica = std::move(*replica);
    m_other = rkCFGOpen("night", 0);
    QVERIFY(m_other);
}

void TestFleetReplica::cleanup()
{
    m_replica.reset();
    rkCFGClose(m_other, 0);
}

void TestFleetReplica::readsPathsAsDocuments()
{
    put(m_other, "KWX\\B", "x", "1");
    put(m_other, "KWX\\a", "x", "2");
    put(m_other, "kwx\\b", "y", "3");
    Documents documents;
    QVERIFY(m_replica->read(&documents));
    QCOMPARE(documents.size(), std::size_t(2));
    QCOMPARE(documents["kwx/b"].path, QByteArray("KWX\\B"));
    QCOMPARE(documents["kwx/b"].values.size(), std::size_t(2));
    QCOMPARE(documents["kwx/a"].values["x"].text, QByteArray("2"));
}

void TestFleetReplica::appliesAsOneLabelledBatch()
{
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("P", "a")), stepOf(documentOf("Q", "b"))})),
             Applied::Done);
    QCOMPARE(get(m_other, "P", "Text"), QByteArray("a"));
    const ops::Outcome<ops::Store> store = ops::Store::open("night");
    const ops::Outcome<std::vector<ops::Batch>> history = ops::readHistory(*store);
    QCOMPARE(history->size(), std::size_t(1));
    QCOMPARE(history->front().label, QByteArray("from desk-3"));
    QCOMPARE(history->front().changes.size(), std::size_t(4));
    QCOMPARE(rkCFGTakeBack(m_other, history->front().id, 0, 0, nullptr, nullptr, nullptr), 0);
    QCOMPARE(get(m_other, "P", "Text"), QByteArray("absent"));
}

void TestFleetReplica::takesAwayWhatIsNotInTheDocument()
{
    put(m_other, "P", "old", "x");
    put(m_other, "P", "Text", "x");
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("p", "a"))})), Applied::Done);
    QCOMPARE(get(m_other, "P", "old"), QByteArray("absent"));
    QCOMPARE(get(m_other, "P", "Text"), QByteArray("a"));
    Document deleted = documentOf("P", "");
    deleted.values.clear();
    QCOMPARE(m_replica->apply(transactionOf({stepOf(deleted)})), Applied::Done);
    Documents documents;
    QVERIFY(m_replica->read(&documents));
    QCOMPARE(documents.size(), std::size_t(0));
}

void TestFleetReplica::leavesPathsBelowAlone()
{
    put(m_other, "P\\below", "old", "x");
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("P", "a"))})), Applied::Done);
    QCOMPARE(get(m_other, "P\\below", "old"), QByteArray("x"));
}

void TestFleetReplica::refusesWhatHasMoved()
{
    Step step = stepOf(documentOf("P", "b"));
    step.compare = true;
    step.expected = documentOf("P", "a");
    QCOMPARE(m_replica->apply(transactionOf({step})), Applied::Moved);
    step.expected.reset();
    QCOMPARE(m_replica->apply(transactionOf({step})), Applied::Done);
    step.expected = documentOf("P", "b");
    step.values = documentOf("P", "c");
    put(m_other, "P", "Text", "somebody");
    QCOMPARE(m_replica->apply(transactionOf({step})), Applied::Moved);
    QCOMPARE(get(m_other, "P", "Text"), QByteArray("somebody"));
}

void TestFleetReplica::refusedLeavesNothing()
{
    Step moved = stepOf(documentOf("Q", "b"));
    moved.compare = true;
    moved.expected = documentOf("Q", "a");
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("P", "a")), moved})), Applied::Moved);
    Memory memory;
    QVERIFY(m_replica->recall(&memory));
    QCOMPARE(memory.bases.size(), std::size_t(0));
    QCOMPARE(memory.mark.place, std::string());
    QCOMPARE(get(m_other, "P", "Text"), QByteArray("absent"));
    QCOMPARE(rkCFGBegin(m_other), 0);
    QVERIFY(m_replica->apply(transactionOf({stepOf(documentOf("P", "a"))})) == Applied::Failed);
    QCOMPARE(rkCFGEnd(m_other, 0), 0);
}

void TestFleetReplica::remembers()
{
    Transaction transaction = transactionOf({stepOf(documentOf("P", "a"))});
    transaction.steps[0].flights = Flights{{3, documentOf("P", "b")}, {4, documentOf("P", "c")}};
    transaction.mark = {"desk /x/", 18446744073709551615u, 1234567890123, 42, "receipt"};
    QCOMPARE(m_replica->apply(transaction), Applied::Done);
    m_replica.reset();
    m_replica = std::move(*StoreReplica::open("night", false, "desk-3"));
    Memory memory;
    QVERIFY(m_replica->recall(&memory));
    QVERIFY(sameState(memory.bases["p"], documentOf("P", "a")));
    QCOMPARE(memory.bases["p"].by.user, QByteArray("anna"));
    QCOMPARE(memory.bases["p"].atMs, documentOf("P", "a").atMs);
    QCOMPARE(memory.flights["p"].size(), std::size_t(2));
    QCOMPARE(memory.flights["p"][1].push, std::uint64_t(4));
    QVERIFY(sameState(memory.flights["p"][1].document, documentOf("P", "c")));
    QCOMPARE(memory.mark.place, std::string("desk /x/"));
    QCOMPARE(memory.mark.cluster, std::uint64_t(18446744073709551615u));
    QCOMPARE(memory.mark.revision, std::int64_t(1234567890123));
    QCOMPARE(memory.mark.pushes, std::uint64_t(42));
    QCOMPARE(memory.mark.receipt, std::string("receipt"));
    const auto store = ops::Store::open("night");
    QVERIFY(store);
    QCOMPARE(StoreNotes(*store).mark().place, std::string("desk /x/")); // without all the rest
    transaction.steps[0].flights = Flights();
    QCOMPARE(m_replica->apply(transaction), Applied::Done);
    Memory later;
    QVERIFY(m_replica->recall(&later));
    QCOMPARE(later.flights.size(), std::size_t(0));
}

void TestFleetReplica::rememberedStaysWhenThePathsSpellingDiffers()
{
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("KWX\\P", "a"))})), Applied::Done);
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("kwx\\p", "b"))})), Applied::Done);
    Memory memory;
    QVERIFY(m_replica->recall(&memory));
    QCOMPARE(memory.bases.size(), std::size_t(1));
    Documents documents;
    QVERIFY(m_replica->read(&documents));
    QCOMPARE(documents["kwx/p"].path, QByteArray("KWX\\P"));
}

void TestFleetReplica::uploadedConflicts()
{
    Step own = stepOf(documentOf("P", "b"));
    own.conflict = Conflict{documentOf("P", "a"), {"server", "", "", 1}, 5};
    Step others = stepOf(documentOf("Q", "b"));
    others.conflict = Conflict{documentOf("Q", "a"), {"server", "", "", 1}, 5};
    others.conflict->overruled.by.who = "desk-4";
    QCOMPARE(m_replica->apply(transactionOf({own, others})), Applied::Done);
    Memory memory;
    QVERIFY(m_replica->recall(&memory));
    QCOMPARE(memory.conflicts.size(), std::size_t(2));
    QCOMPARE(m_replica->overruled(), 1);
    Transaction uploaded = transactionOf({});
    uploaded.uploaded = {conflictId(*own.conflict), conflictId(*others.conflict)};
    QCOMPARE(m_replica->apply(uploaded), Applied::Done);
    Memory later;
    QVERIFY(m_replica->recall(&later));
    QCOMPARE(later.conflicts.size(), std::size_t(0));
    QCOMPARE(m_replica->overruled(), 1); // until somebody has looked at it
    const ops::Outcome<ops::Store> store = ops::Store::open("night");
    QVERIFY(StoreNotes(*store).forgetOverruled());
    QCOMPARE(m_replica->overruled(), 0);
}

void TestFleetReplica::signsWithTheHistory()
{
    put(m_other, "P", "a", "1");
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    Document document = documentOf("p", "x");
    document.by = {"me", "", "", 0};
    document.atMs = 0;
    Document unknown = documentOf("never", "x");
    unknown.atMs = 3;
    m_replica->sign({&document, &unknown});
    QCOMPARE(document.by.who, QByteArray("me"));
    QCOMPARE(document.by.program, QByteArray("test_fleet_replica"));
    QCOMPARE(document.by.pid, static_cast<quint32>(QCoreApplication::applicationPid()));
    QVERIFY(!document.by.user.isEmpty());
    QVERIFY(qAbs(document.atMs - before) < 60000);
    QCOMPARE(unknown.atMs, qint64(3));
}

void TestFleetReplica::tellsOthersWrites()
{
    QVERIFY(m_replica->changed());
    QVERIFY(!m_replica->changed());
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("P", "a"))})), Applied::Done);
    QVERIFY(!m_replica->changed());
    put(m_other, "P", "a", "1");
    QVERIFY(m_replica->changed());
    QVERIFY(!m_replica->changed());
}

void TestFleetReplica::whatTheStoreKeepsForItselfIsNotShared()
{
    uint32_t days = 10;
    rkCFGValueDword(m_other, "rkcfg\\History", "Days", &days, 1);
    put(m_other, "rkcfgs", "x", "1");
    Documents documents;
    QVERIFY(m_replica->read(&documents));
    QCOMPARE(documents.size(), std::size_t(1));
    QCOMPARE(documents.begin()->first, std::string("rkcfgs"));
}

void TestFleetReplica::forgets()
{
    QCOMPARE(m_replica->apply(transactionOf({stepOf(documentOf("P", "a"))})), Applied::Done);
    const ops::Outcome<ops::Store> store = ops::Store::open("night");
    QVERIFY(StoreNotes(*store).forgetAll());
    Memory memory;
    QVERIFY(m_replica->recall(&memory));
    QCOMPARE(memory.bases.size(), std::size_t(0));
    QCOMPARE(memory.mark.place, std::string());
    QCOMPARE(get(m_other, "P", "Text"), QByteArray("a"));
}

void TestFleetReplica::aMissingConfiguration()
{
    QVERIFY(!StoreReplica::open("day", false, "desk-3"));
    QVERIFY(StoreReplica::open("day", true, "desk-3"));
}

QTEST_GUILESS_MAIN(TestFleetReplica)
#include "test_fleet_replica.moc"
