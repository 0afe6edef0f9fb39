// SPDX-License-Identifier: MIT
//
// The example host, driven with the mouse and the keyboard: the dialog stands inside its window in its
// theme, edits reach the engine, and each of the three ways of closing has its consequence.
#include "hostwindow.h"
#include "recordingengine.h"
#include "support/dialog.h"

#include <QDir>
#include <QPlainTextEdit>

#include <memory>

using namespace DialogTest;

class TestHost : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void dialogStandsInsideTheWindow();
    void engineAnswersFromTheStore();
    void doneKeepsTheSettings();
    void cancelGivesThemBack();
    void urlsAreShown();
    void dialogOpensAgain();
    void windowClosedWithTheDialogOpen();

private:
    void open();
    QPushButton *openButton() const
    {
        return m_window->findChild<QPushButton *>(QStringLiteral("m_openButton"));
    }

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<RecordingEngine> m_engine;
    std::unique_ptr<HostWindow> m_window;
};

void TestHost::init()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    StoreTest::put(0, "VideoType", 1);
    StoreTest::put(0, "ReceiveDestinationIp", QStringLiteral("239.1.1.1"));
    StoreTest::put(0, "ReceiveDestinationPort", 5004);
    StoreTest::put(0, "ReceiveAudDestinationIp7", QStringLiteral("239.1.7.7"));
    StoreTest::put(0, "ReceiveAudDestinationPort7", 5034);
    StoreTest::put(0, "ClockType", 0x20000);
    StoreTest::put(0, "ReceiveAudChannels", 2);
    StoreTest::put(0, "TransmitAudChannels", 2);
    StoreTest::put(0, "ReceiveAudTotalChannels", 16);
    m_engine = std::make_unique<RecordingEngine>(2);
    m_window = std::make_unique<HostWindow>(m_engine.get());
    show(m_window.get());
}

void TestHost::cleanup()
{
    m_window.reset();
    m_engine.reset();
    m_store.reset();
}

void TestHost::open()
{
    QTest::mouseClick(openButton(), Qt::LeftButton);
    QVERIFY(m_window->dialog());
    QCoreApplication::processEvents();
}

void TestHost::dialogStandsInsideTheWindow()
{
    QVERIFY(!m_window->dialog());
    open();
    const QCorvel *dialog = m_window->dialog();
    QVERIFY(dialog->isVisible() && !dialog->isWindow());
    QCOMPARE(dialog->window(), m_window.get());
    QCOMPARE(dialog->size(), QSize(660, 640));
    QVERIFY(m_window->rect().contains(QRect(dialog->mapTo(m_window.get(), QPoint()), dialog->size())));
    // The theme is the host's own resource.
    QVERIFY(dialog->styleSheet().contains(QStringLiteral("#20262e")));
    const QImage picture = m_window->grab().toImage();
    const QPoint corner = dialog->mapTo(m_window.get(), QPoint(2, 2));
    QCOMPARE(picture.pixelColor(corner), QColor(0x20, 0x26, 0x2e));
    QVERIFY(QDir().mkpath(QStringLiteral(CORVEL_BUILD_DIR "/screenshots")));
    QVERIFY(picture.save(QStringLiteral(CORVEL_BUILD_DIR "/screenshots/host.png")));
}

