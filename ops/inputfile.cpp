// SPDX-License-Identifier: MIT
#include "ops/inputfile.h"

#include <QFile>
#include <QSaveFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ops {

namespace {

constexpr int kPiece = 1 << 16;
constexpr int kWriterMs = 500; // for somebody who waits to write, until he has his turn
constexpr int kForEver = -1;

Failure cannotRead(const QByteArray &path, const char *why)
{
    return wrong("cannot read " + path + ": " + why);
}

// True when there is something to read, or a writer has been there and gone.
bool isReadable(int descriptor, int waitMs)
{
    pollfd about{descriptor, POLLIN, 0};
    return poll(&about, 1, waitMs) > 0;
}

Outcome<QByteArray> readAll(int descriptor, const QByteArray &path)
{
    QByteArray content;
    char piece[kPiece];
    for (;;) {
        const ssize_t got = read(descriptor, piece, sizeof piece);
        if (got == 0)
            return content;
        if (got < 0 && errno == EAGAIN)
            isReadable(descriptor, kForEver);
        else if (got < 0 && errno != EINTR)
            return cannotRead(path, strerror(errno));
        if (got > 0)
            content.append(piece, static_cast<int>(got));
        if (content.size() > kLargestInput)
            return cannotRead(path, "larger than 256 MiB");
    }
}

// Opened without waiting, so that a FIFO without a writer is found out instead of holding us for ever. One
// that waits to write goes on as soon as we have opened the FIFO, and gets the time to do so.
Outcome<QByteArray> readPipe(int descriptor, const QByteArray &path)
{
    isReadable(descriptor, kWriterMs);
    Outcome<QByteArray> content = readAll(descriptor, path);
    if (content && content->isEmpty() && !isReadable(descriptor, 0))
        return cannotRead(path, "nobody writes to it");
    return content;
}

Outcome<QByteArray> readOpened(int descriptor, const QByteArray &path)
{
    struct stat about {};
    if (fstat(descriptor, &about) != 0)
        return cannotRead(path, strerror(errno));
    if (S_ISFIFO(about.st_mode))
        return readPipe(descriptor, path);
    if (!S_ISREG(about.st_mode))
        return cannotRead(path, S_ISDIR(about.st_mode) ? "it is a directory" : "it is no regular file");
    if (about.st_size > kLargestInput)
        return cannotRead(path, "larger than 256 MiB");
    return readAll(descriptor, path);
}

Failure cannotWrite(const QByteArray &path, const QByteArray &why)
{
    return refused("cannot write " + path + ": " + why);
}

// A FIFO, a terminal, /dev/stdout: what is written goes through, and nothing may take its place.
bool isStream(const QByteArray &path)
{
    struct stat about {};
    return stat(path.constData(), &about) == 0 && !S_ISREG(about.st_mode) && !S_ISDIR(about.st_mode);
}

Outcome<Done> writeTo(FILE *stream, const QByteArray &name, const QByteArray &content)
{
    const auto size = static_cast<std::size_t>(content.size());
    if (fwrite(content.constData(), 1, size, stream) == size && fflush(stream) == 0)
        return Done();
    return cannotWrite(name, strerror(errno));
}

// Opened without waiting, so that a FIFO that nobody reads is found out instead of holding us.
Outcome<Done> writeStream(const QByteArray &path, const QByteArray &content)
{
    const int descriptor = open(path.constData(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return cannotWrite(path, strerror(errno));
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    FILE *stream = fdopen(descriptor, "w");
    const Outcome<Done> written = writeTo(stream, path, content);
    fclose(stream);
    return written;
}

} // namespace

Outcome<QByteArray> readInput(const QByteArray &path)
{
    if (path == "-")
        return readAll(STDIN_FILENO, "standard input");
    const int descriptor = open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return cannotRead(path, strerror(errno));
    Outcome<QByteArray> content = readOpened(descriptor, path);
    close(descriptor);
    return content;
}

Outcome<Done> writeOutput(const QByteArray &path, const QByteArray &content)
{
    if (path == "-")
        return writeTo(stdout, "the output", content);
    if (path.isEmpty())
        return cannotWrite(path, strerror(ENOENT));
    if (isStream(path))
        return writeStream(path, content);
    // commit() does not notice what fails when the last bytes leave the buffer, on a full disk for example.
    QSaveFile file(QFile::decodeName(path));
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush() &&
        file.commit())
        return Done();
    return cannotWrite(path, file.errorString().toUtf8());
}

Outcome<Done> canWrite(const QByteArray &path)
{
    if (path.isEmpty())
        return cannotWrite(path, strerror(ENOENT));
    QSaveFile file(QFile::decodeName(path));
    if (path == "-" || isStream(path) || file.open(QIODevice::WriteOnly))
        return Done();
    return cannotWrite(path, file.errorString().toUtf8());
}

} // namespace ops
