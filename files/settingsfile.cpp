// SPDX-License-Identifier: MIT
#include "files/settingsfile.h"

#include <QVector>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

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

enum class Kind { Text, Number, TextFlow, NumberFlow, Global };

// The keys the reader accepts, in the order in which it tries them. The interface keys are missing: a
// file never changes which network interface a channel uses.
const struct {
    const char *key;
    Kind kind;
} kAcceptedKeys[] = {
    {"nmosoverride",               Kind::Global},
    {"ClockGrandMaster",           Kind::Text},
    {"SfpTopIPAddress",            Kind::Text},
    {"SfpBottomIPAddress",         Kind::Text},
    {"SfpSubnetMask",              Kind::Text},
    {"SfpGateway",                 Kind::Text},
    {"TransmitIp",                 Kind::Text},
    {"TransmitDestinationIp",      Kind::Text},
    {"TransmitSourcePort",         Kind::Number},
    {"TransmitRemotePort",         Kind::Number},
    {"TransmitFlags",              Kind::Number},
    {"TransmitAudIp",              Kind::TextFlow},
    {"TransmitAudDestinationIp",   Kind::TextFlow},
    {"TransmitAudSourcePort",      Kind::NumberFlow},
    {"TransmitAudRemotePort",      Kind::NumberFlow},
    {"TransmitAudFlags",           Kind::NumberFlow},
    {"TransmitAudPacketLength",    Kind::Number},
    {"TransmitAudChannels",        Kind::Number},
    {"TransmitAudTotalChannels",   Kind::Number},
    {"TransmitAncIp",              Kind::Text},
    {"TransmitAncDestinationIp",   Kind::Text},
    {"TransmitAncSourcePort",      Kind::Number},
    {"TransmitAncRemotePort",      Kind::Number},
    {"TransmitAncFlags",           Kind::Number},
    {"VideoType",                  Kind::Number},
    {"ClockType",                  Kind::Number},
    {"ClockSettings",              Kind::Number},
    {"ClockDomain",                Kind::Number},
    {"J2KTransmitUllMode",         Kind::Number},
    {"J2KTransmitBitDepth",        Kind::Number},
    {"J2KTransmitChromaSubSample", Kind::Number},
    {"J2KTransmitDataRate",        Kind::Number},
    {"J2KTransmitStreamType",      Kind::Number},
    {"J2KTransmitPmtPid",          Kind::Number},
    {"J2KTransmitVideoPid",        Kind::Number},
    {"J2KTransmitPcrPid",          Kind::Number},
    {"J2KTransmitAudioPid",        Kind::Number},
    {"J2KReceiveSelectMode",       Kind::Number},
    {"J2kReceiveProgramNumber",    Kind::Number},
    {"J2kReceiveProgramPid",       Kind::Number},
    {"J2kReceiveAudioNumber",      Kind::Number},
    {"ReceiveSourceIp",            Kind::Text},
    {"ReceiveDestinationIp",       Kind::Text},
    {"ReceiveSourcePort",          Kind::Number},
    {"ReceiveDestinationPort",     Kind::Number},
    {"ReceiveFlags",               Kind::Number},
    {"ReceiveAudSourceIp",         Kind::TextFlow},
    {"ReceiveAudDestinationIp",    Kind::TextFlow},
    {"ReceiveAudSourcePort",       Kind::NumberFlow},
    {"ReceiveAudDestinationPort",  Kind::NumberFlow},
    {"ReceiveAudFlags",            Kind::NumberFlow},
    {"ReceiveAudPacketLength",     Kind::Number},
    {"ReceiveAudChannels",         Kind::Number},
    {"ReceiveAudTotalChannels",    Kind::Number},
    {"ReceiveAncSourceIp",         Kind::Text},
    {"ReceiveAncDestinationIp",    Kind::Text},
    {"ReceiveAncSourcePort",       Kind::Number},
    {"ReceiveAncDestinationPort",  Kind::Number},
    {"ReceiveAncFlags",            Kind::Number},
};
// clang-format on

