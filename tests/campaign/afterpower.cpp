// SPDX-License-Identifier: MIT
#include "afterpower.h"

#include "campaign.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace campaign {

namespace {

constexpr size_t sector = 512;

std::string contents(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void put(std::string &text, uint64_t at, const char *bytes, size_t size)
{
    if (text.size() < at + size)
        text.resize(at + size);
    std::memcpy(text.data() + at, bytes, size);
}

void apply(std::string &text, const Event &event)
{
    if (event.head.kind == JOURNAL_TRUNCATE)
        text.resize(event.head.at);
    else
        put(text, event.head.at, event.bytes.data(), event.bytes.size());
}

// A disk writes whole sectors; which of them it had done when the power went nobody knows.
void applyTorn(std::string &text, const Event &event)
{
    for (size_t from = 0; from < event.bytes.size(); from += sector) {
        if (draw(2) == 0)
            put(text, event.head.at + from, event.bytes.data() + from,
                std::min(sector, event.bytes.size() - from));
    }
}

} // namespace

std::vector<Event> readJournal(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<Event> events;
    Event event;
    while (file.read(reinterpret_cast<char *>(&event.head), sizeof event.head)) {
        event.bytes.resize(event.head.size);
        if (!file.read(event.bytes.data(), static_cast<std::streamsize>(event.bytes.size())))
            return {};
        events.push_back(event);
    }
    return events;
}

void Disk::fill(const std::string &folder)
{
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        struct stat info {};
        if (!entry.is_regular_file() || stat(entry.path().c_str(), &info) != 0)
            continue;
        m_files[info.st_ino].safe = contents(entry.path());
        m_names[entry.path().filename()] = info.st_ino;
    }
}

void Disk::File::sync()
{
    for (const Event &event : later)
        apply(safe, event);
    later.clear();
}

void Disk::take(const Event &event)
{
    switch (event.head.kind) {
    case JOURNAL_WRITE:
    case JOURNAL_TRUNCATE:
        m_files[event.head.inode].later.push_back(event);
        break;
    case JOURNAL_SYNC:
        m_files[event.head.inode].sync();
        break;
    case JOURNAL_SYNC_DIR:
        for (const Event &later : m_laterNames)
            rename(m_names, later);
        m_laterNames.clear();
        break;
    case JOURNAL_TOLD:
        m_told[event.head.inode] = event.head.at;
        break;
    default:
        m_laterNames.push_back(event);
    }
}

uint64_t Disk::told(uint64_t sort) const
{
    const auto found = m_told.find(sort);
    return found == m_told.end() ? 0 : found->second;
}

void Disk::rename(Names &names, const Event &event)
{
    const size_t slash = event.bytes.find('/');
    if (event.head.kind == JOURNAL_UNNAME)
        names.erase(event.bytes);
    else if (event.head.kind == JOURNAL_RENAME)
        names.erase(event.bytes.substr(0, slash));
    if (event.head.kind != JOURNAL_UNNAME)
        names[slash == std::string::npos ? event.bytes : event.bytes.substr(slash + 1)] = event.head.inode;
}

// All, nothing, or anything in between. A file's length changes with the writes that are there.
std::string Disk::survivor(const File &file)
{
    std::string text = file.safe;
    const long manner = draw(5);
    for (const Event &event : file.later) {
        const bool torn = event.head.kind == JOURNAL_WRITE && manner == 4 && draw(3) == 0;
        if (torn)
            applyTorn(text, event);
        else if (manner == 0 || (manner > 1 && draw(2) == 0))
            apply(text, event);
    }
    return text;
}

void Disk::leave(const std::string &folder) const
{
    Names names = m_names;
    const size_t kept = static_cast<size_t>(draw(static_cast<long>(m_laterNames.size()) + 1));
    for (size_t i = 0; i < kept; ++i)
        rename(names, m_laterNames[i]);
    std::filesystem::create_directories(folder);
    chmod(folder.c_str(), S_IRWXU);
    for (const auto &[name, inode] : names) {
        const auto file = m_files.find(inode);
        const std::string path = folder + '/' + name;
        std::ofstream(path, std::ios::binary)
            << (file == m_files.end() ? std::string() : survivor(file->second));
        chmod(path.c_str(), S_IRUSR | S_IWUSR);
    }
}

} // namespace campaign
