// SPDX-License-Identifier: MIT
#include "files/settingsfile.h"

#include "files/settingskeys.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

using std::string_view;

// The second piece has no line end, so that the name line continues a comment. Deliberate, see
// docs/deliberate.md.
const char *const kHeader[] = {"[HalvectIpConfig]\n", ";Network Config file", "Name=Quorlex\n",
                               "Version=1.0\n\n"};
const char kSignature[] = "[HalvectIpConfig]";
constexpr string_view kVersionKey = "Version"; // of the header's last piece

enum class Form {
    Zero,   // the number 0, whatever is stored
    Text,   // stored text
    Number, // stored number, normalised
    AsRead, // stored number as it reads
    Flows   // the lines of an audio group, once per flow
};

struct FlowLine {
    const char *stem;
    Form form;
};

struct WrittenLine {
    const char *key;
    const char *value; // name of the stored value; null: the key
    Form form;
    const FlowLine *flows;
};

// clang-format off
const FlowLine kTransmitFlow[] = {
    {"TransmitAudIp",             Form::Text},
    {"TransmitAudDestinationIp",  Form::Text},
    {"TransmitAudSourcePort",     Form::AsRead},
    {"TransmitAudRemotePort",     Form::AsRead},
    {"TransmitAudFlags",          Form::AsRead},
    {nullptr,                     Form::Text},
};
const FlowLine kReceiveFlow[] = {
    {"ReceiveAudSourceIp",        Form::Text},
    {"ReceiveAudDestinationIp",   Form::Text},
    {"ReceiveAudSourcePort",      Form::AsRead},
    {"ReceiveAudDestinationPort", Form::AsRead},
    {"ReceiveAudFlags",           Form::AsRead},
    {nullptr,                     Form::Text},
};

// The lines of a section in their order. The audio interfaces are those of video: deliberate.
const WrittenLine kWrittenLines[] = {
    // key                        value                form
    {"nmosoverride",              nullptr,             Form::Zero,   nullptr},
    {"ClockGrandMaster",          nullptr,             Form::Text,   nullptr},
    {"SfpTopIPAddress",           nullptr,             Form::Text,   nullptr},
    {"SfpBottomIPAddress",        nullptr,             Form::Text,   nullptr},
    {"SfpSubnetMask",             nullptr,             Form::Text,   nullptr},
    {"SfpGateway",                nullptr,             Form::Text,   nullptr},
    {"ReceiveAudChannels",        nullptr,             Form::AsRead, nullptr},
    {"ReceiveAudTotalChannels",   nullptr,             Form::AsRead, nullptr},
    {"TransmitAudChannels",       nullptr,             Form::Number, nullptr},
    {"TransmitAudTotalChannels",  nullptr,             Form::Number, nullptr},
    {"TransmitIp",                nullptr,             Form::Text,   nullptr},
    {"TransmitDestinationIp",     nullptr,             Form::Text,   nullptr},
    {"TransmitSourcePort",        nullptr,             Form::Number, nullptr},
    {"TransmitRemotePort",        nullptr,             Form::Number, nullptr},
    {"TransmitInterface",         nullptr,             Form::Text,   nullptr},
    {"TransmitFlags",             nullptr,             Form::Number, nullptr},
    {nullptr,                     nullptr,             Form::Flows,  kTransmitFlow},
    {"TransmitAudInterface",      "TransmitInterface", Form::Text,   nullptr},
    {"TransmitAudPacketLength",   nullptr,             Form::Number, nullptr},
    {"TransmitAncIp",             nullptr,             Form::Text,   nullptr},
    {"TransmitAncDestinationIp",  nullptr,             Form::Text,   nullptr},
    {"TransmitAncSourcePort",     nullptr,             Form::Number, nullptr},
    {"TransmitAncRemotePort",     nullptr,             Form::Number, nullptr},
    {"TransmitAncInterface",      nullptr,             Form::Text,   nullptr},
    {"TransmitAncFlags",          nullptr,             Form::Number, nullptr},
    {"VideoType",                 nullptr,             Form::Number, nullptr},
    {"ClockType",                 nullptr,             Form::Number, nullptr},
    {"ClockSettings",             nullptr,             Form::Number, nullptr},
    {"ClockDomain",               nullptr,             Form::Number, nullptr},
    {"ReceiveSourceIp",           nullptr,             Form::Text,   nullptr},
    {"ReceiveDestinationIp",      nullptr,             Form::Text,   nullptr},
    {"ReceiveSourcePort",         nullptr,             Form::Number, nullptr},
    {"ReceiveDestinationPort",    nullptr,             Form::Number, nullptr},
    {"ReceiveInterface",          nullptr,             Form::Text,   nullptr},
    {"ReceiveFlags",              nullptr,             Form::Number, nullptr},
    {nullptr,                     nullptr,             Form::Flows,  kReceiveFlow},
    {"ReceiveAudInterface",       "ReceiveInterface",  Form::Text,   nullptr},
    {"ReceiveAudPacketLength",    nullptr,             Form::Number, nullptr},
    {"ReceiveAncSourceIp",        nullptr,             Form::Text,   nullptr},
    {"ReceiveAncDestinationIp",   nullptr,             Form::Text,   nullptr},
    {"ReceiveAncSourcePort",      nullptr,             Form::Number, nullptr},
    {"ReceiveAncDestinationPort", nullptr,             Form::Number, nullptr},
    {"ReceiveAncInterface",       nullptr,             Form::Text,   nullptr},
    {"ReceiveAncFlags",           nullptr,             Form::Number, nullptr},
};
// clang-format on

