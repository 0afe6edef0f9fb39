// SPDX-License-Identifier: MIT
//
// The clock: when the PTP client is started, stopped and started again, and what the two lines show. The
// client is one that only remembers.
#include "app/view/digitgroups.h"
#include "fake/ptpclient.h"
#include "fake/real.h"
#include "support/dialog.h"
#include "support/snapshot.h"

#include <QAbstractEventDispatcher>
#include <QDateTime>
#include <QRegularExpression>

#include <limits>
#include <memory>

using namespace DialogTest;
using namespace StoreTest;

// How the clock was asked for and formatted last, and the hardware's time when a test sets it. The real
// functions do the work.
static struct {
    quint64 seconds;
    quint32 nanoseconds;
    quint32 flags;
    quint64 hardware;
    QString infoThen; // what the information line showed at that moment
    QLineEdit *info;
} asked;

extern "C" int rkOSGetEpochDateTimeString(uint64_t seconds, char *date, char *time, uint32_t nanoseconds,
                                          uint32_t flags)
{
    asked.seconds = seconds;
    asked.nanoseconds = nanoseconds;
    asked.flags = flags;
    asked.infoThen = asked.info ? asked.info->text() : QString();
    return real(rkOSGetEpochDateTimeString, "rkOSGetEpochDateTimeString")(seconds, date, time, nanoseconds,
                                                                          flags);
}

extern "C" int rkOSGetDateTimeString(char *date, char *time, uint32_t flags)
{
    asked.flags = flags;
    return real(rkOSGetDateTimeString, "rkOSGetDateTimeString")(date, time, flags);
}

extern "C" uint64_t rkOSGetTimePTPNano(void)
{
    return asked.hardware ? asked.hardware : real(rkOSGetTimePTPNano, "rkOSGetTimePTPNano")();
}

namespace {

// What a start of the client looks like, with the end of the one before.
QByteArrayList started(const char *address, const char *domain, const char *target)
{
    return {"end", QByteArray("start ") + address, QByteArray("domain ") + domain,
            QByteArray("target ") + target};
}

} // namespace

class TestClock : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startsWithTheDialog();
    void anotherSourceEndsItAtOnce();
    void theSourceComesBack();
    void aChangedDomainStartsAnew();
    void aDomainThatIsNoNumberIsZero();
    void theClientGetsTheStoredDomain_data();
    void theClientGetsTheStoredDomain();
    void aChangedGrandmasterStartsAnew();
    void theGrandmasterBoxDoesNotMatter();
    void interface_data();
    void interface();
    void aChangedInterfaceStartsAnew();
    void aUseBoxAloneDoesNotRestart();
    void nothingChangedNothingDone();
    void aClientThatFailsIsTriedAgain();
    void anotherChannelsClock();
    void atTheEnd();

    void softwareLines();
    void offsetNotDelivered();
    void hardwareLines();
    void hardwareTimeIsSplit();
    void systemLines_data();
    void systemLines();
    void nothingFoundAtFirst();
    void theTimerRunsEveryTenMilliseconds();
    void whatDidNotChangeIsLeftAlone();
    void longTextsAreCut();
    void grouping_data();
    void grouping();

    void grandmasterFieldFollowsItsBox();
    void grandmasterFieldIsOffAtTheStart();
    void theTimeLineStaysEditable();

private:
    void open(quint32 source);
    void tick();
    void clickGrandmasterBox(); // on its text: its indicator stands further in than others
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestClock::init()
{
    m_store = std::make_unique<FreshStore>();
    ptpClient() = PtpClient();
    asked = {};
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    put(0, "VideoType", 1);
    put(0, "ClockDomain", 0);
    put(0, "ClockGrandMaster", QStringLiteral("00-1D-C1"));
    put(0, "TransmitInterface", QStringLiteral("10.0.0.2"));
    put(0, "ReceiveInterface", QStringLiteral("10.0.0.1"));
    put(0, "TransmitFlags", 16);
}

