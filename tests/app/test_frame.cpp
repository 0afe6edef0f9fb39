// SPDX-License-Identifier: MIT
//
// Frame: construction in both modes, style sheet, size at one screen resolution (one run each), timer,
// closing.
#include "fake/recorder.h"
#include "support/dialog.h"

#include <QAbstractEventDispatcher>
#include <QFile>
#include <QResource>
#include <QScreen>

#include <cstdlib>
#include <memory>

using namespace DialogTest;
using namespace StoreTest;

// Outside any namespace: the resource's functions are global.
static void setHostTheme(bool there)
{
    if (there)
        Q_INIT_RESOURCE(hosttheme);
    else
        Q_CLEANUP_RESOURCE(hosttheme);
}

namespace {

// Exit code of a child in which the call under test came back, though it should have ended the process.
constexpr int kCameBack = 77;

QSize sizeAt(int dpi)
{
    // Whole pixels, rounded down.
    return QSize(660 * dpi / 96, 640 * dpi / 96);
}

int screenDpi()
{
    return qRound(QGuiApplication::primaryScreen()->logicalDotsPerInchY());
}

QString writeFile(const QTemporaryDir &folder, const QByteArray &bytes)
{
    QFile file(folder.filePath(QStringLiteral("sheet.qss")));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return QString();
    return file.fileName();
}

} // namespace

class TestFrame : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { setHostTheme(false); }
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup()
    {
        m_dialog.reset();
        m_store.reset();
    }
    void startValues();
    void sizeFollowsTheScreen();
    void typeChangeHasNoLowerBound();
    void typeChangeGoesByItsIndex();
    void noSizeFromTheContent();
    void noticesStandInTheirPlaces();
    void styleSheetIsInTheProgram();
    void onlyStandAloneTakesTheOwnStyleSheet();
    void embeddedWithoutTheme();
    void embeddedWithTheme();
    void styleSheetText_data();
    void styleSheetText();
    void simplePageWhileNmosDecides();
    void fullPageWhileOverridden();
    void addressFamiliesAreNeverEdited();
    void liveUpdatesAreOnlyStored();
    void centreOfTheScreen();
    void timerTicksEveryTenMilliseconds();
    void ticksNeverStartTheClockClient();
    void clockIsCheckedAtTheEndOfEachLoad();
    void destroyedWithAnUnfinishedEdit();
    void destructionEndsTheClockClient();
    void modeIsProcessWide();
    void callEndsTheProcess_data();
    void callEndsTheProcess();
    void theProgramHasAnIconAndADesktopEntry();

private:
    void open(bool standAlone = true) { m_dialog = std::make_unique<QCorvel>(standAlone, nullptr); }

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestFrame::startValues()
{
    open();
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("IP Video Setup"));
    QVERIFY(!m_dialog->m_bReloadChannel);
    QVERIFY(m_dialog->m_liveUpdates);
    QVERIFY(!m_dialog->m_bClosing);
    QCOMPARE(m_dialog->m_dwPTPDom, 0xffffffffu);
    QVERIFY(!m_dialog->hPTP);
    QVERIFY(m_dialog->timerId != 0);
    QVERIFY(m_dialog->m_szMacAddr.isEmpty());
    QCOMPARE(m_dialog->m_szIPAddress[0], '\0');
    QVERIFY(m_dialog->m_lastPath.isEmpty());
    QVERIFY(m_dialog->m_pNmosEventTimers.isEmpty());
    QCOMPARE(QByteArray(m_dialog->m_szNmosTxRx, 8), QByteArray("rrrrrrrr"));
    QVERIFY(!m_dialog->m_fontFamily.isEmpty());
    QCOMPARE(m_dialog->font().family(), m_dialog->m_fontFamily);
    QCOMPARE(m_dialog->font().pointSize(), m_dialog->m_fontSize);
}

// 96 dots per inch and less: 660 by 640.
void TestFrame::sizeFollowsTheScreen()
{
    open();
    const QSize wanted = sizeAt(qMax(96, screenDpi()));
    QCOMPARE(m_dialog->size(), wanted);
    QCOMPARE(m_dialog->minimumSize(), wanted);
    QCOMPARE(m_dialog->maximumSize(), wanted);
    if (screenDpi() == 144)
        QCOMPARE(wanted, QSize(990, 960));
    m_dialog->resize(2000, 2000);
    show(m_dialog.get());
    QCOMPARE(m_dialog->size(), wanted);
}

