// SPDX-License-Identifier: MIT
//
// Session descriptions pushed for a channel: applied, announced to the NMOS service by a named event, and
// harmless whatever they hold and whoever was at the temporary file before.
#include "channel/storecalls.h"
#include "fake/real.h"
#include "fake/recorder.h"
#include "support/dialog.h"
#include "support/logfile.h"
#include "support/snapshot.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QRandomGenerator>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

Q_CORE_EXPORT uint qGlobalPostedEventsCount();

// ------------------------------------------------------------------- what the test watches or fakes

// How often the block that was handed over last has been freed. Under the address sanitizer, which owns
// free(), a second free ends the program and a missing one fails it at its end.
static void *volatile watchedBlock = nullptr;
static volatile int timesFreed = 0;

#if !defined(__SANITIZE_ADDRESS__)
extern "C" void __libc_free(void *block);
extern "C" void free(void *block)
{
    if (block && block == watchedBlock)
        timesFreed = timesFreed + 1; // and kept, so that nothing else gets the same address meanwhile
    else
        __libc_free(block);
}
#endif

static bool noTempFolder = false;

// Stands before the library's: a machine without any folder for temporary files.
extern "C" int rkOSGetTempPath(char *buffer, uint32_t size)
{
    if (!noTempFolder)
        return real(rkOSGetTempPath, "rkOSGetTempPath")(buffer, size);
    buffer[0] = 0;
    return 0;
}

namespace {

constexpr int kMinuteMs = 60 * 1000;

const char kEventName[] = "HalvectNMOSConfigChange_%1_%2x_{8ba14a78-0bb2-b00b-5f55-bfe29a74a8d8}";

// The service's side: a process that waits for the event of one channel and direction.
class Service {
public:
    Service(int channel, char letter)
    {
        m_process.start(QStringLiteral(CORVEL_BIN_DIR "/rkevent"),
                        {QStringLiteral("wait"),
                         QString::fromLatin1(kEventName).arg(channel).arg(QLatin1Char(letter)),
                         QStringLiteral("--count"), QStringLiteral("0")});
        while (!m_output.contains("waiting\n") && m_process.waitForReadyRead())
            m_output += m_process.readAllStandardOutput();
    }
    ~Service()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    bool listens() const { return m_output.contains("waiting\n"); }
    int wakes()
    {
        m_output += m_process.readAllStandardOutput();
        return m_output.count("HalvectNMOSConfigChange");
    }
    // The final count: what was set has been printed when the process is gone.
    int wakesInTheEnd()
    {
        m_process.terminate();
        m_process.waitForFinished();
        return wakes();
    }

private:
    QProcess m_process;
    QByteArray m_output;
};

QByteArray description(const char *address, const char *direction = "recvonly")
{
    return QByteArray("v=0\no=- 1 0 IN IP4 10.0.0.1\ns=x\nt=0 0\nm=video 5004 RTP/AVP 96\nc=IN IP4 ") +
           address + "/64\na=" + direction + "\n";
}

QString sharedTempFolder()
{
    char folder[256] = {};
    rkOSGetTempPath(folder, sizeof folder);
    return QString::fromLocal8Bit(folder);
}

// In this process's own folder, which is made for what is planted there.
QString tempFile()
{
    const QString folder =
        sharedTempFolder() + QStringLiteral("sdp-%1/").arg(QCoreApplication::applicationPid());
    QDir().mkdir(folder);
    return folder + QStringLiteral("ipcfg_nmos_temp.sdp");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("cannot be read");
}

} // namespace

class TestPushedSdp : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { startLog(); }
    void init();
    void cleanup();

    void isAppliedToItsChannel();
    void theShownChannelStays();
    void theFileIsPrivate();
    void locksHold();

    void twoWithinABurstWakeOnce();
    void theSecondStartsTheTimeAnew();
    void theEventIsOpenedToBeSet();
    void twoBurstsWakeTwice();
    void theLastDirectionNamesTheEvent();
    void overriddenIsAppliedButSilent();
    void withoutServiceNothingHappens();
    void timersAreMadeOnFirstUse();
    void channelsBeyondEightAreApplied();
    void anEventCanBeSetByHand();

    void hostileCalls_data();
    void hostileCalls();
    void noise();
    void planted_data();
    void planted();
    void aStaleFileIsUsed();
    void withoutTempFolder();
    void fullDisk();
    void anOversizedOneIsRefused();
    void theLastValueOfAKeyIsStored();
    void oneStepOfTheHistory();
    void storm();

