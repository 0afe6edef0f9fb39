// SPDX-License-Identifier: MIT
#include "ops/settings.h"

#include "channel/channelstore.h"
#include "channel/valuenames.h"
#include "files/settingsfile.h"
#include "ops/assignment.h"
#include "ops/place.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

namespace ops {

namespace {

constexpr int kLineRoom = 4095; // the dialog reads longer lines in pieces of this size
constexpr int kLongestText = 4095;
constexpr int kReadableSections = 10;

// The text as the dialog sees it: up to the first zero byte, as Latin-1.
QString shownText(const QByteArray &text)
{
    const QByteArray cut = text.left(kLongestText);
    return QString::fromLatin1(cut.constData(),
                               static_cast<int>(qstrnlen(cut.constData(), static_cast<uint>(cut.size()))));
}

int mostFlows(const Snapshot &values, int channels)
{
    int most = 0;
    for (int channel = 0; channel < channels; ++channel)
        most = std::max(most, flowCount(values, channel));
    return most;
}

// The lines of a file as rkOSfgets gives them.
QByteArrayList linesOf(const QByteArray &text)
{
    QByteArrayList lines;
    QByteArrayList ends = text.split('\n');
    if (ends.last().isEmpty())
        ends.removeLast();
    for (const QByteArray &whole : ends) {
        const QByteArray line = whole.endsWith('\r') ? whole.chopped(1) : whole;
        int at = 0;
        do {
            lines.append(line.mid(at, kLineRoom));
            at += kLineRoom;
        } while (at < line.size());
    }
    return lines;
}

Value valueOf(const SettingsValue &read)
{
    if (read.global)
        return Value::ofNumber(globalSettingsNumber(read.text));
    return read.isString ? Value::ofText(read.text.toUtf8()) : Value::ofNumber(settingsNumber(read.text));
}

bool isNumber(const QString &text)
{
    bool ok = false;
    text.toULongLong(&ok);
    return ok;
}

class Import {
public:
    explicit Import(Draft &draft) : m_draft(draft) {}
    SettingsRead read(const QByteArrayList &lines);

private:
    bool take(const QByteArray &line);
    void store(const SettingsValue &value);
    void ignored(const QByteArray &line);
    void note(const QByteArray &text)
    {
        m_read.notes.append("line " + QByteArray::number(m_line) + ": " + text);
    }

    Draft &m_draft;
    SettingsReader m_reader;
    SettingsRead m_read;
    std::set<int> m_channels;
    bool m_inSection = false;
    int m_line = 1; // the signature
};

void Import::store(const SettingsValue &value)
{
    const QByteArray path = value.global ? QByteArray(StorePath::AvHal) : channelPath(value.channel);
    m_draft.set(path, value.key, valueOf(value));
    ++m_read.values;
    if (!value.global)
        m_channels.insert(value.channel);
    if (!value.isString && !isNumber(value.text))
        note(value.key + " is no number and is stored as " + QByteArray::number(valueOf(value).number));
}

// Sections and comments are no values; of the rest somebody should know.
void Import::ignored(const QByteArray &line)
{
    const int equals = line.indexOf('=');
    m_inSection = m_inSection || line.startsWith("[channel");
    if (equals > 0 && m_inSection)
        note(line.left(equals) + " is left out" +
             (line.contains("Interface=") ? ": a file never changes interfaces" : ""));
    const bool section = line.startsWith("[channel");
    if (section && line.indexOf(']') != 9)
        note("only the first digit counts in " + line.left(40));
}

bool Import::take(const QByteArray &line)
{
    ++m_line;
    SettingsValue value;
    switch (m_reader.feed(line, &value)) {
    case SettingsReader::Result::Value:
        store(value);
        return true;
    case SettingsReader::Result::Ignored:
        if (!line.startsWith(';'))
            ignored(line);
        return true;
    case SettingsReader::Result::Stop:
        note("reading ends here: the section is below the first one");
        return false;
    }
    return false;
}

SettingsRead Import::read(const QByteArrayList &lines)
{
    for (int at = 1; at < lines.size(); ++at) {
        if (!take(lines[at]))
            break;
    }
    m_read.channels = static_cast<int>(m_channels.size());
    return m_read;
}

} // namespace

QByteArray exportSettings(const Snapshot &values, int flows)
{
    const int channels = channelCount(values);
    const SettingsValueSource source = [&values](const char *name, bool isString, int channel) {
        const QByteArray path = channelPath(channel);
        if (isString)
            return shownText(values.text(path, name));
        return QString::number(values.number(path, name));
    };
    return writeSettingsFile(source, channels, flows < 0 ? mostFlows(values, channels) : flows);
}

Outcome<SettingsRead> importSettings(const QByteArray &text, Draft &draft)
{
    const QByteArrayList lines = text.isEmpty() ? QByteArrayList() : linesOf(text);
    if (lines.isEmpty() || !isSettingsSignature(lines.first()))
        return wrong("no settings file: it does not begin with its signature");
    return Import(draft).read(lines);
}

QByteArrayList settingsLosses(const Snapshot &values)
{
    const Snapshot nothing;
    Draft reread(nothing);
    if (!importSettings(exportSettings(values), reread))
        return {"everything"};
    std::map<QByteArray, int> lost;
    std::set<int> beyond;
    for (const Row &row : values.rows()) {
        const int channel = channelOfPath(row.path);
        if (channel >= kReadableSections)
            beyond.insert(channel);
        else if (channel >= 0 && reread.find(row.path, row.name) != row.value)
            ++lost[row.name];
    }
    QByteArrayList losses;
    if (!beyond.empty())
        losses.append("everything of channels " + QByteArray::number(*beyond.begin()) + " to " +
                      QByteArray::number(*beyond.rbegin()) + ": only the first digit of a section is read");
    for (const auto &[name, count] : lost)
        losses.append(name + " of " + QByteArray::number(count) + (count == 1 ? " channel" : " channels"));
    return losses;
}

} // namespace ops
