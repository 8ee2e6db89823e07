// SPDX-License-Identifier: MIT
#include "cli/host/facts/file_lock.h"

#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

/** Takes a word off a line, and the blanks before it; empty at its end. */
std::string_view TakeWord(std::string_view& line) {
    line = support::TrimLeft(line, " ");
    return support::TakeUntil(line, ' ');
}

}  // namespace

// 1: POSIX  ADVISORY  WRITE 29024 08:01:1234 0 EOF
// 1: -> FLOCK  ADVISORY  READ 29031 08:01:1234 0 EOF
std::optional<KernelLock> ParseKernelLock(std::string_view line) {
    const std::string_view number = TakeWord(line);
    if (!support::EndsWith(number, ":")) {
        return std::nullopt;
    }
    KernelLock lock;
    std::string_view kind = TakeWord(line);
    if (kind == "->") {
        lock.waits = true;
        kind = TakeWord(line);
    }
    lock.kind = kind;
    TakeWord(line);  // ADVISORY, or how far a lease is from being given up
    lock.access = TakeWord(line);
    const auto pid = support::ParseNumber<pid_t>(TakeWord(line));
    lock.file = TakeWord(line);
    const auto begin = support::ParseNumber<std::uint64_t>(TakeWord(line));
    const std::string_view end = TakeWord(line);
    lock.end = support::ParseNumber<std::uint64_t>(end);
    if (!pid || !begin || (!lock.end && end != "EOF") || !line.empty()) {
        return std::nullopt;
    }
    lock.pid = *pid;
    lock.begin = *begin;
    return lock;
}

}  // namespace cli
