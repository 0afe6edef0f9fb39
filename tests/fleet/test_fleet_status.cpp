// SPDX-License-Identifier: MIT
//
// The status file and the machine's log line: written whole, and only when something is different.
#include "fleet/statusfile.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace fleet;

class TestFleetStatus : public QObject {
    Q_OBJECT

private slots:
    void isWritten();
    void isLeftAloneWhenNothingIsDifferent();
    void readersSeeItWhole();
    void goesAtTheEnd();
    void noFolder();
    void strangeNames();

private:
    QTemporaryDir m_folder;
};

namespace {

FleetStatus sample()
{
    FleetStatus status;
    status.role = Role::Desk;
    status.site = "london";
    status.name = "desk-3";
    status.pid = 17;
    KeptConfiguration kept;
    kept.configuration = kept.server = "lon-play-17";
    kept.status.connected = true;
    kept.status.serverSeenMs = 1795269540123;
    kept.status.waiting = 3;
    kept.status.overruled = 2;
    status.configurations.push_back(kept);
    return status;
}

QByteArray content(const StatusFile &file)
{
    QFile reader(QFile::decodeName(file.path()));
    return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
}

} // namespace

void TestFleetStatus::isWritten()
{
    StatusFile file(QFile::encodeName(m_folder.path()));
    QVERIFY(file.write(sample()));
    const QJsonObject json = QJsonDocument::fromJson(content(file)).object();
    QCOMPARE(json[QStringLiteral("format")].toInt(), 1);
    QCOMPARE(json[QStringLiteral("role")].toString(), QStringLiteral("desk"));
    QCOMPARE(json[QStringLiteral("name")].toString(), QStringLiteral("desk-3"));
    QCOMPARE(json[QStringLiteral("pid")].toInt(), 17);
    const QJsonObject kept = json[QStringLiteral("configurations")].toArray()[0].toObject();
    QCOMPARE(kept[QStringLiteral("server")].toString(), QStringLiteral("lon-play-17"));
    QCOMPARE(kept[QStringLiteral("connected")].toBool(), true);
    QCOMPARE(kept[QStringLiteral("waiting")].toInt(), 3);
    QCOMPARE(kept[QStringLiteral("overruled")].toInt(), 2);
    QCOMPARE(kept[QStringLiteral("seen")].toString(), QStringLiteral("2026-11-21T13:59:00.123Z"));
    QVERIFY(kept[QStringLiteral("pushed")].isNull());
    QCOMPARE(QFileInfo(QFile::decodeName(file.path())).permissions() & 0x0077, QFileDevice::Permissions());
}

void TestFleetStatus::isLeftAloneWhenNothingIsDifferent()
{
    StatusFile file(QFile::encodeName(m_folder.path()));
    QVERIFY(file.write(sample()));
    QFile::remove(QFile::decodeName(file.path()));
    QVERIFY(file.write(sample()));
    QCOMPARE(content(file), QByteArray());
    FleetStatus other = sample();
    other.configurations[0].status.waiting = 4;
    QVERIFY(file.write(other));
    QCOMPARE(content(file), statusText(other));
}

// It is replaced, not written into: who has it open still reads the old one.
void TestFleetStatus::readersSeeItWhole()
{
    StatusFile file(QFile::encodeName(m_folder.path()));
    QVERIFY(file.write(sample()));
    QFile reader(QFile::decodeName(file.path()));
    QVERIFY(reader.open(QIODevice::ReadOnly));
    FleetStatus other = sample();
    other.name = "another";
    QVERIFY(file.write(other));
    QCOMPARE(reader.readAll(), statusText(sample()));
    QCOMPARE(content(file), statusText(other));
}

void TestFleetStatus::goesAtTheEnd()
{
    StatusFile file(QFile::encodeName(m_folder.path()));
    QVERIFY(file.write(sample()));
    file.remove();
    QVERIFY(!QFile::exists(QFile::decodeName(file.path())));
    QVERIFY(file.write(sample()));
    QVERIFY(QFile::exists(QFile::decodeName(file.path())));
}

void TestFleetStatus::noFolder()
{
    StatusFile file(QFile::encodeName(m_folder.filePath(QStringLiteral("none"))));
    QVERIFY(!file.write(sample()));
    QVERIFY(m_folder.isValid());
}

void TestFleetStatus::strangeNames()
{
    FleetStatus status = sample();
    status.configurations[0].configuration = "\xff\"\n";
    QVERIFY(!QJsonDocument::fromJson(statusText(status)).isNull());
}

QTEST_GUILESS_MAIN(TestFleetStatus)
#include "test_fleet_status.moc"
