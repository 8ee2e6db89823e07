// SPDX-License-Identifier: MIT
// The variables that name a language. Lines: locale, LANGUAGE, LC_ALL, LC_MESSAGES, LANG.

#include <algorithm>
#include <array>
#include <string>

#include "fuzz/text_input.h"
#include "platform/linux/texts/language_folders.h"
#include "support/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text = TextOf(data, size);
    const std::string locale(support::TakeLine(text));
    constexpr std::array<std::string_view, 4> kNames = {"LANGUAGE", "LC_ALL", "LC_MESSAGES",
                                                        "LANG"};
    std::array<std::string, kNames.size()> values;
    for (std::string& value : values) {
        value = support::TakeLine(text);
    }
    const auto lookup = [&](const char* name) -> const char* {
        const auto found = std::find(kNames.begin(), kNames.end(), name);
        const std::string& value = values[static_cast<std::size_t>(found - kNames.begin())];
        return value.empty() ? nullptr : value.c_str();
    };
    for (const std::string& folder : vornplatform::LanguageFolders(locale, lookup)) {
        // It becomes a part of a path.
        Must(!folder.empty() && folder.find_first_of("/.") == std::string::npos);
    }
    return 0;
}
