/* SPDX-License-Identifier: MIT */
/*
 * Whether a write-ahead log was damaged. SQLite reads a log up to the first frame that is not sound and
 * is silent about the rest, since a log may end anywhere after a crash; so a damaged one would look
 * like an older store.
 */
#ifndef RKCFG_LOGSCAN_H
#define RKCFG_LOGSCAN_H

#include <string>

namespace rkcfg {

// True when the log's header is not sound, when frames of the same run follow one that is not, or when a
// log that was never used twice ends in such a frame. An end that was only half written is none. While
// another process writes there may be false alarms.
bool logDamaged(const std::string &path);

} // namespace rkcfg

#endif // RKCFG_LOGSCAN_H
