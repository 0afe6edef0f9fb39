// SPDX-License-Identifier: MIT
//
// The line in the command band after the file commands: what was loaded, saved and left out, or why nothing
// was.
#include "channel/storecalls.h"
#include "support/filefixture.h"

#include <sys/stat.h>

using namespace DialogTest;
using namespace StoreTest;

class TestFileNews : public QObject {
    Q_OBJECT

private slots:
    void init() { m = std::make_unique<FileFixture>(); }
    void cleanup() { m.reset(); }

    void afterALoad_data();
    void afterALoad();
    void aFileThatCannotBeOpened();
    void locksAreTold();
    void afterASave();
    void afterASaveOfDescriptions();
    void aSaveThatFails();
    void itIsTheBandAndGoesAgain();
    void aLoadIsOneBatchWithItsName();

private:
    QString line() const { return m->dialog->findChild<QLabel *>(QStringLiteral("statusLine"))->text(); }
    std::unique_ptr<FileFixture> m;
};

void TestFileNews::afterALoad_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("news");
    const QByteArray head = "[HalvectIpConfig]\n";
    QTest::newRow("all taken") << "x.ipp"
                               << head + "[channel0]\nTransmitIp=10.1.1.1\n[channel1]\nTransmitIp=10.1.1.2\n"
                               << "Loaded x.ipp: 2 channels, 2 values";
    QTest::newRow("left out") << "x.ipp"
                              << head + "[channel0]\nTransmitIp=10.1.1.1\nTransmitInterface=eth0\n"
                                        "ReceiveInterface=eth0\ncolour=red\n"
                              << "Loaded x.ipp: 1 channel, 1 value, 3 left out: 2 interfaces, 1 unknown key";
    QTest::newRow("version") << "x.ipp" << head + "Version=1.0\n[channel0]\nTransmitIp=10.1.1.1\n"
                             << "Loaded x.ipp: 1 channel, 1 value";
    QTest::newRow("before") << "x.ipp"
                            << head + "Version=1.0\nTransmitIp=10.1.1.9\n[channel0]\nTransmitIp=10.1.1.1\n"
                            << "Loaded x.ipp: 1 channel, 1 value, 1 left out: 1 before the first channel";
    QTest::newRow("ends early")
        << "x.ipp" << head + "[channel1]\nTransmitIp=10.1.1.1\n[channel0]\n"
        << "Loaded x.ipp: 1 channel, 1 value; it ends at a channel below the first one";
    QTest::newRow("many") << "x.ipp" << head + "[channel0]\n" + QByteArray("TransmitIp=1\n").repeated(1160)
                          << "Loaded x.ipp: 1 channel, 1,160 values";
    QTest::newRow("empty") << "x.ipp" << QByteArray() << "Nothing loaded from x.ipp: it is empty";
    QTest::newRow("no settings") << "x.txt" << QByteArray("hello\n")
                                 << "Nothing loaded from x.txt: it is no settings file";
    QTest::newRow("head only") << "x.ipp" << head
                               << "Nothing loaded from x.ipp: it holds no values for a channel";
    QTest::newRow("description") << "x.sdp"
                                 << QByteArray(
                                        "v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7\na=recvonly\n")
                                 << "Loaded x.sdp into channel 0: 2 values";
    QTest::newRow("no description") << "x.sdp" << QByteArray("v=0\n")
                                    << "Nothing loaded from x.sdp: it holds no address and no port";
}

void TestFileNews::afterALoad()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    m->write(name, bytes);
    QVERIFY(m->load(name));
    QTEST(line(), "news");
}

void TestFileNews::aFileThatCannotBeOpened()
{
    QCOMPARE(mkfifo(QFile::encodeName(m->in(QStringLiteral("x.ipp"))).constData(), 0600), 0);
    QVERIFY(m->load(QStringLiteral("x.ipp")));
    QCOMPARE(line(), QStringLiteral("Nothing loaded from x.ipp: it cannot be opened"));
}

void TestFileNews::locksAreTold()
{
    m->dialog->m_LockValues[QStringLiteral("ReceiveDestinationIp0")] = true;
    m->write(QStringLiteral("x.sdp"), "v=0\nm=video 5004 RTP/AVP 96\nc=IN IP4 239.7.7.7\na=recvonly\n");
    QVERIFY(m->load(QStringLiteral("x.sdp")));
    QCOMPARE(line(), QStringLiteral("Loaded x.sdp into channel 0: 1 value, 1 left out: 1 locked"));
}

void TestFileNews::afterASave()
{
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const int values = m->read(QStringLiteral("x.ipp")).count('=') - 2; // the head has two
    QCOMPARE(line(), QStringLiteral("Saved x.ipp: 4 channels, %1 values").arg(values));
}

void TestFileNews::afterASaveOfDescriptions()
{
    QVERIFY(m->save(QStringLiteral("x.sdp")));
    QCOMPARE(line(), QStringLiteral("Saved x.rx.sdp and x.tx.sdp"));
    QVERIFY(m->saveElement(QStringLiteral("y.sdp")));
    QCOMPARE(line(), QStringLiteral("Saved y.rx.sdp and y.tx.sdp"));
    QVERIFY(QDir(m->folder.path()).mkdir(QStringLiteral("z.rx.sdp")));
    QVERIFY(m->save(QStringLiteral("z.sdp")));
    QCOMPARE(line(), QStringLiteral("z.rx.sdp not saved: it cannot be created here; saved z.tx.sdp"));
}

void TestFileNews::aSaveThatFails()
{
    QVERIFY(m->save(QStringLiteral("missing/x.ipp")));
    QCOMPARE(line(), QStringLiteral("x.ipp not saved: it cannot be created here"));
}

void TestFileNews::itIsTheBandAndGoesAgain()
{
    QVERIFY(m->save(QStringLiteral("x.ipp")));
    const auto *label = m->dialog->findChild<QLabel *>(QStringLiteral("statusLine"));
    QVERIFY(label->isVisible());
    QVERIFY(label->geometry().left() > m->dialog->m_pCmdSave->geometry().right());
}

void TestFileNews::aLoadIsOneBatchWithItsName()
{
    m->write(QStringLiteral("site.ipp"),
             "[HalvectIpConfig]\n[channel0]\nTransmitIp=10.1.1.1\n[channel1]\nTransmitIp=10.1.1.2\n");
    QVERIFY(m->load(QStringLiteral("site.ipp")));
    QSet<qint64> batches;
    int found = 0;
    walkHistory(-1, [&](const StoreChange &change) {
        if (change.label == QLatin1String("Load File site.ipp")) {
            ++found;
            batches.insert(change.batch);
        }
        return true;
    });
    QCOMPARE(found, 3); // with the folder it came from
    QCOMPARE(batches.size(), 1);
}

CORVEL_DIALOG_TEST_MAIN(TestFileNews)
#include "test_filenews.moc"
