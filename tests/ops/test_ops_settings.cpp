// SPDX-License-Identifier: MIT
#include "ops/settings.h"
#include "rows.h"

#include <QFile>

class TestSettings : public QObject {
    Q_OBJECT

private slots:
    void writesWhatTheDialogWrites();
    void comesBack();
    void saysWhatIsLost();
    void saysWhatIsLeftOut();
    void readsOtherFilesAsTheDialogDoes();
    void wrongOnesAreRefused_data();
    void wrongOnesAreRefused();
};

namespace {

ops::Snapshot twelveChannels()
{
    ops::Snapshot values;
    values.set("KWX\\Config", "MaxIntChannels", number(12));
    for (int index = 0; index < 12; ++index) {
        values.set(channel(index), "TransmitDestinationIp",
                   ops::Value::ofText("239.1.0." + QByteArray::number(index)));
        values.set(channel(index), "SignalFormat", number(595636786));
        values.set(channel(index), "TransmitInterface", text("10.0.0.1"));
    }
    return values;
}

} // namespace

// The golden file of an empty store with four channels and one flow is the dialog's own.
void TestSettings::writesWhatTheDialogWrites()
{
    const ops::Snapshot nothing;
    const QByteArray written = ops::exportSettings(nothing, 1);
    QVERIFY(written.startsWith(
        "[HalvectIpConfig]\n;Network Config fileName=Quorlex\nVersion=1.0\n\n[channel0]\n"));
    QCOMPARE(written.count("[channel"), 4);
    QCOMPARE(written.count("TransmitAudIp0="), 4);
    QCOMPARE(written.count("TransmitAudIp1="), 0);
    QCOMPARE(ops::exportSettings(nothing).count("TransmitAudIp0="), 0);
}

void TestSettings::comesBack()
{
    ops::Snapshot values;
    values.set(channel(1), "ReceiveAudDestinationIp3", text("239.5.5.5"));
    values.set(channel(1), "ReceiveAudTotalChannels", number(8));
    values.set(channel(1), "ReceiveAudChannels", number(2));
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const auto read = ops::importSettings(ops::exportSettings(values), draft);
    QVERIFY(read);
    QCOMPARE(read->channels, 4);
    QCOMPARE(draft.find(channel(1), "ReceiveAudDestinationIp3"),
             std::optional<ops::Value>(text("239.5.5.5")));
    QVERIFY(!draft.find(channel(1), "ReceiveAudDestinationIp4"));
}

// Channels 10 and 11 come back as channel 1 and overwrite it.
void TestSettings::saysWhatIsLost()
{
    QCOMPARE(ops::settingsLosses(twelveChannels()).join('|'),
             QByteArray("everything of channels 10 to 11: only the first digit of a section is "
                        "read|SignalFormat of 10 channels|"
                        "TransmitDestinationIp of 1 channel|"
                        "TransmitInterface of 10 channels"));
    QVERIFY(ops::settingsLosses(ops::Snapshot()).isEmpty());
}

void TestSettings::saysWhatIsLeftOut()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    const QByteArray file =
        "[HalvectIpConfig]\n;x\nVersion=1.0\n[channel12]\nTransmitInterface=10.0.0.1\nZebra=1\n"
        "TransmitRemotePort=x\nTransmitIp=10.0.0.1\n[channel0]\nTransmitIp=10.0.0.2\n";
    const auto read = ops::importSettings(file, draft);
    QVERIFY(read);
    QCOMPARE(read->notes.join('|'),
             QByteArray("line 4: only the first digit counts in [channel12]|"
                        "line 5: TransmitInterface is left out: a file never changes interfaces|line 6: "
                        "Zebra is left out|"
                        "line 7: TransmitRemotePort is no number and is stored as 0|"
                        "line 9: reading ends here: the section is below the first one"));
    QCOMPARE(read->values, 2);
    QCOMPARE(told(draft.changes()).replace(channel(0) + ' ', ""),
             QByteArray("TransmitIp - > \"10.0.0.1\"|TransmitRemotePort - > 0"));
}

void TestSettings::readsOtherFilesAsTheDialogDoes()
{
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(ops::importSettings(
        "[halvectipconfig] "
        "more\r\n[channel2]\r\nnmosoverride=-1\r\ntransmitip=1.2.3.4=5\r\nTransmitAudIp15=9\r\n",
        draft));
    QCOMPARE(told(draft.changes()), "KWX\\Advanced\\AvHal nmosoverride - > 4294967295|" + channel(0) +
                                        " TransmitAudIp5 - > \"9\"|" + channel(0) +
                                        " TransmitIp - > \"1.2.3.4\"");
}

void TestSettings::wrongOnesAreRefused_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("another kind") << QByteArray("v=0\r\n");
    QTest::newRow("half a signature") << QByteArray("[HalvectIp");
    QTest::newRow("zeros") << QByteArray(5000, '\0');
}

void TestSettings::wrongOnesAreRefused()
{
    QFETCH(QByteArray, file);
    const ops::Snapshot nothing;
    ops::Draft draft(nothing);
    QVERIFY(!ops::importSettings(file, draft));
    QVERIFY(draft.changes().empty());
}

QTEST_APPLESS_MAIN(TestSettings)
#include "test_ops_settings.moc"
