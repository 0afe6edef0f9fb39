// SPDX-License-Identifier: MIT
#include "ops/assignment.h"
#include "ops/ipv4.h"
#include "ops/preflight.h"
#include "ops/vocabulary.h"

#include <QElapsedTimer>
#include <QSet>
#include <QtTest>

using namespace ops;

namespace {

using Settings = QList<QPair<QByteArray, QByteArray>>; // place, "word=value"

void apply(Snapshot &snapshot, const Settings &settings)
{
    Draft draft(snapshot);
    for (const auto &setting : settings) {
        const auto place = parsePlace(setting.first);
        const auto done =
            place ? assign(*place, setting.second, Foreign::Refuse, draft) : Outcome<Done>(place.failure());
        if (!done)
            qFatal("%s %s: %s", setting.first.constData(), setting.second.constData(),
                   done.failure().text.constData());
    }
    for (const Change &change : draft.changes())
        snapshot.set(change.path, change.name, *change.after);
}

// A number that the words of a command would refuse, as another program may store it.
void applyRaw(Snapshot &snapshot, const QByteArray &place, const QByteArray &word, const Value &value)
{
    const auto at = parsePlace(place);
    const KnownName *known = knownByWord(*at, word);
    snapshot.set(pathOf(*at, *known), known->name, value);
}

// clang-format off
// One channel that sends and receives a picture, sound and ancillary data: nothing to complain about.
const Settings sane = {
    {"server",    "nmos.ip=10.0.0.5"},
    {"0",         "format=1080i 50fps (1920)"}, {"0", "clock=sw-ptp"}, {"0", "domain=127"},
    {"0",         "channels=8"}, {"0", "flows=1"}, {"0", "ptime=1000"},
    {"0/video",   "tx.dst=239.1.1.1:20000"}, {"0/video",   "tx.if=10.0.0.5"}, {"0/video",   "tx.use=dst,dst-port,if"},
    {"0/video",   "rx.dst=239.2.1.1:20000"}, {"0/video",   "rx.if=10.0.0.5"}, {"0/video",   "rx.use=dst,dst-port,if"},
    {"0/audio/0", "tx.dst=239.1.1.2:20010"}, {"0/audio",   "tx.if=10.0.0.5"}, {"0/audio/0", "tx.use=dst,dst-port,if"},
    {"0/audio/0", "rx.dst=239.2.1.2:20010"}, {"0/audio",   "rx.if=10.0.0.5"}, {"0/audio/0", "rx.use=dst,dst-port,if"},
    {"0/anc",     "tx.dst=239.1.1.3:20020"}, {"0/anc",     "tx.if=10.0.0.5"}, {"0/anc",     "tx.use=dst,dst-port,if"},
    {"0/anc",     "rx.dst=239.2.1.3:20020"}, {"0/anc",     "rx.if=10.0.0.5"}, {"0/anc",     "rx.use=dst,dst-port,if"},
};
// clang-format on

NetInterface networkCard()
{
    NetInterface card;
    card.name = "eth0";
    card.addresses = {*parseIpv4("10.0.0.5")};
    card.up = card.multicast = true;
    card.mtu = 1500;
    card.speedMbit = 25000;
    return card;
}

NetPicture machine(const NetInterface &card = networkCard())
{
    NetPicture picture;
    picture.interfaces = {card};
    picture.routes = {{*parseIpv4("10.0.0.0"), 0xffffff00}};
    picture.hardwareClock = true;
    return picture;
}

QStringList told(const Findings &findings)
{
    QStringList list;
    for (const Finding &finding : findings)
        list << QLatin1String(finding.rule) + QLatin1String(": ") + QString::fromUtf8(finding.place);
    return list;
}

Snapshot saneStore(const Settings &more = {})
{
    Snapshot snapshot;
    apply(snapshot, sane);
    apply(snapshot, more);
    return snapshot;
}

QStringList check(const Settings &more, const NetPicture &picture = machine())
{
    return told(runPreflight(saneStore(more), picture));
}

struct Trouble {
    const char *expected; // "rule: place"
    Settings settings;    // on top of the sane ones
};

// clang-format off
const Trouble troubles[] = {
    {"sent-twice: 1/video tx.dst",        {{"1", "format=1080i 50fps (1920)"}, {"1/video", "tx.dst=239.1.1.1:20000"}, {"1/video", "tx.use=dst,dst-port"}, {"1/video", "tx.if=10.0.0.5"}, {"1/video", "tx.use=dst,dst-port,if"}}},
    {"sent-twice: 0/anc tx.dst",          {{"0/anc", "tx.dst=239.1.1.2:20010"}}},
    {"received-twice: 1/video rx.dst",    {{"1", "format=1080i 50fps (1920)"}, {"1/video", "rx.dst=239.2.1.1:20000"}, {"1/video", "rx.use=dst,dst-port"}}},
    {"crossed-elements: 0/audio/0 rx.dst", {{"0/audio/0", "rx.dst=239.1.1.3:20020"}}},
    {"crossed: 0/video rx.dst",           {{"0/video", "rx.dst=239.1.1.1:20000"}}},
    {"looped: 1/video rx.dst",            {{"1", "format=1080i 50fps (1920)"}, {"1/video", "rx.dst=239.1.1.1:20000"}, {"1/video", "rx.use=dst,dst-port"}}},
    {"ethernet-address: 0/anc tx.dst",    {{"0/anc", "tx.dst=239.129.1.1:20020"}}},
    {"no-destination: 0/anc tx.dst",      {{"0/anc", "tx.dst="}}},
    {"no-destination: 0/anc rx.dst",      {{"0/anc", "rx.dst=0.0.0.0"}}},
    {"no-group: 0/anc tx.dst",            {{"0/anc", "tx.dst=10.0.0.9"}}},
    {"control-group: 0/anc tx.dst",       {{"0/anc", "tx.dst=224.0.0.9"}}},
    {"control-group: 0/anc rx.dst",       {{"0/anc", "rx.dst=224.0.1.129"}}},
    {"ssm-source: 0/anc rx.dst",          {{"0/anc", "rx.dst=232.1.1.1"}}},
    {"ssm-source: 0/anc rx.dst",          {{"0/anc", "rx.dst=232.1.1.1"}, {"0/anc", "rx.src=10.0.0.7"}}},
    {"never-typed: 0/anc rx.src",         {{"0/anc", "rx.src=1.0.0.0"}, {"0/anc", "rx.use=src,dst,dst-port,if"}}},
    {"never-typed: 0/anc tx.dst",         {{"0/anc", "tx.dst=1.0.0.0"}}},
    {"never-typed: 0/anc tx.if",          {{"0/anc", "tx.if=1.0.0.0"}}},
    {"port-zero: 0/anc tx.dst-port",      {{"0/anc", "tx.dst-port=0"}}},
    {"port-zero: 0/anc tx.src-port",      {{"0/anc", "tx.use=src-port,dst,dst-port,if"}}},
    {"port-odd: 0/anc tx.dst-port",       {{"0/anc", "tx.dst-port=20021"}}},
    {"not-in-use: 0/anc tx.use",          {{"0/anc", "tx.use=if"}}},
    {"interface-empty: 0/anc tx.if",      {{"0/anc", "tx.if="}}},
    {"interface-missing: 0/anc tx.if",    {{"0/anc", "tx.if=10.0.0.6"}}},
    {"no-route: 0/anc tx.dst",            {{"0/anc", "tx.use=dst,dst-port"}}},
    {"no-route: 0/anc tx.dst",            {{"0/anc", "tx.dst=10.9.9.9"}}},
    {"link-speed: eth0",                  {{"0", "format=4K 4096x2160 60fps"}, {"1", "format=4K 4096x2160 60fps"}, {"2", "format=4K 4096x2160 60fps"},
                                           {"1/video", "tx.dst=239.1.2.1:20000"}, {"1/video", "tx.if=10.0.0.5"}, {"1/video", "tx.use=dst,dst-port,if"},
                                           {"2/video", "tx.dst=239.1.3.1:20000"}, {"2/video", "tx.if=10.0.0.5"}, {"2/video", "tx.use=dst,dst-port,if"}}},
    {"ptp-domains: 1 domain",             {{"1", "clock=hw-ptp"}, {"1", "domain=5"}}},
    {"ptp-grandmaster: 0 gm",             {}},
    {"audio-packet: 0/audio tx.ptime",    {{"0", "channels=16"}}},
    {"nmos-address: server nmos.ip",      {{"server", "nmos.ip=10.0.0.9"}}},
    {"nmos-address: server nmos.ip",      {{"server", "nmos.ip="}}},
};

// What comes near to a trouble and is none: the rule must not tell it.
const Trouble narrow[] = {
    {"sent-twice",          {{"0/anc", "tx.dst=239.1.1.2:20012"}}},                                    // the group with another port
    {"sent-twice",          {{"1/video", "tx.dst=239.1.1.1:20000"}, {"1/video", "tx.use=none"}}},       // not in use
    {"sent-twice",          {{"1/video", "tx.dst=239.1.1.1:20000"}, {"1/video", "tx.use=dst"}}},        // its port not in use
    {"received-twice",      {{"1/video", "rx.dst=239.2.1.1:20002"}, {"1/video", "rx.use=dst,dst-port"}}},
    {"received-twice",      {{"1/video", "rx.dst=239.2.1.1:20000"}, {"1/video", "rx.use=dst-port"}}},
    {"crossed-elements",    {{"0/audio/0", "rx.dst=239.1.1.3:20022"}}},
    {"crossed",             {{"0/video", "rx.dst=239.1.1.1:20002"}}},
    {"crossed",             {{"1/video", "rx.dst=239.1.1.1:20000"}, {"1/video", "rx.use=dst,dst-port"}}}, // another channel's
    {"looped",              {{"1/video", "rx.dst=239.1.1.1:20002"}, {"1/video", "rx.use=dst,dst-port"}}},
    {"looped",              {{"0/video", "rx.dst=239.1.1.1:20000"}}},                                   // its own
    {"ethernet-address",    {{"0/anc", "tx.dst=239.1.1.200:20020"}}},
    {"ethernet-address",    {{"0/anc", "tx.dst=239.1.1.1:20022"}}},                                     // the same group
    {"ethernet-address",    {{"0/anc", "tx.dst=239.129.1.1:20020"}, {"0/anc", "tx.use=if"}}},
    {"no-destination",      {{"0/anc", "tx.dst="}, {"0/anc", "tx.use=if"}}},
    {"no-group",            {{"0/anc", "rx.dst=10.0.0.9"}}},                                            // received from one host
    {"no-group",            {{"0/anc", "tx.dst=224.0.2.0"}}},
    {"no-group",            {{"0/anc", "tx.dst=239.255.255.255"}}},
    {"no-group",            {{"0/anc", "tx.dst=1.0.0.0"}}},                                             // told by never-typed
    {"control-group",       {{"0/anc", "tx.dst=224.0.2.1"}}},
    {"control-group",       {{"0/anc", "tx.dst=225.0.0.1"}}},
    {"control-group",       {{"0/anc", "tx.dst=223.255.255.255"}}},
    {"ssm-source",          {{"0/anc", "rx.dst=232.1.1.1"}, {"0/anc", "rx.src=10.0.0.7"}, {"0/anc", "rx.use=src,dst,dst-port,if"}}},
    {"ssm-source",          {{"0/anc", "rx.dst=231.255.255.255"}}},
    {"ssm-source",          {{"0/anc", "rx.dst=233.0.0.0"}}},
    {"never-typed",         {{"0/anc", "rx.src=1.0.0.0"}}},                                             // not in use
    {"never-typed",         {{"0/anc", "rx.src=1.0.0.1"}, {"0/anc", "rx.use=src,dst,dst-port,if"}}},
    {"port-zero",           {{"0/anc", "tx.src-port=0"}}},
    {"port-zero",           {{"0/anc", "tx.dst-port=1"}}},
    {"port-odd",            {{"0/anc", "tx.dst-port=20022"}}},
    {"port-odd",            {{"0/anc", "tx.dst-port=20021"}, {"0/anc", "tx.use=dst,if"}}},
    {"port-odd",            {{"0/anc", "tx.src-port=20021"}, {"0/anc", "tx.use=src-port,dst,dst-port,if"}}}, // any will do
    {"port-range",          {{"0/anc", "tx.dst-port=65535"}}},
    {"not-in-use",          {{"0/anc", "tx.dst=10.0.0.9"}, {"0/anc", "tx.use=if"}}},
    {"not-in-use",          {{"0/anc", "tx.dst-port=0"}, {"0/anc", "tx.use=if"}}},
    {"interface-empty",     {{"0/anc", "tx.if="}, {"0/anc", "tx.use=dst,dst-port"}}},
    {"interface-missing",   {{"0/anc", "tx.if=10.0.0.6"}, {"0/anc", "tx.use=dst,dst-port"}}},
    {"interface-missing",   {{"0/anc", "tx.if="}}},                                                     // told by interface-empty
    {"interface-missing",   {{"0/anc", "tx.if=1.0.0.0"}}},                                              // told by never-typed
    {"no-route",            {{"0/anc", "tx.dst=10.0.0.9"}}},                                            // in the card's network
    {"no-route",            {{"0/anc", "rx.use=dst,dst-port"}}},                                        // receiving needs none
    {"link-speed",          {{"0", "format=4K 4096x2160 60fps"}}},
    {"ptp-domains",         {{"1", "clock=hw-ptp"}, {"1", "domain=127"}}},
    {"ptp-domains",         {{"1", "clock=internal"}, {"1", "domain=5"}}},
    {"ptp-domain",          {{"0", "domain=0"}}},
    {"ptp-grandmaster",     {{"0", "gm=ac-de-48-ff-fe-23-45-67"}}},
    {"ptp-grandmaster",     {{"0", "gm=ACDE48234567"}}},
    {"ptp-grandmaster",     {{"0", "gm="}}},
    {"format",              {{"0", "format=0"}, {"0/video", "rx.use=none"}, {"0/video", "tx.use=none"}}},
    {"audio-packet",        {{"0", "channels=10"}}},                                                    // 1440 bytes
    {"audio-packet",        {{"0", "channels=64"}, {"0", "ptime=125"}}},
    {"audio-packet",        {{"0", "channels=16"}, {"0/audio/0", "rx.use=none"}, {"0/audio/0", "tx.use=none"}}},
    {"nmos-address",        {{"server", "nmos.ip="}, {"server", "nmos.override=on"}}},
    {"never-set-up",        {{"server", "channels=1"}}},
};
// clang-format on

} // namespace

