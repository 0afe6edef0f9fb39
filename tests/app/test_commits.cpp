// SPDX-License-Identifier: MIT
//
// Whatever writes to the store makes it durable before it is done: each action of a person, and each call
// of a host.
#include "fake/recorder.h"
#include "support/filefixture.h"

#include <cstring>
#include <functional>

using namespace DialogTest;

namespace {

using Action = std::function<void(FileFixture &)>;

struct Row {
    const char *name;
    Action run;
};

void call(FileFixture &m, const char *slot, bool value)
{
    QVERIFY(QMetaObject::invokeMethod(m.dialog.get(), slot, Q_ARG(bool, value)));
}

void chooseOther(QComboBox *combo)
{
    combo->setCurrentIndex(combo->count() - 1);
}

void push(FileFixture &m, const char *description)
{
    const int size = int(strlen(description));
    void *block = malloc(size_t(size));
    memcpy(block, description, size_t(size));
    m.dialog->onSendSdp(block, size, 1, false);
}

void loadText(FileFixture &m, const QString &name, const char *text)
{
    m.write(name, text);
    QVERIFY(m.load(name));
}

// clang-format off
const Row kRows[] = {
    {"address",             [](FileFixture &m) { typeAddress(m.dialog->m_pLineRecDstAddr, QStringLiteral("239.9.9.9")); }},
    {"port",                [](FileFixture &m) { typeText(m.dialog->m_pEditSndDstPort, QStringLiteral("5004")); }},
    {"use box",             [](FileFixture &m) { click(m.dialog->m_pCheckRecDstAddr); }},
    {"clock source",        [](FileFixture &m) { chooseOther(m.dialog->m_pComboClkSrc); }},
    {"video format",        [](FileFixture &m) { chooseOther(m.dialog->m_pComboVidFormat); }},
    {"lock box",            [](FileFixture &m) { click(m.dialog->m_pCheckLockSndSrcPort); }},
    {"lock all",            [](FileFixture &m) { click(m.dialog->m_pCheckLockGroup); }},
    {"locked by a host",    [](FileFixture &m) { m.dialog->m_LockValues[QStringLiteral("TransmitIp0")] = true;
                                                 m.dialog->updateLockedItems(m.dialog->m_pLineSndSrcAddr); }},
    {"interface",           [](FileFixture &m) { typeAddress(m.dialog->m_pEditRecIFace, QStringLiteral("127.0.0.1")); }},
    {"channels per flow",   [](FileFixture &m) { chooseOther(m.dialog->m_pComboAudChan); }},
    {"flows",               [](FileFixture &m) { chooseOther(m.dialog->m_pComboAudFlow); }},
    {"single flow",         [](FileFixture &m) { call(m, "audChanUseSingle", true); }},
    {"flows again",         [](FileFixture &m) { call(m, "audChanUseSingle", false); }},
    {"file settings",       [](FileFixture &m) { call(m, "onFileSettingChanged", true); }},
    {"type",                [](FileFixture &m) { m.dialog->m_pComboType->addItem(QString(), 8); chooseOther(m.dialog->m_pComboType); }},
    {"override off",        [](FileFixture &m) { ModalAnswer answer(QStringLiteral("OK")); click(m.dialog->m_pNmosOverride); }},
    {"override stays",      [](FileFixture &m) { ModalAnswer answer(QStringLiteral("CANCEL")); click(m.dialog->m_pNmosOverride); }},
    {"NMOS log",            [](FileFixture &m) { click(m.dialog->m_pNmosOutLog); }},
    {"NMOS settings",       [](FileFixture &m) { m.dialog->onShowNmosCfg(); click(m.dialog->m_pSetNmosCfg); }},
    {"settings saved",      [](FileFixture &m) { QVERIFY(m.save(QStringLiteral("x.ipp"))); }},
    {"settings loaded",     [](FileFixture &m) { loadText(m, QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel0]\nTransmitIp=1.2.3.4\n"); }},
    {"load ended early",    [](FileFixture &m) { loadText(m, QStringLiteral("x.ipp"), "[HalvectIpConfig]\n[channel1]\nTransmitIp=1.2.3.4\n[channel0]\n"); }},
    {"load refused",        [](FileFixture &m) { loadText(m, QStringLiteral("x.ipp"), "no settings\n"); }},
    {"description loaded",  [](FileFixture &m) { loadText(m, QStringLiteral("x.sdp"), "v=0\nm=video 5004\nc=IN IP4 239.9.9.9\n"); }},
    {"description pushed",  [](FileFixture &m) { push(m, "v=0\nm=video 5004\nc=IN IP4 239.9.9.9\n"); }},
};
// clang-format on

} // namespace

class TestCommits : public QObject {
    Q_OBJECT

private slots:
    void everyActionCommits_data();
    void everyActionCommits();
    void startingCommits();
    void switchingConfigurationsClosesWithSaving();
    void choosingAChannelWritesNothing();
};

void TestCommits::everyActionCommits_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Row &row : kRows)
        QTest::newRow(row.name) << index++;
}

void TestCommits::everyActionCommits()
{
    QFETCH(int, index);
    FileFixture m;
    Recorder::clear();
    kRows[index].run(m);
    QVERIFY(Recorder::saves() > 0);
    QCOMPARE(Recorder::pending(), 0);
}

void TestCommits::startingCommits()
{
    const FreshStore store;
    Recorder::clear();
    const QCorvel dialog(true, nullptr);
    QVERIFY(Recorder::saves() > 0);
    QCOMPARE(Recorder::pending(), 0);
}

void TestCommits::switchingConfigurationsClosesWithSaving()
{
    FileFixture m;
    StoreTest::put(0, "TransmitIp", QStringLiteral("1.2.3.4"));
    m.dialog->m_pConfig->addItem(QStringLiteral("other"), QStringLiteral("other"));
    Recorder::clear();
    chooseOther(m.dialog->m_pConfig);
    QCOMPARE(Recorder::saves(), 1);
}

void TestCommits::choosingAChannelWritesNothing()
{
    FileFixture m;
    Recorder::clear();
    for (QAbstractButton *button :
         {m.dialog->m_pAudioConfig, m.dialog->m_pAncConfig, m.dialog->m_pVideoConfig})
        click(button);
    choose(m.dialog->m_pChannel, 2);
    QCOMPARE(Recorder::pending(), 0);
    QCOMPARE(Recorder::saves(), 0);
}

CORVEL_DIALOG_TEST_MAIN(TestCommits)
#include "test_commits.moc"