private:
    void open(bool override);
    void push(const QByteArray &bytes, int channel, bool isSender);
    void pushRaw(void *block, int size, int channel, bool isSender);
    int activeTimers() const;
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestPushedSdp::init()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::Config, "MaxIntChannels", 10);
    for (int channel = 0; channel < 10; ++channel)
        put(channel, "VideoType", 1);
    open(false);
}

void TestPushedSdp::cleanup()
{
    m_dialog.reset();
    m_store.reset();
    noTempFolder = false;
    const QString path = tempFile();
    QFile::remove(path);
    QDir().rmdir(path);
}

void TestPushedSdp::open(bool override)
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", override ? 1 : 0);
    commitStore();
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
}

void TestPushedSdp::pushRaw(void *block, int size, int channel, bool isSender)
{
    watchedBlock = block;
    timesFreed = 0;
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onSendSdp", Q_ARG(void *, block), Q_ARG(int, size),
                                      Q_ARG(int, channel), Q_ARG(bool, isSender)));
    watchedBlock = nullptr;
#if !defined(__SANITIZE_ADDRESS__)
    free(block);
    QCOMPARE(int(timesFreed), block ? 1 : 0);
#endif
}

void TestPushedSdp::push(const QByteArray &bytes, int channel, bool isSender)
{
    void *block = malloc(size_t(bytes.size()));
    memcpy(block, bytes.constData(), size_t(bytes.size()));
    pushRaw(block, bytes.size(), channel, isSender);
}

int TestPushedSdp::activeTimers() const
{
    int active = 0;
    for (const QTimer *timer : qAsConst(m_dialog->m_pNmosEventTimers))
        active += timer && timer->isActive();
    return active;
}

// ------------------------------------------------------------------------------------------ applied

void TestPushedSdp::isAppliedToItsChannel()
{
    const Snapshot before = snapshot();
    push(description("239.5.5.5"), 2, false);
    Snapshot expected;
    expected.insert(QStringLiteral("2:ReceiveDestinationIp"), QStringLiteral("'239.5.5.5'"));
    expected.insert(QStringLiteral("2:ReceiveDestinationPort"), QStringLiteral("5004"));
    expected.insert(QStringLiteral("2:ReceiveFlags"), QStringLiteral("10"));
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestPushedSdp::theShownChannelStays()
{
    choose(m_dialog->m_pChannel, 1);
    push(description("239.5.5.5"), 2, false);
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 1);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("1.0.0.0"));
    push(description("239.5.5.6"), 1, false);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.5.5.6"));
    QVERIFY(m_dialog->m_pCheckRecDstAddr->isChecked());
}

void TestPushedSdp::theFileIsPrivate()
{
    push(description("239.5.5.5"), 0, false);
    struct stat info {};
    const QString folder = QFileInfo(tempFile()).path(); // what is in it is out of reach for others
    QCOMPARE(stat(QFile::encodeName(folder).constData(), &info), 0);
    QCOMPARE(int(info.st_mode & 0777), 0700);
    QCOMPARE(readFile(tempFile()), description("239.5.5.5"));
    push("v=0\n", 0, false); // a shorter one leaves nothing of the longer
    QCOMPARE(readFile(tempFile()), QByteArray("v=0\n"));
}

void TestPushedSdp::locksHold()
{
    m_dialog->m_LockValues[QStringLiteral("ReceiveDestinationIp2")] = true;
    push(description("239.5.5.5"), 2, false);
    QCOMPARE(text(2, "ReceiveDestinationIp"), QString());
    QCOMPARE(number(2, "ReceiveDestinationPort"), 5004u);
    QCOMPARE(number(2, "ReceiveFlags"), 2u); // no tick for what was not stored
}

// ---------------------------------------------------------------------------------------- announced

