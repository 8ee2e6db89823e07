// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_TEXT_H
#define VORN_SUPPORT_TEXT_H

#include <cstddef>
#include <string_view>

namespace support {

constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";

inline bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

inline bool EndsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

/** Takes a prefix off a text that has it. */
inline bool ConsumePrefix(std::string_view& text, std::string_view prefix) {
    const bool found = StartsWith(text, prefix);
    text.remove_prefix(found ? prefix.size() : 0);
    return found;
}

/** Takes a suffix off a text that has it. */
inline bool ConsumeSuffix(std::string_view& text, std::string_view suffix) {
    const bool found = EndsWith(text, suffix);
    text.remove_suffix(found ? suffix.size() : 0);
    return found;
}

/** Whether a path is another one or lies below it, by whole path elements. */
inline bool IsAtOrBelow(std::string_view path, std::string_view root) {
    return root == "/" ||
           (StartsWith(path, root) && (path.size() == root.size() || path[root.size()] == '/'));
}

/** A text without the given characters at its end. */
inline std::string_view TrimRight(std::string_view text, std::string_view off = kWhiteSpace) {
    return text.substr(0, text.find_last_not_of(off) + 1);
}

/** A text without the given characters at its beginning. */
inline std::string_view TrimLeft(std::string_view text, std::string_view off = kWhiteSpace) {
    const std::size_t begin = text.find_first_not_of(off);
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

inline std::string_view Trim(std::string_view text, std::string_view off = kWhiteSpace) {
    return TrimLeft(TrimRight(text, off), off);
}

/** Takes what stands before a separator off a text, and the separator: the rest without one. */
inline std::string_view TakeUntil(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return part;
}

/** Whether a list such as "none,name=systemd" has a part. */
inline bool HasPart(std::string_view list, std::string_view wanted) {
    while (!list.empty()) {
        if (TakeUntil(list, ',') == wanted) {
            return true;
        }
    }
    return false;
}

/** Takes the first line off a text and returns it without its newline. */
inline std::string_view TakeLine(std::string_view& text) {
    return TakeUntil(text, '\n');
}

}  // namespace support

#endif
