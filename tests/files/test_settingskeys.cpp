// SPDX-License-Identifier: MIT
#include "files/settingskeys.h"

#include <QtTest>

namespace {

SettingsKey meaning(const QByteArray &key, std::string *lowered = nullptr)
{
    std::string scratch;
    const SettingsKey found = meaningOf({key.constData(), size_t(key.size())}, scratch);
    if (lowered)
        *lowered = scratch;
    return found;
}

using Kind = SettingsKey::Kind;

} // namespace

Q_DECLARE_METATYPE(SettingsKey::Kind)

class TestSettingsKeys : public QObject {
    Q_OBJECT

private slots:
    void meanings_data();
    void meanings();
    void theUsualSpellingIsOnlyQuicker_data();
    void theUsualSpellingIsOnlyQuicker();
    void whatIsNotAcceptedIsLeftInLowerCase();
    void anInterfaceIsNotAccepted();
};

void TestSettingsKeys::meanings_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Kind>("kind");
    QTest::newRow("text") << QByteArray("TransmitIp") << QByteArray("TransmitIp") << Kind::Text;
    QTest::newRow("number") << QByteArray("VideoType") << QByteArray("VideoType") << Kind::Number;
    QTest::newRow("global") << QByteArray("nmosoverride") << QByteArray("nmosoverride") << Kind::Global;
    QTest::newRow("flow 0") << QByteArray("TransmitAudIp0") << QByteArray("TransmitAudIp0") << Kind::Text;
    QTest::newRow("flow 7") << QByteArray("ReceiveAudFlags7") << QByteArray("ReceiveAudFlags7")
                            << Kind::Number;
    QTest::newRow("flow 9") << QByteArray("TransmitAudIp9") << QByteArray("TransmitAudIp9") << Kind::Text;
    QTest::newRow("stem alone") << QByteArray("TransmitAudIp") << QByteArray("TransmitAudIp0") << Kind::Text;
    QTest::newRow("stem inside") << QByteArray("xTransmitAudIpx4") << QByteArray("TransmitAudIp4")
                                 << Kind::Text;
    QTest::newRow("a number with more behind") << QByteArray("VideoType0") << QByteArray() << Kind::None;
    QTest::newRow("blank before it") << QByteArray(" VideoType") << QByteArray() << Kind::None;
    QTest::newRow("nothing") << QByteArray() << QByteArray() << Kind::None;
}

void TestSettingsKeys::meanings()
{
    QFETCH(QByteArray, key);
    const SettingsKey found = meaning(key);
    QTEST(found.name, "name");
    QTEST(found.kind, "kind");
}

void TestSettingsKeys::theUsualSpellingIsOnlyQuicker_data()
{
    QTest::addColumn<QByteArray>("key");
    for (const char *key : {"ClockGrandMaster", "TransmitIp", "TransmitSourcePort", "TransmitAudChannels",
                            "J2kReceiveProgramPid", "ReceiveAncFlags", "nmosoverride"})
        QTest::newRow(key) << QByteArray(key);
    for (const char *stem :
         {"TransmitAudIp", "TransmitAudFlags", "ReceiveAudSourceIp", "ReceiveAudSourcePort"}) {
        for (int flow = 0; flow < 8; ++flow) {
            const QByteArray key = stem + QByteArray::number(flow);
            QTest::newRow(key.constData()) << key;
        }
    }
}

// Another letter case is none of the usual spellings, so it is looked for in the table.
void TestSettingsKeys::theUsualSpellingIsOnlyQuicker()
{
    QFETCH(QByteArray, key);
    const SettingsKey usual = meaning(key), other = meaning(key.toUpper());
    QVERIFY(usual.kind != Kind::None);
    QCOMPARE(usual.name, key);
    QCOMPARE(other.name, usual.name);
    QCOMPARE(other.kind, usual.kind);
}

void TestSettingsKeys::whatIsNotAcceptedIsLeftInLowerCase()
{
    std::string lowered;
    QCOMPARE(meaning("SomeThing", &lowered).kind, Kind::None);
    QCOMPARE(lowered, std::string("something"));
}

void TestSettingsKeys::anInterfaceIsNotAccepted()
{
    for (const char *key : {"TransmitInterface", "ReceiveAudInterface", "TransmitAncInterface"})
        QCOMPARE(meaning(key).kind, Kind::None);
}

QTEST_APPLESS_MAIN(TestSettingsKeys)
#include "test_settingskeys.moc"
