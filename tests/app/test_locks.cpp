// SPDX-License-Identifier: MIT
//
// Locks: a locked field is one for all elements of its channel. What a lock did is read by a second
// process.
#include "fake/recorder.h"
#include "support/dialog.h"
#include "support/snapshot.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

constexpr int kChannel = 2;
constexpr quint32 kChannels = 4;

struct Lockable {
    const char *control;
    const char *lockBox;
    const char *video;
    const char *audio; // followed by the flow
    const char *anc;
    bool isText;
};

// clang-format off
const Lockable kLockable[] = {
    // control             lock box                   video                     audio                        anc                          text
    {"m_pLineRecDstAddr", "m_pCheckLockRecDstAddr", "ReceiveDestinationIp",   "ReceiveAudDestinationIp",   "ReceiveAncDestinationIp",   true},
    {"m_pLineRecSrcAddr", "m_pCheckLockRecSrcAddr", "ReceiveSourceIp",        "ReceiveAudSourceIp",        "ReceiveAncSourceIp",        true},
    {"m_pLineSndDstAddr", "m_pCheckLockSndDstAddr", "TransmitDestinationIp",  "TransmitAudDestinationIp",  "TransmitAncDestinationIp",  true},
    {"m_pLineSndSrcAddr", "m_pCheckLockSndSrcAddr", "TransmitIp",             "TransmitAudIp",             "TransmitAncIp",             true},
    {"m_pEditRecDstPort", "m_pCheckLockRecDstPort", "ReceiveDestinationPort", "ReceiveAudDestinationPort", "ReceiveAncDestinationPort", false},
    {"m_pEditRecSrcPort", "m_pCheckLockRecSrcPort", "ReceiveSourcePort",      "ReceiveAudSourcePort",      "ReceiveAncSourcePort",      false},
    {"m_pEditSndDstPort", "m_pCheckLockSndDstPort", "TransmitRemotePort",     "TransmitAudRemotePort",     "TransmitAncRemotePort",     false},
    {"m_pEditSndSrcPort", "m_pCheckLockSndSrcPort", "TransmitSourcePort",     "TransmitAudSourcePort",     "TransmitAncSourcePort",     false},
};
// clang-format on

// Every value of every channel holds something of its own, so that a stray write shows.
void fillStore()
{
    setGlobalDword(StorePath::Config, "MaxIntChannels", kChannels);
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    for (int channel = 0; channel < int(kChannels); ++channel) {
        put(channel, "VideoType", 1);
        put(channel, "SignalFormat", 641790011);
        put(channel, "ClockType", 0);
        put(channel, "ClockDomain", 0);
        put(channel, "ClockGrandMaster", QString());
        put(channel, "ReceiveAudChannels", 2);
        put(channel, "TransmitAudChannels", 2);
        put(channel, "ReceiveAudTotalChannels", 16);
        put(channel, "ReceiveAudPacketLength", 125);
        put(channel, "TransmitAudPacketLength", 125);
        put(channel, "nmosdomain", QStringLiteral("a value of another part"));
        for (const char *name : {"ReceiveInterface", "ReceiveAudInterface", "ReceiveAncInterface",
                                 "TransmitInterface", "TransmitAudInterface", "TransmitAncInterface"})
            put(channel, name, QStringLiteral("10.9.8.%1").arg(channel));
        for (const char *name : {"ReceiveFlags", "ReceiveAncFlags", "TransmitFlags", "TransmitAncFlags"})
            put(channel, name, 0);
        for (int flow = 0; flow < kFlowCount; ++flow) {
            put(channel, "ReceiveAudFlags" + QByteArray::number(flow), 0);
            put(channel, "TransmitAudFlags" + QByteArray::number(flow), 0);
        }
        int serial = 10 * channel;
        for (const Lockable &row : kLockable) {
            QList<QByteArray> names{row.video, row.anc};
            for (int flow = 0; flow < kFlowCount; ++flow)
                names.append(row.audio + QByteArray::number(flow));
            for (const QByteArray &name : qAsConst(names)) {
                if (row.isText)
                    put(channel, name, QStringLiteral("10.1.%1.%2").arg(channel).arg(++serial));
                else
                    put(channel, name, 20000 + quint32(++serial));
            }
        }
    }
    commitStore();
}

