// SPDX-License-Identifier: MIT
//
// A store that is held by another program, and a second dialog on the same store: both are told while they
// last.
#include "channel/backlog.h"
#include "channel/storehealth.h"
#include "support/filefixture.h"
#include "support/logfile.h"
#include "support/otherprogram.h"
#include "support/sleepcount.h"
#include "support/storeholder.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

// Each edit is one of the history, in their order.
QStringList editsInHistory()
{
    QStringList names;
    walkHistory(-1, [&](const StoreChange &change) {
        if (change.pid == quint32(QCoreApplication::applicationPid()))
            names.prepend(QString::fromLatin1(change.name));
        return true;
    });
    return names;
}

// Held by the system's lock alone, as by a program that was stopped while it repaired a store.
class FolderHolder {
public:
    explicit FolderHolder(const QString &folder)
    {
        m_process.start(QStringLiteral("flock"),
                        {folder + QStringLiteral("/.rkcfg-lock"), QStringLiteral("sh"), QStringLiteral("-c"),
                         QStringLiteral("echo; read x")});
        QVERIFY(m_process.waitForReadyRead(60000));
    }
    ~FolderHolder() { release(); }
    void release()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished(60000);
    }

private:
    QProcess m_process;
};

} // namespace

class TestStoreTrouble : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LogTest::startLog(); }
    void init();
    void cleanup();
    void allIsWell();
    void heldByAnotherProgram();
    void whatTheHolderChangedStays();
    void editsOfAllPlacesAreKept();
    void lockOfTheFolderHeld();
    void heldAtTheStart();
    void theFolderIsGone();
    void aFolderInItsPlace();
    void loadsAreRefusedMeanwhile();
    void keptForTheirConfiguration();
    void aSecondDialog();
    void aSecondDialogOnAnotherStore();

private:
    QString shown(const char *name) const
    {
        const auto *label = m_fixture->dialog->findChild<QLabel *>(QLatin1String(name));
        return label->isHidden() ? QString() : label->text();
    }
    static QString keptText()
    {
        return storePath() + QStringLiteral(": held by another program; edits wait until it lets go");
    }
    std::unique_ptr<FileFixture> m_fixture;
};

void TestStoreTrouble::init()
{
    m_fixture = std::make_unique<FileFixture>();
}

void TestStoreTrouble::cleanup()
{
    QCOMPARE(backlogSize(), 0); // of the process, not of the dialog
    m_fixture.reset();
}

void TestStoreTrouble::allIsWell()
{
    typeText(m_fixture->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    letItTick(m_fixture->dialog.get());
    QCOMPARE(shown("storeBar"), QString());
    QCOMPARE(shown("statusLine"), QString());
}

void TestStoreTrouble::heldByAnotherProgram()
{
    QCorvel *d = m_fixture->dialog.get();
    const QStringList before = editsInHistory();
    StoreHolder holder([] {}, false);
    SleepCount::slept();
    typeText(d->m_pEditRecDstPort, QStringLiteral("5004"));
    QVERIFY(SleepCount::slept() <= SleepCount::mostMs);
    QCOMPARE(shown("storeBar"), keptText());
    typeText(d->m_pEditRecSrcPort, QStringLiteral("5006"));
    d->m_pCheckRecDstAddr->toggle();
    QCOMPARE(SleepCount::slept(), 0);
    letItTick(d);
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QString());
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    holder.release();
    QTRY_COMPARE(shown("storeBar"), QString());
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveSourcePort"), QStringLiteral("5006"));
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    const QStringList since = editsInHistory().mid(before.size());
    // The first edit stored all that was shown, since the channel was new.
    const int first = since.lastIndexOf(QStringLiteral("ReceiveDestinationPort"));
    const int second = since.lastIndexOf(QStringLiteral("ReceiveSourcePort"));
    QVERIFY2(first >= 0 && first < second, qPrintable(since.join(QLatin1Char(' '))));
    QVERIFY(second < since.lastIndexOf(QStringLiteral("ReceiveFlags")));
    QCOMPARE(shown("statusLine"), QString());
}

