// SPDX-License-Identifier: MIT
#include "ops/inputfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

class TestInputFile : public QObject {
    Q_OBJECT

private slots:
    void comesBack_data();
    void comesBack();
    void onlyRegularFilesAreRead_data();
    void onlyRegularFilesAreRead();
    void aFifoThatNobodyWritesToIsRefused();
    void aPipeIsReadToItsEnd_data();
    void aPipeIsReadToItsEnd();
    void aPipeIsWaitedFor();
    void aFifoIsReadLikeAFile();
    void moreThanMayBeReadIsRefused();
    void aFileThatCannotBeWrittenStaysAsItWas();
    void whatCanBeWrittenIsKnownBefore_data();
    void whatCanBeWrittenIsKnownBefore();
    void aFifoIsWrittenTo();
    void aFifoWithoutAReaderIsRefused();
    void aDeviceStaysADevice();
    void theReasonIsTold_data();
    void theReasonIsTold();
    void aLinkIsFollowed();
    void whatIsWrittenIsThereAtOnce();

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

// Nobody may ever come, and a script that waits for ever tells nobody why.
void TestInputFile::aFifoThatNobodyWritesToIsRefused()
{
    QCOMPARE(mkfifo(path("fifo").constData(), 0600), 0);
    const auto read = ops::readInput(path("fifo"));
    QVERIFY(!read);
    QCOMPARE(read.failure().text, "cannot read " + path("fifo") + ": nobody writes to it");
    QCOMPARE(read.failure().kind, ops::Failure::Input);
}

// What a shell gives for <(command): the name of a pipe whose writer may be gone already.
void TestInputFile::aPipeIsReadToItsEnd_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one byte") << QByteArray("x");
    QTest::newRow("lines") << QByteArray("a\nb\n");
    QTest::newRow("zeros") << QByteArray(300, '\0');
}

void TestInputFile::aPipeIsReadToItsEnd()
{
    QFETCH(QByteArray, content);
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    QCOMPARE(int(write(ends[1], content.constData(), size_t(content.size()))), content.size());
    close(ends[1]);
    const auto read = ops::readInput("/dev/fd/" + QByteArray::number(ends[0]));
    close(ends[0]);
    QVERIFY(read);
    QCOMPARE(*read, content);
}

// More than a pipe holds, so that the writer has to wait for the reader and the reader for the writer.
void TestInputFile::aPipeIsWaitedFor()
{
    int ends[2];
    QCOMPARE(pipe(ends), 0);
    const QByteArray content(500000, 'y');
    std::thread writer([&] {
        for (int at = 0; at < content.size();) {
            const auto put = write(ends[1], content.constData() + at, size_t(content.size() - at));
            at += put > 0 ? int(put) : content.size();
        }
        close(ends[1]);
    });
    const auto read = ops::readInput("/dev/fd/" + QByteArray::number(ends[0]));
    writer.join();
    close(ends[0]);
    QVERIFY(read);
    QCOMPARE(*read, content);
}

void TestInputFile::aFifoIsReadLikeAFile()
{
    QCOMPARE(mkfifo(path("named").constData(), 0600), 0);
    const int reader = open(path("named").constData(), O_RDONLY | O_NONBLOCK); // lets the writer open it
    const int writer = open(path("named").constData(), O_WRONLY);
    QCOMPARE(int(write(writer, "through", 7)), 7);
    std::thread closer([&] { close(writer); });
    const auto read = ops::readInput(path("named"));
    closer.join();
    close(reader);
    QVERIFY(read);
    QCOMPARE(*read, QByteArray("through"));
}

// A file with a hole takes no room on the disk.
void TestInputFile::moreThanMayBeReadIsRefused()
{
    const auto refusal = [&](qint64 size) {
        QFile file(QFile::decodeName(path("huge")));
        [&] { QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(size)); }();
        const auto read = ops::readInput(path("huge"));
        file.remove();
        return read ? QByteArray() : read.failure().text;
    };
    QCOMPARE(refusal(ops::kLargestInput + 1), "cannot read " + path("huge") + ": larger than 256 MiB");
    QCOMPARE(refusal(4096), QByteArray());
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

void TestInputFile::theReasonIsTold_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("a folder") << m_folder.path().toUtf8() << QByteArray("it is a directory");
    QTest::newRow("a device") << QByteArray("/dev/null") << QByteArray("it is no regular file");
    QTest::newRow("nothing there") << path("nothing") << QByteArray("No such file or directory");
    QTest::newRow("below a file") << path("there/file") << QByteArray("Not a directory");
    QTest::newRow("no name") << QByteArray() << QByteArray("No such file or directory");
    QTest::newRow("a name too long") << path(QByteArray(300, 'x').constData())
                                     << QByteArray("File name too long");
    QTest::newRow("a link to itself") << path("circle") << QByteArray("Too many levels of symbolic links");
}

void TestInputFile::theReasonIsTold()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, reason);
    QVERIFY(ops::writeOutput(path("there"), "old"));
    QFile::link(QStringLiteral("circle"), QFile::decodeName(path("circle")));
    const auto read = ops::readInput(file);
    QVERIFY(!read);
    QCOMPARE(read.failure().text, "cannot read " + file + ": " + reason);
}

void TestInputFile::aLinkIsFollowed()
{
    QVERIFY(ops::writeOutput(path("behind"), "text"));
    QVERIFY(QFile::link(QStringLiteral("behind"), QFile::decodeName(path("link"))));
    const auto read = ops::readInput(path("link"));
    QVERIFY(read);
    QCOMPARE(*read, QByteArray("text"));
}

// Whole, and without anything beside it: a reader sees the old content or the new one.
void TestInputFile::whatIsWrittenIsThereAtOnce()
{
    QTemporaryDir folder;
    const QByteArray file = folder.filePath(QStringLiteral("f")).toUtf8();
    QVERIFY(ops::writeOutput(file, "old"));
    QFile open(QFile::decodeName(file));
    QVERIFY(open.open(QIODevice::ReadOnly));
    QVERIFY(ops::writeOutput(file, "new and longer"));
    QCOMPARE(open.readAll(), QByteArray("old"));
    QCOMPARE(*ops::readInput(file), QByteArray("new and longer"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("f")});
}

QTEST_APPLESS_MAIN(TestInputFile)
#include "test_ops_inputfile.moc"
