// SPDX-License-Identifier: MIT
// Places and words as texts, all of them and damaged ones: whatever is understood says the same again, and
// what is not says why. Numbers of channels are compared with the plainest reading that there is.
#include "ops/assignment.h"
#include "ops/batch.h"
#include "rows.h"

#include <random>
#include <set>

class TestPlaces : public QObject {
    Q_OBJECT

private slots:
    void everyPlaceComesBack_data();
    void everyPlaceComesBack();
    void everyKeyComesBack();
    void listsOfNumbers_data();
    void listsOfNumbers();
    void damagedTextsAreRefusedOrMeanSomething();
    void damagedAssignmentsChangeNothingElse();
    void whatIsSetIsWhatIsRead_data();
    void whatIsSetIsWhatIsRead();
};

namespace {

constexpr int kChannels[] = {0, 1, 2, 9, 10, 11, 99, 100, 999, 1000, 9999, 10000, 65535};

QByteArray damaged(QByteArray text, std::mt19937 &random)
{
    static const char bytes[] = "0123456789-,*/.=:xX rtvideoanc\\\"'\xc3\x01\xff";
    for (auto times = 1 + random() % 3; times > 0; --times) {
        const int at = text.isEmpty() ? 0 : static_cast<int>(random() % static_cast<unsigned>(text.size()));
        const char byte = bytes[random() % (sizeof bytes - 1)];
        switch (random() % 3) {
        case 0:
            text.insert(at, byte);
            break;
        case 1:
            text.remove(at, 1);
            break;
        default:
            if (!text.isEmpty())
                text[at] = byte;
        }
    }
    return text;
}

// "1-3,5,*" of so many channels, number by number; nothing when a part is none.
std::optional<std::vector<int>> numbersOf(const QString &text, int count)
{
    std::vector<int> numbers;
    std::set<int> seen;
    for (const QString &part : text.split(QLatin1Char(','))) {
        const QRegularExpression form(QStringLiteral("^(\\d{1,6})(?:-(\\d{1,6}))?$"));
        const auto match = form.match(part);
        const bool all = part == QLatin1String("*");
        if (!all && !match.hasMatch())
            return std::nullopt;
        const int first = all ? 0 : match.captured(1).toInt();
        const int last = all ? count - 1 : (match.captured(2).isEmpty() ? first : match.captured(2).toInt());
        if (!all && (first > last || last > 65535))
            return std::nullopt;
        for (int number = first; number <= last; ++number) {
            if (seen.insert(number).second)
                numbers.push_back(number);
        }
    }
    return numbers;
}

} // namespace

void TestPlaces::everyPlaceComesBack_data()
{
    QTest::addColumn<int>("channel");
    for (const int channel : kChannels)
        QTest::addRow("%d", channel) << channel;
}

void TestPlaces::everyPlaceComesBack()
{
    QFETCH(int, channel);
    QByteArrayList behind{"", "/video", "/audio", "/anc", "/audio/single"};
    for (int flow = 0; flow < 8; ++flow)
        behind.append("/audio/" + QByteArray::number(flow));
    std::set<QByteArray> texts;
    for (const QByteArray &rest : behind) {
        const QByteArray text = QByteArray::number(channel) + rest;
        const auto place = ops::parsePlace(text);
        QVERIFY2(place, text.constData());
        QCOMPARE(place->channel, channel);
        QCOMPARE(ops::placeText(*place), text);
        QVERIFY(*ops::parsePlace(ops::placeText(*place)) == *place);
        texts.insert(ops::placeText(*place));
    }
    QCOMPARE(int(texts.size()), behind.size());
    QCOMPARE(ops::channelOfPath(ops::channelPath(channel)), channel);
    QCOMPARE(ops::channelOfPath(ops::channelPath(channel).toUpper()), channel);
    QCOMPARE(ops::channelOfPath(ops::channelPath(channel) + 'x'), -1);
    QCOMPARE(ops::channelOfPath(ops::channelPath(channel).replace("Internal", "Internal0")), -1);
}

// Path and name, in words, lead back to the same path and name.
void TestPlaces::everyKeyComesBack()
{
    for (const int channel : kChannels) {
        for (const ops::KnownName &known : ops::knownNames()) {
            const QByteArray path = known.path.isEmpty() ? ops::channelPath(channel) : known.path;
            const QByteArrayList words = ops::keyInWords(path, known.name).split(' ');
            QCOMPARE(words.size(), 2);
            const auto keys = ops::select(*ops::parsePlace(words[0]), words[1], ops::Foreign::Refuse);
            QVERIFY(keys);
            const bool here = std::any_of(keys->begin(), keys->end(), [&](const ops::Key &key) {
                return key.path == path && key.name == known.name;
            });
            QVERIFY2(here, known.name.constData());
        }
    }
}

