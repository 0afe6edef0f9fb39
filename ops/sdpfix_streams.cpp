// SPDX-License-Identifier: MIT
//
// Fixing what is said of the streams: addresses, filters, formats, packet times, clocks.
#include "ops/ipv4.h"
#include "ops/sdpfixer.h"
#include "ops/sdprules.h"

#include <QRegularExpression>
#include <QString>

#include <algorithm>

namespace ops {

namespace {

constexpr double kFastestInterlaced = 30.01;
constexpr char kAncEdition[] = "ST2110-40:2018";
constexpr char kVideoEdition[] = "ST2110-20:2017";

// ------------------------------------------------------------------------------- words and addresses

void mediaWord(SdpFixer &fixer, SdpSection &section)
{
    const SdpStream stream = fixer.stream(section);
    const bool raw = stream.map && stream.map->encoding == "raw";
    if (stream.media && stream.media->word != "video" && (raw || stream.kind == SdpKind::Anc))
        fixer.replace(section.lines.front(),
                      "m=video" + section.lines.front().text.mid(2 + stream.media->word.size()));
}

void timeToLive(SdpFixer &fixer, SdpSection &section)
{
    for (SdpLine &line : section.lines) {
        const auto connection = line.type() == 'c' ? parseConnection(line) : std::nullopt;
        if (!connection || !connection->ipv4)
            continue;
        const QByteArray plain = "c=IN IP4 " + connection->address;
        if (!connection->isGroup())
            fixer.replace(line, plain);
        else if (!parseNumber(textBefore(connection->suffix, '/'), 255))
            fixer.replace(line, plain + '/' + QByteArray::number(fixer.options().timeToLive));
    }
}

void sessionTimeToLive(SdpFixer &fixer)
{
    timeToLive(fixer, fixer.session());
}

// A filter without a source filters nothing; one for another address holds for nothing.
void fixFilters(SdpFixer &fixer, SdpSection &section, const std::optional<SdpConnection> &connection)
{
    for (std::size_t at = section.lines.size(); at-- > 0;) {
        SdpLine &line = section.lines[at];
        const auto filter = line.isAttribute("source-filter") ? parseFilter(line) : std::nullopt;
        if (line.isAttribute("source-filter") && (!filter || filter->sources.isEmpty())) {
            fixer.remove(section, at);
            continue;
        }
        if (!filter || (filter->mode != "incl" && filter->mode != "excl"))
            continue;
        const bool keep = !connection || filter->destination == "*";
        const QByteArray destination = keep ? filter->destination : connection->address;
        fixer.replace(line, "a=source-filter: " + filter->mode + ' ' + filter->network + ' ' +
                                filter->family + ' ' + destination + ' ' + filter->sources.join(' '));
    }
}

void filters(SdpFixer &fixer, SdpSection &section)
{
    fixFilters(fixer, section, fixer.stream(section).connection);
}

void sessionFilters(SdpFixer &fixer)
{
    fixFilters(fixer, fixer.session(), std::nullopt);
}

// ------------------------------------------------------------------------------------------- formats

QByteArray fmtpText(const SdpFmtp &fmtp)
{
    QByteArray text = "a=fmtp:" + fmtp.payload;
    for (const SdpParameter &parameter : fmtp.parameters)
        text += ' ' + parameter.name + (parameter.hasValue ? '=' + parameter.value : QByteArray()) + ';';
    return text;
}

SdpParameter *parameter(SdpFmtp &fmtp, const char *name)
{
    for (SdpParameter &own : fmtp.parameters) {
        if (own.name == name)
            return &own;
    }
    return nullptr;
}

void addParameter(SdpFmtp &fmtp, const char *name, const QByteArray &value)
{
    if (!value.isEmpty() && !parameter(fmtp, name))
        fmtp.parameters.push_back({name, value, true});
}

void nameInterlace(SdpFmtp &fmtp, bool interlaced)
{
    for (SdpParameter &own : fmtp.parameters) {
        if (own.name == "interlaced" || own.name == "interlace" || own.name == "segmented")
            own = {own.name == "segmented" ? "segmented" : "interlace", QByteArray(), false};
    }
    const bool said = parameter(fmtp, "interlace");
    if (!said && (interlaced || parameter(fmtp, "segmented")))
        fmtp.parameters.push_back({"interlace", QByteArray(), false});
}

// "59.94" is meant as 60000/1001: no rate of television has two decimals.
Rate televisionRate(const Rate &rate)
{
    const Rate times1001 =
        parseRate(QByteArray::number(qRound64(rate.value() * 1.001) * 1000) + "/1001").value_or(rate);
    const bool decimal = rate.denominator > 1 && rate.denominator != 1001;
    return decimal && qAbs(times1001.value() - rate.value()) < 0.01 ? times1001 : rate;
}

void fixRate(SdpFmtp &fmtp)
{
    SdpParameter *exact = parameter(fmtp, "exactframerate");
    auto rate = exact ? parseRate(exact->value) : std::nullopt;
    if (!rate)
        return;
    rate = televisionRate(*rate);
    const auto frames = frameRateOfFields(*rate);
    if (parameter(fmtp, "interlace") && rate->value() > kFastestInterlaced && frames)
        rate = frames;
    exact->value = rate->text();
}

void videoFormat(SdpFixer &fixer, SdpSection &section)
{
    const SdpStream stream = fixer.stream(section);
    if (stream.kind != SdpKind::Video || !stream.fmtp.line)
        return;
    SdpFmtp fmtp = stream.fmtp;
    nameInterlace(fmtp, fixer.options().facts.interlaced);
    fixRate(fmtp);
    addParameter(fmtp, "SSN", kVideoEdition);
    addParameter(fmtp, "TP", fixer.options().senderType);
    fixer.replace(*editable(section, stream.fmtp.line), fmtpText(fmtp));
}

QByteArray decimals(const Rate &rate)
{
    const QByteArray text = QByteArray::number(rate.value(), 'f', 2);
    return text.endsWith(".00") ? text.chopped(3) : text;
}

// The attribute repeats the exact rate in decimals, or goes.
void frameRate(SdpFixer &fixer, SdpSection &section)
{
    SdpLine *line = editable(section, section.attribute("framerate"));
    if (!line)
        return;
    const auto exact = parseRate(fixer.stream(section).fmtp.value("exactframerate"));
    const auto plain = exact ? exact : parseRate(line->trimmedValue());
    if (plain)
        fixer.replace(*line, "a=framerate:" + decimals(*plain));
    else
        fixer.remove(section, static_cast<std::size_t>(line - section.lines.data()));
}

void packetTime(SdpFixer &fixer, SdpSection &section)
{
    SdpLine *line = editable(section, section.attribute("ptime"));
    const QByteArray &wanted = fixer.options().packetTime;
    if (fixer.stream(section).kind != SdpKind::Audio)
        return;
    if (!line && !wanted.isEmpty()) {
        fixer.append(section, "a=ptime:" + wanted);
    } else if (line) {
        const PacketTime *meant = packetTimeInMicroseconds(line->trimmedValue());
        const bool unset = !parseRate(line->trimmedValue()) && !wanted.isEmpty();
        if (meant || unset)
            fixer.replace(*line, "a=ptime:" + (meant ? QByteArray(meant->text) : wanted));
    }
}

void audioChannels(SdpFixer &fixer, SdpSection &section)
{
    const SdpStream stream = fixer.stream(section);
    // Without a number it is one, but there are readers that want to see it.
    const bool unsaid = stream.map && stream.map->channels == 0;
    const int channels =
        unsaid ? std::max(1, fixer.options().facts.channels) : fixer.options().facts.channels;
    if (stream.kind == SdpKind::Audio && stream.map && channels > 0)
        fixer.replace(*editable(section, stream.mapLine),
                      "a=rtpmap:" + QByteArray::number(stream.map->payload) + ' ' + stream.map->encoding +
                          '/' + QByteArray::number(stream.map->clockRate) + '/' +
                          QByteArray::number(channels));
}

// The rate of the picture that the ancillary data belongs to: of the only one, or of all when they agree.
QByteArray pictureRate(SdpFixer &fixer)
{
    QByteArray rate;
    for (const SdpStream &stream : streamsOf(fixer.text())) {
        const QByteArray own =
            stream.kind == SdpKind::Video ? stream.fmtp.value("exactframerate") : QByteArray();
        if (!own.isEmpty() && !rate.isEmpty() && own != rate)
            return QByteArray();
        rate = own.isEmpty() ? rate : own;
    }
    return rate;
}

void ancFormat(SdpFixer &fixer, SdpSection &section)
{
    const SdpStream stream = fixer.stream(section);
    if (stream.kind != SdpKind::Anc)
        return;
    SdpFmtp fmtp = stream.fmtp;
    if (!fmtp.line)
        fmtp.payload = QByteArray::number(stream.map->payload);
    addParameter(fmtp, "SSN", kAncEdition);
    addParameter(fmtp, "exactframerate", pictureRate(fixer));
    if (fmtp.line)
        fixer.replace(*editable(section, fmtp.line), fmtpText(fmtp));
    else
        fixer.append(section, fmtpText(fmtp));
}

// -------------------------------------------------------------------------------------------- clocks

QByteArray joined(const QString &digits)
{
    QByteArray plain = digits.toLatin1();
    for (const char separator : {'-', ':', '.'})
        plain.replace(separator, "");
    for (int at = plain.size() - 2; at > 0; at -= 2)
        plain.insert(at, '-');
    return plain;
}

QRegularExpressionMatch pairsAndRest(const QByteArray &text, int pairs)
{
    const QRegularExpression form(
        QStringLiteral("^((?:[0-9A-Fa-f]{2}[-:.]?){%1}[0-9A-Fa-f]{2})(:.+)?:?$").arg(pairs - 1));
    return form.match(QString::fromLatin1(text));
}

QByteArray fixedPtp(QByteArray rest)
{
    if (rest.startsWith("IEEE1588-2008:"))
        rest.remove(0, 14);
    if (rest == "traceable")
        return "ptp=IEEE1588-2008:traceable";
    for (const int pairs : {8, 6}) {
        const auto match = pairsAndRest(rest, pairs);
        QByteArray identity = joined(match.captured(1));
        if (pairs == 6)
            identity.insert(8, "-FF-FE");
        if (match.hasMatch())
            return "ptp=IEEE1588-2008:" + identity + match.captured(2).toLatin1();
    }
    return QByteArray();
}

// The identity of a clock made of an Ethernet address has "FF-FE" in its middle.
QByteArray fixedLocalMac(const QByteArray &address)
{
    for (const int pairs : {8, 6}) {
        const auto match = pairsAndRest(address, pairs);
        QByteArray own = joined(match.captured(1));
        if (pairs == 8 && own.mid(8, 6).toUpper() == "-FF-FE")
            own.remove(8, 6);
        if (match.hasMatch() && match.captured(2).isEmpty() && isHexPairs(own, 6))
            return "localmac=" + own;
    }
    return QByteArray();
}

QByteArray wantedClock(const SdpFixOptions &options)
{
    if (!options.ptp.isEmpty())
        return fixedClock("ptp=" + options.ptp);
    return options.localMac.isEmpty() ? QByteArray() : fixedClock("localmac=" + options.localMac);
}

// Copied from the session, which is not where receivers look.
void referenceClock(SdpFixer &fixer, SdpSection &section)
{
    for (SdpLine &line : section.lines) {
        if (line.isAttribute("ts-refclk"))
            fixer.replace(line, "a=ts-refclk:" + fixedClock(line.trimmedValue()));
    }
    if (section.attribute("ts-refclk"))
        return;
    const SdpLine *common = fixer.session().attribute("ts-refclk");
    const QByteArray clock = common ? fixedClock(common->trimmedValue()) : wantedClock(fixer.options());
    if (!clock.isEmpty())
        fixer.append(section, "a=ts-refclk:" + clock);
}

void mediaClock(SdpFixer &fixer, SdpSection &section)
{
    const SdpLine *common = fixer.session().attribute("mediaclk");
    if (section.attribute("ts-refclk") && !section.attribute("mediaclk"))
        fixer.append(section, common ? common->text : QByteArray("a=mediaclk:direct=0"));
}

// clang-format off
const SdpFixStep kSteps[] = {
    // name             whole              section
    {"media-word",      nullptr,           mediaWord},
    {"ttl",             sessionTimeToLive, timeToLive},
    {"filter",          sessionFilters,    filters},
    {"video-format",    nullptr,           videoFormat},
    {"framerate",       nullptr,           frameRate},
    {"ptime",           nullptr,           packetTime},
    {"audio-channels",  nullptr,           audioChannels},
    {"anc-format",      nullptr,           ancFormat},
    {"reference-clock", nullptr,           referenceClock},
    {"media-clock",     nullptr,           mediaClock},
};
// clang-format on

} // namespace

QByteArray fixedClock(const QByteArray &value)
{
    QByteArray fixed;
    if (value.startsWith("ptp="))
        fixed = fixedPtp(value.mid(4));
    else if (value.startsWith("localmac="))
        fixed = fixedLocalMac(value.mid(9));
    return fixed.isEmpty() ? value : fixed;
}

TableView<SdpFixStep> sdpStreamSteps()
{
    return {kSteps, sizeof kSteps / sizeof *kSteps};
}

} // namespace ops
