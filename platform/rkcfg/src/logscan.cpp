// SPDX-License-Identifier: MIT
#include "logscan.h"

#include "files.h"

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace rkcfg {

namespace {

constexpr size_t kHeaderBytes = 32;
constexpr size_t kFrameHeaderBytes = 24;
constexpr size_t kSmallestPage = 512;
constexpr size_t kLargestPage = 65536;
constexpr uint32_t kMagic = 0x377F0682;
constexpr uint32_t kFormat = 3007000;
// A longer one is that of a program in full work.
constexpr off_t kLargestLog = 64 << 20;

uint32_t number(const unsigned char *bytes)
{
    return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
}

std::vector<unsigned char> readFile(const std::string &path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    const FileState state = fileState(file);
    if (!state.plain() || state.size() > kLargestLog)
        return {};
    std::vector<unsigned char> bytes(static_cast<size_t>(state.size()));
    const ssize_t count = read(file.get(), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
    return bytes;
}

// The running sum over the log, in the byte order that its header names.
class Sum {
public:
    explicit Sum(bool bigEndian) : m_bigEndian(bigEndian) {}

    void add(const unsigned char *bytes, size_t count)
    {
        for (size_t i = 0; i + 8 <= count; i += 8) {
            m_first += word(bytes + i) + m_second;
            m_second += word(bytes + i + 4) + m_first;
        }
    }
    bool matches(const unsigned char *stored) const
    {
        return m_first == number(stored) && m_second == number(stored + 4);
    }

private:
    uint32_t word(const unsigned char *bytes) const
    {
        const uint32_t big = number(bytes);
        return m_bigEndian ? big : __builtin_bswap32(big);
    }

    bool m_bigEndian;
    uint32_t m_first = 0;
    uint32_t m_second = 0;
};

class Log {
public:
    explicit Log(const std::string &path) : m_bytes(readFile(path)) {}

    // Too short for a single frame: nothing was ever committed in it.
    bool small() const { return m_bytes.size() < kHeaderBytes + kFrameHeaderBytes + kSmallestPage; }

    bool headerSound()
    {
        Sum sum(bigEndian());
        sum.add(m_bytes.data(), kHeaderBytes - 8);
        m_pageBytes = number(&m_bytes[8]);
        const bool page = m_pageBytes >= kSmallestPage && m_pageBytes <= kLargestPage &&
                          (m_pageBytes & (m_pageBytes - 1)) == 0;
        return page && (number(m_bytes.data()) & ~1u) == kMagic && number(&m_bytes[4]) == kFormat &&
               sum.matches(&m_bytes[kHeaderBytes - 8]);
    }

    bool framesDamaged() const
    {
        const size_t sound = soundFrames();
        if (sound == frames())
            return false;
        for (size_t frame = sound + 1; frame < frames(); ++frame) {
            if (ofThisRun(frame))
                return true;
        }
        return firstRun() && endsAtAFrame();
    }

private:
    bool bigEndian() const { return (m_bytes[3] & 1) != 0; }
    size_t frameBytes() const { return kFrameHeaderBytes + m_pageBytes; }
    size_t frames() const { return (m_bytes.size() - kHeaderBytes) / frameBytes(); }
    bool endsAtAFrame() const { return (m_bytes.size() - kHeaderBytes) % frameBytes() == 0; }
    // How often the log was begun anew.
    bool firstRun() const { return number(&m_bytes[12]) == 0; }
    const unsigned char *frameAt(size_t frame) const
    {
        return m_bytes.data() + kHeaderBytes + frame * frameBytes();
    }
    bool ofThisRun(size_t frame) const { return memcmp(frameAt(frame) + 8, &m_bytes[16], 8) == 0; }

    size_t soundFrames() const
    {
        Sum sum(bigEndian());
        sum.add(m_bytes.data(), kHeaderBytes - 8);
        for (size_t frame = 0; frame < frames(); ++frame) {
            sum.add(frameAt(frame), 8);
            sum.add(frameAt(frame) + kFrameHeaderBytes, m_pageBytes);
            if (!ofThisRun(frame) || !sum.matches(frameAt(frame) + 16))
                return frame;
        }
        return frames();
    }

    std::vector<unsigned char> m_bytes;
    size_t m_pageBytes = 0;
};

} // namespace

bool logDamaged(const std::string &path)
{
    Log log(path);
    return !log.small() && (!log.headerSound() || log.framesDamaged());
}

} // namespace rkcfg
