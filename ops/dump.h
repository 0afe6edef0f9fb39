// SPDX-License-Identifier: MIT
//
// Everything of one or several configurations in one file: JSON, versioned, with a checksum over the values.
// The same values always give the same bytes, so that a dump can be kept under version control. The format
// is described in docs/file-formats.md. Pure; any thread.
#ifndef CORVEL_OPS_DUMP_H
#define CORVEL_OPS_DUMP_H

#include "ops/outcome.h"
#include "ops/snapshot.h"

namespace ops {

struct Configuration {
    QByteArray name;
    Snapshot values;
};

using Dump = std::vector<Configuration>;

QByteArray writeDump(const Dump &dump);

// A failure says what is wrong: no JSON, no dump, another version, a value that is none, a wrong checksum
// (the file was changed or cut after it was written).
Outcome<Dump> readDump(const QByteArray &text);
// The same of a file, or of standard input for "-". A failure names the file.
Outcome<Dump> readDumpFile(const QByteArray &file);

// SHA-256 over names, paths, types and values in their order, in hexadecimal.
QByteArray dumpChecksum(const Dump &dump);

} // namespace ops

#endif
