/* SPDX-License-Identifier: MIT */
/* A folder in memory for harnesses that need files; it goes with the program. */
#ifndef FUZZ_FOLDER_H
#define FUZZ_FOLDER_H

#include "require.h"

#include <filesystem>
#include <string>

class Folder {
public:
    Folder() { require(mkdtemp(m_name) != nullptr, "no folder"); }
    ~Folder() { std::filesystem::remove_all(m_name); }
    std::string path() const { return m_name; }

private:
    char m_name[24] = "/dev/shm/fuzz-XXXXXX";
};

#endif
