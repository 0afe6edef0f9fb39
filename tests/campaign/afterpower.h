// SPDX-License-Identifier: MIT
//
// Makes of a journal what a disk may hold after a power cut: what was synced is there; of what came later
// each write is there or not, or half of it, in any order; of the folder's names a beginning of what came
// later.
#ifndef CAMPAIGN_AFTERPOWER_H
#define CAMPAIGN_AFTERPOWER_H

#include "journal.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace campaign {

struct Event {
    JournalRecord head{};
    std::string bytes;
};

// Empty when the journal cannot be read or is cut.
std::vector<Event> readJournal(const std::string &path);

class Disk {
public:
    // What is there before the journal begins; all of it is safe.
    void fill(const std::string &folder);
    void take(const Event &event);
    // How far the program had been told of this sort.
    uint64_t told(uint64_t sort) const;
    // One of the many states that this disk may be in when the power comes back. The folder is made.
    void leave(const std::string &folder) const;

private:
    struct File {
        std::string safe;
        std::vector<Event> later;
        void sync();
    };
    using Names = std::map<std::string, uint64_t>;

    static void rename(Names &names, const Event &event);
    static std::string survivor(const File &file);

    std::map<uint64_t, File> m_files;
    Names m_names;
    std::vector<Event> m_laterNames;
    std::map<uint64_t, uint64_t> m_told;
};

} // namespace campaign

#endif
