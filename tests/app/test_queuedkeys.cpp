// SPDX-License-Identifier: MIT
//
// Keys that the event loop has not got to yet, when something else is chosen: they are stored where they were
// typed.
#include "support/filefixture.h"
#include "support/otherprogram.h"

#include <QAction>

#include <cstring>
#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

// Real keys, without the event loop running behind them and without the focus moving.
void typeOctet(QLineAddress *address, const QString &text)
{
    QLineEdit *const octet = address->m_pLineEdit[3];
    octet->setFocus();
    octet->selectAll();
    for (const QChar letter : text) {
        const int key = Qt::Key_0 + letter.digitValue();
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString(letter));
        QCoreApplication::sendEvent(octet, &press);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, QString(letter));
        QCoreApplication::sendEvent(octet, &release);
    }
}

void push(QCorvel *dialog, int channel)
{
    const char description[] = "v=0\nm=video 5004\nc=IN IP4 239.9.9.9\n";
    void *const block = malloc(sizeof description);
    memcpy(block, description, sizeof description);
    dialog->onSendSdp(block, sizeof description - 1, channel, false);
}

} // namespace

class TestQueuedKeys : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void anElementIsChosen();
    void aChannelIsChosen();
    void aFlowIsChosen();
    void aTypeIsChosen();
    void aConfigurationIsChosen();
    void singleFlow();
    void fileSettings();
    void theOverride();
    void aStepIsTakenBack();
    void anInterface();
    void aDescriptionIsPushed();
    void aHalfTypedPortAndADescription();
    void theWindowIsClosed();
    void nothingTypedMovesNothing();

private:
    std::unique_ptr<FileFixture> m_fixture;
    QCorvel *m_dialog = nullptr;
};

void TestQueuedKeys::init()
{
    m_fixture = std::make_unique<FileFixture>();
    m_dialog = m_fixture->dialog.get();
}

void TestQueuedKeys::cleanup()
{
    m_fixture.reset();
}

void TestQueuedKeys::anElementIsChosen()
{
    const Snapshot before = snapshot();
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    m_dialog->m_pAudioConfig->setChecked(true);
    QVERIFY(m_dialog->isAudio());
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("1.0.0.0"));
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.77")));
    QVERIFY(!changes(before, snapshot()).contains(QStringLiteral("0:ReceiveAudDestinationIp0")));
    m_dialog->m_pVideoConfig->setChecked(true);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.77"));
}

void TestQueuedKeys::aChannelIsChosen()
{
    const Snapshot before = snapshot();
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    m_dialog->m_pChannel->setCurrentIndex(1);
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 1);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.1"));
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.77")));
    const Snapshot changed = changes(before, snapshot());
    for (auto it = changed.cbegin(); it != changed.cend(); ++it)
        QVERIFY2(!isOfChannel(1, it.key()), qPrintable(it.key()));
}

void TestQueuedKeys::aFlowIsChosen()
{
    m_dialog->m_pAudioConfig->setChecked(true);
    m_dialog->m_pComboAudFlow->setCurrentIndex(m_dialog->m_pComboAudFlow->findData(4));
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    m_dialog->m_pAudFlowSelect[2]->setChecked(true);
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveAudDestinationIp0"), quoted(QStringLiteral("1.0.0.77")));
    QCOMPARE(OtherProgram::stored("ReceiveAudDestinationIp2"), QString());
    QVERIFY(m_dialog->m_pAudFlowSelect[2]->isChecked());
}

void TestQueuedKeys::aTypeIsChosen()
{
    m_dialog->m_pAncConfig->setChecked(true);
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    m_dialog->m_pComboType->addItem(QStringLiteral("one element"), 3);
    const int other = m_dialog->m_pComboType->count() - 1;
    m_dialog->m_pComboType->setCurrentIndex(other);
    QCoreApplication::processEvents();
    QCOMPARE(m_dialog->m_pComboType->currentIndex(), other);
    QCOMPARE(OtherProgram::stored("ReceiveAncDestinationIp"), quoted(QStringLiteral("1.0.0.77")));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.0")));
}

