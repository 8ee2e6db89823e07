// SPDX-License-Identifier: MIT
#include "platform/linux/units/section_value.h"

#include "support/text.h"

namespace vornplatform {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsComment(std::string_view line) {
    return !line.empty() && (line.front() == '#' || line.front() == ';');
}

// An escaped backslash at the end of a line is a plain character.
bool IsContinued(std::string_view line) {
    const std::size_t lastOther = line.find_last_not_of('\\');
    return (line.size() - (lastOther + 1)) % 2 == 1;
}

bool IsHeaderOf(std::string_view line, std::string_view section) {
    line = support::TrimRight(line, kBlanks);
    return line.size() == section.size() + 2 && line.back() == ']' &&
           line.substr(1, section.size()) == section;
}

// Splits text into lines without comments, continued lines joined, leading blanks dropped.
class LogicalLines {
public:
    explicit LogicalLines(std::string_view text) : rest_(text) {
        support::ConsumePrefix(rest_, kByteOrderMark);
    }

    // The line is valid until the next call.
    bool Next(std::string_view& line) {
        joined_.clear();
        bool joining = false;
        for (std::string_view part; NextPart(part);) {
            if (IsComment(part)) {
                continue;
            }
            const bool continued = IsContinued(part);
            if (!joining && !continued) {
                line = part;
                return true;
            }
            joined_ += continued ? part.substr(0, part.size() - 1) : part;
            if (!continued) {
                line = joined_;
                return true;
            }
            joined_ += ' ';
            joining = true;
        }
        line = joined_;
        return joining;
    }

private:
    bool NextPart(std::string_view& part) {
        if (rest_.empty()) {
            return false;
        }
        part = support::TakeLine(rest_);
        support::ConsumeSuffix(part, "\r");
        part = support::TrimLeft(part, kBlanks);
        return true;
    }

    std::string_view rest_;
    std::string joined_;
};

}  // namespace

std::optional<std::string> SectionValue(std::string_view text, std::string_view section,
                                        std::string_view key) {
    std::optional<std::string> result;
    LogicalLines lines(text);
    bool inSection = false;
    for (std::string_view line; lines.Next(line);) {
        if (!line.empty() && line.front() == '[') {
            inSection = IsHeaderOf(line, section);
            continue;
        }
        const std::size_t equals = inSection ? line.find('=') : std::string_view::npos;
        if (equals == std::string_view::npos ||
            support::TrimRight(line.substr(0, equals), kBlanks) != key) {
            continue;
        }
        const std::string_view value = support::Trim(line.substr(equals + 1), kBlanks);
        if (!value.empty()) {
            result = value;
        }
    }
    return result;
}

std::string_view CutUtf8(std::string_view text, std::size_t limit) {
    constexpr std::size_t kMostContinuationBytes = 3;
    const auto continues = [text](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    if (text.size() <= limit) {
        return text;
    }
    std::size_t end = limit;
    while (end > 0 && limit - end < kMostContinuationBytes && continues(end)) {
        --end;
    }
    // More continuation bytes than a character has: not UTF-8, so there is no character to keep.
    return text.substr(0, continues(end) ? limit : end);
}

}  // namespace vornplatform