void TestPushedSdp::twoWithinABurstWakeOnce()
{
    Service service(2, 'r');
    QVERIFY(service.listens());
    push(description("239.5.5.5"), 2, false);
    QTimer *timer = m_dialog->m_pNmosEventTimers.value(2);
    QVERIFY(timer && timer->isActive() && timer->isSingleShot());
    QCOMPARE(timer->interval(), 100);
    QCOMPARE(timer->timerType(), Qt::PreciseTimer);
    QCOMPARE(timer->parent(), m_dialog.get());
    timer->setInterval(kMinuteMs); // longer than this takes on any machine
    QCoreApplication::processEvents();
    push(description("239.5.5.6"), 2, false);
    QVERIFY(timer->isActive());
    QCOMPARE(service.wakes(), 0); // not before the time has passed
    timer->setInterval(100);
    QTRY_COMPARE(service.wakes(), 1);
    QCOMPARE(activeTimers(), 0); // nothing that could set it again
    QCOMPARE(service.wakesInTheEnd(), 1);
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.5.5.6"));
}

// With a time long enough to be looked at while it runs.
void TestPushedSdp::theSecondStartsTheTimeAnew()
{
    constexpr int gapMs = 200;
    QTimer *timer = m_dialog->nmosTimer(2);
    timer->setInterval(kMinuteMs);
    push(description("239.5.5.5"), 2, false);
    QTRY_VERIFY(timer->remainingTime() <= kMinuteMs - gapMs);
    const int before = timer->remainingTime();
    push(description("239.5.5.6"), 2, false);
    QVERIFY(timer->remainingTime() > before);
    timer->stop();
}

void TestPushedSdp::theEventIsOpenedToBeSet()
{
    m_dialog->nmosEventTimeout(4);
    QCOMPARE(Recorder::openedEvent(),
             "c0000000 0 " + QString::fromLatin1(kEventName).arg(4).arg(QLatin1Char('r')).toLatin1());
}

void TestPushedSdp::twoBurstsWakeTwice()
{
    Service service(1, 't');
    Service other(3, 't');
    push(description("239.5.5.5", "sendonly"), 1, true);
    QTRY_COMPARE(service.wakes(), 1);
    push(description("239.5.5.6", "sendonly"), 1, true);
    QTRY_COMPARE(service.wakes(), 2);
    QCOMPARE(service.wakesInTheEnd(), 2);
    QCOMPARE(other.wakesInTheEnd(), 0);
}

void TestPushedSdp::theLastDirectionNamesTheEvent()
{
    Service receive(1, 'r');
    Service send(1, 't');
    push(description("239.5.5.5", "sendonly"), 1, true);
    push(description("239.5.5.5"), 1, false);
    QTRY_COMPARE(receive.wakes(), 1);
    QCOMPARE(send.wakesInTheEnd(), 0);
    QCOMPARE(m_dialog->m_szNmosTxRx[1], 'r');
    push(description("239.5.5.5", "sendonly"), 1, true);
    QCOMPARE(m_dialog->m_szNmosTxRx[1], 't');
}

void TestPushedSdp::overriddenIsAppliedButSilent()
{
    open(true);
    Service service(2, 'r');
    push(description("239.5.5.5"), 2, false);
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.5.5.5"));
    QCOMPARE(activeTimers(), 0);
    QCOMPARE(service.wakesInTheEnd(), 0);
}

void TestPushedSdp::withoutServiceNothingHappens()
{
    const int logBefore = logText().size();
    push(description("239.5.5.5"), 2, false);
    QTRY_COMPARE(activeTimers(), 0);
    QCOMPARE(logText().size(), logBefore);
    QProcess list;
    list.start(QStringLiteral(CORVEL_BIN_DIR "/rkevent"), {QStringLiteral("list")});
    QVERIFY(list.waitForFinished());
    QVERIFY(
        !list.readAllStandardOutput().contains("Change_2_rx_{8ba14a78-0bb2-b00b-5f55-bfe29a74a8d8}\talive"));
}

void TestPushedSdp::timersAreMadeOnFirstUse()
{
    QVERIFY(m_dialog->m_pNmosEventTimers.isEmpty());
    push(description("239.5.5.5"), 4, false);
    QCOMPARE(m_dialog->m_pNmosEventTimers.size(), 5);
    const QTimer *timer = m_dialog->m_pNmosEventTimers.value(4);
    push(description("239.5.5.5"), 4, false);
    QCOMPARE(m_dialog->m_pNmosEventTimers.value(4), timer);
    QCOMPARE(m_dialog->m_pNmosEventTimers.count(nullptr), 4);
}

