// SPDX-License-Identifier: MIT
#include "fleet/service/config.h"

#include "fleet/service/configkeys.h"
#include "ops/inputfile.h"
#include "rkos.h"

#include <fnmatch.h>
#include <ini.h>

namespace fleet {

namespace {

// The reader of the format cuts longer lines without a word.
constexpr int kLongestLine = 190;
constexpr char kMachineFile[] = "/etc/corvel/corvel-fleet.conf";
constexpr char kFileName[] = "corvel-fleet.conf";

struct Reading {
    const QByteArrayList lines;
    int line = 0; // the one that is being read, from 1
    Config config;
    QByteArrayList given;
    QByteArray complaint = {};
    int complaintLine = 0;
};

// fgets for the reader of the format.
char *nextLine(char *buffer, int size, void *stream)
{
    auto *reading = static_cast<Reading *>(stream);
    if (reading->line >= reading->lines.size())
        return nullptr;
    qstrncpy(buffer, reading->lines.at(reading->line++).constData(), static_cast<uint>(size));
    return buffer;
}

QByteArray taken(Reading &reading, const QByteArray &section, const QByteArray &name, const QByteArray &value)
{
    const ConfigKey *key = configKey(section, name);
    const QByteArray full = '[' + section + "] " + name;
    if (!key)
        return "no such key: " + full + nearestKey(section, name);
    if (reading.given.contains(full))
        return full + " is there twice";
    reading.given.append(full);
    const QByteArray wrong = key->read(value, reading.config);
    return wrong.isEmpty() ? wrong : name + ": " + wrong;
}

// The first complaint is told.
int take(void *user, const char *section, const char *name, const char *value)
{
    auto *reading = static_cast<Reading *>(user);
    const QByteArray complaint = taken(*reading, section, name, value);
    if (!complaint.isEmpty() && reading->complaint.isEmpty()) {
        reading->complaint = complaint;
        reading->complaintLine = reading->line;
    }
    return 1;
}

// The number of the first line that is too long or holds what no text holds, 0 for none.
int badLine(const QByteArrayList &lines)
{
    for (int number = 1; number <= lines.size(); ++number) {
        const QByteArray &line = lines.at(number - 1);
        if (line.size() > kLongestLine || line.contains('\0'))
            return number;
    }
    return 0;
}

ops::Failure at(const QByteArray &file, int line, const QByteArray &words)
{
    return ops::wrong(file + (line > 0 ? ':' + QByteArray::number(line) : QByteArray()) + ": " + words);
}

} // namespace

bool Config::follows(const QByteArray &server) const
{
    for (const QByteArray &pattern : follow) {
        if (fnmatch(pattern.constData(), server.constData(), 0) == 0)
            return true;
    }
    return false;
}

ops::Outcome<Config> parseConfig(const QByteArray &text, const QByteArray &file)
{
    Reading reading{text.split('\n'), 0, {}, {}};
    if (const int line = badLine(reading.lines); line > 0)
        return at(file, line, "no line of a text, or longer than 190 bytes");
    const int line = ini_parse_stream(nextLine, &reading, take, &reading);
    if (line > 0 && (reading.complaint.isEmpty() || line < reading.complaintLine))
        return at(file, line, "neither [section], nor key = value, nor # remark");
    if (!reading.complaint.isEmpty())
        return at(file, reading.complaintLine, reading.complaint);
    const QByteArray lacking = complaint(reading.config, reading.given);
    return lacking.isEmpty() ? ops::Outcome<Config>(reading.config) : at(file, 0, lacking);
}

ops::Outcome<Config> readConfig(const QByteArray &file)
{
    const auto text = ops::readInput(file);
    if (!text)
        return text.failure();
    return parseConfig(*text, file);
}

QByteArray usualConfigFile()
{
    char folder[RKOS_PATH_SIZE] = "";
    rkOSGetConfigDir(folder);
    const QByteArray own = QByteArray(folder) + kFileName;
    const bool machines = rkOSFileExists(own.constData()) == 0 && rkOSFileExists(kMachineFile) != 0;
    return machines ? QByteArray(kMachineFile) : own;
}

} // namespace fleet
