// SPDX-License-Identifier: MIT
//
// "Save File" with a settings file: what the name decides, what is in the file, and how it is written.
#include "fake/recorder.h"
#include "support/filefixture.h"

#include <memory>

using namespace DialogTest;
using namespace StoreTest;

class TestSaveSettings : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m = std::make_unique<FileFixture>();
        Recorder::clear();
    }
    void cleanup() { m.reset(); }

    void savesEveryChannel();
    void saveEndsTheOverride();
    void theShownFlowCountHoldsForAll();
    void theNameDecides_data();
    void theNameDecides();
    void anExistingFileIsReplaced();
    void theCursorWaits();
    void theCallsOfASave();
    void saveEndsTheOverrideOfTheLongPath();
    void saveTakesTheChannelsOfTheList();

private:
    void twoChannels();
    std::unique_ptr<FileFixture> m;
};

void TestSaveSettings::twoChannels()
{
    m.reset();
    m = std::make_unique<FileFixture>(2);
    Recorder::clear();
}

void TestSaveSettings::savesEveryChannel()
{
    QVERIFY(m->save(QStringLiteral("all.ipp")));
    const QByteArray bytes = m->read(QStringLiteral("all.ipp"));
    QVERIFY(
        bytes.startsWith("[HalvectIpConfig]\n;Network Config fileName=Quorlex\nVersion=1.0\n\n[channel0]\n"));
    for (int channel = 0; channel < 4; ++channel) {
        QCOMPARE(bytes.count("[channel" + QByteArray::number(channel) + "]\n"), 1);
        QCOMPARE(bytes.count("\nReceiveDestinationIp=239.1.1." + QByteArray::number(channel) + '\n'), 1);
    }
    QVERIFY(!bytes.contains("[channel4]"));
    QCOMPARE(bytes.count("\nnmosoverride=0\n"), 4);
    QVERIFY(bytes.endsWith("\n\n"));
}

// In the store and in the file; what is on screen stays as it is.
void TestSaveSettings::saveEndsTheOverride()
{
    QCOMPARE(FileFixture::globalOverride(), QStringLiteral("1"));
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QCOMPARE(FileFixture::globalOverride(), QStringLiteral("0"));
    QVERIFY(m->dialog->m_pNmosOverride->isChecked());
    QCOMPARE(m->dialog->m_pSwapLayout->currentIndex(), 0);
}

void TestSaveSettings::theShownFlowCountHoldsForAll()
{
    put(1, "ReceiveAudTotalChannels", 16);
    choose(m->dialog->m_pChannel, 3);
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const QByteArray bytes = m->read(QStringLiteral("x.ipp"));
    QCOMPARE(bytes.count("\nTransmitAudIp0="), 4);
    QCOMPARE(bytes.count("\nReceiveAudFlags1="), 4);
    QCOMPARE(bytes.count("\nTransmitAudIp2="), 0);
}

void TestSaveSettings::theNameDecides_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("made");
    QTest::newRow("ipp") << QStringLiteral("x.ipp") << QStringList{QStringLiteral("x.ipp")};
    QTest::newRow("txt") << QStringLiteral("x.txt") << QStringList{QStringLiteral("x.txt")};
    QTest::newRow("no suffix is added") << QStringLiteral("name") << QStringList{QStringLiteral("name")};
    QTest::newRow("capitals") << QStringLiteral("x.SDP") << QStringList{QStringLiteral("x.SDP")};
    QTest::newRow("ends in sdp") << QStringLiteral("foosdp") << QStringList{QStringLiteral("foosdp")};
    QTest::newRow("dot at the end") << QStringLiteral("x.sdp.") << QStringList{QStringLiteral("x.sdp.")};
    QTest::newRow("non-ASCII") << QString::fromUtf8("caf\xC3\xA9 \xE2\x82\xAC.ipp")
                               << QStringList{QString::fromUtf8("caf\xC3\xA9 \xE2\x82\xAC.ipp")};
    QTest::newRow("sdp") << QStringLiteral("x.sdp")
                         << QStringList{QStringLiteral("x.rx.sdp"), QStringLiteral("x.tx.sdp")};
    QTest::newRow("two dots") << QStringLiteral("x.y.sdp")
                              << QStringList{QStringLiteral("x.y.rx.sdp"), QStringLiteral("x.y.tx.sdp")};
}

void TestSaveSettings::theNameDecides()
{
    QFETCH(QString, name);
    QFETCH(QStringList, made);
    QVERIFY(m->save(name));
    QCOMPARE(m->files(), made);
    const QByteArray first = m->read(made.first());
    QVERIFY(first.startsWith(made.size() == 2 ? "v=0\n" : "[HalvectIpConfig]\n"));
}

void TestSaveSettings::anExistingFileIsReplaced()
{
    m->write(QStringLiteral("x.ipp"), QByteArray(1000000, 'x'));
    FileAnswer answer(m->in(QStringLiteral("x.ipp")));
    click(m->dialog->m_pCmdSave);
    QCOMPARE(answer.questions, 1);
    const QByteArray bytes = m->read(QStringLiteral("x.ipp"));
    QVERIFY(bytes.startsWith("[HalvectIpConfig]\n"));
    QVERIFY(!bytes.contains("xx"));
}

void TestSaveSettings::theCursorWaits()
{
    for (const char *name : {"x.ipp", "x.sdp"}) {
        Recorder::clear();
        QVERIFY(m->save(QString::fromLatin1(name)));
        const QByteArrayList calls = Recorder::fileCalls();
        QVERIFY(calls.contains(name == QByteArray("x.ipp") ? "*put [Halvect" : "*put v=0|o=- "));
        for (const QByteArray &call : calls)
            QVERIFY2(!call.startsWith("put "), call.constData());
        QVERIFY(!QApplication::overrideCursor());
    }
}

void TestSaveSettings::theCallsOfASave()
{
    twoChannels();
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QCOMPARE(Recorder::fileCalls(), (QByteArrayList{"makedir 777", "*create x.ipp 40000000 1 2 128",
                                                    "*put [Halvect", "*put ;Network", "*put Name=Quo",
                                                    "*put Version=", "*KWX\\Advanced\\AvHAL\\nmosoverride=0",
                                                    "*save", "*put [channel", "*put [channel", "*close"}));
}

// The letters of the path are as they are, because a store that tells them apart keeps two values.
void TestSaveSettings::saveEndsTheOverrideOfTheLongPath()
{
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    QVERIFY(Recorder::fileCalls().contains("*KWX\\Advanced\\AvHAL\\nmosoverride=0"));
}

void TestSaveSettings::saveTakesTheChannelsOfTheList()
{
    twoChannels();
    setGlobalDword(StorePath::Config, "MaxIntChannels", 7);
    m->dialog->m_pChannel->addItem(QStringLiteral("Channel-2"), 2);
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const QByteArray bytes = m->read(QStringLiteral("x.ipp"));
    QCOMPARE(bytes.count("[channel"), 3);
    QCOMPARE(bytes.count("\n\n[channel"), 3);
    QVERIFY(bytes.endsWith("\n\n"));
}

CORVEL_DIALOG_TEST_MAIN(TestSaveSettings)
#include "test_savesettings.moc"
