// SPDX-License-Identifier: MIT
//
// Under the hands: a click into a port, the mouse wheel over a combo, Escape, and the marks of fields whose
// text is not what is stored.
#include "support/dialog.h"
#include "support/snapshot.h"
#include "support/tip.h"
#include "theme/invalidmark.h"

#include <QAbstractItemView>
#include <QScrollBar>
#include <QWheelEvent>

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

void turnWheel(QWidget *widget, int delta)
{
    const QPoint at = widget->rect().center();
    QWheelEvent event(at, widget->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

} // namespace

class TestTyping : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aClickSelectsThePort_data();
    void aClickSelectsThePort();

    void theWheelChangesNoCombo();
    void theWheelScrollsAnOpenList();
    void theWheelChangesNoComboOfAHost();

    void escapeRestoresAText_data();
    void escapeRestoresAText();
    void escapeRestoresAllOctets_data();
    void escapeRestoresAllOctets();
    void escapeRestoresTheShownFlow();
    void escapeElsewhereDoesNothing();
    void theWindowManagerStillCloses();
    void escapeClosesTheNmosDialog();
    void escapeLeavesAnOpenListOnly();

    void aWrongPortIsMarked_data();
    void aWrongPortIsMarked();
    void theMarkStaysUntilTheTextIsRight();
    void anEmptyOctetIsMarked();
    void anAbsentInterfaceIsMarked();
    void aLoadMarks();
    void aWrongDomainIsMarked();
    void aMarkHasItsColour();

private:
    QCorvel *open();
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestTyping::init()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    put(0, "VideoType", 1);
    put(0, "ReceiveSourceIp", QStringLiteral("192.168.10.20"));
    put(0, "TransmitDestinationIp", QStringLiteral("239.20.1.17"));
    put(0, "ReceiveDestinationPort", 5004);
    put(0, "ReceiveAudDestinationPort3", 5034);
    put(0, "ReceiveAudDestinationIp3", QStringLiteral("239.3.3.3"));
    put(0, "ReceiveAudChannels", 2);
    put(0, "ReceiveAudTotalChannels", 16);
    put(0, "ClockDomain", 42);
    put(0, "ClockGrandMaster", QStringLiteral("00-1D-C1"));
    put(0, "ReceiveInterface", QStringLiteral("127.0.0.1"));
    put(0, "TransmitInterface", QStringLiteral("127.0.0.1"));
    commitStore();
}

void TestTyping::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

QCorvel *TestTyping::open()
{
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    return m_dialog.get();
}

// ------------------------------------------------------------------------------------------- the click

void TestTyping::aClickSelectsThePort_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"m_pEditRecSrcPort", "m_pEditRecDstPort", "m_pEditSndSrcPort", "m_pEditSndDstPort", "m_pEditGmId"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestTyping::aClickSelectsThePort()
{
    QFETCH(QString, name);
    QLineEdit *edit = open()->findChild<QLineEdit *>(name);
    QTest::mouseClick(edit, Qt::LeftButton);
    QCOMPARE(edit->selectedText(), edit->text());
    QTest::keyClicks(edit, QStringLiteral("77"));
    QCOMPARE(edit->text(), QStringLiteral("77"));
}

// ------------------------------------------------------------------------------------------- the wheel

