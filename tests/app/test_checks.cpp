// SPDX-License-Identifier: MIT
//
// Validation and closing: the error list, the alerts of the interface fields, their storing, and "Done"
// and its like. What ends the process runs in a process of its own: this program with "--close".
#include "fake/real.h"
#include "support/dialog.h"
#include "support/logfile.h"
#include "support/snapshot.h"

#include <QLoggingCategory>

#include <cstdio>
#include <memory>

#include <ifaddrs.h>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

static bool noInterfaces = false;

// Stands before the system's: a machine that cannot list its interfaces.
extern "C" int getifaddrs(ifaddrs **first)
{
    if (!noInterfaces)
        return real(getifaddrs, "getifaddrs")(first);
    return -1;
}

namespace {

const char kMissing[] = " does not exist!  Please correct the adapter or setting\n";
const char kLockWarning[] = "Warning: Lock not set, change will not be reflected in all cases";

const char *const kInterfaceKeys[] = {"ReceiveInterface",     "TransmitInterface",   "ReceiveAudInterface",
                                      "TransmitAudInterface", "ReceiveAncInterface", "TransmitAncInterface"};

// As a right click does; the menu is gone with the first box over it.
void openMenu(QWidget *field)
{
    const QPoint middle = field->rect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, middle, field->mapToGlobal(middle));
    QCoreApplication::sendEvent(field, &event);
    if (QWidget *menu = QApplication::activePopupWidget())
        menu->close();
}

QString missing(const char *label, const char *address)
{
    return QLatin1String(label) + QLatin1String(address) + QLatin1String(kMissing);
}

void fillInterfaces(const QString &address)
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    put(0, "VideoType", 1);
    for (const char *key : kInterfaceKeys)
        put(0, key, address);
    commitStore();
}

// How often a dialog came up, and warnings of the toolkit about nested ones.
class ShowCounter : public QObject {
public:
    explicit ShowCounter(QWidget *widget)
    {
        widget->installEventFilter(this);
        nestedCalls = 0;
        m_before = qInstallMessageHandler(note);
    }
    ~ShowCounter() override { qInstallMessageHandler(m_before); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        shown += event->type() == QEvent::Show;
        return false;
    }
    int shown = 0;
    static int nestedCalls;

private:
    static void note(QtMsgType, const QMessageLogContext &, const QString &text)
    {
        nestedCalls += text.contains(QLatin1String("Recursive call"));
    }
    QtMessageHandler m_before;
};

int ShowCounter::nestedCalls = 0;

// --------------------------------------------------------------------- the process that is closed

// Writes what a message box says and presses its button.
void answerAloud()
{
    QTimer *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, [] {
        const QWidget *box = QApplication::activeModalWidget();
        if (!box || !box->isVisible())
            return;
        const QTextEdit *text = box->findChild<QTextEdit *>();
        printf("box [%s]\n", qPrintable(text ? text->toPlainText() : box->windowTitle()));
        fflush(stdout);
        if (QPushButton *button = box->findChild<QPushButton *>())
            QTest::mouseClick(button, Qt::LeftButton);
    });
    timer->start(5);
}

// Ends in the dialog; coming back to main gives another exit code.
int closeDialog(const QStringList &words)
{
    QCorvel dialog(true, nullptr);
    dialog.show();
    if (!QTest::qWaitForWindowActive(&dialog))
        return 98;
    answerAloud();
    dialog.m_pCheckErrs->setChecked(words.contains(QLatin1String("check")));
    dialog.disconnectSignals();
    dialog.m_pNmosOverride->setChecked(!words.contains(QLatin1String("nmos")));
    dialog.m_pEditRecDstPort->setText(QStringLiteral("5555")); // on screen, but not saved yet
    dialog.m_LockValues[QStringLiteral("ReceiveDestinationIp0")] = words.contains(QLatin1String("key"));
    if (words.contains(QLatin1String("focus")))
        dialog.m_pEditRecIFace->m_pLineEdit[0]->setFocus();
    if (words.contains(QLatin1String("foreign")))
        dialog.m_pEditSndIFace->setAddress(QStringLiteral("203.0.113.77"));
    dialog.connectSignals();
    if (words.contains(QLatin1String("key"))) {
        dialog.m_pLineRecDstAddr->m_pLineEdit[3]->selectAll();
        QTest::keyClick(dialog.m_pLineRecDstAddr->m_pLineEdit[3], Qt::Key_7);
    }
    if (words.contains(QLatin1String("cancel")))
        QMetaObject::invokeMethod(&dialog, "cancel");
    else if (words.contains(QLatin1String("byname")))
        QMetaObject::invokeMethod(&dialog, "ok");
    else
        QTest::mouseClick(dialog.m_pCmdAccept, Qt::LeftButton);
    return 99;
}

