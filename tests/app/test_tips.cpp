// SPDX-License-Identifier: MIT
//
// What the dialog tells beside its texts: tool tips that say what a click would do right now, and a line in
// the log when the screen is too small.
#include "support/dialog.h"
#include "support/logfile.h"
#include "support/snapshot.h"
#include "support/tip.h"

#include <memory>

using namespace DialogTest;
using namespace LogTest;
using namespace StoreTest;

class TestTips : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void loadSaysWhyItIsGrey();
    void loadSaysHowToGetItBack();
    void lockAllNamesTheNumber();
    void lockAllCountsWhatDiffers();
    void lockAllOfAHostWritesNothing();
    void aScreenThatIsTooSmallIsLoggedOnce();

private:
    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestTips::init()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    put(0, "VideoType", 1);
    put(0, "ReceiveDestinationPort", 5004);
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
}

void TestTips::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestTips::loadSaysWhyItIsGrey()
{
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
    QCOMPARE(tipOf(m_dialog->m_pCmdLoad),
             QStringLiteral("Read settings or a session description from a file"));
    ModalAnswer answer(QStringLiteral("OK"));
    click(m_dialog->m_pNmosOverride);
    QVERIFY(!m_dialog->m_pCmdLoad->isEnabled());
    QCOMPARE(m_dialog->m_pCmdLoad->toolTip(), // also without a mouse
             QStringLiteral(
                 "Files can be loaded only while NMOS is overridden: check \"Override NMOS Settings\""));
    QCOMPARE(m_dialog->m_pCmdLoad->accessibleDescription(), m_dialog->m_pCmdLoad->toolTip());
    click(m_dialog->m_pNmosOverride);
    QVERIFY(m_dialog->m_pCmdLoad->isEnabled());
    QVERIFY(m_dialog->m_pCmdLoad->toolTip().startsWith(QLatin1String("Read settings")));
}

void TestTips::loadSaysHowToGetItBack()
{
    ModalAnswer answer(QStringLiteral("CANCEL"));
    click(m_dialog->m_pNmosOverride);
    QVERIFY(m_dialog->m_pNmosOverride->isChecked() && !m_dialog->m_pCmdLoad->isEnabled());
    QCOMPARE(tipOf(m_dialog->m_pCmdLoad),
             QStringLiteral("Files can be loaded again when \"Override NMOS Settings\" has been changed"));
}

void TestTips::lockAllNamesTheNumber()
{
    QCheckBox *lockAll = m_dialog->m_pCheckLockGroup;
    const QString tip = tipOf(lockAll);
    QVERIFY2(tip.contains(QLatin1String("The 8 addresses and ports shown are written to")), qPrintable(tip));
    QVERIFY2(tip.contains(QLatin1String(" of Channel-0: 80 values, ")), qPrintable(tip));
    // The toolkit breaks no line of a tip.
    for (const QString &line : tip.split(QLatin1Char('\n')))
        QVERIFY2(m_dialog->fontMetrics().horizontalAdvance(line) < m_dialog->width(), qPrintable(line));
    click(lockAll);
    QCOMPARE(tipOf(lockAll), QStringLiteral("Unlock all ten fields. No value changes"));
}

// The number that is told is the number that changes.
void TestTips::lockAllCountsWhatDiffers()
{
    click(m_dialog->m_pCheckLockGroup); // everything is the same now
    click(m_dialog->m_pCheckLockGroup);
    QVERIFY2(tipOf(m_dialog->m_pCheckLockGroup).contains(QLatin1String(" of which 0 are different")),
             qPrintable(m_dialog->m_pCheckLockGroup->toolTip()));
    typeText(m_dialog->m_pEditRecDstPort, QStringLiteral("6000"));
    typeText(m_dialog->m_pEditSndSrcPort, QStringLiteral("7000"));
    QVERIFY2(tipOf(m_dialog->m_pCheckLockGroup).contains(QLatin1String(" of which 18 are different")),
             qPrintable(m_dialog->m_pCheckLockGroup->toolTip()));
    const Snapshot before = snapshot();
    click(m_dialog->m_pCheckLockGroup);
    QCOMPARE(changes(before, snapshot()).size(), 18);
}

void TestTips::lockAllOfAHostWritesNothing()
{
    m_dialog = std::make_unique<QCorvel>(static_cast<QWidget *>(nullptr));
    show(m_dialog.get());
    QVERIFY(tipOf(m_dialog->m_pCheckLockGroup).contains(QLatin1String("sent to the engine")));
}

// The screen here is 800 x 600; the dialog keeps its size.
void TestTips::aScreenThatIsTooSmallIsLoggedOnce()
{
    startLog();
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    for (int i = 0; i < 2; ++i) {
        show(m_dialog.get());
        m_dialog->hide();
    }
    QCOMPARE(m_dialog->size(), QSize(660, 640));
    const QByteArray log = logText();
    QCOMPARE(log.count("The dialog of 660 x 640 pixels does not fit the screen of 800 x 600"), 1);
}

CORVEL_DIALOG_TEST_MAIN(TestTips)
#include "test_tips.moc"
