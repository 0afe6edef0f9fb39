// SPDX-License-Identifier: MIT
//
// How long does it take to read a session description of nine media sections? Side by side with
// GStreamer's parser on the same text; beside them, writing that text out of a table of values.
#include "files/sdpreader.h"
#include "files/sdpsample.h"

#include <QtTest>

#include <gst/sdp/gstsdpmessage.h>

#include <cstring>

namespace {

// Video, seven audio flows and ancillary data of the send side, with filters and clock lines.
QByteArray nineSections()
{
    return writeFileSdp(sdpsample::input(7, 15, sdpsample::Ptp), Side::Send).toLatin1();
}

// With the values from a table, so that it is the writer that is measured.
SdpInput tabledInput()
{
    QHash<QByteArray, QString> values;
    for (const ChannelKey &key : channelKeys()) {
        for (int flow = 0; flow < kFlowCount; ++flow) {
            const QByteArray name = flowValueName(key, flow);
            values.insert(name, sdpsample::value(QString::fromLatin1(name)));
        }
    }
    SdpInput input = sdpsample::input(7, 15, sdpsample::Ptp);
    input.value = [values](const char *name, bool) {
        return values.value(QByteArray::fromRawData(name, int(qstrlen(name))));
    };
    return input;
}

// Hands out the lines of a text in memory, as cheaply as the file layer could.
class Lines {
public:
    explicit Lines(const QByteArray &text) : m_at(text.constData()), m_end(m_at + text.size()) {}

    bool next(QByteArray &line)
    {
        if (m_at == m_end)
            return false;
        const auto *feed = static_cast<const char *>(std::memchr(m_at, '\n', size_t(m_end - m_at)));
        const char *end = feed ? feed : m_end;
        line.resize(int(end - m_at));
        std::memcpy(line.data(), m_at, size_t(end - m_at));
        m_at = feed ? feed + 1 : m_end;
        return true;
    }

private:
    const char *m_at;
    const char *m_end;
};

} // namespace

class SdpBench : public QObject {
    Q_OBJECT

private slots:
    void read();
    void readGstreamer();
    void write();
};

void SdpBench::read()
{
    const QByteArray text = nineSections();
    int stored = 0;
    QBENCHMARK
    {
        Lines lines(text);
        stored = readSdp([&lines](QByteArray &line) { return lines.next(line); }).size();
    }
    QCOMPARE(stored, 27);
}

void SdpBench::readGstreamer()
{
    const QByteArray text = nineSections();
    guint sections = 0;
    QBENCHMARK
    {
        GstSDPMessage *message = nullptr;
        gst_sdp_message_new(&message);
        gst_sdp_message_parse_buffer(reinterpret_cast<const guint8 *>(text.constData()), guint(text.size()),
                                     message);
        sections = gst_sdp_message_medias_len(message);
        gst_sdp_message_free(message);
    }
    QCOMPARE(sections, 9u);
}

void SdpBench::write()
{
    const SdpInput input = tabledInput();
    int size = 0;
    QBENCHMARK
    {
        size = writeFileSdp(input, Side::Send).size();
    }
    QVERIFY(size > 2000);
}

QTEST_APPLESS_MAIN(SdpBench)
#include "sdp_bench.moc"
