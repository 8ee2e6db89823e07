#include "cli/question/enumeration.h"

#include <string>
#include <unordered_map>

#include "cli/host/host_file.h"
#include "cli/host/service_units.h"

namespace cli {
namespace {

namespace fh = VORN::FileHandle;

/** Display names of the services that processes belong to, each asked for once. */
class ServiceNames {
public:
    /** Empty for a process whose unit has no name. */
    const std::string& Of(const std::string& pid) {
        const auto [process, isNew] = processes_.try_emplace(pid);
        if (isNew) {
            process->second = NameOf(units_.OfProcess(pid));
        }
        return process->second;
    }

private:
    std::string NameOf(const std::string& unit) {
        const auto [known, isNew] = names_.try_emplace(unit);
        if (isNew && !unit.empty() && !fh::NameI18nGet(unit, known->second, texts_)) {
            fh::NameGet(unit, known->second);
        }
        return known->second;
    }

    ServiceUnits units_;
    std::unordered_map<std::string, std::string> processes_;
    std::unordered_map<std::string, std::string> names_;
    std::unordered_map<std::string, std::string> texts_;
};

/** The others keep the name that the library gave them, that of the internal service. */
void NameServices(std::list<OpenedFile>& files) {
    ServiceNames names;
    for (OpenedFile& file : files) {
        const std::string& name = names.Of(file.getPidStr());
        if (!name.empty()) {
            file.setServiceName(name);
        }
    }
}

/** The library's steps, with names before the connections, some of which go by the service. */
int EnumerateNamed(std::list<OpenedFile>& files, fh::ENUM_BY by) {
    if (fh::GetProcOpenedFileInVolume(files) < 0 || fh::FilterPath(files, by) < 0 ||
        fh::GetServiceName(files) < 0) {
        return -1;
    }
    NameServices(files);
    if (fh::UpdateConnectionInfo(files) < 0) {
        return -1;
    }
    fh::VORNSortOpenedFile(files, "path", true);
    fh::EraseAdjacentDuplicates(files);
    return fh::LabelHidden(files) < 0 ? -1 : fh::LabelFolder(files);
}

}  // namespace

int EnumerateFiles(std::list<OpenedFile>& files, fh::ENUM_BY by) {
    return HasServiceHierarchy(ReadHostFile("/proc/self/cgroup")) ? fh::EnumOpenedFile(files, by)
                                                                  : EnumerateNamed(files, by);
}

}  // namespace cli
