// SPDX-License-Identifier: MIT
//
// corvel_namelist FILE, run at build time: writes the rows of a C++ table: key path ("#" for the number of a
// channel), value name, and whether it is a text. So that a program without Qt knows the names that stand in
// channel/.
#include "ops/vocabulary.h"

#include <QFile>

int main(int argc, char **argv)
{
    QFile file(QString::fromLocal8Bit(argc == 2 ? argv[1] : ""));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 1;
    const QByteArray anyChannel = ops::channelPath(0).replace('0', '#');
    for (const ops::KnownName &known : ops::knownNames()) {
        QByteArray path = known.path.isEmpty() ? anyChannel : known.path;
        path.replace("\\", "\\\\");
        file.write("{\"" + path + "\", \"" + known.name + "\", " +
                   (ops::isTextKind(known.kind) ? "true" : "false") + "},\n");
    }
    return file.flush() ? 0 : 1;
}
