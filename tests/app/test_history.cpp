// SPDX-License-Identifier: MIT
//
// Taking changes back in the dialog: by key and by menu, with what others changed since left alone, and the
// window with the last changes.
#include "channel/storecalls.h"
#include "support/filefixture.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMessageBox>
#include <QTableWidget>
#include <QWheelEvent>

using namespace DialogTest;
using namespace StoreTest;

namespace {

// Another program of the same user.
void otherProgram(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), arguments);
    QVERIFY(tool.waitForFinished());
    QCOMPARE(tool.exitCode(), 0);
}

void setByOther(int channel, const char *name, const QString &value)
{
    otherProgram({QStringLiteral("set"), QStringLiteral("KWX\\Internal%1\\IpConfig").arg(channel),
                  QString::fromLatin1(name), value});
}

void pressTakeBack(QWidget *focus)
{
    QTest::keyClick(focus, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
}

} // namespace

class TestHistory : public QObject {
    Q_OBJECT

private slots:
    void init() { m = std::make_unique<FileFixture>(); }
    void cleanup() { m.reset(); }

    void theKeyTakesTheLastEditBack();
    void theKeyWorksInEveryField();
    void typingIsOneStep();
    void putBackAfterIt();
    void whatOthersChangedIsLeftAlone();
    void othersChangesAreNotTakenBack();
    void nothingToTakeBack();
    void aLoadIsTakenBackByName();
    void lockAllIsTakenBackByName();
    void theMenuIsInTheEmptyAreaOnly();
    void theListShowsAndTakesBack();
    void theListFiltersByChannel();
    void theWheelFiltersNothing();
    void absentEmbedded();
    void noNewControls();

private:
    QString line() const { return m->dialog->findChild<QLabel *>(QStringLiteral("statusLine"))->text(); }
    QMenu *openMenu(QWidget *over) const;
    QAction *choose(QMenu *menu, const QString &start) const;
    QDialog *openList() const;
    std::unique_ptr<FileFixture> m;
};

QMenu *TestHistory::openMenu(QWidget *over) const
{
    const QPoint at = over->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, over->mapToGlobal(at));
    QApplication::sendEvent(over, &event);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QAction *TestHistory::choose(QMenu *menu, const QString &start) const
{
    for (QAction *action : menu->actions()) {
        if (!action->text().startsWith(start))
            continue;
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
        return action;
    }
    return nullptr;
}

QDialog *TestHistory::openList() const
{
    choose(openMenu(m->dialog->m_pTypeLbl), QStringLiteral("History"));
    return m->dialog->findChild<QDialog *>(QStringLiteral("historyList"));
}

// ------------------------------------------------------------------------------------------------- the key

void TestHistory::theKeyTakesTheLastEditBack()
{
    typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    typeText(m->dialog->m_pEditRecSrcPort, QStringLiteral("6000"));
    const Snapshot before = snapshot();
    pressTakeBack(m->dialog->m_pEditSndSrcPort);
    QCOMPARE(number(0, "ReceiveSourcePort"), 0u);
    QCOMPARE(m->dialog->m_pEditRecSrcPort->text(), QStringLiteral("0"));
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    QCOMPARE(changes(before, snapshot()).size(), 1);
    QVERIFY2(line().startsWith(QStringLiteral("Taken back: Receive Source Port, channel 0 Video")),
             qPrintable(line()));
    pressTakeBack(m->dialog->m_pEditSndSrcPort);
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("0"));
}

// In a text field the key is not the field's own "redo".
void TestHistory::theKeyWorksInEveryField()
{
    for (QWidget *field :
         {static_cast<QWidget *>(m->dialog->m_pEditRecSrcPort),
          static_cast<QWidget *>(m->dialog->m_pLineRecDstAddr->m_pLineEdit[2]),
          static_cast<QWidget *>(m->dialog->m_pComboType), static_cast<QWidget *>(m->dialog->m_pCmdLoad)}) {
        typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
        QCOMPARE(number(0, "ReceiveDestinationPort"), 5004u);
        field->setFocus();
        pressTakeBack(field);
        QCOMPARE(number(0, "ReceiveDestinationPort"), 0u);
    }
}