void TestTyping::theWheelChangesNoCombo()
{
    open();
    click(m_dialog->m_pAudioConfig);
    const Snapshot before = snapshot();
    const QList<QComboBox *> combos = m_dialog->findChildren<QComboBox *>();
    QVERIFY(combos.size() >= 11);
    for (QComboBox *combo : combos) {
        const int index = combo->currentIndex();
        for (const bool focused : {false, true}) {
            if (focused)
                combo->setFocus();
            for (const int delta : {120, -120, -120, 1200, -1200})
                turnWheel(combo, delta);
            QCOMPARE(combo->currentIndex(), index);
        }
    }
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestTyping::theWheelScrollsAnOpenList()
{
    open();
    QComboBox *combo = m_dialog->m_pComboVidFormat;
    combo->showPopup();
    QAbstractItemView *list = combo->view();
    QTRY_VERIFY(list->isVisible());
    QScrollBar *bar = list->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    bar->setValue(0);
    turnWheel(list->viewport(), -120);
    QVERIFY(bar->value() > 0);
    combo->hidePopup();
}

void TestTyping::theWheelChangesNoComboOfAHost()
{
    m_dialog = std::make_unique<QCorvel>(static_cast<QWidget *>(nullptr));
    show(m_dialog.get());
    const int channel = m_dialog->m_pChannel->currentIndex();
    m_dialog->m_pChannel->setFocus();
    turnWheel(m_dialog->m_pChannel, -120);
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), channel);
}

// ---------------------------------------------------------------------------------------------- Escape

void TestTyping::escapeRestoresAText_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("stored");
    QTest::newRow("port") << QStringLiteral("m_pEditRecDstPort") << QStringLiteral("5004");
    QTest::newRow("domain") << QStringLiteral("m_pEditGmId") << QStringLiteral("42");
    QTest::newRow("grandmaster") << QStringLiteral("m_pEditGmAddress") << QStringLiteral("00-1D-C1");
}

void TestTyping::escapeRestoresAText()
{
    QFETCH(QString, name);
    QFETCH(QString, stored);
    open();
    m_dialog->m_pUseGmId->setChecked(true);
    const Snapshot before = snapshot();
    QLineEdit *edit = m_dialog->findChild<QLineEdit *>(name);
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClicks(edit, QStringLiteral("99x"));
    QTest::keyClick(edit, Qt::Key_Escape);
    QCOMPARE(edit->text(), stored);
    QVERIFY(edit->hasFocus() && m_dialog->isVisible());
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestTyping::escapeRestoresAllOctets_data()
{
    QTest::addColumn<bool>("atOnce"); // before the event loop has seen the keys
    QTest::newRow("at once") << true;
    QTest::newRow("after a while") << false;
}

// Each key of an address is stored when the event loop sees it. What is not stored yet is given up.
void TestTyping::escapeRestoresAllOctets()
{
    QFETCH(bool, atOnce);
    open();
    QLineAddress *address = m_dialog->m_pLineRecSrcAddr;
    QLineEdit *octet = address->m_pLineEdit[1];
    QTest::mouseClick(octet, Qt::LeftButton);
    const Snapshot before = snapshot();
    QTest::keyClick(octet, Qt::Key_7);
    if (!atOnce)
        QCoreApplication::processEvents();
    const QString expected = atOnce ? QStringLiteral("192.168.10.20") : QStringLiteral("192.7.10.20");
    address->m_pLineEdit[3]->setText(QStringLiteral("99")); // shown, not stored
    QTest::keyClick(octet, Qt::Key_Escape);
    QCOMPARE(address->address(), expected);
    QCoreApplication::processEvents();
    QCOMPARE(address->address(), expected);
    QCOMPARE(text(0, "ReceiveSourceIp"), expected);
    QVERIFY(octet->hasFocus() && m_dialog->isVisible());
    if (atOnce)
        QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestTyping::escapeRestoresTheShownFlow()
{
    open();
    click(m_dialog->m_pAudioConfig);
    click(m_dialog->m_pAudFlowSelect[3]);
    QLineEdit *port = m_dialog->m_pEditRecDstPort;
    QTest::mouseClick(port, Qt::LeftButton);
    QTest::keyClicks(port, QStringLiteral("1"));
    QTest::keyClick(port, Qt::Key_Escape);
    QCOMPARE(port->text(), QStringLiteral("5034"));
}

void TestTyping::escapeElsewhereDoesNothing()
{
    open();
    const Snapshot before = snapshot();
    for (QWidget *control : std::initializer_list<QWidget *>{
             m_dialog.get(), m_dialog->m_pChannel, m_dialog->m_pNmosOverride, m_dialog->m_pVideoConfig,
             m_dialog->m_pCmdSave, m_dialog->m_pEditClockDomain}) {
        control->setFocus();
        QTest::keyClick(control, Qt::Key_Escape);
        QVERIFY(m_dialog->isVisible());
    }
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestTyping::theWindowManagerStillCloses()
{
    open();
    QVERIFY(m_dialog->close());
    QVERIFY(!m_dialog->isVisible());
}

void TestTyping::escapeClosesTheNmosDialog()
{
    open();
    click(m_dialog->m_pOpenNmosCfg);
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog->m_pNmosCfg));
    QTest::keyClick(m_dialog->m_pLineNmosIp->m_pLineEdit[0], Qt::Key_Escape);
    QVERIFY(!m_dialog->m_pNmosCfg->isVisible());
    QVERIFY(m_dialog->isVisible());
}

void TestTyping::escapeLeavesAnOpenListOnly()
{
    open();
    QComboBox *combo = m_dialog->m_pComboVidFormat;
    combo->showPopup();
    QTRY_VERIFY(combo->view()->isVisible());
    QTest::keyClick(combo->view(), Qt::Key_Escape);
    QTRY_VERIFY(!combo->view()->isVisible());
    QVERIFY(m_dialog->isVisible());
}

// --------------------------------------------------------------------------------------------- the marks

void TestTyping::aWrongPortIsMarked_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("wrong");
    QTest::addColumn<QString>("stored");
    QTest::newRow("0") << QStringLiteral("0") << false << QStringLiteral("0");
    QTest::newRow("65535") << QStringLiteral("65535") << false << QStringLiteral("65535");
    QTest::newRow("blanks") << QStringLiteral(" 20 ") << false << QStringLiteral("20");
    QTest::newRow("65536") << QStringLiteral("65536") << true << QStringLiteral("65536");
    QTest::newRow("letters") << QStringLiteral("50o4") << true << QStringLiteral("0");
    QTest::newRow("empty") << QString() << true << QStringLiteral("0");
    QTest::newRow("cut") << QStringLiteral("4294967297") << true << QStringLiteral("1");
}

