// SPDX-License-Identifier: MIT
//
// Reads what a user named. Blocks for as long as the file or the pipe behind "-" takes.
#ifndef CORVEL_OPS_INPUTFILE_H
#define CORVEL_OPS_INPUTFILE_H

#include "ops/outcome.h"

namespace ops {

constexpr qint64 kLargestInput = qint64(256) << 20;

// The whole content of a regular file, of a pipe or FIFO, or of standard input for "-". A pipe is waited for
// until its writer closes it, and what it gives can be read once only. A FIFO that nobody opens to write to
// it within half a second is refused, and so are, at once, a directory, a device, something unreadable and
// anything above kLargestInput.
Outcome<QByteArray> readInput(const QByteArray &path);

// Writes a file beside its place and puts it there at the end, so that nobody sees half of it; "-" is
// standard output. What is no file (a FIFO, a device) is written to, which nothing can undo halfway, and
// waits for its reader; a FIFO without one fails at once.
Outcome<Done> writeOutput(const QByteArray &path, const QByteArray &content);

// Whether there is a place for that file; nothing is written.
Outcome<Done> canWrite(const QByteArray &path);

} // namespace ops

#endif
