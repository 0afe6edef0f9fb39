// SPDX-License-Identifier: MIT
#include "identity.h"

#include <QtTest>

using namespace rkptp;

class TestPtpIdentity : public QObject {
    Q_OBJECT
private slots:
    void reads_data();
    void reads();
    void refuses_data();
    void refuses();
    void writes();
    void randomIdentitiesAreLocalAndDiffer();
};

void TestPtpIdentity::reads_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("identity");
    const QByteArray eui("00-1D-C1-FF-FE-12-34-56");
    // clang-format off
    QTest::newRow("dashes")         << QByteArray("00-1D-C1-FF-FE-12-34-56") << eui;
    QTest::newRow("lower case")     << QByteArray("00-1d-c1-ff-fe-12-34-56") << eui;
    QTest::newRow("colons")         << QByteArray("00:1D:c1:FF:fe:12:34:56") << eui;
    QTest::newRow("dots")           << QByteArray("00.1d.c1.ff.fe.12.34.56") << eui;
    QTest::newRow("joined")         << QByteArray("001DC1FFFE123456")        << eui;
    QTest::newRow("ptp4l")          << QByteArray("001dc1.fffe.123456")      << eui;
    QTest::newRow("groups of four") << QByteArray("001d.c1ff.fe12.3456")     << eui;
    QTest::newRow("blanks around")  << QByteArray(" \t001DC1FFFE123456\n")   << eui;
    QTest::newRow("MAC dashes")     << QByteArray("00-1D-C1-12-34-56")       << eui;
    QTest::newRow("MAC colons")     << QByteArray("00:1d:c1:12:34:56")       << eui;
    QTest::newRow("MAC dots")       << QByteArray("001d.c112.3456")          << eui;
    QTest::newRow("MAC joined")     << QByteArray("001dc1123456")            << eui;
    QTest::newRow("all ones")       << QByteArray("ffffffffffffffff") << QByteArray("FF-FF-FF-FF-FF-FF-FF-FF");
    // clang-format on
}

void TestPtpIdentity::reads()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, identity);
    const auto id = parseIdentity(text.toStdString());
    QVERIFY(id.has_value());
    QCOMPARE(QByteArray::fromStdString(formatIdentity(*id)), identity);
    QCOMPARE(parseIdentity(formatIdentity(*id)).value(), *id);
    QCOMPARE(parseIdentity(formatForPtp4l(*id)).value(), *id);
}

void TestPtpIdentity::refuses_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"",
                             " ",
                             "0",
                             "00",
                             "00-",
                             "00-1D-C1-FF-FE-12-34",
                             "00-1D-C1-FF-FE-12-34-5",
                             "00-1D-C1-FF-FE-12-34-56-",
                             "-00-1D-C1-FF-FE-12-34-56",
                             "00-1D-C1-FF-FE-12-34-56-78",
                             "00--1D-C1-FF-FE-12-34-56",
                             "0-01D-C1-FF-FE-12-34-56",
                             "00-1D:C1-FF-FE-12-34-56",
                             "00 1D C1 FF FE 12 34 56",
                             "00-1D-C1-FF-FE-12-34-5G",
                             "0x001DC1FFFE123456",
                             "192.168.1.10",
                             "001DC1FFFE12345",
                             "001DC1FFFE1234567",
                             "00-1D-C1-12-34",
                             "\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4\xc3\xa4"})
        QTest::newRow(text) << QByteArray(text);
}

void TestPtpIdentity::refuses()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseIdentity(text.toStdString()).has_value());
}

void TestPtpIdentity::writes()
{
    const ClockId id = {0x00, 0x1d, 0xc1, 0xff, 0xfe, 0x12, 0x34, 0x56};
    QCOMPARE(formatIdentity(id), std::string("00-1D-C1-FF-FE-12-34-56"));
    QCOMPARE(formatForPtp4l(id), std::string("001dc1.fffe.123456"));
    QCOMPARE(formatPortId({id, 1}), std::string("00-1D-C1-FF-FE-12-34-56-1"));
    QCOMPARE(formatPortId({id, 65535}), std::string("00-1D-C1-FF-FE-12-34-56-65535"));
    QCOMPARE(formatIdentity(ClockId()), std::string());
    QCOMPARE(formatPortId({ClockId(), 1}), std::string());
}

void TestPtpIdentity::randomIdentitiesAreLocalAndDiffer()
{
    const ClockId one = randomIdentity();
    QCOMPARE(one[0] & 3, 2);
    QCOMPARE(int{one[3]}, 0xff);
    QCOMPARE(int{one[4]}, 0xfe);
    QVERIFY(one != randomIdentity());
}

QTEST_APPLESS_MAIN(TestPtpIdentity)
#include "test_ptp_identity.moc"
