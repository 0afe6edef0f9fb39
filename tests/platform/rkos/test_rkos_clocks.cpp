// SPDX-License-Identifier: MIT
#include "rkos.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QtTest>

#include <algorithm>
#include <ctime>
#include <thread>
#include <vector>

namespace {

uint64_t wallMicro()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000 + static_cast<uint64_t>(now.tv_nsec) / 1000;
}

} // namespace

class TestRkosClocks : public QObject {
    Q_OBJECT

private slots:
    void microIsTheWallClockAtTheStart()
    {
        const uint64_t before = wallMicro();
        const uint64_t micro = rkOSGetMicro();
        const uint64_t after = wallMicro();
        constexpr uint64_t slack = 1000000;
        QVERIFY(micro + slack >= before && micro <= after + slack);
    }

    void microNeverRepeats()
    {
        constexpr size_t perThread = 50000;
        std::vector<std::vector<uint64_t>> seen(4);
        std::vector<std::thread> threads;
        for (auto &mine : seen) {
            threads.emplace_back([&mine] {
                for (size_t i = 0; i < perThread; ++i)
                    mine.push_back(rkOSGetMicro());
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        std::vector<uint64_t> all;
        for (const auto &mine : seen) {
            QVERIFY(std::is_sorted(mine.begin(), mine.end()));
            all.insert(all.end(), mine.begin(), mine.end());
        }
        std::sort(all.begin(), all.end());
        QVERIFY(std::adjacent_find(all.begin(), all.end()) == all.end());
    }

    // No test machine is sure to have a clock device; each of the three clocks is near the others.
    void hardwareTimeIsNearTheSystems()
    {
        constexpr uint64_t slackNano = 60ULL * 1000000000;
        const uint64_t wall = wallMicro() * 1000;
        const uint64_t hardware = rkOSGetTimePTPNano();
        if (QFile::exists(QStringLiteral("/dev/ptp0")))
            QVERIFY(hardware != 0);
        else
            QVERIFY(hardware + slackNano > wall && hardware < wall + slackNano);
        QVERIFY(rkOSGetTimePTPNano() >= hardware);
    }

    void hardwareTimeOpensNothingTwice()
    {
        rkOSGetTimePTPNano();
        const auto descriptors = [] { return QDir(QStringLiteral("/proc/self/fd")).count(); };
        const uint before = descriptors();
        for (int i = 0; i < 1000; ++i)
            rkOSGetTimePTPNano();
        QCOMPARE(descriptors(), before);
    }

    void texts_data()
    {
        QTest::addColumn<quint64>("seconds");
        QTest::addColumn<quint32>("nanoseconds");
        QTest::addColumn<quint32>("flags");
        QTest::addColumn<QByteArray>("date");
        QTest::addColumn<QByteArray>("time");
        const auto row = [](const char *name, quint64 seconds, quint32 nanoseconds, quint32 flags,
                            const char *date, const char *time) {
            QTest::newRow(name) << seconds << nanoseconds << flags << QByteArray(date) << QByteArray(time);
        };
        constexpr quint32 ptp = 0x210200;
        constexpr quint32 system = 0x10080;
        row("ptp", 1795233107, 123456789, ptp, "2026-11-21", "03:51:47.123456789");
        row("system", 1795233107, 123456789, system, "2026-11-21", "03:51:47.123");
        row("no fraction", 1795233107, 123456789, 0, "2026-11-21", "03:51:47");
        row("nano before milli", 0, 5, RKOS_TIME_NANO | RKOS_TIME_MILLI, "1970-01-01", "00:00:00.000000005");
        row("all flags", 0, 0, 0xffffffff, "1970-01-01", "00:00:00.000000000");
        row("other flags", 0, 0, ~(RKOS_TIME_NANO | RKOS_TIME_MILLI), "1970-01-01", "00:00:00");
        row("epoch", 0, 0, ptp, "1970-01-01", "00:00:00.000000000");
        row("cut, not rounded", 59, 999999999, system, "1970-01-01", "00:00:59.999");
        row("carry", 86399, 1000000000, ptp, "1970-01-02", "00:00:00.000000000");
        row("largest fraction", 0, 4294967295, ptp, "1970-01-01", "00:00:04.294967295");
        row("leap day", 951782400, 0, 0, "2000-02-29", "00:00:00");
        row("day after", 951868800, 0, 0, "2000-03-01", "00:00:00");
        row("no leap day in 2100", 4107542400, 0, 0, "2100-03-01", "00:00:00");
        row("2038", 2147483648, 0, 0, "2038-01-19", "03:14:08");
        row("last four-digit year", 253402300799, 0, 0, "9999-12-31", "23:59:59");
        row("first five-digit year", 253402300800, 0, 0, "10000-01-01", "00:00:00");
        row("largest", 18446744073709551615ULL, 0, ptp, "584554051223-11-09", "07:00:15.000000000");
        row("largest of all", 18446744073709551615ULL, 4294967295, ptp, "584554051223-11-09",
            "07:00:15.294967295");
    }
    void texts()
    {
        QFETCH(quint64, seconds);
        QFETCH(quint32, nanoseconds);
        QFETCH(quint32, flags);
        QFETCH(QByteArray, date);
        QFETCH(QByteArray, time);
        char dateText[65];
        char timeText[65];
        memset(dateText, 'x', sizeof dateText);
        memset(timeText, 'x', sizeof timeText);
        QCOMPARE(rkOSGetEpochDateTimeString(seconds, dateText, timeText, nanoseconds, flags), 1);
        QVERIFY(memchr(dateText, '\0', 64) != nullptr && dateText[64] == 'x');
        QVERIFY(memchr(timeText, '\0', 64) != nullptr && timeText[64] == 'x');
        QCOMPARE(QByteArray(dateText), date);
        QCOMPARE(QByteArray(timeText), time);
    }

    void everyDayOfAThousandYears()
    {
        const QDate first(1970, 1, 1);
        for (qint64 day = 0; day < 365250; ++day) {
            char date[64];
            rkOSGetEpochDateTimeString(static_cast<uint64_t>(day) * 86400 + 86399, date, nullptr, 0, 0);
            if (first.addDays(day).toString(Qt::ISODate).toLatin1() != date)
                QCOMPARE(QByteArray(date), first.addDays(day).toString(Qt::ISODate).toLatin1());
        }
    }

    void nowIsUtcWhateverTheZone()
    {
        qputenv("TZ", "Pacific/Kiritimati");
        tzset();
        char date[64];
        char time[64];
        const QDateTime before = QDateTime::currentDateTimeUtc();
        QCOMPARE(rkOSGetDateTimeString(date, time, RKOS_TIME_FORMAT_SYSTEM), 1);
        const QDateTime after = QDateTime::currentDateTimeUtc();
        QDateTime shown = QDateTime::fromString(QLatin1String(date) + QLatin1Char('T') + QLatin1String(time),
                                                Qt::ISODateWithMs);
        shown.setTimeSpec(Qt::UTC);
        QVERIFY2(shown >= before && shown <= after, time);
    }

    void nullBuffers()
    {
        char text[64];
        QCOMPARE(rkOSGetEpochDateTimeString(0, nullptr, nullptr, 0, 0), 0);
        QCOMPARE(rkOSGetDateTimeString(nullptr, nullptr, 0), 0);
        QCOMPARE(rkOSGetDateTimeString(text, nullptr, 0), 1);
        QCOMPARE(rkOSGetEpochDateTimeString(61, nullptr, text, 0, 0), 1);
        QCOMPARE(text, "00:01:01");
    }
};

QTEST_GUILESS_MAIN(TestRkosClocks)
#include "test_rkos_clocks.moc"