// There are letters and notifications for eight channels only.
void TestPushedSdp::channelsBeyondEightAreApplied()
{
    push(description("239.5.5.5"), 9, true);
    QCOMPARE(text(9, "ReceiveDestinationIp"), QStringLiteral("239.5.5.5"));
    QVERIFY(m_dialog->m_pNmosEventTimers.isEmpty());
    for (const char letter : m_dialog->m_szNmosTxRx)
        QCOMPARE(letter, 'r');
    for (const int channel : {-1, 8, 9, INT_MAX, INT_MIN})
        m_dialog->nmosEventTimeout(channel);
}

void TestPushedSdp::anEventCanBeSetByHand()
{
    Service service(5, 'r');
    m_dialog->nmosEventTimeout(5);
    QTRY_COMPARE(service.wakes(), 1);
    QCOMPARE(service.wakesInTheEnd(), 1);
}

// ------------------------------------------------------------------------------------------ hostile

void TestPushedSdp::hostileCalls_data()
{
    QTest::addColumn<bool>("block");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("channel");
    const int length = description("239.5.5.5").size();
    QTest::newRow("no data") << false << 100 << 1;
    QTest::newRow("no data, no length") << false << 0 << 1;
    QTest::newRow("length -1") << true << -1 << 1;
    QTest::newRow("smallest length") << true << INT_MIN << 1;
    QTest::newRow("length beyond the block") << true << INT_MAX << 1;
    QTest::newRow("length 1 MiB beyond the block") << true << length + (1 << 20) << 1;
    QTest::newRow("channel -1") << true << length << -1;
    QTest::newRow("first channel that is none") << true << length << 10;
    QTest::newRow("channel 10000") << true << length << 10000;
    QTest::newRow("largest channel") << true << length << INT_MAX;
    QTest::newRow("smallest channel") << true << length << INT_MIN;
}

void TestPushedSdp::hostileCalls()
{
    QFETCH(bool, block);
    QFETCH(int, size);
    QFETCH(int, channel);
    const QByteArray bytes = description("239.5.5.5");
    void *data = nullptr;
    if (block) {
        data = malloc(size_t(bytes.size()));
        memcpy(data, bytes.constData(), size_t(bytes.size()));
    }
    const Snapshot before = snapshot();
    pushRaw(data, size, channel, true);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 0);
    QVERIFY(!QFileInfo::exists(tempFile()));
    QCOMPARE(activeTimers(), 0);
}

void TestPushedSdp::noise()
{
    QRandomGenerator random(1);
    QByteArray bytes(1 << 20, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    const Snapshot before = snapshot();
    QElapsedTimer timer;
    timer.start();
    push(bytes, 3, false);
    push(QByteArray(1 << 20, 'm'), 3, false); // one line
    push(QByteArray(1 << 20, '\n'), 3, false);
    push(QByteArray(1 << 20, '\0'), 3, false);
    qInfo("four descriptions of 1 MiB that hold nothing: %lld ms", timer.elapsed());
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestPushedSdp::planted_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"link", "dangling link", "link to a folder", "fifo", "folder", "second name"})
        QTest::newRow(what) << QString::fromLatin1(what);
    if (geteuid() == 0) // who else may give files away
        QTest::newRow("foreign file") << QStringLiteral("foreign file");
}

// Somebody was there first: what is there stays as it is, and the description is passed over.
void TestPushedSdp::planted()
{
    QFETCH(QString, what);
    QTemporaryDir elsewhere;
    const QString victim = elsewhere.filePath(QStringLiteral("victim"));
    writeFile(victim, "precious");
    const QByteArray path = QFile::encodeName(tempFile());
    const QByteArray target = QFile::encodeName(victim);
    if (what == QLatin1String("link"))
        QCOMPARE(symlink(target.constData(), path.constData()), 0);
    else if (what == QLatin1String("dangling link"))
        QCOMPARE(symlink((target + "2").constData(), path.constData()), 0);
    else if (what == QLatin1String("link to a folder"))
        QCOMPARE(symlink(QFile::encodeName(elsewhere.path()).constData(), path.constData()), 0);
    else if (what == QLatin1String("fifo"))
        QCOMPARE(mkfifo(path.constData(), 0600), 0);
    else if (what == QLatin1String("folder"))
        QCOMPARE(mkdir(path.constData(), 0700), 0);
    else if (what == QLatin1String("second name"))
        QCOMPARE(::link(target.constData(), path.constData()), 0);
    else {
        writeFile(tempFile(), "precious");
        QCOMPARE(chown(path.constData(), 65534, 65534), 0);
    }
    struct stat planted {};
    QCOMPARE(lstat(path.constData(), &planted), 0);
    const Snapshot before = snapshot();
    push(description("239.5.5.5"), 2, false);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QCOMPARE(readFile(victim), QByteArray("precious"));
    QVERIFY(!QFileInfo::exists(victim + QLatin1Char('2')));
    struct stat now {};
    QCOMPARE(lstat(path.constData(), &now), 0);
    QCOMPARE(now.st_ino, planted.st_ino);
    QCOMPARE(now.st_mode, planted.st_mode);
    QCOMPARE(now.st_size, planted.st_size);
    QVERIFY(logText().contains("cannot be written"));
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 0);
}

