// SPDX-License-Identifier: MIT
#include "ops/assignment.h"
#include "ops/copychannels.h"
#include "ops/valuewords.h"
#include "rows.h"

class TestCopyChannels : public QObject {
    Q_OBJECT

private slots:
    void copiesEverything();
    void stepsAddressesAndPorts();
    void onlyTheFieldsThatWereNamed_data();
    void onlyTheFieldsThatWereNamed();
    void refuses_data();
    void refuses();
    void steppedFields_data();
    void steppedFields();
    void addressesStayInTheirClass_data();
    void addressesStayInTheirClass();
    void flowsInARow();
    void wrongFlowsAreRefused_data();
    void wrongFlowsAreRefused();
    void theReasonIsTold_data();
    void theReasonIsTold();
    void whatIsNoAddressIsCopiedAsItIs_data();
    void whatIsNoAddressIsCopiedAsItIs();
    void stepsOfOneFieldAddUp();
    void theReasonOfWrongFlowsIsTold_data();
    void theReasonOfWrongFlowsIsTold();
    void flowsOfEachSide_data();
    void flowsOfEachSide();
};

namespace {

ops::Snapshot source()
{
    ops::Snapshot values;
    values.set(channel(0), "ReceiveDestinationIp", text("239.20.0.1"));
    values.set(channel(0), "ReceiveDestinationPort", number(20000));
    values.set(channel(0), "TransmitAudDestinationIp3", text("239.30.0.1"));
    values.set(channel(0), "SignalFormat", number(5));
    values.set(channel(0), "nmosip", text("10.0.0.1"));
    values.set(channel(0), "SiteOwn", text("x"));
    values.set(channel(1), "ReceiveSourceIp", text("10.0.0.9"));
    return values;
}

} // namespace

// What the source lacks goes away; the node's settings and a site's own stay where they are.
void TestCopyChannels::copiesEverything()
{
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    QVERIFY(ops::copyChannels({0, {1}, {}, {}}, draft));
    QCOMPARE(told(draft.changes()).replace(channel(1) + ' ', ""),
             QByteArray("ReceiveDestinationIp - > \"239.20.0.1\"|ReceiveDestinationPort - > 20000|"
                        "ReceiveSourceIp \"10.0.0.9\" > -|SignalFormat - > 5|TransmitAudDestinationIp3 - > "
                        "\"239.30.0.1\""));
}

void TestCopyChannels::stepsAddressesAndPorts()
{
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    QVERIFY(ops::copyChannels({0, {1, 5, 2}, {}, {"dst=0.0.1.0", "port=2"}}, draft));
    QCOMPARE(*draft.find(channel(1), "ReceiveDestinationIp"), text("239.20.1.1"));
    QCOMPARE(*draft.find(channel(5), "ReceiveDestinationIp"), text("239.20.2.1"));
    QCOMPARE(*draft.find(channel(2), "ReceiveDestinationIp"), text("239.20.3.1"));
    QCOMPARE(*draft.find(channel(2), "TransmitAudDestinationIp3"), text("239.30.3.1"));
    QCOMPARE(draft.number(channel(2), "ReceiveDestinationPort"), 20006u);
}

void TestCopyChannels::onlyTheFieldsThatWereNamed_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<int>("changes");
    QTest::newRow("rx") << QByteArray("rx") << 3;
    QTest::newRow("tx") << QByteArray("tx") << 1;
    QTest::newRow("dst") << QByteArray("dst") << 2;
    QTest::newRow("rx.dst") << QByteArray("rx.dst") << 1;
    QTest::newRow("video") << QByteArray("video") << 3;
    QTest::newRow("audio") << QByteArray("audio") << 1;
    QTest::newRow("anc") << QByteArray("anc") << 0;
    QTest::newRow("format") << QByteArray("format") << 1;
    QTest::newRow("port") << QByteArray("port") << 1;
}

void TestCopyChannels::onlyTheFieldsThatWereNamed()
{
    QFETCH(QByteArray, field);
    QFETCH(int, changes);
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    QVERIFY(ops::copyChannels({0, {1}, {field}, {}}, draft));
    QCOMPARE(int(draft.changes().size()), changes);
}

void TestCopyChannels::refuses_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *field, const char *step, const char *says) {
        QTest::newRow(says) << QByteArray(field) << QByteArray(step) << QByteArray(says);
    };
    row("rx.dts", "", "did you mean rx.dst?");
    row("", "dts=1", "did you mean dst?");
    row("", "dst", "is no step");
    row("", "dst=x", "is no step");
    row("", "=5", "is no step");
    row("", "dst=99999999999999", "is no step");
    row("", "format=1", "the step format=1: addresses and ports have steps");
    row("", "dst=1.0.0.0", "1/video rx.dst: 239.20.0.1 and 1 step leave the class");
    row("", "dst=-268435456", "leave the class");
    row("domain", "dst=1", "the step dst=1 is for a field that is not copied");
    row("rx", "tx.dst=1", "the step tx.dst=1 is for a field that is not copied");
    row("video", "audio=1", "is for a field that is not copied");
    row("", "port=50000", "1/video rx.dst-port: port 70000 is none");
    row("", "port=-20000", "port 0 is none");
}

