// SPDX-License-Identifier: MIT
#include "ops/inputfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class TestInputFile : public QObject {
    Q_OBJECT

private slots:
    void comesBack_data();
    void comesBack();
    void onlyRegularFilesAreRead_data();
    void onlyRegularFilesAreRead();
    void aFifoIsRefusedWithoutWaiting();
    void aFileThatCannotBeWrittenStaysAsItWas();
    void whatCanBeWrittenIsKnownBefore_data();
    void whatCanBeWrittenIsKnownBefore();
    void aFifoIsWrittenTo();
    void aFifoWithoutAReaderIsRefused();
    void aDeviceStaysADevice();

private:
    QByteArray path(const char *name) const { return m_folder.filePath(QLatin1String(name)).toUtf8(); }

    QTemporaryDir m_folder;
};

void TestInputFile::comesBack_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("a\nb");
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("larger than a piece") << QByteArray(200000, 'x');
}

void TestInputFile::comesBack()
{
    QFETCH(QByteArray, content);
    QVERIFY(ops::writeOutput(path("file"), content));
    const auto read = ops::readInput(path("file"));
    QVERIFY(read);
    QCOMPARE(*read, content);
}

void TestInputFile::onlyRegularFilesAreRead_data()
{
    QTest::addColumn<QByteArray>("path");
    for (const char *path : {"/", "/dev/null", "/dev/zero", "/nowhere/at/all", ""})
        QTest::newRow(*path ? path : "empty") << QByteArray(path);
}

void TestInputFile::onlyRegularFilesAreRead()
{
    QFETCH(QByteArray, path);
    const auto read = ops::readInput(path);
    QVERIFY(!read);
    QCOMPARE(read.failure().kind, ops::Failure::Input);
    QVERIFY(read.failure().text.startsWith("cannot read "));
}

void TestInputFile::aFifoIsRefusedWithoutWaiting()
{
    QCOMPARE(mkfifo(path("fifo").constData(), 0600), 0);
    QVERIFY(!ops::readInput(path("fifo")));
}

void TestInputFile::aFileThatCannotBeWrittenStaysAsItWas()
{
    QVERIFY(ops::writeOutput(path("file"), "old"));
    QVERIFY(!ops::writeOutput(path("missing/file"), "new"));
    QVERIFY(!ops::writeOutput(m_folder.path().toUtf8(), "new"));
    QCOMPARE(*ops::readInput(path("file")), QByteArray("old"));
}

void TestInputFile::whatCanBeWrittenIsKnownBefore_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("possible");
    QTest::newRow("a new file") << path("new") << true;
    QTest::newRow("a file that is there") << path("there") << true;
    QTest::newRow("standard output") << QByteArray("-") << true;
    QTest::newRow("a device") << QByteArray("/dev/null") << true;
    QTest::newRow("a folder") << m_folder.path().toUtf8() << false;
    QTest::newRow("in no folder") << path("missing/file") << false;
    QTest::newRow("below a file") << path("there/file") << false;
    QTest::newRow("in /proc") << QByteArray("/proc/file") << false;
    QTest::newRow("no name") << QByteArray() << false;
}

// Asking leaves nothing behind and changes nothing, and the answer is what writing would give.
void TestInputFile::whatCanBeWrittenIsKnownBefore()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, possible);
    QVERIFY(ops::writeOutput(path("there"), "old"));
    const QStringList before = QDir(m_folder.path()).entryList();
    const auto asked = ops::canWrite(file);
    QCOMPARE(bool(asked), possible);
    QCOMPARE(QDir(m_folder.path()).entryList(), before);
    QCOMPARE(*ops::readInput(path("there")), QByteArray("old"));
    if (possible)
        return;
    const auto written = ops::writeOutput(file, "new");
    QVERIFY(!written);
    QCOMPARE(asked.failure().text, written.failure().text);
    QCOMPARE(written.failure().kind, ops::Failure::Store);
}

void TestInputFile::aFifoIsWrittenTo()
{
    QCOMPARE(mkfifo(path("pipe").constData(), 0600), 0);
    const int reader = open(path("pipe").constData(), O_RDONLY | O_NONBLOCK);
    QVERIFY(ops::writeOutput(path("pipe"), "through"));
    char got[32] = "";
    QCOMPARE(int(read(reader, got, sizeof got)), 7);
    close(reader);
    QCOMPARE(QByteArray(got), QByteArray("through"));
    struct stat about {};
    QCOMPARE(stat(path("pipe").constData(), &about), 0);
    QVERIFY(S_ISFIFO(about.st_mode));
}

void TestInputFile::aFifoWithoutAReaderIsRefused()
{
    QCOMPARE(mkfifo(path("lonely").constData(), 0600), 0);
    const auto written = ops::writeOutput(path("lonely"), "x");
    QVERIFY(!written);
    QVERIFY(written.failure().text.startsWith("cannot write " + path("lonely") + ": "));
    struct stat about {};
    QCOMPARE(stat(path("lonely").constData(), &about), 0);
    QVERIFY(S_ISFIFO(about.st_mode));
}

// The other end of a terminal is as good a device as any, and nobody misses it.
void TestInputFile::aDeviceStaysADevice()
{
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
    const QByteArray device = ptsname(master);
    QVERIFY(ops::writeOutput(device, "words"));
    char got[32] = "";
    QCOMPARE(int(read(master, got, sizeof got)), 5);
    QCOMPARE(QByteArray(got), QByteArray("words"));
    struct stat about {};
    QCOMPARE(stat(device.constData(), &about), 0);
    QVERIFY(S_ISCHR(about.st_mode));
    close(master);
}

QTEST_APPLESS_MAIN(TestInputFile)
#include "test_ops_inputfile.moc"