// The ten values that a lock ties together, all with this value.
Snapshot tied(const Lockable &row, int channel, const QString &value)
{
    Snapshot values;
    const QString shown = row.isText ? quoted(value) : value;
    const QString prefix = QString::number(channel) + QLatin1Char(':');
    values.insert(prefix + QLatin1String(row.video), shown);
    values.insert(prefix + QLatin1String(row.anc), shown);
    for (int flow = 0; flow < kFlowCount; ++flow)
        values.insert(prefix + QLatin1String(row.audio) + QString::number(flow), shown);
    return values;
}

// The writes that copy one field, in their order: flow 0 once more before all flows.
QByteArrayList copies(const Lockable &row, const QByteArray &value)
{
    QByteArrayList writes{row.audio + QByteArrayLiteral("0=") + value};
    for (int flow = 0; flow < kFlowCount; ++flow)
        writes.append(row.audio + QByteArray::number(flow) + '=' + value);
    writes.append(row.anc + QByteArrayLiteral("=") + value);
    writes.append(row.video + QByteArrayLiteral("=") + value);
    return writes;
}

} // namespace

class TestLocks : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void onlyInterfacesAreLockedAtFirst();
    void aChannelWithoutEntriesShowsNoLock();
    void aLockedEditReachesAllElements_data();
    void aLockedEditReachesAllElements();
    void anUnlockedEditStaysWithItsElement_data() { fields(); }
    void anUnlockedEditStaysWithItsElement();
    void settingALockCopiesAtOnce_data() { fields(); }
    void settingALockCopiesAtOnce();
    void aCopyKeepsItsOrder_data() { fields(); }
    void aCopyKeepsItsOrder();
    void clearingALockCopiesNothing();
    void anInterfaceLockCopiesNothing();
    void lockAllCopiesEightFields();
    void lockAllKeepsItsOrder();
    void lockAllClearedCopiesNothing();
    void everyChannelKeepsItsOwnLocks();
    void switchingChannelsWritesNothing();
    void choosingAnElementClearsLockAllOnly();
    void locksAreNotStored();
    void aCallWithoutSenderCopiesNothing();
    void theSimpleAddressWinsForVideoOnly();

private:
    static void fields();
    void show(int channel);
    void showElement(const QString &radio);
    template<class Control>
    Control *find(const QString &name)
    {
        Control *control = m_dialog->findChild<Control *>(name);
        if (!control)
            qFatal("no control %s", qPrintable(name));
        return control;
    }
    void edit(const Lockable &row, const QString &value);
    QCheckBox *lockBox(const Lockable &row) { return find<QCheckBox>(QLatin1String(row.lockBox)); }
    QList<QCheckBox *> lockBoxes() const;

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
};

void TestLocks::init()
{
    m_store = std::make_unique<FreshStore>();
    fillStore();
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    DialogTest::show(m_dialog.get());
    show(kChannel);
}

void TestLocks::cleanup()
{
    m_dialog.reset();
    m_store.reset();
}

void TestLocks::fields()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Lockable &row : kLockable)
        QTest::newRow(row.control) << index++;
}

void TestLocks::show(int channel)
{
    choose(m_dialog->m_pChannel, quint32(channel));
}

void TestLocks::showElement(const QString &radio)
{
    QRadioButton *button = find<QRadioButton>(radio);
    if (!button->isChecked())
        click(button);
    QVERIFY(button->isChecked());
}

void TestLocks::edit(const Lockable &row, const QString &value)
{
    if (row.isText)
        typeAddress(find<QLineAddress>(QLatin1String(row.control)), value);
    else
        typeText(find<QLineEdit>(QLatin1String(row.control)), value);
}

