// SPDX-License-Identifier: MIT
//
// What other programs write is on the screen without anybody doing anything, except where the user is typing.
#include "support/filefixture.h"
#include "support/otherprogram.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestFollowing : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void valuesOfTheShownElement_data();
    void valuesOfTheShownElement();
    void oneAfterTheOther();
    void nothingIsWritten();
    void theFieldBeingTypedInStays();
    void theAddressBeingTypedInStays();
    void aFieldThatOnlyHasTheFocusFollows();
    void anOpenListStays();
    void anotherConfiguration();
    void theOneChosenHere();
    void aConfigurationMadeAndDeleted();
    void anOpenListOfConfigurationsStays();
    void theOverride();
    void theLog();
    void savedSettingsLeaveTheBox();
    void nodeSettings();
    void nodeSettingsWaitForSet();
    void aNodeSettingBeingChangedStaysAlone();

private:
    std::unique_ptr<FileFixture> m_fixture;
    QCorvel *m_dialog = nullptr;
};

void TestFollowing::init()
{
    m_fixture = std::make_unique<FileFixture>();
    m_dialog = m_fixture->dialog.get();
}

void TestFollowing::cleanup()
{
    m_fixture.reset();
}

void TestFollowing::valuesOfTheShownElement_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("control");
    const auto row = [](const char *name, const char *value, const char *control) {
        QTest::newRow(name) << QByteArray(name) << QString::fromLatin1(value) << QByteArray(control);
    };
    row("ReceiveDestinationIp", "239.8.8.8", "m_pLineRecDstAddr");
    row("TransmitIp", "10.8.8.8", "m_pLineSndSrcAddr");
    row("ReceiveInterface", "10.8.8.9", "m_pEditRecIFace");
    row("TransmitDestinationIp", "239.7.7.7", "m_pSimpleAddress");
}

void TestFollowing::valuesOfTheShownElement()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, value);
    QFETCH(QByteArray, control);
    const auto *address = m_dialog->findChild<QLineAddress *>(QLatin1String(control));
    OtherProgram::set(0, name.constData(), value);
    QTRY_COMPARE(address->address(), value);
}

void TestFollowing::oneAfterTheOther()
{
    for (quint32 port = 5000; port < 5010; ++port) {
        OtherProgram::setNumber(0, "ReceiveDestinationPort", port);
        QTRY_COMPARE(m_dialog->m_pEditRecDstPort->text(), QString::number(port));
    }
    OtherProgram::setNumber(0, "ClockType", 0x20000);
    QTRY_COMPARE(m_dialog->m_pComboClkSrc->currentData().toUInt(), 0x20000u);
    OtherProgram::setNumber(0, "ReceiveFlags", 8);
    QTRY_VERIFY(m_dialog->m_pCheckRecDstAddr->isChecked());
}

void TestFollowing::nothingIsWritten()
{
    OtherProgram::set(0, "TransmitIp", QStringLiteral("10.8.8.8"));
    const Snapshot before = snapshot();
    QTRY_COMPARE(m_dialog->m_pLineSndSrcAddr->address(), QStringLiteral("10.8.8.8"));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestFollowing::theFieldBeingTypedInStays()
{
    QLineEdit *edit = m_dialog->m_pEditRecDstPort;
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(edit, QStringLiteral("51"));
    OtherProgram::setNumber(0, "ReceiveDestinationPort", 7000);
    OtherProgram::setNumber(0, "TransmitRemotePort", 7001);
    QTRY_COMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("7001"));
    QCOMPARE(edit->text(), QStringLiteral("51"));
    QCOMPARE(edit->cursorPosition(), 2);
    QTest::keyClicks(edit, QStringLiteral("23"));
    QTest::keyClick(edit, Qt::Key_Tab);
    QCOMPARE(OtherProgram::stored("ReceiveDestinationPort"), QStringLiteral("5123"));
    QCOMPARE(OtherProgram::stored("TransmitRemotePort"), QStringLiteral("7001"));
}

