// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_NUMBERS_H
#define VORN_SUPPORT_NUMBERS_H

#include <charconv>
#include <optional>
#include <string_view>
#include <type_traits>

namespace support {

/** Takes the number off that a text begins with; nothing, and the text as it was, without one. */
template <typename Number>
std::optional<Number> TakeNumber(std::string_view& text, [[maybe_unused]] int base = 10) {
    Number number{};
    const char* end = text.data() + text.size();
    std::from_chars_result result{};
    if constexpr (std::is_floating_point_v<Number>) {
        result = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    } else {
        result = std::from_chars(text.data(), end, number, base);
    }
    if (result.ec != std::errc()) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return number;
}

/** The number that a whole text is: digits, "-" before those of a signed one, and nothing else. */
template <typename Number>
std::optional<Number> ParseNumber(std::string_view text, int base = 10) {
    const std::optional<Number> number = TakeNumber<Number>(text, base);
    return text.empty() ? number : std::nullopt;
}

}  // namespace support

#endif
