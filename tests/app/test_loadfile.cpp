// SPDX-License-Identifier: MIT
//
// "Load File" through the toolkit's own file dialog: settings files and session descriptions, from the file
// to the store and the controls, and how they are read.
#include "fake/recorder.h"
#include "support/filefixture.h"
#include "support/logfile.h"

#include <memory>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

class TestLoadFile : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { startLog(); }
    void init()
    {
        m = std::make_unique<FileFixture>();
        Recorder::clear();
    }
    void cleanup() { m.reset(); }

    void loadsRelativeToTheFirstSection();
    void loadShowsWhatItStored();
    void loadIgnoresLocksAndKeepsInterfaces();
    void loadOfAnOverrideChangesOnlyTheStore();
    void loadThatStoresNothing_data();
    void loadThatStoresNothing();
    void anEarlierSectionEndsTheLoad();
    void whatWasSavedIsLoaded();

    void theCallsOfALoad();
    void loadOverrideGoesToTheShortPath();
    void longLines();
    void aVeryLongPath();
    void anyNameIsLoaded();
    void loadRefreshesFromTheStoreAlone();

    void sdpTicksAndStores();
    void sdpGoesToTheShownChannel();
    void sdpHonoursLocks();
    void sdpStartsAtTheSecondLine();
    void theSignatureComesFirst();
    void theReaderTicksTheBoxes();
    void theReaderAloneHonoursLocks();

private:
    QByteArrayList ofLoad(const QString &name);
    std::unique_ptr<FileFixture> m;
};

// --------------------------------------------------------------------------------------- settings files

void TestLoadFile::loadsRelativeToTheFirstSection()
{
    m->write(QStringLiteral("x.ipp"), "[halvectipconfig] extra\n[channel2]\ntransmitip=10.0.0.1\n"
                                      "[channel3]\nTransmitAudIp15=239.0.0.1\nTransmitRemotePort=abc\n");
    const Snapshot before = snapshot();
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    Snapshot expected;
    expected.insert(QStringLiteral("0:lastConfigPath"), quoted(m->folder.path()));
    expected.insert(QStringLiteral("0:TransmitIp"), QStringLiteral("'10.0.0.1'"));
    expected.insert(QStringLiteral("1:TransmitAudIp5"), QStringLiteral("'239.0.0.1'"));
    expected.insert(QStringLiteral("1:TransmitRemotePort"), QStringLiteral("0"));
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestLoadFile::loadShowsWhatItStored()
{
    m->write(
        QStringLiteral("x.txt"),
        "[HalvectIpConfig]\n[channel0]\nReceiveDestinationIp=239.7.7.7\nReceiveFlags=3\nClockDomain=9\n");
    QVERIFY(m->load(QStringLiteral("x.txt")));
    QCOMPARE(m->dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.7.7.7"));
    QVERIFY(m->dialog->m_pCheckRecSrcPort->isChecked());
    QVERIFY(!m->dialog->m_pCheckRecDstAddr->isChecked());
    QCOMPARE(m->dialog->m_pEditGmId->text(), QStringLiteral("9"));
    QVERIFY(m->dialog->m_lastPath.isEmpty());
}

void TestLoadFile::loadIgnoresLocksAndKeepsInterfaces()
{
    click(m->dialog->m_pCheckLockGroup);
    m->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nReceiveDestinationIp=239.7.7.7\n"
                                      "TransmitInterface=eth1\nReceiveAncInterface=eth2\n");
    const Snapshot before = snapshot();
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    Snapshot expected;
    expected.insert(QStringLiteral("0:lastConfigPath"), quoted(m->folder.path()));
    expected.insert(QStringLiteral("0:ReceiveDestinationIp"), QStringLiteral("'239.7.7.7'"));
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestLoadFile::loadOfAnOverrideChangesOnlyTheStore()
{
    m->write(QStringLiteral("x.ipp"),
             "[HalvectIpConfig]\n[channel0]\nnmosoverride=1\n[channel1]\nnmosoverride=0\n");
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    QCOMPARE(FileFixture::globalOverride(), QStringLiteral("0")); // the last one wins
    QVERIFY(m->dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m->dialog->m_pSwapLayout->currentIndex(), 0);
    QVERIFY(!m->dialog->m_pBoardSettings->isChecked());
}

void TestLoadFile::loadThatStoresNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("refused");
    QTest::newRow("empty") << QStringLiteral("x.ipp") << QByteArray() << false;
    QTest::newRow("no signature") << QStringLiteral("x.ipp") << QByteArray("[channel0]\nTransmitIp=1.2.3.4\n")
                                  << true;
    QTest::newRow("text") << QStringLiteral("x.txt") << QByteArray("hello\n") << true;
    QTest::newRow("x.SDP is no description")
        << QStringLiteral("x.SDP") << QByteArray("v=0\nm=video 5004\nc=IN IP4 1.2.3.4\n") << true;
    QTest::newRow("header only") << QStringLiteral("x.ipp") << QByteArray("[HalvectIpConfig]\nVersion=1.0\n")
                                 << false;
    QTest::newRow("description, first line only") << QStringLiteral("x.sdp") << QByteArray("v=0\n") << false;
}

// The dialog is shown anew in every case.
void TestLoadFile::loadThatStoresNothing()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, refused);
    m->write(name, bytes);
    const Snapshot before = snapshot();
    const int logBefore = logText().size();
    m->dialog->disconnectSignals();
    m->dialog->m_pEditRecDstPort->setText(QStringLiteral("5555"));
    m->dialog->connectSignals();
    QVERIFY(m->load(name));
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("0"));
    QCOMPARE(changes(before, snapshot()),
             (Snapshot{{QStringLiteral("0:lastConfigPath"), quoted(m->folder.path())}}));
    QCOMPARE(logText().mid(logBefore).contains("Not a valid config file"), refused);
}