void TestClock::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestClock::open(quint32 source)
{
    put(0, "ClockType", source);
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
}

void TestClock::tick()
{
    QTimerEvent event(m_dialog->timerId);
    QCoreApplication::sendEvent(m_dialog.get(), &event);
}

void TestClock::clickGrandmasterBox()
{
    QCheckBox *box = m_dialog->m_pUseGmId;
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(3 * box->height(), box->height() / 2));
}

// ---------------------------------------------------------------------------------- start and stop

// Once by the load; the call at the end of the start leaves the running client alone.
void TestClock::startsWithTheDialog()
{
    open(65536);
    QCOMPARE(ptpClient().take(), started("10.0.0.2", "0", "00-1D-C1"));
    QVERIFY(ptpClient().running);
    QCOMPARE(QByteArray(m_dialog->m_szIPAddress), QByteArray("10.0.0.2"));
    QCOMPARE(m_dialog->m_dwPTPDom, 0u);
    QCOMPARE(m_dialog->m_szMacAddr, QStringLiteral("00-1D-C1"));
}

void TestClock::anotherSourceEndsItAtOnce()
{
    open(65536);
    ptpClient().take();
    choose(m_dialog->m_pComboClkSrc, 0);
    QVERIFY(!ptpClient().running);
    for (const QByteArray &call : ptpClient().take())
        QCOMPARE(call, QByteArray("end"));
    QCOMPARE(m_dialog->m_szMacAddr, QStringLiteral("00-1D-C1")); // what it was told stays
    QCOMPARE(QByteArray(m_dialog->m_szIPAddress), QByteArray("10.0.0.2"));
    QCOMPARE(m_dialog->m_dwPTPDom, 0u);
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("GMT Time"));
}

// The same values again: only that the client has ended makes it start.
void TestClock::theSourceComesBack()
{
    open(65536);
    m_dialog->m_pComboClkSrc->setCurrentIndex(0);
    ptpClient().take();
    m_dialog->m_pComboClkSrc->setCurrentIndex(m_dialog->m_pComboClkSrc->findData(65536));
    QCOMPARE(ptpClient().take(), started("10.0.0.2", "0", "00-1D-C1"));
    QVERIFY(ptpClient().running);
}

void TestClock::aChangedDomainStartsAnew()
{
    open(65536);
    ptpClient().take();
    typeText(m_dialog->m_pEditGmId, QStringLiteral("127"));
    QCOMPARE(ptpClient().take(), started("10.0.0.2", "127", "00-1D-C1"));
    QCOMPARE(number(0, "ClockDomain"), 127u);
}

void TestClock::aDomainThatIsNoNumberIsZero()
{
    put(0, "ClockDomain", 5);
    open(65536);
    ptpClient().take();
    typeText(m_dialog->m_pEditGmId, QStringLiteral("abc"));
    QCOMPARE(ptpClient().take(), started("10.0.0.2", "0", "00-1D-C1"));
}

void TestClock::theClientGetsTheStoredDomain_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<quint32>("domain");
    QTest::newRow("negative") << QStringLiteral("-1") << 0u;
    QTest::newRow("blanks") << QStringLiteral(" 42 ") << 42u;
    QTest::newRow("beyond a signed number") << QStringLiteral("3000000000") << 3000000000u;
}

void TestClock::theClientGetsTheStoredDomain()
{
    QFETCH(QString, typed);
    QFETCH(quint32, domain);
    put(0, "ClockDomain", 5);
    open(65536);
    ptpClient().take();
    typeText(m_dialog->m_pEditGmId, typed);
    QCOMPARE(ptpClient().take(), started("10.0.0.2", QByteArray::number(domain).constData(), "00-1D-C1"));
    QCOMPARE(number(0, "ClockDomain"), domain);
}

void TestClock::aChangedGrandmasterStartsAnew()
{
    open(65536);
    clickGrandmasterBox();
    ptpClient().take();
    typeText(m_dialog->m_pEditGmAddress, QStringLiteral("FF-FE"));
    QCOMPARE(ptpClient().take(), started("10.0.0.2", "0", "FF-FE"));
}

