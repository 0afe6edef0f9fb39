// SPDX-License-Identifier: MIT
//
// Which addresses are this machine's own.
#include "app/view/localinterface.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QtTest>

namespace {

QStringList debugLines;

void noteDebug(QtMsgType, const QMessageLogContext &, const QString &text)
{
    debugLines.append(text);
}

} // namespace

class TestLocalInterface : public QObject {
    Q_OBJECT

private slots:
    void everyAddressOfTheMachine();
    void foreignAddresses_data();
    void foreignAddresses();
    void whatWasFoundIsNoted();
};

void TestLocalInterface::everyAddressOfTheMachine()
{
    QVERIFY(isLocalInterface(QStringLiteral("127.0.0.1")));
    for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol)
            QVERIFY2(isLocalInterface(address.toString()), qPrintable(address.toString()));
    }
}

void TestLocalInterface::foreignAddresses_data()
{
    QTest::addColumn<QString>("address");
    for (const char *address :
         {"", "1.0.0.0", "127.0.0.2", "203.0.113.7", "127.0.0.1 ", "127.1", "127.0.0.01", "lo", "::1", "..."})
        QTest::newRow(address) << QString::fromLatin1(address);
}

void TestLocalInterface::foreignAddresses()
{
    QFETCH(const QString, address);
    QVERIFY(!isLocalInterface(address));
}

void TestLocalInterface::whatWasFoundIsNoted()
{
    debugLines.clear();
    const QtMessageHandler before = qInstallMessageHandler(noteDebug);
    isLocalInterface(QStringLiteral("203.0.113.7"));
    qInstallMessageHandler(before);
    QVERIFY(debugLines.contains(QStringLiteral("interface 127.0.0.1")));
}

QTEST_GUILESS_MAIN(TestLocalInterface)
#include "test_localinterface.moc"