class TestPreflight : public QObject {
    Q_OBJECT

private slots:
    void aSaneServerPasses();
    void eachTroubleIsTold_data();
    void eachTroubleIsTold();
    void whatIsNearIsNotTold_data();
    void whatIsNearIsNotTold();
    void everyRuleHasATest();
    void theManualNamesEveryRule();
    void machineTroubles_data();
    void machineTroubles();
    void storedNumbersOutOfRange();
    void onlyFieldsInUseCount();
    void onlyUsedChannelsUnlessAllAreWanted();
    void anEmptyStoreHasNothingToSay();
    void onlyPtpChannelsNeedAClient();
    void anOverriddenNodeNeedsNoAddress();
    void aCopyInTwoReceiversOfOneGroupIsToldOnce();
    void singleFlowsAndFlowsBeyondTheCount();
    void valuesOfTheWrongType_data();
    void valuesOfTheWrongType();
    void onlyKnownValuesHaveAType();
    void theRemedyOfAWrongTypeIsACommand();
    void aThousandChannelsWithinASecond();
};

void TestPreflight::aSaneServerPasses()
{
    QCOMPARE(check({}), QStringList());
}

void TestPreflight::eachTroubleIsTold_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Trouble &trouble : troubles) {
        QTest::addRow("%d %s", row, trouble.expected) << row;
        ++row;
    }
}