// The grandmaster is passed on whether or not its box is checked.
void TestClock::theGrandmasterBoxDoesNotMatter()
{
    open(65536);
    QVERIFY(!m_dialog->m_pUseGmId->isChecked());
    ptpClient().take();
    clickGrandmasterBox();
    QVERIFY(m_dialog->m_pUseGmId->isChecked());
    QCOMPARE(ptpClient().take(), QByteArrayList());
}

void TestClock::interface_data()
{
    QTest::addColumn<quint32>("send");
    QTest::addColumn<quint32>("receive");
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("send") << 16u << 0u << QByteArray("10.0.0.2");
    QTest::newRow("both: send") << 16u << 16u << QByteArray("10.0.0.2");
    QTest::newRow("receive") << 0u << 16u << QByteArray("10.0.0.1");
    QTest::newRow("none") << 15u << 15u << QByteArray("0.0.0.0");
}

void TestClock::interface()
{
    QFETCH(quint32, send);
    QFETCH(quint32, receive);
    QFETCH(QByteArray, address);
    put(0, "TransmitFlags", send);
    put(0, "ReceiveFlags", receive);
    open(65536);
    QCOMPARE(ptpClient().take(), started(address.constData(), "0", "00-1D-C1"));
}

// At once, not with the next edit.
void TestClock::aChangedInterfaceStartsAnew()
{
    open(65536);
    ptpClient().take();
    typeAddress(m_dialog->m_pEditSndIFace, QStringLiteral("127.0.0.1"));
    QCOMPARE(ptpClient().take(), started("127.0.0.1", "0", "00-1D-C1"));
    QCOMPARE(text(0, "TransmitInterface"), QStringLiteral("127.0.0.1"));
}

// Only at the next load or edit of a value.
void TestClock::aUseBoxAloneDoesNotRestart()
{
    open(65536);
    ptpClient().take();
    click(m_dialog->m_pCheckSndDstIFace);
    QCOMPARE(ptpClient().take(), QByteArrayList());
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("5004"));
    QCOMPARE(ptpClient().take(), started("0.0.0.0", "0", "00-1D-C1"));
}

void TestClock::nothingChangedNothingDone()
{
    open(65536);
    ptpClient().take();
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("5004"));
    m_dialog->checkPTP();
    m_dialog->loadData();
    for (int i = 0; i < 10; ++i)
        tick();
    QCOMPARE(ptpClient().take(), QByteArrayList());
}

void TestClock::aClientThatFailsIsTriedAgain()
{
    ptpClient().starts = false;
    open(65536);
    const QByteArrayList calls = ptpClient().take();
    QVERIFY(calls.size() >= 8); // by the load, by the start, ...
    QCOMPARE(calls.mid(0, 4), started("10.0.0.2", "0", "00-1D-C1"));
    ptpClient().starts = true;
    m_dialog->checkPTP();
    QCOMPARE(ptpClient().take(), started("10.0.0.2", "0", "00-1D-C1"));
    m_dialog->checkPTP();
    QCOMPARE(ptpClient().take(), QByteArrayList());
}

void TestClock::anotherChannelsClock()
{
    put(1, "ClockType", 65536);
    put(1, "ClockDomain", 9);
    open(0);
    for (const QByteArray &call : ptpClient().take())
        QCOMPARE(call, QByteArray("end"));
    choose(m_dialog->m_pChannel, 1);
    QCOMPARE(ptpClient().take(), started("0.0.0.0", "9", ""));
    choose(m_dialog->m_pChannel, 0);
    QVERIFY(!ptpClient().running);
}

void TestClock::atTheEnd()
{
    open(65536);
    ptpClient().take();
    m_dialog.reset();
    QCOMPARE(ptpClient().take(), QByteArrayList{"end"});
    QVERIFY(!ptpClient().running);
}

// -------------------------------------------------------------------------------------- what it shows