void TestStoreTrouble::whatTheHolderChangedStays()
{
    QCorvel *d = m_fixture->dialog.get();
    StoreHolder holder([] { put(0, "ReceiveDestinationPort", 7000); });
    typeText(d->m_pEditRecDstPort, QStringLiteral("5004"));
    typeText(d->m_pEditRecSrcPort, QStringLiteral("5006"));
    typeText(d->m_pEditRecDstPort, QStringLiteral("5008"));
    holder.release();
    QTRY_COMPARE(shown("storeBar"), QString());
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("7000"));
    QCOMPARE(OtherProgram::stored("ReceiveSourcePort"), QStringLiteral("5006"));
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("7000"));
    QCOMPARE(shown("statusLine"),
             QStringLiteral("Changed by another program meanwhile and left so: Receive Destination Port, "
                            "channel 0 Video and 1 more"));
    // The next edit does not bring them back either.
    typeText(d->m_pEditSndDstPort, QStringLiteral("5010"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("7000"));
    QCOMPARE(OtherProgram::stored("TransmitRemotePort"), QStringLiteral("5010"));
}

// What is kept is shown wherever it belongs, as if it were stored.
void TestStoreTrouble::editsOfAllPlacesAreKept()
{
    QCorvel *d = m_fixture->dialog.get();
    StoreHolder holder;
    typeText(d->m_pEditRecDstPort, QStringLiteral("5004"));
    typeAddress(d->m_pLineRecDstAddr, QStringLiteral("239.9.9.9"));
    d->m_pChannel->setCurrentIndex(2);
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("0"));
    typeText(d->m_pEditRecDstPort, QStringLiteral("5020"));
    choose(d->m_pComboClkSrc, ClockSource::FreeRun);
    d->m_pChannel->setCurrentIndex(0);
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    QCOMPARE(d->m_pLineRecDstAddr->address(), QStringLiteral("239.9.9.9"));
    holder.release();
    QTRY_COMPARE(shown("storeBar"), QString());
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.9.9.9")));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort", 2), QStringLiteral("5020"));
    QCOMPARE(OtherProgram::stored("ClockType", 2), QString::number(ClockSource::FreeRun));
}

void TestStoreTrouble::lockOfTheFolderHeld()
{
    QCorvel *d = m_fixture->dialog.get();
    FolderHolder holder(QFileInfo(storePath()).path());
    SleepCount::slept();
    typeText(d->m_pEditRecDstPort, QStringLiteral("5004"));
    QVERIFY(SleepCount::slept() <= SleepCount::mostMs);
    QCOMPARE(shown("storeBar"), keptText());
    typeText(d->m_pEditRecSrcPort, QStringLiteral("5006"));
    QCOMPARE(SleepCount::slept(), 0);
    letItTick(d);
    holder.release();
    QTRY_COMPARE(shown("storeBar"), QString());
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveSourcePort"), QStringLiteral("5006"));
}

