// SPDX-License-Identifier: MIT
//
// "Load File" through the toolkit's own file dialog: settings files and session descriptions, from the file
// to the store and the controls.
#include "support/filefixture.h"
#include "support/logfile.h"

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

class TestLoadCommand : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { startLog(); }
    void init() { m = std::make_unique<FileFixture>(); }
    void cleanup() { m.reset(); }

    void loadsRelativeToTheFirstSection();
    void loadShowsWhatItStored();
    void loadIgnoresLocksAndKeepsInterfaces();
    void loadOfAnOverrideChangesOnlyTheStore();
    void loadThatStoresNothing_data();
    void loadThatStoresNothing();
    void anEarlierSectionEndsTheLoad();
    void sdpTicksAndStores();
    void sdpGoesToTheShownChannel();
    void sdpHonoursLocks();
    void sdpStartsAtTheSecondLine();
    void whatWasSavedIsLoaded();

private:
    std::unique_ptr<FileFixture> m;
};

void TestLoadCommand::loadsRelativeToTheFirstSection()
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

void TestLoadCommand::loadShowsWhatItStored()
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

void TestLoadCommand::loadIgnoresLocksAndKeepsInterfaces()
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

void TestLoadCommand::loadOfAnOverrideChangesOnlyTheStore()
{
    m->write(QStringLiteral("x.ipp"),
             "[HalvectIpConfig]\n[channel0]\nnmosoverride=1\n[channel1]\nnmosoverride=0\n");
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    QCOMPARE(FileFixture::globalOverride(), QStringLiteral("0")); // the last one wins
    QVERIFY(m->dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m->dialog->m_pSwapLayout->currentIndex(), 0);
    QVERIFY(!m->dialog->m_pBoardSettings->isChecked());
}

void TestLoadCommand::loadThatStoresNothing_data()
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
void TestLoadCommand::loadThatStoresNothing()
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

void TestLoadCommand::anEarlierSectionEndsTheLoad()
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

void TestLoadCommand::sdpTicksAndStores()
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
    expected.insert(QStringLiteral("0:ReceiveFlags"), QStringLiteral("30")); // the receive boxes, on purpose
    QCOMPARE(changes(before, snapshot()), expected);
    QVERIFY(m->dialog->m_pCheckRecDstAddr->isChecked());
    QVERIFY(m->dialog->m_pCheckRecSrcAddr->isChecked());
    QVERIFY(m->dialog->m_pCheckRecDstPort->isChecked());
    QVERIFY(!m->dialog->m_pCheckRecSrcPort->isChecked());
    QCOMPARE(m->dialog->m_pLineSndDstAddr->address(), QStringLiteral("239.7.7.7"));
}

void TestLoadCommand::sdpGoesToTheShownChannel()
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
void TestLoadCommand::sdpHonoursLocks()
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
void TestLoadCommand::sdpStartsAtTheSecondLine()
{
    m->write(QStringLiteral("x.sdp"), "m=audio 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7\na=recvonly\n");
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.7.7.7")); // as for the whole session
    QCOMPARE(number(0, "ReceiveAudDestinationPort0"), 0u);
    QCOMPARE(number(0, "ReceiveDestinationPort"), 0u);
}

void TestLoadCommand::whatWasSavedIsLoaded()
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

CORVEL_DIALOG_TEST_MAIN(TestLoadCommand)
#include "test_loadcommand.moc"
