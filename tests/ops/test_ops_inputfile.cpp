// SPDX-License-Identifier: MIT
#include "ops/inputfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

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

QTEST_APPLESS_MAIN(TestInputFile)
#include "test_ops_inputfile.moc"