void TestPushedSdp::aStaleFileIsUsed()
{
    writeFile(tempFile(), QByteArray(100000, 'x'));
    QVERIFY(QFile::setPermissions(tempFile(), QFile::Permissions(0x6644)));
    push(description("239.5.5.5"), 2, false);
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.5.5.5"));
    struct stat info {};
    QCOMPARE(stat(QFile::encodeName(tempFile()).constData(), &info), 0);
    QCOMPARE(qint64(info.st_size), qint64(description("239.5.5.5").size()));
}

// Not in the current folder instead.
void TestPushedSdp::withoutTempFolder()
{
    QTemporaryDir folder;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const Snapshot stored = snapshot();
    noTempFolder = true;
    push(description("239.5.5.5"), 2, false);
    QDir::setCurrent(before);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
    QCOMPARE(changes(stored, snapshot()), Snapshot());
}

// A description that is not in the file as a whole is not applied.
void TestPushedSdp::fullDisk()
{
    const QByteArray bytes = description("239.5.5.5") + QByteArray(1000 << 10, 'x');
    const Snapshot before = snapshot();
    rlimit limit{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{500 << 10, limit.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    push(bytes, 2, false);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(logText().contains("ipcfg_nmos_temp.sdp is incomplete"));
}

// --------------------------------------------------------------------------------------------- large

void TestPushedSdp::anOversizedOneIsRefused()
{
    const Snapshot before = snapshot();
    const QByteArray bytes = description("239.5.5.5");
    push(bytes + QByteArray((1 << 20) + 1 - bytes.size(), '\n'), 2, false);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(logText().contains("session description of 1048577 bytes for channel 2 refused"));
    QCOMPARE(activeTimers(), 0);
    push(bytes + QByteArray((1 << 20) - bytes.size(), '\n'), 2, false);
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.5.5.5"));
}

// A megabyte of media names the same values over and over.
void TestPushedSdp::theLastValueOfAKeyIsStored()
{
    QByteArray bytes = "v=0\n";
    for (int media = 0; bytes.size() < (1 << 20) - 200; ++media)
        bytes += "m=video " + QByteArray::number(10000 + media) + " RTP/AVP 96\nc=IN IP4 239.5." +
                 QByteArray::number(media / 250 % 250) + '.' + QByteArray::number(media % 250) +
                 "\na=recvonly\n";
    bytes += "m=video 5004 RTP/AVP 96\nc=IN IP4 239.9.9.9\na=recvonly\n";
    Recorder::clear();
    QElapsedTimer timer;
    timer.start();
    push(bytes, 2, false);
    qInfo("1 MiB of media: %lld ms", timer.elapsed());
    QCOMPARE(
        Recorder::callsOf("Receive"),
        (QByteArrayList{"ReceiveDestinationIp=239.9.9.9", "ReceiveDestinationPort=5004", "ReceiveFlags=10"}));
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.9.9.9"));
}

void TestPushedSdp::oneStepOfTheHistory()
{
    push(description("239.5.5.5"), 2, false);
    QList<StoreChange> found;
    QVERIFY(walkHistory(-1, [&found](const StoreChange &change) {
        found.append(change);
        return found.size() < 3;
    }));
    QCOMPARE(found.size(), 3);
    for (const StoreChange &change : found) {
        QCOMPARE(change.label, QStringLiteral("pushed description for channel 2"));
        QCOMPARE(change.batch, found.last().batch);
    }
}

// -------------------------------------------------------------------------------------------- storm

namespace {

// Ends whatever modal dialog is up.
void endModal()
{
    QDialog *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (dialog && dialog->isVisible())
        dialog->accept();
    if (qobject_cast<QFileDialog *>(dialog))
        dialog->reject();
}

// How long the event loop takes from one pass to the next.
class Gaps {
public:
    Gaps()
    {
        QObject::connect(&m_beat, &QTimer::timeout, [this] { m_gaps.append(m_last.restart()); });
        m_last.start();
        m_beat.start(1);
    }
    qint64 percentile(int percent)
    {
        std::sort(m_gaps.begin(), m_gaps.end());
        return m_gaps.isEmpty() ? 0 : m_gaps.at((m_gaps.size() - 1) * percent / 100);
    }

private:
    QTimer m_beat;
    QElapsedTimer m_last;
    QVector<qint64> m_gaps;
};

int nestedCalls = 0;

void noteNested(QtMsgType, const QMessageLogContext &, const QString &text)
{
    nestedCalls += text.contains(QLatin1String("Recursive call"));
}

} // namespace

// 500 descriptions, a burst for each of eight channels, while every modal dialog comes and goes.
// CORVEL_PUSHES asks for more; then the machine is at our disposal, and nothing may keep the window from its
// events for long.
void TestPushedSdp::storm()
{
    const int wanted = qEnvironmentVariableIntValue("CORVEL_PUSHES");
    const int kPushes = wanted > 0 ? wanted : 500;
    const int kBurst = (kPushes + kFlowCount - 1) / kFlowCount;
    std::unique_ptr<Service> services[kFlowCount];
    for (int channel = 0; channel < kFlowCount; ++channel) {
        services[channel] = std::make_unique<Service>(channel, 't');
        QVERIFY(services[channel]->listens());
        m_dialog->nmosTimer(channel)->setInterval(kMinuteMs); // a burst ends when all of it was pushed
    }
    m_dialog->m_pCheckErrs->setChecked(true);
    nestedCalls = 0;
    const QtMessageHandler before = qInstallMessageHandler(noteNested);

    int pushed = 0;
    int inDialogs = 0;
    Gaps gaps;
    QTimer pusher;
    connect(&pusher, &QTimer::timeout, this, [&] {
        if (pushed == kPushes)
            return;
        inDialogs += QApplication::activeModalWidget() != nullptr;
        const QByteArray address =
            "239.6." + QByteArray::number(pushed / 250) + '.' + QByteArray::number(pushed % 250);
        push(description(address.constData(), "sendonly"), pushed / kBurst, true);
        ++pushed;
        if (pushed % kBurst == 0 || pushed == kPushes)
            m_dialog->nmosTimer((pushed - 1) / kBurst)->setInterval(100);
    });
    pusher.start(0);
    QTimer closer;
    connect(&closer, &QTimer::timeout, this, endModal);
    closer.start(20);
    for (int round = 0; pushed < kPushes; ++round) {
        switch (round % 4) {
        case 0:
            m_dialog->onInterfaceAlert();
            break;
        case 1:
            m_dialog->m_pNmosOverride->setChecked(true);
            m_dialog->m_pNmosOverride->setChecked(false); // asks
            break;
        case 2:
            round % 8 < 4 ? m_dialog->load() : m_dialog->save();
            break;
        default:
            m_dialog->saveElement();
        }
    }
    closer.stop();
    pusher.stop();
    qInstallMessageHandler(before);
    const qint64 gap = gaps.percentile(99);
    qInfo("figures: %d pushes, %d of them under a box, gaps of the event loop p99 %lld ms, longest %lld ms",
          pushed, inDialogs, gap, gaps.percentile(100));
    QVERIFY(wanted <= 0 || gap <= 100);

    QCOMPARE(nestedCalls, 0);
    QVERIFY(inDialogs > kPushes / 2);
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 0);
    QTRY_COMPARE(activeTimers(), 0);
    QTRY_COMPARE(int(qGlobalPostedEventsCount()), 0);
    for (int channel = 0; channel < kFlowCount; ++channel) {
        QTRY_COMPARE(services[channel]->wakes(), 1);
        QCOMPARE(services[channel]->wakesInTheEnd(), 1);
        const int last = qMin(kPushes, (channel + 1) * kBurst) - 1;
        QCOMPARE(text(channel, "TransmitDestinationIp"),
                 QStringLiteral("239.6.%1.%2").arg(last / 250).arg(last % 250));
    }
}

CORVEL_DIALOG_TEST_MAIN(TestPushedSdp)
#include "test_pushedsdp.moc"
