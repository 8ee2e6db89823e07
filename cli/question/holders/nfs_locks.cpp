// SPDX-License-Identifier: MIT
#include "cli/question/holders/nfs_locks.h"

#include <fmt/format.h>
#include <sys/sysmacros.h>

#include <cerrno>

#include "cli/question/holders/process_facts.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

std::string_view TakeWord(std::string_view& line) {
    line = support::TrimLeft(line);
    return support::TakeUntil(line, ' ');
}

// Locks of open file descriptions (OFDLCK) have no process either, and none is needed: a descriptor
// leads to them.
//
// 16: POSIX  ADVISORY  WRITE 447 fe:10:25 100 106
// 16: -> POSIX  ADVISORY  WRITE 448 fe:10:25 100 106
std::optional<FileLock> ParseLock(std::string_view line) {
    TakeWord(line);
    const std::string_view kind = TakeWord(line);
    if (kind != "POSIX" && kind != "FLOCK") {
        return std::nullopt;
    }
    TakeWord(line);
    FileLock lock;
    lock.access = TakeWord(line) == "WRITE" ? "w" : "r";
    const auto pid = support::ParseNumber<pid_t>(TakeWord(line));
    const auto major = support::TakeNumber<unsigned>(line, 16);
    if (!pid || !major || !support::ConsumePrefix(line, ":")) {
        return std::nullopt;
    }
    const auto minor = support::TakeNumber<unsigned>(line, 16);
    if (!minor || !support::ConsumePrefix(line, ":")) {
        return std::nullopt;
    }
    const auto inode = support::TakeNumber<ino_t>(line);
    lock.pid = *pid;
    lock.device = makedev(*major, *minor);
    lock.inode = inode.value_or(0);
    return inode ? std::optional(std::move(lock)) : std::nullopt;
}

}  // namespace

std::vector<FileLock> ParseLocks(std::string_view text) {
    std::vector<FileLock> locks;
    while (!text.empty()) {
        if (auto lock = ParseLock(support::TakeLine(text))) {
            locks.push_back(std::move(*lock));
        }
    }
    return locks;
}

void NfsLocks::Find(const Targets& targets, Wanted /*wanted*/, Holders& holders) {
    const auto text = ReadKernelFile(path_);
    if (!text) {
        if (errno != ENOENT) {
            holders.lost.push_back(CannotRead(path_));
        }
        return;
    }
    for (const FileLock& lock : ParseLocks(*text)) {
        if (!targets.MayConcern(lock.device) || (lock.pid > 0 && !IsKernelThread(lock.pid))) {
            continue;
        }
        const Place place = targets.PlaceOnDevice(lock.device, lock.inode);
        const std::string what = fmt::format("inode {}", lock.inode);
        if (place.kind == Place::kUnknown) {
            holders.lost.push_back(fmt::format(
                "the kernel holds a lock on {} of the same file system, whose place can't be told",
                what));
        } else if (place.kind == Place::kInside) {
            Holder row;
            row.reason = Reason::kNfsLock;
            row.access = lock.access;
            row.files.push_back({-1, what, false});
            holders.rows.push_back(std::move(row));
        }
    }
}

}  // namespace cli
