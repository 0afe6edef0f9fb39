// SPDX-License-Identifier: MIT
//
// The commands sdp and check as a user in a shell has them.
#include "corvelctl/ctlhome.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

const char strict[] =
    "v=0\r\no=- 1 1 IN IP4 10.0.0.5\r\ns=x\r\nt=0 0\r\n"
    "m=audio 20010 RTP/AVP 97\r\nc=IN IP4 239.1.1.2/64\r\na=rtpmap:97 L24/48000/8\r\n"
    "a=ptime:1\r\na=ts-refclk:localmac=AC-DE-48-23-45-67\r\na=mediaclk:direct=0\r\na=recvonly\r\n";

QByteArray loose()
{
    return QByteArray(strict).replace("ptime:1", "ptime:125").replace("/64", "");
}

} // namespace

class TestCtlSdp : public QObject {
    Q_OBJECT

private slots:
    void checkSaysWhatIsWrong();
    void checkTakesSeveralFilesAndStandardInput();
    void checkKnowsTheChannelItIsOf();
    void checkAsJsonAndJunit();
    void fixWritesACopyAndTellsEachChange();
    void fixNeverWorksInPlace();
    void fixNamesWhatIsLeft();
    void fixHasNothingToDoTwice();
    void loadIsPlannedAndDone();
    void loadOfAPairSaysWhoWins();
    void writeMakesTheDialogsFiles();
    void badInputChangesNothing_data();
    void badInputChangesNothing();
    void preflightFindsAndRemedies();
    void preflightOfAllChannels();
    void preflightOfANamedConfiguration();
};

void TestCtlSdp::checkSaysWhatIsWrong()
{
    const CtlHome home;
    home.write("good.sdp", strict);
    home.write("bad.sdp", loose());
    const CtlResult good = home.run("sdp check good.sdp");
    QCOMPARE(good.code, 0);
    QCOMPARE(good.out, QByteArray());
    const CtlResult bad = home.run("sdp check bad.sdp");
    QCOMPARE(bad.code, 1);
    QVERIFY(bad.out.contains(
        "bad.sdp:8: error: ptime 125 means 125 ms; ST 2110-30 wants 0.125 [ptime-unit, RFC 4566 6]\n"));
    QVERIFY(bad.out.contains("bad.sdp:6: error: a group without a time to live [ttl, RFC 4566 5.7]\n"));
}

void TestCtlSdp::checkTakesSeveralFilesAndStandardInput()
{
    const CtlHome home;
    home.write("a.sdp", strict);
    home.write("b.sdp", QByteArray(strict).replace("o=- 1", "o=- 2"));
    const CtlResult both = home.run("sdp check a.sdp b.sdp");
    QCOMPARE(both.code, 1);
    QVERIFY(both.out.startsWith("b.sdp:5: error: 239.1.1.2:20010 is in a.sdp:5 too [stream-twice]\n"));
    QVERIFY(home.run("sdp check -", {}, loose()).out.startsWith("-:6: error: "));
}

void TestCtlSdp::checkKnowsTheChannelItIsOf()
{
    const CtlHome home;
    home.write("a.sdp", strict);
    QCOMPARE(home.run("set 2 channels=4").code, 0);
    QCOMPARE(home.run("sdp check a.sdp --audio-channels 8").code, 0);
    const CtlResult other = home.run("sdp check a.sdp --of 2");
    QCOMPARE(other.code, 1);
    QVERIFY(other.out.contains("the text says 8 channels, the flow has 4"));
}

void TestCtlSdp::checkAsJsonAndJunit()
{
    const CtlHome home;
    home.write("bad.sdp", loose());
    const QJsonObject all = QJsonDocument::fromJson(home.run("--json sdp check bad.sdp").out).object();
    const QJsonArray items = all.value(QStringLiteral("items")).toArray();
    QVERIFY(items.size() >= 2);
    QCOMPARE(items.at(0).toObject().value(QStringLiteral("place")).toString(), QStringLiteral("bad.sdp:6"));
    QCOMPARE(items.at(0).toObject().value(QStringLiteral("clause")).toString(),
             QStringLiteral("RFC 4566 5.7"));
    const CtlResult junit = home.run("sdp check bad.sdp --junit");
    QCOMPARE(junit.code, 1);
    QVERIFY(junit.out.startsWith("<?xml") &&
            junit.out.contains("<testcase classname=\"sdp check\" name=\"ttl\">"));
}

