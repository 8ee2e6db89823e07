// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_MEMORY_MAP_H
#define VORN_CLI_QUESTION_HOLDERS_MEMORY_MAP_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/** A file in a process's memory. */
struct Mapped {
    uint64_t begin = 0;
    uint64_t end = 0;
    dev_t device = 0; /**< of the file system, also of btrfs */
    ino_t inode = 0;
    std::string_view path; /**< with \\012 for a newline */

    /** Of its link in `/proc/<pid>/map_files`. */
    std::string LinkName() const;
};

/** A line of `/proc/<pid>/maps`; nothing for memory that no file is behind. */
std::optional<Mapped> ParseMapped(std::string_view line);

}  // namespace cli

#endif