void TestHost::engineAnswersFromTheStore()
{
    open();
    const QCorvel *dialog = m_window->dialog();
    QCOMPARE(dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.1.1"));
    QCOMPARE(dialog->m_pEditRecDstPort->text(), QStringLiteral("5004"));
    QCOMPARE(dialog->m_pComboClkSrc->currentData().toUInt(), 0x20000u);
    QCOMPARE(dialog->m_pComboAudFlow->currentData().toUInt(), 8u);
    click(dialog->m_pAudioConfig);
    click(dialog->m_pAudFlowSelect[7]);
    QCOMPARE(dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.1.7.7"));
    const QString log = m_window->findChild<QPlainTextEdit *>()->toPlainText();
    QCOMPARE(log, m_engine->record().join(QLatin1Char('\n')));
    QVERIFY2(log.endsWith(QStringLiteral("asks 75111 channel 0 element 0x20000 flow 7")), qPrintable(log));
}

void TestHost::doneKeepsTheSettings()
{
    open();
    typeText(m_window->dialog()->m_pEditRecDstPort, QStringLiteral("6000"));
    QCOMPARE(m_engine->channel(0).streams.value({0x1000, 0}).destinationPort, 6000u);
    QCOMPARE(StoreTest::number(0, "ReceiveDestinationPort"), 5004u); // not yet
    QSignalSpy closed(m_window.get(), &HostWindow::closed);
    QTest::mouseClick(m_window->dialog()->m_pCmdAccept, Qt::LeftButton);
    QCOMPARE(closed.size(), 1);
    QCOMPARE(closed[0][0].toInt(), 1);
    QCOMPARE(m_window->outcome(), QStringLiteral("settings kept"));
    QVERIFY(!m_window->dialog());
    const QByteArray stored = StoreTest::dump(); // as another process sees it
    QVERIFY2(stored.contains("ReceiveDestinationPort"), stored.constData());
    QCOMPARE(StoreTest::number(0, "ReceiveDestinationPort"), 6000u);
    QCOMPARE(StoreTest::text(0, "ReceiveAudDestinationIp7"), QStringLiteral("239.1.7.7"));
}

void TestHost::cancelGivesThemBack()
{
    open();
    click(m_window->dialog()->m_pCheckLockRecDstPort);
    typeText(m_window->dialog()->m_pEditRecDstPort, QStringLiteral("6000"));
    QCOMPARE(m_engine->channel(0).streams.value({0x2000, 7}).destinationPort, 6000u);
    const QByteArray before = StoreTest::dump();
    QSignalSpy closed(m_window.get(), &HostWindow::closed);
    QTest::mouseClick(m_window->dialog()->m_pCmdCancel, Qt::LeftButton);
    QCOMPARE(closed.size(), 1);
    QCOMPARE(closed[0][0].toInt(), 0);
    QCOMPARE(m_window->outcome(), QStringLiteral("stored settings given back"));
    QCOMPARE(m_engine->channel(0).streams.value({0x1000, 0}).destinationPort, 5004u);
    QCOMPARE(m_engine->channel(0).streams.value({0x2000, 7}).destinationPort, 5034u);
    QCOMPARE(StoreTest::dump(), before);
}

void TestHost::urlsAreShown()
{
    open();
    QSignalSpy closed(m_window.get(), &HostWindow::closed);
    QTest::mouseClick(m_window->dialog()->m_pCmdURLs, Qt::LeftButton);
    QCOMPARE(closed.size(), 1);
    QCOMPARE(closed[0][0].toInt(), 3);
    QCOMPARE(m_window->outcome(), QStringLiteral("rtp://239.1.1.1:5004\nrtp://239.1.7.7:5034"));
}

void TestHost::dialogOpensAgain()
{
    for (int i = 0; i < 3; ++i) {
        open();
        QVERIFY(!openButton()->isEnabled());
        QTest::mouseClick(m_window->dialog()->m_pCmdAccept, Qt::LeftButton);
        QVERIFY(openButton()->isEnabled());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(m_window->findChildren<QCorvel *>().isEmpty());
    }
}

// The dialog goes with its window; nothing is told to the engine any more.
void TestHost::windowClosedWithTheDialogOpen()
{
    open();
    QTest::mouseClick(m_window->dialog()->m_pEditRecIFace->m_pLineEdit[0], Qt::LeftButton);
    m_engine->clear();
    m_window.reset();
    QCOMPARE(m_engine->record(), QStringList());
}

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    TestHost test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_host.moc"