void TestLoadFile::anEarlierSectionEndsTheLoad()
{
    m->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel1]\nReceiveDestinationIp=239.7.7.7\n"
                                      "[channel0]\nReceiveSourceIp=10.7.7.7\n");
    m->dialog->m_LockValues[QStringLiteral("TransmitIp0")] = true; // shown by a whole load only
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    QCOMPARE(snapshot().value(QStringLiteral("0:ReceiveDestinationIp")), QStringLiteral("'239.7.7.7'"));
    QCOMPARE(text(0, "ReceiveSourceIp"), QString());
    QCOMPARE(m->dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.7.7.7"));
    QVERIFY(m->dialog->m_pCheckLockSndSrcAddr->isChecked());
}

void TestLoadFile::whatWasSavedIsLoaded()
{
    put(2, "TransmitAncRemotePort", 5010);
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const Snapshot saved = snapshot();
    put(2, "TransmitAncRemotePort", 1);
    put(0, "ReceiveDestinationIp", QStringLiteral("1.1.1.1"));
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    const Snapshot now = snapshot();
    for (auto it = saved.begin(); it != saved.end(); ++it)
        QVERIFY2(now.value(it.key()) == it.value(),
                 qPrintable(it.key() + QLatin1Char(' ') + now.value(it.key())));
}

// ------------------------------------------------------------------------------------ how they are read

// The calls of one load, without the reading of its lines.
QByteArrayList TestLoadFile::ofLoad(const QString &name)
{
    Recorder::clear();
    if (!m->load(name))
        return {"the dialog did not take the name"};
    QByteArrayList calls = Recorder::fileCalls();
    calls.removeAll("*get 4096");
    return calls;
}

void TestLoadFile::theCallsOfALoad()
{
    m->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nTransmitSourcePort=5\n");
    QCOMPARE(ofLoad(QStringLiteral("x.ipp")),
             (QByteArrayList{"create x.ipp 80000000 1 3 128",
                             "*KWX\\Internal0\\IpConfig\\TransmitSourcePort=5", "*close", "*save"}));
}

