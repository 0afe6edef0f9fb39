// SPDX-License-Identifier: MIT
// Named configurations and the default name, here and in other processes.
#include "storehome.h"

#include <QDir>
#include <QFile>
#include <QtTest>
#include <sys/stat.h>

class TestRkcfgNames : public QObject {
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<StoreHome>(); }
    void cleanup() { m_home.reset(); }

    void nobodyChose();
    void chosenNameHasItsOwnFile();
    void names_data();
    void names();
    void refusedNameChangesNothing();
    void smallBufferCutsAtAWholeCharacter_data();
    void smallBufferCutsAtAWholeCharacter();
    void otherProcessFollows();
    void otherProcessFollowsBackAndForth();
    void fileIsReplacedInOneStep();
    void unusableFileMeansDefault_data();
    void unusableFileMeansDefault();
    void fifoInItsPlaceDoesNotHang();
    void nameWhoseStoreCannotBeOpenedIsRefused();

private:
    std::unique_ptr<StoreHome> m_home;
};

namespace {

QByteArray defaultName(uint32_t size = 100)
{
    QByteArray buffer(static_cast<int>(size) + 1, '#');
    if (rkCFGGetDefaultName(buffer.data(), size) != 0 || !buffer.endsWith('#'))
        return "(failed)";
    return buffer.constData();
}

} // namespace

void TestRkcfgNames::nobodyChose()
{
    QCOMPARE(defaultName(), QByteArray("default"));
    putNumber("p", "n", 1);
    QVERIFY(QFile::exists(m_home->database()));
    QVERIFY(!QFile::exists(m_home->path(QStringLiteral("default-config"))));
    QCOMPARE(takeLog(), QStringList());
}

void TestRkcfgNames::chosenNameHasItsOwnFile()
{
    putNumber("p", "n", 1);
    QCOMPARE(rkCFGClose(store, 1), 0);
    QCOMPARE(rkCFGSetDefaultName("studio 2"), 0);
    QVERIFY(QFile::exists(m_home->database(QStringLiteral("studio 2"))));
    QCOMPARE(content(m_home->path(QStringLiteral("default-config"))), QByteArray("studio 2\n"));
    QCOMPARE(defaultName(), QByteArray("studio 2"));
    QCOMPARE(number("p", "n"), std::nullopt);
    putNumber("p", "n", 2);
    QCOMPARE(rkCFGSetDefaultName("default"), 0);
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(rkCFGSetDefaultName("studio 2"), 0);
    QCOMPARE(number("p", "n"), 2u);
}

void TestRkcfgNames::names_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("good");
    QTest::newRow("one letter") << QByteArray("a") << true;
    QTest::newRow("spaces") << QByteArray(" a b ") << true;
    QTest::newRow("utf-8") << QByteArray("Gr\xC3\xB6\xC3\x9F"
                                         "e \xF0\x9F\x93\xBA")
                           << true;
    QTest::newRow("backslash") << QByteArray("a\\b") << true;
    QTest::newRow("percent and question") << QByteArray("a%41?b#c") << true;
    QTest::newRow("quotes") << QByteArray("it's \"x\"") << true;
    QTest::newRow("dash first") << QByteArray("-wal") << true;
    QTest::newRow("suffix inside") << QByteArray("a.rkcfg") << true;
    QTest::newRow("64 bytes") << QByteArray(64, 'x') << true;
    QTest::newRow("65 bytes") << QByteArray(65, 'x') << false;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("dot first") << QByteArray(".a") << false;
    QTest::newRow("up") << QByteArray("..") << false;
    QTest::newRow("slash") << QByteArray("a/b") << false;
    QTest::newRow("way out") << QByteArray("../a") << false;
    QTest::newRow("line end") << QByteArray("a\n") << false;
    QTest::newRow("tab") << QByteArray("a\tb") << false;
    QTest::newRow("delete") << QByteArray("a\x7F") << false;
    QTest::newRow("high control") << QByteArray("a\xC2\x85") << false;
    QTest::newRow("latin-1") << QByteArray("Gr\xF6\xDF"
                                           "e")
                             << false;
    QTest::newRow("cut character") << QByteArray("Gr\xC3") << false;
    QTest::newRow("lone tail") << QByteArray("\x80") << false;
    QTest::newRow("too long form") << QByteArray("\xC0\xAF") << false;
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << false;
    QTest::newRow("beyond unicode") << QByteArray("\xF4\x90\x80\x80") << false;
}

void TestRkcfgNames::names()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, good);
    QCOMPARE(rkCFGSetDefaultName(name.constData()) == 0, good);
    QCOMPARE(defaultName(), good ? name : QByteArray("default"));
    QCOMPARE(takeLog().size(), good ? 0 : 1);
    if (!good)
        return;
    putNumber("p", "n", 7);
    closeStore();
    QCOMPARE(number("p", "n"), 7u);
    QCOMPARE(m_home->files(QStringLiteral("*.rkcfg")), QStringList(QString::fromUtf8(name + ".rkcfg")));
}

