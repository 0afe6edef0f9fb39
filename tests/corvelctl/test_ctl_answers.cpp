// SPDX-License-Identifier: MIT
// What each command answers on one server that everybody starts from: output, messages and exit status.
#include "ctlhome.h"

struct Case {
    const char *command;
    int code;
    const char *out;
    const char *err;
};

class TestCtlAnswers : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void looking_data();
    void looking();
    void wouldChange_data();
    void wouldChange();
    void words_data();
    void words();

private:
    CtlHome m_home;
    QByteArray m_rows;
};

namespace {

// The server: two channels, one set up, and a key of the site's own.
const char *const kServer[] = {
    "set server channels=2 nmos.override=on",
    "set 0 type=SMPTE-2110 format=1080p50 clock=sw-ptp domain=127 channels=8 flows=2",
    "set 0/video rx.dst=239.1.1.1:20000 rx.use=dst,port tx.dst=239.2.1.1:20000 tx.if=10.0.0.1 "
    "tx.use=dst,port,if",
    "set 0/audio/1 tx.dst=239.2.1.2:20010",
    "set KWX\\Site --force Name=here Count:=7",
};

// clang-format off
const Case kLooking[] = {
    {"get 0 domain",                    0, "127\n", ""},
    {"get 0 ClockDomain",               0, "127\n", ""},
    {"get 0 domain clock",              0, "domain=127\nclock=sw-ptp\n", ""},
    {"get 0 gm",                        1, "", ""},
    {"get 1",                           0, "", ""},
    {"get 1 domain",                    1, "", ""},
    {"get 0/video dst",                 0, "rx.dst=239.1.1.1\ntx.dst=239.2.1.1\n", ""},
    {"get 0/video rx.dst rx.dst-port",  0, "rx.dst=239.1.1.1\nrx.dst-port=20000\n", ""},
    {"get 0/video/rx.dst",              0, "239.1.1.1\n", ""},
    {"get 0/audio/1/tx.dst-port",       0, "20010\n", ""},
    {"get 0/video/rx.dts",              2, "", "corvelctl: 0/video has no \"rx.dts\"; did you mean rx.dst?\n"},
    {"get 0/video/1",                   2, "", "corvelctl: only audio has flows, as in 2/audio/3\n"},
    {"get 0/audio/1",                   0, "rx.channels=8\nrx.total=16\ntx.channels=8\ntx.total=16\ntx.dst=239.2.1.2\ntx.dst-port=20010\n", ""},
    {"get 0 flows",                     0, "rx.total=16\ntx.total=16\n", ""},
    {"get server channels",             0, "2\n", ""},
    {"get KWX\\Site",                   0, "Count=7\nName=here\n", ""},
    {"get kwx\\site Count",             0, "7\n", ""},
    {"get KWX\\Site Nothing",           1, "", ""},
    {"get 0/video rx.dts",              2, "", "corvelctl: 0/video has no \"rx.dts\"; did you mean rx.dst?\n"},
    {"get 0 RecieveDestinationIp",      2, "", "corvelctl: 0 has no \"RecieveDestinationIp\"; did you mean ReceiveDestinationIp?\n"},
    {"get 0 rx.dst",                    2, "", "corvelctl: 0 has no \"rx.dst\": name an element, as in 0/video\n"},
    {"get 0/audio tx.dst",              2, "", "corvelctl: 0/audio has no \"tx.dst\": each flow has its own, as in 0/audio/0\n"},
    {"get 0-1 domain",                  2, "", "corvelctl: \"0-1\" names several places; one is needed\n"},
    {"get 0/vidoe rx.dst",              2, "", "corvelctl: no element \"vidoe\": video, audio or anc; did you mean video?\n"},
    {"get sever channels",              2, "", "corvelctl: no place \"sever\": a channel such as 2, 2/video, 2/audio/3, or server; did you mean server?\n"},
    {"show 0/video",                    0, "video     receives  239.1.1.1:20000, use dst,dst-port\n          sends     239.2.1.1:20000 on 10.0.0.1, use dst,dst-port,if\n", ""},
    {"show 0/audio/1",                  0, "audio/1   receives  -\n          sends     239.2.1.2:20010, use none\n", ""},
    {"show 0/audio",                    0, "audio/0   receives  -\n          sends     -\naudio/1   receives  -\n          sends     239.2.1.2:20010, use none\n", ""},
    {"show 1/anc",                      0, "anc       receives  -\n          sends     -\n", ""},
    {"show KWX\\Site",                  0, "Count          7\nName           here\n", ""},
    {"show 0-1/video",                  0, "0/video   receives  239.1.1.1:20000, use dst,dst-port\n          sends     239.2.1.1:20000 on 10.0.0.1, use dst,dst-port,if\n1/video   receives  -\n          sends     -\n", ""},
    {"show */audio/single",             0, "0/audio/single receives  -\n               sends     -\n1/audio/single receives  -\n               sends     -\n", ""},
    {"show 2",                          2, "", "corvelctl: the server has no channel 2\n"},
    {"show 0-2",                        2, "", "corvelctl: the server has no channel 2\n"},
    {"show",                            0, "Channel  Type        Format              Clock   Video receives   Video sends      Flows\n"
                                           "0        SMPTE-2110  1080P 50fps (1920)  sw-ptp  239.1.1.1:20000  239.2.1.1:20000  2\n"
                                           "1        -           -                   -       -                -                0\n", ""},
    {"list KWX\\Site",                  0, "KWX\\Site\tCount\t7\nKWX\\Site\tName\there\n", ""},
    {"list --types KWX\\Site",          0, "KWX\\Site\tCount\tnumber\t7\nKWX\\Site\tName\ttext\there\n", ""},
    {"list KWX\\Nothing",               0, "", ""},
    {"diff 0 0",                        0, "", ""},
    {"diff store zebra",                2, "", "corvelctl: \"zebra\" is no file, no configuration and no channel\n"},
    {"blame 0/domain --json -c nihgt",  2, "", "corvelctl: there is no configuration \"nihgt\"\n"},
    {"diff 0 2",                        2, "", "corvelctl: there is no channel 2: the server has 2 (\"server channels\")\n"},
    {"blame 1/domain",                  1, "", "corvelctl: no change of it is recorded\n"},
    {"blame 1 ClockDomain",             1, "", "corvelctl: no change of it is recorded\n"},
    {"blame 1/domian",                  2, "", "corvelctl: 1 has no \"domian\"; did you mean domain?\n"},
    {"blame 1/video",                   2, "", "corvelctl: 1 has no \"video\"\n"},
    {"blame domain",                    2, "", "corvelctl: no place \"domain\": a channel such as 2, 2/video, 2/audio/3, or server\n"},
    {"blame KWX\\Site Nothing",         1, "", "corvelctl: no change of it is recorded\n"},
    {"history zebra",                   2, "", "corvelctl: no place \"zebra\": a channel such as 2, 2/video, 2/audio/3, or server\n"},
    {"history 0/vidoe",                 2, "", "corvelctl: no element \"vidoe\": video, audio or anc; did you mean video?\n"},
    {"history 0-1",                     2, "", "corvelctl: \"0-1\" names several places; one is needed\n"},
    {"history 0/anc",                   0, "", "corvelctl: no changes are recorded\n"},
    {"history KWX\\Nothing",            0, "", "corvelctl: no changes are recorded\n"},
    {"history --all --most 3",          2, "", "corvelctl: --most excludes --all\n"},
    {"history --most 0",                2, "", "corvelctl: --most: Value 0 not in range 1 to 2147483647\n"},
    {"watch --count 0",                 2, "", "corvelctl: --count: Value 0 not in range 1 to 2147483647\n"},
    {"history 1",                       0, "", "corvelctl: no changes are recorded\n"},
    {"history 1 --fail-if-none",        5, "", "corvelctl: no changes are recorded\n"},
    {"config list",                     0, "* default\n", ""},
    {"-q history 1 --fail-if-none",     5, "", ""},
    {"dump -c zebra",                   2, "", "corvelctl: there is no configuration \"zebra\"\n"},
    {"undo --since 5",                  2, "", "corvelctl: \"5\" is no time such as 90s, 10m, 2h or 1d\n"},
    {"undo --batch 999",                2, "", "corvelctl: there is no batch #999; see corvelctl history\n"},
    {"redo --fail-if-none",             5, "", "corvelctl: nothing to redo\n"},
};

// Each of them with --dry-run; what would change is all that is printed.
const Case kChanging[] = {
    {"set 0 domain=5",                          0, "0 domain: 127 -> 5\n", "corvelctl: 1 value would change\n"},
    {"set 0 domain=127",                        0, "", "corvelctl: nothing to change\n"},
    {"set 0 domain=127 --fail-if-none",         5, "", "corvelctl: nothing to change\n"},
    {"set 0 domain=128",                        2, "", "corvelctl: 0 domain: \"128\": a PTP domain is a number from 0 to 127\n"},
    {"set 0 clock=hwptp",                       2, "", "corvelctl: 0 clock: \"hwptp\": a clock is internal, hw-ptp, sw-ptp, free-run or a number; did you mean hw-ptp?\n"},
    {"set 0 channels=65",                       2, "", "corvelctl: channels: \"65\": a flow has 0 to 64 audio channels\n"},
    {"set 0 flows=9",                           2, "", "corvelctl: flows=9: a number from 1 to 8\n"},
    {"set 0/audio rx.channels=65",              2, "", "corvelctl: 0/audio rx.channels: \"65\": a flow has 0 to 64 audio channels\n"},
    {"set 0/audio rx.total=512",                0, "0/audio rx.total: 16 -> 512\n", "corvelctl: 1 value would change\n"},
    {"set 0 flows=3",                           0, "0/audio rx.total: 16 -> 24\n0/audio tx.total: 16 -> 24\n", "corvelctl: 2 values would change\n"},
    {"set 0/video rx.dst=239.9.9.9:5004",       0, "0/video rx.dst: 239.1.1.1 -> 239.9.9.9\n0/video rx.dst-port: 20000 -> 5004\n", "corvelctl: 2 values would change\n"},
    {"set 0/video rx.dst=:5004",                2, "", "corvelctl: 0/video rx.dst=:5004: the address is missing\n"},
    {"set 0/video rx.dst=239.1.1",              2, "", "corvelctl: 0/video rx.dst: \"239.1.1\" is no IPv4 address: four numbers from 0 to 255 with dots between\n"},
    {"set 0/video rx.dst-port=65536",           2, "", "corvelctl: 0/video rx.dst-port: \"65536\": a port is a number from 0 to 65535\n"},
    {"set 0/video rx.use=dst,prot",             2, "", "corvelctl: 0/video rx.use: use \"prot\": src, src-port, dst, dst-port, if, all or none; did you mean port?\n"},
    {"set 0-1/video if=10.0.0.9",               0, "0/video rx.if: (absent) -> 10.0.0.9\n0/video tx.if: 10.0.0.1 -> 10.0.0.9\n1/video rx.if: (absent) -> 10.0.0.9\n1/video tx.if: (absent) -> 10.0.0.9\n", "corvelctl: 4 values would change\n"},
    {"set 2 domain=1",                          2, "", "corvelctl: there is no channel 2: the server has 2 (\"server channels\"); --force stores it anyway\n"},
    {"set 2 domain=1 --force",                  0, "2 domain: (absent) -> 1\n", "corvelctl: 1 value would change\n"},
    {"set 0 Own=1 --force",                     0, "0 Own: (absent) -> \"1\"\n", "corvelctl: 1 value would change\n"},
    {"set 0 Own:=1 --force",                    0, "0 Own: (absent) -> 1\n", "corvelctl: 1 value would change\n"},
    {"unset 0 domain",                          0, "0 domain: 127 -> (absent)\n", "corvelctl: 1 value would change\n"},
    {"unset 0 gm",                              0, "", "corvelctl: nothing to change\n"},
    {"unset 0/audio/1 --all",                   0, "0/audio/1 tx.dst: 239.2.1.2 -> (absent)\n0/audio/1 tx.dst-port: 20010 -> (absent)\n", "corvelctl: 2 values would change\n"},
    {"unset server --all",                      2, "", "corvelctl: the server's values are deleted by name only\n"},
    {"copy 0 1 --fields domain,clock",          0, "1 domain: (absent) -> 127\n1 clock: (absent) -> sw-ptp\n", "corvelctl: 2 values would change\n"},
    {"copy 0 1 --fields rx.dst,port --step dst=0.0.1.0 --step port=2", 0, "1/video rx.dst: (absent) -> 239.1.2.1\n1/video rx.dst-port: (absent) -> 20002\n1/audio/1 tx.dst-port: (absent) -> 20012\n1/video tx.dst-port: (absent) -> 20002\n", "corvelctl: 4 values would change\n"},
    {"copy 0 1 --fields domain --step dst=1",   2, "", "corvelctl: the step dst=1 is for a field that is not copied\n"},
    {"copy 0 1 --fields zebra",                 2, "", "corvelctl: no field \"zebra\"\n"},
    {"copy 0 1 --step port=x",                  2, "", "corvelctl: \"port=x\" is no step such as dst=0.0.1.0 or port=2\n"},
    {"copy 0 1 --step port=50000",              2, "", "corvelctl: 1/video rx.dst-port: port 70000 is none\n"},
    {"copy 0 0",                                2, "", "corvelctl: a channel is not copied onto itself\n"},
    {"copy 0-1 1",                              2, "", "corvelctl: one channel is copied at a time\n"},
    {"copy 0/video 1",                          2, "", "corvelctl: channels are needed, such as 0 or 1-7\n"},
    {"copy 0 5",                                2, "", "corvelctl: there is no channel 5: the server has 2 (\"server channels\")\n"},
    {"copy 5 0",                                2, "", "corvelctl: there is no channel 5: the server has 2 (\"server channels\")\n"},
    {"flows 5 --from 239.9.0.1:5004",           2, "", "corvelctl: there is no channel 5: the server has 2 (\"server channels\")\n"},
    {"set 0 format=1080p5",                     2, "", "corvelctl: 0 format: \"1080p5\": a video format is one of the dialog's, such as 1080p50 or 3840x2160p59.94\n"},
    {"set KWX\\Internal0\\IpConfig Clockdomain=1", 2, "", "corvelctl: KWX\\Internal0\\IpConfig has no \"Clockdomain\"; did you mean ClockDomain?\n"},
    {"set kwx\\config MaxIntChanels=1",         2, "", "corvelctl: kwx\\config has no \"MaxIntChanels\"; did you mean MaxIntChannels?\n"},
    {"set KWX\\Site chanels=1",                 2, "", "corvelctl: KWX\\Site has no \"chanels\"\n"},
    {"unset KWX\\Internal0\\IpConfig ClockDomian", 2, "", "corvelctl: KWX\\Internal0\\IpConfig has no \"ClockDomian\"; did you mean ClockDomain?\n"},
    {"flows 1 --from 239.9.0.1:5004 --count 1", 0, "1/audio rx.channels: (absent) -> 2\n1/audio rx.total: (absent) -> 2\n1/audio tx.channels: (absent) -> 2\n1/audio/0 tx.dst: (absent) -> 239.9.0.1\n1/audio/0 tx.use: (absent) -> dst,dst-port\n1/audio/0 tx.dst-port: (absent) -> 5004\n1/audio tx.total: (absent) -> 2\n", "corvelctl: 7 values would change\n"},
    {"flows 1 --from 239.9.0.1:0",              2, "", "corvelctl: \"239.9.0.1:0\": an address and a port are needed, as in 239.30.0.1:20000\n"},
    {"flows 1 --from 239.255.255.255:5004",     2, "", "corvelctl: 239.255.255.255 and 1 step leave the class of the address\n"},
    {"flows 0-1 --from 239.9.0.1:5004",         2, "", "corvelctl: flows are set for one channel at a time, or all would have the same addresses\n"},
    {"undo",                                    0, "KWX\\Site Count: 7 -> (absent)\nKWX\\Site Name: \"here\" -> (absent)\n", 0},
    {"config new day",                          0, "", "corvelctl: would make day\n"},
    {"config new default",                      2, "", "corvelctl: there is a configuration \"default\" already\n"},
    {"config new .day",                         2, "", "corvelctl: a configuration's name has 1 to 64 bytes of UTF-8, no /, no control character and no . in front\n"},
    {"config copy default day",                 0, "", "corvelctl: would copy default to day\n"},
    {"config copy zebra day",                   2, "", "corvelctl: there is no configuration \"zebra\"\n"},
    {"config rename default day",               2, "", "corvelctl: \"default\" is in use; choose another one first (corvelctl config use)\n"},
    {"config delete default",                   2, "", "corvelctl: \"default\" is in use; choose another one first (corvelctl config use)\n"},
    {"config delete zebra",                     2, "", "corvelctl: there is no configuration \"zebra\"\n"},
    {"config use default",                      0, "", "corvelctl: would let the server use default\n"},
    {"config use zebra",                        2, "", "corvelctl: there is no configuration \"zebra\"\n"},
};

// What the shells offer: the words so far, and the answers.
const struct {
    const char *line;
    const char *offered;
    bool files = false; // a file is right, too
} kWords[] = {
    {"sdp |",                       "check fix load write"},
    {"sdp load |",                  "", true},
    {"sdp check a.sdp |",           "", true},
    {"sdp fix a.sdp -o |",          "", true},
    {"sdp fix a.sdp --output=|",    "", true},
    {"sdp fix a.sdp |",             ""},
    {"restore |",                   "", true},
    {"ipp export |",                "", true},
    {"table import |",              "", true},
    {"table import --apply |",      "", true},
    {"dump |",                      "", true},
    {"undo --since |",              ""},
    {"undo --since=|",              ""},
    {"flows 0 --side=|",            "--side=rx --side=tx --side=both"},
    {"--config=d|",                 "--config=default"},
    {"ptp --interface=127.|",       "--interface=127.0.0.1"},
    {"list KWX|",                   "KWX\\Advanced\\AvHAL KWX\\Config KWX\\Internal0\\IpConfig KWX\\Site"},
    {"list KWX\\C|",                "KWX\\Config"},
    {"get KWX\\S|",                 "KWX\\Site"},
    {"show s|",                     "server"},
    {"set 0 format=1080p5|",        "format=1080p59.94 format=1080p50"},
    {"set 0 format=1920x1080i|",    "format=1920x1080i59.94 format=1920x1080i50"},
    {"diff config:|",               "config:default", true},
    {"sdp load x.sdp |",            "0 1"},
    {"sdp write 0/|",               "0/video 0/audio 0/anc"},
    {"sdp check --of |",            "0 1"},
    {"ptp --channel |",             "0 1"},
    {"ptp --interface 127.|",       "127.0.0.1"},
    {"flows 0 --side |",            "rx tx both"},
    {"flows 0 --side t|",           "tx"},
    {"sdp write 0 --side |",        "rx tx"},
    {"sdp fix x --tp 2110TPN|",     "2110TPN 2110TPNL"},
    {"blame 0/|",                   "0/video 0/audio 0/anc 0/type 0/format 0/clock 0/domain 0/gm 0/flow-mode 0/file-settings"},
    {"blame 0/video/rx.d|",         "0/video/rx.dst 0/video/rx.dst-port"},
    {"blame 0/audio/1/tx.u|",       "0/audio/1/tx.use"},
    {"get 0/video ReceiveD|",       "ReceiveDestinationIp ReceiveDestinationPort"},
    {"set 0/video ReceiveF|",       "ReceiveFlags="},
    {"set 0/audio/3 TransmitAudI|", "TransmitAudInterface= TransmitAudIp3="},
    {"set 0 type=|",                "type=SMPTE-2110"},
    {"set server nmos.log=|",       "nmos.log=off nmos.log=on"},
    {"set 0/audio rx.ptime=|",      "rx.ptime=125 rx.ptime=1000"},
    {"copy 0 1 --fields rx,d|",     "rx,dst rx,dst-port"},
    {"copy 0 1 --step d|",          "dst= dst-port="},
    {"diff st|",                    "store", true},
    {"diff store d|",               "default", true},
    {"--config=zebra show |",       "server"},
    {"-c zebra show |",             "server"},
    {"config delete |",             "default"},
    {"history 0/v|",                "0/video"},
    {"show zebra/|",                ""},
    {"get zebra |",                 ""},
    {"--js|",                       "--json"},
    {"watch --c|",                  "--count --config"},
    {"copy 0 |",                    "0 1"},
    {"restore --from |",            ""},
};
// clang-format on

void addRows(const Case *first, std::size_t count)
{
    QTest::addColumn<int>("row");
    for (std::size_t at = 0; at < count; ++at)
        QTest::newRow(first[at].command) << static_cast<int>(at);
}

} // namespace

