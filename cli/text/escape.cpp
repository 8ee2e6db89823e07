// SPDX-License-Identifier: MIT
#include "cli/text/escape.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <algorithm>
#include <utility>

#include "support/numbers.h"

namespace cli {
namespace {

constexpr int32_t kEllipsis = 0x2026;

/** First and last of characters that look like nothing, and are neither blanks nor formats. */
constexpr std::pair<int32_t, int32_t> kInvisible[] = {
    {0x034F, 0x034F},    // combining grapheme joiner
    {0x115F, 0x1160},    // Hangul fillers
    {0x17B4, 0x17B5},    // Khmer vowels that aren't shown
    {0x180B, 0x180F},    // Mongolian variation selectors
    {0x2800, 0x2800},    // Braille pattern without a dot
    {0x3164, 0x3164},    // Hangul filler
    {0xFE00, 0xFE0F},    // variation selectors
    {0xFFA0, 0xFFA0},    // half as wide a Hangul filler
    {0x1D159, 0x1D159},  // note without a head
    {0xE0100, 0xE01EF},  // further variation selectors
};

bool IsPlain(char byte) {
    return byte > ' ' && byte < 0x7F && byte != '\\';
}

/** Bytes at the beginning that stay as they are: visible ASCII and single blanks between it. */
size_t PlainLength(std::string_view text, size_t from) {
    size_t at = from;
    while (at < text.size()) {
        if (IsPlain(text[at])) {
            ++at;
        } else if (text[at] == ' ' && at > 0 && text[at - 1] != ' ' && at + 1 < text.size()) {
            ++at;
        } else {
            break;
        }
    }
    return at - from;
}

void AppendByte(std::string& out, char byte) {
    switch (byte) {
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            out += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
    }
}

/** Value of hexadecimal digits that fill the text; negative for any other text. */
int32_t HexValue(std::string_view digits) {
    return support::ParseNumber<int32_t>(digits, 16).value_or(-1);
}

/** Bytes of the escape that a text begins with; 0 when it begins with none. */
size_t EscapeLength(std::string_view text) {
    if (text.size() < 2 || text[0] != '\\') {
        return 0;
    }
    if (text[1] == 'x') {
        return text.size() >= 4 ? 4 : 0;
    }
    if (text.substr(1, 2) == "u{") {
        const size_t end = text.find('}');
        return end == std::string_view::npos ? 0 : end + 1;
    }
    return std::string_view("\\ntr").find(text[1]) == std::string_view::npos ? 0 : 2;
}

bool AppendCharacter(std::string& out, int32_t codepoint) {
    if (!utf8proc_codepoint_valid(codepoint)) {
        return false;
    }
    utf8proc_uint8_t bytes[4];
    const auto length = utf8proc_encode_char(codepoint, bytes);
    out.append(bytes, bytes + length);
    return true;
}

/** Appends what an escape stands for. */
bool AppendMeaning(std::string& out, std::string_view escape) {
    if (escape[1] == 'x') {
        const int32_t value = HexValue(escape.substr(2));
        out += static_cast<char>(value);
        return value >= 0;
    }
    if (escape[1] == 'u') {
        return AppendCharacter(out, HexValue(escape.substr(3, escape.size() - 4)));
    }
    constexpr std::string_view kNames = "\\ntr";
    out += "\\\n\t\r"[kNames.find(escape[1])];
    return true;
}

/** What is left whole when a text is shortened. */
struct Unit {
    size_t length; /**< bytes */
    size_t width;  /**< columns */
};

size_t CharacterWidth(int32_t codepoint) {
    return codepoint < 0 ? 1 : static_cast<size_t>(utf8proc_charwidth(codepoint));
}

Unit FirstUnit(std::string_view escaped) {
    const size_t escape = EscapeLength(escaped);
    if (escape != 0) {
        return {escape, escape};
    }
    const Utf8Character first = DecodeFirst(escaped);
    Unit unit{first.length, CharacterWidth(first.codepoint)};
    while (unit.length < escaped.size()) {
        const Utf8Character next = DecodeFirst(escaped.substr(unit.length));
        if (CharacterWidth(next.codepoint) != 0) {
            break;
        }
        unit.length += next.length;
    }
    return unit;
}

/** The longest beginning, in whole units, that fits into width columns; its length in bytes. */
size_t FittingHead(std::string_view escaped, size_t width) {
    size_t length = 0;
    while (length < escaped.size()) {
        const Unit unit = FirstUnit(escaped.substr(length));
        if (unit.width > width) {
            break;
        }
        width -= unit.width;
        length += unit.length;
    }
    return length;
}

/** Where the longest ending begins that fits into width columns. */
size_t FittingTail(std::string_view escaped, size_t width) {
    size_t left = DisplayWidth(escaped);
    size_t at = 0;
    while (left > width) {
        const Unit unit = FirstUnit(escaped.substr(at));
        left -= unit.width;
        at += unit.length;
    }
    return at;
}

}  // namespace

Utf8Character DecodeFirst(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
        return {first, 1};
    }
    utf8proc_int32_t codepoint = -1;
    const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                         static_cast<utf8proc_ssize_t>(text.size()), &codepoint);
    return length > 0 ? Utf8Character{codepoint, static_cast<size_t>(length)}
                      : Utf8Character{-1, 1};
}