QList<QCheckBox *> TestLocks::lockBoxes() const
{
    const QCorvel &d = *m_dialog;
    return {d.m_pCheckLockRecSrcAddr, d.m_pCheckLockRecSrcPort,  d.m_pCheckLockRecDstAddr,
            d.m_pCheckLockRecDstPort, d.m_pCheckLockRecDstIFace, d.m_pCheckLockSndSrcAddr,
            d.m_pCheckLockSndSrcPort, d.m_pCheckLockSndDstAddr,  d.m_pCheckLockSndDstPort,
            d.m_pCheckLockSndDstIFace};
}

void TestLocks::onlyInterfacesAreLockedAtFirst()
{
    for (int channel = 0; channel < int(kChannels); ++channel) {
        show(channel);
        for (const QCheckBox *box : lockBoxes())
            QCOMPARE(box->isChecked(), box->objectName().endsWith(QLatin1String("IFace")));
    }
    QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("ReceiveInterface3")));
    QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("TransmitInterface0")));
    QVERIFY(!m_dialog->m_LockValues.contains(QStringLiteral("ReceiveInterface4")));
}

void TestLocks::aChannelWithoutEntriesShowsNoLock()
{
    m_dialog->m_pChannel->addItem(QStringLiteral("Channel-4"), 4);
    show(4);
    for (const QCheckBox *box : lockBoxes())
        QVERIFY2(!box->isChecked(), qPrintable(box->objectName()));
}

void TestLocks::aLockedEditReachesAllElements_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("radio");
    for (const char *radio : {"m_pVideoConfig", "m_pAudioConfig", "m_pAncConfig"}) {
        int index = 0;
        for (const Lockable &row : kLockable) {
            QTest::newRow(qPrintable(
                QStringLiteral("%1 with %2").arg(QLatin1String(row.control), QLatin1String(radio))))
                << index++ << QString::fromLatin1(radio);
        }
    }
}

void TestLocks::aLockedEditReachesAllElements()
{
    QFETCH(int, index);
    QFETCH(QString, radio);
    const Lockable &row = kLockable[index];
    showElement(radio);
    click(lockBox(row));
    const Snapshot before = snapshot();
    edit(row, row.isText ? QStringLiteral("239.7.8.9") : QStringLiteral("5104"));
    const Snapshot expected =
        tied(row, kChannel, row.isText ? QStringLiteral("239.7.8.9") : QStringLiteral("5104"));
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestLocks::anUnlockedEditStaysWithItsElement()
{
    QFETCH(int, index);
    const Lockable &row = kLockable[index];
    const Snapshot before = snapshot();
    edit(row, row.isText ? QStringLiteral("239.7.8.9") : QStringLiteral("5104"));
    const QString value = row.isText ? QStringLiteral("'239.7.8.9'") : QStringLiteral("5104");
    QCOMPARE(changes(before, snapshot()),
             (Snapshot{{QStringLiteral("2:") + QLatin1String(row.video), value}}));
}

// The value is there already; the box alone spreads it, as a number or as a text.
void TestLocks::settingALockCopiesAtOnce()
{
    QFETCH(int, index);
    const Lockable &row = kLockable[index];
    const Snapshot before = snapshot();
    click(lockBox(row));
    const QString value =
        row.isText ? text(kChannel, row.video) : QString::number(number(kChannel, row.video));
    Snapshot expected = tied(row, kChannel, value);
    expected.remove(QStringLiteral("2:") + QLatin1String(row.video)); // it had the value before
    QCOMPARE(changes(before, snapshot()), expected);
}

void TestLocks::aCopyKeepsItsOrder()
{
    QFETCH(int, index);
    const Lockable &row = kLockable[index];
    const QByteArray value =
        row.isText ? text(kChannel, row.video).toLatin1() : QByteArray::number(number(kChannel, row.video));
    Recorder::clear();
    click(lockBox(row));
    QCOMPARE(Recorder::calls(), copies(row, value) + QByteArrayList{"save"});
    QCOMPARE(Recorder::lastChannel(), kChannel);
}

void TestLocks::clearingALockCopiesNothing()
{
    click(m_dialog->m_pCheckLockRecDstAddr);
    put(kChannel, "ReceiveAncDestinationIp", QStringLiteral("239.0.0.1"));
    commitStore();
    const Snapshot before = snapshot();
    click(m_dialog->m_pCheckLockRecDstAddr);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QVERIFY(!m_dialog->m_LockValues.value(QStringLiteral("ReceiveDestinationIp2")));
}

void TestLocks::anInterfaceLockCopiesNothing()
{
    put(kChannel, "ReceiveInterface", QStringLiteral("127.0.0.1"));
    commitStore();
    m_dialog->loadData();
    const Snapshot before = snapshot();
    for (int i = 0; i < 2; ++i) { // off and on again
        click(m_dialog->m_pCheckLockRecDstIFace);
        click(m_dialog->m_pCheckLockSndDstIFace);
        QCOMPARE(changes(before, snapshot()), Snapshot());
    }
    QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("ReceiveInterface2")));
}

