// SPDX-License-Identifier: MIT
//
// The built program itself: started on an X server, typed into with real key events, its store read by a
// second process. No window manager is there, so every click first says where.
#include "app/program/desktop.h"
#include "app/program/map.h"
#include "support/dialog.h"
#include "support/snapshot.h"
#include "support/storeholder.h"

#include <memory>

using namespace StoreTest;

namespace {

constexpr int kPatienceMs = 60000;

// One value as a second process reads it now; "absent" without one.
QString stored(int channel, const char *name)
{
    QProcess tool;
    tool.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"),
               {QStringLiteral("get"), channelIpKeyName(channel), QString::fromLatin1(name)});
    if (!tool.waitForFinished() || tool.exitCode() != 0)
        return QStringLiteral("absent");
    return QString::fromUtf8(tool.readAllStandardOutput().chopped(1));
}

} // namespace

#define QVERIFY_STORED(channel, name, value)                                                                 \
    QTRY_COMPARE_WITH_TIMEOUT(stored(channel, name), QString::fromLatin1(value), kPatienceMs)

class TestProgram : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { m_desktop.reset(); }
    void init();
    void cleanup() { m_store.reset(); }
    void comesUp();
    void edits();
    void keyboardOnly();
    void simplePage();
    void killLosesNothing();
    void closedWhileTheStoreIsHeld_data();
    void closedWhileTheStoreIsHeld();
    void doneByKey();
    void secondRunShowsWhatTheFirstWrote();
    void escapeSavesNothingAndGoesOn();
    void terminated();
    void argumentsAreTheToolkits();
    void folderThatCannotBeWritten();
    void damagedStore_data();
    void damagedStore();
    void startsWithoutADisplay();

private:
    void overrideNmos() { setGlobalDword(StorePath::AvHAL, "nmosoverride", 1); }

    std::unique_ptr<Desktop> m_desktop;
    std::unique_ptr<FreshStore> m_store;
};

void TestProgram::initTestCase()
{
    m_desktop = std::make_unique<Desktop>();
    QVERIFY2(m_desktop->isRunning(), "Xvfb did not start");
}

void TestProgram::init()
{
    m_store = std::make_unique<FreshStore>();
    qputenv("XDG_STATE_HOME", (m_store->folder() + QStringLiteral("/state")).toLocal8Bit());
}

void TestProgram::comesUp()
{
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    QCOMPARE(program.geometry(), QStringLiteral("660x640"));
    const Snapshot two = firstStart();
    QCOMPARE(snapshot(), two);
    QFile log(m_store->folder() + QStringLiteral("/state/corvel/corvel.log"));
    QVERIFY2(log.open(QIODevice::ReadOnly), qPrintable(log.fileName()));
    QVERIFY(log.readAll().split('\n').first().endsWith(" Application Version 8.0.0.0.197"));
}

void TestProgram::edits()
{
    overrideNmos();
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    const Map map;
    program.click(map.of("m_pEditRecDstPort"));
    program.key(QStringLiteral("ctrl+a"));
    program.type(QStringLiteral("5004"));
    program.key(QStringLiteral("Tab"));
    QVERIFY_STORED(0, "ReceiveDestinationPort", "5004");

    program.click(map.octet("m_pLineRecDstAddr", 0));
    program.key(QStringLiteral("Delete"));
    program.type(QStringLiteral("239")); // a full octet hands on to the next
    for (int octet = 1; octet < 4; ++octet) {
        program.click(map.octet("m_pLineRecDstAddr", octet));
        program.key(QStringLiteral("Delete"));
        program.type(QString::number(octet));
    }
    QVERIFY_STORED(0, "ReceiveDestinationIp", "239.1.2.3");

    program.click(map.of("m_pCheckSndDstAddr"));
    QVERIFY_STORED(0, "TransmitFlags", "8");
    program.click(map.of("m_pComboVidFormat"));
    program.key(QStringLiteral("End"));
    program.key(QStringLiteral("Return"));
    QVERIFY_STORED(0, "SignalFormat", "641794108");

    // Another channel and another element, and nothing of the first changes any more.
    const Snapshot before = snapshot();
    program.click(map.of("m_pChannel"));
    program.key(QStringLiteral("Down"), 2);
    program.key(QStringLiteral("Return"));
    program.click(map.of("m_pAncConfig"));
    program.click(map.of("m_pEditSndSrcPort"));
    program.key(QStringLiteral("ctrl+a"));
    program.type(QStringLiteral("6001"));
    program.key(QStringLiteral("Tab"));
    QVERIFY_STORED(2, "TransmitAncSourcePort", "6001");
    for (const QString &changed : changes(before, snapshot()).keys())
        QVERIFY2(isOfChannel(2, changed), qPrintable(changed));
}

