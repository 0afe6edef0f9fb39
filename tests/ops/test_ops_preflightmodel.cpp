// SPDX-License-Identifier: MIT
// Random servers against the plainest way to look at them: every stream with every other one, by the
// addresses that were drawn. The rules find the same, no more and no less, in whatever order.
#include "ops/preflight.h"
#include "ops/vocabulary.h"
#include "rows.h"

#include <random>
#include <set>

class TestPreflightModel : public QObject {
    Q_OBJECT

private slots:
    void findsWhatIsThere_data();
    void findsWhatIsThere();
    void theOrderOfTheStoreDoesNotMatter();
    void whatIsNotInUseNeverCounts();
    void severitiesAreThoseOfTheTable();
};

namespace {

struct Stream {
    QByteArray place; // "2/audio/3"
    char side;        // 'r' or 't'
    QByteArray element;
    int channel;
    quint32 address, port;
    bool used;

    QByteArray key() const { return place + (side == 'r' ? " rx." : " tx."); }
    bool runs() const { return used && address != 0 && port > 0 && port <= 65535; }
    bool group() const { return address >> 28 == 14; }
};

using Told = std::multiset<QByteArray>; // "rule: place"

class Server {
public:
    explicit Server(unsigned seed) : m_random(seed)
    {
        values.set("KWX\\Config", "MaxIntChannels", number(kChannels));
        const ops::KnownName *overridden = ops::knownByWord(*ops::parsePlace("server"), "nmos.override");
        values.set(overridden->path, overridden->name, number(1));
        for (int at = 0; at < kChannels; ++at) {
            values.set(channel(at), "SignalFormat", number(0x2380b232));
            for (const char *side : {"Receive", "Transmit"}) {
                values.set(channel(at), QByteArray(side) + "AudChannels", number(2));
                values.set(channel(at), QByteArray(side) + "AudTotalChannels", number(2 * kFlows));
            }
            for (const char *element : {"video", "audio/0", "audio/1", "audio/2", "anc"})
                addElement(at, element);
        }
    }

    static constexpr int kChannels = 4, kFlows = 3;
    ops::Snapshot values;
    std::vector<Stream> streams; // in the order of channels and elements, receivers before senders

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    // Few groups and ports, so that they meet; some of a block, of one Ethernet address, or none at all.
    quint32 address()
    {
        static const quint32 some[] = {0xef010101, 0xef010102, 0xef810101, 0xe0000009, 0xe0000181,
                                       0xe8010101, 0x0a000009, 0x01000000, 0};
        return some[below(4) ? below(3) : below(int(std::size(some)))];
    }
    quint32 port()
    {
        static const quint32 some[] = {20000, 20002, 20001, 65534, 0, 70000};
        return some[below(3) ? below(2) : below(int(std::size(some)))];
    }

    void addElement(int number_, const QByteArray &element)
    {
        const QByteArray place = QByteArray::number(number_) + '/' + element;
        for (const char side : {'r', 't'}) {
            Stream stream{place, side, element.split('/').first(), number_, address(), port(), below(5) > 0};
            put(stream, "dst",
                ops::Value::ofText(QByteArray::number(stream.address >> 24) + '.' +
                                   QByteArray::number(stream.address >> 16 & 255) + '.' +
                                   QByteArray::number(stream.address >> 8 & 255) + '.' +
                                   QByteArray::number(stream.address & 255)));
            put(stream, "dst-port", number(stream.port));
            put(stream, "use", number(stream.used ? 10 : 0)); // destination and its port, or nothing
            streams.push_back(stream);
        }
    }

    void put(const Stream &stream, const QByteArray &word, const ops::Value &value)
    {
        const auto place = ops::parsePlace(stream.place);
        const ops::KnownName *known =
            ops::knownByWord(*place, (stream.side == 'r' ? QByteArray("rx.") : QByteArray("tx.")) + word);
        values.set(ops::pathOf(*place, *known), known->name, value);
    }

