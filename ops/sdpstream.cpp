// SPDX-License-Identifier: MIT
#include "ops/sdpstream.h"

#include "ops/ipv4.h"

#include <algorithm>
#include <numeric>

namespace ops {

namespace {

std::optional<qint64> wholeNumber(const QByteArray &text)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (text.isEmpty() || text.size() > 10 || !std::all_of(text.begin(), text.end(), isDigit))
        return std::nullopt;
    return text.toLongLong();
}

// "29.97": the fraction has at most six digits.
std::optional<Rate> decimalRate(const QByteArray &whole, const QByteArray &fraction)
{
    const auto before = wholeNumber(whole), behind = wholeNumber(fraction);
    if (!before || !behind || fraction.size() > 6)
        return std::nullopt;
    qint64 scale = 1;
    for (int digit = 0; digit < fraction.size(); ++digit)
        scale *= 10;
    return Rate{*before * scale + *behind, scale};
}

std::optional<Rate> anyRate(const QByteArray &text)
{
    const int dot = text.indexOf('.');
    if (dot >= 0)
        return decimalRate(text.left(dot), text.mid(dot + 1));
    const int slash = text.indexOf('/');
    const auto numerator = wholeNumber(slash < 0 ? text : text.left(slash));
    const auto denominator = slash < 0 ? std::optional<qint64>(1) : wholeNumber(text.mid(slash + 1));
    if (!numerator || !denominator)
        return std::nullopt;
    return Rate{*numerator, *denominator};
}

QList<QByteArray> words(const QByteArray &text)
{
    QList<QByteArray> list = text.split(' ');
    list.removeAll(QByteArray());
    return list;
}

// clang-format off
const struct {
    const char *name;
    SdpDirection direction;
} kDirections[] = {
    {"sendrecv", Both}, {"sendonly", Sends}, {"recvonly", Receives}, {"inactive", Inactive},
};
// clang-format on

std::optional<SdpDirection> directionIn(const SdpSection &section)
{
    for (const auto &row : kDirections) {
        if (section.attribute(row.name))
            return row.direction;
    }
    return std::nullopt;
}

SdpKind kindOf(const SdpStream &stream)
{
    const QByteArray encoding = stream.map ? stream.map->encoding.toLower() : QByteArray();
    const QByteArray word = stream.media ? stream.media->word : QByteArray();
    if (encoding == "smpte291")
        return SdpKind::Anc;
    if (word == "audio")
        return SdpKind::Audio;
    if (word == "video" && (encoding == "raw" || encoding.isEmpty()))
        return SdpKind::Video;
    return SdpKind::Other;
}

std::vector<SdpFilter> filtersIn(const SdpSection &section)
{
    std::vector<SdpFilter> filters;
    for (const SdpLine *line : section.attributes("source-filter")) {
        if (auto filter = parseFilter(*line))
            filters.push_back(*filter);
    }
    return filters;
}

} // namespace

QByteArray Rate::text() const
{
    const QByteArray whole = QByteArray::number(numerator);
    return denominator == 1 ? whole : whole + '/' + QByteArray::number(denominator);
}

std::optional<Rate> parseRate(const QByteArray &text)
{
    auto rate = anyRate(text);
    if (!rate || rate->numerator <= 0 || rate->denominator <= 0)
        return std::nullopt;
    const qint64 common = std::gcd(rate->numerator, rate->denominator);
    return Rate{rate->numerator / common, rate->denominator / common};
}

std::optional<int> parseNumber(const QByteArray &text, int most)
{
    const auto number = wholeNumber(text);
    if (!number || *number > most)
        return std::nullopt;
    return static_cast<int>(*number);
}

std::optional<SdpMediaLine> parseMediaLine(const SdpLine &line)
{
    const QList<QByteArray> parts = line.value().split(' ');
    if (parts.size() < 4 || parts.contains(QByteArray()))
        return std::nullopt;
    const auto port = parseNumber(textBefore(parts[1], '/'), 65535);
    if (!port)
        return std::nullopt;
    return SdpMediaLine{parts[0], *port, parts[2], parts.mid(3)};
}

