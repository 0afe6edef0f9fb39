// SPDX-License-Identifier: MIT
//
// The file commands where something is in the way: no right to write, a full or read-only disk, a pipe or
// folder of that name, very long names. Nothing is ever asked or crashes, and a file that was left
// incomplete is in the log. And a machine with very many channels.
#include "support/filefixture.h"
#include "support/logfile.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

namespace {

const QString kUnshared = QStringLiteral(CORVEL_TEST_DATA "/../support/unshared");

// Presses one of the commands in a process of its own, whose file system may be a special one.
int pressOnce(const QString &command, const QString &path)
{
    startLog();
    FileFixture fixture;
    const bool taken = command == QLatin1String("save") ? fixture.save(path) : fixture.saveElement(path);
    return taken && fixture.dialog->isVisible() ? 0 : 97;
}

// True when this machine lets us mount in a name space of our own.
bool mayMount()
{
    return QProcess::execute(kUnshared, {QStringLiteral("-m"), QStringLiteral("true")}) == 0;
}

QByteArray longPath(int length)
{
    QByteArray path;
    while (path.size() < length)
        path += '/' + QByteArray(qMin(200, length - path.size() - 1), 'n');
    return path;
}

} // namespace

class TestFileTrouble : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { startLog(); }
    void init();
    void cleanup() { m.reset(); }

    void saveThatCannotBeCreated_data();
    void saveThatCannotBeCreated();
    void saveOverAFifo();
    void saveOverAFolder();
    void loadOfWhatIsNoFile_data();
    void loadOfWhatIsNoFile();
    void longNames_data();
    void longNames();
    void specialDisk_data();
    void specialDisk();
    void aBigMachine();

private:
    std::unique_ptr<FileFixture> m;
};

void TestFileTrouble::init()
{
    m = std::make_unique<FileFixture>();
}

void TestFileTrouble::saveThatCannotBeCreated_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("no such folder") << QStringLiteral("missing");
    QTest::newRow("a file as folder") << QStringLiteral("file");
    QTest::newRow("where nobody may write") << QStringLiteral("/proc");
}

// Silent; the override ends only with a file.
void TestFileTrouble::saveThatCannotBeCreated()
{
    QFETCH(QString, folder);
    m->write(QStringLiteral("file"), "x");
    const Snapshot before = snapshot();
    QVERIFY(m->save(folder + QStringLiteral("/corvel-test.ipp")));
    QCOMPARE(m->dialog->m_lastPath, QDir(m->in(folder)).absolutePath());
    QVERIFY(m->save(folder + QStringLiteral("/corvel-test.sdp")));
    QVERIFY(m->saveElement(folder + QStringLiteral("/corvel-test.sdp")));
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QCOMPARE(m->files(), QStringList{QStringLiteral("file")});
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(m->dialog->isVisible());
}

// A pipe without a reader would hold up whoever opens it.
void TestFileTrouble::saveOverAFifo()
{
    const QByteArray path = QFile::encodeName(m->in(QStringLiteral("x.ipp")));
    QCOMPARE(mkfifo(path.constData(), 0600), 0);
    const Snapshot before = snapshot();
    FileAnswer answer(m->in(QStringLiteral("x.ipp")));
    click(m->dialog->m_pCmdSave);
    QCOMPARE(answer.questions, 1); // whether to replace it
    struct stat info {};
    QCOMPARE(stat(path.constData(), &info), 0);
    QVERIFY(S_ISFIFO(info.st_mode));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestFileTrouble::saveOverAFolder()
{
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("x.ipp")));
    const Snapshot before = snapshot();
    QVERIFY(!m->save(QStringLiteral("x.ipp"))); // the dialog goes into it instead
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(QFileInfo(m->in(QStringLiteral("x.ipp"))).isDir());
}

void TestFileTrouble::loadOfWhatIsNoFile_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"nothing", "folder", "fifo", "dangling link"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

// What cannot be opened is not the last file loaded either.
void TestFileTrouble::loadOfWhatIsNoFile()
{
    QFETCH(QString, what);
    const QByteArray path = QFile::encodeName(m->in(QStringLiteral("x.sdp")));
    if (what == QLatin1String("folder"))
        QCOMPARE(mkdir(path.constData(), 0700), 0);
    else if (what == QLatin1String("fifo"))
        QCOMPARE(mkfifo(path.constData(), 0600), 0);
    else if (what == QLatin1String("dangling link"))
        QCOMPARE(symlink("nowhere", path.constData()), 0);
    const Snapshot before = snapshot();
    QCOMPARE(m->load(QStringLiteral("x.sdp")),
             what == QLatin1String("fifo")); // the dialog refuses the others
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(m->dialog->m_lastPath.isEmpty());
}

void TestFileTrouble::longNames_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {255, 4000, 4096, 20000})
        QTest::newRow(qPrintable(QString::number(length))) << length;
}

void TestFileTrouble::longNames()
{
    QFETCH(int, length);
    const Snapshot before = snapshot();
    for (const char *suffix : {".ipp", ".sdp"}) {
        const QString path = m->folder.path() + QString::fromLatin1(longPath(length)) + QLatin1String(suffix);
        m->save(path);
        m->saveElement(path);
        m->load(path);
    }
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(m->dialog->isVisible());
    QCOMPARE(m->files(), QStringList());
}

void TestFileTrouble::specialDisk_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("incomplete");
    const QString full = QStringLiteral("size=4k");
    const QString readOnly = QStringLiteral("ro");
    const QString save = QStringLiteral("save");
    const QString element = QStringLiteral("element");
    QTest::newRow("full, settings") << full << save << QStringLiteral("x.ipp") << true;
    QTest::newRow("full, descriptions") << full << save << QStringLiteral("x.sdp") << true;
    QTest::newRow("full, element") << full << element << QStringLiteral("x.sdp") << true;
    QTest::newRow("read-only, settings") << readOnly << save << QStringLiteral("x.ipp") << false;
    QTest::newRow("read-only, descriptions") << readOnly << save << QStringLiteral("x.sdp") << false;
    QTest::newRow("read-only, element") << readOnly << element << QStringLiteral("x.sdp") << false;
}

void TestFileTrouble::specialDisk()
{
    QFETCH(QString, options);
    QFETCH(QString, command);
    QFETCH(QString, name);
    QFETCH(bool, incomplete);
    if (!mayMount())
        QSKIP("this machine does not let us mount in a name space of our own");
    m.reset(); // the other process has a dialog of its own
    QTemporaryDir disk;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(kUnshared,
                  {QStringLiteral("-m"), QStringLiteral("sh"), QStringLiteral("-c"),
                   QStringLiteral("mount -t tmpfs -o \"$1\" none \"$2\" && shift 2 && exec \"$@\""),
                   QStringLiteral("sh"), options, disk.path(), QCoreApplication::applicationFilePath(),
                   QStringLiteral("--press"), command, disk.filePath(name)});
    QVERIFY(process.waitForFinished());
    QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
             process.readAll().constData());
    QCOMPARE(logText().contains("is incomplete"), incomplete);
}

void TestFileTrouble::aBigMachine()
{
    m.reset();
    m = std::make_unique<FileFixture>(1000);
    FileAnswer answer(m->in(QStringLiteral("big.ipp")));
    click(m->dialog->m_pCmdSave);
    const QByteArray bytes = m->read(QStringLiteral("big.ipp"));
    QCOMPARE(bytes.count("[channel"), 1000);
    QVERIFY(bytes.endsWith("\n\n"));
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.value(0) == QLatin1String("--press"))
        return pressOnce(words.value(1), words.value(2));
    TestFileTrouble test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_filetrouble.moc"
