// SPDX-License-Identifier: MIT
//
// Every field of every element, side and flow, typed with keys; a second process then finds exactly this
// one value changed. And the other way round: what is stored is shown.
#include "support/dialog.h"
#include "support/drop.h"
#include "support/snapshot.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

namespace {

constexpr int kChannel = 2;

// The ten network fields as a person meets them, with the part of the value name behind the direction and
// the element.
struct Row {
    const char *control;
    const char *use;
    const char *lock;
    Side side;
    const char *field;
    bool isText;
    quint32 bit;
};

// clang-format off
const Row kRows[] = {
    {"m_pLineRecSrcAddr", "m_pCheckRecSrcAddr",  "m_pCheckLockRecSrcAddr",  Side::Receive, "SourceIp",        true,  4},
    {"m_pEditRecSrcPort", "m_pCheckRecSrcPort",  "m_pCheckLockRecSrcPort",  Side::Receive, "SourcePort",      false, 1},
    {"m_pLineRecDstAddr", "m_pCheckRecDstAddr",  "m_pCheckLockRecDstAddr",  Side::Receive, "DestinationIp",   true,  8},
    {"m_pEditRecDstPort", "m_pCheckRecDstPort",  "m_pCheckLockRecDstPort",  Side::Receive, "DestinationPort", false, 2},
    {"m_pEditRecIFace",   "m_pCheckRecDstIFace", "m_pCheckLockRecDstIFace", Side::Receive, "Interface",       true,  16},
    {"m_pLineSndSrcAddr", "m_pCheckSndSrcAddr",  "m_pCheckLockSndSrcAddr",  Side::Send,    "Ip",              true,  4},
    {"m_pEditSndSrcPort", "m_pCheckSndSrcPort",  "m_pCheckLockSndSrcPort",  Side::Send,    "SourcePort",      false, 1},
    {"m_pLineSndDstAddr", "m_pCheckSndDstAddr",  "m_pCheckLockSndDstAddr",  Side::Send,    "DestinationIp",   true,  8},
    {"m_pEditSndDstPort", "m_pCheckSndDstPort",  "m_pCheckLockSndDstPort",  Side::Send,    "RemotePort",      false, 2},
    {"m_pEditSndIFace",   "m_pCheckSndDstIFace", "m_pCheckLockSndDstIFace", Side::Send,    "Interface",       true,  16},
};
// clang-format on

// The value name of a field: "Transmit" + "Aud" + "RemotePort" + "3". Interfaces carry no flow.
QByteArray nameOf(const QByteArray &element, int flow, Side side, const QByteArray &field)
{
    QByteArray name = (side == Side::Receive ? "Receive" : "Transmit") + element + field;
    if (element == "Aud" && field != "Interface")
        name += QByteArray::number(flow);
    return name;
}

} // namespace

class TestFields : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase()
    {
        m_dialog.reset();
        m_store.reset();
    }
    void typed_data() { elements(); }
    void typed();
    void shown_data() { elements(); }
    void shown();
    void combosReachTheStore_data();
    void combosReachTheStore();
    void clockFields();
    void dropped();

private:
    static void elements();
    void select(const QByteArray &element, int flow);
    template<class Widget>
    Widget *control(const char *name) const
    {
        return m_dialog->findChild<Widget *>(QLatin1String(name));
    }
    void typeInto(const Row &row, const QString &value);
    Snapshot news();

    std::unique_ptr<FreshStore> m_store;
    std::unique_ptr<QCorvel> m_dialog;
    Snapshot m_seen;
};

// All channels carry something, so that a value written to the wrong one shows.
void TestFields::initTestCase()
{
    m_store = std::make_unique<FreshStore>();
    setGlobalDword(StorePath::AvHAL, "nmosoverride", 1);
    for (int channel = 0; channel < 4; ++channel) {
        put(channel, "VideoType", 1u);
        put(channel, "ReceiveAudChannels", 2u);
        put(channel, "TransmitAudChannels", 2u);
        put(channel, "ReceiveAudTotalChannels", 16u);
        put(channel, "SignalFormat", 641790011u);
    }
    m_dialog = std::make_unique<QCorvel>(true, nullptr);
    show(m_dialog.get());
    choose(m_dialog->m_pChannel, kChannel);
    for (const char *name : {"m_pCheckLockRecDstIFace", "m_pCheckLockSndDstIFace"})
        click(control<QCheckBox>(name));
}

