// SPDX-License-Identifier: MIT
// What two commands must agree about: show and get in words and in JSON, get and list, diff and what was
// done, a change and the undo of it, and values of the wrong type wherever they are looked at.
#include "ctlhome.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

class TestCtlAgree : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_home.reset(); }

    void linesAndDocumentHoldTheSameItems_data();
    void linesAndDocumentHoldTheSameItems();
    void showSaysTheSameInJson();
    void getSaysTheSameInJson_data();
    void getSaysTheSameInJson();
    void listKnowsWhatGetKnows();
    void aCopyIsNoDifference_data();
    void aCopyIsNoDifference();
    void undoOfEveryCommandIsExact_data();
    void undoOfEveryCommandIsExact();
    void aTextForANumberIsSeenEverywhere_data();
    void aTextForANumberIsSeenEverywhere();
    void whatCheckAdvisesHelps();
    void diffTurnsRoundWithItsSides();
    void aServerOfNoChannels_data();
    void aServerOfNoChannels();
    void textsOfAnyBytesComeBack_data();
    void textsOfAnyBytesComeBack();

private:
    CtlResult ctl(const QByteArray &words, const QStringList &more = {}) const
    {
        return m_home->run(words.constData(), more);
    }
    QJsonArray items(const QByteArray &words) const;
    void storeText(const char *name, const char *text);

    std::unique_ptr<CtlHome> m_home;
};

// One command, or most of the time would go into this.
void TestCtlAgree::init()
{
    m_home = std::make_unique<CtlHome>();
    QCOMPARE(m_home
                 ->run("set - --force -q", {},
                       "server channels=3 nmos.override=on\n"
                       "0 type=SMPTE-2110 format=1080p50 clock=sw-ptp domain=127 channels=8 flows=2\n"
                       "0/video rx.dst=239.1.1.1:20000 rx.use=dst,port\n"
                       "0/video tx.dst=239.2.1.1:20000 tx.if=10.0.0.1 tx.use=all\n"
                       "0/audio/1 tx.dst=239.2.1.2:20010 tx.use=dst,port\n"
                       "\"KWX\\Site\" Name=here Count:=7\n")
                 .code,
             0);
}

// As a program stores it that knows nothing of types.
void TestCtlAgree::storeText(const char *name, const char *text)
{
    QCOMPARE(m_home
                 ->runProgram(CtlHome::program("rkcfg"),
                              {QStringLiteral("set-text"), QStringLiteral("KWX\\Internal0\\IpConfig"),
                               QLatin1String(name), QLatin1String(text)})
                 .code,
             0);
}

QJsonArray TestCtlAgree::items(const QByteArray &words) const
{
    return QJsonDocument::fromJson(ctl(words + " --json").out)
        .object()
        .value(QStringLiteral("items"))
        .toArray();
}

void TestCtlAgree::linesAndDocumentHoldTheSameItems_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command :
         {"show", "show 0/audio", "get 0/video", "list", "history", "diff 0 1", "config list", "check --all",
          "set 1 domain=3 -n", "copy 0 1 -n", "undo -n", "list KWX\\Nothing"})
        QTest::newRow(command) << QByteArray(command);
}

void TestCtlAgree::linesAndDocumentHoldTheSameItems()
{
    QFETCH(QByteArray, command);
    const CtlResult document = ctl(command + " --json"), lines = ctl(command + " --lines"),
                    words = ctl(command);
    QCOMPARE(document.code, words.code);
    QCOMPARE(lines.code, words.code);
    const QJsonObject whole = QJsonDocument::fromJson(document.out).object();
    QCOMPARE(whole.value(QStringLiteral("schema")).toInt(), 1);
    QVERIFY(command.contains(whole.value(QStringLiteral("command")).toString().toUtf8()));
    QVERIFY(whole.value(QStringLiteral("items")).isArray());
    QJsonArray each;
    for (const QByteArray &line : lines.out.split('\n')) {
        if (!line.isEmpty())
            each.append(QJsonDocument::fromJson(line).object());
    }
    QCOMPARE(each, whole.value(QStringLiteral("items")).toArray());
    QCOMPARE(each.isEmpty(), words.out.isEmpty());
}

