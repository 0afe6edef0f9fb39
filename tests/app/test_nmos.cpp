// SPDX-License-Identifier: MIT
//
// NMOS: the node's settings, the override with its question, the log switch.
#include "app/nmosthread.h"
#include "fake/recorder.h"
#include "support/dialog.h"
#include "support/snapshot.h"
#include "support/tip.h"
#include "theme/invalidmark.h"

#include <QVBoxLayout>

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

const char kOverride[] = "KWX\\Advanced\\AvHAL:nmosoverride";

QString globalOverride()
{
    const Snapshot now = snapshot();
    return now.value(QLatin1String(kOverride),
                     now.value(QStringLiteral("KWX\\Advanced\\AvHal:nmosoverride")));
}

// The writes of one value since the recorder was cleared.
QByteArrayList written(const QByteArray &value)
{
    QByteArrayList found;
    for (const QByteArray &call : Recorder::calls()) {
        if (call.contains(value))
            found.append(call);
    }
    return found;
}

// The question that is on screen, or null.
QDialog *question()
{
    return qobject_cast<QDialog *>(QApplication::activeModalWidget());
}

// Runs once a modal dialog is on screen.
template<class Do>
void whenAsked(QObject *owner, Do run)
{
    QTimer *timer = new QTimer(owner);
    QObject::connect(timer, &QTimer::timeout, owner, [timer, run] {
        QDialog *dialog = question();
        if (!dialog || !dialog->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        run(dialog);
    });
    timer->start(5);
}

} // namespace

class TestNmos : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void settingsAreShown();
    void neverSetAddressesShowTheDefault();
    void settingsAreStoredForChannelZero();
    void aForeignNodeAddressIsLeftOut();
    void whatIsShownIsReadAgain();
    void aClickSelectsTheServerPort();

    void overrideOffAsks();
    void questionLooks();
    void cancelChecksTheBoxAgain_data();
    void cancelChecksTheBoxAgain();
    void overrideOnDoesNotAsk();
    void overrideReloadsTheChannel();
    void theSwitchIsWrittenBeforeTheAnswer();
    void theSwitchHasTwoPlaces();
    void loadFileIsThereAtTheStart_data();
    void loadFileIsThereAtTheStart();
    void theOverrideHoldsForTheNextStart();

    void logSwitch();
    void logSwitchSavesAChangeOnly();
    void hooksDoNothing();

private:
    void open(bool override);
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestNmos::init()
{
    m_store = std::make_unique<FreshStore>();
}

void TestNmos::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestNmos::open(bool override)
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", override ? 1 : 0);
    commitStore();
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
}

// ------------------------------------------------------------------------------------ node settings

void TestNmos::settingsAreShown()
{
    put(0, "nmosdomain", QStringLiteral("studio.example"));
    put(0, "nmosip", QStringLiteral("10.1.1.1"));
    put(0, "nmosserverip", QStringLiteral("10.1.1.2"));
    put(0, "nmosserverport", QStringLiteral("8235"));
    put(1, "nmosdomain", QStringLiteral("not this one"));
    open(true);
    choose(m_dialog->m_pChannel, 1);
    click(m_dialog->m_pOpenNmosCfg);
    QVERIFY(m_dialog->m_pNmosCfg->isVisible());
    QVERIFY(!m_dialog->m_pNmosCfg->isModal());
    QCOMPARE(m_dialog->m_pNmosCfg->windowTitle(), QStringLiteral("NMOS Config"));
    QCOMPARE(m_dialog->m_pEditNmosDmn->text(), QStringLiteral("studio.example"));
    QCOMPARE(m_dialog->m_pLineNmosIp->address(), QStringLiteral("10.1.1.1"));
    QCOMPARE(m_dialog->m_pLineNmosSrv->address(), QStringLiteral("10.1.1.2"));
    QCOMPARE(m_dialog->m_pEditNmosPort->text(), QStringLiteral("8235"));
}

