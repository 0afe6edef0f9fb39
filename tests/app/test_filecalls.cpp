// SPDX-License-Identifier: MIT
//
// The file commands seen from the libraries: which calls they make, with which arguments and in which
// order, under which cursor; and what comes from the screen and what from the store.
#include "support/filefixture.h"
#include "support/logfile.h"

#include <QTextCodec>

#include <dlfcn.h>
#include <memory>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

// Every call since the list was cleared, with the wait cursor marked by a "*"; each is handed on.
static QByteArrayList calls;

static void note(const QByteArray &call)
{
    const QCursor *cursor = QApplication::overrideCursor();
    calls.append(cursor && cursor->shape() == Qt::WaitCursor ? '*' + call : call);
}

template<class Function>
static Function *real(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

extern "C" {

uint64_t rkOSCreateFile(const char *path, uint32_t access, uint32_t share, void *security,
                        uint32_t disposition, uint32_t attributes, void *templ)
{
    const QByteArray name = QFileInfo(QString::fromUtf8(path)).fileName().toUtf8();
    note("create " + name + ' ' + QByteArray::number(access, 16) + ' ' + QByteArray::number(share) + ' ' +
         QByteArray::number(disposition) + ' ' + QByteArray::number(attributes) +
         (security || templ ? " and more" : ""));
    return real(rkOSCreateFile, "rkOSCreateFile")(path, access, share, security, disposition, attributes,
                                                  templ);
}

int rkOSCloseFile(uint64_t file)
{
    note(file == RKOS_INVALID_HANDLE ? "close nothing" : "close");
    return real(rkOSCloseFile, "rkOSCloseFile")(file);
}

int rkOSfputs(const char *text, uint64_t file)
{
    note(QByteArray("put ") + QByteArray(text).left(8).replace('\n', '|'));
    return real(rkOSfputs, "rkOSfputs")(text, file);
}

char *rkOSfgets(char *buffer, int size, uint64_t file)
{
    note("get " + QByteArray::number(size));
    return real(rkOSfgets, "rkOSfgets")(buffer, size, file);
}

int rkOSMakeDir(const char *path, int mode)
{
    note("makedir " + QByteArray::number(mode));
    return real(rkOSMakeDir, "rkOSMakeDir")(path, mode);
}

int rkCFGValueDword(void *handle, const char *path, const char *name, uint32_t *value, int write)
{
    if (write)
        note(QByteArray(path) + '\\' + name + '=' + QByteArray::number(*value));
    return real(rkCFGValueDword, "rkCFGValueDword")(handle, path, name, value, write);
}

int rkCFGSave(void *handle, const char *name, int flags)
{
    note("save");
    return real(rkCFGSave, "rkCFGSave")(handle, name, flags);
}

uint64_t rkOSGetMicro(void)
{
    note("micro");
    return real(rkOSGetMicro, "rkOSGetMicro")();
}

int rkPTPGetGrandmasterID(PTP_HANDLE handle, char *text)
{
    note("grandmaster");
    return real(rkPTPGetGrandmasterID, "rkPTPGetGrandmasterID")(handle, text);
}

} // extern "C"

class TestFileCalls : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { startLog(); }
    void init();
    void cleanup() { m.reset(); }

    void saveSettings();
    void saveEndsTheOverrideOfTheLongPath();
    void saveTakesTheChannelsOfTheList();
    void saveDescriptions();
    void saveElement();
    void closesAlsoWhatDidNotOpen();
    void elementStartsInNoFolder();
    void theFolderIsMadeWithDecimalDigits();
    void documentsMayHaveAnyName();

    void loadSettings();
    void loadOverrideGoesToTheShortPath();
    void theSignatureComesFirst();
    void longLines();
    void aVeryLongPath();
    void anyNameIsLoaded();
    void loadRefreshesFromTheStoreAlone();

    void theReaderTicksTheBoxes();
    void theReaderAloneHonoursLocks();
    void shownNotStored();
    void noFlowsThroughTheDialog();
    void anUnknownFormatThroughTheDialog();
    void otherTypesSaveVideo();
    void noElementSavesAncillaryData();
    void localCharacters();

private:
    QByteArrayList ofLoad(const QString &name);
    std::unique_ptr<FileFixture> m;
};

void TestFileCalls::init()
{
    m = std::make_unique<FileFixture>(2);
    calls.clear();
}

// --------------------------------------------------------------------------------------------- saving

void TestFileCalls::saveSettings()
{
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QCOMPARE(calls, (QByteArrayList{"makedir 777", "*create x.ipp 40000000 1 2 128", "*put [Halvect",
                                    "*put ;Network", "*put Name=Quo",
                                    "*put Version=", "*KWX\\Advanced\\AvHAL\\nmosoverride=0", "*save",
                                    "*put [channel", "*put [channel", "*close"}));
}

