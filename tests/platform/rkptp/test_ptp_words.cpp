// SPDX-License-Identifier: MIT
// What ptpstatus prints of a client and of the masters it hears, in words and as JSON.
#include "words.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace ptpstatus;

namespace {

View lockedView()
{
    View view;
    view.status = RKPTP_LOCKED;
    view.state = RKPTP_STATE_LOCKED;
    view.offsetKnown = true;
    view.offset = -12;
    view.offsetAgeMs = 125;
    view.seconds = 1700000037;
    view.nanoseconds = 7999999;
    view.grandmaster = "00-1D-C1-FF-FE-12-34-56";
    view.sourcePort = "00-1D-C1-FF-FE-12-34-56-1";
    view.domain = "127";
    view.address = "10.9.0.1";
    view.reason = "locked to 00-1D-C1-FF-FE-12-34-56 in domain 127 on eth1";
    return view;
}

RKPTP_MASTER master()
{
    RKPTP_MASTER one{};
    one.domain = 127;
    qstrncpy(one.grandmaster, "00-1D-C1-FF-FE-12-34-56", sizeof one.grandmaster);
    qstrncpy(one.sourcePort, "00-1D-C1-FF-FE-12-34-56-1", sizeof one.sourcePort);
    qstrncpy(one.interface, "eth1", sizeof one.interface);
    one.priority1 = 128;
    one.priority2 = 127;
    one.clockClass = 6;
    one.clockAccuracy = 0x21;
    one.variance = 20061;
    one.stepsRemoved = 1;
    one.age_ms = 900;
    return one;
}

QJsonObject read(const std::string &text)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    if (error.error != QJsonParseError::NoError)
        qWarning("%s in %s", qPrintable(error.errorString()), text.c_str());
    return document.object();
}

} // namespace

class TestPtpWords : public QObject {
    Q_OBJECT
private slots:
    void aLockedClient();
    void throughTheSystemsClient();
    void anotherGrandmaster();
    void otherStatus_data();
    void otherStatus();
    void aMasterInWords();
    void theTimeInWords_data();
    void theTimeInWords();
    void asOneObjectOnOneLine();
    void stateWords();
    void anOffsetThatIsNotKnownIsNull();
    void mastersInTheirOrder();
    void textsThatJsonMustQuote();
};

void TestPtpWords::aLockedClient()
{
    View view = lockedView();
    QCOMPARE(
        inWords(view, ""),
        std::string("locked to 00-1D-C1-FF-FE-12-34-56 (port 00-1D-C1-FF-FE-12-34-56-1) in domain 127 on "
                    "10.9.0.1, offset -12 ns, PTP time 2023-11-14 22:13:57.007"));
    view.address.clear();
    QVERIFY(inWords(view, "").find(" in domain 127 on all interfaces, offset") != std::string::npos);
}

void TestPtpWords::throughTheSystemsClient()
{
    View view = lockedView();
    view.ofSystem = true;
    const std::string text = inWords(view, "");
    QVERIFY2(QByteArray::fromStdString(text).endsWith(".007, seen through the system's own ptp4l"),
             text.c_str());
}

void TestPtpWords::anotherGrandmaster()
{
    View view = lockedView();
    view.status = RKPTP_OTHER_GRANDMASTER;
    QCOMPARE(QByteArray::fromStdString(inWords(view, "AA-BB")).left(48),
             QByteArray("another grandmaster than AA-BB: 00-1D-C1-FF-FE-1"));
    QVERIFY(inWords(view, "").rfind("another grandmaster than asked: ", 0) == 0);
}

void TestPtpWords::otherStatus_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("starting") << RKPTP_STARTING << QByteArray("starting");
    QTest::newRow("listening") << RKPTP_LISTENING << QByteArray("no master seen");
    QTest::newRow("faulty") << RKPTP_PORT_FAULTY << QByteArray("link down or interface gone");
    QTest::newRow("lost") << RKPTP_SYNC_LOST << QByteArray("sync lost");
    QTest::newRow("none") << RKPTP_NO_CLIENT << QByteArray("no client can run");
    QTest::newRow("of a later library") << 4711 << QByteArray("no client can run");
}
void TestPtpWords::otherStatus()
{
    QFETCH(int, status);
    View view = lockedView();
    view.status = status;
    QTEST(QByteArray::fromStdString(inWords(view, "x")), "expected");
}

void TestPtpWords::aMasterInWords()
{
    RKPTP_MASTER one = master();
    QCOMPARE(inWords(one),
             std::string("master: domain 127, 00-1D-C1-FF-FE-12-34-56 on eth1, priority 128/127, class 6, "
                         "accuracy 0x21, 1 step away"));
    one.stepsRemoved = 0;
    one.clockAccuracy = 0x0a;
    QVERIFY(QByteArray::fromStdString(inWords(one)).endsWith("accuracy 0x0a, 0 steps away"));
}

void TestPtpWords::theTimeInWords_data()
{
    QTest::addColumn<quint64>("seconds");
    QTest::addColumn<quint32>("nanoseconds");
    QTest::addColumn<QString>("expected");
    QTest::newRow("begin") << quint64(0) << 0U << QStringLiteral("1970-01-01 00:00:00.000");
    QTest::newRow("not rounded up") << quint64(59) << 999999999U << QStringLiteral("1970-01-01 00:00:59.999");
    QTest::newRow("leap day") << quint64(951782400) << 1000000U << QStringLiteral("2000-02-29 00:00:00.001");
    QTest::newRow("after 2038") << quint64(4102444800) << 0U << QStringLiteral("2100-01-01 00:00:00.000");
}
void TestPtpWords::theTimeInWords()
{
    QFETCH(quint64, seconds);
    QFETCH(quint32, nanoseconds);
    View view = lockedView();
    view.seconds = seconds;
    view.nanoseconds = nanoseconds;
    QTEST(read(asJson(view, {})).value(QStringLiteral("time")).toString(), "expected");
}

