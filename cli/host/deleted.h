// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_DELETED_H
#define VORN_CLI_HOST_DELETED_H

/**
 * @file
 * Tells deleted files from those whose name only looks like it.
 */

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace cli {

/** What the kernel puts behind the name of a file that has been deleted. */
constexpr std::string_view kDeletedMark = " (deleted)";

/** A path without the mark, where it ends with one. */
std::string_view WithoutDeletedMark(std::string_view path);

/**
 * Whether records are about deleted files.
 *
 * The kernel marks a deleted file by " (deleted)" behind its path, and a file may really be named
 * so. Without the mark it isn't deleted. With it, a file of just that name (`lstat`) is what the
 * process holds only if one of the process's descriptors with that text (`/proc/<pid>/fd`) leads
 * to the same inode; if no descriptor can be examined the name counts.
 */
class DeletedFiles {
public:
    bool Contains(std::string_view path, const std::string& pid);

private:
    using Inode = std::pair<dev_t, ino_t>;
    using Targets = std::multimap<std::string, Inode>;

    const Targets& MarkedTargets(const std::string& pid);

    /** Each process's descriptors are read once, and only where a name is ambiguous. */
    std::unordered_map<std::string, Targets> targets_;
};

}  // namespace cli

#endif
