// SPDX-License-Identifier: MIT
#ifndef VORN_FUZZ_TEXT_INPUT_H
#define VORN_FUZZ_TEXT_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/** Unlike assert() it stays whatever the build type. */
inline void Must(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/** What libFuzzer gives, as text. */
inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

#endif