void TestFields::elements()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<int>("flow");
    QTest::newRow("video") << QByteArray() << 0;
    for (int flow = 0; flow < kFlowCount; ++flow)
        QTest::newRow(qPrintable(QStringLiteral("audio flow %1").arg(flow))) << QByteArray("Aud") << flow;
    QTest::newRow("anc") << QByteArray("Anc") << 0;
}

void TestFields::select(const QByteArray &element, int flow)
{
    click(element == "Aud"   ? m_dialog->m_pAudioConfig
          : element == "Anc" ? m_dialog->m_pAncConfig
                             : m_dialog->m_pVideoConfig);
    if (element == "Aud")
        click(m_dialog->m_pAudFlowSelect[flow]);
}

// What the store holds that it did not hold at the last look.
Snapshot TestFields::news()
{
    QCoreApplication::processEvents(); // an address tells of its last key from the event loop
    const Snapshot before = m_seen;
    m_seen = snapshot();
    return changes(before, m_seen);
}

void TestFields::typeInto(const Row &row, const QString &value)
{
    if (row.isText)
        typeAddress(control<QLineAddress>(row.control), value);
    else
        typeText(control<QLineEdit>(row.control), value);
}

void TestFields::typed()
{
    QFETCH(QByteArray, element);
    QFETCH(int, flow);
    select(element, flow);
    QAbstractButton *box = control<QCheckBox>("m_pCheckRecSrcAddr");
    click(box); // the first save also stores what is shown and was never written
    click(box);
    news();
    int number = 1000 * (element.size() + 1) + 50 * flow;
    quint32 flags[2] = {};
    for (const Row &row : kRows) {
        ++number;
        // Only an address of this machine is taken for an interface.
        const bool isInterface = QByteArray(row.field) == "Interface";
        const QString value = !row.isText ? QString::number(number)
                              : isInterface
                                  ? QStringLiteral("127.0.0.1")
                                  : QStringLiteral("239.%1.%2.9").arg(number / 250).arg(number % 250);
        const QByteArray name = nameOf(element, flow, row.side, row.field);
        const QString entry = channelEntry(kChannel, name);
        if (isInterface && flow > 0) { // one value for all flows
            put(kChannel, name, QStringLiteral("10.9.9.9"));
            m_seen[entry] = quoted(QStringLiteral("10.9.9.9"));
        }
        typeInto(row, value);
        QCOMPARE(news(), (Snapshot{{entry, row.isText ? quoted(value) : value}}));

        if (flow > 0)
            continue; // audio shows the flags of flow 0 on every flow
        quint32 &sideFlags = flags[row.side == Side::Send];
        sideFlags |= row.bit;
        click(control<QCheckBox>(row.use));
        const QByteArray flagsName = nameOf(element, flow, row.side, "Flags");
        QCOMPARE(news(), (Snapshot{{channelEntry(kChannel, flagsName), QString::number(sideFlags)}}));
    }
    if (flow == 0)
        QVERIFY(flags[0] == 31 && flags[1] == 31);
}

void TestFields::shown()
{
    QFETCH(QByteArray, element);
    QFETCH(int, flow);
    click(element == "Anc" ? m_dialog->m_pVideoConfig : m_dialog->m_pAncConfig); // something else first
    int number = 40000;
    for (const Row &row : kRows) {
        const QByteArray name = nameOf(element, flow, row.side, row.field);
        if (row.isText)
            put(kChannel, name, QStringLiteral("10.%1.3.4").arg(++number - 40000));
        else
            put(kChannel, name, static_cast<quint32>(++number));
    }
    put(kChannel, nameOf(element, 0, Side::Receive, "Flags"), 1u + 8u);
    put(kChannel, nameOf(element, 0, Side::Send, "Flags"), 2u + 4u + 16u);
    const QByteArray before = dump();
    select(element, flow);
    number = 40000;
    for (const Row &row : kRows) {
        ++number;
        if (row.isText)
            QCOMPARE(control<QLineAddress>(row.control)->address(),
                     QStringLiteral("10.%1.3.4").arg(number - 40000));
        else
            QCOMPARE(control<QLineEdit>(row.control)->text(), QString::number(number));
        const quint32 flags = row.side == Side::Receive ? 1 + 8 : 2 + 4 + 16;
        QVERIFY2(control<QCheckBox>(row.use)->isChecked() == ((flags & row.bit) != 0), row.use);
    }
    QCOMPARE(dump(), before);
}

