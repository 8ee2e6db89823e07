// SPDX-License-Identifier: MIT
#include "platform/linux/services/unit_slices.h"

#include <map>
#include <set>

#include "platform/linux/files/folder_names.h"
#include "platform/linux/files/whole_file.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/units/section_value.h"
#include "support/text.h"
#include "vorn/platform/file.h"

namespace vornplatform {
namespace {

/** Where systemd looks for units of the host: a file hides those of its name further down. */
constexpr const char* kUnitFolders[] = {
    "/etc/systemd/system",           "/run/systemd/system",     "/run/systemd/generator",
    "/usr/local/lib/systemd/system", "/usr/lib/systemd/system", "/run/systemd/generator.late",
};

/** Where names of services are looked for, by the library as well. */
constexpr const char* kNameFolders[] = {"/usr/local/lib/systemd/system", "/usr/lib/systemd/system"};

/** Nothing for a file that isn't there; an empty text for one that is none, such as /dev/null. */
std::optional<std::string> ReadUnitFile(const std::string& path) {
    try {
        return ReadWholeFile(path);
    } catch (const HostError& error) {
        PassOnShortage(error);
        return std::string();
    }
}

std::vector<std::string> NamesIn(const std::string& folder) {
    try {
        return ReadFolderNames(folder, FolderEntries::kAll).value_or(std::vector<std::string>());
    } catch (const HostError& error) {
        PassOnShortage(error);
        return {};
    }
}

/** A unit's texts in the order in which they count; of one name the first hides the others. */
std::vector<std::string> TextsOf(const std::vector<std::string>& names) {
    std::optional<std::string> unit;
    std::map<std::string, std::string> dropIns;
    for (const std::string& name : names) {
        for (const char* folder : kUnitFolders) {
            const std::string path = std::string(folder) + '/' + name;
            unit = unit ? unit : ReadUnitFile(path);
            for (const std::string& dropIn : NamesIn(path + ".d")) {
                if (support::EndsWith(dropIn, ".conf")) {
                    dropIns.emplace(dropIn, path + ".d/" + dropIn);
                }
            }
        }
    }
    std::vector<std::string> texts = {unit.value_or(std::string())};
    for (const auto& [name, path] : dropIns) {
        texts.push_back(ReadUnitFile(path).value_or(std::string()));
    }
    return texts;
}

}  // namespace

std::string TemplateOf(std::string_view unit) {
    const size_t at = unit.find('@');
    const size_t dot = unit.rfind('.');
    if (at == std::string_view::npos || dot == std::string_view::npos || dot <= at + 1) {
        return {};
    }
    return std::string(unit.substr(0, at + 1)) + std::string(unit.substr(dot));
}

const std::string& UnitSlices::Of(const std::string& service) {
    const auto [known, isNew] = slices_.try_emplace(service);
    if (isNew) {
        std::vector<std::string> names = {service};
        if (std::string shared = TemplateOf(service); !shared.empty()) {
            names.push_back(std::move(shared));
        }
        for (const std::string& text : TextsOf(names)) {
            if (auto slice = SectionValue(text, "Service", "Slice")) {
                known->second = *slice;
            }
        }
    }
    return known->second;
}

bool UnitSlices::NamesService(const std::string& slice) {
    const auto [known, isNew] = named_.try_emplace(slice, false);
    if (isNew && !slice.empty()) {
        for (const char* folder : kNameFolders) {
            if (const auto text = ReadUnitFile(std::string(folder) + '/' + slice)) {
                known->second = SectionValue(*text, VORN_UNIT_SECTION, "Name").has_value() ||
                                SectionValue(*text, VORN_UNIT_SECTION, "NameI18n").has_value();
                break;
            }
        }
    }
    return known->second;
}

std::vector<std::string> UnitSlices::Installed() {
    std::map<std::string, std::string> units;
    for (const char* folder : kUnitFolders) {
        for (const std::string& name : NamesIn(folder)) {
            if (support::EndsWith(name, ".service")) {
                units.emplace(name, std::string(folder) + '/' + name);
            }
        }
    }
    std::vector<std::string> installed;
    for (const auto& [name, path] : units) {
        if (const auto text = ReadUnitFile(path); text && !text->empty()) {
            installed.push_back(name);
        }
    }
    return installed;
}

}  // namespace vornplatform
