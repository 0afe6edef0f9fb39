// SPDX-License-Identifier: MIT
//
// What ST 2110-20 and -21 want to be said of uncompressed video, and what a receiver makes of it when
// scanning and rates do not fit together.
#include "ops/sdprules.h"

#include <cmath>
#include <set>

namespace ops {

namespace {

constexpr int kMostPixels = 32767;
constexpr double kFastestInterlaced = 30.01; // frames per second

const char *const kRequired[] = {"sampling", "width",       "height", "exactframerate",
                                 "depth",    "colorimetry", "PM",     "SSN"};

// clang-format off
// Parameters with a closed list of values, each between blanks.
const struct {
    const char *name;
    const char *values;
} kLists[] = {
    {"sampling",    " YCbCr-4:4:4 YCbCr-4:2:2 YCbCr-4:2:0 CLYCbCr-4:4:4 CLYCbCr-4:2:2 CLYCbCr-4:2:0"
                    " ICtCp-4:4:4 ICtCp-4:2:2 ICtCp-4:2:0 RGB XYZ KEY "},
    {"depth",       " 8 10 12 16 16f "},
    {"colorimetry", " BT601 BT709 BT2020 BT2100 ST2065-1 ST2065-3 XYZ UNSPECIFIED ALPHA "},
    {"PM",          " 2110GPM 2110BPM "},
    {"SSN",         " ST2110-20:2017 ST2110-20:2022 "},
    {"TP",          " 2110TPN 2110TPNL 2110TPW "},
    {"RANGE",       " NARROW FULLPROTECT FULL "},
};

// Sizes that exist interlaced only, as long as the frame rate is no higher than 30.
const int kInterlacedHeights[] = {486, 576};
// clang-format on

bool isVideo(const SdpStream &stream)
{
    return stream.kind == SdpKind::Video;
}

bool isVideoWithParameters(const SdpStream &stream)
{
    return isVideo(stream) && stream.fmtp.line;
}

void add(const SdpStream &stream, SdpReport &report, const QByteArray &reason, const QByteArray &remedy)
{
    report.add(*stream.text, stream.fmtp.line ? stream.fmtp.line->number : stream.line(), reason, remedy);
}

void word(const SdpStream &stream, SdpReport &report)
{
    if (stream.map && stream.media && stream.map->encoding == "raw" && stream.media->word != "video")
        report.add(*stream.text, stream.line(), "raw video announced as m=" + stream.media->word,
                   "write m=video");
}

void clockRate(const SdpStream &stream, SdpReport &report)
{
    const bool picture = isVideo(stream) || stream.kind == SdpKind::Anc;
    if (picture && stream.map && stream.map->clockRate != 90000)
        report.add(*stream.text, stream.mapLine->number,
                   "the clock runs at " + QByteArray::number(stream.map->clockRate) + " Hz", "write /90000");
}

void parametersForm(const SdpStream &stream, SdpReport &report)
{
    if (!stream.fmtp.line)
        return;
    std::set<QByteArray> names;
    for (const SdpParameter &parameter : stream.fmtp.parameters) {
        if (parameter.hasValue && parameter.value.isEmpty())
            add(stream, report, parameter.name + " has no value", "give it one, or leave it out");
        if (!names.insert(parameter.name).second && parameter.name != "DID_SDID")
            add(stream, report, parameter.name + " stands there twice", "leave one");
    }
    if (stream.media && !stream.media->formats.contains(stream.fmtp.payload))
        add(stream, report, "the parameters are for payload type " + stream.fmtp.payload,
            "write the payload type of the media line");
}

void requiredParameters(const SdpStream &stream, SdpReport &report)
{
    QByteArray missing;
    for (const char *name : kRequired) {
        if (isVideo(stream) && !stream.fmtp.find(name))
            missing += QByteArray(missing.isEmpty() ? "" : ", ") + name;
    }
    if (!missing.isEmpty())
        add(stream, report, "the format parameters lack " + missing, "ask the sender's maker for them");
}

void shaping(const SdpStream &stream, SdpReport &report)
{
    if (isVideoWithParameters(stream) && !stream.fmtp.find("TP"))
        add(stream, report, "the format parameters lack TP, the sender's type",
            "write TP=2110TPN, TP=2110TPNL or TP=2110TPW, as the sender is");
}

void listedValues(const SdpStream &stream, SdpReport &report)
{
    for (const auto &list : kLists) {
        const QByteArray value = isVideo(stream) ? stream.fmtp.value(list.name) : QByteArray();
        if (!value.isEmpty() && !QByteArray(list.values).contains(' ' + value + ' '))
            add(stream, report, QByteArray(list.name) + '=' + value + " is no value of the standard",
                "the values are:" + QByteArray(list.values).chopped(1));
    }
}

void sizes(const SdpStream &stream, SdpReport &report)
{
    for (const char *name : {"width", "height"}) {
        const QByteArray value = isVideo(stream) ? stream.fmtp.value(name) : QByteArray();
        if (!value.isEmpty() && parseNumber(value, kMostPixels).value_or(0) < 1)
            add(stream, report, QByteArray(name) + '=' + value + " is no number from 1 to 32767",
                "write the picture's size in pixels");
    }
}

std::optional<Rate> exactRate(const SdpStream &stream)
{
    return isVideo(stream) ? parseRate(stream.fmtp.value("exactframerate")) : std::nullopt;
}

void rateForm(const SdpStream &stream, SdpReport &report)
{
    const QByteArray value = isVideo(stream) ? stream.fmtp.value("exactframerate") : QByteArray();
    const auto rate = parseRate(value);
    if (!value.isEmpty() && (!rate || rate->text() != value))
        add(stream, report, "exactframerate=" + value + " is not written as it must be",
            "a whole number (50), or the smallest fraction (60000/1001)");
}

void interlaceForm(const SdpStream &stream, SdpReport &report)
{
    if (!isVideo(stream))
        return;
    for (const char *name : {"interlace", "segmented"}) {
        const SdpParameter *parameter = stream.fmtp.find(name);
        if (parameter && parameter->hasValue)
            add(stream, report, QByteArray(name) + " has a value", "write its name only");
    }
    if (stream.fmtp.find("interlaced"))
        add(stream, report, "\"interlaced\" is no parameter: receivers read progressive", "write interlace");
    if (stream.fmtp.find("segmented") && !stream.fmtp.find("interlace"))
        add(stream, report, "segmented without interlace", "write both, or neither");
}

void fieldRate(const SdpStream &stream, SdpReport &report)
{
    const auto rate = exactRate(stream);
    if (rate && stream.fmtp.find("interlace") && rate->value() > kFastestInterlaced)
        add(stream, report, "interlaced, and exactframerate=" + rate->text() + " is the rate of fields",
            "write the rate of frames, half of it");
}

void interlaceMissing(const SdpStream &stream, SdpReport &report)
{
    if (report.facts().interlaced && isVideoWithParameters(stream) && !stream.fmtp.find("interlace"))
        add(stream, report, "the signal is interlaced and the text does not say so: read as progressive",
            "add interlace and write the rate of frames");
}

void interlaceLikely(const SdpStream &stream, SdpReport &report)
{
    const auto rate = exactRate(stream);
    const auto height = parseNumber(stream.fmtp.value("height"), kMostPixels);
    for (const int interlaced : kInterlacedHeights) {
        if (rate && rate->value() < kFastestInterlaced && height == interlaced &&
            !stream.fmtp.find("interlace"))
            add(stream, report, "a picture of this height and rate is interlaced, the text says progressive",
                "add interlace, if the sender sends fields");
    }
}

// Nothing in the text tells 1080i with its field rate from 1080p.
void interlaceUnsaid(const SdpStream &stream, SdpReport &report)
{
    const auto rate = exactRate(stream);
    const bool ambiguous = rate && frameRateOfFields(*rate) && stream.fmtp.value("height") == "1080";
    if (ambiguous && !stream.fmtp.find("interlace") && !report.facts().interlaced)
        add(stream, report, "read as 1080p; a sender of 1080i that gives its field rate looks the same",
            "if the signal is interlaced, say so (--interlaced) and the missing parameter is reported");
}

void attributeForm(const SdpStream &stream, SdpReport &report)
{
    const SdpLine *line = stream.section->attribute("framerate");
    const QByteArray value = line ? line->trimmedValue() : QByteArray();
    if (line && (!parseRate(value) || value.contains('/')))
        report.add(*stream.text, line->number, "framerate \"" + value + "\" is no decimal number",
                   "write 59.94 or 50, or leave the line out: exactframerate says it exactly");
}

void attributeDiffers(const SdpStream &stream, SdpReport &report)
{
    const SdpLine *line = stream.section->attribute("framerate");
    const auto plain = line ? parseRate(line->trimmedValue()) : std::nullopt;
    const auto exact = exactRate(stream);
    if (plain && exact && std::abs(plain->value() - exact->value()) > 0.02)
        report.add(*stream.text, line->number, "framerate and exactframerate=" + exact->text() + " differ",
                   "leave the line out; receivers take the one or the other");
}

// clang-format off
const SdpRule kRules[] = {
    // name                severity           clause            text     stream
    {"video-word",         Severity::Error,   "ST 2110-20 7.1", nullptr, word},
    {"clock-rate",         Severity::Error,   "ST 2110-20 7.1", nullptr, clockRate},
    {"fmtp-form",          Severity::Error,   "ST 2110-20 7.1", nullptr, parametersForm},
    {"video-parameters",   Severity::Error,   "ST 2110-20 7.2", nullptr, requiredParameters},
    {"video-sender-type",  Severity::Error,   "ST 2110-21 8.1", nullptr, shaping},
    {"video-values",       Severity::Error,   "ST 2110-20 7",   nullptr, listedValues},
    {"video-size",         Severity::Error,   "ST 2110-20 7.2", nullptr, sizes},
    {"video-rate",         Severity::Error,   "ST 2110-20 7.2", nullptr, rateForm},
    {"interlace-form",     Severity::Error,   "ST 2110-20 7.3", nullptr, interlaceForm},
    {"interlace-rate",     Severity::Error,   "ST 2110-20 7.2", nullptr, fieldRate},
    {"interlace-missing",  Severity::Error,   "ST 2110-20 7.3", nullptr, interlaceMissing},
    {"interlace-likely",   Severity::Warning, "ST 2110-20 7.3", nullptr, interlaceLikely},
    {"interlace-unsaid",   Severity::Note,    "ST 2110-20 7.3", nullptr, interlaceUnsaid},
    {"framerate-form",     Severity::Warning, "RFC 4566 6",     nullptr, attributeForm},
    {"framerate-differs",  Severity::Error,   "RFC 4566 6",     nullptr, attributeDiffers},
};
// clang-format on

} // namespace

std::optional<Rate> frameRateOfFields(const Rate &rate)
{
    const bool fields = rate.text() == "50" || rate.text() == "60" || rate.text() == "60000/1001";
    return fields ? std::optional<Rate>(Rate{rate.numerator / 2, rate.denominator}) : std::nullopt;
}

TableView<SdpRule> sdpVideoRules()
{
    return {kRules, sizeof kRules / sizeof *kRules};
}

} // namespace ops
