// SPDX-License-Identifier: MIT
//
// sdp_samples FOLDER: writes session descriptions into a folder for the judges, one file per text, named
// <kind>.<flows>.<boxes>.<clock>.sdp: every combination of boxes, clock and number of flows.
#include "files/sdpsample.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

using namespace sdpsample;

namespace {

const char *const clockNames[] = {"none", "ptp", "mac"};

bool writeSample(const QDir &folder, const Kind &kind, int flows, int boxes, Clock clock)
{
    const QString name = QStringLiteral("%1.%2.%3.%4.sdp")
                             .arg(QLatin1String(kind.name))
                             .arg(flows)
                             .arg(boxes, 4, 2, QLatin1Char('0'))
                             .arg(QLatin1String(clockNames[clock]));
    QFile file(folder.filePath(name));
    const QByteArray text = kind.write(input(flows, boxes, clock)).toLatin1();
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// A kind without flows is written once, whatever their number.
bool writeKind(const QDir &folder, const Kind &kind)
{
    bool done = true;
    for (int flows = kind.hasFlows ? 0 : 2; flows <= (kind.hasFlows ? 8 : 2); ++flows) {
        for (int boxes = 0; boxes < 16; ++boxes) {
            for (Clock clock : {NoClock, Ptp, LocalMac})
                done = writeSample(folder, kind, flows, boxes, clock) && done;
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
