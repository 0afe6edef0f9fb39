// SPDX-License-Identifier: MIT
// Every command that changes something, first with --dry-run: it prints what the real run prints and what
// diff then finds between before and after, ends with the same code, and changes nothing. The same for a
// named configuration, while that of the server stays as it is; and each change is one step that can be taken
// back.
#include "ctlhome.h"

class TestCtlDryRun : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void isWhatWouldHappen_data();
    void isWhatWouldHappen();
    void namesTheConfigurationsToo_data();
    void namesTheConfigurationsToo();
    void keepsWhatItDoesNotUnderstand_data();
    void keepsWhatItDoesNotUnderstand();

private:
    CtlResult ctl(const QByteArray &words, const QByteArray &input = QByteArray()) const
    {
        return m_home.run(words.constData(), {}, input);
    }
    QByteArray dump(const QByteArray &configuration) const
    {
        return ctl("-c " + configuration + " dump").out;
    }
    QByteArray everything() const { return ctl("dump --all").out + ctl("config list").out; }

    CtlHome m_home;
};

namespace {

struct Change {
    const char *command;
    const char *input;
    int code;
    int values; // how many are changed
};

// clang-format off
const Change kChanges[] = {
    {"set 0/video rx.dst=239.9.9.9:5004 rx.use=all",        "", 0, 3},
    {"set * domain=5",                                      "", 0, 3},
    {"set 0 domain=127",                                    "", 0, 0},
    {"set 0 domain=127 --fail-if-none",                     "", 5, 0},
    {"set 1 Own:=7 --force",                                "", 0, 1},
    {"set KWX\\Site Name=there --force",                    "", 0, 1},
    {"set server channels=4",                               "", 0, 1},
    {"set 0 flows=4",                                       "", 0, 2},
    {"set -",                                               "0 domain=1\n# no line\n\n1/video tx.dst=239.4.4.4:20\n", 0, 3},
    {"unset 0/video rx.dst rx.use",                         "", 0, 2},
    {"unset 0 --all",                                       "", 0, 11},
    {"unset KWX\\Site --all",                               "", 0, 1},
    {"unset 2 domain",                                      "", 0, 0},
    {"unset 2 domain --fail-if-none",                       "", 5, 0},
    {"copy 0 1-2 --step dst=0.0.1.0 -y",                    "", 0, 22},
    {"copy 0 2 --fields domain,clock -y",                   "", 0, 2},
    {"copy 1 1 -y",                                         "", 2, 0},
    {"flows 1 --from 239.5.0.1:5004 --count 2",             "", 0, 10},
    {"flows 0 --from 239.2.0.1:5004 --count 2",             "", 0, 6},
    {"table import other.csv --apply",                      "", 0, 3},
    {"table import bad.csv --apply",                        "", 2, 0},
    {"restore other.json -y",                               "", 0, 13},
    {"restore same.json -y",                                "", 0, 0},
    {"restore same.json -y --fail-if-none",                 "", 5, 0},
    {"sdp load camera.sdp 1",                               "", 0, 3},
    {"sdp load camera.sdp 1 --fail-if-none",                "", 0, 3},
    {"undo",                                                "", 0, 1},
    {"undo --batch 2",                                      "", 0, 8},
    {"undo --since 1d",                                     "", 0, 13},
    {"undo --since 0s --fail-if-none",                      "", 5, 0},
    {"redo --fail-if-none",                                 "", 5, 0},
};

// What makes, renames and deletes whole configurations.
const struct { const char *command; int code; const char *names; } kConfigurations[] = {
    {"config new late",             0, "* default\n  late\n  night\n"},
    {"config new night",            2, "* default\n  night\n"},
    {"config copy default late",    0, "* default\n  late\n  night\n"},
    {"config copy late default",    2, "* default\n  night\n"},
    {"config rename night late",    0, "* default\n  late\n"},
    {"config rename default late",  2, "* default\n  night\n"},
    {"config delete night -y",      0, "* default\n"},
    {"config delete default -y",    2, "* default\n  night\n"},
    {"config use night",            0, "  default\n* night\n"},
    {"config use late",             2, "* default\n  night\n"},
};
// clang-format on

const char *const kServer[] = {
    "set server channels=3",
    "set 0 type=SMPTE-2110 format=1080p50 clock=sw-ptp domain=127 channels=8 flows=2",
    "set 0/video rx.dst=239.1.1.1:20000 rx.use=dst,port",
    "set KWX\\Site --force Name=here",
};

} // namespace

