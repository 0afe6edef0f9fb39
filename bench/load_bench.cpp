// SPDX-License-Identifier: MIT
//
// What "Load File" and "Save File" cost beside the window: a settings file of 10 channels into the store,
// every value in it another one than stored, and a machine of 1,000 channels out of it. The file and the
// store are on disk, the way is that of the dialog, and either ends with the one commit.
#include "channel/channelstore.h"
#include "channel/storecalls.h"
#include "files/fileload.h"
#include "files/storedsections.h"
#include "rkcfg.h"
#include "rkos.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int kLoadedChannels = 10;
constexpr int kSavedChannels = 1000;
constexpr int kMostFlows = 8;
constexpr int kLineBytes = 4096;

// Values of a section that the reader takes, the global one included: the interfaces stay behind.
constexpr int valuesPerChannel(int flows)
{
    return 36 + 10 * flows;
}

// No two rounds have a value in common, apart from the override, which a file always clears.
QString textOf(int round, int channel)
{
    return QStringLiteral("239.%1.%2.20").arg(round % 250).arg(channel % 250);
}

QString numberOf(int round, int channel)
{
    return QString::number(20000 + 2000 * (round % 10) + channel);
}

QByteArray fileText(int round, int channels, int flows)
{
    const auto value = [round](const char *, bool isString, int channel) {
        return isString ? textOf(round, channel) : numberOf(round, channel);
    };
    return writeSettingsFile(value, channels, flows);
}

void writeFile(const QString &path, const QByteArray &text)
{
    const quint64 file = rkOSCreateFile(path.toUtf8().constData(), RKOS_GENERIC_WRITE, RKOS_SHARE_READ,
                                        nullptr, RKOS_CREATE_ALWAYS, RKOS_ATTRIBUTE_NORMAL, nullptr);
    QVERIFY(file != RKOS_INVALID_HANDLE);
    rkOSfputs(text.constData(), file);
    rkOSCloseFile(file);
}

// Returns the number of values that the file brought.
int loadFile(const QString &path)
{
    const quint64 file = rkOSCreateFile(path.toUtf8().constData(), RKOS_GENERIC_READ, RKOS_SHARE_READ,
                                        nullptr, RKOS_OPEN_EXISTING, RKOS_ATTRIBUTE_NORMAL, nullptr);
    char buffer[kLineBytes] = {};
    if (!rkOSfgets(buffer, kLineBytes, file) || !isSettingsSignature(buffer))
        return 0;
    const auto lines = [&](QByteArray &line) {
        const bool more = rkOSfgets(buffer, kLineBytes, file) != nullptr;
        line = buffer;
        return more;
    };
    StoreTransaction step;
    const int stored = loadSettingsFile(lines).values;
    rkOSCloseFile(file);
    commitStore();
    return step.keep() ? stored : 0;
}

QString stored(const char *name, bool isString, int channel)
{
    return cfgValue(name, isString, channel);
}

} // namespace

class LoadBench : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("XDG_CONFIG_HOME", m_home.path().toLocal8Bit()); }
    void cleanupTestCase() { rkCFGClose(RKCFG_DEFAULT_STORE, 1); }

    // 10 channels, all values changed. Goal: 30 ms.
    void load_data() { flowRows(); }
    void load();
    // The same file once more: nothing changes.
    void loadAgain_data() { flowRows(); }
    void loadAgain();
    // 1,000 channels. Goals: 2 s each.
    void loadLarge();
    void save();

private:
    static void flowRows();
    QString path(const QString &name) const { return m_home.filePath(name); }
    QTemporaryDir m_home;
};

void LoadBench::flowRows()
{
    QTest::addColumn<int>("flows");
    QTest::newRow("1 audio flow") << 1;
    QTest::newRow("8 audio flows") << kMostFlows;
}

void LoadBench::load()
{
    QFETCH(int, flows);
    const QString files[] = {path(QStringLiteral("even.ipp")), path(QStringLiteral("odd.ipp"))};
    for (int round = 0; round < 2; ++round)
        writeFile(files[round], fileText(round, kLoadedChannels, flows));
    QCOMPARE(loadFile(files[0]), kLoadedChannels * valuesPerChannel(flows));
    int round = 0;
    QBENCHMARK
    {
        ++round;
        loadFile(files[round % 2]);
    }
    QCOMPARE(stored("TransmitIp", true, 9), textOf(round % 2, 9));
    QCOMPARE(stored("ReceiveAudFlags0", false, 9), numberOf(round % 2, 9));
}

void LoadBench::loadAgain()
{
    QFETCH(int, flows);
    const QString file = path(QStringLiteral("again.ipp"));
    writeFile(file, fileText(3, kLoadedChannels, flows));
    loadFile(file);
    QBENCHMARK
    {
        loadFile(file);
    }
    QCOMPARE(stored("TransmitIp", true, 9), textOf(3, 9));
}

void LoadBench::loadLarge()
{
    const QString file = path(QStringLiteral("thousand.ipp"));
    writeFile(file, fileText(2, kSavedChannels, kMostFlows));
    QBENCHMARK_ONCE
    {
        QCOMPARE(loadFile(file), kSavedChannels * valuesPerChannel(kMostFlows));
    }
}

void LoadBench::save()
{
    const QString file = path(QStringLiteral("large.ipp"));
    const QString copy = path(QStringLiteral("copy.ipp"));
    writeFile(file, fileText(1, kSavedChannels, kMostFlows));
    QCOMPARE(loadFile(file), kSavedChannels * valuesPerChannel(kMostFlows));
    QByteArray text;
    QBENCHMARK
    {
        setGlobalDword(StorePath::AvHAL, MachineValue::NmosOverride, 0);
        commitStore();
        text = settingsHeader().join();
        StoredSections sections(kMostFlows);
        for (int channel = 0; channel < kSavedChannels; ++channel)
            text += sections.section(channel);
        writeFile(copy, text);
    }
    QCOMPARE(text.count('\n'), fileText(1, kSavedChannels, kMostFlows).count('\n'));
    QVERIFY(text.contains("[channel999]\n"));
    QVERIFY(text.contains("TransmitAudIp7=" + textOf(1, 999).toLatin1() + '\n'));
}

QTEST_GUILESS_MAIN(LoadBench)
#include "load_bench.moc"
