// SPDX-License-Identifier: MIT
//
// The file dialogs of all three commands, and "Save File" and "Save ... SDP": which kind of file a name
// makes, which channel and controls it is made of.
#include "support/filefixture.h"

#include <dlfcn.h>
#include <memory>

using namespace DialogTest;
using namespace StoreTest;

static bool sawWaitCursor = false;

// Stands before the library's: what the cursor is while a file is written.
extern "C" int rkOSfputs(const char *text, uint64_t file)
{
    using Function = int (*)(const char *, uint64_t);
    static const Function real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "rkOSfputs"));
    const QCursor *cursor = QApplication::overrideCursor();
    sawWaitCursor = cursor && cursor->shape() == Qt::WaitCursor;
    return real(text, file);
}

namespace {

// As the dialog splits it.
const char kFilters[] =
    "Settings File (*.ipp);;Session Description File (*.sdp);;Text File (*.txt);;All files (*.*)";

} // namespace

class TestFileCommands : public QObject {
    Q_OBJECT

private slots:
    void init() { m = std::make_unique<FileFixture>(); }
    void cleanup() { m.reset(); }

    void saveAsks();
    void loadAsks();
    void saveElementAsks();
    void cancelledSaveGoesToTheCurrentFolder();
    void onlySaveMovesTheFolder();
    void theDocumentsFolderIsMadeBySaveOnly();

    void savesEveryChannel();
    void saveEndsTheOverride();
    void theShownFlowCountHoldsForAll();
    void theNameDecides_data();
    void theNameDecides();
    void anExistingFileIsReplaced();
    void theCursorWaits();

    void sdpFilesAreOfChannelZero();
    void sdpFilesLeaveTheOverride();
    void theBlindCut_data();
    void theBlindCut();
    void oneOfAPairThatCannotBeCreated();
    void elementVideo();
    void elementAudioAndAnc();
    void elementOfTheShownChannel();
    void elementCancelled();
    void clockLines();

private:
    std::unique_ptr<FileFixture> m;
};

// ------------------------------------------------------------------------------------- the dialogs

void TestFileCommands::saveAsks()
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

void TestFileCommands::loadAsks()
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

void TestFileCommands::saveElementAsks()
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

void TestFileCommands::cancelledSaveGoesToTheCurrentFolder()
{
    const Snapshot before = snapshot();
    QVERIFY(m->save(QString()));
    QCOMPARE(m->dialog->m_lastPath, QDir::currentPath());
    QCOMPARE(changes(before, snapshot()), Snapshot());
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdLoad);
    QCOMPARE(answer.folder, QDir::currentPath());
}

void TestFileCommands::onlySaveMovesTheFolder()
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

void TestFileCommands::theDocumentsFolderIsMadeBySaveOnly()
{
    const QString folder = FileFixture::documents() + QStringLiteral("/2110");
    QVERIFY(m->load(QString()));
    QVERIFY(m->saveElement(QString()));
    QVERIFY(!QFileInfo::exists(folder));
    QVERIFY(m->save(QString()));
    QVERIFY(QFileInfo(folder).isDir());
    QVERIFY(QFileInfo(folder).isReadable() && QFileInfo(folder).isExecutable());
}

// ----------------------------------------------------------------------------------- settings files

void TestFileCommands::savesEveryChannel()
{
    QVERIFY(m->save(QStringLiteral("all.ipp")));
    const QByteArray bytes = m->read(QStringLiteral("all.ipp"));
    QVERIFY(
        bytes.startsWith("[HalvectIpConfig]\n;Network Config fileName=Quorlex\nVersion=1.0\n\n[channel0]\n"));
    for (int channel = 0; channel < 4; ++channel) {
        QCOMPARE(bytes.count("[channel" + QByteArray::number(channel) + "]\n"), 1);
        QCOMPARE(bytes.count("\nReceiveDestinationIp=239.1.1." + QByteArray::number(channel) + '\n'), 1);
    }
    QVERIFY(!bytes.contains("[channel4]"));
    QCOMPARE(bytes.count("\nnmosoverride=0\n"), 4);
    QVERIFY(bytes.endsWith("\n\n"));
}

// In the store and in the file; what is on screen stays as it is.
void TestFileCommands::saveEndsTheOverride()
{
    QCOMPARE(FileFixture::globalOverride(), QStringLiteral("1"));
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QCOMPARE(FileFixture::globalOverride(), QStringLiteral("0"));
    QVERIFY(m->dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m->dialog->m_pSwapLayout->currentIndex(), 0);
}

