// SPDX-License-Identifier: MIT
//
// The texts of the clock lines.
#include "app/view/clocktext.h"

#include <QtTest>

class TestClockText : public QObject {
    Q_OBJECT

private slots:
    void info();
    void infoOfAClientThatKnowsNothing();
    void time_data();
    void time();
    void otherClocksEndInABlank();
};

void TestClockText::info()
{
    QCOMPARE(ptpClockInfo("2", "127", "00:11:22.fffe.33-1"), QByteArray("2 D:127 00:11:22.fffe.33-1"));
}

void TestClockText::infoOfAClientThatKnowsNothing()
{
    QCOMPARE(ptpClockInfo("", "", ""), QByteArray(" D: "));
}

void TestClockText::time_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("none") << qint64(0) << QByteArray("2026-01-31 12:00:00 (0 ns)");
    QTest::newRow("three digits") << qint64(-999) << QByteArray("2026-01-31 12:00:00 (-999 ns)");
    QTest::newRow("four digits") << qint64(1234) << QByteArray("2026-01-31 12:00:00 (1,234 ns)");
    QTest::newRow("seven digits") << qint64(-1234567) << QByteArray("2026-01-31 12:00:00 (-1,234,567 ns)");
    QTest::newRow("the smallest") << std::numeric_limits<qint64>::min()
                                  << QByteArray("2026-01-31 12:00:00 (-9,223,372,036,854,775,808 ns)");
}

void TestClockText::time()
{
    QFETCH(qint64, offset);
    QTEST(ptpClockTime("2026-01-31", "12:00:00", offset), "expected");
}

void TestClockText::otherClocksEndInABlank()
{
    QCOMPARE(clockTime("2026-01-31", "12:00:00"), QByteArray("2026-01-31 12:00:00 "));
}

QTEST_APPLESS_MAIN(TestClockText)
#include "test_clocktext.moc"
