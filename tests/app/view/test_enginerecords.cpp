// SPDX-License-Identifier: MIT
//
// Media commands made of plain values, and answers taken apart.
#include "app/view/enginerecords.h"

#include <QtTest>

#include <cstring>

class TestEngineRecords : public QObject {
    Q_OBJECT

private slots:
    void layout_data();
    void layout();
    void settingsThereAndBack();
    void longTextIsCut();
    void answerWithoutTerminatingZero();
    void recordNamesOnlyCodeAndChannel();
    void fieldRecordsReachEveryElementAndFlow();
    void portTravelsAsNumber();
};

void TestEngineRecords::layout_data()
{
    QTest::addColumn<quint32>("layout");
    QTest::addColumn<quint32>("flows");
    QTest::addColumn<quint32>("channels");
    QTest::newRow("one flow of two") << 0x00020002u << 1u << 2u;
    QTest::newRow("eight flows of sixteen") << 0x00800010u << 8u << 16u;
    QTest::newRow("nothing") << 0u << 0u << 0u;
    QTest::newRow("no channels per flow means two") << 0x00060000u << 3u << 0u;
}

void TestEngineRecords::layout()
{
    QFETCH(quint32, layout);
    QFETCH(quint32, flows);
    QFETCH(quint32, channels);
    QCOMPARE(layoutFlows(layout), flows);
    QCOMPARE(layoutChannels(layout), channels);
    if (channels)
        QCOMPARE(audioLayout(flows, channels), layout);
}

void TestEngineRecords::settingsThereAndBack()
{
    EngineSettings settings;
    settings.sourceAddress = QStringLiteral("10.0.0.1");
    settings.destinationAddress = QStringLiteral("239.0.0.2");
    settings.interfaceAddress = QStringLiteral("10.0.0.3");
    settings.sourcePort = 5004;
    settings.destinationPort = 20000;
    settings.audioLayout = 0x00080002;
    settings.flags = 21;
    MEDIACMD record = engineRecord(MediaCode::ReceiveSettings, 3);
    putSettings(record, settings);
    const EngineSettings back = settingsOf(record);
    QCOMPARE(back.sourceAddress, settings.sourceAddress);
    QCOMPARE(back.destinationAddress, settings.destinationAddress);
    QCOMPARE(back.interfaceAddress, settings.interfaceAddress);
    QCOMPARE(back.sourcePort, settings.sourcePort);
    QCOMPARE(back.destinationPort, settings.destinationPort);
    QCOMPARE(back.audioLayout, settings.audioLayout);
    QCOMPARE(back.flags, settings.flags);
}

void TestEngineRecords::longTextIsCut()
{
    EngineSettings settings;
    settings.sourceAddress = QString(80, QLatin1Char('7'));
    MEDIACMD record;
    putSettings(record, settings);
    QCOMPARE(int(qstrlen(record.sourceAddress)), 63);
}

void TestEngineRecords::answerWithoutTerminatingZero()
{
    MEDIACMD answer;
    memset(answer.sourceAddress, '7', sizeof answer.sourceAddress);
    QCOMPARE(settingsOf(answer).sourceAddress, QString(64, QLatin1Char('7')));
}

void TestEngineRecords::recordNamesOnlyCodeAndChannel()
{
    const MEDIACMD record = engineRecord(MediaCode::ReloadMedia, 2);
    QCOMPARE(record.code, MediaCode::ReloadMedia);
    QCOMPARE(record.channel, 2);
    QCOMPARE(record.element, 0u);
    QCOMPARE(record.flags, 0u);
    QCOMPARE(record.text[0], '\0');
}

void TestEngineRecords::fieldRecordsReachEveryElementAndFlow()
{
    const QVector<MEDIACMD> records =
        fieldRecords(1, Side::Send, Field::Interface, QStringLiteral("10.0.0.3"));
    QList<QPair<quint32, int>> reached;
    for (const MEDIACMD &record : records) {
        reached.append({record.element, record.flow});
        QCOMPARE(record.code, MediaCode::SetField);
        QCOMPARE(record.channel, 1);
        QCOMPARE(record.field, 16u);
        QCOMPARE(record.text, "10.0.0.3");
        QCOMPARE(record.value, 0u);
    }
    QList<QPair<quint32, int>> expected = {{0x10000, 0}};
    for (int flow = 0; flow < kFlowCount; ++flow)
        expected.append({0x20000, flow});
    expected.append({0x40000, 0});
    QCOMPARE(reached, expected);
}

void TestEngineRecords::portTravelsAsNumber()
{
    const MEDIACMD record =
        fieldRecords(0, Side::Receive, Field::SourcePort, QStringLiteral("5004")).constFirst();
    QCOMPARE(record.value, 5004u);
    QCOMPARE(record.field, 1u);
    QCOMPARE(record.text[0], '\0');
}

QTEST_APPLESS_MAIN(TestEngineRecords)
#include "test_enginerecords.moc"
