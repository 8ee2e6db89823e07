#ifndef VORN_PLATFORM_LINUX_SUPPORT_LINES_H
#define VORN_PLATFORM_LINUX_SUPPORT_LINES_H

#include <string_view>

namespace vornplatform {

/** Takes the first line off a text and returns it without its newline. */
inline std::string_view TakeLine(std::string_view& text) {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

/** A text without the white space at its ends. */
inline std::string_view Trim(std::string_view text) {
    constexpr std::string_view kSpace = " \t\r\n\v\f";
    const size_t begin = text.find_first_not_of(kSpace);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kSpace) - begin + 1);
}

}  // namespace vornplatform

#endif