void TestCopyChannels::refuses()
{
    QFETCH(QByteArray, field);
    QFETCH(QByteArray, step);
    QFETCH(QByteArray, says);
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    const QByteArrayList fields = field.isEmpty() ? QByteArrayList() : QByteArrayList{field};
    const QByteArrayList steps = step.isEmpty() ? QByteArrayList() : QByteArrayList{step};
    const auto done = ops::copyChannels({0, {1}, fields, steps}, draft);
    QVERIFY(!done);
    QVERIFY2(done.failure().text.contains(says), done.failure().text.constData());
    QVERIFY(!ops::copyChannels({0, {0}, {}, {}}, draft));
}

void TestCopyChannels::steppedFields_data()
{
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<QByteArray>("address"); // of the second target: twice the step from 239.20.0.1
    QTest::addColumn<quint32>("port");       // from 20000
    const auto row = [](const char *step, const char *address, quint32 port) {
        QTest::newRow(step) << QByteArray(step) << QByteArray(address) << port;
    };
    row("dst=1", "239.20.0.3", 20000);
    row("dst=0.0.0.1", "239.20.0.3", 20000);
    row("dst=0.0.1.0", "239.20.2.1", 20000);
    row("dst=256", "239.20.2.1", 20000);
    row("dst=-1", "239.19.255.255", 20000);
    row("dst=0", "239.20.0.1", 20000);
    row("dst=0.1.0.0", "239.22.0.1", 20000);
    row("rx.dst=1", "239.20.0.3", 20000);
    row("tx.dst=1", "239.20.0.1", 20000);
    row("src=1", "239.20.0.1", 20000);
    row("port=2", "239.20.0.1", 20004);
    row("dst-port=2", "239.20.0.1", 20004);
    row("rx.dst-port=2", "239.20.0.1", 20004);
    row("tx.dst-port=2", "239.20.0.1", 20000);
    row("src-port=2", "239.20.0.1", 20000);
    row("port=-2", "239.20.0.1", 19996);
    row("port=0", "239.20.0.1", 20000);
}

void TestCopyChannels::steppedFields()
{
    QFETCH(QByteArray, step);
    QFETCH(QByteArray, address);
    QFETCH(quint32, port);
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    QVERIFY(ops::copyChannels({0, {1, 2}, {}, {step}}, draft));
    QCOMPARE(*draft.find(channel(2), "ReceiveDestinationIp"), ops::Value::ofText(address));
    QCOMPARE(draft.number(channel(2), "ReceiveDestinationPort"), port);
}

void TestCopyChannels::addressesStayInTheirClass_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<qint64>("step");
    QTest::addColumn<bool>("stays");
    QTest::newRow("multicast") << QByteArray("239.0.0.1") << qint64(256) << true;
    QTest::newRow("last multicast") << QByteArray("239.255.255.254") << qint64(1) << true;
    QTest::newRow("beyond multicast") << QByteArray("239.255.255.255") << qint64(1) << false;
    QTest::newRow("below multicast") << QByteArray("224.0.0.0") << qint64(-1) << false;
    QTest::newRow("private") << QByteArray("10.0.0.255") << qint64(1) << true;
    QTest::newRow("beyond class A") << QByteArray("127.255.255.255") << qint64(1) << false;
    QTest::newRow("beyond class B") << QByteArray("191.255.255.255") << qint64(1) << false;
    QTest::newRow("below zero") << QByteArray("0.0.0.0") << qint64(-1) << false;
    QTest::newRow("beyond all") << QByteArray("255.255.255.255") << qint64(1) << false;
}

void TestCopyChannels::addressesStayInTheirClass()
{
    QFETCH(QByteArray, from);
    QFETCH(qint64, step);
    QFETCH(bool, stays);
    QCOMPARE(bool(ops::steppedAddress(*ops::addressBits(from), step, 1)), stays);
}

void TestCopyChannels::flowsInARow()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(ops::setFlows(2, {"239.30.0.1:20000", 3, "0.0.1.0", 10, false, true}, draft));
    QCOMPARE(*draft.find(channel(2), "TransmitAudDestinationIp2"), text("239.30.2.1"));
    QCOMPARE(draft.number(channel(2), "TransmitAudRemotePort2"), 20020u);
    QCOMPARE(draft.number(channel(2), "TransmitAudFlags0"), 10u);
    QCOMPARE(draft.number(channel(2), "ReceiveAudTotalChannels"), 6u);
    QVERIFY(!draft.find(channel(2), "ReceiveAudDestinationIp0"));
    QVERIFY(!draft.find(channel(2), "TransmitAudDestinationIp3"));
}

