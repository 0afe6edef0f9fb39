// SPDX-License-Identifier: MIT
#include "ops/valuewords.h"

#include "channel/channelkeys.h"
#include "channel/channelstore.h"
#include "channel/valuenames.h"
#include "channel/videoformats.h"
#include "ops/ipv4.h"
#include "ops/suggest.h"

#include <algorithm>
#include <cctype>

namespace ops {

namespace {

struct Word {
    const char *word;
    quint32 number;
};

// clang-format off
const Word kTypes[] = {
    {"SMPTE-2110", ChannelType::Smpte2110},
};
const Word kClocks[] = {
    {"internal",   ClockSource::Internal},
    {"hw-ptp",     ClockSource::HardwarePtp},
    {"sw-ptp",     ClockSource::SoftwarePtp},
    {"free-run",   ClockSource::FreeRun},
};
const Word kFlowModes[] = {
    {"single",     0},
    {"flows",      1},
};
const Word kSwitches[] = {
    {"off",        0},
    {"on",         1},
};

// In the order in which they are printed. "port" is how people say "dst-port".
const struct { const char *word; Field field; } kUses[] = {
    {"src",      Field::SourceAddress},
    {"src-port", Field::SourcePort},
    {"dst",      Field::DestinationAddress},
    {"dst-port", Field::DestinationPort},
    {"if",       Field::Interface},
    {"port",     Field::DestinationPort},
};

// Largest number of a kind, and what to say about the range.
const struct { Kind kind; quint32 least, most; const char *says; } kRanges[] = {
    {Kind::Port,         0, 65535,        "a port is a number from 0 to 65535"},
    {Kind::Number,       0, 0xffffffff,   "a number from 0 to 4294967295 is needed"},
    {Kind::AudioCount,   0, 64,           "a flow has 0 to 64 audio channels"},
    {Kind::AudioTotal,   0, 512,          "a number of audio channels is from 0 to 512"},
    {Kind::PacketTime,   1, 4000,         "a packet time is 1 to 4000 microseconds, such as 125 or 1000"},
    {Kind::Domain,       0, kHighestPtpDomain,          "a PTP domain is a number from 0 to 127"},
    {Kind::ChannelCount, 0, kMaxChannels, "a server has 0 to 65536 channels"},
    {Kind::Type,         0, 0xffffffff,   "a channel type is SMPTE-2110 or a number"},
    {Kind::Format,       0, 0xffffffff,   "a video format is one of the dialog's, such as 1080p50 or 3840x2160p59.94"},
    {Kind::Clock,        0, 0xffffffff,   "a clock is internal, hw-ptp, sw-ptp, free-run or a number"},
    {Kind::FlowMode,     0, 1,            "a flow mode is single or flows"},
    {Kind::Switch,       0, 1,            "a switch is on or off"},
};
// clang-format on

TableView<Word> plainWords(Kind kind)
{
    switch (kind) {
    case Kind::Type:
        return {kTypes, std::size(kTypes)};
    case Kind::Clock:
        return {kClocks, std::size(kClocks)};
    case Kind::FlowMode:
        return {kFlowModes, std::size(kFlowModes)};
    case Kind::Switch:
        return {kSwitches, std::size(kSwitches)};
    case Kind::Address:
    case Kind::Interface:
    case Kind::GrandMaster:
    case Kind::Text:
    case Kind::Port:
    case Kind::Use:
    case Kind::Number:
    case Kind::AudioCount:
    case Kind::AudioTotal:
    case Kind::PacketTime:
    case Kind::Format:
    case Kind::Domain:
    case Kind::ChannelCount:
        break;
    }
    return {nullptr, 0};
}

Outcome<quint32> plainNumber(Kind kind, const QByteArray &words)
{
    bool ok = false;
    const bool hex = words.startsWith("0x") || words.startsWith("0X");
    const auto isDigit = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; };
    const bool digits = std::all_of(words.begin(), words.end(), isDigit); // no sign and no blanks
    const quint64 number = digits ? words.toULongLong(&ok, hex ? 16 : 10) : 0;
    for (const auto &range : kRanges) {
        if (range.kind != kind)
            continue;
        if (ok && number >= range.least && number <= range.most)
            return static_cast<quint32>(number);
        return wrong('"' + words + "\": " + range.says + didYouMean(words, wordsOf(kind)));
    }
    return wrong('"' + words + "\" is no number");
}

QByteArray useInWords(quint32 flags)
{
    QByteArrayList words;
    quint32 known = 0;
    for (const auto &use : kUses) {
        const quint32 bit = flagBit(use.field);
        if ((flags & bit) && !(known & bit))
            words.append(use.word);
        known |= bit;
    }
    if (flags & ~known)
        words.append("0x" + QByteArray::number(flags & ~known, 16));
    return words.isEmpty() ? QByteArrayLiteral("none") : words.join(',');
}

Outcome<quint32> useBit(const QByteArray &word)
{
    for (const auto &use : kUses) {
        if (word == use.word)
            return flagBit(use.field);
    }
    if (!word.isEmpty() && word[0] >= '0' && word[0] <= '9')
        return plainNumber(Kind::Number, word);
    return wrong("use \"" + word + "\": src, src-port, dst, dst-port, if, all or none" +
                 didYouMean(word, wordsOf(Kind::Use)));
}

Outcome<Value> useFromWords(const QByteArray &words)
{
    quint32 all = 0;
    for (const FlagBit &row : flagBits())
        all |= row.bit;
    if (words == "none" || words == "all")
        return Value::ofNumber(words == "all" ? all : 0);
    quint32 flags = 0;
    for (const QByteArray &word : words.split(',')) {
        const Outcome<quint32> bit = useBit(word.trimmed());
        if (!bit)
            return bit.failure();
        flags |= *bit;
    }
    return Value::ofNumber(flags);
}

// "1080P 50fps (1920)" is also "1920x1080p50", which needs no quotes in a shell.
QByteArray shortFormat(const VideoFormat &format)
{
    const QByteArray text(format.text);
    const int end = text.indexOf("fps");
    const QByteArray rate = text.mid(text.lastIndexOf(' ', end) + 1, end - text.lastIndexOf(' ', end) - 1);
    const bool interlaced = format.id >> 28 == 1;
    return QByteArray(format.width) + 'x' + format.height + (interlaced ? 'i' : 'p') + rate;
}

Outcome<Value> formatFromWords(const QByteArray &words)
{
    for (const VideoFormat &format : videoFormats()) {
        const QByteArray brief = shortFormat(format);
        const bool hd =
            qstrcmp(format.width, "1920") == 0 && brief.mid(5).compare(words, Qt::CaseInsensitive) == 0;
        if (hd || brief.compare(words, Qt::CaseInsensitive) == 0 ||
            words.compare(format.text, Qt::CaseInsensitive) == 0)
            return Value::ofNumber(format.id);
    }
    const Outcome<quint32> number = plainNumber(Kind::Format, words);
    if (!number)
        return number.failure();
    return Value::ofNumber(*number);
}

// An EUI-64 or a MAC address, its bytes joined or separated by '-', ':' or '.'.
Outcome<Value> grandMasterFromWords(const QByteArray &words)
{
    int digits = 0;
    for (const char c : words) {
        if (std::isxdigit(static_cast<unsigned char>(c)))
            ++digits;
        else if (c != '-' && c != ':' && c != '.')
            return wrong('"' + words + "\" is neither a clock identity nor a MAC address");
    }
    if (!words.isEmpty() && digits != 12 && digits != 16)
        return wrong('"' + words + "\": a clock identity has 16 hexadecimal digits, a MAC address 12");
    return Value::ofText(words);
}

Outcome<Value> addressFromWords(const QByteArray &words)
{
    if (words.isEmpty())
        return Value::ofText(words);
    const Outcome<quint32> bits = addressBits(words);
    if (!bits)
        return bits.failure();
    return Value::ofText(words);
}

Outcome<Value> textFromWords(const QByteArray &words)
{
    if (words.contains('\0'))
        return wrong("a text cannot hold a zero byte");
    return Value::ofText(words);
}

Outcome<Value> numberFromWords(Kind kind, const QByteArray &words)
{
    for (const Word &row : plainWords(kind)) {
        if (words.compare(row.word, Qt::CaseInsensitive) == 0)
            return Value::ofNumber(row.number);
    }
    const Outcome<quint32> number = plainNumber(kind, words);
    if (!number)
        return number.failure();
    return Value::ofNumber(*number);
}

} // namespace

