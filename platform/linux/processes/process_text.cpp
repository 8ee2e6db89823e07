#include "platform/linux/processes/process_text.h"

#include "support/numbers.h"
#include "support/text.h"

namespace vornplatform {
namespace {

constexpr int kParentField = 4;
constexpr int kStartTimeField = 22;

/** The field with the given index, counted from 0, of a text with the given separator. */
std::string_view Field(std::string_view text, int index, char separator) {
    for (; index > 0; --index) {
        support::TakeUntil(text, separator);
    }
    return support::TakeUntil(text, separator);
}

}  // namespace

// 29024 (a) b (c) S 7110 29024 29024 0 -1 4194560 1201 ... 0 0 20 0 1 0 1234567 ...
std::optional<ProcessStat> ParseProcessStat(std::string_view text) {
    const std::size_t bracket = text.rfind(')');
    if (bracket == std::string_view::npos || bracket + 2 > text.size()) {
        return std::nullopt;
    }
    const std::string_view fields = text.substr(bracket + 2);
    constexpr int kFirstField = 3;
    const auto parent = support::ParseNumber<pid_t>(Field(fields, kParentField - kFirstField, ' '));
    const auto start =
        support::ParseNumber<std::uint64_t>(Field(fields, kStartTimeField - kFirstField, ' '));
    if (!parent || *parent < 0 || !start) {
        return std::nullopt;
    }
    return ProcessStat{*parent, *start};
}

// Uid:\t0\t5001\t0\t5001 (real, effective, saved, file system)
std::optional<ProcessUsers> ParseProcessUsers(std::string_view text) {
    // The name comes first, but the kernel escapes newlines in it, so it cannot fake a line.
    constexpr std::string_view kHead = "\nUid:\t";
    const std::size_t head = text.find(kHead);
    if (head == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(head + kHead.size());
    text = support::TakeLine(text);
    const auto real = support::ParseNumber<uid_t>(Field(text, 0, '\t'));
    const auto effective = support::ParseNumber<uid_t>(Field(text, 1, '\t'));
    if (!real || !effective) {
        return std::nullopt;
    }
    return ProcessUsers{*real, *effective};
}

std::optional<std::uint32_t> ParseAuditId(std::string_view text) {
    constexpr std::uint32_t kUnset = 4294967295;
    support::ConsumeSuffix(text, "\n");
    const auto id = support::ParseNumber<std::uint32_t>(text);
    return id == kUnset ? std::nullopt : id;
}

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
