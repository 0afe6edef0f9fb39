// SPDX-License-Identifier: MIT
//
// What the clock lines mean: the state beside their texts, in colour, shape and words. The client is one that
// only remembers; the calls that a library may lack are this program's own.
#include "app/view/clockstate.h"
#include "fake/ptpclient.h"
#include "support/dialog.h"

#include <QAbstractEventDispatcher>
#include <QAccessible>

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

// What the client says of itself.
static struct {
    int state;
    QByteArray reason;
    quint32 ageMs;
    int asked;
} client;

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int rkPTPGetState(PTP_HANDLE)
{
    ++client.asked;
    return client.state;
}

EXPORTED int rkPTPGetReason(PTP_HANDLE, char *buffer, uint32_t size)
{
    qstrncpy(buffer, client.reason.constData(), size);
    return client.reason.size() + 1;
}

EXPORTED int rkPTPGetOffsetAge_Milli(PTP_HANDLE, uint32_t *age)
{
    *age = client.ageMs;
    return RKPTP_OK;
}

namespace {

// Stands for an assistive tool that listens.
void listen(QAccessibleEvent *) {}

bool isHeard()
{
    const QAccessible::UpdateHandler installed = QAccessible::installUpdateHandler(listen);
    QAccessible::installUpdateHandler(installed);
    return installed == listen;
}

} // namespace

class TestClockState : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fromTheNumber_data();
    void fromTheNumber();
    void fromTheStatusAlone_data();
    void fromTheStatusAlone();
    void everyStateHasWords();
    void bothLinesShowIt_data();
    void bothLinesShowIt();
    void anOldOffsetIsStale();
    void anotherSourceHasNoPtp();
    void theClientIsAskedFourTimesASecond();
    void assistiveToolsHearOfStatesOnly();
    void wordsMayChangeWithinAState();

private:
    void open(quint32 source = ClockSource::SoftwarePtp);
    void tick(int times = 25);
    QString state() const { return m_dialog->m_pComboClkMstr->property("state").toString(); }
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestClockState::init()
{
    m_store = std::make_unique<FreshStore>();
    ptpClient() = PtpClient();
    client = {};
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    put(0, "VideoType", 1);
    put(0, "TransmitInterface", QStringLiteral("127.0.0.1"));
    put(0, "TransmitFlags", 16);
}

void TestClockState::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestClockState::open(quint32 source)
{
    put(0, "ClockType", source);
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    QAbstractEventDispatcher::instance()->unregisterTimer(m_dialog->timerId); // the test ticks
    tick();
}

void TestClockState::tick(int times)
{
    for (int i = 0; i < times; ++i) {
        QTimerEvent event(m_dialog->timerId);
        QCoreApplication::sendEvent(m_dialog.get(), &event);
    }
}

void TestClockState::fromTheNumber_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("name");
    const char *const names[] = {"not running", "starting",     "locked",      "other master",  "no master",
                                 "stale",       "no interface", "not allowed", "system client", "failed"};
    int number = 0;
    for (const char *name : names)
        QTest::newRow(name) << number++ << QString::fromLatin1(name);
    QTest::newRow("of a later library") << 77 << QStringLiteral("failed");
    QTest::newRow("negative") << -1 << QStringLiteral("failed");
}

void TestClockState::fromTheNumber()
{
    QFETCH(int, number);
    QTEST(clockStateName(clockStateFromNumber(number)), "name");
}

void TestClockState::fromTheStatusAlone_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("interface");
    QTest::addColumn<QString>("name");
    QTest::newRow("starting") << RKPTP_STARTING << true << QStringLiteral("starting");
    QTest::newRow("listening") << RKPTP_LISTENING << true << QStringLiteral("no master");
    QTest::newRow("locked") << RKPTP_LOCKED << true << QStringLiteral("locked");
    QTest::newRow("other") << RKPTP_OTHER_GRANDMASTER << true << QStringLiteral("other master");
    QTest::newRow("faulty") << RKPTP_PORT_FAULTY << true << QStringLiteral("no interface");
    QTest::newRow("lost") << RKPTP_SYNC_LOST << true << QStringLiteral("stale");
    QTest::newRow("no client") << RKPTP_NO_CLIENT << true << QStringLiteral("not running");
    QTest::newRow("no interface") << RKPTP_NO_CLIENT << false << QStringLiteral("no interface");
}