void TestCopyChannels::wrongFlowsAreRefused_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<int>("portStep");
    QTest::newRow("no port") << QByteArray("239.30.0.1") << QByteArray() << 0;
    QTest::newRow("port 0") << QByteArray("239.30.0.1:0") << QByteArray() << 0;
    QTest::newRow("no address") << QByteArray(":20000") << QByteArray() << 0;
    QTest::newRow("three parts") << QByteArray("239.30.0.1:1:2") << QByteArray() << 0;
    QTest::newRow("no step") << QByteArray("239.30.0.1:20000") << QByteArray("1") << 0;
    QTest::newRow("leaves multicast") << QByteArray("239.255.255.255:20000") << QByteArray() << 0;
    QTest::newRow("leaves the ports") << QByteArray("239.30.0.1:65535") << QByteArray() << 1;
}

void TestCopyChannels::wrongFlowsAreRefused()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, step);
    QFETCH(int, portStep);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(!ops::setFlows(0, {from, 8, step, portStep, false, true}, draft));
}

void TestCopyChannels::theReasonIsTold_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char *field, const char *step, const char *reason) {
        QTest::addRow("%s %s", field, step) << QByteArray(field) << QByteArray(step) << QByteArray(reason);
    };
    row("", "dst", "\"dst\" is no step such as dst=0.0.1.0 or port=2");
    row("", "=5", "\"=5\" is no step such as dst=0.0.1.0 or port=2");
    row("", "dst=x", "\"dst=x\" is no step such as dst=0.0.1.0 or port=2");
    row("", "dst=4294967296", "\"dst=4294967296\" is no step such as dst=0.0.1.0 or port=2");
    row("", "dst=-4294967296", "\"dst=-4294967296\" is no step such as dst=0.0.1.0 or port=2");
    row("", "dst=4294967295", "1/video rx.dst: 239.20.0.1 and 1 step leave the class of the address");
    row("", "port=0.0.0.2", "the step port=0.0.0.2: addresses and ports have steps, ports a number");
    row("", "format=1", "the step format=1: addresses and ports have steps, ports a number");
    row("", "vidoe=1", "no field \"vidoe\"; did you mean video?");
    row("vidoe", "", "no field \"vidoe\"; did you mean video?");
    row("prot", "", "no field \"prot\"; did you mean port?");
    row("rx", "tx=1", "the step tx=1 is for a field that is not copied");
    row("", "port=45536", "1/video rx.dst-port: port 65536 is none");
    row("", "port=-20000", "1/video rx.dst-port: port 0 is none");
}

void TestCopyChannels::theReasonIsTold()
{
    QFETCH(QByteArray, field);
    QFETCH(QByteArray, step);
    QFETCH(QByteArray, reason);
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    const auto list = [](const QByteArray &word) {
        return word.isEmpty() ? QByteArrayList() : QByteArrayList{word};
    };
    const auto done = ops::copyChannels({0, {1}, list(field), list(step)}, draft);
    QVERIFY(!done);
    QCOMPARE(done.failure().text, reason);
    const auto itself = ops::copyChannels({0, {1, 0}, {}, {}}, draft);
    QVERIFY(!itself);
    QCOMPARE(itself.failure().text, QByteArray("a channel is not copied onto itself"));
}

// A step needs an address or a port to go from; what was never filled in stays so.
void TestCopyChannels::whatIsNoAddressIsCopiedAsItIs_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after"); // one step of dst=1 and port=2, or what is said
    const auto row = [](const char *name, const char *before, const char *after) {
        QTest::addRow("%s %s", name, before) << QByteArray(name) << QByteArray(before) << QByteArray(after);
    };
    row("ReceiveDestinationIp", "\"\"", "\"\"");
    row("ReceiveDestinationIp", "\"239.1.1.1\"", "\"239.1.1.2\"");
    row("ReceiveDestinationIp", "7", "7");
    row("ReceiveDestinationPort", "0", "0");
    row("ReceiveDestinationPort", "1", "3");
    row("ReceiveDestinationPort", "65533", "65535");
    row("ReceiveDestinationPort", "\"5\"", "\"5\"");
    row("ReceiveSourceIp", "\"10.0.0.1\"", "\"10.0.0.1\"");
    row("ReceiveDestinationPort", "65534", "1/video rx.dst-port: port 65536 is none");
    row("ReceiveDestinationIp", "\"zebra\"",
        "1/video rx.dst: \"zebra\" is no IPv4 address: four numbers from 0 to 255 with dots between");
}

