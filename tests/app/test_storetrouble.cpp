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

class TestStoreTrouble : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { LogTest::startLog(); }
    void init();
    void cleanup();
    void allIsWell();
    void heldByAnotherProgram();
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
    int held[2], release[2];
    QCOMPARE(pipe(held), 0);
    QCOMPARE(pipe(release), 0);
    const pid_t other = fork();
    if (other == 0) {
        char byte = rkCFGBegin(RKCFG_DEFAULT_STORE) == 0;
        const bool done = write(held[1], &byte, 1) == 1 && read(release[0], &byte, 1) == 1;
        rkCFGEnd(RKCFG_DEFAULT_STORE, 0);
        _exit(done ? 0 : 1);
    }
    char byte = 0;
    QCOMPARE(read(held[0], &byte, 1), ssize_t(1));
    QCOMPARE(int(byte), 1);
    typeText(m_fixture->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    const QString path = storePath();
    QCOMPARE(shown("storeBar"), path + QStringLiteral(": held by another program; edits are not kept"));
    QCOMPARE(write(release[1], &byte, 1), ssize_t(1));
    int status = 0;
    waitpid(other, &status, 0);
    QCOMPARE(status, 0);
    QTRY_COMPARE(shown("storeBar"), QString());
    // What is shown is what is stored.
    QCOMPARE(m_fixture->dialog->m_pEditRecDstPort->text(), QStringLiteral("0"));
    typeText(m_fixture->dialog->m_pEditRecDstPort, QStringLiteral("5005"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5005"));
    for (const int end : {held[0], held[1], release[0], release[1]})
        close(end);
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