// A change of type takes the screen's scale as it is, a start never less than 1: see docs/deliberate.md.
void TestFrame::typeChangeHasNoLowerBound()
{
    open();
    QCOMPARE(QCorvel::fontFactor(), qMax(1.0, screenDpi() / 96.0));
    m_dialog->onTypeSettingChanged(0);
    QCOMPARE(QCorvel::fontFactor(), screenDpi() / 96.0);
    QCOMPARE(m_dialog->size(), sizeAt(screenDpi()));
    QCOMPARE(m_dialog->maximumSize(), sizeAt(screenDpi()));
}

// Which elements can be shown is told by the entry named, not by the one that is current.
void TestFrame::typeChangeGoesByItsIndex()
{
    put(0, "VideoType", 1);
    open();
    show(m_dialog.get());
    m_dialog->disconnectSignals();
    m_dialog->m_pComboType->addItem(QStringLiteral("another"), 3);
    m_dialog->connectSignals();
    QVERIFY(m_dialog->m_pVideoConfig->isVisibleTo(m_dialog.get()) ==
            m_dialog->m_pAncConfig->isVisibleTo(m_dialog.get()));
    m_dialog->onTypeSettingChanged(1);
    for (const QWidget *control :
         std::initializer_list<QWidget *>{m_dialog->m_pVideoConfig, m_dialog->m_pAudioConfig,
                                          m_dialog->m_pAncConfig, m_dialog->m_pEditClockDomain})
        QVERIFY2(control->isHidden(), qPrintable(control->objectName()));
    QCOMPARE(number(0, "VideoType"), 1u);
    m_dialog->onTypeSettingChanged(0);
    QVERIFY(!m_dialog->m_pVideoConfig->isHidden() && !m_dialog->m_pAncConfig->isHidden());
}

void TestFrame::noSizeFromTheContent()
{
    put(0, "ClockGrandMaster", QString(4000, QLatin1Char('W')));
    put(0, "ReceiveSourcePort", 4294967295u);
    open();
    show(m_dialog.get());
    QCOMPARE(m_dialog->size(), sizeAt(qMax(96, screenDpi())));
}

// Also what was told before the dialog was shown.
void TestFrame::noticesStandInTheirPlaces()
{
    open();
    show(m_dialog.get());
    const auto placeOf = [this](QWidget *widget) {
        return QRect(widget->mapTo(m_dialog.get(), QPoint(0, 0)), widget->size());
    };
    const QRect line = placeOf(m_dialog->findChild<QLabel *>(QStringLiteral("statusLine")));
    QVERIFY(line.left() > placeOf(m_dialog->m_pCmdSave).right());
    QVERIFY(line.right() < placeOf(m_dialog->m_pCmdAccept).left());
    QVERIFY(line.width() > m_dialog->width() / 3);
    const QRect bar = placeOf(m_dialog->findChild<QLabel *>(QStringLiteral("storeBar")));
    QCOMPARE(bar.width(), m_dialog->width());
    QVERIFY(bar.top() >= placeOf(m_dialog->m_pNmosOverride).bottom());
}

void TestFrame::styleSheetIsInTheProgram()
{
    open();
    const QResource resource(QStringLiteral(":/resources/default.qss"));
    QVERIFY(resource.isValid());
    QCOMPARE(resource.compressionAlgorithm(), QResource::ZlibCompression);
    const QString sheet = QString::fromLatin1(resource.uncompressedData());
    QCOMPARE(m_dialog->styleSheet(), sheet);
    for (const char *colour : {"#3a3a3a", "#fff", "#00ABFF"})
        QVERIFY2(sheet.contains(QLatin1String(colour), Qt::CaseInsensitive), colour);
    for (const char *widget : {"QDialog",      "QLabel",    "QPushButton", "QCheckBox",
                               "QRadioButton", "QComboBox", "QLineEdit",   "QTextEdit",
                               "QGroupBox",    "QToolTip",  "QScrollBar",  "QAbstractItemView",
                               "QHeaderView",  "QMenu",     "QTabBar",     "QProgressBar",
                               "QSlider",      "QSplitter", "QToolButton", "QAbstractSpinBox"})
        QVERIFY2(sheet.contains(QLatin1String(widget)), widget);
}

void TestFrame::onlyStandAloneTakesTheOwnStyleSheet()
{
    setHostTheme(true);
    open(false);
    QCOMPARE(m_dialog->styleSheet(), QString());
    setHostTheme(false);
}