void TestPtpWords::asOneObjectOnOneLine()
{
    const std::string text = asJson(lockedView(), {master()});
    QVERIFY(text.find('\n') == std::string::npos);
    const QJsonObject expectedMaster{
        {QStringLiteral("domain"), 127},
        {QStringLiteral("grandmaster"), QStringLiteral("00-1D-C1-FF-FE-12-34-56")},
        {QStringLiteral("port"), QStringLiteral("00-1D-C1-FF-FE-12-34-56-1")},
        {QStringLiteral("interface"), QStringLiteral("eth1")},
        {QStringLiteral("priority1"), 128},
        {QStringLiteral("clockClass"), 6},
        {QStringLiteral("clockAccuracy"), 0x21},
        {QStringLiteral("variance"), 20061},
        {QStringLiteral("priority2"), 127},
        {QStringLiteral("stepsRemoved"), 1},
        {QStringLiteral("ageMs"), 900},
    };
    const QJsonObject expected{
        {QStringLiteral("status"), RKPTP_LOCKED},
        {QStringLiteral("state"), QStringLiteral("locked")},
        {QStringLiteral("reason"), QStringLiteral("locked to 00-1D-C1-FF-FE-12-34-56 in domain 127 on eth1")},
        {QStringLiteral("systemClient"), false},
        {QStringLiteral("domain"), QStringLiteral("127")},
        {QStringLiteral("grandmaster"), QStringLiteral("00-1D-C1-FF-FE-12-34-56")},
        {QStringLiteral("port"), QStringLiteral("00-1D-C1-FF-FE-12-34-56-1")},
        {QStringLiteral("address"), QStringLiteral("10.9.0.1")},
        {QStringLiteral("offsetNs"), -12},
        {QStringLiteral("offsetAgeMs"), 125},
        {QStringLiteral("time"), QStringLiteral("2023-11-14 22:13:57.007")},
        {QStringLiteral("masters"), QJsonArray{expectedMaster}},
    };
    QCOMPARE(read(text), expected);
    // Who reads it by eye finds the same first.
    QVERIFY2(text.rfind("{\"status\":", 0) == 0, text.c_str());
}

void TestPtpWords::stateWords()
{
    const char *const words[] = {"not running", "starting",     "locked",      "other master",  "no master",
                                 "stale",       "no interface", "not allowed", "system client", "failed"};
    View view = lockedView();
    for (int state = RKPTP_STATE_NOT_RUNNING; state <= RKPTP_STATE_FAILED; ++state) {
        view.state = state;
        QCOMPARE(read(asJson(view, {})).value(QStringLiteral("state")).toString(),
                 QString::fromLatin1(words[state]));
    }
    for (const int state : {-1, RKPTP_STATE_FAILED + 1}) {
        view.state = state;
        QCOMPARE(read(asJson(view, {})).value(QStringLiteral("state")).toString(), QStringLiteral("unknown"));
    }
}

void TestPtpWords::anOffsetThatIsNotKnownIsNull()
{
    View view = lockedView();
    view.offsetKnown = false;
    const QJsonObject object = read(asJson(view, {}));
    QVERIFY(object.value(QStringLiteral("offsetNs")).isNull());
    QVERIFY(object.value(QStringLiteral("offsetAgeMs")).isNull());
    QVERIFY(object.value(QStringLiteral("masters")).isArray());
    QVERIFY(object.value(QStringLiteral("masters")).toArray().isEmpty());
}

void TestPtpWords::mastersInTheirOrder()
{
    std::vector<RKPTP_MASTER> masters(3, master());
    for (size_t i = 0; i < masters.size(); ++i)
        masters[i].domain = uint32_t(30 - i);
    const QJsonArray list = read(asJson(View(), masters)).value(QStringLiteral("masters")).toArray();
    QCOMPARE(list.size(), 3);
    for (int i = 0; i < list.size(); ++i)
        QCOMPARE(list[i].toObject().value(QStringLiteral("domain")).toInt(), 30 - i);
}

void TestPtpWords::textsThatJsonMustQuote()
{
    View view = lockedView();
    view.reason = "a \"quoted\" \\ word\nand\ta \x01 control, größer";
    QCOMPARE(read(asJson(view, {})).value(QStringLiteral("reason")).toString(),
             QStringLiteral("a \"quoted\" \\ word\nand\ta \u0001 control, gr\u00f6\u00dfer"));
    // The kernel lets an interface have any bytes in its name.
    RKPTP_MASTER one = master();
    qstrncpy(one.interface, "e\xff\xfe", sizeof one.interface);
    const QJsonObject object = read(asJson(view, {one}));
    QCOMPARE(object.value(QStringLiteral("masters"))
                 .toArray()[0]
                 .toObject()
                 .value(QStringLiteral("interface"))
                 .toString(),
             QStringLiteral("e\ufffd\ufffd"));
}

QTEST_GUILESS_MAIN(TestPtpWords)
#include "test_ptp_words.moc"
