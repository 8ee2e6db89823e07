// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_PROCESS_TEXT_H
#define VORN_SUPPORT_PROCESS_TEXT_H

/**
 * @file
 * What files of /proc/<pid> say of a process.
 */

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "support/numbers.h"
#include "support/text.h"

namespace support {

/** The field with the given index, counted from 0, of a text with the given separator. */
inline std::string_view Field(std::string_view text, int index, char separator) {
    for (; index > 0; --index) {
        TakeUntil(text, separator);
    }
    return TakeUntil(text, separator);
}

/** Value of a line such as "CapEff:\t..." in the text of /proc/<pid>/status; empty without it. */
inline std::string_view StatusValue(std::string_view status, std::string_view key) {
    while (!status.empty()) {
        std::string_view line = TakeLine(status);
        if (ConsumePrefix(line, key)) {
            return Trim(line);
        }
    }
    return {};
}

/** A set of capabilities, such as that of "CapEff:", from the text of /proc/<pid>/status. */
inline std::optional<std::uint64_t> ParseCapabilities(std::string_view status,
                                                      std::string_view key) {
    return ParseNumber<std::uint64_t>(StatusValue(status, key), 16);
}

inline bool HasCapability(std::uint64_t set, unsigned capability) {
    return (set >> capability & 1) != 0;
}

/** What /proc/<pid>/stat says of a process. */
struct ProcessStat {
    pid_t parent = 0;
    std::uint64_t startTime = 0; /**< in clock ticks since boot: tells processes of one pid apart */
};

/**
 * Reads the text of /proc/<pid>/stat. The name of the process stands in brackets and may itself
 * hold brackets, blanks and newlines; the fields begin after the last closing bracket.
 */
// 29024 (a) b (c) S 7110 29024 29024 0 -1 4194560 1201 ... 0 0 20 0 1 0 1234567 ...
inline std::optional<ProcessStat> ParseProcessStat(std::string_view text) {
    constexpr int kFirstField = 3;
    constexpr int kParentField = 4;
    constexpr int kStartTimeField = 22;
    const std::size_t bracket = text.rfind(')');
    if (bracket == std::string_view::npos || bracket + 2 > text.size()) {
        return std::nullopt;
    }
    const std::string_view fields = text.substr(bracket + 2);
    const auto parent = ParseNumber<pid_t>(Field(fields, kParentField - kFirstField, ' '));
    const auto start =
        ParseNumber<std::uint64_t>(Field(fields, kStartTimeField - kFirstField, ' '));
    if (!parent || *parent < 0 || !start) {
        return std::nullopt;
    }
    return ProcessStat{*parent, *start};
}

/** The users that a process runs as. */
struct ProcessUsers {
    uid_t real = 0;
    uid_t effective = 0;
};

/** Reads the user ids from the text of /proc/<pid>/status. */
// Uid:\t0\t5001\t0\t5001 (real, effective, saved, file system)
inline std::optional<ProcessUsers> ParseProcessUsers(std::string_view text) {
    // The name comes first, but the kernel escapes newlines in it, so it cannot fake a line.
    constexpr std::string_view kHead = "\nUid:\t";
    const std::size_t head = text.find(kHead);
    if (head == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(head + kHead.size());
    text = TakeLine(text);
    const auto real = ParseNumber<uid_t>(Field(text, 0, '\t'));
    const auto effective = ParseNumber<uid_t>(Field(text, 1, '\t'));
    if (!real || !effective) {
        return std::nullopt;
    }
    return ProcessUsers{*real, *effective};
}

/**
 * Reads the text of /proc/<pid>/loginuid or /proc/<pid>/sessionid.
 *
 * @return nothing also for 4294967295, by which the kernel says that none is set
 */
inline std::optional<std::uint32_t> ParseAuditId(std::string_view text) {
    constexpr std::uint32_t kUnset = 4294967295;
    ConsumeSuffix(text, "\n");
    const auto id = ParseNumber<std::uint32_t>(text);
    return id == kUnset ? std::nullopt : id;
}

}  // namespace support

#endif
