// SPDX-License-Identifier: MIT
// What the numbers of the PTP client mean: those of its optional call, and those of its status, which every
// client has.
#include "channel/clockstate.h"

#include "rkptp.h"

#include <QSet>
#include <QtTest>

namespace {

struct Numbered {
    int number;
    const char *word;
};

} // namespace

class TestClockWords : public QObject {
    Q_OBJECT
private slots:
    void numbersOfTheOptionalCall();
    void numbersOfALaterLibrary_data();
    void numbersOfALaterLibrary();
    void status();
    void noStatusIsNoInterfaceWhereThereIsNone_data();
    void noStatusIsNoInterfaceWhereThereIsNone();
    void eachStateHasAWordOfItsOwn();
};

void TestClockWords::numbersOfTheOptionalCall()
{
    const Numbered all[] = {
        {RKPTP_STATE_NOT_RUNNING, "not running"},
        {RKPTP_STATE_STARTING, "starting"},
        {RKPTP_STATE_LOCKED, "locked"},
        {RKPTP_STATE_OTHER_MASTER, "other master"},
        {RKPTP_STATE_NO_MASTER, "no master"},
        {RKPTP_STATE_STALE, "stale"},
        {RKPTP_STATE_NO_INTERFACE, "no interface"},
        {RKPTP_STATE_NOT_ALLOWED, "not allowed"},
        {RKPTP_STATE_SYSTEM_CLIENT, "system client"},
        {RKPTP_STATE_FAILED, "failed"},
    };
    for (const Numbered &one : all)
        QCOMPARE(clockStateWord(clockStateFromNumber(one.number)), one.word);
}

void TestClockWords::numbersOfALaterLibrary_data()
{
    QTest::addColumn<int>("number");
    for (const int number : {RKPTP_STATE_FAILED + 1, 255, INT_MAX, -1, INT_MIN})
        QTest::addRow("%d", number) << number;
}
void TestClockWords::numbersOfALaterLibrary()
{
    QFETCH(int, number);
    QCOMPARE(clockStateFromNumber(number), ClockState::Failed);
}

void TestClockWords::status()
{
    const Numbered all[] = {
        {RKPTP_STARTING, "starting"},
        {RKPTP_LISTENING, "no master"},
        {RKPTP_LOCKED, "locked"},
        {RKPTP_OTHER_GRANDMASTER, "other master"},
        {RKPTP_PORT_FAULTY, "no interface"},
        {RKPTP_SYNC_LOST, "stale"},
    };
    for (const Numbered &one : all)
        for (const bool interfaceExists : {false, true})
            QCOMPARE(clockStateWord(clockStateFromStatus(one.number, interfaceExists)), one.word);
}

void TestClockWords::noStatusIsNoInterfaceWhereThereIsNone_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {RKPTP_NO_CLIENT, RKPTP_SYNC_LOST + 1, 99, INT_MIN})
        QTest::addRow("%d", status) << status;
}
void TestClockWords::noStatusIsNoInterfaceWhereThereIsNone()
{
    QFETCH(int, status);
    QCOMPARE(clockStateFromStatus(status, true), ClockState::NotRunning);
    QCOMPARE(clockStateFromStatus(status, false), ClockState::NoInterface);
}

// Style sheets and scripts tell them apart by the word.
void TestClockWords::eachStateHasAWordOfItsOwn()
{
    QSet<QByteArray> words;
    const int count = static_cast<int>(ClockState::Failed) + 1;
    for (int i = 0; i < count; ++i)
        words.insert(clockStateWord(static_cast<ClockState>(i)));
    QCOMPARE(words.size(), count);
    QVERIFY(words.contains("no ptp"));
}

QTEST_GUILESS_MAIN(TestClockWords)
#include "test_clockwords.moc"