void TestCtlSdp::fixWritesACopyAndTellsEachChange()
{
    const CtlHome home;
    home.write("bad.sdp", loose());
    const CtlResult dry = home.run("sdp fix bad.sdp -o good.sdp --dry-run");
    QCOMPARE(home.read("good.sdp"), QByteArray());
    const CtlResult fixed = home.run("sdp fix bad.sdp -o good.sdp --ttl 32");
    QCOMPARE(fixed.code, 0);
    QCOMPARE(fixed.out, QByteArray("bad.sdp:6: c=IN IP4 239.1.1.2 -> c=IN IP4 239.1.1.2/32\nbad.sdp:8: "
                                   "a=ptime:125 -> a=ptime:0.125\n"));
    QCOMPARE(dry.out, QByteArray(fixed.out).replace("/32", "/64"));
    QCOMPARE(home.read("bad.sdp"), loose());
    QCOMPARE(home.run("sdp check good.sdp").code, 0);
    const CtlResult piped = home.run("sdp fix - -o - --ttl 32", {}, loose());
    QCOMPARE(piped.out, home.read("good.sdp"));
    QVERIFY(piped.err.contains("a=ptime:0.125"));
}

void TestCtlSdp::fixNeverWorksInPlace()
{
    const CtlHome home;
    home.write("bad.sdp", loose());
    QVERIFY(QFile::link(home.path("bad.sdp"), home.path("link.sdp")));
    for (const char *words :
         {"sdp fix bad.sdp -o bad.sdp", "sdp fix bad.sdp -o ./bad.sdp", "sdp fix bad.sdp -o link.sdp"}) {
        const CtlResult refused = home.run(words);
        QCOMPARE(refused.code, 2);
        QVERIFY(refused.err.contains("needs a name of its own"));
    }
    QCOMPARE(home.read("bad.sdp"), loose());
}

void TestCtlSdp::fixNamesWhatIsLeft()
{
    const CtlHome home;
    home.write("bad.sdp", QByteArray(strict).replace("a=ts-refclk:localmac=AC-DE-48-23-45-67\r\n", ""));
    const CtlResult left = home.run("sdp fix bad.sdp -o good.sdp");
    QCOMPARE(left.code, 1);
    QVERIFY(
        left.err.contains("left: bad.sdp:5: error: no reference clock [refclk-missing, ST 2110-10 8.2]\n"));
    QCOMPARE(home.run("sdp fix bad.sdp -o good.sdp --ptp acde48234567:5").code, 0);
    QVERIFY(home.read("good.sdp").contains("a=ts-refclk:ptp=IEEE1588-2008:ac-de-48-FF-FE-23-45-67:5\r\n"));
    QCOMPARE(home.run("sdp fix bad.sdp -o good.sdp --ptp traceable --mac AC-DE-48-23-45-67").code, 2);
}

void TestCtlSdp::fixHasNothingToDoTwice()
{
    const CtlHome home;
    home.write("good.sdp", strict);
    const CtlResult again = home.run("sdp fix good.sdp -o copy.sdp");
    QCOMPARE(again.code, 0);
    QCOMPARE(again.out, QByteArray());
    QCOMPARE(home.read("copy.sdp"), QByteArray(strict));
    QCOMPARE(home.run("--fail-if-none sdp fix good.sdp -o copy.sdp").code, 5);
}

void TestCtlSdp::loadIsPlannedAndDone()
{
    const CtlHome home;
    home.write("in.sdp", strict);
    const QByteArray before = home.rows();
    const CtlResult dry = home.run("sdp load in.sdp 2 --dry-run");
    QCOMPARE(dry.code, 0);
    QVERIFY(dry.err.contains("in.sdp:8: ignored: the packet time is chosen in the channel, not read"));
    QVERIFY(dry.err.contains("locks of the dialog do not hold here"));
    QCOMPARE(home.rows(), before);
    const CtlResult done = home.run("sdp load in.sdp 2");
    QCOMPARE(done.code, 0);
    QCOMPARE(done.out, dry.out);
    QVERIFY(done.out.contains("2/audio/0 rx.dst: (absent) -> 239.1.1.2\n"));
    QCOMPARE(home.run("get 2/audio/0 rx.dst-port").out, QByteArray("20010\n"));
    QCOMPARE(home.run("sdp load in.sdp 2").out, QByteArray());
}

void TestCtlSdp::loadOfAPairSaysWhoWins()
{
    const CtlHome home;
    const QByteArray video = "m=video 20000 RTP/AVP 96\nc=IN IP4 239.1.1.1/64\na=mid:a\na=recvonly\n";
    home.write("pair.sdp", "v=0\na=group:DUP a b\n" + video +
                               QByteArray(video).replace("239.1", "239.2").replace("mid:a", "mid:b"));
    const CtlResult dry = home.run("sdp load pair.sdp 0 --dry-run");
    QVERIFY(dry.err.contains("pair.sdp:7: warning: 0/video rx.dst: 239.2.1.1 wins over 239.1.1.1 of line 3; "
                             "of a pair the last leg stays"));
    QVERIFY(dry.out.contains("0/video rx.dst: (absent) -> 239.2.1.1\n"));
}

