#include "platform/linux/texts/languages.h"

#include <algorithm>
#include <utility>

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

std::string& Folder() {
    static std::string folder = VORN_TEXTS_FOLDER;
    return folder;
}

}  // namespace

std::vector<std::string> LanguageFolders(std::string_view locale,
                                         const EnvironmentLookup& environment) {
    const std::string chosen = IsUntranslated(locale) ? FirstSet(environment) : std::string(locale);
    std::vector<std::string> folders;
    std::string_view rest = chosen;
    while (!rest.empty() && AppendFolders(rest.substr(0, rest.find(':')), folders)) {
        rest.remove_prefix(std::min(rest.find(':'), rest.size() - 1) + 1);
    }
    return folders;
}

const std::string& TextsFolder() {
    return Folder();
}

void UseTextsFolder(std::string folder) {
    Folder() = std::move(folder);
}

}  // namespace vornplatform