// The letters of the path are as they are on purpose: a store that tells them apart keeps two values.
void TestFileCalls::saveEndsTheOverrideOfTheLongPath()
{
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QVERIFY(calls.contains("*KWX\\Advanced\\AvHAL\\nmosoverride=0"));
}

void TestFileCalls::saveTakesTheChannelsOfTheList()
{
    setGlobalDword(StorePath::Config, "MaxIntChannels", 7);
    m->dialog->m_pChannel->addItem(QStringLiteral("Channel-2"), 2);
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const QByteArray bytes = m->read(QStringLiteral("x.ipp"));
    QCOMPARE(bytes.count("[channel"), 3);
    QCOMPARE(bytes.count("\n\n[channel"), 3);
    QVERIFY(bytes.endsWith("\n\n"));
}

void TestFileCalls::saveDescriptions()
{
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QCOMPARE(calls,
             (QByteArrayList{"makedir 777", "*micro", "*create x.rx.sdp 40000000 1 2 128", "*put v=0|o=- ",
                             "*close", "*create x.tx.sdp 40000000 1 2 128", "*put v=0|o=- ", "*close"}));
}

void TestFileCalls::saveElement()
{
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(calls,
             (QByteArrayList{"micro", "grandmaster", "create x.rx.sdp 40000000 1 2 128", "put v=0|o=- ",
                             "close", "create x.tx.sdp 40000000 1 2 128", "put v=0|o=- ", "close"}));
}

void TestFileCalls::closesAlsoWhatDidNotOpen()
{
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("x.rx.sdp")));
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(calls.count("close nothing"), 1);
    QCOMPARE(calls.count("close"), 1);
}

// The toolkit then chooses, and it does not know of the folder that the other commands start in.
void TestFileCalls::elementStartsInNoFolder()
{
    const QTemporaryDir other;
    m->dialog->m_lastPath = other.path();
    FileAnswer answer{QString()};
    click(m->dialog->m_pCmdSaveElement);
    QCOMPARE(answer.shown, 1);
    QVERIFY(answer.folder != other.path());
}

void TestFileCalls::theFolderIsMadeWithDecimalDigits()
{
    QVERIFY(m->save(QString()));
    QCOMPARE(calls, QByteArrayList{"makedir 777"});
    QVERIFY(QFile::permissions(FileFixture::documents() + QStringLiteral("/2110"))
                .testFlag(QFileDevice::WriteOwner));
    calls.clear();
    m->dialog->m_lastPath.clear();
    QVERIFY(m->save(QString()));
    QCOMPARE(calls, QByteArrayList());
}

void TestFileCalls::documentsMayHaveAnyName()
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

// -------------------------------------------------------------------------------------------- loading

// The calls of one load, without the reading of its lines.
QByteArrayList TestFileCalls::ofLoad(const QString &name)
{
    calls.clear();
    if (!m->load(name))
        return {"the dialog did not take the name"};
    calls.removeAll("*get 4096");
    return calls;
}

void TestFileCalls::loadSettings()
{
    m->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nTransmitSourcePort=5\n");
    QCOMPARE(ofLoad(QStringLiteral("x.ipp")),
             (QByteArrayList{"create x.ipp 80000000 1 3 128",
                             "*KWX\\Internal0\\IpConfig\\TransmitSourcePort=5", "*close", "*save"}));
}

void TestFileCalls::loadOverrideGoesToTheShortPath()
{
    m->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nnmosoverride=1\n");
    QVERIFY(ofLoad(QStringLiteral("x.ipp")).contains("*KWX\\Advanced\\AvHal\\nmosoverride=1"));
}

// Whatever the name says, a file that begins with the signature holds settings.
void TestFileCalls::theSignatureComesFirst()
{
    m->write(QStringLiteral("x.sdp"),
             "[HalvectIpConfig]\n[channel0]\nTransmitIp=10.4.4.4\nc=IN IP4 239.3.3.3\n");
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    QCOMPARE(text(0, "TransmitIp"), QStringLiteral("10.4.4.4"));
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.1.1.0"));
}

// A line may take 4,095 bytes; what is beyond is a line of its own.
void TestFileCalls::longLines()
{
    const QByteArray key = "ClockGrandMaster=";
    const QByteArray fits(4095 - key.size(), 'x');
    m->write(QStringLiteral("x.ipp"),
             "[HalvectIpConfig]\n[channel0]\n" + key + fits + "\n[channel1]\n" + key + fits + "yy\n");
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    QCOMPARE(text(0, "ClockGrandMaster").size(), fits.size());
    QCOMPARE(text(1, "ClockGrandMaster").toLatin1(), fits);
    m->write(QStringLiteral("x.sdp"), "v=0\nc=IN IP4 " + QByteArray(4000, ' ') + "239.6.6.6\n");
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.6.6.6"));
}

