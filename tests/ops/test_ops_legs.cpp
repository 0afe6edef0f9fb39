// SPDX-License-Identifier: MIT
#include "ops/legs.h"
#include "rows.h"

using ops::Leg;

class TestLegs : public QObject {
    Q_OBJECT

private slots:
    void areReadFromTheirOwnNames_data();
    void areReadFromTheirOwnNames();
    void aValueOfTheWrongTypeReadsAsNone();
    void texts_data();
    void texts();
    void anyFieldMakesItNotEmpty();
    void elements_data();
    void elements();
};

namespace {

Leg leg(const char *source, quint32 sourcePort, const char *destination, quint32 destinationPort,
        const char *interface, quint32 flags)
{
    return {source, sourcePort, destination, destinationPort, interface, flags};
}

QByteArray names(const std::vector<ops::Place> &places)
{
    QByteArrayList list;
    for (const ops::Place &place : places)
        list.append(ops::placeText(place));
    return list.join(' ');
}

} // namespace

void TestLegs::areReadFromTheirOwnNames_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<bool>("send");
    QTest::addColumn<QByteArrayList>("names"); // source, its port, destination, its port, interface, flags
    const auto row = [](const char *place, bool send, const QByteArrayList &names) {
        QTest::addRow("%s %s", place, send ? "tx" : "rx") << QByteArray(place) << send << names;
    };
    row("2/video", false,
        {"ReceiveSourceIp", "ReceiveSourcePort", "ReceiveDestinationIp", "ReceiveDestinationPort",
         "ReceiveInterface", "ReceiveFlags"});
    row("2/video", true,
        {"TransmitIp", "TransmitSourcePort", "TransmitDestinationIp", "TransmitRemotePort",
         "TransmitInterface", "TransmitFlags"});
    row("2/audio/0", false,
        {"ReceiveAudSourceIp0", "ReceiveAudSourcePort0", "ReceiveAudDestinationIp0",
         "ReceiveAudDestinationPort0", "ReceiveAudInterface", "ReceiveAudFlags0"});
    row("2/audio/7", true,
        {"TransmitAudIp7", "TransmitAudSourcePort7", "TransmitAudDestinationIp7", "TransmitAudRemotePort7",
         "TransmitAudInterface", "TransmitAudFlags7"});
    row("2/audio/single", false,
        {"ReceiveAudSourceIp", "ReceiveAudSourcePort", "ReceiveAudDestinationIp", "ReceiveAudDestinationPort",
         "ReceiveAudInterface", "ReceiveAudFlags"});
    row("2/anc", false,
        {"ReceiveAncSourceIp", "ReceiveAncSourcePort", "ReceiveAncDestinationIp", "ReceiveAncDestinationPort",
         "ReceiveAncInterface", "ReceiveAncFlags"});
    row("2/anc", true,
        {"TransmitAncIp", "TransmitAncSourcePort", "TransmitAncDestinationIp", "TransmitAncRemotePort",
         "TransmitAncInterface", "TransmitAncFlags"});
}

// Another channel and the other side hold other values, so that a wrong name cannot come out right.
void TestLegs::areReadFromTheirOwnNames()
{
    QFETCH(QByteArray, place);
    QFETCH(bool, send);
    QFETCH(QByteArrayList, names);
    ops::Snapshot values;
    for (int at = 0; at < names.size(); ++at) {
        const bool isText = at == 0 || at == 2 || at == 4;
        const QByteArray said = "10.0.0." + QByteArray::number(at);
        values.set(channel(2), names[at], isText ? ops::Value::ofText(said) : number(quint32(at)));
        values.set(channel(1), names[at], isText ? text("wrong") : number(99));
    }
    const Leg read = ops::legOf(values, *ops::parsePlace(place), send ? Side::Send : Side::Receive);
    QCOMPARE(read.source, QByteArray("10.0.0.0"));
    QCOMPARE(read.sourcePort, 1u);
    QCOMPARE(read.destination, QByteArray("10.0.0.2"));
    QCOMPARE(read.destinationPort, 3u);
    QCOMPARE(read.interface, QByteArray("10.0.0.4"));
    QCOMPARE(read.flags, 5u);
    const Leg other = ops::legOf(values, *ops::parsePlace(place), send ? Side::Receive : Side::Send);
    QVERIFY(other.isEmpty());
}

