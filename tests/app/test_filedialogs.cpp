// SPDX-License-Identifier: MIT
//
// The file dialogs of "Save File", "Load File" and "Save ... SDP": what they ask, and in which folder they
// start.
#include "fake/recorder.h"
#include "support/filefixture.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

// As the dialog splits it.
const char kFilters[] =
    "Settings File (*.ipp);;Session Description File (*.sdp);;Text File (*.txt);;All files (*.*)";

} // namespace

class TestFileDialogs : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m = std::make_unique<FileFixture>();
        Recorder::clear();
    }
    void cleanup() { m.reset(); }

    void saveAsks();
    void loadAsks();
    void saveElementAsks();

    void cancelledSaveGoesToTheCurrentFolder();
    void onlySaveMovesTheFolder();
    void theDocumentsFolderIsMadeBySaveOnly();
    void elementStartsInNoFolder();
    void theFolderIsMadeWithDecimalDigits();
    void documentsMayHaveAnyName();
    void elementCancelled();

private:
    std::unique_ptr<FileFixture> m;
};

// ---------------------------------------------------------------------------------------- what they ask

void TestFileDialogs::saveAsks()
{
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdSave);
    QCOMPARE(answer.shown, 1);
    QCOMPARE(answer.title, QStringLiteral("Ini File"));
    QCOMPARE(answer.folder, FileFixture::documents() + QStringLiteral("/2110"));
    QCOMPARE(answer.filters, QLatin1String(kFilters));
    QCOMPARE(answer.mode, QFileDialog::AcceptSave);
    QVERIFY(!answer.hadParent);
    QVERIFY(!answer.isNative);
}

void TestFileDialogs::loadAsks()
{
    QDir().mkpath(FileFixture::documents() + QStringLiteral("/2110"));
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdLoad);
    QCOMPARE(answer.shown, 1);
    QCOMPARE(answer.title, QStringLiteral("Ini File"));
    QCOMPARE(answer.folder, FileFixture::documents() + QStringLiteral("/2110"));
    QCOMPARE(answer.filters, QLatin1String(kFilters));
    QCOMPARE(answer.mode, QFileDialog::AcceptOpen);
    QVERIFY(!answer.hadParent);
    QVERIFY(!answer.isNative);
}

void TestFileDialogs::saveElementAsks()
{
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdSaveElement);
    QCOMPARE(answer.shown, 1);
    QCOMPARE(answer.title, QStringLiteral("Save Current Element"));
    QCOMPARE(answer.filters, QStringLiteral("Session File(*.sdp);;Text File (*.txt);;All files (*.*)"));
    QCOMPARE(answer.mode, QFileDialog::AcceptSave);
    QVERIFY(!answer.hadParent);
    QVERIFY(!answer.isNative);
}

// ------------------------------------------------------------------------------------------- the folder

void TestFileDialogs::cancelledSaveGoesToTheCurrentFolder()
{
    const Snapshot before = snapshot();
    QVERIFY(m->save(QString()));
    QCOMPARE(m->dialog->m_lastPath, QDir::currentPath());
    QCOMPARE(changes(before, snapshot()), Snapshot());
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdLoad);
    QCOMPARE(answer.folder, QDir::currentPath());
}

void TestFileDialogs::onlySaveMovesTheFolder()
{
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QCOMPARE(m->dialog->m_lastPath, m->folder.path());
    QTemporaryDir other;
    QVERIFY(QFile::copy(m->in(QStringLiteral("x.ipp")), other.filePath(QStringLiteral("y.ipp"))));
    {
        FileAnswer answer(other.filePath(QStringLiteral("y.ipp")));
        click(m->dialog->m_pCmdLoad);
        QCOMPARE(answer.folder, m->folder.path());
    }
    QCOMPARE(m->dialog->m_lastPath, m->folder.path());
    QCOMPARE(text(0, "lastConfigPath"), other.path());
    {
        FileAnswer answer(other.filePath(QStringLiteral("z.sdp")));
        click(m->dialog->m_pCmdSaveElement);
    }
    QCOMPARE(m->dialog->m_lastPath, m->folder.path());
    {
        FileAnswer answer(other.filePath(QStringLiteral("w.sdp"))); // the other branch moves it too
        click(m->dialog->m_pCmdSave);
    }
    QCOMPARE(m->dialog->m_lastPath, other.path());
}

void TestFileDialogs::theDocumentsFolderIsMadeBySaveOnly()
{
    const QString folder = FileFixture::documents() + QStringLiteral("/2110");
    QVERIFY(m->load(QString()));
    QVERIFY(m->saveElement(QString()));
    QVERIFY(!QFileInfo::exists(folder));
    QVERIFY(m->save(QString()));
    QVERIFY(QFileInfo(folder).isDir());
    QVERIFY(QFileInfo(folder).isReadable() && QFileInfo(folder).isExecutable());
}

// The toolkit then chooses, and it does not know of the folder that the other commands start in.
void TestFileDialogs::elementStartsInNoFolder()
{
    const QTemporaryDir other;
    m->dialog->m_lastPath = other.path();
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdSaveElement);
    QCOMPARE(answer.shown, 1);
    QVERIFY(answer.folder != other.path());
}

void TestFileDialogs::theFolderIsMadeWithDecimalDigits()
{
    QVERIFY(m->save(QString()));
    QCOMPARE(Recorder::fileCalls(), QByteArrayList{"makedir 777"});
    QVERIFY(QFile::permissions(FileFixture::documents() + QStringLiteral("/2110"))
                .testFlag(QFileDevice::WriteOwner));
    Recorder::clear();
    m->dialog->m_lastPath.clear();
    QVERIFY(m->save(QString()));
    QCOMPARE(Recorder::fileCalls(), QByteArrayList());
}

void TestFileDialogs::documentsMayHaveAnyName()
{
    const QByteArray before = qgetenv("XDG_DOCUMENTS_DIR");
    const QString folder = m->folder.filePath(QString::fromUtf8("gr\xC3\xB6\xC3\x9F"
                                                                "e \xE2\x82\xAC"));
    QVERIFY(QDir().mkpath(folder));
    qputenv("XDG_DOCUMENTS_DIR", folder.toUtf8());
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdSave);
    qputenv("XDG_DOCUMENTS_DIR", before);
    QCOMPARE(answer.folder, folder + QStringLiteral("/2110"));
}

void TestFileDialogs::elementCancelled()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m->folder.path()));
    const Snapshot stored = snapshot();
    QVERIFY(m->saveElement(QString()));
    QDir::setCurrent(before);
    QCOMPARE(m->files(), QStringList());
    QCOMPARE(changes(stored, snapshot()), Snapshot());
    QVERIFY(m->dialog->m_lastPath.isEmpty());
}

CORVEL_DIALOG_TEST_MAIN(TestFileDialogs)
#include "test_filedialogs.moc"