// From one field down the page with Tab, as the eye goes.
void TestProgram::keyboardOnly()
{
    overrideNmos();
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    const Map map;
    program.click(map.of("m_pEditSndSrcPort"));
    program.key(QStringLiteral("ctrl+a"));
    program.type(QStringLiteral("6002"));
    program.key(QStringLiteral("Tab"));
    program.key(QStringLiteral("space"));  // use
    program.key(QStringLiteral("Tab"), 2); // over lock
    program.key(QStringLiteral("ctrl+a"));
    program.type(QStringLiteral("232"));
    program.key(QStringLiteral("Tab"), 3); // over the other octets; the first one moved on by itself
    program.key(QStringLiteral("space"));
    QVERIFY_STORED(0, "TransmitSourcePort", "6002");
    QVERIFY_STORED(0, "TransmitDestinationIp", "232.0.0.0");
    QVERIFY_STORED(0, "TransmitFlags", "9"); // source port and destination address
}

void TestProgram::simplePage()
{
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    const Map map;
    program.click(map.octet("m_pSimpleAddress", 3));
    program.key(QStringLiteral("ctrl+a"));
    program.type(QStringLiteral("77"));
    QVERIFY_STORED(0, "TransmitDestinationIp", "1.0.0.77");
}

// As soon as another process can see a value, it outlives the program.
void TestProgram::killLosesNothing()
{
    overrideNmos();
    for (const char *port : {"1001", "1002", "1003"}) {
        Program program(*m_desktop);
        QVERIFY(program.waitForWindow());
        const Map map;
        program.click(map.of("m_pEditRecSrcPort"));
        program.key(QStringLiteral("ctrl+a"));
        program.type(QLatin1String(port));
        program.key(QStringLiteral("Tab"));
        QVERIFY_STORED(0, "ReceiveSourcePort", port);
        program.process().kill();
        QVERIFY(program.process().waitForFinished());
        QCOMPARE(stored(0, "ReceiveSourcePort"), QLatin1String(port));
        QVERIFY(QDir(m_store->folder() + QStringLiteral("/corvel"))
                    .entryList({QStringLiteral("*corrupt*")})
                    .isEmpty());
    }
}

void TestProgram::closedWhileTheStoreIsHeld_data()
{
    QTest::addColumn<bool>("isKilled");
    QTest::newRow("by Done") << false;
    QTest::newRow("killed") << true;
}

// What could not be stored is stored by the next start.
void TestProgram::closedWhileTheStoreIsHeld()
{
    QFETCH(const bool, isKilled);
    overrideNmos();
    const QDir folder(m_store->folder() + QStringLiteral("/corvel"));
    const auto isKept = [&folder] {
        return !folder.entryList({QStringLiteral(".corvel-kept-*")}, QDir::Files | QDir::Hidden).isEmpty();
    };
    {
        Program program(*m_desktop);
        QVERIFY(program.waitForWindow());
        const StoreHolder holder([] {}, false);
        const Map map;
        QVERIFY(program.replace(map.of("m_pEditRecDstPort"), QStringLiteral("5004")));
        QTRY_VERIFY_WITH_TIMEOUT(isKept(), kPatienceMs);
        if (isKilled) {
            program.process().kill();
            QVERIFY(program.process().waitForFinished());
        } else {
            program.click(map.of("m_pCmdAccept"));
            QCOMPARE(program.waitForEnd(), 0);
        }
        QCOMPARE(stored(0, "ReceiveDestinationPort"), QStringLiteral("absent"));
    }
    QVERIFY(isKept());
    Program again(*m_desktop);
    QVERIFY(again.waitForWindow());
    QVERIFY_STORED(0, "ReceiveDestinationPort", "5004");
    QVERIFY(!isKept());
}

void TestProgram::doneByKey()
{
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    const Map map;
    program.click(map.octet("m_pSimpleAddress", 3));
    program.key(QStringLiteral("Tab"), 3);       // Load File, Save File, Done
    QVERIFY_STORED(0, "ReceiveSourcePort", "0"); // leaving the address stores what is shown
    put(0, "ReceiveSourcePort", 9u);
    program.key(QStringLiteral("space"));
    QCOMPARE(program.waitForEnd(), 0);
    QCOMPARE(stored(0, "ReceiveSourcePort"),
             QStringLiteral("9")); // saved once more, but nobody's change undone
}

