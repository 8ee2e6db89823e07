// SPDX-License-Identifier: MIT
#include "platform/linux/shares/samba_dump.h"

#include <algorithm>
#include <utility>

#include "support/text.h"

namespace vornplatform {
namespace {

/** Debian's value; testparm prints it only where it is another one. */
constexpr char kUsershareFolder[] = "/var/lib/samba/usershares";

struct Section {
    std::string name;
    std::string path;
    bool printable = false;
    bool available = true;
};

struct Setting {
    std::string name;
    std::string_view value;
};

/** Samba ignores case and blanks in names. */
std::string Fold(std::string_view name) {
    std::string folded;
    for (const char c : name) {
        if (c != ' ' && c != '\t') {
            folded += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
        }
    }
    return folded;
}

/** "[name]", without the brackets. */
std::optional<std::string_view> SectionName(std::string_view line) {
    if (line.size() < 2 || line.front() != '[' || line.back() != ']') {
        return std::nullopt;
    }
    return line.substr(1, line.size() - 2);
}

std::optional<Setting> ParseSetting(std::string_view line) {
    const size_t equals = line.find('=');
    if (line.empty() || line.front() == '#' || line.front() == ';' ||
        equals == std::string_view::npos) {
        return std::nullopt;
    }
    return Setting{Fold(line.substr(0, equals)), support::Trim(line.substr(equals + 1))};
}

bool IsReserved(const std::string& section) {
    const std::string name = Fold(section);
    return name.empty() || name == "global" || name == "homes" || name == "printers" ||
           name == "print$";
}

void Keep(Section& section, SambaDump& dump) {
    std::string path = WrittenPath(section.path);
    if (!path.empty() && !section.printable && section.available && !IsReserved(section.name)) {
        dump.shares.push_back({section.name, std::move(path), "Samba"});
    }
}

void ApplyToShare(const Setting& setting, Section& section) {
    if (setting.name == "path") {
        section.path = setting.value;
    } else if (setting.name == "printable") {
        section.printable = Fold(setting.value) == "yes";
    } else if (setting.name == "available") {
        section.available = Fold(setting.value) != "no";
    }
}

/** "usershare max shares = 0" forbids what "usershare path" would allow. */
void ApplyToGlobal(const Setting& setting, SambaDump& dump, bool& forbidden) {
    if (setting.name == "usersharepath") {
        dump.usershareFolder = setting.value;
    } else if (setting.name == "usersharemaxshares") {
        forbidden = setting.value == "0";
    }
}

}  // namespace

std::optional<SambaDump> ParseSambaDump(std::string_view text) {
    // Names reach callers as C strings: one that is cut there would not be found again.
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    SambaDump dump;
    dump.usershareFolder = kUsershareFolder;
    Section section;
    bool global = false;
    bool forbidden = false;
    while (!text.empty()) {
        const std::string_view line = support::Trim(support::TakeLine(text));
        if (const auto name = SectionName(line)) {
            Keep(section, dump);
            section = Section();
            section.name = *name;
            global = global || Fold(*name) == "global";
        } else if (const auto setting = ParseSetting(line)) {
            if (Fold(section.name) == "global") {
                ApplyToGlobal(*setting, dump, forbidden);
            } else {
                ApplyToShare(*setting, section);
            }
        }
    }
    Keep(section, dump);
    if (forbidden) {
        dump.usershareFolder.clear();
    }
    return global ? std::optional<SambaDump>(std::move(dump)) : std::nullopt;
}

std::vector<std::string> IncludedFiles(std::string_view config) {
    std::vector<std::string> files;
    while (!config.empty()) {
        const auto setting = ParseSetting(support::Trim(support::TakeLine(config)));
        if (!setting || (setting->name != "include" && setting->name != "configfile")) {
            continue;
        }
        std::string_view path = setting->value;
        if (path.size() >= 2 && path.front() == '"' && path.back() == '"') {
            path = path.substr(1, path.size() - 2);
        }
        if (!path.empty() && path.front() == '/' && path.find('%') == std::string_view::npos) {
            files.emplace_back(path);
        }
    }
    return files;
}

std::optional<Share> ParseUsershare(std::string_view fileName, std::string_view text) {
    const std::string_view version = support::Trim(support::TakeLine(text));
    if (version != "#VERSION 1" && version != "#VERSION 2") {
        return std::nullopt;
    }
    Share share{std::string(fileName), std::string(), "Samba"};
    while (!text.empty()) {
        std::string_view line = support::TakeLine(text);
        support::ConsumeSuffix(line, "\r");
        if (support::ConsumePrefix(line, "path=")) {
            share.path = WrittenPath(line);
        } else if (support::ConsumePrefix(line, "sharename=") && !line.empty()) {
            share.name = line;
        }
    }
    return share.path.empty() ? std::nullopt : std::optional<Share>(std::move(share));
}

}  // namespace vornplatform
