// SPDX-License-Identifier: MIT
//
// Two dialogs of one user, each in a process of its own, are handed descriptions at the same time. None is
// mixed up with the other's, none is lost, and what a killed process leaves is cleared up.
#include "support/dialog.h"
#include "support/logfile.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

namespace {

// Of each process; CORVEL_PUSHES asks for more.
int pushes()
{
    const int wanted = qEnvironmentVariableIntValue("CORVEL_PUSHES");
    return wanted > 0 ? wanted : 500;
}

QByteArray description(int side, int number)
{
    return QByteArray("v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.") + QByteArray::number(side) + '.' +
           QByteArray::number(number / 250 % 250) + '.' + QByteArray::number(number % 250) + "\na=recvonly\n";
}

void push(QCorvel *dialog, const QByteArray &bytes, int channel)
{
    void *block = malloc(size_t(bytes.size()));
    memcpy(block, bytes.constData(), size_t(bytes.size()));
    dialog->onSendSdp(block, bytes.size(), channel, false);
}

// Pushes into a channel of its own; returns how often something else was stored there.
int pushAll(int side, int pushes)
{
    QCorvel dialog(true, nullptr);
    int wrong = 0;
    for (int number = 0; number < pushes; ++number) {
        push(&dialog, description(side, number), side);
        const QString expected =
            QStringLiteral("239.%1.%2.%3").arg(side).arg(number / 250 % 250).arg(number % 250);
        wrong += text(side, "ReceiveDestinationIp") != expected;
    }
    return wrong;
}

QStringList foldersLeft()
{
    char folder[256] = {};
    rkOSGetTempPath(folder, sizeof folder);
    return QDir(QString::fromLocal8Bit(folder)).entryList({QStringLiteral("sdp-*")}, QDir::Dirs);
}

} // namespace

class TestPushTwo : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { startLog(); }
    void nothingIsMixedUp();
    void whatTheDeadLeaveIsClearedUp();

private:
    static void start(QProcess &process, const QString &what);
};

void TestPushTwo::start(QProcess &process, const QString &what)
{
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(), {what, QString::number(pushes())});
    QVERIFY(process.waitForStarted());
}

void TestPushTwo::nothingIsMixedUp()
{
    const FreshStore store;
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    commitStore();
    QProcess one, two;
    start(one, QStringLiteral("--push-1"));
    start(two, QStringLiteral("--push-2"));
    QVERIFY(one.waitForFinished(-1) && two.waitForFinished(-1));
    QCOMPARE(one.exitCode(), 0);
    QCOMPARE(two.exitCode(), 0);
    QCOMPARE(foldersLeft(), QStringList());
    qInfo("figures: twice %d pushes of two processes, each with its own address", pushes());
}

void TestPushTwo::whatTheDeadLeaveIsClearedUp()
{
    const FreshStore store;
    QProcess killed;
    start(killed, QStringLiteral("--push-3"));
    QTRY_COMPARE(foldersLeft().size(), 1);
    kill(pid_t(killed.processId()), SIGKILL);
    QVERIFY(killed.waitForFinished());
    QCOMPARE(foldersLeft().size(), 1);
    QCOMPARE(pushAll(1, 1), 0); // the next one who needs a folder
    const QString own = QStringLiteral("sdp-%1").arg(QCoreApplication::applicationPid());
    QCOMPARE(foldersLeft(), QStringList{own});
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.value(0).startsWith(QLatin1String("--push-")))
        return qMin(99, pushAll(words.at(0).right(1).toInt(), words.value(1).toInt()));
    TestPushTwo test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_pushtwo.moc"