void TestFileCommands::theShownFlowCountHoldsForAll()
{
    put(1, "ReceiveAudTotalChannels", 16);
    choose(m->dialog->m_pChannel, 3);
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const QByteArray bytes = m->read(QStringLiteral("x.ipp"));
    QCOMPARE(bytes.count("\nTransmitAudIp0="), 4);
    QCOMPARE(bytes.count("\nReceiveAudFlags1="), 4);
    QCOMPARE(bytes.count("\nTransmitAudIp2="), 0);
}

void TestFileCommands::theNameDecides_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("made");
    QTest::newRow("ipp") << QStringLiteral("x.ipp") << QStringList{QStringLiteral("x.ipp")};
    QTest::newRow("txt") << QStringLiteral("x.txt") << QStringList{QStringLiteral("x.txt")};
    QTest::newRow("no suffix is added") << QStringLiteral("name") << QStringList{QStringLiteral("name")};
    QTest::newRow("capitals") << QStringLiteral("x.SDP") << QStringList{QStringLiteral("x.SDP")};
    QTest::newRow("ends in sdp") << QStringLiteral("foosdp") << QStringList{QStringLiteral("foosdp")};
    QTest::newRow("dot at the end") << QStringLiteral("x.sdp.") << QStringList{QStringLiteral("x.sdp.")};
    QTest::newRow("non-ASCII") << QString::fromUtf8("caf\xC3\xA9 \xE2\x82\xAC.ipp")
                               << QStringList{QString::fromUtf8("caf\xC3\xA9 \xE2\x82\xAC.ipp")};
    QTest::newRow("sdp") << QStringLiteral("x.sdp")
                         << QStringList{QStringLiteral("x.rx.sdp"), QStringLiteral("x.tx.sdp")};
    QTest::newRow("two dots") << QStringLiteral("x.y.sdp")
                              << QStringList{QStringLiteral("x.y.rx.sdp"), QStringLiteral("x.y.tx.sdp")};
}

void TestFileCommands::theNameDecides()
{
    QFETCH(QString, name);
    QFETCH(QStringList, made);
    QVERIFY(m->save(name));
    QCOMPARE(m->files(), made);
    const QByteArray first = m->read(made.first());
    QVERIFY(first.startsWith(made.size() == 2 ? "v=0\n" : "[HalvectIpConfig]\n"));
}

void TestFileCommands::anExistingFileIsReplaced()
{
    m->write(QStringLiteral("x.ipp"), QByteArray(1000000, 'x'));
    FileAnswer answer(m->in(QStringLiteral("x.ipp")));
    click(m->dialog->m_pCmdSave);
    QCOMPARE(answer.questions, 1);
    const QByteArray bytes = m->read(QStringLiteral("x.ipp"));
    QVERIFY(bytes.startsWith("[HalvectIpConfig]\n"));
    QVERIFY(!bytes.contains("xx"));
}

void TestFileCommands::theCursorWaits()
{
    for (const char *name : {"x.ipp", "x.sdp"}) {
        sawWaitCursor = false;
        QVERIFY(m->save(QString::fromLatin1(name)));
        QVERIFY(sawWaitCursor);
        QVERIFY(!QApplication::overrideCursor());
    }
}

// ----------------------------------------------------------------------------- session descriptions

// Values of channel 0, boxes and flow count as shown.
void TestFileCommands::sdpFilesAreOfChannelZero()
{
    put(0, "ReceiveSourceIp", QStringLiteral("10.5.5.5"));
    choose(m->dialog->m_pChannel, 2);
    click(m->dialog->m_pCheckRecSrcAddr);
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    const QByteArray send = m->read(QStringLiteral("x.tx.sdp"));
    QVERIFY(receive.contains("IN IP4 10.9.9.0\n"));
    QVERIFY(receive.contains("c=IN IP4 239.1.1.0\na=source-filter: incl IN IP4 * 10.5.5.5\n"));
    QVERIFY(!send.contains("source-filter"));
    QCOMPARE(receive.count("m="), 4); // video, two flows, ancillary data
    QCOMPARE(receive.count("m=audio"), 2);
    QCOMPARE(receive.count("m=data"), 1);
    QCOMPARE(receive.count("a=recvonly\n"), 4);
    QCOMPARE(send.count("a=sendonly\n"), 4);
    QCOMPARE(receive.split('\n').at(1), send.split('\n').at(1)); // one identifier for both
}

