// SPDX-License-Identifier: MIT
//
// How long does it take to parse a settings file of 1,000 channels with eight flows each, without storing
// anything? Side by side with GKeyFile on the same text; beside them, writing that text.
#include "files/settingsfile.h"

#include <QtTest>

#include <glib.h>

#include <cstring>

namespace {

const int channels = 1000;
const int flows = 8;
// Per channel: the single lines without the six interfaces, and ten lines for each flow.
const int storedPerChannel = 36 + 10 * flows;

QString value(const char *, bool isString, int)
{
    return isString ? QStringLiteral("239.255.10.20") : QStringLiteral("5004");
}

const QByteArray &text()
{
    static const QByteArray file = writeSettingsFile(value, channels, flows);
    return file;
}

int readAll()
{
    SettingsReader reader;
    SettingsValue out;
    QByteArray line;
    line.reserve(4096);
    int stored = 0;
    const char *at = text().constData();
    const char *const last = at + text().size();
    while (at < last) {
        const auto *feed = static_cast<const char *>(std::memchr(at, '\n', size_t(last - at)));
        const char *end = feed ? feed : last;
        line.resize(int(end - at));
        std::memcpy(line.data(), at, size_t(end - at));
        at = end + 1;
        stored += reader.feed(line, &out) == SettingsReader::Result::Value;
    }
    return stored;
}

} // namespace

class SettingsBench : public QObject {
    Q_OBJECT

private slots:
    void parse();
    void parseGKeyFile();
    void write();
};

void SettingsBench::parse()
{
    int stored = 0;
    QBENCHMARK
    {
        stored = readAll();
    }
    QCOMPARE(stored, channels * storedPerChannel);
}

// GKeyFile knows comments by "#" only, so it gets the text without the header.
void SettingsBench::parseGKeyFile()
{
    const QByteArray sections = text().mid(text().indexOf("[channel0]"));
    gsize groups = 0;
    QBENCHMARK
    {
        GKeyFile *file = g_key_file_new();
        g_key_file_load_from_data(file, sections.constData(), gsize(sections.size()), G_KEY_FILE_NONE,
                                  nullptr);
        g_strfreev(g_key_file_get_groups(file, &groups));
        g_key_file_free(file);
    }
    QCOMPARE(int(groups), channels);
}

void SettingsBench::write()
{
    int size = 0;
    QBENCHMARK
    {
        size = writeSettingsFile(value, channels, flows).size();
    }
    QCOMPARE(size, text().size());
}

QTEST_APPLESS_MAIN(SettingsBench)
#include "settings_bench.moc"
