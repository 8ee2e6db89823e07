// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_UNITS_SECTION_VALUE_H
#define VORN_PLATFORM_LINUX_UNITS_SECTION_VALUE_H

/**
 * @file
 * Reads values from text in the syntax of systemd's unit files.
 *
 * A scanner of our own: SimpleIni, the best of the ready ones, knows no continued lines, and
 * joining them beforehand is most of what this file does. inih stops at 200 bytes a line, GLib's
 * key files refuse what systemd accepts.
 */

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vornplatform {

/**
 * The last non-empty value that a key is given in a section, or nothing.
 *
 * Names are compared byte by byte. A section may be repeated. A line whose first non-blank
 * character is "#" or ";" is a comment, also between continued lines; nothing else starts one. A
 * line ending in an odd number of backslashes goes on in the next one, with a blank in place of the
 * last backslash. Lines end at LF or CRLF. Blanks around names and values are dropped, those inside
 * a value kept, as are quotes and escapes: nothing is interpreted.
 */
std::optional<std::string> SectionValue(std::string_view text, std::string_view section,
                                        std::string_view key);

/** The longest part of a UTF-8 text within a number of bytes that ends with a whole character. */
std::string_view CutUtf8(std::string_view text, std::size_t limit);

}  // namespace vornplatform

#endif