void TestPreflight::eachTroubleIsTold()
{
    QFETCH(int, row);
    const Trouble &trouble = troubles[row];
    Snapshot snapshot = saneStore(trouble.settings);
    if (qstrcmp(trouble.expected, "ptp-grandmaster: 0 gm") == 0)
        applyRaw(snapshot, "0", "gm", Value::ofText("none"));
    const QStringList found = told(runPreflight(snapshot, machine()));
    QVERIFY2(found.contains(QString::fromLatin1(trouble.expected)),
             qPrintable(found.join(QLatin1String("; "))));
}

void TestPreflight::whatIsNearIsNotTold_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const Trouble &one : narrow) {
        QTest::addRow("%d %s", row, one.expected) << row;
        ++row;
    }
}

void TestPreflight::whatIsNearIsNotTold()
{
    QFETCH(int, row);
    const QStringList found = told(runPreflight(saneStore(narrow[row].settings), machine(), Preflight::All));
    const QString rule = QLatin1String(narrow[row].expected) + QLatin1String(": ");
    QVERIFY2(found.filter(QRegularExpression(QLatin1Char('^') + rule)).isEmpty(),
             qPrintable(found.join(QLatin1String("; "))));
}

void TestPreflight::everyRuleHasATest()
{
    // These have tests of their own below.
    QSet<QByteArray> tested = {"interface-down", "interface-multicast", "mtu",    "ptp-client", "ptp-domain",
                               "port-range",     "never-set-up",        "format", "wrong-type"};
    for (const Trouble &trouble : troubles)
        tested << QByteArray(trouble.expected).split(':').first();
    QSet<QByteArray> names;
    for (const char *rule : preflightRuleNames()) {
        QVERIFY2(tested.contains(rule), rule);
        QVERIFY2(!names.contains(rule), rule);
        names << rule;
    }
    QCOMPARE(tested, names);
}

