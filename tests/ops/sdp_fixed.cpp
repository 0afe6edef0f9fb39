// SPDX-License-Identifier: MIT
//
// sdp_fixed FOLDER: the matrix of session descriptions that the dialog writes, each fixed, for the judges:
// every combination of boxes, clock and number of flows, named <kind>.<flows>.<boxes>.<clock>.sdp, with the
// packet times, formats and half-filled fields that make the written ones fail.
#include "files/sdpsample.h"
#include "ops/sdpfix.h"

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
    const QByteArray fixed = ops::sdpBytes(ops::fixSdp(given, optionsFor(boxes, clock)).text);
    QFile file(folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(fixed) == fixed.size();
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
    return 0;
}
