// SPDX-License-Identifier: MIT
#include "ops/inputfile.h"

#include <QFile>
#include <QSaveFile>

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ops {

namespace {

constexpr int kPiece = 1 << 16;

Failure cannotRead(const QByteArray &path, const char *why)
{
    return wrong("cannot read " + path + ": " + why);
}

Outcome<QByteArray> readAll(int descriptor, const QByteArray &path)
{
    QByteArray content;
    char piece[kPiece];
    for (;;) {
        const ssize_t got = read(descriptor, piece, sizeof piece);
        if (got == 0)
            return content;
        if (got < 0 && errno != EINTR)
            return cannotRead(path, strerror(errno));
        if (got > 0)
            content.append(piece, static_cast<int>(got));
        if (content.size() > kLargestInput)
            return cannotRead(path, "larger than 256 MiB");
    }
}

// Opened without waiting, so that a FIFO is found out instead of holding us.
Outcome<QByteArray> readRegular(int descriptor, const QByteArray &path)
{
    struct stat about {};
    if (fstat(descriptor, &about) != 0)
        return cannotRead(path, strerror(errno));
    if (!S_ISREG(about.st_mode))
        return cannotRead(path, S_ISDIR(about.st_mode) ? "it is a directory" : "it is no regular file");
    if (about.st_size > kLargestInput)
        return cannotRead(path, "larger than 256 MiB");
    return readAll(descriptor, path);
}

} // namespace

Outcome<QByteArray> readInput(const QByteArray &path)
{
    if (path == "-")
        return readAll(STDIN_FILENO, "standard input");
    const int descriptor = open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return cannotRead(path, strerror(errno));
    Outcome<QByteArray> content = readRegular(descriptor, path);
    close(descriptor);
    return content;
}

Outcome<Done> writeOutput(const QByteArray &path, const QByteArray &content)
{
    if (path == "-") {
        QFile out;
        const bool open = out.open(stdout, QIODevice::WriteOnly);
        if (open && out.write(content) == content.size() && out.flush())
            return Done();
        return refused("the output could not be written");
    }
    QSaveFile file(QFile::decodeName(path));
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit())
        return Done();
    return refused("cannot write " + path + ": " + file.errorString().toUtf8());
}

} // namespace ops
