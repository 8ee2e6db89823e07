// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FACTS_FILE_LOCK_H
#define VORN_CLI_HOST_FACTS_FILE_LOCK_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/** A lock on a file, or somebody's wish for one, as /proc/locks and /proc/<pid>/fdinfo/<n> have it.
 */
struct KernelLock {
    std::string kind;   /**< POSIX, FLOCK, OFDLCK (of an open file description), LEASE, ... */
    std::string access; /**< READ, WRITE; UNLCK for a lease that is to be given up */
    pid_t pid = 0;      /**< who has set it; -1 for OFDLCK, which no process owns */
    std::string file;   /**< device and inode, which tell files apart but aren't those of stat() */
    std::uint64_t begin = 0;
    std::optional<std::uint64_t> end; /**< the last byte; nothing means the end of the file */
    bool waits = false;               /**< blocked by another one */
};

/** Reads one line, beginning with its number. */
std::optional<KernelLock> ParseKernelLock(std::string_view line);

}  // namespace cli

#endif