void TestFields::combosReachTheStore_data()
{
    QTest::addColumn<quint32>("data");
    QTest::addColumn<QByteArrayList>("names");
    QTest::newRow("m_pComboVidFormat") << 641794096u << QByteArrayList{"SignalFormat"};
    QTest::newRow("m_pComboClkSrc") << 8388608u << QByteArrayList{"ClockType"};
    QTest::newRow("m_pComboPTimeRx") << 1000u << QByteArrayList{"ReceiveAudPacketLength"};
    QTest::newRow("m_pComboPTimeTx") << 1000u << QByteArrayList{"TransmitAudPacketLength"};
    QTest::newRow("m_pComboAudChan") << 4u << QByteArrayList{"ReceiveAudChannels", "TransmitAudChannels"};
}

void TestFields::combosReachTheStore()
{
    QFETCH(quint32, data);
    QFETCH(QByteArrayList, names);
    select("Aud", 0);
    QComboBox *combo = control<QComboBox>(QTest::currentDataTag());
    choose(combo, combo->itemData(0).toUInt());
    const Snapshot before = snapshot();
    choose(combo, data);
    const Snapshot after = snapshot();
    for (const QByteArray &name : qAsConst(names)) {
        QVERIFY2(before[channelEntry(kChannel, name)] != after[channelEntry(kChannel, name)],
                 name.constData());
        QCOMPARE(after[channelEntry(kChannel, name)], QString::number(data));
    }
    for (const QString &changed : changes(before, after).keys())
        QVERIFY2(isOfChannel(2, changed), qPrintable(changed));
}

// The edit named after the grandmaster holds the domain: hosts find controls by their names.
void TestFields::clockFields()
{
    choose(m_dialog->m_pComboClkSrc, 0);
    news();
    typeText(m_dialog->m_pEditGmId, QStringLiteral("127"));
    QCOMPARE(news(), (Snapshot{{channelEntry(kChannel, "ClockDomain"), QStringLiteral("127")}}));
    m_dialog->m_pUseGmId->setFocus();
    QTest::keyClick(m_dialog->m_pUseGmId, Qt::Key_Space);
    QVERIFY(m_dialog->m_pEditGmAddress->isEnabled());
    typeText(m_dialog->m_pEditGmAddress, QStringLiteral("00-1D-C1-FF-FE-12-34-56"));
    QCOMPARE(news(), (Snapshot{{channelEntry(kChannel, "ClockGrandMaster"),
                                quoted(QStringLiteral("00-1D-C1-FF-FE-12-34-56"))}}));
    typeText(m_dialog->m_pEditClockDomain, QStringLiteral("99"));
    QCOMPARE(news(), Snapshot());
}

// Stored at once, whatever has the focus.
void TestFields::dropped()
{
    select(QByteArray(), 0);
    m_dialog->m_pUseGmId->setChecked(true);
    m_dialog->m_pChannel->setFocus();
    const auto drop = [this](QLineEdit *edit, const char *text) {
        news();
        QVERIFY(dropText(edit, edit->rect().center(), QLatin1String(text)));
        QCOMPARE(edit->text(), QLatin1String(text));
    };
    drop(m_dialog->m_pEditRecDstPort, "4711");
    QCOMPARE(news(), (Snapshot{{channelEntry(kChannel, "ReceiveDestinationPort"), QStringLiteral("4711")}}));
    drop(m_dialog->m_pEditGmId, "99");
    QCOMPARE(news(), (Snapshot{{channelEntry(kChannel, "ClockDomain"), QStringLiteral("99")}}));
    drop(m_dialog->m_pEditGmAddress, "00-1D-C1-FF-FE-12-34-57");
    QCOMPARE(news(), (Snapshot{{channelEntry(kChannel, "ClockGrandMaster"),
                                quoted(QStringLiteral("00-1D-C1-FF-FE-12-34-57"))}}));
    QVERIFY(m_dialog->m_pChannel->hasFocus());
}

CORVEL_DIALOG_TEST_MAIN(TestFields)
#include "test_fields.moc"
