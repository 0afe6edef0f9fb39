// SPDX-License-Identifier: MIT
//
// Two dialogs on one store, a process each, in which robots edit other fields at random: every edit of both
// is there, and none is ever undone. CORVEL_ROBOT_SECONDS says for how long.
#include "channel/storecalls.h"
#include "support/filefixture.h"

#include <QDeadlineTimer>
#include <QRandomGenerator>

#include <memory>

using namespace DialogTest;

namespace {

constexpr int kSeconds = 3;
constexpr char kRobot[] = "CORVEL_ROBOT"; // set in the second process
constexpr quint32 kFirstPort = 1024;
constexpr quint32 kLastPort = 65535;

int seconds()
{
    bool isGiven = false;
    const int given = qEnvironmentVariableIntValue("CORVEL_ROBOT_SECONDS", &isGiven);
    return isGiven ? given : kSeconds;
}

// The fields of one robot, and their values.
struct Fields {
    QLineEdit *edits[2];
    QByteArray names[2];
};

Fields fieldsOf(const QCorvel *dialog, bool second)
{
    if (second)
        return {{dialog->m_pEditSndDstPort, dialog->m_pEditSndSrcPort},
                {"TransmitRemotePort", "TransmitSourcePort"}};
    return {{dialog->m_pEditRecDstPort, dialog->m_pEditRecSrcPort},
            {"ReceiveDestinationPort", "ReceiveSourcePort"}};
}

// Edits until the time is over. Each value is another one; returns how many there were.
quint32 work(QCorvel *dialog, bool second)
{
    const Fields fields = fieldsOf(dialog, second);
    const QDeadlineTimer end(seconds() * 1000);
    quint32 port = kFirstPort;
    for (; !end.hasExpired() && port < kLastPort; ++port) {
        const int which = QRandomGenerator::global()->bounded(2);
        enterPort(fields.edits[which], QString::number(port));
        const int pause = QRandomGenerator::global()->bounded(5);
        QTest::qWait(pause);
    }
    return port - kFirstPort;
}

int runRobot()
{
    QCorvel dialog(true, nullptr);
    DialogTest::show(&dialog);
    printf("%u\n", work(&dialog, true));
    return 0;
}

} // namespace

class TestTwoDialogs : public QObject {
    Q_OBJECT

private slots:
    void everyEditIsThere();
};

void TestTwoDialogs::everyEditIsThere()
{
    FileFixture fixture;
    enterPort(fixture.dialog->m_pEditRecDstPort, QStringLiteral("1000")); // all that is shown is stored now
    qint64 last = 0;
    walkHistory(-1, [&last](const StoreChange &change) {
        last = change.id;
        return false;
    });
    QProcess robot;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(kRobot), QStringLiteral("1"));
    robot.setProcessEnvironment(environment);
    robot.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    robot.start(QCoreApplication::applicationFilePath(), QStringList());
    QVERIFY(robot.waitForStarted(60000));
    const quint32 theirProcess = quint32(robot.processId());
    const quint32 ours = work(fixture.dialog.get(), false);
    QVERIFY(robot.waitForFinished(60000 + seconds() * 1000));
    QCOMPARE(robot.exitCode(), 0);
    const quint32 theirs = robot.readAllStandardOutput().trimmed().toUInt();
    QVERIFY(ours > 0 && theirs > 0);

    // Each edit is one change, by its own robot, to a greater value than before.
    QHash<QByteArray, quint32> values;
    QHash<quint32, quint32> changes;
    walkHistory(last, [&](const StoreChange &change) {
        const Fields theirFields = fieldsOf(fixture.dialog.get(), change.pid == theirProcess);
        const bool isOwn = change.name == theirFields.names[0] || change.name == theirFields.names[1];
        if (!isOwn || change.after.number <= values.value(change.name))
            ++changes[0]; // somebody undid something
        values[change.name] = change.after.number;
        ++changes[change.pid];
        return true;
    });
    QCOMPARE(changes.value(0), 0u);
    QCOMPARE(changes.value(quint32(QCoreApplication::applicationPid())), ours);
    QCOMPARE(changes.value(theirProcess), theirs);
    qInfo("%u and %u edits", ours, theirs);
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    if (qEnvironmentVariableIsSet(kRobot))
        return runRobot();
    TestTwoDialogs test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_twodialogs.moc"