struct Closed {
    int code = -1;
    QString said;
};

Closed closed(const QStringList &words)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), QStringList{QStringLiteral("--close")} + words);
    Closed result;
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit)
        result.code = process.exitCode();
    result.said = QString::fromUtf8(process.readAllStandardOutput());
    return result;
}

} // namespace

class TestChecks : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void doneSavesAndEndsTheProcess();
    void doneWithoutTheCheckSaysNothing();
    void doneUnderNmosSaysNothing();
    void doneListsAbsentInterfaces();
    void doneChecksWhatItHasJustSaved();
    void doneWhileAFieldIsLeftListsOnce();
    void theLastKeyIsNotLost();
    void doneRaisesNoSecondAlert();
    void cancelEndsWithoutSaving();

    void absentInterfacesInTableOrder();
    void anUnconfiguredChannelGivesSix();
    void theCheckReadsTheShownChannel();
    void everyTypeIsCheckedWhole();
    void addressesAreShownAsTheyAre();
    void withoutAListOfInterfacesNothingIsStored();
    void alert_data();
    void alert();
    void alertOnEveryWayOut_data();
    void alertOnEveryWayOut();
    void alertWithoutSenderIsTheSendField();
    void noAlertWhileClosing();
    void oneBoxWhateverTheFocusDoes();
    void oneBoxUnderManyAlerts();
    void noBoxFromTheOneThatCloses();

    void interfaceEdit_data();
    void interfaceEdit();
    void foreignInterfaceIsNotStored();
    void theNextSaveStoresAForeignInterface();
    void anEditNotesTheMachinesAddresses();

    void showUrlsReloads();
    void returnPressesNoButton();
    void getIp_data();
    void getIp();
    void defaultInterfaceIsReserved();

private:
    void open();
    void alone(QWidget *focus); // gives the focus without a click
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

// Every edit of an interface notes the machine's addresses; only the case that is about it shows them.
void TestChecks::initTestCase()
{
    startLog();
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void TestChecks::init()
{
    m_store = std::make_unique<FreshStore>();
    fillInterfaces(QStringLiteral("127.0.0.1"));
}

void TestChecks::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestChecks::open()
{
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
}

// ------------------------------------------------------------------------------------------ closing

void TestChecks::doneSavesAndEndsTheProcess()
{
    const Closed result = closed({QStringLiteral("check")});
    QCOMPARE(result.said, QString());
    QCOMPARE(result.code, 0);
    QCOMPARE(snapshot().value(QStringLiteral("0:ReceiveDestinationPort")), QStringLiteral("5555"));
}

void TestChecks::doneWithoutTheCheckSaysNothing()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    const Closed result = closed({});
    QCOMPARE(result.said, QString());
    QCOMPARE(result.code, 0);
}

// The closing check is tied to the override, not to its own box alone: while NMOS is in
// charge, the addresses are its business.
void TestChecks::doneUnderNmosSaysNothing()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    const Closed result = closed({QStringLiteral("check"), QStringLiteral("nmos")});
    QCOMPARE(result.said, QString());
    QCOMPARE(result.code, 0);
}

void TestChecks::doneListsAbsentInterfaces()
{
    put(0, "TransmitAncInterface", QStringLiteral("198.51.100.9"));
    commitStore();
    const Closed result = closed({QStringLiteral("check")});
    QCOMPARE(result.said, QStringLiteral("box [%1]\n").arg(missing("Anc IP ", "198.51.100.9")));
    QCOMPARE(result.code, 0); // listing never keeps it from closing
}

void TestChecks::doneChecksWhatItHasJustSaved()
{
    const Closed result = closed({QStringLiteral("check"), QStringLiteral("foreign")});
    QCOMPARE(result.said, QStringLiteral("box [%1]\n").arg(missing("Video IP ", "203.0.113.77")));
    QCOMPARE(result.code, 0);
}

// The list takes the focus away from the interface field; closing, that is no alert.
void TestChecks::doneWhileAFieldIsLeftListsOnce()
{
    fillInterfaces(QStringLiteral("127.0.0.1"));
    put(0, "ReceiveInterface", QStringLiteral("198.51.100.1"));
    commitStore();
    const Closed result =
        closed({QStringLiteral("check"), QStringLiteral("focus"), QStringLiteral("byname")});
    QCOMPARE(result.said, QStringLiteral("box [%1]\n").arg(missing("Video IP ", "198.51.100.1")));
    QCOMPARE(result.code, 0);
}