void TestCtlAgree::showSaysTheSameInJson()
{
    const QJsonArray channels = items("show");
    const QByteArrayList rows = ctl("show").out.split('\n').mid(1); // without the head
    QCOMPARE(channels.size(), 3);
    for (int number = 0; number < channels.size(); ++number) {
        const QJsonObject channel = channels[number].toObject();
        QCOMPARE(channel.value(QStringLiteral("channel")).toInt(), number);
        for (const char *word : {"type", "format", "clock"})
            QVERIFY(rows[number].contains(channel.value(QLatin1String(word)).toString().toUtf8()));
        QVERIFY(rows[number].endsWith(QByteArray::number(channel.value(QStringLiteral("flows")).toInt())));
        for (const char *word : {"type", "format", "clock", "domain", "gm"}) {
            const QByteArray alone = ctl("get " + QByteArray::number(number) + ' ' + word).out.trimmed();
            QCOMPARE(channel.value(QLatin1String(word)).toString().toUtf8(), alone.isEmpty() ? "-" : alone);
        }
        for (const auto &element : channel.value(QStringLiteral("elements")).toArray()) {
            const QByteArray place = element.toObject().value(QStringLiteral("place")).toString().toUtf8();
            QCOMPARE(items("show " + place), QJsonArray{element});
        }
    }
}

void TestCtlAgree::getSaysTheSameInJson_data()
{
    QTest::addColumn<QByteArray>("place");
    for (const char *place : {"0", "0/video", "0/audio", "0/audio/1", "0/anc", "1", "server", "KWX\\Site"})
        QTest::newRow(place) << QByteArray(place);
}

void TestCtlAgree::getSaysTheSameInJson()
{
    QFETCH(QByteArray, place);
    QByteArray lines;
    for (const auto &item : items("get " + place)) {
        const QJsonObject value = item.toObject();
        const QByteArray key = value.value(QStringLiteral("key")).toString().toUtf8();
        const bool number = value.value(QStringLiteral("type")).toString() == QLatin1String("number");
        QCOMPARE(number, value.contains(QStringLiteral("words")));
        const QJsonValue said = value.value(number ? QStringLiteral("words") : QStringLiteral("value"));
        lines += key.mid(key.lastIndexOf(' ') + 1) + '=' + said.toString().toUtf8() + '\n';
    }
    QCOMPARE(ctl("get " + place).out, lines);
}

void TestCtlAgree::listKnowsWhatGetKnows()
{
    const QJsonArray all = items("list");
    QVERIFY(all.size() > 20);
    QCOMPARE(ctl("list").out.count('\n'), all.size());
    for (const auto &item : all) {
        const QJsonObject value = item.toObject();
        const QString path = value.value(QStringLiteral("path")).toString();
        const QString name = value.value(QStringLiteral("name")).toString();
        QCOMPARE(QJsonDocument::fromJson(ctl("get --json", {path, name}).out)
                     .object()
                     .value(QStringLiteral("items"))
                     .toArray(),
                 QJsonArray{item});
    }
}

void TestCtlAgree::aCopyIsNoDifference_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("difference");
    QTest::newRow("of everything") << QByteArray("copy 0 1 -y") << QByteArray();
    QTest::newRow("with a step") << QByteArray("copy 0 1 -y --step rx.dst=1")
                                 << QByteArray("0/video rx.dst: 239.1.1.1 -> 239.1.1.2\n");
    QTest::newRow("of one field") << QByteArray("copy 0 2 -y --fields domain") << QByteArray("-");
}

void TestCtlAgree::aCopyIsNoDifference()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, difference);
    QCOMPARE(ctl(command).code, 0);
    const CtlResult diff = ctl(command.contains(" 2 ") ? "diff 0 2" : "diff 0 1");
    QCOMPARE(diff.code, difference.isEmpty() ? 0 : 1);
    if (difference != "-")
        QCOMPARE(diff.out, difference);
    else
        QVERIFY(!diff.out.contains("domain") && diff.out.contains("0 clock: sw-ptp -> (absent)\n"));
}

