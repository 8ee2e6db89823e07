// SPDX-License-Identifier: MIT
#include "cli/question/holders/process_facts.h"

#include <fmt/format.h>

#include <string>

#include "cli/question/holders/source.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {

// 1 (systemd) S 0 1 1 0 -1 4194560 ...: the ninth are the flags
bool IsKernelThread(pid_t pid) {
    constexpr unsigned kKernelThread = 0x00200000;
    constexpr int kFieldsBefore = 6;
    const auto text = ReadKernelFile(fmt::format("/proc/{}/stat", pid));
    const size_t name = text ? text->rfind(") ") : std::string::npos;
    if (name == std::string::npos) {
        return false;
    }
    std::string_view fields = std::string_view(*text).substr(name + 2);
    for (int i = 0; i < kFieldsBefore; ++i) {
        support::TakeUntil(fields, ' ');
    }
    const auto flags = support::TakeNumber<unsigned>(fields);
    return flags && (*flags & kKernelThread) != 0;
}

// UserFiles:	2
//     0: /volume1/a
//     1: <none>
// UserBufs:	0
bool HasRegisteredFiles(std::string_view text) {
    bool told = false;
    while (!text.empty()) {
        const std::string_view line = support::TakeLine(text);
        if (support::StartsWith(line, "UserFiles:")) {
            told = true;
        } else if (told && support::StartsWith(line, "UserBufs:")) {
            return false;
        } else if (told && !support::EndsWith(line, ": <none>")) {
            return true;
        }
    }
    return !told;
}

}  // namespace cli
