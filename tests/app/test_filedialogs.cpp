// SPDX-License-Identifier: MIT
//
// The file dialogs of "Save File", "Load File" and "Save ... SDP": what they ask, and in which folder they
// start.
#include "fake/recorder.h"
#include "support/filefixture.h"

#include <QHeaderView>
#include <QScreen>
#include <QTreeView>

#include <functional>
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
    void everyColumnCanBeRead();

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

// Looks at the next file dialog once its list is there, and cancels it.
static void lookAtFileDialog(const std::function<void(QFileDialog *)> &look)
{
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [=] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        const auto *list = dialog ? dialog->findChild<QTreeView *>(QStringLiteral("treeView")) : nullptr;
        if (!list || !dialog->isVisible() || list->model()->rowCount(list->rootIndex()) < 2)
            return;
        timer->deleteLater();
        look(dialog);
        dialog->reject();
    });
    timer->start(5);
}

// At this screen's scale: the dialog is as large as it asks for, and what stands in a column fits.
void TestFileDialogs::everyColumnCanBeRead()
{
    const double factor = QCorvel::fontFactor();
    m->write(QStringLiteral("a settings file of a night.ipp"), QByteArray(100000, 'x'));
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("studio")));
    m->dialog->m_lastPath = m->folder.path();
    bool looked = false;
    lookAtFileDialog([&](QFileDialog *dialog) {
        looked = true;
        const QSize wanted(int(780 * factor), int(480 * factor));
        QCOMPARE(dialog->size(), wanted.boundedTo(dialog->screen()->availableSize()));
        const auto *list = dialog->findChild<QTreeView *>(QStringLiteral("treeView"));
        const QHeaderView *header = list->header();
        int used = 0;
        for (int column = 0; column < header->count(); ++column) {
            used += header->sectionSize(column);
            QVERIFY2(header->sectionSize(column) >= header->sectionSizeHint(column), "head");
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row) {
                const QString text = list->model()->index(row, column, list->rootIndex()).data().toString();
                QVERIFY2(list->fontMetrics().horizontalAdvance(text) < header->sectionSize(column),
                         qPrintable(text));
            }
        }
        QVERIFY(used <= list->viewport()->width());
        const QString folder = QStringLiteral(CORVEL_BUILD_DIR "/screenshots");
        QVERIFY(QDir().mkpath(folder));
        const int dpi = qRound(96 * factor);
        QVERIFY(dialog->grab().save(QStringLiteral("%1/file-dialog-%2.png").arg(folder).arg(dpi)));
    });
    click(m->dialog->m_pCmdSave);
    QVERIFY(looked);
}

CORVEL_DIALOG_TEST_MAIN(TestFileDialogs)
#include "test_filedialogs.moc"