// What others wrote meanwhile stands when it ends.
void TestProgram::secondRunShowsWhatTheFirstWrote()
{
    overrideNmos();
    {
        Program first(*m_desktop);
        QVERIFY(first.waitForWindow());
        const Map map;
        first.click(map.of("m_pEditRecSrcPort"));
        first.key(QStringLiteral("ctrl+a"));
        first.type(QStringLiteral("4321"));
        first.click(map.of("m_pCmdAccept") + QPoint(20, 0));
        QCOMPARE(first.waitForEnd(), 0);
    }
    QCOMPARE(stored(0, "ReceiveSourcePort"), QStringLiteral("4321"));
    Program second(*m_desktop);
    QVERIFY(second.waitForWindow());
    const Map map;
    put(0, "ReceiveSourcePort", 1u);
    second.click(map.of("m_pCmdAccept") + QPoint(20, 0));
    QCOMPARE(second.waitForEnd(), 0);
    QCOMPARE(stored(0, "ReceiveSourcePort"), QStringLiteral("1"));
}

// Escape closes any other dialog of the toolkit. This one goes on, and nothing is saved.
void TestProgram::escapeSavesNothingAndGoesOn()
{
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    const QByteArray before = dump();
    QVERIFY(program.key(QStringLiteral("Escape")));
    const Map map; // the program has seen the key once it has seen the click after it
    program.click(map.octet("m_pSimpleAddress", 3));
    program.key(QStringLiteral("Escape"));
    QCOMPARE(dump(), before);
    program.type(QStringLiteral("7"));
    QVERIFY_STORED(0, "TransmitDestinationIp", "1.0.0.7");
    QCOMPARE(program.process().state(), QProcess::Running);
}

void TestProgram::terminated()
{
    overrideNmos();
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    const Map map;
    program.click(map.of("m_pCheckRecDstPort"));
    QVERIFY_STORED(0, "ReceiveFlags", "2");
    program.process().terminate();
    QVERIFY(program.process().waitForFinished(kPatienceMs));
    QCOMPARE(stored(0, "ReceiveFlags"), QStringLiteral("2"));
}

void TestProgram::argumentsAreTheToolkits()
{
    Program program(*m_desktop, {QStringLiteral("some.ipp"), QStringLiteral("--channel=3")});
    QVERIFY(program.waitForWindow());
}

// Nothing can be stored, not even by root; the window comes up all the same.
void TestProgram::folderThatCannotBeWritten()
{
    QFile file(m_store->folder() + QStringLiteral("/file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray folder = qgetenv("XDG_CONFIG_HOME");
    const Map map;
    qputenv("XDG_CONFIG_HOME", file.fileName().toLocal8Bit());
    qputenv("XDG_STATE_HOME", file.fileName().toLocal8Bit());
    {
        Program program(*m_desktop);
        QVERIFY(program.waitForWindow());
        program.type(QStringLiteral("77\t"));
        program.click(map.of("m_pCmdAccept") + QPoint(20, 0));
        QCOMPARE(program.waitForEnd(), 0);
    }
    qputenv("XDG_CONFIG_HOME", folder);
}

void TestProgram::damagedStore_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("garbage") << QByteArray(8192, 'x');
    QTest::newRow("head only") << QByteArray("SQLite format 3\0", 16);
}

// Set aside, never deleted; the window comes up and edits are stored again.
void TestProgram::damagedStore()
{
    QFETCH(QByteArray, bytes);
    const QDir folder(m_store->folder() + QStringLiteral("/corvel"));
    QVERIFY(QDir().mkpath(folder.path()));
    QFile file(folder.filePath(QStringLiteral("default.rkcfg")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    Program program(*m_desktop);
    QVERIFY(program.waitForWindow());
    QCOMPARE(folder.entryList({QStringLiteral("default.rkcfg.corrupt-*")}).size(), 1);
    const Map map;
    program.click(map.octet("m_pSimpleAddress", 3));
    program.key(QStringLiteral("ctrl+a"));
    program.type(QStringLiteral("9"));
    QVERIFY_STORED(0, "TransmitDestinationIp", "1.0.0.9");
}

// The smoke test: without any display, on the toolkit's offscreen platform, up and down again.
void TestProgram::startsWithoutADisplay()
{
    QProcess process;
    process.start(QStringLiteral(CORVEL_BIN_DIR "/corvel"),
                  {QStringLiteral("-platform"), QStringLiteral("offscreen")});
    const Snapshot two = firstStart();
    QTRY_COMPARE_WITH_TIMEOUT(snapshot(), two, kPatienceMs);
    QCOMPARE(process.state(), QProcess::Running);
    process.terminate();
    QVERIFY(process.waitForFinished(kPatienceMs));
    QVERIFY(process.readAllStandardOutput().isEmpty());
}

CORVEL_DIALOG_TEST_MAIN(TestProgram)
#include "test_program.moc"