void TestPreflight::theManualNamesEveryRule()
{
    QFile manual(QStringLiteral(CORVEL_TEST_DATA "/../../docs/corvelctl-check.1"));
    QVERIFY(manual.open(QIODevice::ReadOnly));
    const QByteArray text = manual.readAll();
    for (const char *rule : preflightRuleNames())
        QVERIFY2(text.contains(QByteArray(".It Li ") + rule + " Pq "), rule);
    QCOMPARE(text.count(".It Li "), int(preflightRuleNames().size()));
}

void TestPreflight::machineTroubles_data()
{
    QTest::addColumn<QString>("rule");
    QTest::addColumn<int>("found");
    for (const char *rule :
         {"interface-down", "interface-multicast", "mtu", "ptp-client", "link-speed", "interface-missing"})
        QTest::newRow(rule) << QString::fromLatin1(rule)
                            << (qstrcmp(rule, "ptp-client") == 0
                                    ? 1
                                    : (qstrcmp(rule, "link-speed") == 0 ? 2 : 6));
}

void TestPreflight::machineTroubles()
{
    QFETCH(QString, rule);
    QFETCH(int, found);
    NetPicture picture = machine();
    NetInterface &card = picture.interfaces[0];
    if (rule == QLatin1String("interface-down"))
        card.up = false;
    else if (rule == QLatin1String("interface-multicast"))
        card.multicast = false;
    else if (rule == QLatin1String("mtu"))
        card.mtu = 1479;
    else if (rule == QLatin1String("ptp-client"))
        picture.noSoftwareClock = "ptp4l is not installed";
    else if (rule == QLatin1String("link-speed"))
        card.speedMbit = 1000;
    else
        card.addresses.clear();
    QCOMPARE(check({}, picture).filter(QRegularExpression(QLatin1Char('^') + rule + QLatin1Char(':'))).size(),
             found);
}