void TestCtlAgree::undoOfEveryCommandIsExact_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command :
         {"set 0 domain=3", "set 0-2/audio/* rx.use=all", "unset 0/video rx.dst", "unset 0 --all",
          "copy 0 1-2 -y --step dst=1", "flows 2 --from 239.3.1.1:5004 --count 8 --side both",
          "table import --apply table.csv", "restore -y other.json", "ipp import other.ipp",
          "sdp load other.sdp 2"})
        QTest::newRow(command) << QByteArray(command);
}

// Undo, and redo of it, each with the other's bytes; what was printed is what diff prints.
void TestCtlAgree::undoOfEveryCommandIsExact()
{
    QFETCH(QByteArray, command);
    m_home->write("table.csv", "channel,element,rx.dst,domain\n0,,,9\n2,video,239.9.9.9,\n");
    m_home->write("other.sdp", ctl("sdp write 0/video").out);
    QCOMPARE(ctl("set 0/video rx.dst=239.7.7.7 -q").code, 0);
    QCOMPARE(ctl("dump other.json").code, 0);
    QCOMPARE(ctl("ipp export other.ipp -q").code, 0);
    QCOMPARE(ctl("undo -q").code, 0);
    const QByteArray before = m_home->rows();
    QCOMPARE(ctl("dump before.json").code, 0);
    const CtlResult done = ctl(command);
    QCOMPARE(done.code, 0);
    const QByteArray after = m_home->rows();
    QVERIFY(after != before);
    QCOMPARE(ctl("diff before.json store").out, done.out);
    QCOMPARE(ctl("undo -q").code, 0);
    QCOMPARE(m_home->rows(), before);
    QCOMPARE(ctl("redo -q").code, 0);
    QCOMPARE(m_home->rows(), after);
}

void TestCtlAgree::aTextForANumberIsSeenEverywhere_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("out");
    const auto row = [](const char *command, const char *out) {
        QTest::newRow(command) << QByteArray(command) << QByteArray(out);
    };
    row("get 0 domain", "\"5\"\n");
    row("get 0 domain clock", "domain=\"5\"\nclock=sw-ptp\n");
    row("get KWX\\Internal0\\IpConfig ClockDomain", "\"5\"\n");
    row("list --types KWX\\Internal0\\IpConfig", "KWX\\Internal0\\IpConfig\tClockDomain\ttext\t5\n");
    row("set 0 domain=5 -n", "0 domain: \"5\" -> 5\n");
    row("unset 0 domain -n", "0 domain: \"5\" -> (absent)\n");
    row("diff before.json store", "0 domain: 127 -> \"5\"\n");
    row("show 0", "domain    \"5\"\n");
    row("table export -", ",(text)5,");
    row("dump", "[\"ClockDomain\", \"5\"]");
    row("check", "0 domain: error: stored as the text \"5\", and read as if nothing were there [wrong-type]\n"
                 "    set it again: corvelctl set 0 domain=5\n");
}

void TestCtlAgree::aTextForANumberIsSeenEverywhere()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, out);
    QCOMPARE(ctl("dump before.json").code, 0);
    storeText("ClockDomain", "5");
    const QByteArray printed = ctl(command).out;
    QVERIFY2(command.startsWith("get") || command.contains("-n") || command.startsWith("diff")
                 ? printed == out
                 : printed.contains(out),
             printed.constData());
}

void TestCtlAgree::whatCheckAdvisesHelps()
{
    storeText("SignalFormat", "1080P 50fps (1920)");
    const QByteArray advice = ctl("check").out;
    const int at = advice.indexOf("corvelctl set ");
    QVERIFY2(at > 0, advice.constData());
    const QByteArray command = advice.mid(at, advice.indexOf('\n', at) - at);
    const CtlResult done = m_home->runProgram(
        QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QLatin1String("PATH=" CORVEL_BIN_DIR ":$PATH; ") +
                                                              QString::fromUtf8(command)});
    QCOMPARE(done.out, QByteArray("0 format: \"1080P 50fps (1920)\" -> 1080P 50fps (1920)\n"));
    QVERIFY(!ctl("check").out.contains("wrong-type"));
}

