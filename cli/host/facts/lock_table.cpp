// SPDX-License-Identifier: MIT
#include "cli/host/facts/lock_table.h"

#include <fcntl.h>

#include <algorithm>

#include "support/read_all.h"
#include "support/text.h"

namespace cli {
namespace {

std::string CommandOf(pid_t pid, BootTicks moment) {
    const auto process = ProcessFacts::Of(std::to_string(pid));
    const bool isSame = process && process->HasStartedBefore(moment);
    return isSame ? process->Command().value_or("-") : "-";
}

}  // namespace

LockTable::Key LockTable::KeyOf(const KernelLock& lock) {
    return {lock.file, lock.kind, lock.access, lock.pid, lock.begin, lock.end};
}

LockTable LockTable::Read() {
    constexpr size_t kLimit = size_t{1} << 26;  // a million locks
    const BootTicks began = BootTicksNow();
    std::string text;
    const support::Descriptor file(open("/proc/locks", O_RDONLY | O_CLOEXEC));
    if (file) {
        support::ReadAll(file.Get(), kLimit, text);
    }
    return LockTable(text, began);
}

// Those that wait stand behind the lock that they wait for.
LockTable::LockTable(std::string_view text, BootTicks readAt) : readAt_(readAt) {
    std::optional<KernelLock> held;
    while (!text.empty()) {
        auto lock = ParseKernelLock(support::TakeLine(text));
        if (!lock || !lock->waits) {
            held = std::move(lock);
        } else if (held && lock->pid > 0) {
            waiters_.emplace(KeyOf(*held), lock->pid);
        }
    }
}

std::vector<LockWaiter> LockTable::WaitersFor(const KernelLock& lock) const {
    std::vector<pid_t> pids;
    const auto [begin, end] = waiters_.equal_range(KeyOf(lock));
    std::transform(begin, end, std::back_inserter(pids),
                   [](const auto& entry) { return entry.second; });
    std::sort(pids.begin(), pids.end());
    pids.erase(std::unique(pids.begin(), pids.end()), pids.end());
    std::vector<LockWaiter> waiters;
    for (const pid_t pid : pids) {
        waiters.push_back({pid, CommandOf(pid, readAt_)});
    }
    return waiters;
}

}  // namespace cli