void TestClockState::fromTheStatusAlone()
{
    QFETCH(int, status);
    QFETCH(bool, interface);
    QTEST(clockStateName(clockStateFromStatus(status, interface)), "name");
}

void TestClockState::everyStateHasWords()
{
    QSet<QString> names;
    for (int number = 0; number <= static_cast<int>(ClockState::Failed); ++number) {
        const ClockState state = static_cast<ClockState>(number);
        names.insert(clockStateName(state));
        QVERIFY2(clockStateAdvice(state).endsWith(QLatin1Char('.')), qPrintable(clockStateName(state)));
    }
    QCOMPARE(names.size(), static_cast<int>(ClockState::Failed) + 1);
}

void TestClockState::bothLinesShowIt_data()
{
    fromTheNumber_data();
}

void TestClockState::bothLinesShowIt()
{
    QFETCH(int, number);
    QFETCH(QString, name);
    client.state = number;
    client.reason = "no master heard on eth1, domain 127, for 12 s; a master of domain 0 is heard";
    open();
    for (QLineEdit *line : {m_dialog->m_pComboClkMstr, m_dialog->m_pEditClockDomain}) {
        QCOMPARE(line->property("state").toString(), name);
        QVERIFY2(line->toolTip().startsWith(QStringLiteral("No master heard on eth1, domain 127, for 12 s; a "
                                                           "master of domain 0 is heard.")),
                 qPrintable(line->toolTip()));
        QCOMPARE(line->accessibleDescription(), line->toolTip());
        QVERIFY(!line->accessibleName().isEmpty());
    }
}

void TestClockState::anOldOffsetIsStale()
{
    client.state = 2;
    client.ageMs = 2999;
    ptpClient().offset_ns = 123;
    open();
    QCOMPARE(state(), QStringLiteral("locked"));
    client.ageMs = 3000;
    tick();
    QCOMPARE(state(), QStringLiteral("stale"));
    QVERIFY(m_dialog->m_pEditClockDomain->text().endsWith(QLatin1String("(123 ns)")));
    QVERIFY(m_dialog->m_pEditClockDomain->toolTip().contains(QLatin1String("no longer heard")));
}

void TestClockState::anotherSourceHasNoPtp()
{
    client.state = 2;
    open(ClockSource::Internal);
    QCOMPARE(state(), QStringLiteral("no ptp"));
    QCOMPARE(client.asked, 0);
}

void TestClockState::theClientIsAskedFourTimesASecond()
{
    open();
    client.asked = 0;
    tick(1000);
    QCOMPARE(client.asked, 40);
}

// Nobody is heard while the digits change. The description, whose change tells of itself, is that of the
// moment when the state came.
void TestClockState::assistiveToolsHearOfStatesOnly()
{
    client.state = 4;
    client.reason = "no master heard for 1 s";
    open();
    QLineEdit *line = m_dialog->m_pComboClkMstr;
    const QAccessible::UpdateHandler before = QAccessible::installUpdateHandler(listen);
    int texts = 0;
    int heard = 0;
    connect(line, &QLineEdit::textChanged, this, [&] {
        ++texts;
        heard += isHeard();
    });
    for (int i = 0; i < 100; ++i) {
        ptpClient().version = QByteArray::number(i);
        client.reason = "no master heard for 2 s";
        tick(1);
        QVERIFY(isHeard());
    }
    QAccessible::installUpdateHandler(before);
    QCOMPARE(texts, 100);
    QCOMPARE(heard, 0);
    QCOMPARE(line->accessibleDescription(), QStringLiteral("No master heard for 1 s."));
    client.state = 2;
    client.reason = "locked";
    tick();
    QCOMPARE(line->accessibleDescription(), QStringLiteral("Locked."));
}

void TestClockState::wordsMayChangeWithinAState()
{
    client.state = 4;
    client.reason = "no master heard for 12 s";
    open();
    client.reason = "no master heard for 13 s";
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->toolTip(), QStringLiteral("No master heard for 13 s."));
    client.reason.clear();
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->toolTip(), clockStateAdvice(ClockState::NoMaster));
}

CORVEL_DIALOG_TEST_MAIN(TestClockState)
#include "test_clockstate.moc"