bool IsTreacherous(int32_t codepoint) {
    switch (utf8proc_category(codepoint)) {
        case UTF8PROC_CATEGORY_ZS:
            return codepoint != ' ';
        case UTF8PROC_CATEGORY_CC:
        case UTF8PROC_CATEGORY_CF:
        case UTF8PROC_CATEGORY_CN:
        case UTF8PROC_CATEGORY_CS:
        case UTF8PROC_CATEGORY_ZL:
        case UTF8PROC_CATEGORY_ZP:
            return true;
        default:
            return std::any_of(std::begin(kInvisible), std::end(kInvisible),
                               [&](const auto& range) {
                                   return codepoint >= range.first && codepoint <= range.second;
                               });
    }
}

void AppendEscaped(std::string& out, std::string_view text, bool utf8) {
    for (size_t at = 0; at < text.size();) {
        const size_t plain = PlainLength(text, at);
        out.append(text, at, plain);
        at += plain;
        if (at == text.size()) {
            break;
        }
        const Utf8Character next = DecodeFirst(text.substr(at));
        if (next.codepoint < 0x80) {
            AppendByte(out, text[at]);
        } else if (!utf8 || next.codepoint == kEllipsis || IsTreacherous(next.codepoint)) {
            out += fmt::format("\\u{{{:X}}}", next.codepoint);
        } else {
            out.append(text, at, next.length);
        }
        at += next.length;
    }
}

std::string Escaped(std::string_view text, bool utf8) {
    std::string out;
    AppendEscaped(out, text, utf8);
    return out;
}

std::string Unescaped(std::string_view text) {
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const std::string_view escape = text.substr(at, EscapeLength(text.substr(at)));
        std::string meaning;
        if (!escape.empty() && AppendMeaning(meaning, escape)) {
            out += meaning;
            at += escape.size();
        } else {
            out += text[at++];
        }
    }
    return out;
}

std::string_view Ellipsis(bool utf8) {
    return utf8 ? "\xE2\x80\xA6" : "\\...";
}

size_t DisplayWidth(std::string_view escaped) {
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::all_of(escaped.begin(), escaped.end(), isAscii)) {
        return escaped.size();
    }
    size_t width = 0;
    for (size_t at = 0; at < escaped.size();) {
        const Unit unit = FirstUnit(escaped.substr(at));
        width += unit.width;
        at += unit.length;
    }
    return width;
}

std::string Shortened(std::string_view escaped, size_t width, bool utf8) {
    if (DisplayWidth(escaped) <= width) {
        return std::string(escaped);
    }
    const std::string_view ellipsis = Ellipsis(utf8);
    const size_t ellipsisWidth = DisplayWidth(ellipsis);
    if (width <= ellipsisWidth) {
        return std::string(utf8 ? ellipsis.substr(0, width * ellipsis.size())
                                : ellipsis.substr(0, width));
    }
    const size_t room = width - ellipsisWidth;
    std::string out(escaped.substr(0, FittingHead(escaped, room / 2)));
    out += ellipsis;
    out += escaped.substr(FittingTail(escaped, room - room / 2));
    return out;
}

}  // namespace cli