void TestClock::softwareLines()
{
    PtpClient &client = ptpClient();
    client.version = "2.1";
    client.domain = "127";
    client.portId = "001dc1fffe123456-1";
    client.address = "is not shown";
    client.seconds = 1700000000;
    client.nanoseconds = 123456789;
    client.offset_ns = -1234567;
    open(65536);
    asked.info = m_dialog->m_pComboClkMstr;
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("2.1 D:127 001dc1fffe123456-1"));
    QCOMPARE(asked.seconds, quint64(1700000000));
    QCOMPARE(asked.nanoseconds, 123456789u);
    QCOMPARE(asked.flags, 2163200u);
    QCOMPARE(asked.infoThen, m_dialog->m_pComboClkMstr->text()); // the information comes first
    QVERIFY(client.addressAsked);
    asked.info = nullptr;
    char date[64] = {};
    char time[64] = {};
    rkOSGetEpochDateTimeString(1700000000, date, time, 123456789, 2163200);
    QCOMPARE(m_dialog->m_pEditClockDomain->text(), QString::fromLatin1(date) + QLatin1Char(' ') +
                                                       QLatin1String(time) +
                                                       QLatin1String(" (-1,234,567 ns)"));
    client.offset_ns = 1000;
    tick();
    QVERIFY(m_dialog->m_pEditClockDomain->text().endsWith(QLatin1String(" (1,000 ns)")));
}

void TestClock::offsetNotDelivered()
{
    ptpClient().offset_ns = 77;
    ptpClient().hasOffset = false;
    open(65536);
    tick();
    QVERIFY(m_dialog->m_pEditClockDomain->text().endsWith(QLatin1String(" (0 ns)")));
}

void TestClock::hardwareLines()
{
    open(131072);
    const quint64 before = rkOSGetTimePTPNano() / 1000000000;
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("Hardware/GMT Time"));
    const QString line = m_dialog->m_pEditClockDomain->text();
    static const QRegularExpression form(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{9} $")); // a blank ends it
    QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
    const QDateTime shown = QDateTime::fromString(line.left(19) + QLatin1Char('Z'), Qt::ISODate);
    QVERIFY(shown.toSecsSinceEpoch() >= qint64(before));
}

void TestClock::hardwareTimeIsSplit()
{
    asked.hardware = 1700000000ull * 1000000000 + 7;
    open(131072);
    asked.info = m_dialog->m_pComboClkMstr;
    tick();
    QCOMPARE(asked.seconds, quint64(1700000000));
    QCOMPARE(asked.nanoseconds, 7u);
    QCOMPARE(asked.flags, 2163200u);
    QCOMPARE(asked.infoThen, QStringLiteral("Hardware/GMT Time"));
    asked.info = nullptr;
}

void TestClock::systemLines_data()
{
    QTest::addColumn<quint32>("source");
    QTest::newRow("Internal") << 0u;
    QTest::newRow("Free Run") << 8388608u;
}

void TestClock::systemLines()
{
    QFETCH(quint32, source);
    open(source);
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("GMT Time"));
    QCOMPARE(asked.flags, 65664u);
    static const QRegularExpression form(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} $"));
    const QString line = m_dialog->m_pEditClockDomain->text();
    QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
}

void TestClock::nothingFoundAtFirst()
{
    put(0, "ClockType", 65536);
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("No PTP Found"));
    QVERIFY(m_dialog->m_pComboClkMstr->isReadOnly());
    ptpClient().version = "2";
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("2 D: "));
}

void TestClock::theTimerRunsEveryTenMilliseconds()
{
    open(65536);
    QVERIFY(m_dialog->timerId != 0);
    ptpClient().version = "by the timer itself";
    QTRY_VERIFY(m_dialog->m_pComboClkMstr->text().startsWith(QLatin1String("by the timer itself")));
    const QList<QAbstractEventDispatcher::TimerInfo> timers =
        QAbstractEventDispatcher::instance()->registeredTimers(m_dialog.get());
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.first().interval, 10);
    QCOMPARE(timers.first().timerId, m_dialog->timerId);
}

