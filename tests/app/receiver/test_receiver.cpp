// SPDX-License-Identifier: MIT
//
// The session description that the dialog wrote, in the hands of a receiver: it must get the picture that is
// streamed to the group and port set up in the dialog, and with the source filter from that source alone.
#include "app/receiver/streams.h"
#include "support/dialog.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QTemporaryDir>

#include <memory>

using namespace DialogTest;

namespace {

const char kSource[] = "192.0.2.1";
const char kOtherSource[] = "192.0.2.2";
const char kGroup[] = "239.20.30.40";
const char kPort[] = "20040";
constexpr quint32 k1080p5994 = 0x2380b23b;
constexpr int kPatienceMs = 60000; // a busy machine drops packets: it takes another frame then

// Types a name into the next file dialog and saves.
class SaveAs : public QObject {
public:
    explicit SaveAs(const QString &name) : m_name(name)
    {
        connect(&m_timer, &QTimer::timeout, this, &SaveAs::look);
        m_timer.start(5);
    }

private:
    void look()
    {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        auto *name = dialog ? dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")) : nullptr;
        if (!name)
            return;
        m_timer.stop();
        name->setText(m_name);
        QTest::mouseClick(dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save),
                          Qt::LeftButton);
    }

    QString m_name;
    QTimer m_timer;
};

QByteArrayList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QByteArrayList();
}

} // namespace

class TestReceiver : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void decodesWhatIsSentToTheGroup();
    void sourceFilterKeepsOthersOut_data();
    void sourceFilterKeepsOthersOut();

private:
    void setUp();
    // Clicks "Save ... SDP"; returns the path of the send side's description.
    QString savedAs(const QString &stem);
    // A sender to where the store says that the channel sends.
    std::unique_ptr<Sender> sender(const char *pattern, const char *from);

    QByteArray m_bars, m_circles;
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestReceiver::initTestCase()
{
    m_bars = TestPicture::frame(TestPicture::bars);
    m_circles = TestPicture::frame(TestPicture::circles);
    QVERIFY2(!m_bars.isEmpty() && !m_circles.isEmpty(), "GStreamer gives no test picture");
    QVERIFY(m_bars != m_circles);
}

void TestReceiver::init()
{
    m_store = std::make_unique<FreshStore>();
    m_folder = std::make_unique<QTemporaryDir>();
    StoreTest::put(0, "VideoType", 1u);
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    setUp();
}

void TestReceiver::cleanup()
{
    m_dialog.reset();
    m_folder.reset();
    m_store.reset();
}

void TestReceiver::setUp()
{
    choose(m_dialog->m_pComboVidFormat, k1080p5994);
    typeAddress(m_dialog->m_pLineSndSrcAddr, QLatin1String(kSource));
    typeAddress(m_dialog->m_pLineSndDstAddr, QLatin1String(kGroup));
    typeText(m_dialog->m_pEditSndDstPort, QLatin1String(kPort));
    QCOMPARE(StoreTest::text(0, "TransmitIp"), QLatin1String(kSource));
    QCOMPARE(StoreTest::text(0, "TransmitDestinationIp"), QLatin1String(kGroup));
    QCOMPARE(StoreTest::number(0, "TransmitRemotePort"), QByteArray(kPort).toUInt());
}

QString TestReceiver::savedAs(const QString &stem)
{
    const QString path = m_folder->filePath(stem);
    const SaveAs answer(path + QLatin1String(".sdp"));
    QTest::mouseClick(m_dialog->m_pCmdSaveElement, Qt::LeftButton);
    return path + QLatin1String(".tx.sdp");
}

std::unique_ptr<Sender> TestReceiver::sender(const char *pattern, const char *from)
{
    return std::make_unique<Sender>(pattern, QLatin1String(from), StoreTest::text(0, "TransmitDestinationIp"),
                                    StoreTest::number(0, "TransmitRemotePort"));
}

void TestReceiver::decodesWhatIsSentToTheGroup()
{
    const QString description = savedAs(QStringLiteral("plain"));
    QVERIFY(linesOf(description).contains("m=video 20040 RTP/AVP 101"));
    Receiver receiver(description);
    receiver.expect(m_bars, m_circles);
    QTRY_VERIFY_WITH_TIMEOUT(isJoined(QLatin1String(kGroup)), kPatienceMs);

    const auto bars = sender(TestPicture::bars, kSource);
    QTRY_VERIFY2_WITH_TIMEOUT(receiver.rightFrames() > 0, receiver.log().constData(), kPatienceMs);
    QVERIFY(receiver.log().contains("yuv422p10le"));
    QVERIFY(receiver.log().contains("1920x1080"));
    QVERIFY(receiver.log().contains("59.94 fps"));
    QCOMPARE(receiver.wrongFrames(), 0);
}

void TestReceiver::sourceFilterKeepsOthersOut_data()
{
    QTest::addColumn<bool>("destination");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("any destination") << false << QByteArray("a=source-filter: incl IN IP4 * 192.0.2.1");
    QTest::newRow("its destination") << true
                                     << QByteArray("a=source-filter: incl IN IP4 239.20.30.40 192.0.2.1");
}

// Another source sends to the same group and port. A receiver without the filter shows that its picture
// arrives; the one with the filter decodes nothing until the right source sends as well.
void TestReceiver::sourceFilterKeepsOthersOut()
{
    QFETCH(bool, destination);
    QFETCH(QByteArray, line);
    const QString open = savedAs(QStringLiteral("open"));
    QVERIFY(!linesOf(open).join().contains("source-filter"));
    click(m_dialog->m_pCheckSndSrcAddr);
    if (destination)
        click(m_dialog->m_pCheckSndDstAddr);
    const QString filtered = savedAs(QStringLiteral("filtered"));
    QVERIFY(linesOf(filtered).contains(line));

    Receiver receiver(filtered);
    receiver.expect(m_bars, m_circles);
    QTRY_VERIFY_WITH_TIMEOUT(isJoined(QLatin1String(kGroup), QLatin1String(kSource)), kPatienceMs);
    const auto circles = sender(TestPicture::circles, kOtherSource);
    {
        Receiver unfiltered(open);
        unfiltered.expect(m_bars, m_circles);
        QTRY_VERIFY2_WITH_TIMEOUT(unfiltered.wrongFrames() > 0, unfiltered.log().constData(), kPatienceMs);
    }
    QCOMPARE(receiver.frames(), 0);

    const auto bars = sender(TestPicture::bars, kSource);
    QTRY_VERIFY2_WITH_TIMEOUT(receiver.rightFrames() > 0, receiver.log().constData(), kPatienceMs);
    QCOMPARE(receiver.wrongFrames(), 0);
    QVERIFY(circles->isRunning());
}

CORVEL_DIALOG_TEST_MAIN(TestReceiver)
#include "test_receiver.moc"