void TestCtlAgree::diffTurnsRoundWithItsSides()
{
    QCOMPARE(ctl("dump before.json").code, 0);
    QCOMPARE(ctl("set 0 domain=5 gm=00-1D-C1-12-34-56 -q").code, 0);
    QCOMPARE(ctl("unset 0 clock -q").code, 0);
    QCOMPARE(
        ctl("diff before.json store").out,
        QByteArray("0 domain: 127 -> 5\n0 gm: (absent) -> 00-1D-C1-12-34-56\n0 clock: sw-ptp -> (absent)\n"));
    QCOMPARE(
        ctl("diff store before.json").out,
        QByteArray("0 domain: 5 -> 127\n0 gm: 00-1D-C1-12-34-56 -> (absent)\n0 clock: (absent) -> sw-ptp\n"));
}

void TestCtlAgree::aServerOfNoChannels_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("out");
    const auto row = [](const char *command, int code, const char *out) {
        QTest::newRow(command) << QByteArray(command) << code << QByteArray(out);
    };
    row("show", 0, "Channel  Type  Format  Clock  Video receives  Video sends  Flows\n");
    row("show --lines", 0, "");
    row("show *", 0, "");
    row("set * domain=1", 0, "");
    row("set * domain=1 --fail-if-none", 5, "");
    row("set 1 domain=1", 2, "");
    row("get server channels", 0, "0\n");
    row("copy * 1 -y", 2, "");
    row("table import --apply empty.csv", 0, "");
    row("check", 0, "");
}

void TestCtlAgree::aServerOfNoChannels()
{
    QFETCH(QByteArray, command);
    QFETCH(int, code);
    QFETCH(QByteArray, out);
    QCOMPARE(ctl("set server channels=0 -q").code, 0);
    QCOMPARE(ctl("table export empty.csv").code, 0);
    QCOMPARE(m_home->read("empty.csv").count('\n'), 1);
    const CtlResult result = ctl(command);
    QCOMPARE(result.out, out);
    QCOMPARE(result.code, code);
}

void TestCtlAgree::textsOfAnyBytesComeBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("another alphabet") << QString::fromUtf8("\u0416\u4e2d") << QByteArray("\u0416\u4e2d");
    QTest::newRow("beyond the first plane") << QString::fromUtf8("\U0001f3a5") << QByteArray("\U0001f3a5");
    QTest::newRow("a line end") << QStringLiteral("a\nb") << QByteArray("a\\x0ab");
    QTest::newRow("an escape") << QStringLiteral("a\x1b[31mb") << QByteArray("a\\x1b[31mb");
    QTest::newRow("a tab") << QStringLiteral("a\tb") << QByteArray("a\\x09b");
    QTest::newRow("quotes") << QStringLiteral("it's \"so\"") << QByteArray("it's \"so\"");
    QTest::newRow("empty") << QString() << QByteArray();
    QTest::newRow("long") << QString(20000, QLatin1Char('x')) << QByteArray(20000, 'x');
}

void TestCtlAgree::textsOfAnyBytesComeBack()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, printed);
    QCOMPARE(ctl("set 0 --force", {QLatin1String("SiteOwn=") + text}).code, 0);
    QCOMPARE(ctl("get 0 SiteOwn").out, printed + '\n');
    QCOMPARE(items("get 0 SiteOwn")[0].toObject().value(QStringLiteral("value")).toString(), text);
    const QByteArray rows = m_home->rows();
    QCOMPARE(ctl("dump kept.json").code, 0);
    QCOMPARE(ctl("unset 0 --force SiteOwn -q").code, 0);
    QCOMPARE(ctl("restore -y -q kept.json").code, 0);
    QCOMPARE(m_home->rows(), rows);
}

QTEST_GUILESS_MAIN(TestCtlAgree)
#include "test_ctl_agree.moc"
