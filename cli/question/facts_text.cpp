// SPDX-License-Identifier: MIT
#include "cli/question/facts_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <ctime>
#include <limits>

#include "cli/text/number_text.h"

namespace cli {
namespace {

constexpr const char* kUnknown = "-";

std::string OrUnknown(std::string text) {
    return text.empty() ? kUnknown : text;
}

std::int64_t Clipped(std::uint64_t number) {
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    return number > static_cast<std::uint64_t>(kMost) ? kMost : static_cast<std::int64_t>(number);
}

std::string LocksText(const std::vector<HeldLock>& locks) {
    std::string text;
    for (const HeldLock& held : locks) {
        text += (text.empty() ? "" : "; ") + LockText(held);
    }
    return text;
}

std::optional<std::time_t> Modified(const Facts& facts) {
    std::optional<std::time_t> latest;
    for (const FileFacts& file : facts.files) {
        latest = latest ? std::max(*latest, file.modified) : file.modified;
    }
    return latest;
}

std::string TextOfFile(const Facts& facts, Column column) {
    switch (column) {
        case Column::kSize:
        case Column::kSpace: {
            const auto size = SizeOf(facts, column);
            return size ? std::to_string(*size) : kUnknown;
        }
        case Column::kModified: {
            const auto modified = Modified(facts);
            return modified ? LocalTime(*modified) : kUnknown;
        }
        case Column::kInode:
            return facts.files.empty() ? kUnknown : std::to_string(facts.files.front().inode);
        default:
            return facts.files.empty() ? kUnknown : DeviceText(facts.files.front().device);
    }
}

}  // namespace

std::string FactText(const Facts* facts, Column column) {
    if (facts == nullptr || !facts->process) {
        return kUnknown;
    }
    const HolderFacts& process = *facts->process;
    switch (column) {
        case Column::kCommand:
            return OrUnknown(process.command);
        case Column::kOwner:
            return OrUnknown(process.owner);
        case Column::kLogin:
            return OrUnknown(process.login);
        case Column::kUnit:
            return OrUnknown(process.unit);
        case Column::kStarted:
            return process.started ? LocalTime(*process.started) : kUnknown;
        case Column::kFd:
            return OrUnknown(NumberRanges(facts->descriptors));
        case Column::kMode:
            return OrUnknown(fmt::format("{}", fmt::join(facts->modes, ",")));
        case Column::kLocks:
            return OrUnknown(LocksText(facts->locks));
        default:
            return TextOfFile(*facts, column);
    }
}

std::vector<std::int64_t> FactNumbers(const Facts* facts, Column column) {
    if (facts == nullptr || !facts->process) {
        return {};
    }
    std::optional<std::int64_t> number;
    switch (column) {
        case Column::kFd:
            return {facts->descriptors.begin(), facts->descriptors.end()};
        case Column::kStarted:
            number = facts->process->started;
            break;
        case Column::kModified:
            number = Modified(*facts);
            break;
        case Column::kInode:
            if (!facts->files.empty()) {
                number = Clipped(facts->files.front().inode);
            }
            break;
        case Column::kSize:
        case Column::kSpace:
            if (const auto size = SizeOf(*facts, column)) {
                number = Clipped(*size);
            }
            break;
        default:
            break;
    }
    return number ? std::vector{*number} : std::vector<std::int64_t>();
}

std::optional<std::uint64_t> SizeOf(const Facts& facts, Column sizeOrSpace) {
    std::optional<std::uint64_t> sum;
    for (const FileFacts& file : facts.files) {
        if (sizeOrSpace == Column::kSpace) {
            sum = sum.value_or(0) + file.space;
        } else if (file.regular) {
            sum = sum.value_or(0) + file.size;
        }
    }
    return sum;
}

std::string LockKind(const KernelLock& lock) {
    return lock.kind == "FLOCK"    ? "flock"
           : lock.kind == "OFDLCK" ? "OFD"
           : lock.kind == "LEASE"  ? "lease"
                                   : lock.kind;
}

std::string LockAccess(const KernelLock& lock) {
    return lock.access == "READ"    ? "read"
           : lock.access == "WRITE" ? "write"
           : lock.access == "UNLCK" ? "unlock"
                                    : lock.access;
}

std::string LockText(const HeldLock& held) {
    const KernelLock& lock = held.lock;
    std::string text = LockKind(lock) + ' ' + LockAccess(lock);
    if (lock.begin != 0 || lock.end) {
        text += fmt::format(" {}-{}", lock.begin, lock.end ? std::to_string(*lock.end) : "");
    }
    const char* separator = ", awaited by ";
    for (const LockWaiter& waiter : held.waiters) {
        text += fmt::format("{}{} ({})", separator, waiter.pid, waiter.command);
        separator = ", ";
    }
    return text;
}

std::string DeviceText(dev_t device) {
    return fmt::format("{}:{}", major(device), minor(device));
}

bool HasMode(const Facts* facts, std::string_view letters) {
    if (facts == nullptr) {
        return false;
    }
    return std::any_of(facts->modes.begin(), facts->modes.end(), [&](const std::string& mode) {
        return std::all_of(letters.begin(), letters.end(),
                           [&](char letter) { return mode.find(letter) != std::string::npos; });
    });
}

std::optional<std::int64_t> ParseLocalTime(const std::string& text) {
    std::tm parts{};
    const char* const end = strptime(text.c_str(), "%Y/%m/%d %H:%M:%S", &parts);
    if (end == nullptr || *end != '\0') {
        return std::nullopt;
    }
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

}  // namespace cli
