// SPDX-License-Identifier: MIT
//
// The named configurations of the store, chosen in the header.
#include "fake/recorder.h"
#include "support/dialog.h"
#include "support/snapshot.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

QByteArray tool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(CORVEL_BIN_DIR "/rkcfg"), arguments);
    process.waitForFinished();
    return process.readAllStandardOutput();
}

QString defaultName()
{
    char name[256] = {};
    rkCFGGetDefaultName(name, sizeof name);
    return QString::fromUtf8(name);
}

// A configuration of this name with one value of channel 0; the default stays what it was.
void makeConfiguration(const QByteArray &name, const QString &address)
{
    const QByteArray before = defaultName().toUtf8();
    rkCFGSetDefaultName(name.constData());
    put(0, "ReceiveDestinationIp", address);
    put(0, "VideoType", 1);
    rkCFGClose(RKCFG_DEFAULT_STORE, 1);
    rkCFGSetDefaultName(before.constData());
}

} // namespace

class TestConfigs : public QObject {
    Q_OBJECT

private slots:
    void init() { m_store = std::make_unique<FreshStore>(); }
    void cleanup();
    void theDefaultIsThereOnAnEmptyStore();
    void everyConfigurationIsOffered();
    void namesBeyondAscii();
    void startingSwitchesNothing();
    void choosingSwitches();
    void aRefusedOneIsNotNamed();
    void whatWasTypedBeforeIsKept();
    void theOverrideIsThatOfTheOther();
    void whatTheOtherDoesNotSayIsOff();
    void theChannelListStays();
    void anotherProgramSwitches();
    void anEmbeddedDialogHasNone();

private:
    void open();
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestConfigs::open()
{
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    m_dialog->m_pSwapLayout->setCurrentIndex(0);
}

void TestConfigs::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestConfigs::theDefaultIsThereOnAnEmptyStore()
{
    open();
    QCOMPARE(m_dialog->m_pConfig->count(), 1);
    QVERIFY(m_dialog->m_pConfig->isVisible());
    QCOMPARE(m_dialog->m_pConfig->currentText(), defaultName());
    QCOMPARE(m_dialog->m_pConfig->currentData().toString(), defaultName());
    QVERIFY(!defaultName().isEmpty());
}

void TestConfigs::everyConfigurationIsOffered()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    makeConfiguration("outside van", QStringLiteral("239.3.3.3"));
    open();
    QStringList names;
    for (int i = 0; i < m_dialog->m_pConfig->count(); ++i) {
        names.append(m_dialog->m_pConfig->itemText(i));
        QCOMPARE(m_dialog->m_pConfig->itemData(i).toString(), m_dialog->m_pConfig->itemText(i));
    }
    names.sort();
    QStringList expected{defaultName(), QStringLiteral("outside van"), QStringLiteral("studio")};
    expected.sort();
    QCOMPARE(names, expected);
    QCOMPARE(m_dialog->m_pConfig->currentText(), defaultName());
}

void TestConfigs::namesBeyondAscii()
{
    makeConfiguration("stud\xC3\xADo", QStringLiteral("239.4.4.4"));
    open();
    const int index = m_dialog->m_pConfig->findText(QString::fromUtf8("stud\xC3\xADo"));
    QVERIFY(index >= 0);
    m_dialog->m_pConfig->setCurrentIndex(index);
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.4.4.4"));
    QCOMPARE(tool({QStringLiteral("default")}), QByteArray("stud\xC3\xADo\n"));
}

void TestConfigs::startingSwitchesNothing()
{
    makeConfiguration("aaa", QStringLiteral("239.2.2.2"));
    const QByteArray before = tool({QStringLiteral("default")});
    open();
    QCOMPARE(tool({QStringLiteral("default")}), before);
    QVERIFY(m_dialog->m_pLineRecDstAddr->address() != QLatin1String("239.2.2.2"));
}

void TestConfigs::choosingSwitches()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    open();
    const QString before = defaultName();
    m_dialog->m_pConfig->setFocus();
    Recorder::clear();
    QTest::keyClicks(m_dialog->m_pConfig, QStringLiteral("studio"));
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("studio"));
    // What is open is saved and closed before the other one is named.
    QCOMPARE(Recorder::calls(), (QByteArrayList{"close 1", "name studio", "ptp end"}));
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("239.2.2.2"));
    QCOMPARE(tool({QStringLiteral("default")}), QByteArrayLiteral("studio\n"));
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("5004"));
    QCOMPARE(snapshot().value(QStringLiteral("0:ReceiveDestinationPort")), QStringLiteral("5004"));
    // The other one knows nothing of it.
    tool({QStringLiteral("default"), before});
    QVERIFY(!snapshot().contains(QStringLiteral("0:ReceiveDestinationPort")));
}

// The store follows no link, so what is shown and written is still the configuration before.
void TestConfigs::aRefusedOneIsNotNamed()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    const QString folder = m_store->folder() + QStringLiteral("/corvel/");
    QVERIFY(QFile::link(folder + QStringLiteral("studio.rkcfg"), folder + QStringLiteral("linked.rkcfg")));
    open();
    const int linked = m_dialog->m_pConfig->findText(QStringLiteral("linked"));
    QVERIFY(linked >= 0);
    m_dialog->m_pConfig->setCurrentIndex(linked);
    QCOMPARE(defaultName(), QStringLiteral("default"));
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("default"));
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("1.0.0.0"));
    QCOMPARE(m_dialog->findChild<QLabel *>(QStringLiteral("statusLine"))->text(),
             QStringLiteral("The configuration linked cannot be used; default stays"));
}

