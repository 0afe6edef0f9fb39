// SPDX-License-Identifier: MIT
//
// The line about the fleet comes, changes and goes with the file of the fleet's service.
#include "support/filefixture.h"

#include "channel/storehealth.h"

#include <QLabel>
#include <QSaveFile>

#include <memory>

using namespace DialogTest;

class TestFleetLine : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void withoutAFileThereIsNoLine();
    void comesChangesAndGoes();
    void isThereFromTheStart();
    void tellsOfTheShownConfiguration();
    void nothingIsCovered();

private:
    QString line() const
    {
        return m_fixture->dialog->findChild<QLabel *>(QStringLiteral("statusLine"))->text();
    }
    QString file() const { return QFileInfo(storePath()).path() + QStringLiteral("/fleet-status"); }
    void tell(const QByteArray &members) const;

    std::unique_ptr<FileFixture> m_fixture;
};

void TestFleetLine::init()
{
    m_fixture = std::make_unique<FileFixture>();
}

void TestFleetLine::cleanup()
{
    QFile::remove(file());
    m_fixture.reset();
}

// Replaced as a whole, as the service does it.
void TestFleetLine::tell(const QByteArray &members) const
{
    const QByteArray name = QFileInfo(storePath()).completeBaseName().toUtf8();
    QSaveFile saved(file());
    QVERIFY(saved.open(QIODevice::WriteOnly));
    saved.write(
        R"({"format":1,"role":"desk","pid":)" + QByteArray::number(QCoreApplication::applicationPid()) +
        R"(,"configurations":[{"configuration":")" + name + R"(","server":"lon-play-17",)" + members + "}]}");
    QVERIFY(saved.commit());
}

void TestFleetLine::withoutAFileThereIsNoLine()
{
    letItTick(m_fixture->dialog.get());
    QCOMPARE(line(), QString());
}

void TestFleetLine::comesChangesAndGoes()
{
    tell(R"("connected":true,"alive":true,"inStep":true)");
    QTRY_COMPARE(line(), QStringLiteral("lon-play-17: in step"));
    QVERIFY(m_fixture->dialog->findChild<QLabel *>(QStringLiteral("statusLine"))->isVisible());
    tell(R"("connected":true,"alive":false)");
    QTRY_COMPARE(line(), QStringLiteral("lon-play-17 is away"));
    tell(R"("connected":false,"waiting":3)");
    QTRY_COMPARE(line(), QStringLiteral("Cluster away, 3 edits wait here"));
    QFile::remove(file());
    QTRY_COMPARE(line(), QString());
}

void TestFleetLine::isThereFromTheStart()
{
    tell(R"("connected":true,"alive":false)");
    m_fixture->dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_fixture->dialog.get());
    QCOMPARE(line(), QStringLiteral("lon-play-17 is away"));
}

void TestFleetLine::tellsOfTheShownConfiguration()
{
    tell(R"("connected":true,"alive":false)");
    QTRY_COMPARE(line(), QStringLiteral("lon-play-17 is away"));
    tell(R"("x":1,"configuration":"another","connected":true,"alive":false)");
    QTRY_COMPARE(line(), QString());
}

// Editing goes on: the bar over the page is for what keeps edits from being kept.
void TestFleetLine::nothingIsCovered()
{
    tell(R"("connected":false,"waiting":3)");
    QTRY_VERIFY(!line().isEmpty());
    QVERIFY(!m_fixture->dialog->findChild<QLabel *>(QStringLiteral("storeBar"))->isVisible());
    typeText(m_fixture->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(m_fixture->dialog->m_pEditRecDstPort->text(), QStringLiteral("5004"));
}

CORVEL_DIALOG_TEST_MAIN(TestFleetLine)
#include "test_fleetline.moc"