void TestLocks::lockAllCopiesEightFields()
{
    const Snapshot before = snapshot();
    click(m_dialog->m_pCheckLockGroup);
    Snapshot expected;
    for (const Lockable &row : kLockable) {
        Snapshot values =
            tied(row, kChannel,
                 row.isText ? text(kChannel, row.video) : QString::number(number(kChannel, row.video)));
        values.remove(QStringLiteral("2:") + QLatin1String(row.video));
        for (auto it = values.begin(); it != values.end(); ++it)
            expected.insert(it.key(), it.value());
    }
    QCOMPARE(expected.size(), 8 * 9);
    QCOMPARE(changes(before, snapshot()), expected);
    for (const QCheckBox *box : lockBoxes())
        QVERIFY2(box->isChecked(), qPrintable(box->objectName()));
    QVERIFY(m_dialog->m_LockValues.value(QStringLiteral("TransmitSourcePort2")));
}

// The boxes in their order, then the fields in theirs, and one commit for all.
void TestLocks::lockAllKeepsItsOrder()
{
    QStringList set;
    for (QCheckBox *box : lockBoxes()) {
        box->setChecked(false);
        connect(box, &QCheckBox::toggled, this, [&set, box] { set.append(box->objectName()); });
    }
    QByteArrayList expected;
    for (const Lockable &row : kLockable) {
        expected += copies(row, row.isText ? text(kChannel, row.video).toLatin1()
                                           : QByteArray::number(number(kChannel, row.video)));
    }
    Recorder::clear();
    click(m_dialog->m_pCheckLockGroup);
    QCOMPARE(Recorder::calls(), expected + QByteArrayList{"save"});
    QStringList boxes;
    for (const char *field : {"RecSrcAddr", "RecSrcPort", "RecDstPort", "RecDstAddr", "RecDstIFace",
                              "SndSrcAddr", "SndSrcPort", "SndDstAddr", "SndDstPort", "SndDstIFace"})
        boxes.append(QLatin1String("m_pCheckLock") + QLatin1String(field));
    QCOMPARE(set, boxes);
}

void TestLocks::lockAllClearedCopiesNothing()
{
    click(m_dialog->m_pCheckLockGroup);
    put(kChannel, "TransmitAncRemotePort", 1);
    commitStore();
    const Snapshot before = snapshot();
    click(m_dialog->m_pCheckLockGroup);
    QCOMPARE(changes(before, snapshot()), Snapshot());
    for (const QCheckBox *box : lockBoxes())
        QVERIFY2(!box->isChecked(), qPrintable(box->objectName()));
    QVERIFY(!m_dialog->m_LockValues.value(QStringLiteral("ReceiveInterface2"), true));
}

void TestLocks::everyChannelKeepsItsOwnLocks()
{
    click(m_dialog->m_pCheckLockRecDstAddr);
    click(m_dialog->m_pCheckLockSndDstIFace); // off
    show(3);
    QVERIFY(!m_dialog->m_pCheckLockRecDstAddr->isChecked());
    QVERIFY(m_dialog->m_pCheckLockSndDstIFace->isChecked());
    click(m_dialog->m_pCheckLockSndSrcPort);
    show(kChannel);
    QVERIFY(m_dialog->m_pCheckLockRecDstAddr->isChecked());
    QVERIFY(!m_dialog->m_pCheckLockSndDstIFace->isChecked());
    QVERIFY(!m_dialog->m_pCheckLockSndSrcPort->isChecked());
    show(3);
    QVERIFY(m_dialog->m_pCheckLockSndSrcPort->isChecked());
}