// Closing saves what no slot has committed yet.
void TestConfigs::whatWasTypedBeforeIsKept()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    open();
    const QString before = defaultName();
    put(0, "ReceiveSourcePort", 4242);
    m_dialog->m_pConfig->setCurrentIndex(m_dialog->m_pConfig->findText(QStringLiteral("studio")));
    tool({QStringLiteral("default"), before});
    QCOMPARE(snapshot().value(QStringLiteral("0:ReceiveSourcePort")), QStringLiteral("4242"));
}

// As after another program's switch: the box, the page and the log tell of the configuration that is shown.
void TestConfigs::theOverrideIsThatOfTheOther()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    tool({QStringLiteral("default"), QStringLiteral("studio")});
    setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 1);
    setGlobalDword(StorePath::Debug, MachineValue::NmosUseLog, 1);
    put(0, FirstChannelValue::NmosDomain, QStringLiteral("studio.local"));
    tool({QStringLiteral("default"), QStringLiteral("default")});
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
    QTest::mouseClick(m_dialog->m_pOpenNmosCfg, Qt::LeftButton);

    const auto choose = [this](Qt::Key key, const char *name) {
        m_dialog->m_pConfig->setFocus();
        QTest::keyClick(m_dialog->m_pConfig, key);
        QCOMPARE(m_dialog->m_pConfig->currentText(), QLatin1String(name));
    };
    choose(Qt::Key_End, "studio");
    QVERIFY(m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 0);
    QVERIFY(m_dialog->m_pNmosOutLog->isChecked());
    QCOMPARE(m_dialog->m_pEditNmosDmn->text(), QStringLiteral("studio.local"));
    choose(Qt::Key_Home, "default");
    QVERIFY(!m_dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m_dialog->m_pSwapLayout->currentIndex(), 1);
    QVERIFY(!m_dialog->m_pNmosOutLog->isChecked());
    // Nothing of it is a change of the user's.
    QVERIFY(!snapshot().contains(QStringLiteral("0:nmosoverride")));
    choose(Qt::Key_End, "studio");
    QVERIFY(!snapshot().contains(QStringLiteral("0:nmosoverride")));
}

// A configuration that another program made holds neither switch: the server takes both for off.
void TestConfigs::whatTheOtherDoesNotSayIsOff()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    open();
    m_dialog->m_pNmosOverride->click();
    m_dialog->m_pNmosOutLog->click();
    QVERIFY(m_dialog->m_pNmosOutLog->isChecked());
    m_dialog->m_pConfig->setFocus();
    QTest::keyClick(m_dialog->m_pConfig, Qt::Key_End);
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("studio"));
    QVERIFY(!m_dialog->m_pNmosOverride->isChecked());
    QVERIFY(!m_dialog->m_pNmosOutLog->isChecked());
    QVERIFY(!m_dialog->bNmosUseLog);
    QVERIFY(!hasNumber(StorePath::Debug, MachineValue::NmosUseLog)); // looking writes nothing
    QTest::keyClick(m_dialog->m_pConfig, Qt::Key_Home);
    QVERIFY(m_dialog->m_pNmosOutLog->isChecked());
}

void TestConfigs::theChannelListStays()
{
    const QByteArray before = defaultName().toUtf8();
    rkCFGSetDefaultName("big");
    setGlobalDword(StorePath::Config, "MaxIntChannels", 9);
    rkCFGClose(RKCFG_DEFAULT_STORE, 1);
    rkCFGSetDefaultName(before.constData());
    open();
    m_dialog->m_pChannel->setCurrentIndex(2);
    m_dialog->m_pConfig->setCurrentIndex(m_dialog->m_pConfig->findText(QStringLiteral("big")));
    QCOMPARE(m_dialog->m_pChannel->count(), 4);
    QCOMPARE(m_dialog->m_pChannel->currentIndex(), 2);
}

// Edits go to the configuration in use. One that was switched by another program is shown as soon as the
// window comes to the front again, so that no old value is ever saved into it.
void TestConfigs::anotherProgramSwitches()
{
    makeConfiguration("other", QStringLiteral("10.7.7.7"));
    open();
    QCOMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("default"));
    QDialog front;
    show(&front);
    tool({QStringLiteral("default"), QStringLiteral("other")});
    const QByteArray before = dump();
    front.close();
    show(m_dialog.get());
    QTRY_COMPARE(m_dialog->m_pConfig->currentText(), QStringLiteral("other"));
    QCOMPARE(m_dialog->m_pLineRecDstAddr->address(), QStringLiteral("10.7.7.7"));
    QCOMPARE(dump(), before);
    QCOMPARE(defaultName(), QStringLiteral("other"));
}

void TestConfigs::anEmbeddedDialogHasNone()
{
    makeConfiguration("studio", QStringLiteral("239.2.2.2"));
    m_dialog = std::make_unique<QCorvel>(nullptr);
    QVERIFY(!m_dialog->m_pConfig);
    const QString before = defaultName();
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onSetConfig"));
    QCOMPARE(defaultName(), before);
}

CORVEL_DIALOG_TEST_MAIN(TestConfigs)
#include "test_configs.moc"
