// SPDX-License-Identifier: MIT
// Any bytes as harmless text: what they become, that they come back, and how much room they take.

#include <string>

#include "cli/text/escape.h"
#include "fuzz/text_input.h"

namespace {

void CheckHarmless(std::string_view escaped, bool utf8) {
    for (std::size_t at = 0; at < escaped.size();) {
        const cli::Utf8Character next = cli::DecodeFirst(escaped.substr(at));
        Must(next.codepoint >= 0 && !cli::IsTreacherous(next.codepoint));
        Must(utf8 || next.codepoint < 0x80);
        at += next.length;
    }
    // Two blanks are the gap between columns.
    Must(escaped.find("  ") == std::string_view::npos);
}

void CheckShortened(std::string_view escaped, std::size_t width, bool utf8) {
    const std::string shortened = cli::Shortened(escaped, width, utf8);
    Must(cli::DisplayWidth(shortened) <= width);
    CheckHarmless(shortened, utf8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = TextOf(data, size);
    for (const bool utf8 : {false, true}) {
        const std::string escaped = cli::Escaped(text, utf8);
        CheckHarmless(escaped, utf8);
        Must(cli::Unescaped(escaped) == text);
        for (const std::size_t width : {0, 1, 2, 5, 6, 20, 77}) {
            CheckShortened(escaped, width, utf8);
        }
    }
    cli::Unescaped(text);
    return 0;
}
