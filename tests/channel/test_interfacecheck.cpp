// SPDX-License-Identifier: MIT
//
// Which of the six interfaces of a channel do not exist on this machine. Loopback exists on all of them.
#include "channel/interfacecheck.h"
#include "fake/recorder.h"
#include "support/store.h"

#include <memory>

using namespace StoreTest;

namespace {

constexpr char kHere[] = "127.0.0.1";
constexpr char kNowhere[] = "203.0.113.77"; // of no machine: kept for examples

QByteArrayList addressesOf(const QList<MissingInterface> &missing)
{
    QByteArrayList list;
    for (const MissingInterface &row : missing)
        list.append(interfaceLabel(row.element) + row.address.toLatin1());
    return list;
}

} // namespace

class TestInterfaceCheck : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_unique<FreshStore>();
        for (const char *name : kNames)
            put(0, name, QString::fromLatin1(kHere));
        Recorder::clear();
    }
    void cleanupTestCase() { m_store.reset(); }
    void exists();
    void allHere();
    void oneMissing_data();
    void oneMissing();
    void allMissingInTheirOrder();
    void theChannelIsTheOneAskedFor();

private:
    static constexpr const char *kNames[] = {"ReceiveInterface",    "TransmitInterface",
                                             "ReceiveAudInterface", "TransmitAudInterface",
                                             "ReceiveAncInterface", "TransmitAncInterface"};
    std::unique_ptr<FreshStore> m_store;
};

void TestInterfaceCheck::exists()
{
    QVERIFY(interfaceExists(QString::fromLatin1(kHere)));
    for (const char *address : {kNowhere, "", "127.0.0", "localhost"})
        QVERIFY2(!interfaceExists(QString::fromLatin1(address)), address);
}

void TestInterfaceCheck::allHere()
{
    QVERIFY(missingInterfaces(0).isEmpty());
    QByteArrayList asked;
    for (const char *name : kNames)
        asked.append(name);
    QCOMPARE(Recorder::reads(), asked);
}

void TestInterfaceCheck::oneMissing_data()
{
    QTest::addColumn<QByteArray>("message");
    const char *const labels[] = {"Video IP ", "Video IP ", "Audio IP ", "Audio IP ", "Anc IP ", "Anc IP "};
    int row = 0;
    for (const char *name : kNames)
        QTest::newRow(name) << QByteArray(labels[row++]) + kNowhere;
}

void TestInterfaceCheck::oneMissing()
{
    QFETCH(QByteArray, message);
    put(0, QTest::currentDataTag(), QString::fromLatin1(kNowhere));
    const QList<MissingInterface> missing = missingInterfaces(0);
    QCOMPARE(addressesOf(missing), QByteArrayList{message});
    QCOMPARE(missing[0].side,
             QByteArray(QTest::currentDataTag()).startsWith("Receive") ? Side::Receive : Side::Send);
}

void TestInterfaceCheck::allMissingInTheirOrder()
{
    int number = 1;
    for (const char *name : kNames)
        put(0, name, QStringLiteral("203.0.113.%1").arg(number++));
    QCOMPARE(addressesOf(missingInterfaces(0)),
             (QByteArrayList{"Video IP 203.0.113.1", "Video IP 203.0.113.2", "Audio IP 203.0.113.3",
                             "Audio IP 203.0.113.4", "Anc IP 203.0.113.5", "Anc IP 203.0.113.6"}));
}

// Nothing is stored for channel 1: the empty address exists nowhere.
void TestInterfaceCheck::theChannelIsTheOneAskedFor()
{
    QCOMPARE(missingInterfaces(1).size(), 6);
    QCOMPARE(missingInterfaces(0).size(), 0);
}

QTEST_GUILESS_MAIN(TestInterfaceCheck)
#include "test_interfacecheck.moc"
