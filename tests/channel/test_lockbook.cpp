// SPDX-License-Identifier: MIT
//
// The lock book: names, what an unknown lock counts as, and how a dialog starts.
#include "channel/lockbook.h"

#include <QtTest>

class TestLockBook : public QObject {
    Q_OBJECT

private slots:
    void names_data();
    void names();
    void askingWritesNothing();
    void setAndTakenBack();
    void channelsDoNotMix();
    void interfacesStartLocked();
    void noChannelNoLock();
};

void TestLockBook::names_data()
{
    QTest::addColumn<int>("side");
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("name");
    const int rx = int(Side::Receive);
    const int tx = int(Side::Send);
    QTest::newRow("source") << rx << int(Field::SourceAddress) << 0 << QStringLiteral("ReceiveSourceIp0");
    QTest::newRow("send source") << tx << int(Field::SourceAddress) << 12 << QStringLiteral("TransmitIp12");
    QTest::newRow("port") << tx << int(Field::DestinationPort) << 3 << QStringLiteral("TransmitRemotePort3");
    QTest::newRow("interface") << rx << int(Field::Interface) << 1 << QStringLiteral("ReceiveInterface1");
    QTest::newRow("no channel") << rx << int(Field::Interface) << -1 << QStringLiteral("ReceiveInterface-1");
}

void TestLockBook::names()
{
    QFETCH(int, side);
    QFETCH(int, field);
    QFETCH(int, channel);
    QTEST(lockName(Side(side), Field(field), channel), "name");
    const char *video = channelKey(Element::Video, Side(side), Field(field)).name;
    QTEST(lockName(QByteArray(video), channel), "name");
}

void TestLockBook::askingWritesNothing()
{
    const LockBook book;
    QVERIFY(!isLocked(book, Side::Receive, Field::SourcePort, 0));
    QVERIFY(!isLocked(book, QStringLiteral("no lock at all")));
    QVERIFY(book.isEmpty());
}

void TestLockBook::setAndTakenBack()
{
    LockBook book;
    setLocked(book, Side::Send, Field::SourcePort, 2, true);
    QVERIFY(isLocked(book, Side::Send, Field::SourcePort, 2));
    QVERIFY(isLocked(book, QStringLiteral("TransmitSourcePort2")));
    setLocked(book, Side::Send, Field::SourcePort, 2, false);
    QVERIFY(!isLocked(book, Side::Send, Field::SourcePort, 2));
}

void TestLockBook::channelsDoNotMix()
{
    LockBook book;
    for (const FieldStep &step : networkFieldOrder())
        setLocked(book, step.side, step.field, 1, true);
    QCOMPARE(book.size(), 10);
    for (const FieldStep &step : networkFieldOrder()) {
        QVERIFY(isLocked(book, step.side, step.field, 1));
        QVERIFY(!isLocked(book, step.side, step.field, 0));
        QVERIFY(!isLocked(book, step.side, step.field, 11));
    }
}

void TestLockBook::interfacesStartLocked()
{
    LockBook book;
    lockInterfaces(book, 2);
    const LockBook expected = {{QStringLiteral("ReceiveInterface0"), true},
                               {QStringLiteral("ReceiveInterface1"), true},
                               {QStringLiteral("TransmitInterface0"), true},
                               {QStringLiteral("TransmitInterface1"), true}};
    QCOMPARE(book, expected);
}

void TestLockBook::noChannelNoLock()
{
    LockBook book;
    lockInterfaces(book, 0);
    QVERIFY(book.isEmpty());
}

QTEST_APPLESS_MAIN(TestLockBook)
#include "test_lockbook.moc"
