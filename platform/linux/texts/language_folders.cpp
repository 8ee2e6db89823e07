// SPDX-License-Identifier: MIT
#include "platform/linux/texts/language_folders.h"

#include <algorithm>

#include "support/text.h"

namespace vornplatform {
namespace {

constexpr std::string_view kNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";

bool IsUntranslated(std::string_view locale) {
    return locale == "C" || locale == "POSIX";
}

std::string FirstSet(const EnvironmentLookup& environment) {
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = environment(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    return {};
}

void AppendOnce(std::vector<std::string>& folders, std::string_view name) {
    if (std::find(folders.begin(), folders.end(), name) == folders.end()) {
        folders.emplace_back(name);
    }
}

// Returns false when the locale means English, so that nothing after it is asked.
bool AppendFolders(std::string_view locale, std::vector<std::string>& folders) {
    const std::string_view name = locale.substr(0, locale.find_first_of(".@"));
    if (IsUntranslated(name) || name == "en") {
        return false;
    }
    // The name becomes part of a path.
    if (name.empty() || name.find_first_not_of(kNameCharacters) != std::string_view::npos) {
        return true;
    }
    AppendOnce(folders, name);
    const std::size_t territory = name.find('_');
    return territory == std::string_view::npos || AppendFolders(name.substr(0, territory), folders);
}

}  // namespace

std::vector<std::string> LanguageFolders(std::string_view locale,
                                         const EnvironmentLookup& environment) {
    const std::string chosen = IsUntranslated(locale) ? FirstSet(environment) : std::string(locale);
    std::vector<std::string> folders;
    std::string_view rest = chosen;
    while (!rest.empty() && AppendFolders(support::TakeUntil(rest, ':'), folders)) {
    }
    return folders;
}

}  // namespace vornplatform
