// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_MOUNT_TABLE_H
#define VORN_CLI_QUESTION_HOLDERS_MOUNT_TABLE_H

/**
 * @file
 * The mounts of this mount namespace and of others, by the numbers that the kernel has for them.
 */

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cli {

using MountId = uint64_t;

struct Mount {
    MountId id = 0;
    MountId parent = 0;
    dev_t device = 0;   /**< of the whole file system, also where its files show others */
    std::string root;   /**< the path within the file system that is mounted */
    std::string point;  /**< where, seen from the root of its mount namespace */
    std::string type;   /**< such as "ext4" */
    std::string groups; /**< peer groups, such as "shared:1" and "master:2" */
    bool own = false;   /**< of this mount namespace */
};

/** A line of `/proc/<pid>/mountinfo`; nothing for another form. */
std::optional<Mount> ParseMount(std::string_view line);

/** The path that one path below a root leads to: Joined("/a", "/b") is "/a/b". */
std::string Joined(std::string_view root, std::string_view rest);

/** What of a path lies below a root: "/c" of "/a/c" below "/a", "" of itself. */
std::optional<std::string_view> Below(std::string_view path, std::string_view root);

class MountTable {
public:
    /**
     * Adds what a text of mountinfo has; a mount that is known already stays as it is.
     *
     * @param root  that of the process whose text it is, seen from the root of its mount namespace
     */
    void Add(std::string_view text, std::string_view root, bool own);

    /** Null for one that no process has in its mount namespace. */
    const Mount* Find(MountId id) const;
    /** In the order in which they were added. */
    const std::vector<Mount>& All() const { return mounts_; }

    /** Whether a mount of the given file system is there. */
    bool Knows(dev_t device) const;

private:
    std::vector<Mount> mounts_;
    std::unordered_map<MountId, size_t> index_;
};

/**
 * The path within its file system of something under a mount; nothing where the text doesn't
 * begin with the mount point, as that of a mount that has been moved meanwhile.
 *
 * @param text  as the kernel names it, seen from the root of the mount's namespace
 */
std::optional<std::string> PathInside(const Mount& mount, std::string_view text);

}  // namespace cli

#endif