void TestCtlDryRun::initTestCase()
{
    for (const char *line : kServer)
        QCOMPARE(ctl(line).code, 0);
    QCOMPARE(ctl("config copy default night").code, 0);
    QCOMPARE(ctl("dump same.json").code, 0);
    QCOMPARE(ctl("config new empty").code, 0);
    QCOMPARE(ctl("-c empty set 0 domain=3").code, 0);
    QCOMPARE(ctl("-c empty dump other.json").code, 0);
    QCOMPARE(ctl("config delete empty -y").code, 0);
    m_home.write("other.csv", "channel,element,domain,tx.dst,tx.dst-port\n0,,9,,\n1,video,,239.6.6.6,6\n");
    m_home.write("bad.csv", "channel,domain\n0,9\n1,128\n");
    m_home.write("camera.sdp", "v=0\no=- 1 1 IN IP4 10.0.0.5\ns=-\nt=0 0\nm=video 20000 RTP/AVP 96\n"
                               "c=IN IP4 239.7.7.7/64\na=rtpmap:96 raw/90000\na=recvonly\n");
}

void TestCtlDryRun::isWhatWouldHappen_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QByteArray>("configuration");
    for (const QByteArray &configuration : {QByteArray("default"), QByteArray("night")}) {
        int row = 0;
        for (const Change &change : kChanges) {
            if (configuration == "default" || row % 3 == 0) // each family once in another one
                QTest::addRow("%s: %s", configuration.constData(), change.command) << row << configuration;
            ++row;
        }
    }
}

void TestCtlDryRun::isWhatWouldHappen()
{
    QFETCH(int, row);
    QFETCH(QByteArray, configuration);
    const Change &change = kChanges[row];
    const QByteArray command = "-c " + configuration + ' ' + change.command;
    const QByteArray other = configuration == "night" ? "default" : "night";
    const QByteArray before = dump(configuration), beside = dump(other);
    m_home.write("before.json", before);

    const CtlResult dry = ctl("-n " + command, change.input);
    QCOMPARE(dry.code, change.code);
    QCOMPARE(dump(configuration), before);
    const CtlResult real = ctl(command, change.input);
    QCOMPARE(real.code, dry.code);
    QCOMPARE(real.out, dry.out);
    QCOMPARE(dump(other), beside);
    QCOMPARE(ctl("config list").out, QByteArray("* default\n  night\n"));

    const CtlResult difference = ctl("diff before.json config:" + configuration);
    QCOMPARE(difference.out, dry.out);
    QCOMPARE(difference.code, change.values > 0 ? 1 : 0);
    QCOMPARE(dry.out.count('\n'), change.values);
    if (change.values == 0)
        return;
    const bool undone = QByteArray(change.command).startsWith("undo");
    QCOMPARE(ctl("-c " + configuration + (undone ? " restore before.json -y -q" : " undo -q")).code, 0);
    QCOMPARE(dump(configuration), before);
}

void TestCtlDryRun::namesTheConfigurationsToo_data()
{
    QTest::addColumn<int>("row");
    int row = 0;
    for (const auto &change : kConfigurations)
        QTest::newRow(change.command) << row++;
}

void TestCtlDryRun::namesTheConfigurationsToo()
{
    QFETCH(int, row);
    const auto &change = kConfigurations[row];
    CtlHome home;
    QCOMPARE(home.run("set 0 domain=1").code, 0);
    QCOMPARE(home.run("config copy default night").code, 0);
    const CtlResult dry = home.run((QByteArray("-n ") + change.command).constData());
    QCOMPARE(dry.code, change.code);
    QCOMPARE(home.run("config list").out, QByteArray("* default\n  night\n"));
    const CtlResult real = home.run(change.command);
    QCOMPARE(real.code, change.code);
    QCOMPARE(real.out, dry.out);
    QCOMPARE(home.run("config list").out, QByteArray(change.names));
    if (change.code != 0)
        QCOMPARE(real.err, dry.err);
}

void TestCtlDryRun::keepsWhatItDoesNotUnderstand_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command :
         {"set 0 domain=x", "set 0 domain=1 clock=zebra", "set 0 domain=1 zebra=2", "unset 0 domain zebra",
          "copy 0 1 --step dst=zebra -y", "flows 0 --from zebra", "table import bad.csv --apply",
          "restore bad.csv -y", "ipp import bad.csv", "sdp load nowhere.sdp 0", "undo --batch 99",
          "undo --since zebra", "config copy default default", "set 0 domain=1 -c zebra"})
        QTest::newRow(command) << QByteArray(command);
}

void TestCtlDryRun::keepsWhatItDoesNotUnderstand()
{
    QFETCH(QByteArray, command);
    const QByteArray before = everything();
    const CtlResult dry = ctl("-n " + command), real = ctl(command);
    QCOMPARE(dry.code, 2);
    QCOMPARE(real.code, 2);
    QCOMPARE(dry.err, real.err);
    QCOMPARE(dry.out + real.out, QByteArray());
    QCOMPARE(everything(), before);
}

QTEST_GUILESS_MAIN(TestCtlDryRun)
#include "test_ctl_dryrun.moc"
