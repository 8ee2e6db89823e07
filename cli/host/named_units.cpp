// SPDX-License-Identifier: MIT
#include "cli/host/named_units.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <unordered_map>

#include "support/folder.h"
#include "support/text.h"
#include "vorn/filehandle.h"
#include "vorn/platform/file.h"
#include "vorn/platform/string_bundle.h"

namespace cli {
namespace {

/** The variable that goes before all others where a language is chosen. */
constexpr const char* kLanguage = "LANGUAGE";

bool HasName(const std::string& path) {
    std::array<char, 1024> value{};
    return KLIBCFileGetSectionValue(path.c_str(), VORN_UNIT_SECTION, "Name", value.data(),
                                    static_cast<int>(value.size())) == 0;
}

void AppendNamed(const std::string& folder, std::vector<std::string>& units) {
    const support::Descriptor opened = support::OpenFolder(folder.c_str());
    if (!opened) {
        return;
    }
    support::VisitFolder(opened.Get(), [&](const dirent64& entry) {
        const std::string unit = entry.d_name;
        if (std::find(units.begin(), units.end(), unit) == units.end() &&
            HasName(folder + '/' + unit)) {
            units.push_back(unit);
        }
        return true;
    });
}

/** What processes without a named unit are shown as. */
std::string InternalName() {
    StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
    return bundle.Text("internal_service", "");
}

std::string EnglishName(const std::string& unit) {
    const InEnglish english;
    return DisplayName(unit);
}

std::string EnglishInternalName() {
    const InEnglish english;
    return InternalName();
}

}  // namespace

std::vector<std::string> NamedUnits() {
    std::vector<std::string> units;
    for (const char* folder : {"/usr/local/lib/systemd/system", "/usr/lib/systemd/system"}) {
        AppendNamed(folder, units);
    }
    return units;
}

std::string DisplayName(const std::string& unit) {
    std::unordered_map<std::string, std::string> texts;
    std::string name;
    if (!VORN::FileHandle::NameI18nGet(unit, name, texts)) {
        VORN::FileHandle::NameGet(unit, name);
    }
    return name;
}

std::vector<std::string> ServicesMeantBy(const std::string& text) {
    std::vector<std::string> names;
    for (const std::string& unit : NamedUnits()) {
        if (text == unit || text == unit.substr(0, unit.rfind('.')) || text == EnglishName(unit)) {
            names.push_back(DisplayName(unit));
        }
    }
    if (text == EnglishInternalName()) {
        names.push_back(InternalName());
    }
    return names;
}

std::map<std::string, std::string> EnglishServiceNames() {
    std::map<std::string, std::string> names;
    const std::string internal = InternalName();
    std::string englishInternal = EnglishInternalName();
    if (internal == englishInternal) {
        return names;  // it is English that is spoken
    }
    const auto add = [&](const std::string& shown, std::string english) {
        if (!shown.empty() && !english.empty() && shown != english) {
            names.emplace(shown, std::move(english));
        }
    };
    for (const std::string& unit : NamedUnits()) {
        add(DisplayName(unit), EnglishName(unit));
    }
    add(internal, std::move(englishInternal));
    return names;
}

InEnglish::InEnglish() : wasSet_(std::getenv(kLanguage) != nullptr) {
    before_ = wasSet_ ? std::getenv(kLanguage) : "";
    setenv(kLanguage, "en", 1);
}

InEnglish::~InEnglish() {
    if (wasSet_) {
        setenv(kLanguage, before_.c_str(), 1);
    } else {
        unsetenv(kLanguage);
    }
}

}  // namespace cli
