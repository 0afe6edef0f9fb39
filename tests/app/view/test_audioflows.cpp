// SPDX-License-Identifier: MIT
//
// The flow selectors: which can be chosen, which is chosen, and the suffix of the names that follows.
#include "page.h"

#include <QtTest>

namespace {

// '1' for each selector that can be chosen.
QByteArray enabled(const Page &page)
{
    QByteArray text;
    for (const QRadioButton *button : page.flowButtons)
        text += button->isEnabled() ? '1' : '0';
    return text;
}

} // namespace

class TestAudioFlows : public QObject {
    Q_OBJECT

private slots:
    void enable_data();
    void enable();
    void disablePast_data();
    void disablePast();
    void disablePastEnablesNothing();
    void nothingChecked();
    void loadTakesTheFirstAndSaveTheLast();
    void loadChoosesFlowZero();
    void singleFlowHasNoSuffix();
    void keptWithoutAFlow();
    void selectOnlyInSingleFlowMode();
    void clearMakesThemExclusiveAgain();
};

void TestAudioFlows::enable_data()
{
    QTest::addColumn<quint32>("flows");
    QTest::addColumn<bool>("single");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("none") << 0u << false << QByteArray("00000000");
    QTest::newRow("one") << 1u << false << QByteArray("10000000");
    QTest::newRow("three") << 3u << false << QByteArray("11100000");
    QTest::newRow("eight") << 8u << false << QByteArray("11111111");
    QTest::newRow("more than there are") << 9u << false << QByteArray("11111111");
    QTest::newRow("single flow") << 3u << true << QByteArray("00000000");
}

void TestAudioFlows::enable()
{
    QFETCH(quint32, flows);
    QFETCH(bool, single);
    QFETCH(QByteArray, expected);
    const Page page;
    AudioFlows selectors(page.flowButtons);
    selectors.setSingle(single);
    selectors.enable(flows);
    QCOMPARE(enabled(page), expected);
}

// The selector next to the last flow stays.
void TestAudioFlows::disablePast_data()
{
    QTest::addColumn<quint32>("flows");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("none") << 0u << QByteArray("10000000");
    QTest::newRow("one") << 1u << QByteArray("11000000");
    QTest::newRow("five") << 5u << QByteArray("11111100");
    QTest::newRow("six") << 6u << QByteArray("11111110");
    QTest::newRow("seven") << 7u << QByteArray("11111111");
    QTest::newRow("more than there are") << 70000u << QByteArray("11111111");
    QTest::newRow("all bits") << 0xffffffffu << QByteArray("11111111");
}

void TestAudioFlows::disablePast()
{
    QFETCH(quint32, flows);
    QFETCH(QByteArray, expected);
    const Page page;
    AudioFlows(page.flowButtons).disablePast(flows);
    QCOMPARE(enabled(page), expected);
}

void TestAudioFlows::disablePastEnablesNothing()
{
    const Page page;
    const AudioFlows selectors(page.flowButtons);
    selectors.disablePast(1);
    selectors.disablePast(8);
    QCOMPARE(enabled(page), QByteArray("11000000"));
}

void TestAudioFlows::nothingChecked()
{
    const Page page;
    const AudioFlows selectors(page.flowButtons);
    QCOMPARE(selectors.first(), -1);
    QCOMPARE(selectors.last(), -1);
    QCOMPARE(selectors.saveSuffix(), QByteArray());
}

// Two can be checked only while they do not exclude each other.
void TestAudioFlows::loadTakesTheFirstAndSaveTheLast()
{
    const Page page;
    AudioFlows selectors(page.flowButtons);
    selectors.setSingle(true);
    selectors.clear();
    page.flowButtons[2]->setChecked(true);
    page.flowButtons[6]->setChecked(true);
    QCOMPARE(selectors.first(), 2);
    QCOMPARE(selectors.last(), 6);
    QCOMPARE(selectors.loadSuffix(), QByteArray("2"));
    QCOMPARE(selectors.saveSuffix(), QByteArray("6"));
}

void TestAudioFlows::loadChoosesFlowZero()
{
    const Page page;
    const AudioFlows selectors(page.flowButtons);
    QCOMPARE(selectors.loadSuffix(), QByteArray("0"));
    QVERIFY(page.flowButtons[0]->isChecked());
    page.flowButtons[7]->setChecked(true);
    QCOMPARE(selectors.loadSuffix(), QByteArray("7"));
}

void TestAudioFlows::singleFlowHasNoSuffix()
{
    const Page page;
    AudioFlows selectors(page.flowButtons);
    selectors.setSingle(true);
    QCOMPARE(selectors.loadSuffix(), QByteArray());
    QCOMPARE(selectors.first(), -1);
}

void TestAudioFlows::keptWithoutAFlow()
{
    const Page page;
    AudioFlows selectors(page.flowButtons);
    selectors.setKeepNone(true);
    QCOMPARE(selectors.loadSuffix(), QByteArray());
    QCOMPARE(selectors.first(), -1);
    selectors.setKeepNone(false);
    QCOMPARE(selectors.loadSuffix(), QByteArray("0"));
}

void TestAudioFlows::selectOnlyInSingleFlowMode()
{
    const Page page;
    AudioFlows selectors(page.flowButtons);
    selectors.setSingle(true);
    selectors.clear();
    for (int flow = 0; flow < kFlowCount; ++flow) {
        selectors.selectOnly(flow);
        QCOMPARE(selectors.first(), flow);
        QCOMPARE(selectors.last(), flow);
    }
}

void TestAudioFlows::clearMakesThemExclusiveAgain()
{
    const Page page;
    AudioFlows selectors(page.flowButtons);
    selectors.selectOnly(3);
    selectors.setSingle(true);
    selectors.clear();
    QCOMPARE(selectors.first(), -1);
    QCOMPARE(enabled(page), QByteArray("00000000"));
    selectors.setSingle(false);
    selectors.clear();
    QCOMPARE(enabled(page), QByteArray("11111111"));
    page.flowButtons[1]->setChecked(true);
    page.flowButtons[4]->setChecked(true);
    QCOMPARE(selectors.first(), 4);
}

QTEST_MAIN(TestAudioFlows)
#include "test_audioflows.moc"
