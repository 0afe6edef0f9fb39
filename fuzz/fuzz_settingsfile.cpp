// SPDX-License-Identifier: MIT
//
// Any bytes as a settings file. Beyond not crashing, every value must keep what settingsfile.h says.
#include "files/settingsfile.h"

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

void check(const SettingsValue &value, const QByteArray &line)
{
    require(!value.key.isEmpty() && !value.key.contains('='), "key");
    require(!value.key.contains("Interface"), "interface key");
    require(value.channel >= 0 && value.channel <= 9, "channel");
    require(!value.text.contains(QLatin1Char('=')), "text of several parts");
    require(value.text.size() <= line.size(), "text longer than its line");
    require(value.global == (value.key == "nmosoverride"), "global value");
    settingsNumber(value.text);
    globalSettingsNumber(value.text);
}

// Bytes as the writer's stored texts: its output must start and end as it does for any other.
void write(const char *data, size_t size)
{
    const QString text = QString::fromUtf8(data, int(qMin(size, size_t(200))));
    const QByteArray file = writeSettingsFile([&text](const char *, bool, int) { return text; }, 2, 1);
    require(isSettingsSignature(file) && file.endsWith("\n\n"), "written file");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const char *bytes = reinterpret_cast<const char *>(data);
    SettingsReader reader;
    SettingsValue value;
    bool stopped = false;
    for (size_t at = 0; at < size;) {
        const size_t most = qMin(size_t(4095), size - at);
        const void *feed = std::memchr(bytes + at, '\n', most);
        const size_t length = feed ? size_t(static_cast<const char *>(feed) - bytes) - at : most;
        const QByteArray line(bytes + at, int(length));
        at += length + (feed ? 1 : 0);
        isSettingsSignature(line);
        const SettingsReader::Result result = reader.feed(line, &value);
        require(!stopped || result == SettingsReader::Result::Stop, "reading after a stop");
        stopped = result == SettingsReader::Result::Stop;
        if (result == SettingsReader::Result::Value)
            check(value, line);
    }
    if (size % 64 == 0) // seldom: it takes longer than all the reading
        write(bytes, size);
    return 0;
}
