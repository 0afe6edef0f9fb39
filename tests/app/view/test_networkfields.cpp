// SPDX-License-Identifier: MIT
//
// The network fields: every field finds its own row, keeps its own value and has its own bit.
#include "page.h"

#include <QtTest>

namespace {

const Field kFields[] = {Field::SourceAddress, Field::SourcePort, Field::DestinationAddress,
                         Field::DestinationPort, Field::Interface};

} // namespace

class TestNetworkFields : public QObject {
    Q_OBJECT

private slots:
    void everyFieldHasItsRow();
    void valuesStayApart();
    void controlIsWhatHoldsTheValue();
    void flags_data();
    void flags();
    void flagsOfTheOtherSideStay();
};

void TestNetworkFields::everyFieldHasItsRow()
{
    const Page page;
    const NetworkFields fields(page.rows);
    for (const Side side : {Side::Receive, Side::Send}) {
        for (const Field field : kFields) {
            QVERIFY(fields.at(side, field).side == side);
            QVERIFY(fields.at(side, field).field == field);
        }
    }
    QCOMPARE(int(std::distance(fields.begin(), fields.end())), 10);
}

void TestNetworkFields::valuesStayApart()
{
    const Page page;
    const NetworkFields fields(page.rows);
    int number = 10;
    for (const NetworkField &field : fields)
        field.setValue(field.address ? QStringLiteral("10.0.0.%1").arg(++number) : QString::number(++number));
    number = 10;
    for (const NetworkField &field : fields) {
        const QString expected =
            field.address ? QStringLiteral("10.0.0.%1").arg(++number) : QString::number(++number);
        QCOMPARE(field.value(), expected);
    }
}

void TestNetworkFields::controlIsWhatHoldsTheValue()
{
    const Page page;
    for (const NetworkField &field : NetworkFields(page.rows)) {
        QVERIFY(field.control());
        QVERIFY(field.control() == field.address || field.control() == field.edit);
    }
}

void TestNetworkFields::flags_data()
{
    QTest::addColumn<quint32>("flags");
    QTest::newRow("none") << 0u;
    QTest::newRow("source port") << 1u;
    QTest::newRow("destination port") << 2u;
    QTest::newRow("source address") << 4u;
    QTest::newRow("destination address") << 8u;
    QTest::newRow("interface") << 16u;
    QTest::newRow("all") << 31u;
}

void TestNetworkFields::flags()
{
    QFETCH(quint32, flags);
    const Page page;
    const NetworkFields fields(page.rows);
    for (const Side side : {Side::Receive, Side::Send}) {
        fields.showFlags(side, flags | 0x40); // a bit that means nothing is dropped
        QCOMPARE(fields.flags(side), flags);
        for (const Field field : kFields)
            QCOMPARE(fields.at(side, field).use->isChecked(), (flags & flagBit(field)) != 0);
    }
}

void TestNetworkFields::flagsOfTheOtherSideStay()
{
    const Page page;
    const NetworkFields fields(page.rows);
    fields.showFlags(Side::Receive, 31);
    fields.showFlags(Side::Send, 0);
    QCOMPARE(fields.flags(Side::Receive), 31u);
    QCOMPARE(fields.flags(Side::Send), 0u);
}

QTEST_MAIN(TestNetworkFields)
#include "test_networkfields.moc"