void TestTyping::aWrongPortIsMarked()
{
    QFETCH(QString, typed);
    QFETCH(bool, wrong);
    QFETCH(QString, stored);
    open();
    QLineEdit *port = m_dialog->m_pEditRecDstPort;
    typeText(port, typed);
    QTRY_COMPARE(isMarkedInvalid(port), wrong);
    QCOMPARE(snapshot().value(QStringLiteral("0:ReceiveDestinationPort")), stored);
    const QString tip = tipOf(port);
    QCOMPARE(tip.isEmpty(), !wrong);
    QVERIFY2(!wrong || tip.endsWith(QStringLiteral("\nStored is: ") + stored), qPrintable(tip));
}

void TestTyping::theMarkStaysUntilTheTextIsRight()
{
    open();
    QLineEdit *port = m_dialog->m_pEditRecDstPort;
    typeText(port, QStringLiteral("x"));
    QTRY_VERIFY(isMarkedInvalid(port));
    QVERIFY(!port->hasFocus());
    QTest::mouseClick(port, Qt::LeftButton);
    QVERIFY(isMarkedInvalid(port));
    QTest::keyClicks(port, QStringLiteral("50"));
    QTRY_VERIFY(!isMarkedInvalid(port));
    QCOMPARE(tipOf(port), QString());
}

void TestTyping::anEmptyOctetIsMarked()
{
    open();
    QLineAddress *address = m_dialog->m_pLineRecSrcAddr;
    QLineEdit *octet = address->m_pLineEdit[2];
    QTest::mouseClick(octet, Qt::LeftButton);
    QTest::keyClick(octet, Qt::Key_Delete);
    QTest::mouseClick(m_dialog->m_pEditSndSrcPort, Qt::LeftButton);
    QTRY_VERIFY(isMarkedInvalid(address));
    QCOMPARE(tipOf(address), QStringLiteral("An octet is empty.\nStored is: 192.168..20"));
    QTest::mouseClick(octet, Qt::LeftButton);
    QTest::keyClick(octet, Qt::Key_5);
    QTRY_VERIFY(!isMarkedInvalid(address));
    QTRY_COMPARE(address->toolTip(), QString());
}

