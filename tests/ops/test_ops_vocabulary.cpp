// SPDX-License-Identifier: MIT
#include "ops/suggest.h"
#include "ops/vocabulary.h"
#include "rows.h"

#include <set>

namespace {

// Written down apart from the program: where each word of each kind of place leads.
// clang-format off
const struct {
    const char *place, *word, *path, *name;
} kLeads[] = {
    {"server", "channels", "KWX\\Config", "MaxIntChannels"},
    {"server", "nmos.override", "KWX\\Advanced\\AvHAL", "nmosoverride"},
    {"server", "nmos.log", "KWX\\Advanced\\Debug", "NMOSUseLog"},
    {"server", "nmos.kept", "KWX\\Internal0\\IpConfig", "nmosoverride"},
    {"server", "nmos.domain", "KWX\\Internal0\\IpConfig", "nmosdomain"},
    {"server", "nmos.ip", "KWX\\Internal0\\IpConfig", "nmosip"},
    {"server", "nmos.server", "KWX\\Internal0\\IpConfig", "nmosserverip"},
    {"server", "nmos.port", "KWX\\Internal0\\IpConfig", "nmosserverport"},
    {"2", "type", "KWX\\Internal2\\IpConfig", "VideoType"},
    {"2", "format", "KWX\\Internal2\\IpConfig", "SignalFormat"},
    {"2", "clock", "KWX\\Internal2\\IpConfig", "ClockType"},
    {"2", "domain", "KWX\\Internal2\\IpConfig", "ClockDomain"},
    {"2", "gm", "KWX\\Internal2\\IpConfig", "ClockGrandMaster"},
    {"2", "flow-mode", "KWX\\Internal2\\IpConfig", "AudioFlowType"},
    {"2", "file-settings", "KWX\\Internal2\\IpConfig", "IpUseFileSettings"},
    {"2/video", "rx.src", "KWX\\Internal2\\IpConfig", "ReceiveSourceIp"},
    {"2/video", "rx.src-port", "KWX\\Internal2\\IpConfig", "ReceiveSourcePort"},
    {"2/video", "rx.dst", "KWX\\Internal2\\IpConfig", "ReceiveDestinationIp"},
    {"2/video", "rx.dst-port", "KWX\\Internal2\\IpConfig", "ReceiveDestinationPort"},
    {"2/video", "rx.if", "KWX\\Internal2\\IpConfig", "ReceiveInterface"},
    {"2/video", "rx.use", "KWX\\Internal2\\IpConfig", "ReceiveFlags"},
    {"2/video", "tx.src", "KWX\\Internal2\\IpConfig", "TransmitIp"},
    {"2/video", "tx.src-port", "KWX\\Internal2\\IpConfig", "TransmitSourcePort"},
    {"2/video", "tx.dst", "KWX\\Internal2\\IpConfig", "TransmitDestinationIp"},
    {"2/video", "tx.dst-port", "KWX\\Internal2\\IpConfig", "TransmitRemotePort"},
    {"2/video", "tx.if", "KWX\\Internal2\\IpConfig", "TransmitInterface"},
    {"2/video", "tx.use", "KWX\\Internal2\\IpConfig", "TransmitFlags"},
    {"2/audio/3", "rx.src", "KWX\\Internal2\\IpConfig", "ReceiveAudSourceIp3"},
    {"2/audio/3", "rx.src-port", "KWX\\Internal2\\IpConfig", "ReceiveAudSourcePort3"},
    {"2/audio/3", "rx.dst", "KWX\\Internal2\\IpConfig", "ReceiveAudDestinationIp3"},
    {"2/audio/3", "rx.dst-port", "KWX\\Internal2\\IpConfig", "ReceiveAudDestinationPort3"},
    {"2/audio/3", "rx.if", "KWX\\Internal2\\IpConfig", "ReceiveAudInterface"},
    {"2/audio/3", "rx.use", "KWX\\Internal2\\IpConfig", "ReceiveAudFlags3"},
    {"2/audio/3", "tx.src", "KWX\\Internal2\\IpConfig", "TransmitAudIp3"},
    {"2/audio/3", "tx.src-port", "KWX\\Internal2\\IpConfig", "TransmitAudSourcePort3"},
    {"2/audio/3", "tx.dst", "KWX\\Internal2\\IpConfig", "TransmitAudDestinationIp3"},
    {"2/audio/3", "tx.dst-port", "KWX\\Internal2\\IpConfig", "TransmitAudRemotePort3"},
    {"2/audio/3", "tx.if", "KWX\\Internal2\\IpConfig", "TransmitAudInterface"},
    {"2/audio/3", "tx.use", "KWX\\Internal2\\IpConfig", "TransmitAudFlags3"},
    {"2/audio/single", "rx.src", "KWX\\Internal2\\IpConfig", "ReceiveAudSourceIp"},
    {"2/audio/single", "rx.src-port", "KWX\\Internal2\\IpConfig", "ReceiveAudSourcePort"},
    {"2/audio/single", "rx.dst", "KWX\\Internal2\\IpConfig", "ReceiveAudDestinationIp"},
    {"2/audio/single", "rx.dst-port", "KWX\\Internal2\\IpConfig", "ReceiveAudDestinationPort"},
    {"2/audio/single", "rx.if", "KWX\\Internal2\\IpConfig", "ReceiveAudInterface"},
    {"2/audio/single", "rx.use", "KWX\\Internal2\\IpConfig", "ReceiveAudFlags"},
    {"2/audio/single", "tx.src", "KWX\\Internal2\\IpConfig", "TransmitAudIp"},
    {"2/audio/single", "tx.src-port", "KWX\\Internal2\\IpConfig", "TransmitAudSourcePort"},
    {"2/audio/single", "tx.dst", "KWX\\Internal2\\IpConfig", "TransmitAudDestinationIp"},
    {"2/audio/single", "tx.dst-port", "KWX\\Internal2\\IpConfig", "TransmitAudRemotePort"},
    {"2/audio/single", "tx.if", "KWX\\Internal2\\IpConfig", "TransmitAudInterface"},
    {"2/audio/single", "tx.use", "KWX\\Internal2\\IpConfig", "TransmitAudFlags"},
    {"2/anc", "rx.src", "KWX\\Internal2\\IpConfig", "ReceiveAncSourceIp"},
    {"2/anc", "rx.src-port", "KWX\\Internal2\\IpConfig", "ReceiveAncSourcePort"},
    {"2/anc", "rx.dst", "KWX\\Internal2\\IpConfig", "ReceiveAncDestinationIp"},
    {"2/anc", "rx.dst-port", "KWX\\Internal2\\IpConfig", "ReceiveAncDestinationPort"},
    {"2/anc", "rx.if", "KWX\\Internal2\\IpConfig", "ReceiveAncInterface"},
    {"2/anc", "rx.use", "KWX\\Internal2\\IpConfig", "ReceiveAncFlags"},
    {"2/anc", "tx.src", "KWX\\Internal2\\IpConfig", "TransmitAncIp"},
    {"2/anc", "tx.src-port", "KWX\\Internal2\\IpConfig", "TransmitAncSourcePort"},
    {"2/anc", "tx.dst", "KWX\\Internal2\\IpConfig", "TransmitAncDestinationIp"},
    {"2/anc", "tx.dst-port", "KWX\\Internal2\\IpConfig", "TransmitAncRemotePort"},
    {"2/anc", "tx.if", "KWX\\Internal2\\IpConfig", "TransmitAncInterface"},
    {"2/anc", "tx.use", "KWX\\Internal2\\IpConfig", "TransmitAncFlags"},
    {"2/audio", "rx.if", "KWX\\Internal2\\IpConfig", "ReceiveAudInterface"},
    {"2/audio", "rx.channels", "KWX\\Internal2\\IpConfig", "ReceiveAudChannels"},
    {"2/audio", "rx.total", "KWX\\Internal2\\IpConfig", "ReceiveAudTotalChannels"},
    {"2/audio", "rx.ptime", "KWX\\Internal2\\IpConfig", "ReceiveAudPacketLength"},
    {"2/audio", "tx.if", "KWX\\Internal2\\IpConfig", "TransmitAudInterface"},
    {"2/audio", "tx.channels", "KWX\\Internal2\\IpConfig", "TransmitAudChannels"},
    {"2/audio", "tx.total", "KWX\\Internal2\\IpConfig", "TransmitAudTotalChannels"},
    {"2/audio", "tx.ptime", "KWX\\Internal2\\IpConfig", "TransmitAudPacketLength"},
};
// clang-format on

} // namespace

