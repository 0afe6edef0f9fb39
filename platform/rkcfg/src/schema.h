/* SPDX-License-Identifier: MIT */
/* What a configuration database holds. docs/store.md describes it for people. */
#ifndef RKCFG_SCHEMA_H
#define RKCFG_SCHEMA_H

#include <cstdint>

namespace rkcfg {

constexpr int64_t kApplicationId = 0x726B6366; // "rkcf"
constexpr int64_t kSchemaVersion = 1;

// The checks are part of quick_check, so a value that was garbled in place is found at open.
// Each change of a value writes a whole page to the log, so pages are small; stores with larger ones
// work as well.
constexpr const char *kSchemaSql = R"(
PRAGMA page_size = 1024;
PRAGMA application_id = 0x726B6366;
PRAGMA user_version = 1;
CREATE TABLE setting (
    path  TEXT    NOT NULL COLLATE NOCASE,
    name  TEXT    NOT NULL,
    type  INTEGER NOT NULL CHECK (type IN (1, 2)),
    value         NOT NULL CHECK (typeof(value) = iif(type = 1, 'text', 'integer')),
    PRIMARY KEY (path, name)
) WITHOUT ROWID;
)";

// Beside the settings, so that programs from before it still find their store. An absent value is
// null. label and undoes stand in the first row of a batch only. A table of its own for the writers
// keeps the rows short; it has one row per program and user.
constexpr const char *kHistorySql = R"(
CREATE TABLE IF NOT EXISTS writer (
    id      INTEGER PRIMARY KEY,
    program TEXT NOT NULL,
    user    TEXT NOT NULL,
    UNIQUE (program, user)
);
CREATE TABLE IF NOT EXISTS history (
    id        INTEGER PRIMARY KEY,
    batch     INTEGER NOT NULL,
    time      INTEGER NOT NULL,
    writer    INTEGER NOT NULL,
    pid       INTEGER NOT NULL,
    path      TEXT NOT NULL,
    name      TEXT NOT NULL,
    old_value,
    new_value,
    label     TEXT,
    undoes    INTEGER
);
)";

// What programs note down beside the settings. Made with the first note.
constexpr const char *kNotesSql = R"(
CREATE TABLE IF NOT EXISTS note (
    id    INTEGER PRIMARY KEY,
    owner TEXT NOT NULL,
    key   TEXT NOT NULL,
    data  BLOB NOT NULL,
    UNIQUE (owner, key)
);
)";

// Where a configuration's own bounds of the history are kept.
constexpr const char *kBoundsPath = "rkcfg\\History";

} // namespace rkcfg

#endif // RKCFG_SCHEMA_H
