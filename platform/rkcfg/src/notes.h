/* SPDX-License-Identifier: MIT */
/*
 * What programs note down in a database beside its settings: opaque bytes under an owner's keys. All
 * results are SQLite's extended result codes; SQLITE_OK is success.
 */
#ifndef RKCFG_NOTES_H
#define RKCFG_NOTES_H

#include "statement.h"

#include <functional>

namespace rkcfg {

// Owner and key of one note.
struct NoteKey {
    const char *owner;
    const char *key;
};

// A note with its own bytes, for callers that must not be called back under the lock.
struct KeptNote {
    std::string key;
    std::string data;
};

using NoteReader = std::function<void(const char *key, std::string_view data)>;

class Notes {
public:
    void attach(sqlite3 *db) { m_db = db; }

    // Stores a note or, without data, removes it. Makes the table when missing.
    int set(const NoteKey &note, std::string_view data);
    // Calls reader once when the note is there.
    int read(const NoteKey &note, const NoteReader &reader);
    // All notes of an owner in order of their keys.
    int forEach(const char *owner, const NoteReader &reader);
    // Removes the notes of all owners.
    int forgetAll();

private:
    int prepare(Statement &statement, const char *sql);
    int rows(Statement &statement, const NoteReader &reader);
    bool present();

    sqlite3 *m_db = nullptr;
};

// Takes the notes over from the database attached as "damaged", as far as they can be read.
void copyNotes(sqlite3 *db);

} // namespace rkcfg

#endif // RKCFG_NOTES_H