void TestFrame::embeddedWithoutTheme()
{
    QVERIFY(!QFile::exists(QStringLiteral(":/theme/default.qss")));
    m_dialog = std::make_unique<QCorvel>(nullptr);
    QCOMPARE(m_dialog->styleSheet(), QString());
    show(m_dialog.get());
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(m_dialog->m_pComboType->count(), 1);
    QCOMPARE(m_dialog->m_pComboType->currentText(), QStringLiteral("N/A"));
    QCOMPARE(m_dialog->m_pComboType->currentData().toInt(), -1);
    QVERIFY(!m_dialog->m_pVideoConfig->isHidden());
    QVERIFY(m_dialog->m_pAudioConfig->isHidden() && m_dialog->m_pAncConfig->isHidden());
}

void TestFrame::embeddedWithTheme()
{
    setHostTheme(true);
    m_dialog = std::make_unique<QCorvel>(nullptr);
    setHostTheme(false);
    QCOMPARE(m_dialog->styleSheet(), QStringLiteral("QDialog { background-color: #202020; }\n"));
}

void TestFrame::styleSheetText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << QByteArray("QLabel{color:red}") << QStringLiteral("QLabel{color:red}");
    QTest::newRow("up to the first zero")
        << QByteArray("QLabel{}\0QDialog{}", 18) << QStringLiteral("QLabel{}");
    QTest::newRow("Latin-1") << QByteArray("/* \xe9 */") << QStringLiteral("/* \u00e9 */");
    QTest::newRow("zero first") << QByteArray("\0QLabel{}", 9) << QString();
    QTest::newRow("empty") << QByteArray() << QString();
}

void TestFrame::styleSheetText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    const QTemporaryDir folder;
    open();
    m_dialog->applyStyleSheet(writeFile(folder, bytes));
    QCOMPARE(m_dialog->styleSheet(), text);
    m_dialog->setStyleSheet(QStringLiteral("QLabel{}"));
    m_dialog->applyStyleSheet(folder.filePath(QStringLiteral("no such file")));
    QCOMPARE(m_dialog->styleSheet(), QString());
}

void TestFrame::simplePageWhileNmosDecides()
{
    open();
    show(m_dialog.get());
    QVERIFY(!m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
    QVERIFY(m_dialog->m_pSimpleAddress->isVisible());
    QVERIFY(!m_dialog->m_pComboVidFormat->isVisible());
}

void TestFrame::fullPageWhileOverridden()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 5);
    open();
    show(m_dialog.get());
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
    QVERIFY(m_dialog->m_pComboVidFormat->isVisible());
    QVERIFY(!m_dialog->m_pSimpleAddress->isVisible());
}

void TestFrame::addressFamiliesAreNeverEdited()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    open();
    show(m_dialog.get());
    for (const QComboBox *combo : {m_dialog->m_pComboReceive, m_dialog->m_pComboSend})
        QVERIFY(combo->isVisible() && !combo->isEnabled());
    click(m_dialog->m_pAudioConfig);
    QVERIFY(!m_dialog->m_pComboReceive->isEnabled() && !m_dialog->m_pComboSend->isEnabled());
}

void TestFrame::liveUpdatesAreOnlyStored()
{
    open();
    show(m_dialog.get());
    m_dialog->setLiveUpdates(false);
    QVERIFY(!m_dialog->m_liveUpdates);
    typeAddress(m_dialog->m_pSimpleAddress, QStringLiteral("239.1.2.3"));
    QTRY_COMPARE(text(0, "TransmitDestinationIp"), QStringLiteral("239.1.2.3")); // edits apply all the same
    m_dialog->setLiveUpdates(true);
    QVERIFY(m_dialog->m_liveUpdates);
}

void TestFrame::centreOfTheScreen()
{
    open();
    show(m_dialog.get());
    const QRect screen = m_dialog->screen()->geometry();
    m_dialog->move(1, 1);
    m_dialog->CenterOnScreen();
    QCOMPARE(m_dialog->pos(), QPoint((screen.left() + screen.right()) / 2 - m_dialog->width() / 2,
                                     (screen.top() + screen.bottom()) / 2 - m_dialog->height() / 2));
}

// (The toolkit turns so short a coarse timer into a precise one, so its type cannot be told.)
void TestFrame::timerTicksEveryTenMilliseconds()
{
    open();
    int found = 0;
    for (const auto &timer : QAbstractEventDispatcher::instance()->registeredTimers(m_dialog.get())) {
        if (timer.timerId != m_dialog->timerId)
            continue;
        ++found;
        QCOMPARE(timer.interval, 10);
    }
    QCOMPARE(found, 1);
    QCOMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("No PTP Found"));
    QTRY_COMPARE(m_dialog->m_pComboClkMstr->text(), QStringLiteral("GMT Time"));
}