    std::mt19937 m_random;
};

// A machine on which nothing is wrong.
ops::NetPicture machine()
{
    ops::NetPicture picture;
    picture.routes = {{0, 0}};
    picture.hardwareClock = true;
    return picture;
}

bool same(const Stream &left, const Stream &right)
{
    return left.address == right.address && left.port == right.port;
}

// Each stream by itself.
void lookAlone(const Stream &one, Told &told)
{
    const auto say = [&](const char *rule, const char *word) {
        told.insert(rule + QByteArray(": ") + one.key() + word);
    };
    if (!one.used && one.group() && one.port > 0)
        say("not-in-use", "use");
    if (!one.used)
        return;
    if (one.address == 0)
        say("no-destination", "dst");
    if (one.side == 't' && one.address != 0 && !one.group() && one.address != 0x01000000)
        say("no-group", "dst");
    if (one.group() && (one.address >> 8 == 0xe00000 || one.address >> 8 == 0xe00001))
        say("control-group", "dst");
    if (one.address >> 24 == 232)
        say("ssm-source", "dst");
    if (one.address == 0x01000000)
        say("never-typed", "dst");
    if (one.port == 0)
        say("port-zero", "dst-port");
    if (one.port % 2 == 1)
        say("port-odd", "dst-port");
    if (one.port > 65535)
        say("port-range", "dst-port");
}

// A stream and the first one before it that it has to do with, or for loops the first of all senders.
void lookAtPairs(const std::vector<Stream> &streams, Told &told)
{
    for (std::size_t at = 0; at < streams.size(); ++at) {
        const Stream &one = streams[at];
        if (!one.runs())
            continue;
        bool twice = false, ethernet = false;
        const Stream *first = nullptr;
        for (std::size_t before = 0; before < at; ++before) {
            const Stream &other = streams[before];
            twice = twice || (other.runs() && other.side == one.side && same(other, one));
            const bool shares = other.runs() && other.group() && one.group() &&
                                ((other.address ^ one.address) & 0x7fffff) == 0;
            if (shares && !first)
                first = &other;
        }
        ethernet = first && first->address != one.address;
        if (twice)
            told.insert((one.side == 't' ? "sent-twice: " : "received-twice: ") + one.key() + "dst");
        if (ethernet)
            told.insert("ethernet-address: " + one.key() + "dst");
    }
    for (const Stream &receiver : streams) {
        if (receiver.side != 'r' || !receiver.runs())
            continue;
        for (const Stream &sender : streams) {
            if (sender.side != 't' || !sender.runs() || !same(sender, receiver))
                continue;
            const QByteArray rule = sender.element != receiver.element   ? "crossed-elements"
                                    : sender.channel == receiver.channel ? "crossed"
                                                                         : "looped";
            told.insert(rule + ": " + receiver.key() + "dst");
            break; // of several that send the same, the first is named
        }
    }
}

Told expected(const std::vector<Stream> &streams)
{
    Told told;
    for (const Stream &stream : streams)
        lookAlone(stream, told);
    lookAtPairs(streams, told);
    return told;
}

Told found(const ops::Snapshot &values)
{
    Told told;
    for (const ops::Finding &finding : ops::runPreflight(values, machine()))
        told.insert(finding.rule + QByteArray(": ") + finding.place);
    return told;
}

QByteArray difference(const Told &left, const Told &right)
{
    QByteArrayList lines;
    std::vector<QByteArray> only;
    std::set_difference(left.begin(), left.end(), right.begin(), right.end(), std::back_inserter(only));
    for (const QByteArray &line : only)
        lines.append("missing " + line);
    only.clear();
    std::set_difference(right.begin(), right.end(), left.begin(), left.end(), std::back_inserter(only));
    for (const QByteArray &line : only)
        lines.append("too much " + line);
    return lines.join("; ");
}

} // namespace

void TestPreflightModel::findsWhatIsThere_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 40; ++seed)
        QTest::addRow("%u", seed) << seed;
}

void TestPreflightModel::findsWhatIsThere()
{
    QFETCH(unsigned, seed);
    const Server server(seed);
    QCOMPARE(difference(expected(server.streams), found(server.values)), QByteArray());
}

// A store gives its rows in the order of their names; one that was put together otherwise says the same.
void TestPreflightModel::theOrderOfTheStoreDoesNotMatter()
{
    const Server server(7);
    std::vector<ops::Row> rows(server.values.rows());
    std::mt19937 random(1);
    for (int turn = 0; turn < 5; ++turn) {
        std::shuffle(rows.begin(), rows.end(), random);
        ops::Snapshot shuffled;
        for (const ops::Row &row : rows)
            shuffled.set(row.path, row.name, row.value);
        QCOMPARE(difference(found(server.values), found(shuffled)), QByteArray());
    }
}

void TestPreflightModel::whatIsNotInUseNeverCounts()
{
    for (unsigned seed = 1; seed <= 10; ++seed) {
        Server server(seed);
        for (const ops::Row &row : std::vector<ops::Row>(server.values.rows())) {
            if (row.name.contains("Flags"))
                server.values.set(row.path, row.name, number(0));
        }
        for (const QByteArray &line : found(server.values))
            QVERIFY2(line.startsWith("not-in-use: "), line.constData());
    }
}

void TestPreflightModel::severitiesAreThoseOfTheTable()
{
    std::set<QByteArray> errors, others;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        const Server server(seed);
        for (const ops::Finding &finding : ops::runPreflight(server.values, machine()))
            (finding.severity == ops::Severity::Error ? errors : others).insert(finding.rule);
    }
    QCOMPARE(errors, (std::set<QByteArray>{"sent-twice", "crossed-elements", "no-destination", "ssm-source",
                                           "never-typed", "port-zero", "port-range"}));
    QCOMPARE(others, (std::set<QByteArray>{"received-twice", "crossed", "looped", "ethernet-address",
                                           "no-group", "control-group", "port-odd", "not-in-use"}));
}

QTEST_GUILESS_MAIN(TestPreflightModel)
#include "test_ops_preflightmodel.moc"
