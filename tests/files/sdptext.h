// SPDX-License-Identifier: MIT
//
// Lines out of a text as the program's file layer delivers them, and stored values as one line of text.
#ifndef CORVEL_TESTS_SDPTEXT_H
#define CORVEL_TESTS_SDPTEXT_H

#include "files/sdpreader.h"

#include <QStringList>

// Like the file layer: at most 4095 bytes at a time, without "\n" or "\r\n", the rest of a line cut at
// its first NUL byte, and a last line that lacks its line feed is delivered too.
class TextLines {
public:
    explicit TextLines(const QByteArray &text) : m_text(text) {}

    bool next(QByteArray &line)
    {
        if (m_at >= m_text.size())
            return false;
        const int feed = m_text.indexOf('\n', m_at);
        const int end = feed < 0 ? m_text.size() : feed;
        const bool whole = end - m_at <= 4095;
        line = m_text.mid(m_at, whole ? end - m_at : 4095);
        m_at += line.size() + (whole && feed >= 0 ? 1 : 0);
        if (line.endsWith('\r'))
            line.chop(1);
        line.truncate(int(qstrnlen(line.constData(), uint(line.size()))));
        return true;
    }

    SdpLineSource source()
    {
        return [this](QByteArray &line) { return next(line); };
    }

private:
    QByteArray m_text;
    int m_at = 0;
};

inline SdpStores readSdpText(const QByteArray &text)
{
    TextLines lines(text);
    return readSdp(lines.source());
}

// "ReceiveSourceIp=10.0.0.5" for each value, in order.
inline QStringList storedValues(const SdpStores &stores)
{
    QStringList list;
    for (const SdpStore &store : stores)
        list << QString::fromUtf8(store.valueName) + QLatin1Char('=') + store.text;
    return list;
}

#endif