// Every key in an address is stored; nobody wants to take back a digit.
void TestHistory::typingIsOneStep()
{
    typeAddress(m->dialog->m_pLineRecDstAddr, QStringLiteral("239.20.30.40"));
    QTRY_COMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.20.30.40"));
    pressTakeBack(m->dialog->m_pLineRecDstAddr->m_pLineEdit[3]);
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.1.1.0"));
    QCOMPARE(m->dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
}

void TestHistory::putBackAfterIt()
{
    typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    pressTakeBack(m->dialog->m_pEditRecDstPort);
    QCOMPARE(number(0, "ReceiveDestinationPort"), 0u);
    QVERIFY(choose(openMenu(m->dialog->m_pTypeLbl), QStringLiteral("Put Back")));
    QCOMPARE(number(0, "ReceiveDestinationPort"), 5004u);
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    QVERIFY2(line().startsWith(QStringLiteral("Put back: ")), qPrintable(line()));
    pressTakeBack(m->dialog->m_pEditRecDstPort); // and so on
    QCOMPARE(number(0, "ReceiveDestinationPort"), 0u);
}

// ---------------------------------------------------------------------------------------------- the others

void TestHistory::whatOthersChangedIsLeftAlone()
{
    typeAddress(m->dialog->m_pLineRecDstAddr, QStringLiteral("239.20.30.40"));
    QTRY_COMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.20.30.40"));
    setByOther(0, "ReceiveDestinationIp", QStringLiteral("239.99.99.99"));
    pressTakeBack(m->dialog->m_pCmdLoad);
    QCOMPARE(text(0, "ReceiveDestinationIp"), QStringLiteral("239.99.99.99"));
    QCOMPARE(m->dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.99.99.99"));
    QVERIFY2(line().startsWith(QStringLiteral("Nothing taken back: ")), qPrintable(line()));
    QVERIFY2(line().contains(QStringLiteral("changed since by others and left alone: Receive Destination")),
             qPrintable(line()));
}

void TestHistory::othersChangesAreNotTakenBack()
{
    typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    setByOther(2, "ReceiveDestinationIp", QStringLiteral("239.99.99.99"));
    pressTakeBack(m->dialog->m_pCmdLoad);
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.99.99.99"));
    QCOMPARE(number(0, "ReceiveDestinationPort"), 0u);
}

void TestHistory::nothingToTakeBack()
{
    m.reset();
    const FreshStore store;
    QCorvel dialog(true, nullptr);
    show(&dialog);
    for (int again = 0; again < 8; ++again) // what the first start stored
        pressTakeBack(dialog.m_pCmdSave);
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("statusLine"))->text(),
             QStringLiteral("There is nothing to take back"));
}

// -------------------------------------------------------------------------------------------------- by name

