// SPDX-License-Identifier: MIT
// What a child writes: cut into lines, and the last two of them kept.
#include "outputlines.h"

#include <QtTest>

using namespace rkptp;

class TestPtpOutputLines : public QObject {
    Q_OBJECT
private slots:
    void last_data();
    void last();
    void aReaderMayTakeALine();
};

void TestPtpOutputLines::last_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QByteArray>("kept");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
    QTest::newRow("no end yet") << QByteArray("one") << QByteArray();
    QTest::newRow("one") << QByteArray("one\n") << QByteArray("one");
    QTest::newRow("three") << QByteArray("one\ntwo\nthree\n") << QByteArray("two; three");
    QTest::newRow("empty lines") << QByteArray("\none\n\n\ntwo\n\n") << QByteArray("one; two");
    QTest::newRow("control characters") << QByteArray("o\tn\re\n") << QByteArray("one");
    QTest::newRow("own semicolon") << QByteArray("a; b\nc; d\n") << QByteArray("a; b; c; d");
    QTest::newRow("three with semicolons") << QByteArray("x\na; b\nc; d\n") << QByteArray("a; b; c; d");
    QTest::newRow("long") << QByteArray(500, 'x') + '\n' << QByteArray(OutputLines::kLongestLine, 'x');
}

void TestPtpOutputLines::last()
{
    QFETCH(QByteArray, written);
    QFETCH(QByteArray, kept);
    OutputLines whole;
    whole.take(written.constData(), size_t(written.size()));
    QCOMPARE(QByteArray::fromStdString(whole.last()), kept);
    OutputLines pieces;
    for (const char byte : written)
        pieces.take(&byte, 1);
    QCOMPARE(QByteArray::fromStdString(pieces.last()), kept);
}

void TestPtpOutputLines::aReaderMayTakeALine()
{
    OutputLines lines;
    QByteArrayList read;
    lines.setReader([&read](const std::string &line) {
        read << QByteArray::fromStdString(line);
        return line == "mine";
    });
    const QByteArray written = "one\nmine\ntwo\n";
    lines.take(written.constData(), size_t(written.size()));
    QCOMPARE(read, (QByteArrayList{"one", "mine", "two"}));
    QCOMPARE(QByteArray::fromStdString(lines.last()), QByteArray("one; two"));
}

QTEST_GUILESS_MAIN(TestPtpOutputLines)
#include "test_ptp_outputlines.moc"
