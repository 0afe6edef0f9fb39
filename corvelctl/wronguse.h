// SPDX-License-Identifier: MIT
//
// What to say to a command line that cannot be read.
#ifndef CORVELCTL_WRONGUSE_H
#define CORVELCTL_WRONGUSE_H

#include <QByteArray>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

// One line: what is wrong, and what may have been meant.
QByteArray wrongUse(const CLI::App &app, const CLI::ParseError &error, int argc, char **argv);

#endif
