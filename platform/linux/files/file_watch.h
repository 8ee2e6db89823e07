// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FILES_FILE_WATCH_H
#define VORN_PLATFORM_LINUX_FILES_FILE_WATCH_H

#include <string>
#include <utility>
#include <vector>

namespace vornplatform {

/** Files and folders as they were, by device, inode, size and modification time. */
class FileWatch {
public:
    /** Notes a path, before it is read: a change during the reading is then seen later. */
    void Add(const std::string& path);
    /** Whether every path is as it was when it was noted, or is missing as it was. */
    bool IsUnchanged() const;

private:
    std::vector<std::pair<std::string, std::string>> stamps_;
};

}  // namespace vornplatform

#endif