// The boxes change on a channel switch; none of them may act then, least of all with the fields of the
// channel before.
void TestLocks::switchingChannelsWritesNothing()
{
    click(m_dialog->m_pCheckLockGroup);
    const Snapshot before = snapshot();
    for (const int channel : {3, kChannel, 0, kChannel}) {
        show(channel);
        QVERIFY(!m_dialog->m_pCheckLockGroup->isChecked());
    }
    QCOMPARE(changes(before, snapshot()), Snapshot());
    QCOMPARE(m_dialog->m_LockValues.value(QStringLiteral("ReceiveSourceIp3")), false);
    QCOMPARE(m_dialog->m_LockValues.value(QStringLiteral("ReceiveSourceIp2")), true);
}

void TestLocks::choosingAnElementClearsLockAllOnly()
{
    click(m_dialog->m_pCheckLockGroup);
    const Snapshot before = snapshot();
    click(m_dialog->m_pAncConfig);
    QVERIFY(!m_dialog->m_pCheckLockGroup->isChecked());
    for (const QCheckBox *box : lockBoxes())
        QVERIFY2(box->isChecked(), qPrintable(box->objectName()));
    QCOMPARE(changes(before, snapshot()), Snapshot());
}

void TestLocks::locksAreNotStored()
{
    click(m_dialog->m_pCheckLockGroup);
    m_dialog.reset();
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    m_dialog->m_pChannel->setCurrentIndex(kChannel);
    for (const QCheckBox *box : lockBoxes())
        QCOMPARE(box->isChecked(), box->objectName().endsWith(QLatin1String("IFace")));
}

void TestLocks::aCallWithoutSenderCopiesNothing()
{
    click(m_dialog->m_pCheckLockRecDstAddr);
    put(kChannel, "ReceiveAncDestinationIp", QStringLiteral("239.0.0.1"));
    commitStore();
    const Snapshot before = snapshot();
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "onLockSetting", Q_ARG(bool, true)));
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "updateLockedItems", Q_ARG(QObject *, nullptr)));
    QCOMPARE(changes(before, snapshot()), Snapshot());
    // A host that names the field itself is heard.
    QVERIFY(QMetaObject::invokeMethod(m_dialog.get(), "updateLockedItems",
                                      Q_ARG(QObject *, m_dialog->m_pLineRecDstAddr)));
    QCOMPARE(changes(before, snapshot()), (Snapshot{{QStringLiteral("2:ReceiveAncDestinationIp"),
                                                     quoted(text(kChannel, "ReceiveDestinationIp"))}}));
}

// While NMOS is in charge a save ends with the simple address; the copies for the other elements stay.
void TestLocks::theSimpleAddressWinsForVideoOnly()
{
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 0);
    put(kChannel, "TransmitDestinationIp", QStringLiteral("239.3.3.3"));
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    DialogTest::show(m_dialog.get());
    m_dialog->m_pSwapLayout->setCurrentIndex(0);
    show(kChannel);
    QCOMPARE(m_dialog->m_pSimpleAddress->address(), QStringLiteral("239.3.3.3"));
    click(m_dialog->m_pCheckLockSndDstAddr);
    typeAddress(m_dialog->m_pLineSndDstAddr, QStringLiteral("239.7.8.9"));
    Snapshot expected = tied(kLockable[2], kChannel, QStringLiteral("239.7.8.9"));
    expected.insert(QStringLiteral("2:TransmitDestinationIp"), QStringLiteral("'239.3.3.3'"));
    const Snapshot now = snapshot();
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QCOMPARE(now.value(it.key()), it.value());
}

CORVEL_DIALOG_TEST_MAIN(TestLocks)
#include "test_locks.moc"
