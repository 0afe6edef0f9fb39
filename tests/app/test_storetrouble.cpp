// SPDX-License-Identifier: MIT
//
// A store that is held by another program, and a second dialog on the same store: both are told while they
// last.
#include "channel/storehealth.h"
#include "support/filefixture.h"
#include "support/logfile.h"
#include "support/otherprogram.h"

#include <memory>
#include <sys/wait.h>
#include <unistd.h>

using namespace DialogTest;
using namespace StoreTest;

namespace {

// Another program that has begun to write and does not end, until it is let go.
class Holder {
public:
    Holder()
    {
        if (pipe(m_held) != 0 || pipe(m_release) != 0)
            qFatal("no pipe");
        m_pid = fork();
        if (m_pid != 0)
            return;
        close(m_release[1]); // or it would never hear that the test has gone
        char byte = rkCFGBegin(RKCFG_DEFAULT_STORE) == 0;
        const bool done = write(m_held[1], &byte, 1) == 1 && read(m_release[0], &byte, 1) == 1;
        rkCFGEnd(RKCFG_DEFAULT_STORE, 0);
        _exit(done ? 0 : 1);
    }
    ~Holder()
    {
        for (const int end : {m_held[0], m_held[1], m_release[0], m_release[1]})
            close(end);
    }
    bool holds() const
    {
        char byte = 0;
        return read(m_held[0], &byte, 1) == 1 && byte == 1;
    }
    bool letGo() const
    {
        int status = 0;
        return write(m_release[1], "", 1) == 1 && waitpid(m_pid, &status, 0) == m_pid && status == 0;
    }

private:
    int m_held[2], m_release[2];
    pid_t m_pid;
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
    void aLoadIntoAHeldStoreIsNone();
    void aSecondDialog();
    void aSecondDialogOnAnotherStore();

private:
    QString shown(const char *name) const
    {
        const auto *label = m_fixture->dialog->findChild<QLabel *>(QLatin1String(name));
        return label->isHidden() ? QString() : label->text();
    }
    std::unique_ptr<FileFixture> m_fixture;
};

void TestStoreTrouble::init()
{
    m_fixture = std::make_unique<FileFixture>();
}

void TestStoreTrouble::cleanup()
{
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
    const Holder holder;
    QVERIFY(holder.holds());
    typeText(m_fixture->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    const QString path = storePath();
    QCOMPARE(shown("storeBar"), path + QStringLiteral(": held by another program; edits are not kept"));
    QVERIFY(holder.letGo());
    QTRY_COMPARE(shown("storeBar"), QString());
    // What is shown is what is stored.
    QCOMPARE(m_fixture->dialog->m_pEditRecDstPort->text(), QStringLiteral("0"));
    typeText(m_fixture->dialog->m_pEditRecDstPort, QStringLiteral("5005"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5005"));
}

void TestStoreTrouble::aLoadIntoAHeldStoreIsNone()
{
    m_fixture->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nTransmitSourcePort=5\n");
    const Holder holder;
    QVERIFY(holder.holds());
    QVERIFY(m_fixture->load(QStringLiteral("x.ipp")));
    QCOMPARE(shown("statusLine"), QStringLiteral("Nothing loaded from x.ipp: the store could not take it"));
    QVERIFY(holder.letGo());
    QCOMPARE(OtherProgram::stored("TransmitSourcePort"), QString());
    QVERIFY(m_fixture->load(QStringLiteral("x.ipp")));
    QCOMPARE(shown("statusLine"), QStringLiteral("Loaded x.ipp: 1 channel, 1 value"));
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
