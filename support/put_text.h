// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_PUT_TEXT_H
#define VORN_SUPPORT_PUT_TEXT_H

#include <cstring>
#include <string>

namespace support {

/** Copies a text with its end to a place in a block, which moves behind it; returns the copy. */
inline const char* PutText(char*& place, const std::string& text) {
    const char* begin = place;
    std::memcpy(place, text.c_str(), text.size() + 1);
    place += text.size() + 1;
    return begin;
}

}  // namespace support

#endif