void TestPreflight::storedNumbersOutOfRange()
{
    Snapshot snapshot = saneStore();
    applyRaw(snapshot, "0/anc", "tx.dst-port", Value::ofNumber(70000));
    applyRaw(snapshot, "0", "domain", Value::ofNumber(200));
    applyRaw(snapshot, "0", "format", Value::ofNumber(1));
    QCOMPARE(told(runPreflight(snapshot, machine())),
             QStringList({QStringLiteral("port-range: 0/anc tx.dst-port"),
                          QStringLiteral("ptp-domain: 0 domain"), QStringLiteral("format: 0 format")}));
    applyRaw(snapshot, "0/anc", "tx.dst", Value::ofNumber(7)); // a number where a text belongs reads as empty
    QVERIFY(told(runPreflight(snapshot, machine())).contains(QStringLiteral("no-destination: 0/anc tx.dst")));
}

void TestPreflight::onlyFieldsInUseCount()
{
    const QStringList found = check({{"0/anc", "tx.dst=224.0.0.1:7"},
                                     {"0/anc", "tx.if=9.9.9.9"},
                                     {"0/anc", "tx.src=1.0.0.0"},
                                     {"0/anc", "tx.use=none"}});
    QCOMPARE(found, QStringList({QStringLiteral("not-in-use: 0/anc tx.use")}));
    QVERIFY(!hasTrouble(runPreflight(saneStore({{"0/anc", "tx.use=none"}}), machine())));
}