void TestCtlAnswers::initTestCase()
{
    for (const char *line : kServer)
        QCOMPARE(m_home.run(line).code, 0);
    m_rows = m_home.rows();
}

void TestCtlAnswers::looking_data()
{
    addRows(kLooking, std::size(kLooking));
}

void TestCtlAnswers::looking()
{
    QFETCH(int, row);
    const Case &wanted = kLooking[row];
    const CtlResult result = m_home.run(wanted.command);
    QCOMPARE(result.err, QByteArray(wanted.err));
    if (!QByteArray(wanted.command).contains("--json"))
        QCOMPARE(result.out, QByteArray(wanted.out));
    QCOMPARE(result.code, wanted.code);
    QCOMPARE(m_home.rows(), m_rows);
}

void TestCtlAnswers::wouldChange_data()
{
    addRows(kChanging, std::size(kChanging));
}

void TestCtlAnswers::wouldChange()
{
    QFETCH(int, row);
    const Case &wanted = kChanging[row];
    const CtlResult result = m_home.run((QByteArray("--dry-run ") + wanted.command).constData());
    if (wanted.err)
        QCOMPARE(result.err, QByteArray(wanted.err));
    QCOMPARE(result.out, QByteArray(wanted.out));
    QCOMPARE(result.code, wanted.code);
    QCOMPARE(m_home.rows(), m_rows);
    QCOMPARE(m_home.run("config list").out, QByteArray("* default\n"));
}

void TestCtlAnswers::words_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("offered");
    QTest::addColumn<bool>("files");
    for (const auto &row : kWords)
        QTest::newRow(row.line) << QByteArray(row.line) << QByteArray(row.offered) << row.files;
}

void TestCtlAnswers::words()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, offered);
    QFETCH(bool, files);
    const QStringList typed = QString::fromUtf8(line.chopped(1)).split(QLatin1Char(' '));
    const CtlResult result =
        m_home.runProgram(CtlHome::program(), QStringList{QStringLiteral("__complete")} + typed);
    QCOMPARE(result.out.trimmed().replace('\n', ' '), offered);
    QCOMPARE(result.code, files ? 1 : 0);
}

QTEST_GUILESS_MAIN(TestCtlAnswers)
#include "test_ctl_answers.moc"
