// SPDX-License-Identifier: MIT
// The two sides of a comparison, on a real store and real files.
#include "ops/operand.h"

#include "freshhome.h"
#include "ops/configurations.h"
#include "ops/dump.h"
#include "ops/settings.h"
#include "rows.h"

#include <sys/stat.h>

class TestOperand : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_home.reset(); }

    void differences_data();
    void differences();
    void namesThatAreNone_data();
    void namesThatAreNone();
    void filesThatAreNone_data();
    void filesThatAreNone();
    void aFileGoesBeforeAConfigurationOfItsName();
    void aSettingsFileSaysNothingOfWhatItLacks();
    void channelsAreComparedUnderOneNumber();

private:
    QByteArray differs(const QByteArray &left, const QByteArray &right) const;

    std::unique_ptr<FreshHome> m_home;
};

namespace {

ops::Snapshot small()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(4));
    values.set(channel(0), "ClockDomain", number(1));
    values.set(channel(1), "ClockDomain", number(2));
    values.set(channel(1), "ReceiveDestinationIp", text("239.1.1.1"));
    return values;
}

} // namespace

// A store, a configuration beside it, dumps of one and of two, and a settings file; "{}" is their folder.
void TestOperand::init()
{
    m_home = std::make_unique<FreshHome>();
    QVERIFY(ops::Store().apply(ops::difference({}, small()), "small"));
    QVERIFY(ops::copyConfiguration("default", "night"));
    QVERIFY(ops::Store::open("night")->apply({{channel(3), "ClockDomain", {}, number(9)}}, "night"));
    m_home->file("one.json", ops::writeDump({{"default", small()}}));
    m_home->file("two.json", ops::writeDump({{"a", small()}, {"b", ops::Snapshot()}}));
    m_home->file("none.json", ops::writeDump({}));
    m_home->file("site.ipp", ops::exportSettings(small()));
}

QByteArray TestOperand::differs(const QByteArray &left, const QByteArray &right) const
{
    const ops::Store store;
    const auto from = ops::readOperand(QByteArray(left).replace("{}", m_home->path("").chopped(1)), store);
    const auto to = ops::readOperand(QByteArray(right).replace("{}", m_home->path("").chopped(1)), store);
    if (!from || !to)
        return from ? to.failure().text : from.failure().text;
    return told(ops::compare(*from, *to)).replace("KWX\\Internal", "").replace("\\IpConfig", "");
}

void TestOperand::differences_data()
{
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<QByteArray>("right");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *left, const char *right, const char *wanted) {
        QTest::addRow("%s %s", left, right) << QByteArray(left) << QByteArray(right) << QByteArray(wanted);
    };
    row("store", "store", "");
    row("store", "config:default", "");
    row("store", "default", "");
    row("store", "night", "3 ClockDomain - > 9");
    row("night", "store", "3 ClockDomain 9 > -");
    row("config:night", "night", "");
    row("store", "{}/one.json", "");
    row("{}/one.json", "night", "3 ClockDomain - > 9");
    row("store", "{}/one.json#default", "");
    row("store", "{}/two.json#a", "");
    row("1", "{}/two.json#b", "1 ClockDomain 2 > -|1 ReceiveDestinationIp \"239.1.1.1\" > -");
    row("store", "{}/site.ipp", "");
    row("{}/site.ipp", "store", "");
    row("{}/one.json", "{}/site.ipp", "");
    row("0", "1", "0 ClockDomain 1 > 2|0 ReceiveDestinationIp - > \"239.1.1.1\"");
    row("1", "0", "1 ClockDomain 2 > 1|1 ReceiveDestinationIp \"239.1.1.1\" > -");
    row("0", "0", "");
    row("0", "night", "");
    row("night", "3", "3 ClockDomain 9 > -");
    row("3", "night", "3 ClockDomain - > 9");
    row("{}/site.ipp", "1", "");
    row("17", "18", "there is no channel 17: the server has 4 (\"server channels\")");
    row("3", "4", "there is no channel 4: the server has 4 (\"server channels\")");
    row("3", "2", "");
}

void TestOperand::differences()
{
    QFETCH(QByteArray, left);
    QFETCH(QByteArray, right);
    QFETCH(QByteArray, wanted);
    QCOMPARE(differs(left, right), wanted);
}