// Nothing of the store is known, so nothing that is shown is worth keeping.
void TestStoreTrouble::heldAtTheStart()
{
    m_fixture->dialog.reset();
    rkCFGClose(RKCFG_DEFAULT_STORE, 1);
    FolderHolder holder(QFileInfo(storePath()).path());
    SleepCount::slept();
    m_fixture->dialog = std::make_unique<QCorvel>(true, nullptr);
    QVERIFY(SleepCount::slept() <= SleepCount::mostMs);
    show(m_fixture->dialog.get());
    QVERIFY(!m_fixture->dialog->m_pNmosOverride->isChecked()); // nothing could be read
    QCOMPARE(shown("storeBar"),
             storePath() + QStringLiteral(": held by another program; edits are not kept"));
    holder.release();
    QTRY_COMPARE(shown("storeBar"), QString());
    QCOMPARE(m_fixture->dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    QVERIFY(m_fixture->dialog->m_pNmosOverride->isChecked()); // and nothing was written
}

// As when the disk it is on goes and comes back. What is shown then is the last that is known of the store,
// not an empty one.
void TestStoreTrouble::theFolderIsGone()
{
    QCorvel *d = m_fixture->dialog.get();
    const QString path = storePath(), folder = QFileInfo(path).path(),
                  away = folder + QStringLiteral(".away");
    QVERIFY(QFile::rename(folder, away));
    QFile inTheWay(folder);
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    typeText(d->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(shown("storeBar"), path + QStringLiteral(": Not a directory; edits are not kept"));
    QVERIFY(d->m_pNmosOverride->isChecked());
    QCOMPARE(d->m_pSwapLayout->currentIndex(), 0);
    QCOMPARE(d->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    letItTick(d);
    QCOMPARE(d->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    QVERIFY(inTheWay.remove() && QFile::rename(away, folder));
    QTRY_COMPARE(shown("storeBar"), QString());
    QCOMPARE(d->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("0"));
    typeText(d->m_pEditRecDstPort, QStringLiteral("5006"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5006"));
}

void TestStoreTrouble::aFolderInItsPlace()
{
    const QString path = storePath();
    m_fixture->dialog.reset();
    rkCFGClose(RKCFG_DEFAULT_STORE, 1);
    QVERIFY(QFile::remove(path) && QDir().mkdir(path));
    m_fixture->dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_fixture->dialog.get());
    QCOMPARE(shown("storeBar"), path + QStringLiteral(": Is a directory; edits are not kept"));
    QVERIFY(QDir().rmdir(path));
    QTRY_COMPARE(shown("storeBar"), QString());
}

// A file is all or nothing, and there is no telling when it would be all.
void TestStoreTrouble::loadsAreRefusedMeanwhile()
{
    QVERIFY(m_fixture->save(QStringLiteral("x.ipp")));
    StoreHolder holder;
    QVERIFY(m_fixture->load(QStringLiteral("x.ipp")));
    QVERIFY2(shown("statusLine").endsWith(QLatin1String("another program holds the store")),
             qPrintable(shown("statusLine")));
    QCOMPARE(shown("storeBar"), QString());
}

void TestStoreTrouble::keptForTheirConfiguration()
{
    QCorvel *d = m_fixture->dialog.get();
    OtherProgram::choose(QStringLiteral("van"));
    OtherProgram::choose(QStringLiteral("default"));
    QTRY_COMPARE(d->m_pConfig->currentText(), QStringLiteral("default"));
    StoreHolder holder([] {}, false);
    typeText(d->m_pEditRecDstPort, QStringLiteral("5004"));
    OtherProgram::choose(QStringLiteral("van"));
    QTRY_COMPARE(d->m_pConfig->currentText(), QStringLiteral("van"));
    QCOMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("0"));
    holder.release();
    QTRY_COMPARE(shown("storeBar"), QString());
    typeText(d->m_pEditRecDstPort, QStringLiteral("6000"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("6000"));
    OtherProgram::choose(QStringLiteral("default"));
    QTRY_COMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QTRY_COMPARE(d->m_pEditRecDstPort->text(), QStringLiteral("5004"));
}

// The second one is killed, so that it cannot say goodbye. Both write to one log.
void TestStoreTrouble::aSecondDialog()
{
    QProcess second;
    second.start(QStringLiteral(CORVEL_BIN_DIR "/corvel"), QStringList());
    QVERIFY(second.waitForStarted(60000));
    const QString text = QStringLiteral("A second IP Video Setup (process %1) is open on this store");
    QTRY_COMPARE_WITH_TIMEOUT(shown("statusLine"), text.arg(second.processId()), 60000);
    QCOMPARE(m_fixture->dialog->windowTitle(), QStringLiteral("IP Video Setup"));
    const auto isLogged = [](qint64 writer, qint64 other) {
        const QByteArray line = '[' + QByteArray::number(writer) + "] a second dialog, process " +
                                QByteArray::number(other) + ", is open on this store\n";
        return LogTest::logText().contains(line);
    };
    const qint64 us = QCoreApplication::applicationPid();
    QTRY_VERIFY(isLogged(us, second.processId()));
    QTRY_VERIFY_WITH_TIMEOUT(isLogged(second.processId(), us), 60000);
    second.kill();
    QVERIFY(second.waitForFinished(60000));
    QTRY_COMPARE(shown("statusLine"), QString());
}

void TestStoreTrouble::aSecondDialogOnAnotherStore()
{
    QTemporaryDir elsewhere;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), elsewhere.path());
    QProcess second;
    second.setProcessEnvironment(environment);
    second.start(QStringLiteral(CORVEL_BIN_DIR "/corvel"), QStringList());
    // It has a store of its own as soon as it has read it, and looks for others after that.
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(elsewhere.filePath(QStringLiteral("corvel/default.rkcfg"))),
                             60000);
    letItTick(m_fixture->dialog.get());
    QCOMPARE(shown("statusLine"), QString());
    second.kill();
    QVERIFY(second.waitForFinished(60000));
}

CORVEL_DIALOG_TEST_MAIN(TestStoreTrouble)
#include "test_storetrouble.moc"