void TestFrame::ticksNeverStartTheClockClient()
{
    put(0, "ClockType", 65536u);
    open();
    QCOMPARE(Recorder::callsOf("ptp start").size(), 2); // no client runs, so each check starts one
    Recorder::clear();
    QTRY_VERIFY(m_dialog->m_pComboClkMstr->text() != QLatin1String("No PTP Found"));
    QVERIFY(Recorder::callsOf("ptp").isEmpty());
}

// Start: once by the load, once more before the timer. Values are on screen before the clock is checked.
void TestFrame::clockIsCheckedAtTheEndOfEachLoad()
{
    put(0, "ClockType", 65536u);
    put(0, "ClockDomain", 44u);
    put(0, "ClockGrandMaster", QStringLiteral("00-1D-C1"));
    put(0, "TransmitInterface", QStringLiteral("10.1.2.3"));
    put(0, "TransmitFlags", 16u);
    Recorder::clear();
    open();
    const QByteArrayList once = {"ptp end", "ptp start 10.1.2.3", "ptp domain 44", "ptp target 00-1D-C1"};
    QCOMPARE(Recorder::callsOf("ptp"), once + once);
    Recorder::clear();
    m_dialog->loadData();
    QCOMPARE(Recorder::calls(), once);
}

// The focus leaves a field while the dialog goes away; nothing may be stored by then.
void TestFrame::destroyedWithAnUnfinishedEdit()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    open();
    show(m_dialog.get());
    QTest::mouseClick(m_dialog->m_pEditRecSrcPort, Qt::LeftButton);
    QTest::keyClicks(m_dialog->m_pEditRecSrcPort, QStringLiteral("12"));
    QByteArray before = dump();
    m_dialog.reset();
    QCOMPARE(dump(), before);
    // An octet tells that it was left, even by a window that goes.
    open();
    show(m_dialog.get());
    QTest::mouseClick(m_dialog->m_pLineRecSrcAddr->m_pLineEdit[1], Qt::LeftButton);
    before = dump();
    m_dialog.reset();
    QCOMPARE(dump(), before);
}

void TestFrame::destructionEndsTheClockClient()
{
    open();
    Recorder::clear();
    m_dialog.reset();
    QCOMPARE(Recorder::calls(), QByteArrayList{"ptp end"});
}

void TestFrame::theProgramHasAnIconAndADesktopEntry()
{
    QVERIFY(!QGuiApplication::windowIcon().pixmap(128).isNull());
    const QString entry = QGuiApplication::desktopFileName();
    QCOMPARE(entry, QStringLiteral("org.corvel.Corvel"));
    QVERIFY(!QFINDTESTDATA(QStringLiteral("../../packaging/%1.desktop").arg(entry)).isEmpty());
}

void TestFrame::modeIsProcessWide()
{
    open(true);
    QVERIFY(QCorvel::isStandAlone());
    m_dialog.reset();
    open(false);
    QVERIFY(QCorvel::isStandAlone() == false);
}

void TestFrame::callEndsTheProcess_data()
{
    QTest::addColumn<bool>("saves");
    QTest::newRow("ok") << true;
    QTest::newRow("cancel") << false;
    QTest::newRow("shutdown") << false;
}

// Stand-alone, each of these ends the process inside the call with exit code 0; only "Done" saves.
void TestFrame::callEndsTheProcess()
{
    QFETCH(bool, saves);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--child"), QLatin1String(QTest::currentDataTag())});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
    QVERIFY(child.readAllStandardOutput().endsWith("ptp end\n")); // "Cancel" has loaded before
    QCOMPARE(number(0, "ReceiveSourcePort"), saves ? 4711u : 0u);
    QCOMPARE(hasNumber("KWX\\Internal0\\IpConfig", "VideoType"), saves);
}

// What the end of the process left of the clock's client.
static void tellEndOfClient()
{
    for (const QByteArray &call : Recorder::callsOf("ptp"))
        puts(call.constData());
}

// The child: a port that was set without a signal, then the call.
[[noreturn]] static void runChild(const QByteArray &call)
{
    QCorvel dialog(true, nullptr);
    dialog.m_pEditRecSrcPort->setText(QStringLiteral("4711"));
    Recorder::clear();
    atexit(tellEndOfClient);
    QMetaObject::invokeMethod(&dialog, call.constData());
    if (call == "shutdown")
        dialog.shutdown();
    std::_Exit(kCameBack);
}

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    if (argc > 2 && qstrcmp(argv[1], "--child") == 0)
        runChild(argv[2]);
    TestFrame test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_frame.moc"