void TestOperand::namesThatAreNone_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *name, const char *says) {
        QTest::newRow(*name ? name : "empty") << QByteArray(name) << QByteArray(says);
    };
    row("", "\"\" is no file, no configuration and no channel");
    row("zebra", "\"zebra\" is no file, no configuration and no channel");
    row("config:zebra", "\"zebra\" is no file, no configuration and no channel");
    row("config:", "\"\" is no file, no configuration and no channel");
    row("2/video", "\"2/video\" is no file, no configuration and no channel");
    row("*", "\"*\" is no file, no configuration and no channel");
    row("0-3", "\"0-3\" is no file, no configuration and no channel");
    row("-1", "\"-1\" is no file, no configuration and no channel");
    row("server", "\"server\" is no file, no configuration and no channel");
    row("zebra.json#a", "\"zebra.json#a\" is no file, no configuration and no channel");
}

void TestOperand::namesThatAreNone()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, says);
    QCOMPARE(differs("store", name), says);
    QCOMPARE(differs(name, "store"), says);
}

void TestOperand::filesThatAreNone_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("says");
    const auto row = [](const char *what, const char *name, const QByteArray &content, const char *says) {
        QTest::newRow(what) << QByteArray(name) << content << QByteArray(says);
    };
    const QByteArray dump = ops::writeDump({{"default", small()}});
    row("empty", "x", "", "{}/x: neither a dump nor a settings file");
    row("words", "x", "what is this\n", "{}/x: neither a dump nor a settings file");
    row("zero bytes", "x", QByteArray(100, '\0'), "{}/x: neither a dump nor a settings file");
    row("half a dump", "x", dump.left(dump.size() / 2), "{}/x: no JSON: cut short, or damaged");
    row("a changed dump", "x", QByteArray(dump).replace("239.1.1.1", "239.1.1.2"),
        "{}/x: the checksum does not fit: the file was changed or damaged after it was written");
    row("other JSON", "x", "{\"a\": 1}", "{}/x: no dump of corvelctl");
    row("a dump of two", "two.json", "",
        "{}/two.json holds several configurations; choose one, as in {}/two.json#a");
    row("not in the dump", "two.json#c", "", "{}/two.json holds no configuration \"c\"");
    row("an empty dump", "none.json", "", "{}/none.json holds no configuration \"\"");
    row("a folder", "", "", "cannot read {}/: it is a directory");
}

void TestOperand::filesThatAreNone()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, says);
    if (name == "x")
        m_home->file("x", content);
    says.replace("{}", m_home->path("").chopped(1));
    QCOMPARE(differs("{}/" + name, "store"), says);
}

void TestOperand::aFileGoesBeforeAConfigurationOfItsName()
{
    const QByteArray here = QDir::currentPath().toUtf8();
    QVERIFY(QDir::setCurrent(QString::fromUtf8(m_home->path(""))));
    QCOMPARE(differs("store", "night"), QByteArray("3 ClockDomain - > 9"));
    m_home->file("night", ops::writeDump({{"x", small()}}));
    QCOMPARE(differs("store", "night"), QByteArray());
    QCOMPARE(differs("store", "config:night"), QByteArray("3 ClockDomain - > 9"));
    QVERIFY(QDir::setCurrent(QString::fromUtf8(here)));
}

void TestOperand::aSettingsFileSaysNothingOfWhatItLacks()
{
    QVERIFY(ops::Store().apply({{channel(0), "SiteOwn", {}, number(5)},
                                {channel(0), "SignalFormat", {}, number(0x2380b232)},
                                {channel(12), "ClockDomain", {}, number(3)}},
                               "more"));
    QCOMPARE(differs("store", "{}/site.ipp"), QByteArray());
    QVERIFY(ops::Store().apply({{channel(1), "ReceiveDestinationIp", {}, text("239.9.9.9")}}, "other"));
    QCOMPARE(differs("store", "{}/site.ipp"),
             QByteArray("1 ReceiveDestinationIp \"239.9.9.9\" > \"239.1.1.1\""));
    QCOMPARE(differs("{}/site.ipp", "1"), QByteArray("1 ReceiveDestinationIp \"239.1.1.1\" > \"239.9.9.9\""));
}

// The right one's values stand under the left one's number: that is what would have to be set there.
void TestOperand::channelsAreComparedUnderOneNumber()
{
    ops::Operand left{small(), 0, false}, right{small(), 1, false};
    for (const ops::Change &change : ops::compare(left, right))
        QCOMPARE(change.path, channel(0));
    left.channel = right.channel = -1;
    QVERIFY(ops::compare(left, right).empty());
}

QTEST_GUILESS_MAIN(TestOperand)
#include "test_ops_operand.moc"