void TestFileCommands::sdpFilesLeaveTheOverride()
{
    const Snapshot before = snapshot();
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestFileCommands::theBlindCut_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("made");
    const auto pair = [](const char *stem) {
        return QStringList{QLatin1String(stem) + QLatin1String(".rx.sdp"),
                           QLatin1String(stem) + QLatin1String(".tx.sdp")};
    };
    QTest::newRow("name.sdp") << QStringLiteral("name.sdp") << pair("name");
    QTest::newRow("name.txt") << QStringLiteral("name.txt") << pair("name");
    QTest::newRow("abcdef") << QStringLiteral("abcdef") << pair("ab");
    QTest::newRow("name") << QStringLiteral("name") << pair("");
    QTest::newRow("longer suffix") << QStringLiteral("name.session") << pair("name.ses");
}

void TestFileCommands::theBlindCut()
{
    QFETCH(QString, name);
    QVERIFY(m->saveElement(name));
    QTEST(m->files(), "made");
}

void TestFileCommands::oneOfAPairThatCannotBeCreated()
{
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("x.rx.sdp")));
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(m->files(), QStringList{QStringLiteral("x.tx.sdp")});
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QVERIFY(m->read(QStringLiteral("x.tx.sdp")).contains("m=audio"));
}

void TestFileCommands::elementVideo()
{
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    const QByteArray send = m->read(QStringLiteral("x.tx.sdp"));
    QCOMPARE(receive.count("m="), 1);
    QVERIFY(receive.contains("m=video 0 RTP/AVP 100\n"));
    QVERIFY(receive.endsWith("a=recvonly\n"));
    QCOMPARE(send.count("m="), 1);
    QVERIFY(send.contains("m=video 0 RTP/AVP 101\n"));
    QVERIFY(send.endsWith("a=sendonly\n"));
    QVERIFY(receive.contains("width=1920; height=1080;"));
}

void TestFileCommands::elementAudioAndAnc()
{
    click(m->dialog->m_pAudioConfig);
    QVERIFY(m->saveElement(QStringLiteral("a.sdp")));
    const QByteArray audio = m->read(QStringLiteral("a.rx.sdp"));
    QCOMPARE(m->read(QStringLiteral("a.tx.sdp")), audio);
    QCOMPARE(audio.count("m=audio"), 4);
    QVERIFY(audio.indexOf("a=recvonly") < audio.indexOf("a=sendonly"));
    click(m->dialog->m_pAncConfig);
    QVERIFY(m->saveElement(QStringLiteral("b.sdp")));
    const QByteArray anc = m->read(QStringLiteral("b.rx.sdp"));
    QCOMPARE(m->read(QStringLiteral("b.tx.sdp")), anc);
    QCOMPARE(anc.count("m=video"), 2);
    QCOMPARE(anc.count("smpte291"), 2);
}

void TestFileCommands::elementOfTheShownChannel()
{
    choose(m->dialog->m_pChannel, 2);
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    QVERIFY(receive.contains("IN IP4 10.9.9.2\n"));
    QVERIFY(receive.contains("c=IN IP4 239.1.1.2\n"));
}

void TestFileCommands::elementCancelled()
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

void TestFileCommands::clockLines()
{
    m->dialog->m_pUseGmId->setChecked(true);
    typeText(m->dialog->m_pEditGmAddress, QStringLiteral("00-1D-C1-12-34-56"));
    QVERIFY(m->saveElement(QStringLiteral("a.sdp")));
    QVERIFY(m->read(QStringLiteral("a.rx.sdp"))
                .contains("a=ts-refclk:localmac=00-1D-C1-12-34-56\na=mediaclk:direct=0\n"));
    choose(m->dialog->m_pComboClkSrc, 8388608);
    typeText(m->dialog->m_pEditGmId, QStringLiteral("127"));
    QVERIFY(m->saveElement(QStringLiteral("b.sdp")));
    QVERIFY(m->read(QStringLiteral("b.rx.sdp"))
                .contains("a=ts-refclk:ptp=IEEE1588-2008:00-1D-C1-12-34-56:127\na=mediaclk:direct=0\n"));
    m->dialog->m_pUseGmId->setChecked(false);
    QVERIFY(m->saveElement(QStringLiteral("c.sdp")));
    QVERIFY(!m->read(QStringLiteral("c.rx.sdp")).contains("clk"));
}

CORVEL_DIALOG_TEST_MAIN(TestFileCommands)
#include "test_filecommands.moc"
