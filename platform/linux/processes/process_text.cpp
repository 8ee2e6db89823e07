// SPDX-License-Identifier: MIT
#include "platform/linux/processes/process_text.h"

#include "support/numbers.h"
#include "support/text.h"

namespace vornplatform {

// 29031 29040
std::vector<pid_t> ParseChildren(std::string_view text) {
    std::vector<pid_t> children;
    while (text.find(' ') != std::string_view::npos) {
        const auto child = support::ParseNumber<pid_t>(support::TakeUntil(text, ' '));
        if (child && *child > 0) {
            children.push_back(*child);
        }
    }
    return children;
}

std::optional<std::uint64_t> ParseSocketLink(std::string_view link) {
    if (!support::ConsumePrefix(link, "socket:[") || !support::ConsumeSuffix(link, "]")) {
        return std::nullopt;
    }
    return support::ParseNumber<std::uint64_t>(link);
}

std::string_view ExecutableName(std::string_view link) {
    support::ConsumeSuffix(link, " (deleted)");
    const std::size_t slash = link.rfind('/');
    return slash == std::string_view::npos ? link : link.substr(slash + 1);
}

}  // namespace vornplatform