// What somebody marked to copy it stays marked while the line reads the same.
void TestClock::whatDidNotChangeIsLeftAlone()
{
    ptpClient().version = "2";
    open(65536);
    tick();
    for (QLineEdit *line : {m_dialog->m_pComboClkMstr, m_dialog->m_pEditClockDomain})
        line->selectAll();
    tick();
    QVERIFY(m_dialog->m_pComboClkMstr->hasSelectedText());
    QVERIFY(m_dialog->m_pEditClockDomain->hasSelectedText());
    ptpClient().version = "3";
    tick();
    QVERIFY(!m_dialog->m_pComboClkMstr->hasSelectedText());
}

void TestClock::longTextsAreCut()
{
    for (QByteArray *text : {&ptpClient().version, &ptpClient().domain, &ptpClient().portId})
        *text = QByteArray(200, 'x');
    open(65536);
    tick();
    QCOMPARE(m_dialog->m_pComboClkMstr->text().size(), 3 * 63 + 4);
}

void TestClock::grouping_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("0") << qint64(0) << QByteArray("0");
    QTest::newRow("999") << qint64(999) << QByteArray("999");
    QTest::newRow("1000") << qint64(1000) << QByteArray("1,000");
    QTest::newRow("-100") << qint64(-100) << QByteArray("-100");
    QTest::newRow("-1000") << qint64(-1000) << QByteArray("-1,000");
    QTest::newRow("999999") << qint64(999999) << QByteArray("999,999");
    QTest::newRow("-1234567") << qint64(-1234567) << QByteArray("-1,234,567");
    QTest::newRow("largest") << std::numeric_limits<qint64>::max() << QByteArray("9,223,372,036,854,775,807");
    QTest::newRow("smallest") << std::numeric_limits<qint64>::min()
                              << QByteArray("-9,223,372,036,854,775,808");
}

void TestClock::grouping()
{
    QFETCH(qint64, number);
    QTEST(digitGroups(number), "text");
}

// --------------------------------------------------------------------------------- the grandmaster

void TestClock::grandmasterFieldFollowsItsBox()
{
    open(0);
    ptpClient().take();
    clickGrandmasterBox();
    QVERIFY(m_dialog->m_pEditGmAddress->isEnabled());
    QCOMPARE(m_dialog->m_pEditGmAddress->styleSheet(), QStringLiteral("background-color: #131313;"));
    clickGrandmasterBox();
    QVERIFY(!m_dialog->m_pEditGmAddress->isEnabled());
    QCOMPARE(m_dialog->m_pEditGmAddress->styleSheet(), QStringLiteral("background-color:#404040;"));
    QCOMPARE(m_dialog->m_pEditGmAddress->text(), QStringLiteral("00-1D-C1"));
    QCOMPARE(ptpClient().take(), QByteArrayList());
}

void TestClock::grandmasterFieldIsOffAtTheStart()
{
    open(65536);
    QVERIFY(!m_dialog->m_pUseGmId->isChecked());
    QVERIFY(!m_dialog->m_pEditGmAddress->isEnabled());
    QCOMPARE(m_dialog->m_pEditGmAddress->styleSheet(), QStringLiteral("background-color:#404040;"));
}

// Overwritten by the next tick, and a save all the same.
void TestClock::theTimeLineStaysEditable()
{
    open(0);
    QVERIFY(!m_dialog->m_pEditClockDomain->isReadOnly());
    QVERIFY(m_dialog->m_pEditClockDomain->isEnabled());
    const Snapshot before = snapshot();
    m_dialog->m_pEditClockDomain->setFocus();
    QTest::keyClick(m_dialog->m_pEditClockDomain, Qt::Key_Return);
    QVERIFY(changes(before, snapshot()).contains(QStringLiteral("0:ReceiveSourceIp")));
    QCOMPARE(number(0, "ClockDomain"), 0u);
}

CORVEL_DIALOG_TEST_MAIN(TestClock)
#include "test_clock.moc"