// An address tells of its last key a moment later. "Done" does not wait for that moment, and the locked
// field still reaches the other elements.
void TestChecks::theLastKeyIsNotLost()
{
    const Closed result = closed({QStringLiteral("key"), QStringLiteral("byname")});
    QCOMPARE(result.code, 0);
    const Snapshot now = snapshot();
    const QString typed = now.value(QStringLiteral("0:ReceiveDestinationIp"));
    QVERIFY2(typed.contains(QLatin1Char('7')), qPrintable(typed));
    QCOMPARE(now.value(QStringLiteral("0:ReceiveAncDestinationIp")), typed);
    QCOMPARE(now.value(QStringLiteral("0:ReceiveAudDestinationIp7")), typed);
}

// The click takes the focus first, which is one alert; from then on the dialog is closing.
void TestChecks::doneRaisesNoSecondAlert()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    const Closed result = closed({QStringLiteral("check"), QStringLiteral("nmos"), QStringLiteral("focus")});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.said.count(QLatin1String("box [")), 1);
    QVERIFY2(result.said.startsWith(QLatin1String("box [The IP 198.51.100.1")), qPrintable(result.said));
}

void TestChecks::cancelEndsWithoutSaving()
{
    const Snapshot before = snapshot();
    const Closed result = closed({QStringLiteral("cancel"), QStringLiteral("check")});
    QCOMPARE(result.code, 0);
    Snapshot expected;
    expected.insert(QStringLiteral("KWX\\Advanced\\Debug:NMOSUseLog"), QStringLiteral("0")); // by the start
    QCOMPARE(changes(before, snapshot()), expected);
}

// ---------------------------------------------------------------------------------------- the check

void TestChecks::absentInterfacesInTableOrder()
{
    put(0, "ReceiveInterface", QStringLiteral("198.51.100.1"));
    put(0, "TransmitAudInterface", QStringLiteral("198.51.100.2"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    const int logBefore = logText().size();
    ModalAnswer answer(QStringLiteral("OK"));
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.shown(), 1);
    QCOMPARE(answer.title(), QStringLiteral("Error List"));
    QCOMPARE(answer.text(), missing("Video IP ", "198.51.100.1") + missing("Audio IP ", "198.51.100.2"));
    const QByteArray log = logText().mid(logBefore);
    QCOMPARE(log.count("SMPTE2110-RiverMax:"), 1);
    QVERIFY(log.indexOf("Video IP 198.51.100.1 does not exist!  Please") <
            log.indexOf("Audio IP 198.51.100.2"));
}

void TestChecks::anUnconfiguredChannelGivesSix()
{
    open();
    choose(m_dialog->m_pChannel, 1);
    m_dialog->m_pCheckErrs->setChecked(true);
    ModalAnswer answer(QStringLiteral("OK"));
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.text(), missing("Video IP ", "") + missing("Video IP ", "") + missing("Audio IP ", "") +
                                missing("Audio IP ", "") + missing("Anc IP ", "") + missing("Anc IP ", ""));
}

void TestChecks::theCheckReadsTheShownChannel()
{
    for (const char *key : kInterfaceKeys)
        put(2, key, QStringLiteral("127.0.0.1"));
    put(2, "ReceiveAncInterface", QStringLiteral("not an address"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    ModalAnswer answer(QStringLiteral("OK"));
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.shown(), 0);
    choose(m_dialog->m_pChannel, 2);
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.text(), missing("Anc IP ", "not an address"));
    m_dialog->m_pCheckErrs->setChecked(false);
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.shown(), 1);
}

// Also on a channel that carries video alone: see docs/deliberate.md.
void TestChecks::everyTypeIsCheckedWhole()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    m_dialog->disconnectSignals();
    m_dialog->m_pComboType->addItem(QStringLiteral("another"), 3);
    m_dialog->m_pComboType->setCurrentIndex(1);
    m_dialog->connectSignals();
    m_dialog->m_pCheckErrs->setChecked(true);
    ModalAnswer answer(QStringLiteral("OK"));
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.text().count(QLatin1Char('\n')), 6);
    QCOMPARE(answer.text().count(QLatin1String("Anc IP ")), 2);
}