void TestFollowing::theAddressBeingTypedInStays()
{
    QLineAddress *address = m_dialog->m_pLineRecDstAddr;
    QTest::mouseClick(address->m_pLineEdit[3], Qt::LeftButton);
    QTest::keyClicks(address->m_pLineEdit[3], QStringLiteral("2"));
    OtherProgram::set(0, "ReceiveDestinationIp", QStringLiteral("239.99.99.99"));
    OtherProgram::setNumber(0, "TransmitRemotePort", 7001);
    QTRY_COMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("7001"));
    QCOMPARE(address->address(), QStringLiteral("239.1.1.2"));
    QTest::keyClicks(address->m_pLineEdit[3], QStringLiteral("4"));
    QTRY_COMPARE(OtherProgram::stored("ReceiveDestinationIp"), quoted(QStringLiteral("239.1.1.24")));
}

void TestFollowing::aFieldThatOnlyHasTheFocusFollows()
{
    QTest::mouseClick(m_dialog->m_pEditRecDstPort, Qt::LeftButton);
    OtherProgram::setNumber(0, "ReceiveDestinationPort", 7000);
    QTRY_COMPARE(m_dialog->m_pEditRecDstPort->text(), QStringLiteral("7000"));
    QTest::mouseClick(m_dialog->m_pLineRecDstAddr->m_pLineEdit[0], Qt::LeftButton);
    OtherProgram::set(0, "ReceiveDestinationIp", QStringLiteral("239.4.4.4"));
    QTRY_COMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.4.4.4"));
}

void TestFollowing::anOpenListStays()
{
    QComboBox *combo = m_dialog->m_pComboVidFormat;
    const int before = combo->currentIndex();
    combo->showPopup();
    OtherProgram::setNumber(0, "SignalFormat", combo->itemData(before + 3).toUInt());
    OtherProgram::setNumber(0, "TransmitRemotePort", 7001);
    QTRY_COMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("7001"));
    QCOMPARE(combo->currentIndex(), before);
    combo->hidePopup();
}

void TestFollowing::anotherConfiguration()
{
    OtherProgram::choose(QStringLiteral("van"));
    QTRY_COMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("van"));
    OtherProgram::set(0, "ReceiveDestinationIp", QStringLiteral("239.5.5.5"));
    QTRY_COMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.5.5.5"));
    OtherProgram::choose(QStringLiteral("default"));
    QTRY_COMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("default"));
}

// Every write is seen, not only the first ones, which make files that tell of themselves.
void TestFollowing::theOneChosenHere()
{
    OtherProgram::choose(QStringLiteral("van"));
    OtherProgram::choose(QStringLiteral("default"));
    QComboBox *combo = m_dialog->m_pConfig;
    QTRY_VERIFY(combo->currentText() == QLatin1String("default") &&
                combo->findText(QStringLiteral("van")) >= 0);
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_V);
    QCOMPARE(combo->currentText(), QStringLiteral("van"));
    for (const char *address : {"239.6.6.1", "239.6.6.2", "239.6.6.3"}) {
        OtherProgram::set(0, "ReceiveDestinationIp", QLatin1String(address));
        QTRY_COMPARE(m_dialog->m_pLineRecDstAddr->address(), QLatin1String(address));
        letItTick(m_dialog);
    }
    OtherProgram::choose(QStringLiteral("default"));
    QTRY_COMPARE(combo->currentText(), QStringLiteral("default"));
}

// It would change under the hand. It is right again when it has been closed and anything happens.
void TestFollowing::anOpenListOfConfigurationsStays()
{
    QComboBox *combo = m_dialog->m_pConfig;
    const int before = combo->count();
    combo->showPopup();
    rkCFGClose(rkCFGOpen("spare", 1), 1);
    OtherProgram::setNumber(0, "TransmitRemotePort", 7002);
    QTRY_COMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("7002"));
    QCOMPARE(combo->count(), before);
    combo->hidePopup();
    QCOMPARE(rkCFGDelete("spare"), 0);
    rkCFGClose(rkCFGOpen("spare", 1), 1);
    QTRY_COMPARE(combo->count(), before + 1);
    QCOMPARE(rkCFGDelete("spare"), 0);
}

void TestFollowing::aConfigurationMadeAndDeleted()
{
    void *const store = rkCFGOpen("spare", 1);
    QVERIFY(store);
    rkCFGClose(store, 1);
    QTRY_VERIFY(m_dialog->m_pConfig->findText(QStringLiteral("spare")) >= 0);
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("default"));
    QCOMPARE(rkCFGDelete("spare"), 0);
    QTRY_VERIFY(m_dialog->m_pConfig->findText(QStringLiteral("spare")) < 0);
}

