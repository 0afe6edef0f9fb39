// SPDX-License-Identifier: MIT
//
// Who else is there, with real processes that are killed.
#include "channel/neighbours.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Another process with its own look at the folder, started anew so that nothing is shared with this one.
class Other {
public:
    explicit Other(const QString &folder)
    {
        m_process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--neighbour"), folder});
    }
    ~Other() { kill(); }
    int pid() const { return int(m_process.processId()); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    // The last number it was told.
    int told()
    {
        while (m_process.canReadLine())
            m_told = m_process.readLine().trimmed().toInt();
        return m_told;
    }

private:
    QProcess m_process;
    int m_told = -1;
};

int runNeighbour(QCoreApplication &application, const QString &folder)
{
    Neighbours neighbours([](int pid) {
        printf("%d\n", pid);
        fflush(stdout);
    });
    neighbours.meet(folder);
    return application.exec();
}

} // namespace

class TestNeighbours : public QObject {
    Q_OBJECT

private slots:
    void alone();
    void theFirstHearsOfTheSecond();
    void theSecondHearsOfTheFirst();
    void threeAndTheFirstIsKilled();
    void anotherFolder();
    void noFolder();

private:
    void meet(const QString &folder)
    {
        m_told = 0;
        m_neighbours = std::make_unique<Neighbours>([this](int pid) { m_told = pid; });
        m_neighbours->meet(folder);
    }
    QTemporaryDir m_folder;
    std::unique_ptr<Neighbours> m_neighbours;
    int m_told = 0;
};

void TestNeighbours::alone()
{
    meet(m_folder.path());
    QCOMPARE(m_told, 0);
    m_neighbours.reset();
    meet(m_folder.path()); // the name is free again
    QCOMPARE(m_told, 0);
}

void TestNeighbours::theFirstHearsOfTheSecond()
{
    meet(m_folder.path());
    Other other(m_folder.path());
    QTRY_COMPARE(m_told, other.pid());
    QTRY_COMPARE(other.told(), int(getpid()));
    other.kill();
    QTRY_COMPARE(m_told, 0);
}

void TestNeighbours::theSecondHearsOfTheFirst()
{
    m_neighbours.reset();
    Other other(m_folder.path());
    Other third(m_folder.path());
    QTRY_VERIFY(other.told() == third.pid() || third.told() == other.pid());
    meet(m_folder.path());
    QVERIFY(m_told == other.pid() || m_told == third.pid());
}

// Those who are left find each other again.
void TestNeighbours::threeAndTheFirstIsKilled()
{
    m_neighbours.reset();
    auto first = std::make_unique<Other>(m_folder.path());
    Other second(m_folder.path());
    QTRY_VERIFY(first->told() > 0 && second.told() > 0);
    meet(m_folder.path());
    QVERIFY(m_told > 0);
    first->kill();
    QTRY_COMPARE(m_told, second.pid());
    QTRY_COMPARE(second.told(), int(getpid()));
    second.kill();
    QTRY_COMPARE(m_told, 0);
}

void TestNeighbours::anotherFolder()
{
    const QTemporaryDir elsewhere;
    Other other(elsewhere.path());
    Other third(elsewhere.path());
    QTRY_VERIFY(other.told() > 0 || third.told() > 0);
    meet(m_folder.path());
    QCOMPARE(m_told, 0);
}

void TestNeighbours::noFolder()
{
    meet(m_folder.filePath(QStringLiteral("gone")));
    QCOMPARE(m_told, 0);
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.value(1) == QLatin1String("--neighbour"))
        return runNeighbour(application, arguments.value(2));
    TestNeighbours test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_neighbours.moc"
