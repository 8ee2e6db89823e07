// SPDX-License-Identifier: MIT
#include "cli/question/holders/memory_map.h"

#include <fmt/format.h>
#include <sys/sysmacros.h>

#include "support/numbers.h"
#include "support/text.h"

namespace cli {

std::string Mapped::LinkName() const {
    return fmt::format("{:x}-{:x}", begin, end);
}

// 560fa476f000-560fa4771000 r--p 00000000 00:3b 258                        /volume4/sub/sleep
std::optional<Mapped> ParseMapped(std::string_view line) {
    Mapped mapped;
    const auto begin = support::TakeNumber<uint64_t>(line, 16);
    if (!begin || !support::ConsumePrefix(line, "-")) {
        return std::nullopt;
    }
    const auto end = support::TakeNumber<uint64_t>(line, 16);
    if (!end || !support::ConsumePrefix(line, " ")) {
        return std::nullopt;
    }
    mapped.begin = *begin;
    mapped.end = *end;
    support::TakeUntil(line, ' ');
    support::TakeUntil(line, ' ');
    const auto major = support::TakeNumber<unsigned>(line, 16);
    if (!major || !support::ConsumePrefix(line, ":")) {
        return std::nullopt;
    }
    const auto minor = support::TakeNumber<unsigned>(line, 16);
    if (!minor || !support::ConsumePrefix(line, " ")) {
        return std::nullopt;
    }
    const auto inode = support::TakeNumber<ino_t>(line);
    if (!inode || (*major == 0 && *minor == 0)) {
        return std::nullopt;
    }
    mapped.device = makedev(*major, *minor);
    mapped.inode = *inode;
    mapped.path = support::TrimLeft(line, " ");
    return mapped;
}

}  // namespace cli
