// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FACTS_FACTS_TEXT_H
#define VORN_CLI_HOST_FACTS_FACTS_TEXT_H

/**
 * @file
 * What texts of /proc/<pid> say of a process and of its descriptors.
 */

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/host/facts/file_lock.h"

namespace cli {

/** How a descriptor has its file open. One that may only name the file (O_PATH) does neither. */
struct OpenState {
    bool reads = false;
    bool writes = false;
    bool appends = false;
    std::vector<KernelLock> locks; /**< those that it holds; who else waits for them isn't told */
};

/** Reads /proc/<pid>/fdinfo/<n>. */
std::optional<OpenState> ParseOpenState(std::string_view fdinfo);

/**
 * Mount and inode in such a text: the same for all descriptors of a file, and for no two files that
 * are there at a time. They are empty where an old kernel doesn't tell.
 */
std::pair<std::string_view, std::string_view> FileIn(std::string_view fdinfo);

/** "r", "w", "rw", each with "a" behind it where what is written is appended; "-" for neither. */
std::string ModeName(const OpenState& state);

/**
 * The unit of systemd that a process belongs to, from a text of /proc/<pid>/cgroup: the service,
 * scope, socket, mount or swap that is named first below the slices. Of a user's own units it is
 * what the system knows, user@1000.service. Empty for a process that is in none.
 */
std::string UnitOf(std::string_view cgroup);

}  // namespace cli

#endif
