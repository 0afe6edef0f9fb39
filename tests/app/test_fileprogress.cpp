// SPDX-License-Identifier: MIT
//
// File commands that take their time: the progress dialog, cancelling, a host that deletes the dialog
// meanwhile, and a description that is pushed meanwhile. The store is slow on purpose.
#include "fake/real.h"
#include "support/filefixture.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QProgressDialog>

#include <csignal>
#include <cstdlib>
#include <cstring>

using namespace DialogTest;
using namespace StoreTest;

static bool slowStore = false;
static bool slowFile = false;

// Stands before the library's: a disk that takes two milliseconds for a value.
extern "C" int rkCFGValueString(void *handle, const char *path, const char *name, char *buffer,
                                uint32_t *size, int write)
{
    QElapsedTimer since;
    since.start();
    while (slowStore && since.nsecsElapsed() < 2000000)
        continue;
    return real(rkCFGValueString, "rkCFGValueString")(handle, path, name, buffer, size, write);
}

// And a file on such a disk.
extern "C" char *rkOSfgets(char *buffer, int size, uint64_t file)
{
    QElapsedTimer since;
    since.start();
    while (slowFile && since.nsecsElapsed() < 2000000)
        continue;
    return real(rkOSfgets, "rkOSfgets")(buffer, size, file);
}

class TestFileProgress : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aQuickOneShowsNothing();
    void aLongLoadShowsIt();
    void escapeTakesTheLoadBack();
    void escapeEndsASave();
    void theDialogMayGo();
    void theDialogMayGoUnderADescription();
    void aPushWaitsForTheEnd();
    void killedInTheMiddle();

private:
    void loadBig() { m->load(QStringLiteral("big.ipp")); }
    // Runs as soon as the progress dialog shows a number.
    void whenShown(const std::function<void(QProgressDialog *)> &act);
    QString line() const { return m->dialog->findChild<QLabel *>(QStringLiteral("statusLine"))->text(); }
    std::unique_ptr<FileFixture> m;
    std::unique_ptr<QTimer> m_timer;
    int m_shown = 0;
};

void TestFileProgress::init()
{
    m = std::make_unique<FileFixture>();
    m_shown = 0;
    QByteArray text = "[HalvectIpConfig]\n";
    for (int channel = 0; channel < 10; ++channel) { // ten sections, a long breath in each
        text += "[channel" + QByteArray::number(channel) + "]\n";
        for (int value = 0; value < 100; ++value)
            text += "TransmitAudIp" + QByteArray::number(value % 8) + "=10.0." + QByteArray::number(channel) +
                    '.' + QByteArray::number(value + 1) + '\n';
    }
    m->write(QStringLiteral("big.ipp"), text);
    slowStore = true;
}

void TestFileProgress::cleanup()
{
    slowStore = false;
    slowFile = false;
    m_timer.reset();
    m.reset();
}

void TestFileProgress::whenShown(const std::function<void(QProgressDialog *)> &act)
{
    m_timer = std::make_unique<QTimer>();
    connect(m_timer.get(), &QTimer::timeout, this, [this, act] {
        auto *box = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
        if (!box || !box->isActiveWindow() || m_shown++ > 0)
            return;
        act(box);
    });
    m_timer->start(0);
}

void TestFileProgress::aQuickOneShowsNothing()
{
    slowStore = false;
    m->write(QStringLiteral("small.ipp"), "[HalvectIpConfig]\n[channel0]\nTransmitIp=10.0.0.1\n");
    whenShown([](QProgressDialog *) {});
    QVERIFY(m->load(QStringLiteral("small.ipp")));
    QCOMPARE(m_shown, 0);
}

void TestFileProgress::aLongLoadShowsIt()
{
    QString label;
    whenShown([&](QProgressDialog *box) {
        label = box->labelText();
        QVERIFY(box->windowModality() == Qt::ApplicationModal);
    });
    loadBig();
    QVERIFY(m_shown > 0);
    QVERIFY2(label.endsWith(QStringLiteral(" values")), qPrintable(label));
    QCOMPARE(line(), QStringLiteral("Loaded big.ipp: 10 channels, 1,000 values"));
    QCOMPARE(text(9, "TransmitAudIp3"), QStringLiteral("10.0.9.100"));
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!QApplication::overrideCursor());
}

