// SPDX-License-Identifier: MIT
//
// What the fleet's service tells, in words.
#include "app/view/fleetnews.h"

#include <QDateTime>
#include <QtTest>

class TestFleetNews : public QObject {
    Q_OBJECT

private slots:
    void lines_data();
    void lines();
    void anotherDayIsNamed();
    void aServiceThatIsGone();
    void nothingToSay_data();
    void nothingToSay();
};

namespace {

QByteArray at(int hour, int minute)
{
    const QDateTime time(QDate::currentDate(), QTime(hour, minute));
    return time.toUTC().toString(Qt::ISODateWithMs).toUtf8();
}

QByteArray status(const QByteArray &role, const QByteArray &members)
{
    return R"({"format":1,"role":")" + role + R"(","pid":17,"configurations":[)" +
           R"({"configuration":"other","connected":false},)" +
           R"({"configuration":"lon-play-17","server":"lon-play-17",)" + members + "}]}";
}

QString told(const QByteArray &text)
{
    return FleetNews::line(text, QStringLiteral("lon-play-17"), [](qint64 pid) { return pid == 17; });
}

} // namespace

void TestFleetNews::lines_data()
{
    QTest::addColumn<QByteArray>("role");
    QTest::addColumn<QByteArray>("members");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const char *role, const QByteArray &members, const char *line) {
        QTest::newRow(name) << QByteArray(role) << members << QString::fromUtf8(line);
    };
    const QByteArray away = R"("connected":false,"reason":"no route","since":")" + at(14, 3) + '"';
    row("in step", "desk", R"("connected":true,"alive":true,"inStep":true)", "lon-play-17: in step");
    row("edits on their way", "desk", R"("connected":true,"alive":true,"waiting":2)", "2 edits wait here");
    row("server away", "desk", R"("connected":true,"alive":false,"seen":")" + at(13, 59) + '"',
        "lon-play-17 is away, shown: its state of 13:59");
    row("server never seen", "desk", R"("connected":true,"alive":false,"seen":null)", "lon-play-17 is away");
    row("cluster away", "desk", away, "Cluster away since 14:03, editing goes on");
    row("one edit waits", "server", away + R"(,"waiting":1)", "Cluster away since 14:03, 1 edit waits here");
    row("edits wait", "desk", away + R"(,"waiting":3)", "Cluster away since 14:03, 3 edits wait here");
    row("no time", "desk", R"("connected":false)", "Cluster away, editing goes on");
    row("overruled", "desk", R"("connected":true,"alive":true,"inStep":true,"overruled":2)",
        "lon-play-17: in step; 2 of your edits were overruled");
    row("one overruled", "desk", away + R"(,"overruled":1)",
        "Cluster away since 14:03, editing goes on; 1 of your edits was overruled");
    row("a server in step", "server", R"("connected":true,"inStep":true)", "");
    row("a server, parts not shared", "server", R"("connected":true,"refused":2)", "2 parts are not shared");
    row("not taken", "server",
        R"("connected":true,"waiting":1,"reason":"the cluster does not take it: full")",
        "the cluster does not take it: full");
}

void TestFleetNews::lines()
{
    QFETCH(QByteArray, role);
    QFETCH(QByteArray, members);
    QFETCH(QString, line);
    QCOMPARE(told(status(role, members)), line);
}

void TestFleetNews::anotherDayIsNamed()
{
    const QDateTime noon(QDate::currentDate().addDays(-3), QTime(12, 0));
    const QByteArray since = noon.toUTC().toString(Qt::ISODateWithMs).toUtf8();
    const QString expected =
        QStringLiteral("Cluster away since %1 12:00, editing goes on").arg(noon.date().toString(Qt::ISODate));
    QCOMPARE(told(status("desk", R"("connected":false,"since":")" + since + '"')), expected);
}

void TestFleetNews::aServiceThatIsGone()
{
    const QByteArray text = status("desk", R"("connected":true,"alive":true,"inStep":true)");
    const auto gone = [](qint64) { return false; };
    QCOMPARE(FleetNews::line(text, QStringLiteral("lon-play-17"), gone),
             QStringLiteral("The fleet service has ended; edits wait here"));
    QCOMPARE(FleetNews::line(text, QStringLiteral("night"), gone), QString());
}

void TestFleetNews::nothingToSay_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("hello");
    QTest::newRow("a list") << QByteArray("[1,2]");
    QTest::newRow("cut") << status("desk", R"("connected":false)").left(60);
    QTest::newRow("a newer format") << status("desk", R"("connected":false)").replace("1,\"role", "2,\"role");
    QTest::newRow("other members") << QByteArray(R"({"format":1,"configurations":{"a":1}})");
    QTest::newRow("not kept") << status("desk", R"("connected":false)").replace("lon-play-17", "x");
}

void TestFleetNews::nothingToSay()
{
    QFETCH(QByteArray, text);
    QCOMPARE(told(text), QString());
}

QTEST_GUILESS_MAIN(TestFleetNews)
#include "test_fleetnews.moc"