bool SdpConnection::isGroup() const
{
    return ipv4 && isMulticast(*ipv4);
}

std::optional<SdpConnection> parseConnection(const SdpLine &line)
{
    const QList<QByteArray> parts = line.value().split(' ');
    if (parts.size() != 3 || parts[0] != "IN" || (parts[1] != "IP4" && parts[1] != "IP6") ||
        parts[2].isEmpty())
        return std::nullopt;
    SdpConnection connection{textBefore(parts[2], '/'), std::nullopt, textBehind(parts[2], '/')};
    if (parts[1] == "IP4")
        connection.ipv4 = parseIpv4(connection.address);
    return connection;
}

std::optional<SdpRtpMap> parseRtpMap(const SdpLine &line)
{
    const QList<QByteArray> parts = words(line.attributeValue());
    if (parts.size() != 2)
        return std::nullopt;
    const QList<QByteArray> form = parts[1].split('/');
    const auto payload = parseNumber(parts[0], 127);
    const auto clock = parseNumber(form.value(1), 1000000000);
    const auto channels = form.size() > 2 ? parseNumber(form[2], 1024) : std::optional<int>(0);
    if (!payload || !clock || !channels || form[0].isEmpty() || form.size() > 3)
        return std::nullopt;
    return SdpRtpMap{*payload, form[0], *clock, *channels};
}

std::optional<SdpFilter> parseFilter(const SdpLine &line)
{
    const QList<QByteArray> parts = words(line.attributeValue());
    if (parts.size() < 4)
        return std::nullopt;
    return SdpFilter{&line, parts[0], parts[1], parts[2], parts[3], parts.mid(4)};
}

const SdpParameter *SdpFmtp::find(const char *name) const
{
    for (const SdpParameter &parameter : parameters) {
        if (parameter.name == name)
            return &parameter;
    }
    return nullptr;
}

QByteArray SdpFmtp::value(const char *name) const
{
    const SdpParameter *parameter = find(name);
    return parameter ? parameter->value : QByteArray();
}

SdpFmtp parseFmtp(const SdpLine &line)
{
    const QByteArray all = line.attributeValue();
    SdpFmtp fmtp{&line, textBefore(all, ' '), {}};
    for (const QByteArray &piece : textBehind(all, ' ').split(';')) {
        const QByteArray part = piece.trimmed();
        if (!part.isEmpty())
            fmtp.parameters.push_back({textBefore(part, '='), textBehind(part, '='), part.contains('=')});
    }
    return fmtp;
}

QByteArray SdpStream::destination() const
{
    if (!connection || !media)
        return QByteArray();
    return connection->address + ':' + QByteArray::number(media->port);
}

QByteArray SdpStream::source() const
{
    for (const SdpFilter &filter : filters) {
        if (filter.mode == "incl" && !filter.sources.isEmpty())
            return filter.sources.front();
    }
    return QByteArray();
}

SdpStream streamOf(const SdpText &text, const SdpSection &section)
{
    SdpStream stream{};
    stream.text = &text;
    stream.section = &section;
    stream.media = parseMediaLine(section.lines.front());
    stream.connectionLine = section.find('c');
    if (!stream.connectionLine)
        stream.connectionLine = text.session.find('c');
    if (stream.connectionLine)
        stream.connection = parseConnection(*stream.connectionLine);
    stream.mapLine = section.attribute("rtpmap");
    if (stream.mapLine)
        stream.map = parseRtpMap(*stream.mapLine);
    if (const SdpLine *line = section.attribute("fmtp"))
        stream.fmtp = parseFmtp(*line);
    stream.filters = filtersIn(section.attribute("source-filter") ? section : text.session);
    const auto own = directionIn(section);
    stream.direction = own ? *own : directionIn(text.session).value_or(Both);
    stream.kind = kindOf(stream);
    return stream;
}

std::vector<SdpStream> streamsOf(const SdpText &text)
{
    std::vector<SdpStream> streams;
    for (const SdpSection &section : text.media)
        streams.push_back(streamOf(text, section));
    return streams;
}

} // namespace ops