bool isTextKind(Kind kind)
{
    return kind == Kind::Address || kind == Kind::Interface || kind == Kind::GrandMaster ||
           kind == Kind::Text;
}

QByteArray inWords(Kind kind, const Value &value)
{
    if (value.isText)
        return isTextKind(kind) ? value.text : '"' + value.text + '"';
    for (const Word &row : plainWords(kind)) {
        if (row.number == value.number)
            return row.word;
    }
    if (kind == Kind::Use)
        return useInWords(value.number);
    const VideoFormat *format = kind == Kind::Format ? findVideoFormat(value.number) : nullptr;
    return format ? QByteArray(format->text) : QByteArray::number(value.number);
}

Outcome<Value> fromWords(Kind kind, const QByteArray &words)
{
    switch (kind) {
    case Kind::Address:
    case Kind::Interface:
        return addressFromWords(words);
    case Kind::GrandMaster:
        return grandMasterFromWords(words);
    case Kind::Text:
        return textFromWords(words);
    case Kind::Use:
        return useFromWords(words);
    case Kind::Format:
        return formatFromWords(words);
    case Kind::Port:
    case Kind::Number:
    case Kind::AudioCount:
    case Kind::AudioTotal:
    case Kind::PacketTime:
    case Kind::Type:
    case Kind::Clock:
    case Kind::Domain:
    case Kind::FlowMode:
    case Kind::Switch:
    case Kind::ChannelCount:
        break;
    }
    return numberFromWords(kind, words);
}

QByteArrayList wordsOf(Kind kind)
{
    QByteArrayList words;
    for (const Word &row : plainWords(kind))
        words.append(row.word);
    if (kind == Kind::Use) {
        for (const auto &use : kUses)
            words.append(use.word);
        words += {"all", "none"};
    }
    if (kind == Kind::Format) {
        for (const VideoFormat &format : videoFormats())
            words.append(shortFormat(format));
    }
    if (kind == Kind::PacketTime)
        words += {"125", "1000"};
    return words;
}

Outcome<quint32> addressBits(const QByteArray &address)
{
    if (const auto bits = parseIpv4(address))
        return *bits;
    return wrong('"' + address + "\" is no IPv4 address: four numbers from 0 to 255 with dots between");
}

} // namespace ops