// Folders 4,000 characters deep, made step by step.
void TestFileCalls::aVeryLongPath()
{
    QString folder = m->folder.path();
    while (folder.size() < 3980) {
        folder += QLatin1Char('/') + QString(qMin(200, 3985 - folder.size()), QLatin1Char('d'));
        QVERIFY2(QDir().mkpath(folder), qPrintable(QString::number(folder.size())));
    }
    const QString path = folder + QStringLiteral("/long.ipp");
    QVERIFY(path.size() > 3985 && path.size() < 4096);
    QVERIFY(m->save(path));
    QVERIFY(QFileInfo(path).size() > 1000);
    QCOMPARE(m->dialog->m_lastPath, folder);
    put(1, "ReceiveDestinationIp", QStringLiteral("1.2.3.4"));
    QVERIFY(m->load(path));
    QCOMPARE(text(1, "ReceiveDestinationIp"), QStringLiteral("239.1.1.1"));
    QCOMPARE(text(0, "lastConfigPath"), folder);
    QVERIFY(m->saveElement(folder + QStringLiteral("/long.sdp")));
    QVERIFY(QFileInfo::exists(folder + QStringLiteral("/long.tx.sdp")));
}

void TestFileCalls::anyNameIsLoaded()
{
    const QString name = QString::fromUtf8("gr\xC3\xB6\xC3\x9F"
                                           "e \xE2\x82\xAC.ipp");
    m->write(name, "[HalvectIpConfig]\n[channel0]\nTransmitIp=10.4.4.4\n");
    QVERIFY(m->load(name));
    QCOMPARE(text(0, "TransmitIp"), QStringLiteral("10.4.4.4"));
    const QString description = QString::fromUtf8("\xC3\xA9t\xC3\xA9.sdp");
    QVERIFY(m->saveElement(description));
    QVERIFY(m->read(QString::fromUtf8("\xC3\xA9t\xC3\xA9.rx.sdp")).startsWith("v=0\n"));
}

// A load ends with the store's values whatever the mode; only one that was cut short loads as the mode
// does, which asks for the locks as well.
void TestFileCalls::loadRefreshesFromTheStoreAlone()
{
    m->write(QStringLiteral("whole.ipp"), "[HalvectIpConfig]\n[channel1]\nReceiveDestinationPort=5004\n");
    m->write(QStringLiteral("cut.ipp"),
             "[HalvectIpConfig]\n[channel1]\nReceiveDestinationPort=5006\n[channel0]\n");
    m->write(QStringLiteral("refused.ipp"), "no settings\n");
    QCheckBox *lock = m->dialog->m_pCheckLockRecSrcAddr;
    const auto setBehindItsBack = [&] {
        const QSignalBlocker blocker(lock);
        lock->setChecked(true);
    };
    setBehindItsBack();
    QVERIFY(m->load(QStringLiteral("whole.ipp")));
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    QVERIFY(lock->isChecked());
    QVERIFY(m->load(QStringLiteral("refused.ipp")));
    QVERIFY(lock->isChecked());
    QVERIFY(m->load(QStringLiteral("cut.ipp")));
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("5006"));
    QVERIFY(!lock->isChecked());
}

// ----------------------------------------------------------------------- descriptions, in and out

// The reader itself, before anything is shown anew.
void TestFileCalls::theReaderTicksTheBoxes()
{
    m->write(QStringLiteral("x.sdp"), "m=video 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7/64\n"
                                      "a=source-filter: incl IN IP4 * 10.7.7.7\na=sendonly\n");
    const QByteArray path = QFile::encodeName(m->in(QStringLiteral("x.sdp")));
    const quint64 file = rkOSCreateFile(path.constData(), RKOS_GENERIC_READ, RKOS_SHARE_READ, nullptr,
                                        RKOS_OPEN_EXISTING, RKOS_ATTRIBUTE_NORMAL, nullptr);
    m->dialog->loadSdp(file);
    rkOSCloseFile(file);
    const QCorvel &d = *m->dialog;
    QVERIFY(d.m_pCheckRecDstAddr->isChecked() && d.m_pCheckRecSrcAddr->isChecked() &&
            d.m_pCheckRecDstPort->isChecked());
    QVERIFY(!d.m_pCheckRecSrcPort->isChecked() && !d.m_pCheckRecDstIFace->isChecked());
    QVERIFY(!d.m_pCheckSndDstAddr->isChecked() && !d.m_pCheckSndSrcAddr->isChecked());
    QCOMPARE(text(0, "TransmitIp"), QStringLiteral("10.7.7.7"));
    QCOMPARE(d.m_pLineSndSrcAddr->address(), QStringLiteral("1.0.0.0")); // not its business
}