class TestVocabulary : public QObject {
    Q_OBJECT

private slots:
    void wordsLeadToTheirKeys_data();
    void wordsLeadToTheirKeys();
    void noOtherWordIsThere_data();
    void noOtherWordIsThere();
    void everyNameAndWordIsUnique();
    void everyWordLeadsToItsNameAndBack();
    void everyRowOfTheKeyTableHasAWord();
    void typesAreThoseOfTheKeyTable();
    void sharedWordsAreFoundAtEachFlow();
    void unknownKeysAreShownAsTheyStand();
    void nearMisses_data();
    void nearMisses();
};

void TestVocabulary::wordsLeadToTheirKeys_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const auto &lead : kLeads)
        QTest::addRow("%s %s", lead.place, lead.word) << row++;
}

void TestVocabulary::wordsLeadToTheirKeys()
{
    QFETCH(int, row);
    const auto &lead = kLeads[row];
    const auto place = ops::parsePlace(lead.place);
    QVERIFY(place);
    const ops::KnownName *known = ops::knownByWord(*place, lead.word);
    QVERIFY(known);
    QCOMPARE(ops::pathOf(*place, *known), QByteArray(lead.path));
    QCOMPARE(known->name, QByteArray(lead.name));
    QCOMPARE(ops::knownByKey(lead.path, lead.name), known);
}

void TestVocabulary::noOtherWordIsThere_data()
{
    QTest::addColumn<QByteArray>("place");
    for (const char *place : {"server", "2", "2/video", "2/audio", "2/audio/3", "2/audio/single", "2/anc"})
        QTest::newRow(place) << QByteArray(place);
}

// A flow has the words that all flows share, too.
void TestVocabulary::noOtherWordIsThere()
{
    QFETCH(QByteArray, place);
    std::set<QByteArray> wanted;
    for (const auto &lead : kLeads) {
        const bool shared = place.startsWith("2/audio/") && QByteArray(lead.place) == "2/audio";
        if (place == lead.place || shared)
            wanted.insert(lead.word);
    }
    const QByteArrayList words = ops::wordsAt(*ops::parsePlace(place));
    QCOMPARE(std::set<QByteArray>(words.begin(), words.end()), wanted);
    QCOMPARE(words.size(), int(wanted.size()));
}

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