void TestHistory::aLoadIsTakenBackByName()
{
    m->write(
        QStringLiteral("site.ipp"),
        "[HalvectIpConfig]\n[channel0]\nReceiveDestinationIp=239.7.7.7\n[channel1]\nTransmitIp=10.1.1.1\n");
    const Snapshot before = snapshot();
    QVERIFY(m->load(QStringLiteral("site.ipp")));
    QMenu *menu = openMenu(m->dialog->m_pTypeLbl);
    QVERIFY(menu);
    QCOMPARE(menu->actions().first()->text(), QStringLiteral("Take Back: Load File site.ipp"));
    QCOMPARE(menu->actions().first()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+Z")));
    choose(menu, QStringLiteral("Take Back"));
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QCOMPARE(m->dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.0"));
    QCOMPARE(line(), QStringLiteral("Taken back: Load File site.ipp"));
}

void TestHistory::lockAllIsTakenBackByName()
{
    const Snapshot before = snapshot();
    click(m->dialog->m_pCheckLockGroup);
    QVERIFY(changes(before, snapshot()).size() > 10);
    QMenu *menu = openMenu(m->dialog->m_pTypeLbl);
    QCOMPARE(menu->actions().first()->text(), QStringLiteral("Take Back: lock all of channel 0"));
    choose(menu, QStringLiteral("Take Back"));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

// -------------------------------------------------------------------------------------------------- the face

void TestHistory::theMenuIsInTheEmptyAreaOnly()
{
    for (QWidget *over :
         {static_cast<QWidget *>(m->dialog->m_pTypeLbl), m->dialog->m_pCmdLoad->parentWidget()}) {
        QMenu *menu = openMenu(over);
        QVERIFY(menu);
        QCOMPARE(menu->objectName(), QStringLiteral("historyMenu"));
        QCOMPARE(menu->actions().at(1)->text(), QStringLiteral("Put Back"));
        QCOMPARE(menu->actions().last()->text(), QString::fromUtf8("History\u2026"));
        menu->close();
    }
    QVERIFY(!openMenu(m->dialog->m_pCmdLoad));
    QVERIFY(!openMenu(m->dialog->m_pCheckLockGroup));
}

void TestHistory::theListShowsAndTakesBack()
{
    typeText(m->dialog->m_pEditSndSrcPort, QStringLiteral("7000")); // stores all that is shown
    typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    typeText(m->dialog->m_pEditRecSrcPort, QStringLiteral("6000"));
    QDialog *list = openList();
    QVERIFY(list && QTest::qWaitForWindowActive(list));
    auto *table = list->findChild<QTableWidget *>();
    auto *button = list->findChild<QPushButton *>(QStringLiteral("historyTakeBack"));
    QVERIFY(!button->isEnabled());
    QVERIFY(
        table->item(1, 2)->text().startsWith(QStringLiteral("Receive Destination Port, channel 0 Video")));
    table->selectRow(1); // not the last: asks first
    click(button);
    auto *question = list->findChild<QMessageBox *>(QStringLiteral("historyQuestion"));
    QVERIFY(question && question->isVisible());
    QCOMPARE(number(0, "ReceiveDestinationPort"), 5004u);
    click(question->button(QMessageBox::Yes));
    QTRY_COMPARE(number(0, "ReceiveDestinationPort"), 0u);
    QCOMPARE(number(0, "ReceiveSourcePort"), 6000u);
    QCOMPARE(m->dialog->m_pEditRecDstPort->text(), QStringLiteral("0"));
    table->selectRow(0); // the taking back itself, which is the last
    click(button);
    QCOMPARE(number(0, "ReceiveDestinationPort"), 5004u);
}

void TestHistory::theListFiltersByChannel()
{
    setByOther(3, "ReceiveDestinationIp", QStringLiteral("239.99.99.99"));
    typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QDialog *list = openList();
    auto *table = list->findChild<QTableWidget *>();
    const int all = table->rowCount();
    auto *channel = list->findChild<QComboBox *>();
    channel->setCurrentIndex(channel->findData(3));
    QVERIFY(table->rowCount() < all);
    QVERIFY(table->item(0, 2)->text().contains(QStringLiteral("channel 3")));
    QVERIFY(table->item(0, 1)->text().contains(QStringLiteral("rkcfg")));
    m->dialog.reset(); // the list goes with it
    QVERIFY(!QApplication::activeWindow());
}

void TestHistory::theWheelFiltersNothing()
{
    typeText(m->dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    auto *channel = openList()->findChild<QComboBox *>();
    QVERIFY(channel->count() > 1);
    const QPoint at = channel->rect().center();
    QWheelEvent event(at, channel->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(channel, &event);
    QCOMPARE(channel->currentIndex(), 0);
}

void TestHistory::absentEmbedded()
{
    m.reset();
    const FreshStore store;
    QCorvel dialog(nullptr);
    show(&dialog);
    QVERIFY(!openMenu(dialog.m_pTypeLbl));
    QCOMPARE(dialog.actions().size(), 0);
}

void TestHistory::noNewControls()
{
    QCOMPARE(m->dialog->findChildren<QMenu *>().size(), 0);
    QCOMPARE(m->dialog->actions().size(), 1);
}

CORVEL_DIALOG_TEST_MAIN(TestHistory)
#include "test_history.moc"