void TestRkcfgNames::refusedNameChangesNothing()
{
    rkCFGSetDefaultName("studio");
    putNumber("p", "n", 1);
    QVERIFY(rkCFGSetDefaultName("a/b") != 0);
    QCOMPARE(defaultName(), QByteArray("studio"));
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgNames::smallBufferCutsAtAWholeCharacter_data()
{
    QTest::addColumn<uint32_t>("size");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("only the zero") << 1u << QByteArray("");
    QTest::newRow("before the character") << 2u << QByteArray("a");
    QTest::newRow("inside the character") << 3u << QByteArray("a");
    QTest::newRow("after the character") << 4u << QByteArray("a\xC3\xB6");
    QTest::newRow("exact") << 5u
                           << QByteArray("a\xC3\xB6"
                                         "b");
    QTest::newRow("ample") << 64u
                           << QByteArray("a\xC3\xB6"
                                         "b");
}

void TestRkcfgNames::smallBufferCutsAtAWholeCharacter()
{
    QFETCH(uint32_t, size);
    QFETCH(QByteArray, name);
    rkCFGSetDefaultName("a\xC3\xB6"
                        "b");
    QCOMPARE(defaultName(size), name);
}

void TestRkcfgNames::otherProcessFollows()
{
    Worker worker;
    QCOMPARE(worker.ask("setn p n 1"), QByteArray("1"));
    QCOMPARE(worker.ask("default"), QByteArray("default"));
    QCOMPARE(rkCFGSetDefaultName("night"), 0);
    QCOMPARE(worker.ask("default"), QByteArray("night"));
    QCOMPARE(worker.ask("getn p n"), QByteArray("absent"));
    QCOMPARE(worker.ask("setn p n 2"), QByteArray("1"));
    QCOMPARE(number("p", "n"), 2u);
    QCOMPARE(rkCFGSetDefaultName("default"), 0);
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgNames::otherProcessFollowsBackAndForth()
{
    Worker worker;
    for (uint32_t round = 0; round < 20; ++round) {
        const QByteArray name = round % 2 ? "one" : "two";
        QCOMPARE(worker.ask("default " + name), QByteArray("0"));
        QCOMPARE(defaultName(), name);
        putNumber("p", "n", round);
        QCOMPARE(worker.ask("getn p n"), "=" + QByteArray::number(round));
    }
}

void TestRkcfgNames::fileIsReplacedInOneStep()
{
    rkCFGSetDefaultName("one");
    struct stat before {};
    struct stat after {};
    const QByteArray file = QFile::encodeName(m_home->path(QStringLiteral("default-config")));
    QCOMPARE(stat(file.constData(), &before), 0);
    rkCFGSetDefaultName("two");
    QCOMPARE(stat(file.constData(), &after), 0);
    QVERIFY(before.st_ino != after.st_ino);
    QCOMPARE(after.st_mode & 07777, 0600u);
    QCOMPARE(m_home->files(QStringLiteral("default-config*")), QStringList(QStringLiteral("default-config")));
}

void TestRkcfgNames::unusableFileMeansDefault_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("empty line") << QByteArray("\nx\n");
    QTest::newRow("way out") << QByteArray("../../etc/passwd\n");
    QTest::newRow("noise") << noise(5000, 3);
    QTest::newRow("too long") << QByteArray(100000, 'x');
    QTest::newRow("zeros") << QByteArray(64, '\0');
}

void TestRkcfgNames::unusableFileMeansDefault()
{
    QFETCH(QByteArray, text);
    putNumber("p", "n", 1);
    overwrite(m_home->path(QStringLiteral("default-config")), text);
    QCOMPARE(defaultName(), QByteArray("default"));
    QCOMPARE(number("p", "n"), 1u);
    QCOMPARE(takeLog().size(), 1);
    QCOMPARE(rkCFGSetDefaultName("default"), 0);
    QCOMPARE(content(m_home->path(QStringLiteral("default-config"))), QByteArray("default\n"));
}

void TestRkcfgNames::fifoInItsPlaceDoesNotHang()
{
    putNumber("p", "n", 1);
    QCOMPARE(mkfifo(QFile::encodeName(m_home->path(QStringLiteral("default-config"))).constData(), 0600), 0);
    QCOMPARE(defaultName(), QByteArray("default"));
    QCOMPARE(number("p", "n"), 1u);
}

void TestRkcfgNames::nameWhoseStoreCannotBeOpenedIsRefused()
{
    putNumber("p", "n", 1);
    QVERIFY(QDir().mkpath(m_home->database(QStringLiteral("blocked"))));
    QVERIFY(rkCFGSetDefaultName("blocked") != 0);
    QCOMPARE(takeLog().size(), 1);
    QCOMPARE(defaultName(), QByteArray("default"));
    QCOMPARE(number("p", "n"), 1u);
}

QTEST_GUILESS_MAIN(TestRkcfgNames)
#include "test_rkcfg_names.moc"