bool isAscii(char16_t character)
{
    return character < 0x80;
}

// What is stored is nearly always ASCII, and needs no conversion then.
void appendUtf8(QByteArray &out, const QString &text)
{
    const auto *from = reinterpret_cast<const char16_t *>(text.utf16());
    const int before = out.size();
    if (!std::all_of(from, from + text.size(), isAscii)) {
        out += text.toUtf8();
        return;
    }
    out.resize(before + text.size());
    std::transform(from, from + text.size(), out.begin() + before,
                   [](char16_t character) { return static_cast<char>(character); });
}

// Nine digits always fit, and without a zero before them they are written as they stand.
bool isNormalNumber(const QString &text)
{
    const bool plain = std::all_of(text.begin(), text.end(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
    return plain && !text.isEmpty() && text.size() <= 9 && (text.size() == 1 || text[0] != QLatin1Char('0'));
}

class Writer {
public:
    Writer(const SettingsValueSource &value, int flows) : m_value(value), m_flows(flows)
    {
        m_text.reserve(8192);
        m_key.reserve(64);
    }
    void section(int channel);
    QByteArray m_text;

private:
    void flows(const FlowLine *lines, int channel);
    void line(string_view key, const char *name, Form form, int channel);
    void value(const char *name, Form form, int channel);

    const SettingsValueSource &m_value;
    int m_flows;
    QByteArray m_key; // of a flow; a member only to keep its memory
};

void Writer::value(const char *name, Form form, int channel)
{
    if (form == Form::Zero) {
        m_text += '0';
        return;
    }
    const QString stored = m_value(name, form == Form::Text, channel);
    if (form == Form::Number && !isNormalNumber(stored))
        m_text += QByteArray::number(settingsNumber(stored));
    else
        appendUtf8(m_text, stored);
}

void Writer::line(string_view key, const char *name, Form form, int channel)
{
    m_text.append(key.data(), static_cast<int>(key.size()));
    m_text += '=';
    value(name, form, channel);
    m_text += '\n';
}

void Writer::flows(const FlowLine *lines, int channel)
{
    for (int flow = 0; flow < m_flows; ++flow) {
        const QByteArray number = QByteArray::number(flow);
        for (const FlowLine *row = lines; row->stem; ++row) {
            m_key.resize(0);
            m_key.append(row->stem).append(number);
            line({m_key.constData(), static_cast<std::size_t>(m_key.size())}, m_key.constData(), row->form,
                 channel);
        }
    }
}

void Writer::section(int channel)
{
    m_text += "[channel" + QByteArray::number(channel) + "]\n";
    for (const WrittenLine &row : kWrittenLines) {
        if (row.form == Form::Flows)
            flows(row.flows, channel);
        else
            line(row.key, row.value ? row.value : row.key, row.form, channel);
    }
    m_text += '\n';
}

// The other way round, with the same reason; the text keeps its memory.
void assignUtf8(QString &out, string_view text)
{
    if (!std::all_of(text.begin(), text.end(),
                     [](char c) { return isAscii(static_cast<unsigned char>(c)); })) {
        out = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
        return;
    }
    out.resize(static_cast<int>(text.size()));
    std::transform(text.begin(), text.end(), out.begin(), [](char c) { return QLatin1Char(c); });
}

} // namespace

QByteArrayList settingsHeader()
{
    QByteArrayList pieces;
    for (const char *piece : kHeader)
        pieces.append(piece);
    return pieces;
}

QByteArray settingsSection(const SettingsValueSource &value, int channel, int flows)
{
    Writer writer(value, flows);
    writer.section(channel);
    return writer.m_text;
}

QByteArray writeSettingsFile(const SettingsValueSource &value, int channels, int flows)
{
    QByteArray text = settingsHeader().join();
    for (int channel = 0; channel < channels; ++channel)
        text += settingsSection(value, channel, flows);
    return text;
}

bool isSettingsSignature(const QByteArray &firstLine)
{
    return qstrnicmp(firstLine.constData(), kSignature, sizeof kSignature - 1) == 0;
}

// Not toUInt(): a number beyond 32 bits keeps its low bits.
quint32 settingsNumber(const QString &text)
{
    return static_cast<quint32>(text.toULongLong());
}

quint32 globalSettingsNumber(const QString &text)
{
    return static_cast<quint32>(text.toLongLong());
}

// Only one digit is ever read, at the place where a plain "[channel3]" has it: deliberate.
SettingsReader::Result SettingsReader::section(const QByteArray &line)
{
    const QString text = QString::fromUtf8(line);
    if (!text.contains(QLatin1String("[channel"), Qt::CaseInsensitive))
        return Result::Ignored;
    const int digit = text.size() > 8 ? text.at(8).unicode() - '0' : 0;
    m_current = digit >= 0 && digit <= 9 ? digit : 0;
    if (m_first < 0)
        m_first = m_current;
    m_stopped = m_current < m_first;
    return m_stopped ? Result::Stop : Result::Ignored;
}

// The key in hand is none that is stored. The interfaces are told apart by the end of their names.
void SettingsReader::leaveOut()
{
    constexpr string_view kInterface = "interface";
    const bool ends = m_key.size() >= kInterface.size() &&
                      m_key.compare(m_key.size() - kInterface.size(), kInterface.size(), kInterface) == 0;
    ++(ends ? m_leftOut.interfaces : m_leftOut.unknown);
}

SettingsReader::Result SettingsReader::feed(const QByteArray &line, SettingsValue *out)
{
    if (m_stopped)
        return Result::Stop;
    const string_view text(line.constData(),
                           strnlen(line.constData(), static_cast<std::size_t>(line.size())));
    if (text.empty() || text.front() == ';')
        return Result::Ignored;
    const size_t equals = text.find('=');
    if (equals == string_view::npos)
        return section(QByteArray(text.data(), static_cast<int>(text.size())));
    const string_view key = text.substr(0, equals);
    if (m_current < 0) {
        m_leftOut.beforeSections += key != kVersionKey; // every file has this one
        return Result::Ignored;
    }

    const SettingsKey meaning = meaningOf(key, m_key);
    if (meaning.kind == SettingsKey::Kind::None) {
        leaveOut();
        return Result::Ignored;
    }

    // A second "=" and what follows it are dropped: deliberate.
    const string_view value = text.substr(equals + 1, text.find('=', equals + 1) - equals - 1);
    out->key = meaning.name;
    out->isString = meaning.kind == SettingsKey::Kind::Text;
    assignUtf8(out->text, value);
    out->channel = m_current - m_first;
    out->global = meaning.kind == SettingsKey::Kind::Global;
    return Result::Value;
}
