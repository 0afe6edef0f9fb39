// SPDX-License-Identifier: MIT
//
// A sender and a receiver of uncompressed 10-bit 4:2:2 video over RTP (RFC 4175), each a process of another
// project: GStreamer sends, ffmpeg receives. They end with their objects.
#ifndef CORVEL_TEST_STREAMS_H
#define CORVEL_TEST_STREAMS_H

#include <QByteArray>
#include <QProcess>
#include <QString>

// 1920x1080 in 10 bits 4:2:2, a few frames a second.
namespace TestPicture {

// The patterns, by their names in GStreamer. Neither has a random part.
constexpr char bars[] = "smpte75";
constexpr char circles[] = "circular";

// One frame as a receiver must decode it to the bit: planar, 16 bits a sample, low byte first. Empty when
// GStreamer does not run.
QByteArray frame(const char *pattern);

} // namespace TestPicture

// Streams a pattern from one of this machine's addresses to a group until it is destroyed.
class Sender {
public:
    Sender(const char *pattern, const QString &from, const QString &group, quint32 port);
    ~Sender();
    Sender(const Sender &) = delete;
    Sender &operator=(const Sender &) = delete;
    bool isRunning() const { return m_process.state() == QProcess::Running; }

private:
    QProcess m_process;
};

// Opens a session description and decodes what comes, until it is destroyed. Counts while the event loop
// runs.
class Receiver {
public:
    explicit Receiver(const QString &description);
    ~Receiver();
    Receiver(const Receiver &) = delete;
    Receiver &operator=(const Receiver &) = delete;

    // What to compare with, once, before the event loop runs again.
    void expect(const QByteArray &right, const QByteArray &wrong);
    int rightFrames() const { return m_rightFrames; } // equal to the right picture in every sample
    int wrongFrames() const { return m_wrongFrames; } // equal to the wrong one
    int frames() const { return m_frames; }           // all, with those that came in part
    QByteArray log() const { return m_log; }          // what ffmpeg said

private:
    void read();

    QProcess m_process;
    QByteArray m_data;
    QByteArray m_log;
    QByteArray m_right, m_wrong;
    int m_rightFrames = 0;
    int m_wrongFrames = 0;
    int m_frames = 0;
};

// True when a socket of this machine has joined the group. With a source: one takes that source and no other.
bool isJoined(const QString &group);
bool isJoined(const QString &group, const QString &onlySource);

#endif
