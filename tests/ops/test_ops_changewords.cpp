// SPDX-License-Identifier: MIT
//
// Changes in whole words: every name that the server knows has a caption, and what nobody knows comes out as
// it stands.
#include "ops/changewords.h"
#include "ops/vocabulary.h"

#include <QSet>
#include <QtTest>

using namespace ops;

class TestOpsChangeWords : public QObject {
    Q_OBJECT

private slots:
    void words_data();
    void words();
    void everyNameHasItsOwnWords();
    void oneOfSeveral();
};

void TestOpsChangeWords::words_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("words");
    const QByteArray second = channelPath(2);
    QTest::newRow("video") << second << QByteArray("ReceiveDestinationIp") << "239.1.1.1"
                           << "239.1.1.2"
                           << QString::fromUtf8("Receive Destination Address, channel 2 Video, "
                                                "239.1.1.1 \u2190 239.1.1.2");
    QTest::newRow("flow") << second << QByteArray("TransmitAudIp3") << QString() << "10.0.0.1"
                          << QString::fromUtf8("Send Source Address, channel 2 Audio 3, "
                                               "(absent) \u2190 10.0.0.1");
    QTest::newRow("a site's own") << second << QByteArray("colour") << "red"
                                  << "blue"
                                  << QString::fromUtf8("colour, channel 2, \"red\" \u2190 \"blue\"");
    QTest::newRow("elsewhere") << QByteArray("KWX\\Other") << QByteArray("colour") << "red"
                               << "blue" << QString::fromUtf8("colour, KWX\\Other, \"red\" \u2190 \"blue\"");
}

void TestOpsChangeWords::words()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, name);
    QFETCH(QString, before);
    QFETCH(QString, after);
    Change change{path, name, std::nullopt, Value::ofText(after.toUtf8())};
    if (!before.isNull())
        change.before = Value::ofText(before.toUtf8());
    QTEST(changeInWords(change), "words");
}

void TestOpsChangeWords::everyNameHasItsOwnWords()
{
    QSet<QString> all;
    for (const KnownName &known : knownNames()) {
        const QByteArray path = known.path.isEmpty() ? channelPath(1) : known.path;
        const QString words = nameInWords(path, known.name);
        QVERIFY2(words != QString::fromLatin1(known.name) && !words.isEmpty(), known.name.constData());
        all.insert(words + placeInWords(path, known.name));
    }
    // The override is kept at two places.
    QCOMPARE(all.size(), int(knownNames().size()) - 1);
}

void TestOpsChangeWords::oneOfSeveral()
{
    const QString one = QStringLiteral("Receive Destination Port, channel 2 Video");
    QCOMPARE(keysInWords(channelPath(2), "ReceiveDestinationPort", 0), one);
    QCOMPARE(keysInWords(channelPath(2), "ReceiveDestinationPort", 3), one + QStringLiteral(" and 3 more"));
}

QTEST_APPLESS_MAIN(TestOpsChangeWords)
#include "test_ops_changewords.moc"