void TestLegs::aValueOfTheWrongTypeReadsAsNone()
{
    ops::Snapshot values;
    values.set(channel(0), "ReceiveDestinationIp", number(5));
    values.set(channel(0), "ReceiveDestinationPort", text("20000"));
    QVERIFY(ops::legOf(values, *ops::parsePlace("0/video"), Side::Receive).isEmpty());
}

void TestLegs::texts_data()
{
    QTest::addColumn<QByteArray>("shown");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *name, const Leg &leg, const char *wanted) {
        QTest::newRow(name) << ops::legText(leg) << QByteArray(wanted);
    };
    row("empty", Leg(), "-");
    row("whole", leg("10.1.0.5", 5004, "239.20.2.1", 20000, "10.1.0.9", 31),
        "239.20.2.1:20000 from 10.1.0.5:5004 on 10.1.0.9, use src,src-port,dst,dst-port,if");
    row("destination alone", leg("", 0, "239.1.1.1", 20000, "", 10), "239.1.1.1:20000, use dst,dst-port");
    row("no port", leg("", 0, "239.1.1.1", 0, "", 0), "239.1.1.1, use none");
    row("a port alone", leg("", 0, "", 20000, "", 0), ":20000, use none");
    row("a source without its port", leg("10.0.0.1", 0, "239.1.1.1", 4, "", 0),
        "239.1.1.1:4 from 10.0.0.1, use none");
    row("a source port alone", leg("", 7, "239.1.1.1", 4, "", 0), "239.1.1.1:4 from :7, use none");
    row("an interface alone", leg("", 0, "", 0, "10.0.0.1", 16), "on 10.0.0.1, use if");
    row("flags alone", leg("", 0, "", 0, "", 4), "use src");
    row("unknown flags", leg("", 0, "", 0, "10.0.0.1", 0x120), "on 10.0.0.1, use 0x120");
}

void TestLegs::texts()
{
    QFETCH(QByteArray, shown);
    QFETCH(QByteArray, wanted);
    QCOMPARE(shown, wanted);
}

void TestLegs::anyFieldMakesItNotEmpty()
{
    QVERIFY(Leg().isEmpty());
    for (const Leg &one : {leg("x", 0, "", 0, "", 0), leg("", 1, "", 0, "", 0), leg("", 0, "x", 0, "", 0),
                           leg("", 0, "", 1, "", 0), leg("", 0, "", 0, "x", 0), leg("", 0, "", 0, "", 1)})
        QVERIFY(!one.isEmpty());
}

void TestLegs::elements_data()
{
    QTest::addColumn<quint32>("perFlow");
    QTest::addColumn<quint32>("total");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *name, quint32 perFlow, quint32 total, const char *wanted) {
        QTest::newRow(name) << perFlow << total << QByteArray(wanted);
    };
    const char *const all = "3/video 3/audio/0 3/audio/1 3/audio/2 3/audio/3 3/audio/4 3/audio/5 3/audio/6 "
                            "3/audio/7 3/anc";
    row("no flow: all that could be", 8, 0, all);
    row("one flow", 8, 8, "3/video 3/audio/0 3/anc");
    row("two flows", 8, 16, "3/video 3/audio/0 3/audio/1 3/anc");
    row("eight flows", 8, 64, all);
    row("more than there are", 8, 4000, all);
    row("a part of a flow", 8, 12, "3/video 3/audio/0 3/anc");
    row("less than one flow", 8, 7, all);
    row("channels per flow not set", 0, 4, "3/video 3/audio/0 3/audio/1 3/anc");
}

void TestLegs::elements()
{
    QFETCH(quint32, perFlow);
    QFETCH(quint32, total);
    QFETCH(QByteArray, wanted);
    ops::Snapshot values;
    values.set(channel(3), "ReceiveAudChannels", number(perFlow));
    values.set(channel(3), "ReceiveAudTotalChannels", number(total));
    QCOMPARE(names(ops::elementsOf(values, 3)), wanted);
}

QTEST_APPLESS_MAIN(TestLegs)
#include "test_ops_legs.moc"