void TestPreflight::onlyUsedChannelsUnlessAllAreWanted()
{
    QCOMPARE(check({{"server", "channels=3"}}), QStringList());
    const Findings all = runPreflight(saneStore({{"server", "channels=3"}}), machine(), Preflight::All);
    QCOMPARE(told(all), QStringList({QStringLiteral("never-set-up: 1"), QStringLiteral("never-set-up: 2")}));
    QVERIFY(!hasTrouble(all));
    QCOMPARE(check({{"server", "channels=0"}, {"0/anc", "tx.dst-port=0"}}),
             QStringList()); // not offered, not looked at
}

void TestPreflight::anEmptyStoreHasNothingToSay()
{
    const QStringList found = told(runPreflight(Snapshot(), NetPicture()));
    QCOMPARE(found, QStringList({QStringLiteral("nmos-address: server nmos.ip")}));
    QCOMPARE(told(runPreflight(Snapshot(), NetPicture(), Preflight::All))
                 .filter(QStringLiteral("never-set-up"))
                 .size(),
             4);
}

void TestPreflight::onlyPtpChannelsNeedAClient()
{
    NetPicture picture = machine();
    picture.noSoftwareClock = "x";
    picture.hardwareClock = false;
    QCOMPARE(check({{"0", "clock=internal"}}, picture), QStringList());
    QCOMPARE(check({{"0", "clock=hw-ptp"}}, picture), QStringList({QStringLiteral("ptp-client: 0 clock")}));
    QCOMPARE(check({{"0", "clock=free-run"}, {"1", "clock=internal"}, {"1", "domain=3"}}, picture),
             QStringList());
    QCOMPARE(check({{"0", "gm=AC-DE-48-FF-FE-23-45-67"}}), QStringList());
    QCOMPARE(check({{"0", "gm=AC-DE-48-23-45-67"}}), QStringList());
}

void TestPreflight::anOverriddenNodeNeedsNoAddress()
{
    QCOMPARE(check({{"server", "nmos.ip="}, {"server", "nmos.override=on"}}), QStringList());
}

void TestPreflight::aCopyInTwoReceiversOfOneGroupIsToldOnce()
{
    const QStringList found = check({{"0/anc", "rx.dst=239.2.1.2:20010"}});
    QCOMPARE(found, QStringList({QStringLiteral("received-twice: 0/anc rx.dst")}));
    QCOMPARE(check({{"0/anc", "rx.dst=239.2.1.2:20012"}}), QStringList()); // one group, another port
}

void TestPreflight::singleFlowsAndFlowsBeyondTheCount()
{
    const Settings second = {{"0/audio/1", "tx.dst=239.1.1.2:20010"},
                             {"0/audio/1", "tx.use=dst,dst-port,if"}};
    QCOMPARE(check(second), QStringList()); // the channel has one flow
    Settings two = second;
    two.append(qMakePair(QByteArray("0"), QByteArray("flows=2")));
    QCOMPARE(check(two), QStringList({QStringLiteral("sent-twice: 0/audio/1 tx.dst")}));
}

void TestPreflight::valuesOfTheWrongType_data()
{
    QTest::addColumn<QByteArray>("place");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<bool>("isText");
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *place, const char *word, bool isText, const char *stored,
                        const char *expected) {
        QTest::addRow("%s %s", place, word) << QByteArray(place) << QByteArray(word) << isText
                                            << QByteArray(stored) << QString::fromUtf8(expected);
    };
    row("0/video", "tx.src-port", true, "20000",
        "0/video tx.src-port: stored as the text \"20000\", and read as if nothing were there; "
        "set it again: corvelctl set 0/video tx.src-port=20000");
    row("0", "format", true, "1080P 50fps (1920)",
        "0 format: stored as the text \"1080P 50fps (1920)\", and read as if nothing were there; "
        "set it again: corvelctl set 0 format=1080P\\ 50fps\\ \\(1920\\)");
    row("0", "flow-mode", true, "",
        "0 flow-mode: stored as the text \"\", and read as if nothing were there; "
        "set it again, or delete it: corvelctl unset 0 flow-mode");
    row("0/audio/7", "rx.dst-port", true, "70000",
        "0/audio/7 rx.dst-port: stored as the text \"70000\", and read as if nothing were there; "
        "set it again, or delete it: corvelctl unset 0/audio/7 rx.dst-port");
    row("0/anc", "rx.src", false, "7",
        "0/anc rx.src: stored as the number 7, and read as if nothing were there; "
        "set it again, or delete it: corvelctl unset 0/anc rx.src");
    row("server", "nmos.log", true, "on",
        "server nmos.log: stored as the text \"on\", and read as if nothing were there; "
        "set it again: corvelctl set server nmos.log=on");
    row("server", "nmos.port", false, "8080",
        "server nmos.port: stored as the number 8080, and read as if nothing were there; "
        "set it again: corvelctl set server nmos.port=8080");
}