void TestCtlSdp::writeMakesTheDialogsFiles()
{
    const CtlHome home;
    QCOMPARE(home.run("set 2/video rx.dst=239.1.1.1:20000 tx.dst=239.2.1.1:30000").code, 0);
    const CtlResult shown = home.run("sdp write 2/video --side rx");
    QCOMPARE(shown.code, 0);
    QVERIFY(shown.out.contains("m=video 20000 RTP/AVP 100\nc=IN IP4 239.1.1.1\n"));
    QCOMPARE(home.run("sdp write 2 -o cam.sdp").code, 0);
    QVERIFY(home.read("cam.rx.sdp").contains("c=IN IP4 239.1.1.1\n"));
    QVERIFY(home.read("cam.tx.sdp").contains("c=IN IP4 239.2.1.1\n"));
    QCOMPARE(home.read("cam.tx.sdp").count("m=audio"), 1);
    QCOMPARE(home.run("sdp write 2 -o other --flows 3").code, 0);
    QCOMPARE(home.read("other.tx.sdp").count("m=audio"), 3);
    QCOMPARE(home.run("sdp write server").code, 2);
}

void TestCtlSdp::badInputChangesNothing_data()
{
    QTest::addColumn<QString>("words");
    for (const char *words :
         {"sdp check", "sdp check absent.sdp", "sdp check .", "sdp check /dev/zero", "sdp fix good.sdp",
          "sdp fix empty.sdp -o x.sdp", "sdp fix good.sdp -o x.sdp --ttl 256",
          "sdp fix good.sdp -o x.sdp --ptime 125", "sdp load good.sdp", "sdp load good.sdp 65536",
          "sdp load absent.sdp 1", "sdp load . 1", "sdp write", "sdp write 2/vidio",
          "sdp write 2 --side both", "sdp nonsense", "check 7"})
        QTest::newRow(words) << QString::fromLatin1(words);
}

void TestCtlSdp::badInputChangesNothing()
{
    QFETCH(QString, words);
    const CtlHome home;
    home.write("good.sdp", strict);
    home.write("empty.sdp", "v=0\n");
    const QByteArray before = home.rows();
    const CtlResult result = home.run(words.toLatin1().constData());
    QVERIFY2(result.code == 2 || result.code == 3, result.err.constData());
    QVERIFY(result.err.startsWith("corvelctl: "));
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(home.rows(), before);
    QCOMPARE(home.read("x.sdp"), QByteArray());
}

void TestCtlSdp::preflightFindsAndRemedies()
{
    const CtlHome home;
    QCOMPARE(home.run("set server nmos.override=on").code, 0);
    QCOMPARE(home.run("check").code, 0);
    QCOMPARE(home.run("set 0/anc tx.dst=224.0.0.9:20020 tx.if=127.0.0.1 tx.use=dst,dst-port,if").code, 0);
    const CtlResult found = home.run("check");
    QCOMPARE(found.code, 1);
    QCOMPARE(found.out, QByteArray("0/anc tx.dst: warning: 224.0.0.9 is in a block for network control: "
                                   "switches flood it [control-group, RFC 5771]\n"
                                   "    use a group of your own, 239.0.0.0 to 239.255.255.255\n"));
    QCOMPARE(home.run("set 0/anc tx.dst=239.1.1.1 tx.if=192.0.2.77").code, 0);
    QVERIFY(home.run("check").out.contains(
        "no interface of this machine has the address 192.0.2.77 [interface-missing]"));
    const QJsonObject item = QJsonDocument::fromJson(home.run("--lines check").out).object();
    QCOMPARE(item.value(QStringLiteral("rule")).toString(), QStringLiteral("interface-missing"));
    QVERIFY(home.run("check --junit").out.contains("failures=\"1\""));
}

void TestCtlSdp::preflightOfAllChannels()
{
    const CtlHome home;
    QCOMPARE(home.run("set server nmos.override=on channels=3").code, 0);
    const CtlResult all = home.run("check --all");
    QCOMPARE(all.code, 0); // notes are no trouble
    QCOMPARE(all.out.count("[never-set-up]"), 3);
    QCOMPARE(home.run("check").out, QByteArray());
}

void TestCtlSdp::preflightOfANamedConfiguration()
{
    const CtlHome home;
    QCOMPARE(home.run("set server nmos.override=on").code, 0);
    QCOMPARE(home.run("config new night").code, 0);
    QCOMPARE(home.run("-c night set 0/anc tx.use=dst-port").code, 0);
    QVERIFY(
        home.run("-c night check").out.contains("0/anc tx.dst-port: error: port 0 is in use [port-zero]"));
    QCOMPARE(home.run("check").code, 0);
}

QTEST_GUILESS_MAIN(TestCtlSdp)
#include "test_ctl_sdp.moc"
