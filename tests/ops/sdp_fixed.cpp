// SPDX-License-Identifier: MIT
//
// sdp_fixed FOLDER: the matrix of session descriptions that the dialog writes, each fixed, for the judges:
// every combination of boxes, clock and number of flows, named <kind>.<flows>.<boxes>.<clock>.sdp, with the
// packet times, formats and half-filled fields that make the written ones fail. Then a channel of each video
// format with each audio layout, and what other makers' texts do wrong.
#include "channel/videoformats.h"
#include "files/sdpsample.h"
#include "ops/sdpdescribe.h"
#include "ops/sdpfix.h"
#include "ops/sdptexts.h"
#include "ops/sentchannel.h"
#include "ops/streamrate.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

using namespace sdpsample;

namespace {

const char *const clockNames[] = {"none", "ptp", "mac"};

// What the dialog stores: packet times in microseconds; now and then no send interface yet, or a
// grandmaster typed as the Ethernet address it came from.
SdpInput written(int flows, int boxes, Clock clock)
{
    SdpInput in = input(flows, boxes, clock);
    in.value = [boxes](const char *name, bool) {
        const QString key = QString::fromLatin1(name);
        if (key.endsWith(QLatin1String("PacketLength")))
            return boxes % 2 ? QStringLiteral("125") : QStringLiteral("1000");
        return key == QLatin1String("TransmitInterface") && boxes % 4 == 3 ? QString() : value(key);
    };
    if (clock == Ptp && boxes % 3 == 1)
        in.gmAddress = QStringLiteral("AC:DE:48:23:45:67");
    if (clock == LocalMac && boxes % 3 == 1)
        in.gmAddress = QStringLiteral("acde48fffe234567");
    return in;
}

ops::SdpFixOptions optionsFor(int boxes, Clock clock)
{
    ops::SdpFixOptions options;
    options.facts.interlaced = boxes % 2;
    options.facts.channels = boxes % 3 ? 8 : 0;
    if (clock == NoClock)
        options.ptp = "AC-DE-48-FF-FE-23-45-67:127";
    return options;
}

bool writeText(const QDir &folder, const QString &name, const QByteArray &text)
{
    QFile file(folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QByteArray fixedText(const QByteArray &text, const ops::SdpFixOptions &options)
{
    return ops::sdpBytes(ops::fixSdp(ops::parseSdp(text, "x.sdp"), options).text);
}

// Each layout with the longest packet time that takes it, beside each format.
bool writeFormats(const QDir &folder)
{
    const struct {
        int channels, flows, microseconds;
    } layouts[] = {{1, 1, 1000}, {2, 8, 1000}, {8, 2, 1000}, {10, 1, 1000},
                   {16, 1, 333}, {16, 2, 250}, {64, 1, 125}};
    bool done = true;
    for (const VideoFormat &format : videoFormats()) {
        for (const auto &layout : layouts) {
            ops::SdpFixOptions options;
            options.facts = {ops::isInterlaced(format), layout.channels};
            const ops::Snapshot values =
                channelOf(sentStreams() << "0 format=" + QByteArray::number(format.id)
                                        << "0 channels=" + QByteArray::number(layout.channels)
                                        << "0 flows=" + QByteArray::number(layout.flows)
                                        << "0 ptime=" + QByteArray::number(layout.microseconds));
            const ops::SdpPair pair = ops::describeChannel(values, *ops::parsePlace("0"), {true, -1, 1});
            const QString name = QStringLiteral("format.%1.%2x%3.sdp")
                                     .arg(format.id, 8, 16, QLatin1Char('0'))
                                     .arg(layout.flows)
                                     .arg(layout.channels);
            done = writeText(folder, name, fixedText(pair.tx.toUtf8(), options)) && done;
        }
    }
    return done;
}

// Each a slip that other makers' texts have, in a text that is right otherwise. Not "segmented" alone:
// sdpoker asks for a parameter "interlaced" beside it, which no standard knows.
bool writeSlips(const QDir &folder)
{
    // clang-format off
    const struct { const char *right, *wrong; } slips[] = {
        {"239.1.1.3/64", "239.1.1.3"}, {"239.1.1.3/64", "239.1.1.3/300"}, {"a=ptime:1\n", "a=ptime:125\n"},
        {"a=ptime:1\n", "a=ptime:1000\n"}, {"a=ptime:1\n", "a=ptime:250\n"}, {"a=ptime:1\n", ""},
        {"m=video 20020", "m=data 20020"}, {"a=source-filter: incl", "a=source-filter:incl"},
        {"IP4 239.1.1.3 10.0.0.5", "IP4 239.1.1.9 10.0.0.5"}, {"exactframerate=25", "exactframerate=50"},
        {"exactframerate=25", "exactframerate=25.0"}, {"exactframerate=25", "exactframerate=50/2"},
        {" interlace;", " interlaced;"}, {" interlace;", " interlace=1;"}, {"SSN=ST2110-20:2017; ", ""}, {"TP=2110TPN; ", ""}, {"depth=10; colorimetry", "depth=10;colorimetry"},
        {"a=framerate:25", "a=framerate:50"}, {"a=framerate:25", "a=framerate:"},
        {"localmac=AC-DE-48-23-45-67", "localmac=AC:DE:48:23:45:67"},
        {"localmac=AC-DE-48-23-45-67", "localmac=acde.4823.4567"},
        {"2008:AC-DE-48-FF-FE-23-45-67:127", "2008:ACDE48FFFE234567:127"},
        {"2008:AC-DE-48-FF-FE-23-45-67:127", "2008:AC-DE-48-23-45-67:127"},
        {"ptp=IEEE1588-2008:AC-DE", "ptp=AC-DE"}, {"ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", "ptp=traceable"},
        {"45-67\na=mediaclk:direct=0\na=sendonly\n", "45-67\na=sendonly\n"}, {"v=0\n", ""}, {"v=0\n", "v=1\n"},
        {"s=Studio 1\n", ""}, {"s=Studio 1\n", "s= \n"}, {"t=0 0\n", ""}, {"t=0 0\n", "t=0 0\n\n"},
        {"t=0 0\n", "hello\nt=0 0\n"}, {"t=0 0\n", "t=0 0\nq=1\n"}, {"t=0 0\n", "t=0 0 \n"},
        {"o=- 1 1 IN IP4 10.0.0.5", ""}, {"s=Studio 1\nt=0 0\n", "t=0 0\ns=Studio 1\n"},
        {"v=0\n", "\xef\xbb\xbfv=0\n"}, {"L24/48000/8", "L24/48000"},
    };
    // clang-format on
    ops::SdpFixOptions options;
    options.packetTime = "1";
    options.senderType = "2110TPN";
    int number = 0;
    bool done = true;
    for (const auto &slip : slips) {
        const QByteArray text = sdptexts::edited(sdptexts::faultless(), slip.right, slip.wrong);
        const QString name = QStringLiteral("slip.%1.sdp").arg(++number, 2, 10, QLatin1Char('0'));
        done = writeText(folder, name, fixedText(text, options)) && done;
        done = writeText(folder, QLatin1String("lf.") + name,
                         fixedText(QByteArray(text).replace("\r\n", "\n"), options)) &&
               done;
    }
    return done;
}

// False when the file could not be written. A text without media has nothing that could be fixed.
bool writeFixed(const QDir &folder, const Kind &kind, int flows, int boxes, Clock clock)
{
    const QString name = QStringLiteral("%1.%2.%3.%4.sdp")
                             .arg(QLatin1String(kind.name))
                             .arg(flows)
                             .arg(boxes, 4, 2, QLatin1Char('0'))
                             .arg(QLatin1String(clockNames[clock]));
    const QByteArray text = kind.write(written(flows, boxes, clock)).toLatin1();
    const ops::SdpText given = ops::parseSdp(text, name.toLatin1());
    if (given.media.empty())
        return true;
    return writeText(folder, name, fixedText(text, optionsFor(boxes, clock)));
}

bool writeKind(const QDir &folder, const Kind &kind)
{
    bool done = true;
    for (int flows = kind.hasFlows ? 0 : 2; flows <= (kind.hasFlows ? 8 : 2); ++flows) {
        for (int boxes = 0; boxes < 16; ++boxes) {
            for (Clock clock : {NoClock, Ptp, LocalMac})
                done = writeFixed(folder, kind, flows, boxes, clock) && done;
        }
    }
    return done;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    QDir folder(QFile::decodeName(argv[1]));
    if (folder.exists() && !folder.removeRecursively())
        return 1;
    if (!folder.mkpath(QStringLiteral(".")))
        return 1;
    for (const Kind &kind : kinds()) {
        if (!writeKind(folder, kind)) {
            QTextStream(stderr) << "cannot write to " << folder.path() << '\n';
            return 1;
        }
    }
    return writeFormats(folder) && writeSlips(folder) ? 0 : 1;
}