void TestQueuedKeys::aConfigurationIsChosen()
{
    OtherProgram::choose(QStringLiteral("van"));
    OtherProgram::choose(QStringLiteral("default"));
    QTRY_VERIFY(m_dialog->m_pConfig->findText(QStringLiteral("van")) >= 0);
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    m_dialog->m_pConfig->setCurrentIndex(m_dialog->m_pConfig->findText(QStringLiteral("van")));
    QCoreApplication::processEvents();
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("van"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), QString());
    OtherProgram::choose(QStringLiteral("default"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.77")));
}

void TestQueuedKeys::singleFlow()
{
    m_dialog->m_pAudioConfig->setChecked(true);
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    QVERIFY(QMetaObject::invokeMethod(m_dialog, "audChanUseSingle", Q_ARG(bool, true)));
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveAudDestinationIp0"), quoted(QStringLiteral("1.0.0.77")));
}

void TestQueuedKeys::fileSettings()
{
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    QVERIFY(QMetaObject::invokeMethod(m_dialog, "onFileSettingChanged", Q_ARG(bool, true)));
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.77")));
}

void TestQueuedKeys::theOverride()
{
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    QVERIFY(QMetaObject::invokeMethod(m_dialog, "onBoardSettingChanged", Q_ARG(bool, true)));
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.77")));
}

// The last step is the one with the key.
void TestQueuedKeys::aStepIsTakenBack()
{
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    for (QAction *action : m_dialog->actions())
        action->trigger();
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5004"));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.0")));
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
}

void TestQueuedKeys::anInterface()
{
    m_dialog->m_pEditRecIFace->setAddress(QStringLiteral("127.0.0.9"));
    typeOctet(m_dialog->m_pEditRecIFace, QStringLiteral("1"));
    m_dialog->m_pAudioConfig->setChecked(true);
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveInterface"), quoted(QStringLiteral("127.0.0.1")));
}

void TestQueuedKeys::aDescriptionIsPushed()
{
    typeOctet(m_dialog->m_pLineRecSrcAddr, QStringLiteral("77"));
    push(m_dialog, 1);
    QCoreApplication::processEvents();
    QCOMPARE(OtherProgram::stored("ReceiveSourceIp"), quoted(QStringLiteral("1.0.0.77")));
    QVERIFY(OtherProgram::stored("ReceiveSourceIp", 1) != quoted(QStringLiteral("1.0.0.77")));
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp", 1), quoted(QStringLiteral("239.9.9.9")));
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 0);
}

void TestQueuedKeys::aHalfTypedPortAndADescription()
{
    QLineEdit *const port = m_dialog->m_pEditSndDstPort;
    QTest::mouseClick(port, Qt::LeftButton);
    QTest::keyClick(port, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(port, QStringLiteral("51"));
    push(m_dialog, 1);
    QCOMPARE(OtherProgram::stored("TransmitRemotePort"), QStringLiteral("51"));
    QVERIFY(OtherProgram::stored("TransmitRemotePort", 1) != QLatin1String("51"));
    QCOMPARE(port->text(), QStringLiteral("51"));
}

void TestQueuedKeys::theWindowIsClosed()
{
    typeOctet(m_dialog->m_pLineRecDstAddr, QStringLiteral("77"));
    m_dialog->close();
    QCOMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.77")));
}

void TestQueuedKeys::nothingTypedMovesNothing()
{
    const Snapshot before = snapshot();
    m_dialog->m_pChannel->setCurrentIndex(1);
    m_dialog->m_pAudioConfig->setChecked(true);
    m_dialog->m_pChannel->setCurrentIndex(0);
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

CORVEL_DIALOG_TEST_MAIN(TestQueuedKeys)
#include "test_queuedkeys.moc"
