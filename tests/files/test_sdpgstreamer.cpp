// SPDX-License-Identifier: MIT
//
// GStreamer's parser as a judge: it must find every section of every text, with its values.
#include "files/sdpsample.h"

#include <QtTest>

#include <gst/sdp/gstsdpmessage.h>

using namespace sdpsample;

namespace {

struct Freed {
    void operator()(GstSDPMessage *message) const { gst_sdp_message_free(message); }
};
using Message = std::unique_ptr<GstSDPMessage, Freed>;

Message parse(const QByteArray &text)
{
    GstSDPMessage *message = nullptr;
    gst_sdp_message_new(&message);
    Message result(message);
    const auto *bytes = reinterpret_cast<const guint8 *>(text.constData());
    if (gst_sdp_message_parse_buffer(bytes, guint(text.size()), message) != GST_SDP_OK)
        result.reset();
    return result;
}

QString latin1(const char *text)
{
    return QString::fromLatin1(text);
}

// The lines of a section as the text must have had them.
QStringList lines(const GstSDPMedia *media)
{
    QStringList list;
    list << QStringLiteral("m=%1 %2 %3 %4")
                .arg(latin1(gst_sdp_media_get_media(media)))
                .arg(gst_sdp_media_get_port(media))
                .arg(latin1(gst_sdp_media_get_proto(media)), latin1(gst_sdp_media_get_format(media, 0)));
    for (guint n = 0; n < gst_sdp_media_connections_len(media); ++n) {
        const GstSDPConnection *connection = gst_sdp_media_get_connection(media, n);
        list << QStringLiteral("c=%1 %2 %3")
                    .arg(latin1(connection->nettype), latin1(connection->addrtype),
                         latin1(connection->address));
    }
    for (guint n = 0; n < gst_sdp_media_attributes_len(media); ++n) {
        const GstSDPAttribute *attribute = gst_sdp_media_get_attribute(media, n);
        const QString value = attribute->value ? latin1(attribute->value) : QString();
        list << QStringLiteral("a=") + latin1(attribute->key) +
                    (value.isEmpty() ? QString() : QLatin1Char(':') + value);
    }
    return list;
}

} // namespace

class TestSdpGstreamer : public QObject {
    Q_OBJECT

private slots:
    void readsEverySection_data();
    void readsEverySection();
};

void TestSdpGstreamer::readsEverySection_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("flows");
    for (int kind = 0; kind < kinds().size(); ++kind) {
        for (int flows : {1, 2, 8})
            QTest::addRow("%s, flows %d", kinds().at(kind).name, flows) << kind << flows;
    }
}

void TestSdpGstreamer::readsEverySection()
{
    QFETCH(int, kind);
    QFETCH(int, flows);
    for (int boxes = 0; boxes < 16; ++boxes) {
        for (Clock clock : {NoClock, Ptp, LocalMac}) {
            const QString text = kinds().at(kind).write(input(flows, boxes, clock));
            const Message message = parse(text.toLatin1());
            QVERIFY(message);
            QStringList found;
            for (guint n = 0; n < gst_sdp_message_medias_len(message.get()); ++n)
                found += lines(gst_sdp_message_get_media(message.get(), n));
            const QString sections = text.section(QLatin1Char('\n'), 4).trimmed();
            QCOMPARE(found.join(QLatin1Char('\n')), sections);
        }
    }
}

QTEST_APPLESS_MAIN(TestSdpGstreamer)
#include "test_sdpgstreamer.moc"
