// SPDX-License-Identifier: MIT
#include "ops/suggest.h"
#include "ops/vocabulary.h"
#include "rows.h"

#include <set>

class TestVocabulary : public QObject {
    Q_OBJECT

private slots:
    void everyNameAndWordIsUnique();
    void everyWordLeadsToItsNameAndBack();
    void everyRowOfTheKeyTableHasAWord();
    void typesAreThoseOfTheKeyTable();
    void sharedWordsAreFoundAtEachFlow();
    void unknownKeysAreShownAsTheyStand();
    void nearMisses_data();
    void nearMisses();
};

void TestVocabulary::everyNameAndWordIsUnique()
{
    std::set<QByteArray> names, words;
    for (const ops::KnownName &known : ops::knownNames()) {
        QVERIFY2(names.insert(known.path + '|' + known.name).second, known.name.constData());
        QVERIFY2(words.insert(known.place + ' ' + known.word).second, known.word.constData());
    }
}

void TestVocabulary::everyWordLeadsToItsNameAndBack()
{
    for (const ops::KnownName &known : ops::knownNames()) {
        const QByteArray text = known.place == "server" ? "server"
                                : known.place.isEmpty() ? "3"
                                                        : "3/" + known.place;
        const auto place = ops::parsePlace(text);
        QVERIFY2(place, text.constData());
        const ops::KnownName *found = ops::knownByWord(*place, known.word);
        QCOMPARE(found, &known);
        const QByteArray path = ops::pathOf(*place, known);
        QCOMPARE(ops::keyInWords(path, known.name), text + ' ' + known.word);
        QCOMPARE(ops::knownByWord(*place, known.name)->name, known.name);
    }
}

void TestVocabulary::everyRowOfTheKeyTableHasAWord()
{
    for (const ChannelKey &key : channelKeys()) {
        QVERIFY(ops::knownByKey(channel(5), valueName(key, "3")));
        QVERIFY(ops::knownByKey(channel(0), valueName(key, "")));
    }
}

void TestVocabulary::typesAreThoseOfTheKeyTable()
{
    for (const ChannelKey &key : channelKeys()) {
        const ops::KnownName *known = ops::knownByKey(channel(5), valueName(key, "3"));
        QCOMPARE(ops::isTextKind(known->kind), key.stored == Stored::Text);
    }
}

void TestVocabulary::sharedWordsAreFoundAtEachFlow()
{
    const ops::Place flow = *ops::parsePlace("2/audio/3");
    QCOMPARE(ops::knownByWord(flow, "rx.if")->name, QByteArray("ReceiveAudInterface"));
    QVERIFY(!ops::knownByWord(*ops::parsePlace("2/audio"), "rx.dst"));
    QVERIFY(ops::wordsAt(flow).contains("rx.ptime"));
}

void TestVocabulary::unknownKeysAreShownAsTheyStand()
{
    QCOMPARE(ops::keyInWords("Site\\Own", "Key"), QByteArray("Site\\Own Key"));
    QCOMPARE(ops::keyInWords(channel(2), "Own"), QByteArray("2 Own"));
    QCOMPARE(ops::valueInWords(channel(2), "Own", text("x")), QByteArray("\"x\""));
    QCOMPARE(ops::valueInWords(channel(2), "Own", std::nullopt), QByteArray("(absent)"));
}

void TestVocabulary::nearMisses_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("meant");
    QTest::newRow("swapped letters") << QByteArray("RecieveDestinationIp")
                                     << QByteArray("ReceiveDestinationIp");
    QTest::newRow("letter case") << QByteArray("transmitip") << QByteArray("TransmitIp");
    QTest::newRow("letter missing") << QByteArray("ClockDomin") << QByteArray("ClockDomain");
    QTest::newRow("nothing near") << QByteArray("Zebra") << QByteArray();
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("huge") << QByteArray(100000, 'x') << QByteArray();
}

void TestVocabulary::nearMisses()
{
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, meant);
    QCOMPARE(ops::nearest(word, ops::valueNamesAt(*ops::parsePlace("2"))), meant);
}

QTEST_APPLESS_MAIN(TestVocabulary)
#include "test_ops_vocabulary.moc"
