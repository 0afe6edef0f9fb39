// SPDX-License-Identifier: MIT
//
// A write of the dialog undoes nothing that others wrote, and lands where the header says.
#include "channel/storecalls.h"
#include "support/filefixture.h"
#include "support/otherprogram.h"
#include "support/sleepcount.h"

#include <QRandomGenerator>

#include <memory>
#include <sys/wait.h>
#include <unistd.h>

using namespace DialogTest;
using namespace StoreTest;

namespace {

constexpr int kSwitches = 50;

// The port that the dialog edits; the other process has the send side to itself.
constexpr char kOurs[] = "ReceiveDestinationPort";
constexpr char kTheirs[] = "TransmitRemotePort";

int weWait[2]; // a byte goes through when the dialog waits for the store

// A process of its own that runs until it is let go.
pid_t inParallel(const std::function<void()> &work)
{
    const pid_t child = fork();
    if (child != 0)
        return child;
    work();
    _exit(0);
}

void waitFor(pid_t child)
{
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
}

// Our part of a configuration's history after the change with that id.
QList<StoreChange> ownChanges(const QString &configuration, qint64 after)
{
    QList<StoreChange> own;
    OtherProgram::choose(configuration);
    walkHistory(after, [&own](const StoreChange &change) {
        if (change.pid == quint32(QCoreApplication::applicationPid()))
            own.append(change);
        return true;
    });
    return own;
}

qint64 lastChange(const QString &configuration)
{
    qint64 last = 0;
    for (const StoreChange &change : ownChanges(configuration, 0))
        last = change.id;
    return last;
}

} // namespace

class TestWriting : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void editsLeaveWhatOthersWrote_data();
    void editsLeaveWhatOthersWrote();
    void theChangedControlWins();
    void lockedCopiesAreOfThePresentState();
    void anEditAfterASwitchGoesWhereTheHeaderSays();
    void nodeSettingsLeaveWhatOthersWrote();
    void heldWritersAreWaitedFor();
    void switchedAllTheTime();

private:
    void prepareConfigurations();

    std::unique_ptr<FileFixture> m_fixture;
    QCorvel *m_dialog = nullptr;
    QHash<QString, qint64> m_lastOf; // change of each configuration
};

void TestWriting::init()
{
    m_fixture = std::make_unique<FileFixture>();
    m_dialog = m_fixture->dialog.get();
}

void TestWriting::cleanup()
{
    m_fixture.reset();
}

void TestWriting::editsLeaveWhatOthersWrote_data()
{
    QTest::addColumn<int>("edit");
    int index = 0;
    for (const char *name : {"port", "address", "use box", "clock", "format", "lock", "flows", "interface"})
        QTest::newRow(name) << index++;
}

// The other program's write is not followed by the event loop: the edit itself has to see it.
void TestWriting::editsLeaveWhatOthersWrote()
{
    QFETCH(int, edit);
    QCorvel *d = m_dialog;
    const std::function<void()> edits[] = {
        [d] { enterPort(d->m_pEditRecDstPort, QStringLiteral("5004")); },
        [d] {
            QTest::keyClicks(d->m_pLineRecDstAddr->m_pLineEdit[3], QStringLiteral("7"));
            d->m_pLineRecDstAddr->finishKeys();
        },
        [d] { d->m_pCheckRecDstAddr->toggle(); },
        [d] { d->m_pComboClkSrc->setCurrentIndex(2); },
        [d] { d->m_pComboVidFormat->setCurrentIndex(2); },
        [d] { d->m_pCheckLockRecSrcPort->toggle(); },
        [d] { d->m_pComboAudFlow->setCurrentIndex(2); },
        [d] {
            d->m_pEditRecIFace->setAddress(QStringLiteral("127.0.0.1"));
            emit d->m_pEditRecIFace->addressChanged();
        },
    };
    OtherProgram::setNumber(0, kTheirs, 7001);
    OtherProgram::set(0, "TransmitIp", QStringLiteral("10.8.8.8"));
    edits[edit]();
    enterPort(d->m_pEditRecSrcPort, QStringLiteral("4001")); // writes all that is shown
    QCOMPARE(OtherProgram::stored(kTheirs), QStringLiteral("7001"));
    QCOMPARE(OtherProgram::stored("TransmitIp"), quoted(QStringLiteral("10.8.8.8")));
    QCOMPARE(d->m_pEditSndDstPort->text(), QStringLiteral("7001"));
    QCOMPARE(OtherProgram::stored("ReceiveSourcePort"), QStringLiteral("4001"));
}

void TestWriting::theChangedControlWins()
{
    OtherProgram::setNumber(0, kOurs, 7001);
    enterPort(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored(kOurs), QStringLiteral("5004"));
    OtherProgram::setNumber(0, "ReceiveFlags", 0);
    m_dialog->m_pCheckRecSrcPort->toggle();
    QCOMPARE(OtherProgram::stored("ReceiveFlags"),
             QString::number(m_dialog->m_pCheckRecSrcPort->isChecked() ? 1 : 0));
    OtherProgram::setNumber(0, "ClockType", 0x20000);
    m_dialog->m_pComboClkSrc->setCurrentIndex(m_dialog->m_pComboClkSrc->findData(0x800000));
    QCOMPARE(OtherProgram::stored("ClockType"), QString::number(0x800000));
}

void TestWriting::lockedCopiesAreOfThePresentState()
{
    OtherProgram::setNumber(0, "ReceiveSourcePort", 6060);
    m_dialog->m_pCheckLockRecSrcPort->setChecked(true);
    QCOMPARE(OtherProgram::stored("ReceiveAncSourcePort"), QStringLiteral("6060"));
}