void TestPlaces::listsOfNumbers_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"0",
                             "7",
                             "0-7",
                             "0,1,2",
                             "2,1,0",
                             "1-1",
                             "0-3,2-5",
                             "1,1,1",
                             "*",
                             "*,3",
                             "7-0",
                             "0-",
                             "-1",
                             "-",
                             "",
                             ",",
                             "1,",
                             ",1",
                             "1,,2",
                             "0-3-5",
                             "1 ",
                             " 1",
                             "1-3 ",
                             "+1",
                             "0x1",
                             "1.0",
                             "65535",
                             "65536",
                             "0-65536",
                             "99999999999999999999",
                             "1-99999999999999999999",
                             "**",
                             "1*",
                             "*-3",
                             "\xd9\xa1",
                             "01",
                             "00-03",
                             "000001"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
}

void TestPlaces::listsOfNumbers()
{
    QFETCH(QByteArray, text);
    const auto wanted = numbersOf(QString::fromUtf8(text), 8);
    const auto found = ops::parseNumbers(text, 8);
    QCOMPARE(bool(found), bool(wanted));
    if (wanted)
        QCOMPARE(*found, *wanted);
    else
        QVERIFY(!found.failure().text.isEmpty());
}

void TestPlaces::damagedTextsAreRefusedOrMeanSomething()
{
    std::mt19937 random(3);
    const char *const whole[] = {
        "2",      "0-7",       "*/video", "2/audio/3",     "1,3/anc", "2/audio/single",
        "server", "0-3/audio", "12/*",    "KWX\\Internal2"};
    int understood = 0;
    for (int count = 0; count < 4000; ++count) {
        const QByteArray text = damaged(whole[random() % std::size(whole)], random);
        const auto places = ops::parsePlaces(text, 8);
        if (!places) {
            QVERIFY(!places.failure().text.isEmpty() && places.failure().text.size() < 400);
            continue;
        }
        ++understood;
        for (const ops::Place &place : *places) {
            QVERIFY(place.channel >= -1 && place.channel <= 65535);
            QVERIFY(place.flow == ops::kNoFlow || place.element == Element::Audio);
            const auto again = ops::parsePlace(ops::placeText(place));
            QVERIFY2(again || place.path.contains('*'), ops::placeText(place).constData());
            QVERIFY(!again || *again == place);
        }
    }
    QVERIFY(understood > 200);
}

// A slip in one word never ends in a value of another place, nor in half of what was meant.
void TestPlaces::damagedAssignmentsChangeNothingElse()
{
    std::mt19937 random(4);
    const char *const whole[] = {
        "rx.dst=239.1.1.1:20000", "rx.use=dst,port", "tx.src-port=5004", "if=10.0.0.1", "dst-port=1",
        "TransmitIp=10.0.0.1"};
    const ops::Snapshot nothing;
    for (int count = 0; count < 4000; ++count) {
        ops::Draft draft(nothing);
        const QByteArray text = damaged(whole[random() % std::size(whole)], random);
        const auto done = ops::setWords("2/video", {text}, {}, draft);
        for (const ops::Change &change : draft.changes()) {
            QCOMPARE(change.path, ops::channelPath(2));
            const ops::KnownName *known = ops::knownByKey(change.path, change.name);
            QVERIFY(known && known->place == "video");
            QCOMPARE(change.after->isText, ops::isTextKind(known->kind));
        }
        QVERIFY(!done || !draft.changes().empty());
    }
}

void TestPlaces::whatIsSetIsWhatIsRead_data()
{
    QTest::addColumn<int>("at");
    for (int at = 0; at < int(ops::knownNames().size()); at += 7)
        QTest::addRow("%s %d", ops::knownNames()[static_cast<std::size_t>(at)].name.constData(), at) << at;
}

// Every word of a kind, set by the command's text, is shown again as it was typed or as the kind says it.
void TestPlaces::whatIsSetIsWhatIsRead()
{
    QFETCH(int, at);
    const ops::KnownName &known = ops::knownNames()[static_cast<std::size_t>(at)];
    const QByteArray place = known.place == "server" ? known.place
                             : known.place.isEmpty() ? QByteArray("2")
                                                     : "2/" + known.place;
    const ops::Snapshot nothing;
    QByteArrayList tried = ops::wordsOf(known.kind);
    tried += {"0", "1", "239.1.2.3", ""};
    for (const QByteArray &words : tried) {
        const auto value = ops::fromWords(known.kind, words);
        ops::Draft draft(nothing);
        const auto done =
            ops::setWords(place, {known.word + '=' + words}, {ops::Foreign::Refuse, true}, draft);
        QCOMPARE(bool(done), bool(value));
        if (!value)
            continue;
        QCOMPARE(int(draft.changes().size()), 1);
        const ops::Change change = draft.changes().front();
        QCOMPARE(change.name, known.name);
        QVERIFY(*change.after == *value);
        QCOMPARE(*ops::fromWords(known.kind, ops::inWords(known.kind, *change.after)), *value);
    }
}

QTEST_APPLESS_MAIN(TestPlaces)
#include "test_ops_places.moc"