void TestTyping::anAbsentInterfaceIsMarked()
{
    open();
    QLineAddress *address = m_dialog->m_pEditRecIFace;
    QVERIFY(!isMarkedInvalid(address));
    typeAddress(address, QStringLiteral("203.0.113.9"));
    QTRY_VERIFY(isMarkedInvalid(address));
    const QString tip = tipOf(address);
    QVERIFY2(tip.contains(QStringLiteral("203.0.113.9")), qPrintable(tip));
    QVERIFY2(tip.endsWith(QStringLiteral("Stored is: 127.0.0.1")), qPrintable(tip));
    QVERIFY(!isMarkedInvalid(m_dialog->m_pEditSndIFace));
    typeAddress(address, QStringLiteral("127.0.0.1"));
    QTRY_VERIFY(!isMarkedInvalid(address));
    choose(m_dialog->m_pChannel, 3); // of which nothing is stored
    typeAddress(address, QStringLiteral("203.0.113.9"));
    QTRY_VERIFY(isMarkedInvalid(address));
    QVERIFY2(tipOf(address).endsWith(QStringLiteral("\nNothing is stored")), qPrintable(address->toolTip()));
}

void TestTyping::aLoadMarks()
{
    put(1, "VideoType", 1);
    put(1, "ReceiveSourceIp", QStringLiteral("192.168..20"));
    put(1, "TransmitInterface", QStringLiteral("203.0.113.9"));
    put(1, "ReceiveDestinationPort", 70000);
    commitStore();
    open();
    QVERIFY(!isMarkedInvalid(m_dialog->m_pEditRecDstPort));
    choose(m_dialog->m_pChannel, 1);
    QTRY_VERIFY(isMarkedInvalid(m_dialog->m_pEditRecDstPort));
    QVERIFY(isMarkedInvalid(m_dialog->m_pLineRecSrcAddr));
    QVERIFY(isMarkedInvalid(m_dialog->m_pEditSndIFace));
    choose(m_dialog->m_pChannel, 0);
    QTRY_VERIFY(!isMarkedInvalid(m_dialog->m_pEditRecDstPort));
    QVERIFY(!isMarkedInvalid(m_dialog->m_pLineRecSrcAddr));
    QVERIFY(!isMarkedInvalid(m_dialog->m_pEditSndIFace));
}

void TestTyping::aWrongDomainIsMarked()
{
    open();
    QCOMPARE(m_dialog->m_pEditGmId->toolTip(), QStringLiteral("PTP domain"));
    typeText(m_dialog->m_pEditGmId, QStringLiteral("128"));
    QTRY_VERIFY(isMarkedInvalid(m_dialog->m_pEditGmId));
    QVERIFY(tipOf(m_dialog->m_pEditGmId).endsWith(QStringLiteral("Stored is: 128")));
    typeText(m_dialog->m_pEditGmId, QStringLiteral("127"));
    QTRY_VERIFY(!isMarkedInvalid(m_dialog->m_pEditGmId));
    QCOMPARE(m_dialog->m_pEditGmId->toolTip(), QStringLiteral("PTP domain"));
}

void TestTyping::aMarkHasItsColour()
{
    open();
    QLineEdit *port = m_dialog->m_pEditRecDstPort;
    typeText(port, QStringLiteral("x"));
    QTRY_VERIFY(isMarkedInvalid(port));
    const QImage picture = port->grab().toImage();
    QCOMPARE(picture.pixelColor(picture.width() / 2, 0), QColor(0xff, 0x5c, 0x5c));
}

CORVEL_DIALOG_TEST_MAIN(TestTyping)
#include "test_typing.moc"