void TestWriting::anEditAfterASwitchGoesWhereTheHeaderSays()
{
    OtherProgram::choose(QStringLiteral("van"));
    OtherProgram::setNumber(0, kTheirs, 7001);
    enterPort(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("van"));
    QCOMPARE(OtherProgram::stored(kOurs), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored(kTheirs), QStringLiteral("7001"));
    OtherProgram::choose(QStringLiteral("default"));
    QCOMPARE(OtherProgram::stored(kOurs), QString());
}

// "Set" stores all four.
void TestWriting::nodeSettingsLeaveWhatOthersWrote()
{
    QTest::mouseClick(m_dialog->m_pOpenNmosCfg, Qt::LeftButton);
    QTest::keyClicks(m_dialog->m_pEditNmosDmn, QStringLiteral("ours"));
    OtherProgram::set(0, "nmosserverport", QStringLiteral("8010"));
    OtherProgram::set(0, "nmosserverip", QStringLiteral("10.8.8.8"));
    QTest::mouseClick(m_dialog->m_pSetNmosCfg, Qt::LeftButton);
    QCOMPARE(OtherProgram::stored("nmosdomain"), quoted(QStringLiteral("ours")));
    QCOMPARE(OtherProgram::stored("nmosserverport"), quoted(QStringLiteral("8010")));
    QCOMPARE(OtherProgram::stored("nmosserverip"), quoted(QStringLiteral("10.8.8.8")));
}

// Another program in the middle of a run of writes: the edit comes after all of it.
void TestWriting::heldWritersAreWaitedFor()
{
    int ready[2];
    QVERIFY(pipe(ready) == 0 && pipe(weWait) == 0);
    const pid_t other = inParallel([&ready] {
        char byte = 1;
        rkCFGBegin(RKCFG_DEFAULT_STORE);
        put(0, kTheirs, 7001);
        if (write(ready[1], &byte, 1) != 1 || read(weWait[0], &byte, 1) != 1)
            _exit(1);
        put(0, "TransmitSourcePort", 7002);
        rkCFGEnd(RKCFG_DEFAULT_STORE, 1);
    });
    char byte = 0;
    QCOMPARE(read(ready[0], &byte, 1), ssize_t(1));
    SleepCount::whenWaiting = [] { QCOMPARE(write(weWait[1], "", 1), ssize_t(1)); };
    enterPort(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QVERIFY(!SleepCount::whenWaiting);
    waitFor(other);
    QCOMPARE(OtherProgram::stored(kOurs), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored(kTheirs), QStringLiteral("7001"));
    QCOMPARE(OtherProgram::stored("TransmitSourcePort"), QStringLiteral("7002"));
    for (const int end : {ready[0], ready[1], weWait[0], weWait[1]})
        close(end);
}

// Two configurations that differ in all that an edit writes: a value that goes astray is one that changes.
void TestWriting::prepareConfigurations()
{
    OtherProgram::choose(QStringLiteral("van"));
    QTRY_COMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("van"));
    put(0, "VideoType", 1);
    put(0, "SignalFormat", 0x2380b23b);
    for (const char *name :
         {"ReceiveSourceIp", "ReceiveDestinationIp", "TransmitIp", "TransmitDestinationIp"})
        put(0, name, QStringLiteral("10.20.30.40"));
    for (const char *name : {"ReceiveSourcePort", kTheirs, "TransmitSourcePort", "ClockDomain"})
        put(0, name, 77);
    for (const QString &name : {QStringLiteral("van"), QStringLiteral("default")}) {
        OtherProgram::choose(name);
        QTRY_COMPARE(m_dialog->m_pConfig->currentText(), name);
        enterPort(m_dialog->m_pEditRecDstPort, QStringLiteral("1000"));
        m_lastOf[name] = lastChange(name);
        OtherProgram::choose(name);
    }
}

// While another program switches all the time, each edit is found in the configuration that the header names,
// and nothing else is written anywhere. CORVEL_SWITCHES says how often.
void TestWriting::switchedAllTheTime()
{
    bool isGiven = false;
    const int given = qEnvironmentVariableIntValue("CORVEL_SWITCHES", &isGiven);
    const int switches = isGiven ? given : kSwitches;
    prepareConfigurations();
    const pid_t other = inParallel([switches] {
        for (int i = 0; i < switches; ++i) {
            rkCFGSetDefaultName(i % 2 == 0 ? "van" : "default");
            usleep(QRandomGenerator::global()->bounded(4000u));
        }
    });
    QHash<QString, QList<quint32>> typed;
    int status = 0;
    for (quint32 port = 2000; waitpid(other, &status, WNOHANG) == 0; ++port) {
        enterPort(m_dialog->m_pEditRecDstPort, QString::number(port));
        QCOMPARE(m_dialog->m_pEditRecDstPort->text(), QString::number(port));
        typed[m_dialog->m_pConfig->currentText()].append(port);
        QCoreApplication::processEvents();
    }
    QCOMPARE(status, 0);
    QVERIFY(!typed.isEmpty());
    for (auto it = typed.cbegin(); it != typed.cend(); ++it) {
        QList<quint32> stored;
        for (const StoreChange &change : ownChanges(it.key(), m_lastOf.value(it.key()))) {
            QCOMPARE(change.name, QByteArray(kOurs));
            stored.append(change.after.number);
        }
        QCOMPARE(stored, it.value());
    }
}

CORVEL_DIALOG_TEST_MAIN(TestWriting)
#include "test_writing.moc"