void TestFileProgress::escapeTakesTheLoadBack()
{
    const Snapshot before = snapshot();
    whenShown([](QProgressDialog *box) { QTest::keyClick(box, Qt::Key_Escape); });
    loadBig();
    QCOMPARE(m_shown > 0, true);
    QCOMPARE(line(), QStringLiteral("Load of big.ipp cancelled: everything is as it was before"));
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QCOMPARE(text(0, "TransmitAudIp0"), QString());
}

void TestFileProgress::escapeEndsASave()
{
    m.reset();
    slowStore = false;
    m = std::make_unique<FileFixture>(200);
    slowStore = true;
    whenShown([](QProgressDialog *box) { QTest::keyClick(box, Qt::Key_Escape); });
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const QByteArray written = m->read(QStringLiteral("x.ipp"));
    const int channels = written.count("[channel");
    QVERIFY(channels > 0 && channels < 200);
    QVERIFY(written.endsWith("\n\n")); // no half section
    QVERIFY2(line().startsWith(
                 QStringLiteral("Save of x.ipp cancelled: the file ends after %1 channel").arg(channels)),
             qPrintable(line()));
}

void TestFileProgress::theDialogMayGo()
{
    const Snapshot before = snapshot();
    whenShown([this](QProgressDialog *) { m->dialog.reset(); });
    FileAnswer answer(m->in(QStringLiteral("big.ipp")));
    m->dialog->load();
    QVERIFY(!m->dialog);
    slowStore = false;
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(!QApplication::overrideCursor());
}

// A description is stored at its end, where there may be no dialog any more.
void TestFileProgress::theDialogMayGoUnderADescription()
{
    m->write(QStringLiteral("big.sdp"), "v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.5.5.5\na=recvonly\n" +
                                            QByteArray("a=x\n").repeated(400));
    const Snapshot before = snapshot();
    slowFile = true;
    whenShown([this](QProgressDialog *) { m->dialog.reset(); });
    FileAnswer answer(m->in(QStringLiteral("big.sdp")));
    m->dialog->load();
    QVERIFY(!m->dialog);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(!QApplication::overrideCursor());
}

// What is pushed during a load that is cancelled is not taken back with it.
void TestFileProgress::aPushWaitsForTheEnd()
{
    const QByteArray pushed = "v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.5.5.5\na=recvonly\n";
    whenShown([&](QProgressDialog *box) {
        void *block = malloc(size_t(pushed.size()));
        memcpy(block, pushed.constData(), size_t(pushed.size()));
        m->dialog->onSendSdp(block, pushed.size(), 2, false);
        QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.1.1.2"));
        QTest::keyClick(box, Qt::Key_Escape);
    });
    loadBig();
    QCOMPARE(text(2, "ReceiveDestinationIp"), QStringLiteral("239.5.5.5"));
    QCOMPARE(text(0, "TransmitAudIp0"), QString());
}

namespace {

const QString kDying = QStringLiteral("--dying");

// A process of its own whose load is cut off by the hardest way to end.
int dieWhileLoading(const QString &path)
{
    QCorvel dialog(true, nullptr);
    dialog.show();
    slowStore = true;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [] {
        if (qobject_cast<QProgressDialog *>(QApplication::activeModalWidget()))
            raise(SIGKILL);
    });
    timer.start(0);
    const FileAnswer answer(path);
    dialog.load();
    return 1;
}

} // namespace

void TestFileProgress::killedInTheMiddle()
{
    const Snapshot before = snapshot();
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {kDying, m->in(QStringLiteral("big.ipp"))});
    QVERIFY(program.waitForFinished(60000));
    QCOMPARE(program.exitStatus(), QProcess::CrashExit);
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == kDying)
        return dieWhileLoading(arguments.value(2));
    TestFileProgress test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_fileprogress.moc"