void TestLoadFile::loadOverrideGoesToTheShortPath()
{
    m->write(QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nnmosoverride=1\n");
    QVERIFY(ofLoad(QStringLiteral("x.ipp")).contains("*KWX\\Advanced\\AvHal\\nmosoverride=1"));
}

// A line may take 4,095 bytes; what is beyond is a line of its own.
void TestLoadFile::longLines()
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
void TestLoadFile::aVeryLongPath()
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

void TestLoadFile::anyNameIsLoaded()
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
void TestLoadFile::loadRefreshesFromTheStoreAlone()
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

// --------------------------------------------------------------------------------- session descriptions

void TestLoadFile::sdpTicksAndStores()
{
    put(0, "ReceiveFlags", 16);
    m->write(QStringLiteral("x.sdp"), "v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7/64\n"
                                      "a=source-filter: incl IN IP4 * 10.7.7.7\na=sendonly\n");
    const Snapshot before = snapshot();
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    Snapshot expected;
    expected.insert(QStringLiteral("0:lastConfigPath"), quoted(m->folder.path()));
    expected.insert(QStringLiteral("0:TransmitDestinationIp"), QStringLiteral("'239.7.7.7'"));
    expected.insert(QStringLiteral("0:TransmitIp"), QStringLiteral("'10.7.7.7'"));
    expected.insert(QStringLiteral("0:TransmitRemotePort"), QStringLiteral("5004"));
    expected.insert(QStringLiteral("0:ReceiveFlags"), QStringLiteral("30")); // see docs/deliberate.md
    QCOMPARE(changes(before, snapshot()), expected);
    QVERIFY(m->dialog->m_pCheckRecDstAddr->isChecked());
    QVERIFY(m->dialog->m_pCheckRecSrcAddr->isChecked());
    QVERIFY(m->dialog->m_pCheckRecDstPort->isChecked());
    QVERIFY(!m->dialog->m_pCheckRecSrcPort->isChecked());
    QCOMPARE(m->dialog->m_pLineSndDstAddr->address(), QStringLiteral("239.7.7.7"));
}

void TestLoadFile::sdpGoesToTheShownChannel()
{
    choose(m->dialog->m_pChannel, 3);
    m->write(QStringLiteral("x.sdp"),
             "v=0\nm=video 7 RTP/AVP 96\nc=IN IP4 239.7.7.7\na=recvonly\nm=audio 5006\na=recvonly\n");
    const Snapshot before = snapshot();
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    Snapshot expected;
    expected.insert(QStringLiteral("0:lastConfigPath"), quoted(m->folder.path()));
    expected.insert(QStringLiteral("3:ReceiveDestinationIp"), QStringLiteral("'239.7.7.7'"));
    expected.insert(QStringLiteral("3:ReceiveAudDestinationPort0"), QStringLiteral("5006"));
    expected.insert(QStringLiteral("3:ReceiveFlags"), QStringLiteral("8")); // a one-digit port is passed over
    QCOMPARE(changes(before, snapshot()), expected);
}

// The locks of the video values guard all elements.
void TestLoadFile::sdpHonoursLocks()
{
    click(m->dialog->m_pCheckLockRecDstAddr);
    m->write(QStringLiteral("x.sdp"),
             "v=0\nm=video 5004\nc=IN IP4 239.7.7.7\na=recvonly\n"
             "m=audio 5006\nc=IN IP4 239.7.7.8\nm=data 5008\nc=IN IP4 239.7.7.9\na=recvonly\n");
    const Snapshot before = snapshot();
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    Snapshot expected;
    expected.insert(QStringLiteral("0:lastConfigPath"), quoted(m->folder.path()));
    expected.insert(QStringLiteral("0:ReceiveDestinationPort"), QStringLiteral("5004"));
    expected.insert(QStringLiteral("0:ReceiveFlags"), QStringLiteral("2"));
    expected.insert(QStringLiteral("0:ReceiveAudDestinationPort0"), QStringLiteral("5006"));
    expected.insert(QStringLiteral("0:TransmitAudDestinationIp0"),
                    QStringLiteral("'239.7.7.8'")); // both sides
    expected.insert(QStringLiteral("0:TransmitAudRemotePort0"), QStringLiteral("5006"));
    expected.insert(QStringLiteral("0:ReceiveAncDestinationPort"), QStringLiteral("5008"));
    QCOMPARE(changes(before, snapshot()), expected);
    QVERIFY(!m->dialog->m_pCheckRecDstAddr->isChecked());
}

// The first line has told what the file is; it is not read again.
void TestLoadFile::sdpStartsAtTheSecondLine()
{
    m->write(QStringLiteral("x.sdp"), "m=audio 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7\na=recvonly\n");
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.7.7.7")); // as for the whole session
    QCOMPARE(number(0, "ReceiveAudDestinationPort0"), 0u);
    QCOMPARE(number(0, "ReceiveDestinationPort"), 0u);
}

// Whatever the name says, a file that begins with the signature holds settings.
void TestLoadFile::theSignatureComesFirst()
{
    m->write(QStringLiteral("x.sdp"),
             "[HalvectIpConfig]\n[channel0]\nTransmitIp=10.4.4.4\nc=IN IP4 239.3.3.3\n");
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    QCOMPARE(text(0, "TransmitIp"), QStringLiteral("10.4.4.4"));
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.1.1.0"));
}

// The reader itself, before anything is shown anew.
void TestLoadFile::theReaderTicksTheBoxes()
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

void TestLoadFile::theReaderAloneHonoursLocks()
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

CORVEL_DIALOG_TEST_MAIN(TestLoadFile)
#include "test_loadfile.moc"
