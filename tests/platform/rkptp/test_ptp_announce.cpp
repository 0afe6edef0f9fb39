// SPDX-License-Identifier: MIT
#include "announce.h"

#include "timebase.h"

#include <QtTest>

using namespace rkptp;

namespace {

// As a grandmaster of domain 127 sends it: priorities 10 and 128, class 6, accuracy 0x21, variance 0x4e5d.
const QByteArray announce = "0b0200407f000000000000000000000000000000001dc1fffe12345600010000"
                            "0501000000000000000000000025000a06214e5d80001dc1fffe123456000020";

QByteArray fields(const HeardMaster &one)
{
    return QByteArray::fromStdString(
        formatPortId(one.source) + " " + formatIdentity(one.grandmaster) + " " + std::to_string(one.domain) +
        " " + std::to_string(one.priority1) + " " + std::to_string(one.clockClass) + " " +
        std::to_string(one.clockAccuracy) + " " + std::to_string(one.variance) + " " +
        std::to_string(one.priority2) + " " + std::to_string(one.stepsRemoved) + " " +
        std::to_string(one.logInterval));
}

HeardMaster master(unsigned domain, uint8_t priority, uint8_t number, int64_t heardAt = 0,
                   int8_t interval = 1)
{
    HeardMaster one;
    one.domain = domain;
    one.priority1 = priority;
    one.source.clock = one.grandmaster = {0, 0, 0, 0, 0, 0, 0, number};
    one.heardAt = heardAt;
    one.logInterval = interval;
    return one;
}

} // namespace

class TestPtpAnnounce : public QObject {
    Q_OBJECT
private slots:
    void aWholeLine()
    {
        const auto found = parseHeardLine("eth1 " + announce.toStdString());
        QVERIFY(found);
        QCOMPARE(found->interface, std::string("eth1"));
        QCOMPARE(fields(*found),
                 QByteArray("00-1D-C1-FF-FE-12-34-56-1 00-1D-C1-FF-FE-12-34-56 127 10 6 33 20061 128 "
                            "0 1"));
    }

    void whatIsNoAnnounce_data()
    {
        QTest::addColumn<QByteArray>("line");
        const QByteArray good = "eth1 " + announce;
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no interface") << " " + announce;
        QTest::newRow("no blank") << announce;
        QTest::newRow("no message") << QByteArray("eth1 ");
        QTest::newRow("half a byte") << good.left(good.size() - 1);
        QTest::newRow("a byte short") << good.left(good.size() - 2);
        QTest::newRow("no digit") << QByteArray(good).replace(10, 1, "g");
        QTest::newRow("upper case") << QByteArray(good).replace("0b02", "0B02");
        QTest::newRow("a sync") << QByteArray(good).replace("0b02", "0002");
        QTest::newRow("version 1") << QByteArray(good).replace("0b02", "0b01");
        QTest::newRow("length beyond its end") << QByteArray(good).replace("0b020040", "0b020041");
        QTest::newRow("length too small") << QByteArray(good).replace("0b020040", "0b02003f");
        QTest::newRow("words of an error") << QByteArray("ptp_launch: listening: No such device");
    }
    void whatIsNoAnnounce()
    {
        QFETCH(QByteArray, line);
        QVERIFY(!parseHeardLine(line.toStdString()));
    }

    void theBestOfEachDomainComesFirst()
    {
        MasterList list;
        for (const HeardMaster &one :
             {master(127, 1, 1), master(0, 128, 2), master(0, 128, 1), master(0, 10, 9)})
            list.hear(one);
        QByteArray order;
        for (const HeardMaster &one : list.sorted())
            order += QByteArray::number(one.domain) + '/' + QByteArray::number(one.grandmaster[7]) + ' ';
        QCOMPARE(order, QByteArray("0/9 0/1 0/2 127/1 "));
    }

    void aLaterAnnounceTakesThePlaceOfTheFirst()
    {
        MasterList list;
        list.hear(master(0, 10, 1));
        list.hear(master(0, 20, 1));
        QCOMPARE(list.sorted().size(), size_t{1});
        QCOMPARE(int{list.sorted()[0].priority1}, 20);
    }

    void whoIsSilentIsForgotten_data()
    {
        QTest::addColumn<int>("interval");
        QTest::addColumn<qint64>("patience");
        QTest::newRow("every 2 s") << 1 << qint64{8 * kNanosPerSecond};
        QTest::newRow("every second") << 0 << qint64{4 * kNanosPerSecond};
        QTest::newRow("eight a second") << -3 << qint64{3 * kNanosPerSecond};
        QTest::newRow("absurdly seldom") << 127 << qint64{256 * kNanosPerSecond};
        QTest::newRow("absurdly often") << -128 << qint64{3 * kNanosPerSecond};
    }
    void whoIsSilentIsForgotten()
    {
        QFETCH(int, interval);
        QFETCH(qint64, patience);
        MasterList list;
        list.hear(master(0, 1, 1, 1000, static_cast<int8_t>(interval)));
        QVERIFY(!list.forget(1000 + patience));
        QCOMPARE(list.sorted().size(), size_t{1});
        QVERIFY(list.forget(1001 + patience));
        QVERIFY(list.sorted().empty());
    }

    void inventedMastersDoNotGrowTheListForEver()
    {
        MasterList list;
        for (int i = 0; i < 70000; ++i) {
            HeardMaster one = master(static_cast<unsigned>(i % 128), 1, 1);
            one.source.port = static_cast<uint16_t>(i);
            list.hear(one);
        }
        QCOMPARE(list.sorted().size(), size_t{256});
    }
};

QTEST_GUILESS_MAIN(TestPtpAnnounce)
#include "test_ptp_announce.moc"
