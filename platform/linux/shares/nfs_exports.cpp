// SPDX-License-Identifier: MIT
#include "platform/linux/shares/nfs_exports.h"

#include <string>
#include <utility>

#include "support/text.h"

namespace vornplatform {
namespace {

/** Takes lines up to one that doesn't end in a backslash and joins them. */
std::string TakeContinuedLine(std::string_view& text) {
    std::string whole;
    for (;;) {
        const std::string_view line = support::TakeLine(text);
        whole += line;
        if (line.empty() || line.back() != '\\' || text.empty()) {
            return whole;
        }
        whole.pop_back();
    }
}

bool IsOctal(char c) {
    return c >= '0' && c <= '7';
}

/** "\040" at the beginning of a text: three octal digits that make a byte. */
bool IsEscape(std::string_view text) {
    return text.size() >= 4 && text[0] == '\\' && text[1] >= '0' && text[1] <= '3' &&
           IsOctal(text[2]) && IsOctal(text[3]);
}

/** The first field of a line, without its quotes and escapes. */
std::string FirstField(std::string_view line) {
    std::string field;
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && (c == ' ' || c == '\t')) {
            break;
        } else if (IsEscape(line.substr(i))) {
            field += static_cast<char>((line[i + 1] - '0') * 64 + (line[i + 2] - '0') * 8 +
                                       (line[i + 3] - '0'));
            i += 3;
        } else {
            field += c;
        }
    }
    return field;
}

}  // namespace

std::vector<Share> ParseExports(std::string_view text) {
    std::vector<Share> shares;
    while (!text.empty()) {
        const std::string whole = TakeContinuedLine(text);
        const std::string_view line = support::Trim(whole);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        std::string path = WrittenPath(FirstField(line));
        if (!path.empty()) {
            shares.push_back({path.substr(path.rfind('/') + 1), std::move(path), "NFS"});
        }
    }
    return shares;
}

}  // namespace vornplatform
