// SPDX-License-Identifier: MIT
#include "streams.h"

#include <QFile>
#include <QStringList>

#include <arpa/inet.h>

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kFrameBytes = kWidth * kHeight * 2 * 2; // as many colour samples as luma, two bytes each

// UYVP is what RTP carries: 10 bits a sample, packed.
const char kSource[] = "video/x-raw,format=UYVP,width=1920,height=1080,framerate=3/1";

QStringList source(const char *pattern)
{
    return {QStringLiteral("videotestsrc"), QLatin1String("pattern=") + QLatin1String(pattern)};
}

QString number(quint32 value)
{
    return QString::number(value);
}

} // namespace

// Dithering would touch the lowest bits although nothing is converted but the packing.
QByteArray TestPicture::frame(const char *pattern)
{
    QProcess process;
    const QString link = QStringLiteral("!");
    process.start(QStringLiteral("gst-launch-1.0"),
                  QStringList{QStringLiteral("-q")} + source(pattern) +
                      QStringList{QStringLiteral("num-buffers=1"), link, QLatin1String(kSource), link,
                                  QStringLiteral("videoconvert"), QStringLiteral("dither=none"), link,
                                  QStringLiteral("video/x-raw,format=I422_10LE"), link,
                                  QStringLiteral("fdsink")});
    process.waitForFinished();
    const QByteArray frame = process.readAllStandardOutput();
    return frame.size() == kFrameBytes ? frame : QByteArray();
}

// A receiver's socket buffer holds a few of these packets only: a frame goes out in small pieces, spread over
// most of its time.
Sender::Sender(const char *pattern, const QString &from, const QString &group, quint32 port)
{
    const QString link = QStringLiteral("!");
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(
        QStringLiteral("gst-launch-1.0"),
        QStringList{QStringLiteral("-q")} + source(pattern) +
            QStringList{QStringLiteral("is-live=true"), link, QLatin1String(kSource), link,
                        QStringLiteral("rtpvrawpay"), QStringLiteral("pt=101"), QStringLiteral("mtu=8900"),
                        QStringLiteral("chunks-per-frame=270"), link, QStringLiteral("udpsink"),
                        QLatin1String("host=") + group, QLatin1String("port=") + number(port),
                        QLatin1String("bind-address=") + from, QStringLiteral("multicast-iface=lo"),
                        QStringLiteral("max-bitrate=200000000")});
    m_process.waitForStarted();
}

Sender::~Sender()
{
    m_process.kill();
    m_process.waitForFinished();
}

Receiver::Receiver(const QString &description)
{
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, [this] { read(); });
    QObject::connect(&m_process, &QProcess::readyReadStandardError,
                     [this] { m_log += m_process.readAllStandardError(); });
    m_process.start(QStringLiteral("ffmpeg"),
                    {QStringLiteral("-hide_banner"), QStringLiteral("-nostdin"), QStringLiteral("-nostats"),
                     QStringLiteral("-protocol_whitelist"), QStringLiteral("file,udp,rtp"),
                     QStringLiteral("-buffer_size"), QStringLiteral("4000000"), QStringLiteral("-i"),
                     description, QStringLiteral("-fps_mode"), QStringLiteral("passthrough"),
                     QStringLiteral("-f"), QStringLiteral("rawvideo"), QStringLiteral("-")});
    m_process.waitForStarted();
}

Receiver::~Receiver()
{
    m_process.disconnect();
    m_process.kill();
    m_process.waitForFinished();
}

void Receiver::expect(const QByteArray &right, const QByteArray &wrong)
{
    m_right = right;
    m_wrong = wrong;
}

void Receiver::read()
{
    m_data += m_process.readAllStandardOutput();
    while (m_data.size() >= kFrameBytes) {
        const QByteArray frame = m_data.left(kFrameBytes);
        m_data.remove(0, kFrameBytes);
        ++m_frames;
        m_rightFrames += frame == m_right;
        m_wrongFrames += frame == m_wrong;
    }
}

namespace {

quint32 networkOrder(const QString &address)
{
    return inet_addr(address.toLatin1().constData());
}

QByteArray hexadecimal(quint32 value)
{
    return QByteArray::number(value, 16).rightJustified(8, '0');
}

// A file of the kernel as lines of words, the heading included.
QList<QByteArrayList> wordsOf(const char *path)
{
    QList<QByteArrayList> lines;
    QFile file{QLatin1String(path)};
    if (!file.open(QIODevice::ReadOnly))
        return lines;
    for (const QByteArray &line : file.readAll().split('\n'))
        lines.append(line.simplified().split(' '));
    return lines;
}

} // namespace

// The group is the first column, as the bytes lie in memory.
bool isJoined(const QString &group)
{
    const QByteArray shown = hexadecimal(networkOrder(group)).toUpper();
    for (const QByteArrayList &words : wordsOf("/proc/net/igmp")) {
        if (words.value(0) == shown)
            return true;
    }
    return false;
}

// Columns: index, device, group, source, number of sockets that include it, number that exclude it.
bool isJoined(const QString &group, const QString &onlySource)
{
    const QByteArray groupShown = "0x" + hexadecimal(ntohl(networkOrder(group)));
    const QByteArray sourceShown = "0x" + hexadecimal(ntohl(networkOrder(onlySource)));
    for (const QByteArrayList &words : wordsOf("/proc/net/mcfilter")) {
        if (words.value(2) == groupShown && words.value(3) == sourceShown)
            return words.value(4).toInt() > 0 && words.value(5).toInt() == 0;
    }
    return false;
}
