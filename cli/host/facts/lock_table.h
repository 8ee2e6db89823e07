// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FACTS_LOCK_TABLE_H
#define VORN_CLI_HOST_FACTS_LOCK_TABLE_H

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "cli/host/facts/file_lock.h"
#include "cli/host/facts/process_facts.h"

namespace cli {

/** A process that waits for a lock. */
struct LockWaiter {
    pid_t pid = 0;
    std::string command; /**< "-" when it has ended meanwhile */
};

/** Who waits for which lock, at one moment: only /proc/locks tells that. */
class LockTable {
public:
    static LockTable Read();
    LockTable(std::string_view text, BootTicks readAt);

    /** By process id. Locks that nothing tells apart, as two of one kind without a process, share
     * theirs. */
    std::vector<LockWaiter> WaitersFor(const KernelLock& lock) const;

private:
    using Key = std::tuple<std::string, std::string, std::string, pid_t, std::uint64_t,
                           std::optional<std::uint64_t>>;
    static Key KeyOf(const KernelLock& lock);

    BootTicks readAt_;
    std::multimap<Key, pid_t> waiters_;
};

}  // namespace cli

#endif
