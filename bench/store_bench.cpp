// SPDX-License-Identifier: MIT
// What the store costs the user interface: an edit, a loaded file, the first call of a process.
#include "rkcfg.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <QVector>
#include <QtTest>

class StoreBench : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    // One field changed, all values of the element handed over, saved. Goal: 0.5 ms.
    void oneEdit();
    // The same with nothing changed.
    void nothingChanged();
    // A settings file: 10 channels of 60 values, all changed, one save. Goal: 30 ms.
    void loadedFile();
    // One channel's values read back.
    void oneChannelRead();
    // Closing, and the first call that opens and checks the store again.
    void reopened();

private:
    QTemporaryDir m_home;
};

namespace {

constexpr int channels = 10;
constexpr int valuesPerChannel = 60;
constexpr int valuesPerElement = 30;

void *const store = RKCFG_DEFAULT_STORE;

QByteArray path(int channel)
{
    return "KWX\\Internal" + QByteArray::number(channel) + "\\IpConfig";
}

QByteArray name(int index)
{
    return "TransmitDestinationValue" + QByteArray::number(index);
}

void put(int channel, int index, QByteArray text)
{
    auto size = static_cast<uint32_t>(text.size() + 1);
    rkCFGValueString(store, path(channel).constData(), name(index).constData(), text.data(), &size, 1);
}

void putElement(int channel, int changedValue)
{
    for (int index = 0; index < valuesPerElement; ++index)
        put(channel, index,
            index == 7 ? QByteArray::number(changedValue) : "239.10.20." + QByteArray::number(index));
}

void putAll(int round)
{
    for (int channel = 0; channel < channels; ++channel) {
        for (int index = 0; index < valuesPerChannel; ++index)
            put(channel, index, "239.10." + QByteArray::number(round) + '.' + QByteArray::number(index));
    }
}

void save()
{
    QCOMPARE(rkCFGSave(store, nullptr, 0), 0);
}

} // namespace

void StoreBench::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", m_home.path().toLocal8Bit());
    putAll(0);
    putElement(3, 0);
    save();
}

void StoreBench::cleanupTestCase()
{
    rkCFGClose(store, 1);
}

void StoreBench::oneEdit()
{
    int value = 1000;
    QBENCHMARK
    {
        putElement(3, ++value);
        save();
    }
}

void StoreBench::nothingChanged()
{
    putElement(3, 1);
    QBENCHMARK
    {
        putElement(3, 1);
        save();
    }
}

void StoreBench::loadedFile()
{
    int round = 0;
    QBENCHMARK
    {
        putAll(++round);
        save();
    }
}

void StoreBench::oneChannelRead()
{
    char buffer[4096];
    QBENCHMARK
    {
        for (int index = 0; index < valuesPerChannel; ++index) {
            uint32_t size = sizeof buffer;
            QCOMPARE(rkCFGValueString(store, path(3).constData(), name(index).constData(), buffer, &size, 0),
                     0);
        }
    }
}

void StoreBench::reopened()
{
    uint32_t size = 0;
    QBENCHMARK
    {
        rkCFGClose(store, 0);
        QCOMPARE(rkCFGValueString(store, path(3).constData(), name(0).constData(), nullptr, &size, 0), 0);
    }
}

QTEST_GUILESS_MAIN(StoreBench)
#include "store_bench.moc"
