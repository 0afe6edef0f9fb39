// SPDX-License-Identifier: MIT
//
// Any bytes as a session description. Beyond not crashing, every value must keep what sdpreader.h says.
#include "files/sdpreader.h"

#include <QSet>

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

// Lines as the file layer cuts them: at most 4095 bytes, line ends sometimes left on.
class Lines {
public:
    Lines(const char *data, int size, bool keepEnds) : m_data(data), m_size(size), m_keepEnds(keepEnds) {}

    bool next(QByteArray &line)
    {
        if (m_at >= m_size)
            return false;
        const int most = qMin(4095, m_size - m_at);
        const void *feed = std::memchr(m_data + m_at, '\n', size_t(most));
        const int length = feed ? int(static_cast<const char *>(feed) - m_data) - m_at + 1 : most;
        line = QByteArray(m_data + m_at, length);
        m_at += length;
        if (!m_keepEnds && line.endsWith('\n'))
            line.chop(1);
        return true;
    }

private:
    const char *m_data;
    int m_size;
    bool m_keepEnds;
    int m_at = 0;
};

bool isAddress(const QString &text)
{
    in_addr address;
    return inet_pton(AF_INET, text.toLatin1().constData(), &address) == 1;
}

void check(const SdpStore &store)
{
    static const QSet<QByteArray> locks = {
        "ReceiveDestinationIp",  "ReceiveSourceIp", "ReceiveDestinationPort",
        "TransmitDestinationIp", "TransmitIp",      "TransmitRemotePort"};
    require(store.text.size() >= 2, "short text");
    require(!store.isString || isAddress(store.text), "address that is none");
    require(!store.text.contains(QLatin1Char(' ')), "text of several tokens");
    require(locks.contains(store.lockName), "lock of no video value");
    const bool video = store.valueName == store.lockName;
    require(video == (store.box != SdpTick::None), "box ticked for the wrong element");
    require(store.valueName.startsWith(store.lockName.left(7)), "value of the other side");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Lines lines(reinterpret_cast<const char *>(data), int(size), size % 2);
    for (const SdpStore &store : readSdp([&lines](QByteArray &line) { return lines.next(line); }))
        check(store);
    return 0;
}
