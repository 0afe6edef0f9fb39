// SPDX-License-Identifier: MIT
//
// The dialog with platform libraries that have the original calls and none of the optional ones, as a site's
// own may: it shows, stores, saves and loads, follows another configuration when its window comes to the
// front, and shows the clock.
#include "channel/storecalls.h"
#include "support/filefixture.h"
#include "support/otherprogram.h"

#include <dlfcn.h>
#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestPlainLibraries : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theCallsAreNotThere_data();
    void theCallsAreNotThere();
    void showsWhatIsStored();
    void storesEachEdit();
    void savesAndLoads();
    void pushedDescription();
    void followsAtActivation();
    void tellsOfNoTrouble();
    void showsTheClock_data();
    void showsTheClock();
    void hasNoHistory();

private:
    QString shown(const char *name) const
    {
        const auto *label = m_dialog->findChild<QLabel *>(QLatin1String(name));
        return label->isHidden() ? QString() : label->text();
    }
    std::unique_ptr<FileFixture> m_fixture;
    QCorvel *m_dialog = nullptr;
};

void TestPlainLibraries::init()
{
    m_fixture = std::make_unique<FileFixture>();
    m_dialog = m_fixture->dialog.get();
}

void TestPlainLibraries::cleanup()
{
    m_fixture.reset();
}

void TestPlainLibraries::theCallsAreNotThere_data()
{
    QTest::addColumn<bool>("isThere");
    for (const char *name : {"rkCFGSave", "rkPTPGetStatus"})
        QTest::newRow(name) << true;
    for (const char *name : {"rkCFGForEach", "rkCFGOpen", "rkCFGChanged", "rkCFGBegin", "rkCFGEnd",
                             "rkCFGLabel", "rkCFGHistory", "rkCFGTakeBack", "rkPTPGetState", "rkPTPGetReason",
                             "rkPTPGetOffsetAge_Milli", "rkPTPForEachMaster"})
        QTest::newRow(name) << false;
}

void TestPlainLibraries::theCallsAreNotThere()
{
    QFETCH(bool, isThere);
    QCOMPARE(dlsym(RTLD_DEFAULT, QTest::currentDataTag()) != nullptr, isThere);
}

void TestPlainLibraries::showsWhatIsStored()
{
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    m_dialog->m_pChannel->setCurrentIndex(3);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.3"));
}

// Nobody can tell what others wrote since the channel was shown, so all of it is written, as it is shown.
void TestPlainLibraries::storesEachEdit()
{
    OtherProgram::setNumber(0, "TransmitRemotePort", 7001);
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("TransmitRemotePort"), QStringLiteral("0"));
    typeAddress(m_dialog->m_pLineRecDstAddr, QStringLiteral("239.9.8.7"));
    QTRY_COMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.9.8.7")));
    m_dialog->m_pCheckRecDstAddr->toggle();
    QCOMPARE(OtherProgram::stored("ReceiveFlags"), QStringLiteral("8"));
    choose(m_dialog->m_pComboClkSrc, ClockSource::FreeRun);
    QCOMPARE(OtherProgram::stored("ClockType"), QString::number(ClockSource::FreeRun));
}

void TestPlainLibraries::savesAndLoads()
{
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QVERIFY(m_fixture->save(QStringLiteral("x.ipp")));
    QVERIFY(m_fixture->read(QStringLiteral("x.ipp")).contains("ReceiveDestinationPort=5004"));
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("6000"));
    QVERIFY(m_fixture->load(QStringLiteral("x.ipp")));
    QCOMPARE(m_dialog->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
}

void TestPlainLibraries::pushedDescription()
{
    const QByteArray text = "v=0\r\no=- 1 0 IN IP4 10.0.0.1\r\ns=x\r\nt=0 0\r\nm=video 5010 RTP/AVP 96\r\n"
                            "c=IN IP4 239.7.7.7/64\r\na=rtpmap:96 raw/90000\r\n";
    void *const block = malloc(size_t(text.size()));
    memcpy(block, text.constData(), size_t(text.size()));
    m_dialog->onSendSdp(block, text.size(), 1, false);
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp", 1), quoted(QStringLiteral("239.7.7.7")));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort", 1), QStringLiteral("5010"));
}

void TestPlainLibraries::followsAtActivation()
{
    OtherProgram::choose(QStringLiteral("van"));
    QWidget other;
    DialogTest::show(&other);
    m_dialog->activateWindow();
    QTRY_COMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("van"));
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    OtherProgram::choose(QStringLiteral("default"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QString());
}

// Results of such a library need not mean what ours mean.
void TestPlainLibraries::tellsOfNoTrouble()
{
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    letItTick(m_dialog);
    QCOMPARE(shown("storeBar"), QString());
    QCOMPARE(shown("statusLine"), QString());
}

void TestPlainLibraries::showsTheClock_data()
{
    QTest::addColumn<quint32>("source");
    QTest::addColumn<QString>("line");
    QTest::newRow("internal") << ClockSource::Internal << QStringLiteral("GMT Time");
    QTest::newRow("hardware") << ClockSource::HardwarePtp << QStringLiteral("Hardware/GMT Time");
    QTest::newRow("software") << ClockSource::SoftwarePtp << QStringLiteral(" D:");
}

void TestPlainLibraries::showsTheClock()
{
    QFETCH(quint32, source);
    QFETCH(QString, line);
    choose(m_dialog->m_pComboClkSrc, source);
    letItTick(m_dialog);
    QVERIFY2(m_dialog->m_pComboClkMstr->text().contains(line), qPrintable(m_dialog->m_pComboClkMstr->text()));
    const QString before = m_dialog->m_pEditClockDomain->text();
    QVERIFY(!before.isEmpty());
    QTRY_VERIFY(m_dialog->m_pEditClockDomain->text() != before);
}

void TestPlainLibraries::hasNoHistory()
{
    QVERIFY(!storeHasHistory());
    QCOMPARE(m_dialog->contextMenuPolicy(), Qt::DefaultContextMenu);
}

CORVEL_DIALOG_TEST_MAIN(TestPlainLibraries)
#include "test_plainlibraries.moc"