void TestNmos::neverSetAddressesShowTheDefault()
{
    open(true);
    click(m_dialog->m_pOpenNmosCfg);
    QCOMPARE(m_dialog->m_pLineNmosIp->address(), QStringLiteral("1.0.0.0"));
    QCOMPARE(m_dialog->m_pLineNmosSrv->address(), QStringLiteral("1.0.0.0"));
    QCOMPARE(m_dialog->m_pEditNmosPort->text(), QString());
    const Snapshot before = snapshot();
    click(m_dialog->m_pSetNmosCfg);
    Snapshot expected;
    expected.insert(QStringLiteral("0:nmosdomain"), QStringLiteral("''"));
    expected.insert(QStringLiteral("0:nmosserverip"), QStringLiteral("'1.0.0.0'"));
    expected.insert(QStringLiteral("0:nmosserverport"), QStringLiteral("''"));
    QCOMPARE(changes(before, snapshot()), expected);
}

// The port is a text, stored as typed.
void TestNmos::settingsAreStoredForChannelZero()
{
    open(true);
    choose(m_dialog->m_pChannel, 3);
    click(m_dialog->m_pOpenNmosCfg);
    typeText(m_dialog->m_pEditNmosDmn, QStringLiteral("ob van"));
    typeAddress(m_dialog->m_pLineNmosIp, QStringLiteral("127.0.0.1"));
    typeAddress(m_dialog->m_pLineNmosSrv, QStringLiteral("198.51.100.2"));
    typeText(m_dialog->m_pEditNmosPort, QStringLiteral("08235 "));
    const Snapshot before = snapshot();
    click(m_dialog->m_pSetNmosCfg);
    QVERIFY(!m_dialog->m_pNmosCfg->isVisible());
    Snapshot expected;
    expected.insert(QStringLiteral("0:nmosdomain"), QStringLiteral("'ob van'"));
    expected.insert(QStringLiteral("0:nmosip"), QStringLiteral("'127.0.0.1'"));
    expected.insert(QStringLiteral("0:nmosserverip"), QStringLiteral("'198.51.100.2'"));
    expected.insert(QStringLiteral("0:nmosserverport"), QStringLiteral("'08235 '"));
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestNmos::aForeignNodeAddressIsLeftOut()
{
    put(0, "nmosip", QStringLiteral("127.0.0.1"));
    open(true);
    click(m_dialog->m_pOpenNmosCfg);
    typeAddress(m_dialog->m_pLineNmosIp, QStringLiteral("198.51.100.3"));
    QTRY_VERIFY(isMarkedInvalid(m_dialog->m_pLineNmosIp));
    QVERIFY(!isMarkedInvalid(m_dialog->m_pLineNmosSrv));
    QCOMPARE(
        tipOf(m_dialog->m_pLineNmosIp),
        QStringLiteral("This machine has no interface with the address 198.51.100.3.\nStored is: 127.0.0.1"));
    typeAddress(m_dialog->m_pLineNmosSrv, QStringLiteral("198.51.100.4"));
    typeText(m_dialog->m_pEditNmosDmn, QStringLiteral("studio"));
    typeText(m_dialog->m_pEditNmosPort, QStringLiteral("1"));
    click(m_dialog->m_pSetNmosCfg);
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:nmosip")), QStringLiteral("'127.0.0.1'"));
    QCOMPARE(now.value(QStringLiteral("0:nmosserverip")), QStringLiteral("'198.51.100.4'"));
    QCOMPARE(now.value(QStringLiteral("0:nmosdomain")), QStringLiteral("'studio'"));
    QCOMPARE(now.value(QStringLiteral("0:nmosserverport")), QStringLiteral("'1'"));
}

void TestNmos::whatIsShownIsReadAgain()
{
    open(true);
    click(m_dialog->m_pOpenNmosCfg);
    typeText(m_dialog->m_pEditNmosDmn, QStringLiteral("left without Set"));
    QTRY_VERIFY(isMarkedInvalid(m_dialog->m_pLineNmosIp)); // nobody's address
    typeAddress(m_dialog->m_pLineNmosIp, QStringLiteral("127.0.0.1"));
    QTRY_VERIFY(!isMarkedInvalid(m_dialog->m_pLineNmosIp));
    m_dialog->m_pNmosCfg->close();
    click(m_dialog->m_pOpenNmosCfg);
    QCOMPARE(m_dialog->m_pEditNmosDmn->text(), QString());
}

void TestNmos::aClickSelectsTheServerPort()
{
    put(0, "nmosserverport", QStringLiteral("8010"));
    open(true);
    QTest::mouseClick(m_dialog->m_pOpenNmosCfg, Qt::LeftButton);
    QVERIFY(QTest::qWaitForWindowActive(m_dialog->m_pNmosCfg));
    QTest::mouseClick(m_dialog->m_pEditNmosPort, Qt::LeftButton);
    QCOMPARE(m_dialog->m_pEditNmosPort->selectedText(), QStringLiteral("8010"));
}

// ----------------------------------------------------------------------------------------- override

void TestNmos::overrideOffAsks()
{
    open(true);
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
    ModalAnswer answer(QStringLiteral("OK"));
    click(m_dialog->m_pNmosOverride);
    QCOMPARE(answer.shown(), 1);
    QCOMPARE(answer.text(), QStringLiteral("Using NMOS may over write your current settings. Continue?"));
    QVERIFY(!m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
    QVERIFY(!m_dialog->m_pCmdLoad->isEnabled());
    QCOMPARE(globalOverride(), QStringLiteral("0"));
    QCOMPARE(snapshot().value(QStringLiteral("0:nmosoverride")), QStringLiteral("0"));
}

void TestNmos::questionLooks()
{
    open(true);
    bool looked = false;
    whenAsked(m_dialog.get(), [&](QDialog *dialog) {
        looked = true;
        QCOMPARE(dialog->parentWidget(), m_dialog.get());
        QVERIFY(dialog->isModal());
        const QVBoxLayout *column = qobject_cast<QVBoxLayout *>(dialog->layout());
        QVERIFY(column);
        const int gap = int(10 * QCorvel::fontFactor());
        QCOMPARE(dialog->windowTitle(), m_dialog->windowTitle());
        QCOMPARE(column->contentsMargins(), QMargins(gap, gap, gap, gap));
        QCOMPARE(column->spacing(), gap);
        const QLayout *row = column->itemAt(1)->layout();
        QVERIFY(row);
        QCOMPARE(row->contentsMargins(), QMargins(gap, gap, gap, gap));
        QCOMPARE(row->spacing(), gap);
        const QLabel *label = dialog->findChild<QLabel *>();
        QCOMPARE(label->font().pointSize(), 10);
        QCOMPARE(label->font().family(), m_dialog->font().family());
        QStringList texts;
        for (const QPushButton *button : dialog->findChildren<QPushButton *>()) {
            texts.append(button->text());
            QCOMPARE(button->width(), int(100 * QCorvel::fontFactor()));
        }
        QCOMPARE(texts, (QStringList{QStringLiteral("OK"), QStringLiteral("CANCEL")}));
        dialog->reject();
    });
    click(m_dialog->m_pNmosOverride);
    if (question())
        question()->reject();
    QVERIFY(looked);
}

void TestNmos::cancelChecksTheBoxAgain_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"button", "escape", "close", "return"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

// The box is checked by the inner run, which enables "Load File"; the outer run ends with its own value.
void TestNmos::cancelChecksTheBoxAgain()
{
    QFETCH(QString, way);
    open(true);
    int asked = 0;
    whenAsked(m_dialog.get(), [&](QDialog *dialog) {
        ++asked;
        if (way == QLatin1String("escape"))
            QTest::keyClick(dialog, Qt::Key_Escape);
        else if (way == QLatin1String("close"))
            dialog->close();
        else if (way == QLatin1String("return")) // the harmless button is the default
            QTest::keyClick(dialog, Qt::Key_Return);
        else
            QTest::mouseClick(dialog->findChildren<QPushButton *>().last(), Qt::LeftButton);
    });
    click(m_dialog->m_pNmosOverride);
    QCOMPARE(asked, 1);
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
    QCOMPARE(globalOverride(), QStringLiteral("1"));
    QCOMPARE(snapshot().value(QStringLiteral("0:nmosoverride")), QStringLiteral("1"));
    QVERIFY(!m_dialog->m_pCmdLoad->isEnabled());
    // Until the next toggle.
    ModalAnswer answer(QStringLiteral("OK"));
    click(m_dialog->m_pNmosOverride);
    click(m_dialog->m_pNmosOverride);
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
}

void TestNmos::overrideOnDoesNotAsk()
{
    open(false);
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
    ModalAnswer answer(QStringLiteral("OK"));
    click(m_dialog->m_pNmosOverride);
    QCOMPARE(answer.shown(), 0);
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
    QCOMPARE(globalOverride(), QStringLiteral("1"));
    QCOMPARE(snapshot().value(QStringLiteral("0:nmosoverride")), QStringLiteral("1"));
}

// Under channel 0 whatever is shown, and without writing the channel that is.
void TestNmos::overrideReloadsTheChannel()
{
    open(false);
    choose(m_dialog->m_pChannel, 2);
    put(2, "ReceiveDestinationPort", 4711);
    const Snapshot before = snapshot();
    click(m_dialog->m_pNmosOverride);
    QCOMPARE(m_dialog->m_pEditRecDstPort->text(), QStringLiteral("4711"));
    const Snapshot now = snapshot();
    QCOMPARE(now.value(QStringLiteral("0:nmosoverride")), QStringLiteral("1"));
    QVERIFY(!now.contains(QStringLiteral("2:nmosoverride")));
    QVERIFY(!now.contains(QStringLiteral("2:ReceiveSourceIp")));
    QVERIFY(!before.contains(QStringLiteral("2:ReceiveSourceIp")));
}

void TestNmos::theSwitchIsWrittenBeforeTheAnswer()
{
    open(true);
    QString seen;
    whenAsked(m_dialog.get(), [&](QDialog *dialog) {
        seen = globalOverride();
        dialog->reject();
    });
    click(m_dialog->m_pNmosOverride);
    QCOMPARE(seen, QStringLiteral("0"));
    QCOMPARE(globalOverride(), QStringLiteral("1"));
}

// The path's letters are as they are, because a store that tells them apart keeps two values.
void TestNmos::theSwitchHasTwoPlaces()
{
    open(false);
    choose(m_dialog->m_pChannel, 2);
    Recorder::clear();
    click(m_dialog->m_pNmosOverride);
    QCOMPARE(written("nmosoverride="),
             (QByteArrayList{"KWX\\Advanced\\AvHal\\nmosoverride=1", "nmosoverride=1"}));
    QCOMPARE(Recorder::lastChannel(), 0);
    QCOMPARE(Recorder::calls().last(), QByteArray("save"));
}

void TestNmos::loadFileIsThereAtTheStart_data()
{
    QTest::addColumn<bool>("override");
    QTest::newRow("override") << true;
    QTest::newRow("NMOS") << false;
}

void TestNmos::loadFileIsThereAtTheStart()
{
    QFETCH(bool, override);
    open(override);
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
    QCOMPARE(m_dialog->m_pNmosOverride->isChecked(), override);
}

void TestNmos::theOverrideHoldsForTheNextStart()
{
    open(true);
    {
        ModalAnswer answer(QStringLiteral("OK"));
        click(m_dialog->m_pNmosOverride);
    }
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    QVERIFY(!m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
}

// --------------------------------------------------------------------------------------- log, hooks

void TestNmos::logSwitch()
{
    open(true);
    const QString key = QStringLiteral("KWX\\Advanced\\Debug:NMOSUseLog");
    QCOMPARE(snapshot().value(key), QStringLiteral("0"));
    click(m_dialog->m_pNmosOutLog);
    QVERIFY(m_dialog->bNmosUseLog);
    QCOMPARE(snapshot().value(key), QStringLiteral("1"));
    click(m_dialog->m_pNmosOutLog);
    QVERIFY(!m_dialog->bNmosUseLog);
    QCOMPARE(snapshot().value(key), QStringLiteral("0"));
}

void TestNmos::logSwitchSavesAChangeOnly()
{
    open(true);
    const QByteArray write("KWX\\Advanced\\Debug\\NMOSUseLog=1");
    Recorder::clear();
    m_dialog->toggleNmosLog(true);
    QCOMPARE(Recorder::calls(), (QByteArrayList{write, "save"}));
    Recorder::clear();
    m_dialog->toggleNmosLog(true);
    QCOMPARE(Recorder::calls(), QByteArrayList{write});
}

void TestNmos::hooksDoNothing()
{
    open(false);
    const Snapshot before = snapshot();
    m_dialog->restartNmos();
    m_dialog->asyncPopulateSenders();
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onMdnsConnect"));
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onNmosThreadReady", Q_ARG(int, 1)));
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onMdnsDeviceFound",
                                      Q_ARG(QString, QStringLiteral("node")), Q_ARG(QUrl, QUrl()),
                                      Q_ARG(QJsonDocument, QJsonDocument())));
    QCOMPARE(nmosInitNode(), 0);
    NmosThread thread;
    thread.start();
    QVERIFY(thread.wait(5000));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

CORVEL_DIALOG_TEST_MAIN(TestNmos)
#include "test_nmos.moc"
