// SPDX-License-Identifier: MIT
//
// Combo boxes whose entries carry a number: what is chosen, and choosing by the number.
#include "app/view/combos.h"

#include <QComboBox>
#include <QtTest>

class TestCombos : public QObject {
    Q_OBJECT

private slots:
    void init();
    void anEmptyOneHasNoNumber();
    void theFirstEntryWithTheNumberIsChosen();
    void anUnknownNumberChangesNothing();
    void onlyTheLow32BitsCount();

private:
    QScopedPointer<QComboBox> m_combo;
};

void TestCombos::init()
{
    m_combo.reset(new QComboBox);
    m_combo->addItem(QStringLiteral("five"), 5);
    m_combo->addItem(QStringLiteral("seven"), 7);
    m_combo->addItem(QStringLiteral("seven again"), 7);
}

void TestCombos::anEmptyOneHasNoNumber()
{
    m_combo->clear();
    QCOMPARE(comboData(m_combo.data()), 0u);
    selectData(m_combo.data(), 5);
    QCOMPARE(m_combo->currentIndex(), -1);
}

void TestCombos::theFirstEntryWithTheNumberIsChosen()
{
    selectData(m_combo.data(), 7);
    QCOMPARE(m_combo->currentIndex(), 1);
    QCOMPARE(comboData(m_combo.data()), 7u);
}

void TestCombos::anUnknownNumberChangesNothing()
{
    m_combo->setCurrentIndex(2);
    selectData(m_combo.data(), 6);
    QCOMPARE(m_combo->currentIndex(), 2);
}

// "N/A" carries -1.
void TestCombos::onlyTheLow32BitsCount()
{
    m_combo->addItem(QStringLiteral("N/A"), -1);
    selectData(m_combo.data(), 0xffffffff);
    QCOMPARE(m_combo->currentText(), QStringLiteral("N/A"));
    QCOMPARE(comboData(m_combo.data()), 0xffffffff);
}

QTEST_MAIN(TestCombos)
#include "test_combos.moc"
