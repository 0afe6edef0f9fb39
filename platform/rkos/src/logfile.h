// SPDX-License-Identifier: MIT
//
// The file a log goes to: opened when first needed, shared with other processes, rotated.
#ifndef RKOS_LOGFILE_H
#define RKOS_LOGFILE_H

#include "guard.h"

#include <string>
#include <sys/stat.h>

namespace rkos {

constexpr off_t kMaxLogBytes = 1048576;
constexpr int kKeptLogs = 3; // name.log.1 (newest) to name.log.3

// Not thread-safe; the caller holds a lock.
class LogFile {
public:
    // From now on lines go to <name>.log in the state directory. An empty name: no file.
    void setName(const std::string &name);

    // Appends a line with one write. False when it is not in the file, whatever the reason; a line
    // that a full disk has cut is ended before the next one.
    bool append(const std::string &line);

private:
    bool ready();
    bool isCurrent() const;
    bool openIn(const std::string &directory);
    void rotate();
    void leaveSecondName(const std::string &path) const;
    void shiftNames(int directory) const;

    std::string m_name;
    std::string m_directory;
    Descriptor m_fd;
    dev_t m_device = 0;
    ino_t m_inode = 0;
    bool m_torn = false;
};

// Writes a line to standard error without ever waiting for its reader. False when it was not taken.
bool writeToStandardError(const std::string &line);

} // namespace rkos

#endif // RKOS_LOGFILE_H
