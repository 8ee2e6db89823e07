// SPDX-License-Identifier: MIT
#include "cli/question/service_names.h"

#include <string>
#include <unordered_map>

#include "groups/service_units.h"
#include "support/read_file.h"

namespace cli {
namespace {

namespace fh = VORN::FileHandle;

/** Display names of the units that processes belong to, each asked for once. */
class UnitNames {
public:
    /** Empty for a process whose unit has no name. */
    const std::string& Of(const std::string& pid) {
        const std::string unit = units_.OfProcess(pid);
        const auto [known, isNew] = names_.try_emplace(unit);
        if (isNew && !unit.empty() && !fh::NameI18nGet(unit, known->second, texts_)) {
            fh::NameGet(unit, known->second);
        }
        return known->second;
    }

private:
    groups::ServiceUnits units_;
    std::unordered_map<std::string, std::string> names_;
    std::unordered_map<std::string, std::string> texts_;
};

/** Where the library finds no unit: those without a name get its name of the internal service. */
int NameByUnits(LibraryFiles& processes) {
    if (processes.empty()) {
        return 0;
    }
    LibraryFiles internal(1, processes.front());
    if (fh::GetServiceName(internal) < 0) {
        return -1;
    }
    UnitNames names;
    for (OpenedFile& process : processes) {
        const std::string& name = names.Of(process.getPidStr());
        process.setServiceName(name.empty() ? internal.front().getService() : name);
    }
    return 0;
}

}  // namespace

int NameServices(LibraryFiles& processes) {
    return groups::HasServiceHierarchy(support::ReadFile("/proc/self/cgroup"))
               ? fh::GetServiceName(processes)
               : NameByUnits(processes);
}

}  // namespace cli