class Writer {
public:
    Writer(const SettingsValueSource &value, int flows) : m_value(value), m_flows(flows) {}
    void section(int channel);
    QByteArray m_text;

private:
    void flows(const FlowLine *lines, int channel);
    void line(const QByteArray &key, const char *name, Form form, int channel);
    QByteArray text(const char *name, Form form, int channel) const;

    const SettingsValueSource &m_value;
    int m_flows;
};

QByteArray Writer::text(const char *name, Form form, int channel) const
{
    if (form == Form::Zero)
        return QByteArrayLiteral("0");
    const QString stored = m_value(name, form == Form::Text, channel);
    return form == Form::Number ? QByteArray::number(settingsNumber(stored)) : stored.toUtf8();
}

void Writer::line(const QByteArray &key, const char *name, Form form, int channel)
{
    m_text += key + '=' + text(name, form, channel) + '\n';
}

void Writer::flows(const FlowLine *lines, int channel)
{
    for (int flow = 0; flow < m_flows; ++flow) {
        for (const FlowLine *row = lines; row->stem; ++row) {
            const QByteArray key = row->stem + QByteArray::number(flow);
            line(key, key.constData(), row->form, channel);
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
            line(QByteArray(row.key), row.value ? row.value : row.key, row.form, channel);
    }
    m_text += '\n';
}

// Keys are ASCII; other letters have no case here.
char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

void lowerInto(std::string &out, string_view text)
{
    out.resize(text.size());
    std::transform(text.begin(), text.end(), out.begin(), lower);
}

struct AcceptedKey {
    std::string lowered;
    QByteArray name;
    Kind kind;

    bool isFlow() const { return kind == Kind::TextFlow || kind == Kind::NumberFlow; }
    bool matches(const std::string &key) const
    {
        return isFlow() ? key.find(lowered) != std::string::npos : key == lowered;
    }
};

const std::vector<AcceptedKey> &accepted()
{
    static const std::vector<AcceptedKey> keys = [] {
        std::vector<AcceptedKey> rows;
        for (const auto &row : kAcceptedKeys) {
            rows.push_back({std::string(), QByteArray(row.key), row.kind});
            lowerInto(rows.back().lowered, row.key);
        }
        return rows;
    }();
    return keys;
}

// The last character of a key, which may be several bytes.
QByteArray lastCharacter(string_view key)
{
    if (static_cast<unsigned char>(key.back()) < 0x80)
        return QByteArray(1, key.back());
    const auto characters = QString::fromUtf8(key.data(), static_cast<int>(key.size())).toUcs4();
    const uint last = characters.back();
    return QString::fromUcs4(&last, 1).toUtf8();
}

// A stem alone means flow 0; else the flow is the key's last character, whatever it is: deliberate.
QByteArray flowKey(const AcceptedKey &row, string_view key)
{
    if (key.size() == row.lowered.size())
        return row.name + '0';
    return row.name + lastCharacter(key);
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
    constexpr string_view interface = "interface";
    const bool ends = m_key.size() >= interface.size() &&
                      m_key.compare(m_key.size() - interface.size(), interface.size(), interface) == 0;
    ++(ends ? m_leftOut.interfaces : m_leftOut.unknown);
}

SettingsReader::Result SettingsReader::feed(const QByteArray &line, SettingsValue *out)
{
    if (m_stopped)
        return Result::Stop;
    const string_view text(line.constData(), strnlen(line.constData(), static_cast<size_t>(line.size())));
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

    lowerInto(m_key, key);
    const auto &keys = accepted();
    const auto row = std::find_if(keys.begin(), keys.end(),
                                  [this](const AcceptedKey &candidate) { return candidate.matches(m_key); });
    if (row == keys.end()) {
        leaveOut();
        return Result::Ignored;
    }

    // A second "=" and what follows it are dropped: deliberate.
    const string_view value = text.substr(equals + 1, text.find('=', equals + 1) - equals - 1);
    out->key = row->isFlow() ? flowKey(*row, key) : row->name;
    out->isString = row->kind == Kind::Text || row->kind == Kind::TextFlow;
    out->text = QString::fromUtf8(value.data(), static_cast<int>(value.size()));
    out->channel = m_current - m_first;
    out->global = row->kind == Kind::Global;
    return Result::Value;
}