void TestCopyChannels::whatIsNoAddressIsCopiedAsItIs()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const bool isText = before.startsWith('"');
    ops::Snapshot values;
    values.set(channel(0), name,
               isText ? ops::Value::ofText(before.mid(1, before.size() - 2)) : number(before.toUInt()));
    ops::Draft draft(values);
    const auto done = ops::copyChannels({0, {1}, {}, {"dst=1", "port=2"}}, draft);
    QCOMPARE(done ? told(draft.find(channel(1), name)) : done.failure().text, after);
}

void TestCopyChannels::stepsOfOneFieldAddUp()
{
    const ops::Snapshot values = source();
    ops::Draft draft(values);
    QVERIFY(ops::copyChannels({0, {1, 2}, {}, {"dst=0.0.1.0", "rx.dst=1"}}, draft));
    QCOMPARE(*draft.find(channel(2), "ReceiveDestinationIp"), text("239.20.2.3"));
    QCOMPARE(*draft.find(channel(2), "TransmitAudDestinationIp3"), text("239.30.2.1"));
    const auto far = ops::steppedAddress(0xefffffff, 1, 2);
    QCOMPARE(far.failure().text, QByteArray("239.255.255.255 and 2 steps leave the class of the address"));
}

void TestCopyChannels::theReasonOfWrongFlowsIsTold_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<int>("portStep");
    QTest::addColumn<QByteArray>("reason");
    const auto row = [](const char *from, const char *step, int portStep, const char *reason) {
        QTest::addRow("%s %s %d", from, step, portStep)
            << QByteArray(from) << QByteArray(step) << portStep << QByteArray(reason);
    };
    row("239.1.1.1", "", 0, "\"239.1.1.1\": an address and a port are needed, as in 239.30.0.1:20000");
    row("239.1.1.1:0", "", 0, "\"239.1.1.1:0\": an address and a port are needed, as in 239.30.0.1:20000");
    row("239.1.1.1:x", "", 0, "\"239.1.1.1:x\": an address and a port are needed, as in 239.30.0.1:20000");
    row("239.1.1:5", "", 0, "\"239.1.1\" is no IPv4 address: four numbers from 0 to 255 with dots between");
    row("239.1.1.1:5", "x", 0, "\"x\" is no IPv4 address: four numbers from 0 to 255 with dots between");
    row("239.1.1.1:65535", "", 1, "port 65536 is none");
    row("239.1.1.1:2", "", -1, "port 0 is none");
    row("239.255.255.255:5", "", 0, "239.255.255.255 and 1 step leave the class of the address");
    row("239.255.255.254:5", "", 0, "239.255.255.254 and 2 steps leave the class of the address");
}

void TestCopyChannels::theReasonOfWrongFlowsIsTold()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, step);
    QFETCH(int, portStep);
    QFETCH(QByteArray, reason);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const auto done = ops::setFlows(0, {from, 8, step, portStep, false, true}, draft);
    QVERIFY(!done);
    QCOMPARE(done.failure().text, reason);
}

void TestCopyChannels::flowsOfEachSide_data()
{
    QTest::addColumn<bool>("receive");
    QTest::addColumn<bool>("send");
    QTest::newRow("rx") << true << false;
    QTest::newRow("tx") << false << true;
    QTest::newRow("both") << true << true;
}

// To the last address and port, and with the flags that were there.
void TestCopyChannels::flowsOfEachSide()
{
    QFETCH(bool, receive);
    QFETCH(bool, send);
    ops::Snapshot values;
    values.set(channel(0), "ReceiveAudFlags0", number(16));
    ops::Draft draft(values);
    QVERIFY(ops::setFlows(0, {"239.255.255.254:65534", 2, "", 1, receive, send}, draft));
    QCOMPARE(told(draft.find(channel(0), "ReceiveAudDestinationIp1")),
             QByteArray(receive ? "\"239.255.255.255\"" : "-"));
    QCOMPARE(told(draft.find(channel(0), "TransmitAudDestinationIp1")),
             QByteArray(send ? "\"239.255.255.255\"" : "-"));
    QCOMPARE(draft.number(channel(0), "ReceiveAudDestinationPort1"), receive ? 65535u : 0u);
    QCOMPARE(draft.number(channel(0), "ReceiveAudFlags0"), receive ? 26u : 16u);
    QCOMPARE(ops::flowCount(values, 0), 0);
    QCOMPARE(draft.number(channel(0), "ReceiveAudTotalChannels"), 4u);
}

QTEST_APPLESS_MAIN(TestCopyChannels)
#include "test_ops_copychannels.moc"