void TestFileCalls::theReaderAloneHonoursLocks()
{
    m->dialog->m_LockValues[QStringLiteral("ReceiveDestinationIp0")] = true;
    m->write(QStringLiteral("x.sdp"), "m=video 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7\na=recvonly\n");
    const QByteArray path = QFile::encodeName(m->in(QStringLiteral("x.sdp")));
    const quint64 file = rkOSCreateFile(path.constData(), RKOS_GENERIC_READ, RKOS_SHARE_READ, nullptr,
                                        RKOS_OPEN_EXISTING, RKOS_ATTRIBUTE_NORMAL, nullptr);
    m->dialog->loadSdp(file);
    rkOSCloseFile(file);
    QVERIFY(!m->dialog->m_pCheckRecDstAddr->isChecked());
    QVERIFY(m->dialog->m_pCheckRecDstPort->isChecked());
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.1.1.0"));
    QCOMPARE(number(0, "ReceiveFlags"), 2u);
}

// Format, boxes and number of flows are those on screen; addresses and ports those in the store.
void TestFileCalls::shownNotStored()
{
    QCorvel &d = *m->dialog;
    put(0, "ReceiveSourceIp", QStringLiteral("10.5.5.5"));
    put(0, "SignalFormat", 641794096);
    put(0, "ReceiveAudTotalChannels", 16);
    d.disconnectSignals();
    d.m_pCheckRecSrcAddr->setChecked(true);
    d.m_pCheckRecDstAddr->setChecked(true);
    d.m_pLineRecDstAddr->setAddress(QStringLiteral("9.9.9.9"));
    d.connectSignals();
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    const QByteArray receive = m->read(QStringLiteral("x.rx.sdp"));
    QVERIFY(receive.contains("c=IN IP4 239.1.1.0\na=source-filter: incl IN IP4 239.1.1.0 10.5.5.5\n"));
    QVERIFY(receive.contains("width=1920; height=1080;"));
    QVERIFY(receive.contains("a=framerate:60000/1001\n"));
    QCOMPARE(receive.count("m=audio"), 2);
    QVERIFY(!m->read(QStringLiteral("x.tx.sdp")).contains("source-filter"));
}

void TestFileCalls::noFlowsThroughTheDialog()
{
    click(m->dialog->m_pAudioConfig);
    m->dialog->disconnectSignals();
    m->dialog->m_pComboAudFlow->addItem(QStringLiteral("0"), 0);
    m->dialog->m_pComboAudFlow->setCurrentIndex(m->dialog->m_pComboAudFlow->count() - 1);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(m->read(QStringLiteral("x.rx.sdp")).count('\n'), 4);
    QVERIFY(m->read(QStringLiteral("x.rx.sdp")).endsWith("s=Halvect IP Config\nt=0 0\n"));
}

void TestFileCalls::anUnknownFormatThroughTheDialog()
{
    m->dialog->disconnectSignals();
    m->dialog->m_pComboVidFormat->addItem(QStringLiteral("another"), 1);
    m->dialog->m_pComboVidFormat->setCurrentIndex(m->dialog->m_pComboVidFormat->count() - 1);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    const QByteArray send = m->read(QStringLiteral("x.tx.sdp"));
    QVERIFY(send.contains("a=framerate:\na=fmtp:101 width=; height=; TP=2110TPNL; exactframerate=; PM="));
}

// A type without elements has video only, whatever button is down.
void TestFileCalls::otherTypesSaveVideo()
{
    click(m->dialog->m_pAudioConfig);
    m->dialog->disconnectSignals();
    m->dialog->m_pComboType->addItem(QStringLiteral("another"), 3);
    m->dialog->m_pComboType->setCurrentIndex(1);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QVERIFY(m->read(QStringLiteral("x.rx.sdp")).contains("m=video 0 RTP/AVP 100\n"));
}

void TestFileCalls::noElementSavesAncillaryData()
{
    QRadioButton *video = m->dialog->m_pVideoConfig;
    m->dialog->disconnectSignals();
    video->setAutoExclusive(false);
    video->setChecked(false);
    m->dialog->connectSignals();
    QVERIFY(m->saveElement(QStringLiteral("x.sdp")));
    QCOMPARE(m->read(QStringLiteral("x.rx.sdp")).count("smpte291"), 2);
}

// In the encoding of the machine, not always in UTF-8.
void TestFileCalls::localCharacters()
{
    QTextCodec *before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    m->dialog->m_pUseGmId->setChecked(true);
    m->dialog->m_pEditGmAddress->setText(QString::fromUtf8("\xC3\xA9"));
    const bool saved = m->saveElement(QStringLiteral("x.sdp"));
    QTextCodec::setCodecForLocale(before);
    QVERIFY(saved);
    QVERIFY(m->read(QStringLiteral("x.rx.sdp")).contains("localmac=\xE9\n"));
}

CORVEL_DIALOG_TEST_MAIN(TestFileCalls)
#include "test_filecalls.moc"
