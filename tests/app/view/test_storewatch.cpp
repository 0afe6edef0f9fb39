// SPDX-License-Identifier: MIT
//
// Touched files of the store are noticed, others are not, and for how long.
#include "app/view/storewatch.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {

void append(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::Append));
    file.write("x");
}

// It is told once, so the answer is kept.
void waitForFolder(StoreWatch &watch)
{
    bool touched = false;
    QTRY_VERIFY(touched || (touched = watch.takeFolderTouched()));
}

} // namespace

class TestStoreWatch : public QObject {
    Q_OBJECT

private slots:
    void quietAtFirst();
    void theLogIsTouched();
    void aLogThatComesLater();
    void aReplacedFile();
    void anotherConfiguration();
    void theFolder();
    void soManyTicks();
    void noFolder();
};

void TestStoreWatch::quietAtFirst()
{
    const QTemporaryDir folder;
    StoreWatch watch;
    QVERIFY(!watch.tick());
    watch.watch(folder.path(), QStringLiteral("a"));
    QVERIFY(!watch.tick());
    QVERIFY(!watch.takeFolderTouched());
}

void TestStoreWatch::theLogIsTouched()
{
    const QTemporaryDir folder;
    append(folder.filePath(QStringLiteral("a-wal")));
    StoreWatch watch;
    watch.watch(folder.path(), QStringLiteral("a"));
    append(folder.filePath(QStringLiteral("a-wal")));
    QTRY_VERIFY(watch.tick());
    QVERIFY(!watch.takeFolderTouched());
}

void TestStoreWatch::aLogThatComesLater()
{
    const QTemporaryDir folder;
    StoreWatch watch;
    watch.watch(folder.path(), QStringLiteral("a"));
    append(folder.filePath(QStringLiteral("a-wal")));
    waitForFolder(watch);
    while (watch.tick()) {
    }
    append(folder.filePath(QStringLiteral("a-wal")));
    QTRY_VERIFY(watch.tick());
}

void TestStoreWatch::aReplacedFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a"));
    append(path);
    StoreWatch watch;
    watch.watch(folder.path(), QStringLiteral("a"));
    append(folder.filePath(QStringLiteral("fresh")));
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::rename(folder.filePath(QStringLiteral("fresh")), path));
    waitForFolder(watch);
    QCoreApplication::processEvents();
    while (watch.tick()) {
    }
    append(path);
    QTRY_VERIFY(watch.tick());
}

void TestStoreWatch::anotherConfiguration()
{
    const QTemporaryDir folder;
    append(folder.filePath(QStringLiteral("a")));
    append(folder.filePath(QStringLiteral("b")));
    StoreWatch watch;
    watch.watch(folder.path(), QStringLiteral("a"));
    watch.watch(folder.path(), QStringLiteral("b"));
    append(folder.filePath(QStringLiteral("a")));
    QCoreApplication::processEvents();
    QVERIFY(!watch.tick());
    append(folder.filePath(QStringLiteral("b")));
    QTRY_VERIFY(watch.tick());
}

void TestStoreWatch::theFolder()
{
    const QTemporaryDir folder;
    StoreWatch watch;
    watch.watch(folder.path(), QStringLiteral("a"));
    append(folder.filePath(QStringLiteral("default-config")));
    waitForFolder(watch);
    QVERIFY(watch.tick());
    QVERIFY(!watch.takeFolderTouched());
}

void TestStoreWatch::soManyTicks()
{
    const QTemporaryDir folder;
    append(folder.filePath(QStringLiteral("a")));
    StoreWatch watch;
    watch.watch(folder.path(), QStringLiteral("a"));
    append(folder.filePath(QStringLiteral("a")));
    int ticks = 0;
    QTRY_VERIFY(ticks > 0 || (ticks += watch.tick()));
    while (watch.tick())
        ++ticks;
    QCOMPARE(ticks, int(StoreWatch::kTicks));
}

void TestStoreWatch::noFolder()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("gone"));
    StoreWatch watch;
    watch.watch(path, QStringLiteral("a"));
    QVERIFY(!watch.tick());
    QVERIFY(QDir().mkpath(path));
    watch.watch(path, QStringLiteral("a"));
    append(path + QStringLiteral("/a"));
    QTRY_VERIFY(watch.tick());
}

QTEST_MAIN(TestStoreWatch)
#include "test_storewatch.moc"