// What is stored may look like markup; it is shown as it is.
void TestChecks::addressesAreShownAsTheyAre()
{
    fillInterfaces(QStringLiteral("127.0.0.1"));
    put(0, "ReceiveInterface", QStringLiteral("<b>x</b>"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    ModalAnswer answer(QStringLiteral("OK"));
    QCOMPARE(m_dialog->checkErrors(), 1);
    QCOMPARE(answer.text(), missing("Video IP ", "<b>x</b>"));
}

void TestChecks::withoutAListOfInterfacesNothingIsStored()
{
    put(0, "TransmitInterface", QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pEditSndIFace->setAddress(QStringLiteral("127.0.0.1"));
    const Snapshot before = snapshot();
    noInterfaces = true;
    m_dialog->onInterfaceEdit();
    noInterfaces = false;
    QCOMPARE(changes(before, snapshot()), Snapshot());
    m_dialog->onInterfaceEdit();
    QVERIFY(changes(before, snapshot()).contains(QStringLiteral("0:TransmitInterface")));
}

// ---------------------------------------------------------------------------------------- the alert

void TestChecks::alert_data()
{
    QTest::addColumn<bool>("receive");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("locked");
    QTest::addColumn<bool>("check");
    for (const bool receive : {true, false}) {
        for (const bool exists : {true, false}) {
            for (const bool locked : {true, false}) {
                const QString name = QStringLiteral("%1, %2, %3")
                                         .arg(receive ? QStringLiteral("receive") : QStringLiteral("send"),
                                              exists ? QStringLiteral("there") : QStringLiteral("absent"),
                                              locked ? QStringLiteral("locked") : QStringLiteral("open"));
                QTest::newRow(qPrintable(name)) << receive << exists << locked << true;
            }
        }
        QTest::newRow(receive ? "receive, unchecked" : "send, unchecked")
            << receive << false << false << false;
    }
}

void TestChecks::alert()
{
    QFETCH(bool, receive);
    QFETCH(bool, exists);
    QFETCH(bool, locked);
    QFETCH(bool, check);
    fillInterfaces(exists ? QStringLiteral("127.0.0.1") : QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pCheckErrs->setChecked(check);
    if (!locked)
        click(receive ? m_dialog->m_pCheckLockRecDstIFace : m_dialog->m_pCheckLockSndDstIFace);
    QLineAddress *field = receive ? m_dialog->m_pEditRecIFace : m_dialog->m_pEditSndIFace;
    ModalAnswer answer(QStringLiteral("OK"));
    QTest::mouseClick(field->m_pLineEdit[3], Qt::LeftButton);
    QCOMPARE(answer.shown(), 0);
    QTest::keyClick(field->m_pLineEdit[3], Qt::Key_Return);
    QString expected;
    if (!exists)
        expected += missing("The IP ", "198.51.100.1");
    if (!locked)
        expected += QLatin1String(kLockWarning);
    QCOMPARE(answer.shown(), check && !expected.isEmpty() ? 1 : 0);
    QCOMPARE(answer.text(), check ? expected : QString());
}

void TestChecks::alertOnEveryWayOut_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"return", "enter", "tab", "click", "menu"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void TestChecks::alertOnEveryWayOut()
{
    QFETCH(QString, way);
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    ModalAnswer answer(QStringLiteral("OK"));
    QLineAddress *field = m_dialog->m_pEditRecIFace;
    // Between its octets the field is not left.
    QTest::mouseClick(field->m_pLineEdit[0], Qt::LeftButton);
    for (int octet = 0; octet < 3; ++octet)
        QTest::keyClick(field->m_pLineEdit[octet], Qt::Key_Tab);
    QTRY_VERIFY(field->m_pLineEdit[3]->hasFocus());
    QCOMPARE(answer.shown(), 0);
    if (way == QLatin1String("return"))
        QTest::keyClick(field->m_pLineEdit[3], Qt::Key_Return);
    else if (way == QLatin1String("enter"))
        QTest::keyClick(field->m_pLineEdit[3], Qt::Key_Enter);
    else if (way == QLatin1String("tab"))
        QTest::keyClick(field->m_pLineEdit[3], Qt::Key_Tab);
    else if (way == QLatin1String("menu"))
        openMenu(field->m_pLineEdit[3]);
    else
        QTest::mouseClick(m_dialog->m_pEditRecDstPort, Qt::LeftButton);
    QTRY_COMPARE(answer.shown(), 1);
    QCOMPARE(answer.text(), missing("The IP ", "198.51.100.1"));
}

void TestChecks::alertWithoutSenderIsTheSendField()
{
    put(0, "TransmitInterface", QStringLiteral("198.51.100.77"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    ModalAnswer answer(QStringLiteral("OK"));
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onInterfaceAlert"));
    QCOMPARE(answer.text(), missing("The IP ", "198.51.100.77"));
}

void TestChecks::noAlertWhileClosing()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    QTest::mouseClick(m_dialog->m_pEditRecIFace->m_pLineEdit[3], Qt::LeftButton);
    m_dialog->m_bClosing = true; // as "Done" does first
    ModalAnswer answer(QStringLiteral("OK"));
    QTest::keyClick(m_dialog->m_pEditRecIFace->m_pLineEdit[3], Qt::Key_Tab);
    QCoreApplication::processEvents();
    QCOMPARE(answer.shown(), 0);
}

// The type change lists errors while an interface field has the focus: the list takes the focus away,
// which is one more alert. It changes the text of the box that is there.
void TestChecks::oneBoxWhateverTheFocusDoes()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pComboType->addItem(QStringLiteral("SMPTE-2110 again"), 1);
    m_dialog->m_pCheckErrs->setChecked(true);
    QTest::mouseClick(m_dialog->m_pEditRecIFace->m_pLineEdit[0], Qt::LeftButton);
    QVERIFY(m_dialog->m_pEditRecIFace->m_pLineEdit[0]->hasFocus());
    ShowCounter counter(m_dialog->m_pErrDlg);
    QString said;
    QTimer press;
    connect(&press, &QTimer::timeout, this, [&] {
        if (!m_dialog->m_pErrDlg->isActiveWindow()) // not before the focus has moved
            return;
        said = m_dialog->m_pEditErrMsg->toPlainText();
        m_dialog->m_pErrOk->click();
    });
    press.start(5);
    m_dialog->m_pComboType->setCurrentIndex(1);
    press.stop();
    QCOMPARE(counter.shown, 1);
    QCOMPARE(ShowCounter::nestedCalls, 0);
    QCOMPARE(said, missing("The IP ", "198.51.100.1"));
    QVERIFY(!m_dialog->m_pErrDlg->isVisible());
}

void TestChecks::oneBoxUnderManyAlerts()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    ShowCounter counter(m_dialog->m_pErrDlg);
    int alerts = 0;
    QTimer more;
    connect(&more, &QTimer::timeout, this, [&] {
        QVERIFY(m_dialog->m_pErrDlg->isVisible());
        QMetaObject::invokeMethod(m_dialog.get(), "onInterfaceAlert");
        if (++alerts == 20)
            m_dialog->m_pErrOk->click();
    });
    more.start(0);
    m_dialog->checkErrors();
    more.stop();
    QCOMPARE(alerts, 20);
    QCOMPARE(counter.shown, 1);
    QCOMPARE(ShowCounter::nestedCalls, 0);
}

// Closing the box moves the focus before its event loop has ended.
void TestChecks::noBoxFromTheOneThatCloses()
{
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    m_dialog->m_pCheckErrs->setChecked(true);
    ShowCounter counter(m_dialog->m_pErrDlg);
    connect(m_dialog->m_pErrDlg, &QDialog::finished, this,
            [this] { QMetaObject::invokeMethod(m_dialog.get(), "onInterfaceAlert"); });
    ModalAnswer answer(QStringLiteral("OK"));
    m_dialog->checkErrors();
    QCOMPARE(counter.shown, 1);
    QCOMPARE(ShowCounter::nestedCalls, 0);
    m_dialog->checkErrors(); // and the next one comes as usual
    QCOMPARE(counter.shown, 2);
}

// ----------------------------------------------------------------------------------------- the edit

void TestChecks::interfaceEdit_data()
{
    QTest::addColumn<int>("element");
    QTest::addColumn<bool>("receive");
    QTest::addColumn<bool>("locked");
    const char *const names[] = {"video", "audio", "anc"};
    for (int element = 0; element < 3; ++element) {
        for (const bool receive : {true, false}) {
            for (const bool locked : {true, false}) {
                QTest::newRow(
                    qPrintable(QStringLiteral("%1 %2 %3")
                                   .arg(QLatin1String(names[element]),
                                        receive ? QStringLiteral("receive") : QStringLiteral("send"),
                                        locked ? QStringLiteral("locked") : QStringLiteral("open"))))
                    << element << receive << locked;
            }
        }
    }
}

void TestChecks::interfaceEdit()
{
    QFETCH(int, element);
    QFETCH(bool, receive);
    QFETCH(bool, locked);
    fillInterfaces(QStringLiteral("198.51.100.1"));
    open();
    QRadioButton *const radios[] = {m_dialog->m_pVideoConfig, m_dialog->m_pAudioConfig,
                                    m_dialog->m_pAncConfig};
    radios[element]->setChecked(true);
    if (!locked)
        click(receive ? m_dialog->m_pCheckLockRecDstIFace : m_dialog->m_pCheckLockSndDstIFace);
    const Snapshot before = snapshot();
    typeAddress(receive ? m_dialog->m_pEditRecIFace : m_dialog->m_pEditSndIFace, QStringLiteral("127.0.0.1"));
    Snapshot expected;
    for (int i = 0; i < 3; ++i) {
        const char *const key = kInterfaceKeys[2 * i + (receive ? 0 : 1)];
        if (locked || i == element)
            expected.insert(QStringLiteral("0:") + QLatin1String(key), QStringLiteral("'127.0.0.1'"));
    }
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestChecks::foreignInterfaceIsNotStored()
{
    open();
    const Snapshot before = snapshot();
    typeAddress(m_dialog->m_pEditSndIFace, QStringLiteral("198.51.100.55"));
    QCOMPARE(m_dialog->m_pEditSndIFace->address(), QStringLiteral("198.51.100.55"));
    QTest::keyClick(m_dialog->m_pEditSndIFace->m_pLineEdit[3], Qt::Key_Return);
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestChecks::theNextSaveStoresAForeignInterface()
{
    open();
    typeAddress(m_dialog->m_pEditSndIFace, QStringLiteral("198.51.100.55"));
    typeText(m_dialog->m_pEditSndDstPort, QStringLiteral("5006"));
    QCOMPARE(snapshot().value(QStringLiteral("0:TransmitInterface")), QStringLiteral("'198.51.100.55'"));
    QCOMPARE(snapshot().value(QStringLiteral("0:TransmitAudInterface")), QStringLiteral("'127.0.0.1'"));
}

void TestChecks::anEditNotesTheMachinesAddresses()
{
    open();
    QLoggingCategory::setFilterRules(QString());
    QTest::ignoreMessage(QtDebugMsg, "interface 127.0.0.1");
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onInterfaceEdit"));
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

// ---------------------------------------------------------------------------------------- the rest

void TestChecks::showUrlsReloads()
{
    open();
    put(0, "ReceiveDestinationPort", 4711);
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "showurls"));
    QCOMPARE(m_dialog->m_pEditRecDstPort->text(), QStringLiteral("4711"));
    QVERIFY(m_dialog->isVisible());
}

// No button is the default: Return ends an edit and nothing else.
void TestChecks::returnPressesNoButton()
{
    open();
    m_dialog->onShowNmosCfg();
    m_dialog->m_pUseGmId->setChecked(true);
    int pressed = 0;
    for (QPushButton *button : m_dialog->findChildren<QPushButton *>()) {
        if (button == m_dialog->m_pErrOk)
            continue;
        QVERIFY2(!button->autoDefault() && !button->isDefault(), qPrintable(button->objectName()));
        connect(button, &QPushButton::clicked, this, [&pressed] { ++pressed; });
    }
    for (QLineEdit *edit : m_dialog->findChildren<QLineEdit *>()) {
        if (!edit->isVisible() || !edit->isEnabled() || edit->isReadOnly())
            continue;
        edit->setFocus();
        QTest::keyClick(edit, Qt::Key_Return);
    }
    QCOMPARE(pressed, 0);
    QVERIFY(m_dialog->isVisible());
}

void TestChecks::getIp_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("address");
    QTest::newRow("address and description")
        << QStringLiteral("10.0.0.1 eth0 media") << QStringLiteral("10.0.0.1");
    QTest::newRow("address") << QStringLiteral("10.0.0.1") << QStringLiteral("10.0.0.1");
    QTest::newRow("blank first") << QStringLiteral(" 10.0.0.1") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void TestChecks::getIp()
{
    QFETCH(QString, text);
    open();
    QTEST(m_dialog->GetIP(text), "address");
}

void TestChecks::defaultInterfaceIsReserved()
{
    open();
    const Snapshot before = snapshot();
    QCOMPARE(m_dialog->findDefaultInterface(), 0);
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, true);
    QApplication application(argc, argv);
    useCorvelAppearance(application);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.value(0) == QLatin1String("--close"))
        return closeDialog(words.mid(1));
    TestChecks test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_checks.moc"