void TestFollowing::theOverride()
{
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    OtherProgram::setNumber(QLatin1String(StorePath::AvHAL), MachineValue::NmosOverride, 0);
    QTRY_VERIFY(!m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
    QVERIFY(!m_dialog->m_pCmdLoad->isEnabled());
    OtherProgram::setNumber(QLatin1String(StorePath::AvHAL), MachineValue::NmosOverride, 1);
    QTRY_VERIFY(m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
}

void TestFollowing::theLog()
{
    OtherProgram::setNumber(QLatin1String(StorePath::Debug), MachineValue::NmosUseLog, 1);
    QTRY_VERIFY(m_dialog->m_pNmosOutLog->isChecked());
    QVERIFY(m_dialog->bNmosUseLog);
}

// Saving ends the override in the store and leaves the box; what others write elsewhere does not change that.
void TestFollowing::savedSettingsLeaveTheBox()
{
    QVERIFY(m_fixture->save(QStringLiteral("x.ipp")));
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    OtherProgram::set(0, "TransmitIp", QStringLiteral("10.8.8.8"));
    QTRY_COMPARE(m_dialog->m_pLineSndSrcAddr->address(), QStringLiteral("10.8.8.8"));
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
}

void TestFollowing::nodeSettings()
{
    QTest::mouseClick(m_dialog->m_pOpenNmosCfg, Qt::LeftButton);
    OtherProgram::set(0, "nmosdomain", QStringLiteral("local"));
    QTRY_COMPARE(m_dialog->m_pEditNmosDmn->text(), QStringLiteral("local"));
    QTest::keyClicks(m_dialog->m_pEditNmosDmn, QStringLiteral("ly"));
    OtherProgram::set(0, "nmosdomain", QStringLiteral("theirs"));
    OtherProgram::setNumber(0, "TransmitRemotePort", 7001);
    QTRY_COMPARE(m_dialog->m_pEditSndDstPort->text(), QStringLiteral("7001"));
    QCOMPARE(m_dialog->m_pEditNmosDmn->text(), QStringLiteral("locally"));
}

// Only what the user changed is the user's: "Set" undoes nobody's change of the others.
void TestFollowing::aNodeSettingBeingChangedStaysAlone()
{
    QTest::mouseClick(m_dialog->m_pOpenNmosCfg, Qt::LeftButton);
    QTest::keyClicks(m_dialog->m_pEditNmosDmn, QStringLiteral("ours"));
    OtherProgram::set(0, "nmosserverport", QStringLiteral("8010"));
    OtherProgram::set(0, "nmosserverip", QStringLiteral("10.4.4.4"));
    QTRY_COMPARE(m_dialog->m_pEditNmosPort->text(), QStringLiteral("8010"));
    QTRY_COMPARE(m_dialog->m_pLineNmosSrv->address(), QStringLiteral("10.4.4.4"));
    OtherProgram::set(0, "nmosserverport", QStringLiteral("8011"));
    QTest::mouseClick(m_dialog->m_pSetNmosCfg, Qt::LeftButton);
    QCOMPARE(OtherProgram::stored("nmosdomain"), quoted(QStringLiteral("ours")));
    QCOMPARE(OtherProgram::stored("nmosserverport"), quoted(QStringLiteral("8011")));
    QCOMPARE(OtherProgram::stored("nmosserverip"), quoted(QStringLiteral("10.4.4.4")));
}

// What is typed there is not stored by what is done on the page meanwhile, so it is not given up either.
void TestFollowing::nodeSettingsWaitForSet()
{
    QTest::mouseClick(m_dialog->m_pOpenNmosCfg, Qt::LeftButton);
    QTest::keyClicks(m_dialog->m_pEditNmosDmn, QStringLiteral("ours"));
    click(m_dialog->m_pCheckSndDstPort);
    OtherProgram::set(0, "nmosserverport", QStringLiteral("8010"));
    QTRY_COMPARE(m_dialog->m_pEditNmosPort->text(), QStringLiteral("8010"));
    QCOMPARE(m_dialog->m_pEditNmosDmn->text(), QStringLiteral("ours"));
}

CORVEL_DIALOG_TEST_MAIN(TestFollowing)
#include "test_following.moc"
