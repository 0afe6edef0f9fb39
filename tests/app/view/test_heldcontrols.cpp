// SPDX-License-Identifier: MIT
//
// What a load leaves as it is, and which field the user is typing in.
#include "app/view/heldcontrols.h"

#include "theme/lineaddress.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

class TestHeldControls : public QObject {
    Q_OBJECT

private slots:
    void init();
    void boxesAndCombosArePutBack();
    void textFieldsAreOnlyNamed();
    void releasedAreForgotten();
    void deletedAreNoTrouble();
    void lineEditInHand();
    void addressInHand();
    void shownAnewIsNotInHand();
    void childDialogsAreNotSettled();

private:
    std::unique_ptr<QWidget> m_window;
    QLineEdit *m_edit = nullptr;
    QLineAddress *m_address = nullptr;
    QCheckBox *m_box = nullptr;
    QComboBox *m_combo = nullptr;
};

void TestHeldControls::init()
{
    m_window = std::make_unique<QWidget>();
    m_edit = new QLineEdit(m_window.get());
    m_address = new QLineAddress(m_window.get());
    m_box = new QCheckBox(m_window.get());
    m_combo = new QComboBox(m_window.get());
    m_combo->addItems({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestHeldControls::boxesAndCombosArePutBack()
{
    HeldControls held;
    m_box->setChecked(true);
    m_combo->setCurrentIndex(2);
    held.hold(m_box);
    held.hold(m_combo);
    m_box->setChecked(false);
    m_combo->setCurrentIndex(0);
    held.hold(m_box); // keeps the first value
    held.putBack();
    QVERIFY(m_box->isChecked());
    QCOMPARE(m_combo->currentIndex(), 2);
}

void TestHeldControls::textFieldsAreOnlyNamed()
{
    HeldControls held;
    held.hold(m_edit);
    held.hold(m_address);
    QVERIFY(!held.contains(m_edit)); // nothing was typed
    QTest::keyClicks(m_edit, QStringLiteral("typed"));
    held.hold(m_edit);
    held.hold(nullptr);
    QVERIFY(held.contains(m_edit));
    QVERIFY(!held.contains(m_address));
    QVERIFY(!held.contains(nullptr));
    m_edit->setText(QStringLiteral("typed meanwhile"));
    held.putBack();
    QCOMPARE(m_edit->text(), QStringLiteral("typed meanwhile"));
}

void TestHeldControls::releasedAreForgotten()
{
    HeldControls held;
    held.hold(m_box);
    held.release();
    QVERIFY(!held.contains(m_box));
    m_box->setChecked(true);
    held.putBack();
    QVERIFY(m_box->isChecked());
}

void TestHeldControls::deletedAreNoTrouble()
{
    HeldControls held;
    held.hold(m_box);
    delete m_box;
    held.putBack();
    QVERIFY(!held.contains(m_combo));
}

void TestHeldControls::lineEditInHand()
{
    m_edit->setFocus();
    QVERIFY(!fieldInHand(m_window.get()));
    QTest::keyClicks(m_edit, QStringLiteral("50"));
    QCOMPARE(fieldInHand(m_window.get()), m_edit);
    settleFields(m_window.get());
    QVERIFY(!fieldInHand(m_window.get()));
    QTest::keyClicks(m_edit, QStringLiteral("0"));
    m_box->setFocus();
    QVERIFY(!fieldInHand(m_window.get()));
}

// What is typed into an address is stored octet by octet, so being stored does not mean being finished.
void TestHeldControls::addressInHand()
{
    m_address->m_pLineEdit[1]->setFocus();
    QVERIFY(!fieldInHand(m_window.get()));
    m_address->m_pLineEdit[1]->selectAll();
    QTest::keyClicks(m_address->m_pLineEdit[1], QStringLiteral("12"));
    QCOMPARE(fieldInHand(m_window.get()), m_address);
    settleFields(m_window.get());
    QCOMPARE(fieldInHand(m_window.get()), m_address);
    m_box->setFocus();
    QVERIFY(!fieldInHand(m_window.get()));
    settleFields(m_window.get());
    m_address->m_pLineEdit[0]->setFocus();
    QVERIFY(!fieldInHand(m_window.get()));
}

void TestHeldControls::shownAnewIsNotInHand()
{
    m_edit->setFocus();
    QTest::keyClicks(m_edit, QStringLiteral("50"));
    m_edit->setText(QStringLiteral("7000"));
    QVERIFY(!fieldInHand(m_window.get()));
}

void TestHeldControls::childDialogsAreNotSettled()
{
    QDialog dialog(m_window.get());
    QLineEdit edit(&dialog);
    edit.setModified(true);
    m_edit->setModified(true);
    settleFields(m_window.get());
    QVERIFY(edit.isModified());
    QVERIFY(!m_edit->isModified());
}

QTEST_MAIN(TestHeldControls)
#include "test_heldcontrols.moc"
