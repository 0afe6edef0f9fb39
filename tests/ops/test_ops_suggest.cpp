// SPDX-License-Identifier: MIT
#include "ops/suggest.h"
#include "ops/vocabulary.h"

#include <QtTest>

class TestSuggest : public QObject {
    Q_OBJECT

private slots:
    void near_data();
    void near();
    void theNearestOfSeveralIsTaken();
    void ofTwoAsNearTheFirstIsTaken();
    void theEndOfAMessage();
    void everyWordIsFoundWithOneError_data();
    void everyWordIsFoundWithOneError();
    void aLongWordCostsNothing();
};

void TestSuggest::near_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QByteArray>("meant");
    QTest::addColumn<bool>("isNear");
    const auto row = [](const char *typed, const char *meant, bool isNear) {
        QTest::addRow("%s of %s", typed, meant) << QByteArray(typed) << QByteArray(meant) << isNear;
    };
    row("rx.dst", "rx.dst", true);
    row("rx.dts", "rx.dst", true);  // swapped
    row("rx.ds", "rx.dst", true);   // one missing
    row("rx.dstt", "rx.dst", true); // one more
    row("rx.dsy", "rx.dst", true);  // another one
    row("RX.DST", "rx.dst", true);  // letter case is no error
    row("rxdts", "rx.dst", false);  // one missing and a swap are two of five
    row("tx.ifs", "rx.dst", false);
    row("x", "y", true); // one error is always allowed
    row("x", "yz", false);
    row("", "rx.dst", false);
    row("shwo", "show", true);
    row("hist", "history", false); // three of four
    row("histroy", "history", true);
    row("RecieveDestinationIp", "ReceiveDestinationIp", true);
    row("zebra", "show", false);
}

void TestSuggest::near()
{
    QFETCH(QByteArray, typed);
    QFETCH(QByteArray, meant);
    QFETCH(bool, isNear);
    QCOMPARE(ops::nearest(typed, {meant}), isNear ? meant : QByteArray());
}

void TestSuggest::theNearestOfSeveralIsTaken()
{
    QCOMPARE(ops::nearest("rx.dst-prt", {"rx.dst", "rx.src-port", "rx.dst-port"}), QByteArray("rx.dst-port"));
    QCOMPARE(ops::nearest("sshow", {"set", "show", "shown"}), QByteArray("show"));
    QCOMPARE(ops::nearest("show", {}), QByteArray());
}

void TestSuggest::ofTwoAsNearTheFirstIsTaken()
{
    QCOMPARE(ops::nearest("bx", {"ax", "cx"}), QByteArray("ax"));
    QCOMPARE(ops::nearest("bx", {"cx", "ax"}), QByteArray("cx"));
}

void TestSuggest::theEndOfAMessage()
{
    QCOMPARE(ops::didYouMean("shwo", {"set", "show"}), QByteArray("; did you mean show?"));
    QCOMPARE(ops::didYouMean("zebra", {"set", "show"}), QByteArray());
}

void TestSuggest::everyWordIsFoundWithOneError_data()
{
    QTest::addColumn<QByteArray>("place");
    for (const char *place : {"server", "2", "2/video", "2/audio", "2/audio/3", "2/anc"})
        QTest::newRow(place) << QByteArray(place);
}

// What people type is a word with one slip in it; another word must not be nearer than the one they meant.
void TestSuggest::everyWordIsFoundWithOneError()
{
    QFETCH(QByteArray, place);
    const auto at = ops::parsePlace(place);
    QVERIFY(at);
    const QByteArrayList words = ops::wordsAt(*at);
    QVERIFY(!words.isEmpty());
    for (const QByteArray &word : words) {
        QCOMPARE(ops::nearest(word, words), word);
        if (word.size() < 6)
            continue; // in short ones one letter makes another word
        const QByteArray doubled = word + word.right(1);
        QCOMPARE(ops::nearest(doubled, words), word);
    }
}

void TestSuggest::aLongWordCostsNothing()
{
    QCOMPARE(ops::nearest(QByteArray(1000000, 'x'), {"show"}), QByteArray());
    QCOMPARE(ops::nearest(QByteArray(64, 'x'), {QByteArray(64, 'x')}), QByteArray(64, 'x'));
    QCOMPARE(ops::nearest(QByteArray(65, 'x'), {QByteArray(65, 'x')}), QByteArray());
}

QTEST_APPLESS_MAIN(TestSuggest)
#include "test_ops_suggest.moc"
