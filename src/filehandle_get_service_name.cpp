// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/exception/exception.hpp>
#include <exception>

#include "src/filehandle_internal.h"
#include "support/descriptor.h"
#include "support/read_all.h"
#include "support/text.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"
#include "vorn/platform/string_bundle.h"

namespace VORN {
namespace FileHandle {

namespace {

constexpr char kSource[] = "filehandle_get_service_name";
constexpr char kSection[] = VORN_UNIT_SECTION;
constexpr char kDefaultReference[] = "service:internal_service";

/** Opens and reads the control-group file of a process. */
bool ControlGroupRead(const std::string& pid, std::string& text) {
    constexpr size_t kLimit = 1 << 20;  // which no such file reaches
    support::Descriptor file;
    try {
        file =
            support::Descriptor(open(("/proc/" + pid + "/cgroup").c_str(), O_RDONLY | O_CLOEXEC));
    } catch (const std::exception& error) {
        syslog(LOG_ERR, "%s:%d Failed to open pid %s cgroup, error=[%s]", kSource, 136, pid.c_str(),
               error.what());
        return false;
    }
    if (!file) {
        syslog(LOG_ERR, "%s:%d Failed to open pid %s cgroup", kSource, 141, pid.c_str());
        return false;
    }
    // What could be read counts, also before an error.
    support::ReadAll(file.Get(), kLimit, text, support::EndSign::kShortRead);
    return true;
}

/** Finds the names of services; remembers those of processes and of references. */
class ServiceNames {
public:
    ServiceNames() : default_(I18nTextGet(kDefaultReference)) {
        texts_[kDefaultReference] = default_;
    }

    /** The name for a process; valid until the next call. */
    const std::string& Of(const std::string& pid) {
        const auto known = processes_.find(pid);
        if (known != processes_.end()) {
            return known->second;
        }
        // A process without a name isn't remembered: its next file asks again.
        return Resolve(pid) ? processes_[pid] = name_ : default_;
    }

private:
    bool Resolve(const std::string& pid) {
        return ControlGroupRead(pid, text_) && ControlGroupUnitGet(text_, unit_) && NameOfUnit();
    }
    bool NameOfUnit() {
        name_.clear();
        return NameI18nGet(unit_, name_, texts_) || NameGet(unit_, name_);
    }

    const std::string default_;
    std::unordered_map<std::string, std::string> texts_;
    std::unordered_map<std::string, std::string> processes_;
    // Buffers, reused from process to process.
    std::string text_;
    std::string unit_;
    std::string name_;
};

bool UnitFileFind(const std::string& unit, std::string& path) {
    const std::string name = UnitFileName(unit);
    for (const char* directory : {"/usr/local/lib/systemd/system/", "/usr/lib/systemd/system/"}) {
        path.assign(directory).append(name);
        if (access(path.c_str(), F_OK) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool SplitString(const std::string& text, std::vector<std::string>& fields,
                 const std::string& separators) {
    const std::string trimmed = boost::algorithm::trim_copy(text);
    if (trimmed.empty()) {
        return true;
    }
    try {
        boost::algorithm::split(fields, trimmed, boost::algorithm::is_any_of(separators));
    } catch (const boost::exception&) {
        KLIBCErrSetEx(KLIBC_ERR_INTERNAL, kSource, 39);
        return false;
    }
    return true;
}

// 9:name=systemd:/sshd.slice/sshd.service
bool ControlGroupLineParse(std::string_view line, std::string& path) {
    // Most lines are of other hierarchies: not worth splitting.
    if (line.find(":" VORN_UNIT_HIERARCHY ":") == std::string_view::npos) {
        return false;
    }
    std::vector<std::string> fields;
    if (!SplitString(std::string(line), fields, ":") || fields.size() != 3 ||
        fields[1] != VORN_UNIT_HIERARCHY) {
        return false;
    }
    path = std::move(fields[2]);
    return true;
}

bool ControlGroupUnitGet(std::string_view text, std::string& unit) {
    std::string path;
    bool found = false;
    while (!found && !text.empty()) {
        found = ControlGroupLineParse(support::TakeLine(text), path);
    }
    // The path begins with "/": the first component is the empty text before it.
    std::vector<std::string> components;
    if (!found || !SplitString(path, components, "/") || components.size() < 2) {
        return false;
    }
    unit = std::move(components[1]);
    return true;
}

std::string UnitFileName(const std::string& unit) {
    static constexpr std::array<std::string_view, 11> kTypes = {
        "service", "socket", "device", "mount", "automount", "swap",
        "target",  "path",   "timer",  "slice", "scope"};
    const size_t dot = unit.rfind('.');
    if (dot != std::string::npos) {
        const std::string_view type = std::string_view(unit).substr(dot + 1);
        if (std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end()) {
            return unit;
        }
    }
    return unit + ".service";
}

bool UnitFileValueGet(const std::string& unit, const char* section, const char* key,
                      std::string& value) {
    try {
        std::string path;
        if (!UnitFileFind(unit, path)) {
            KLIBCErrSetEx(KLIBC_ERR_NOT_FOUND, kSource, 98);
            return false;
        }
        char buffer[1024] = {};
        const bool found =
            KLIBCFileGetSectionValue(path.c_str(), section, key, buffer, sizeof(buffer)) == 0;
        value = found ? buffer : "";
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::string I18nTextGet(const std::string& reference) {
    std::vector<std::string> fields;
    if (!SplitString(reference, fields, ":") || fields.size() != 2) {
        return {};
    }
    StringBundle bundle(fields[0].c_str(), nullptr, nullptr, nullptr, nullptr, nullptr);
    // A null text isn't guarded: std::string throws, and callers are told so.
    return bundle.Text(fields[1].c_str(), "");
}

bool NameGet(const std::string& unit, std::string& name) {
    std::string value;
    if (!UnitFileValueGet(unit, kSection, "Name", value)) {
        return false;
    }
    name = std::move(value);
    return !name.empty();
}

bool NameI18nGet(const std::string& unit, std::string& name,
                 std::unordered_map<std::string, std::string>& cache) {
    std::string reference;
    if (!UnitFileValueGet(unit, kSection, "NameI18n", reference)) {
        return false;
    }
    std::vector<std::string> fields;
    if (!SplitString(reference, fields, ":") || fields.size() != 2) {
        return false;
    }
    const auto known = cache.find(reference);
    if (known != cache.end()) {
        name = known->second;
        return true;
    }
    name = I18nTextGet(reference);
    if (name.empty()) {
        return false;
    }
    // In one step: short of memory, the caller's cache gets no reference without its text.
    cache.emplace(reference, name);
    return true;
}

int GetServiceName(std::list<OpenedFile>& list) {
    ServiceNames names;
    for (OpenedFile& file : list) {
        if (file.setServiceName(names.Of(RecordTexts::Column(file, MEMBER_PID))) < 0) {
            syslog(LOG_ERR, "%s:%d Failed to set service name for opened file", kSource, 277);
            return -1;
        }
    }
    return 0;
}

}  // namespace FileHandle
}  // namespace VORN
