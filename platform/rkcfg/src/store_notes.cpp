// SPDX-License-Identifier: MIT
// The store's part in notes.
#include "store.h"

namespace rkcfg {

int Store::setNote(const NoteKey &note, std::string_view data)
{
    return runWriting([&](Connection &) {
        return writeChanged([&](Connection &sound) { return sound.notes().set(note, data); });
    });
}

int Store::readNote(const NoteKey &note, const NoteReader &reader)
{
    return run("reading a note",
               [&](Connection &connection) { return connection.notes().read(note, reader); });
}

int Store::listNotes(const char *owner, std::vector<KeptNote> &notes)
{
    return run("listing notes", [&](Connection &connection) {
        notes.clear();
        return connection.notes().forEach(owner, [&](const char *key, std::string_view data) {
            notes.push_back({key, std::string(data)});
        });
    });
}

} // namespace rkcfg
