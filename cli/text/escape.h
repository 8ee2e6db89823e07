// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_TEXT_ESCAPE_H
#define VORN_CLI_TEXT_ESCAPE_H

/**
 * @file
 * Arbitrary bytes as one line of harmless text, and what UTF-8 they contain.
 */

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

/** The UTF-8 sequence that a text begins with. */
struct Utf8Character {
    int32_t codepoint; /**< negative when the first byte begins no valid sequence */
    size_t length;     /**< bytes; 1 for an invalid byte */
};

/** text isn't empty. */
Utf8Character DecodeFirst(std::string_view text);

/**
 * Whether a character acts on a terminal or disguises the text round it: control characters,
 * line and paragraph separators, bidirectional controls and other formats, blanks other than that
 * of ASCII, joiners, fillers and whatever else looks like nothing, characters that are not
 * assigned.
 */
bool IsTreacherous(int32_t codepoint);

/**
 * Appends a text so that it is one line, acts on nothing and can be turned back byte for byte:
 * `\\`, `\n`, `\t`, `\r`, `\xHH` for a byte, `\u{H...}` for a character. Of blanks, only single
 * ones between other characters stay as they are (others become `\x20`), so that two blanks are
 * always the gap between columns; an ellipsis is escaped as it stands for what is left out.
 *
 * @param utf8  the reader's terminal knows UTF-8; otherwise everything beyond ASCII is escaped
 */
void AppendEscaped(std::string& out, std::string_view text, bool utf8);
std::string Escaped(std::string_view text, bool utf8);

/** Turns escaped text back. A backslash that begins no escape stays. */
std::string Unescaped(std::string_view text);

/** What replaces the middle of a shortened text. */
std::string_view Ellipsis(bool utf8);

/** Columns on a terminal that escaped text takes. */
size_t DisplayWidth(std::string_view escaped);

/**
 * Escaped text in at most width columns: its middle is left out where it is longer, never a part
 * of an escape or of a character with its combining marks.
 */
std::string Shortened(std::string_view escaped, size_t width, bool utf8);

}  // namespace cli

#endif