void TestPreflight::valuesOfTheWrongType()
{
    QFETCH(QByteArray, place);
    QFETCH(QByteArray, word);
    QFETCH(bool, isText);
    QFETCH(QByteArray, stored);
    QFETCH(QString, expected);
    Snapshot snapshot = saneStore();
    applyRaw(snapshot, place, word, isText ? Value::ofText(stored) : Value::ofNumber(stored.toUInt()));
    QStringList found;
    for (const Finding &finding : runPreflight(snapshot, machine())) {
        if (qstrcmp(finding.rule, "wrong-type") == 0)
            found << QString::fromUtf8(finding.place + ": " + finding.reason + "; " + finding.remedy);
    }
    QCOMPARE(found, QStringList{expected});
}

// A site's own names mean nothing to us, nor do channels that the server does not offer.
void TestPreflight::onlyKnownValuesHaveAType()
{
    Snapshot snapshot = saneStore({{"server", "channels=2"}});
    snapshot.set(channelPath(0), "SiteOwn", Value::ofText("5"));
    snapshot.set("KWX\\Site", "ClockDomain", Value::ofText("5"));
    snapshot.set(channelPath(2), "ClockDomain", Value::ofText("5"));
    QCOMPARE(told(runPreflight(snapshot, machine())), QStringList());
    snapshot.set(channelPath(1), "ClockDomain", Value::ofText("5"));
    const Findings findings = runPreflight(snapshot, machine());
    QCOMPARE(told(findings), QStringList({QStringLiteral("wrong-type: 1 domain")}));
    QVERIFY(hasTrouble(findings));
}

// The number of channels itself: four are offered as long as it cannot be read.
void TestPreflight::theRemedyOfAWrongTypeIsACommand()
{
    Snapshot snapshot = saneStore();
    applyRaw(snapshot, "server", "channels", Value::ofText("2"));
    snapshot.set(channelPath(3), "ClockDomain", Value::ofText("it's"));
    const Findings findings = runPreflight(snapshot, machine());
    QCOMPARE(told(findings), QStringList({QStringLiteral("wrong-type: server channels"),
                                          QStringLiteral("wrong-type: 3 domain")}));
    QCOMPARE(findings.front().remedy, QByteArray("set it again: corvelctl set server channels=2"));
}

// Everything a thousand channels with eight flows can hold; the worst case is that all of them clash.
void TestPreflight::aThousandChannelsWithinASecond()
{
    Snapshot snapshot = saneStore({{"server", "channels=1000"}, {"0", "flows=8"}});
    const std::vector<const Row *> first = snapshot.rowsOf(channelPath(0));
    Snapshot large;
    large.set("KWX\\Config", "MaxIntChannels", Value::ofNumber(1000));
    std::vector<QByteArray> paths;
    for (int channel = 0; channel < 1000; ++channel)
        paths.push_back(channelPath(channel));
    std::sort(paths.begin(), paths.end()); // as the store has them, so that no row is moved
    for (const QByteArray &path : paths) {
        for (const Row *row : first)
            large.set(path, row->name, row->value);
    }
    QElapsedTimer timer;
    timer.start();
    const Findings findings = runPreflight(large, machine());
    qInfo("1,000 channels: %lld ms, %d findings", timer.elapsed(), int(findings.size()));
    QVERIFY(findings.size() > 5000);
    QVERIFY(findings.size() < 50000); // each against one other, not against all
}

QTEST_GUILESS_MAIN(TestPreflight)
#include "test_preflight.moc"
