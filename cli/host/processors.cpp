// SPDX-License-Identifier: MIT
#include "cli/host/processors.h"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <thread>

#include "support/control_groups.h"
#include "support/mount_info.h"
#include "support/numbers.h"
#include "support/read_file.h"
#include "support/text.h"

namespace cli {
namespace {

std::optional<double> Share(std::optional<double> quota, std::optional<double> period) {
    return quota && period && *quota > 0 && *period > 0 ? std::optional<double>(*quota / *period)
                                                        : std::nullopt;
}

std::optional<double> ParseLine(std::string_view text) {
    return support::ParseNumber<double>(support::Trim(text));
}

std::optional<support::MountInfo> FindMount(std::string_view mounts, bool unified) {
    while (!mounts.empty()) {
        auto mount = support::ParseMountInfo(support::TakeLine(mounts));
        if (mount &&
            (unified ? mount->type == "cgroup2"
                     : mount->type == "cgroup" && support::HasPart(mount->options, "cpu"))) {
            return mount;
        }
    }
    return std::nullopt;
}

/** The folder of a group and those above it, up to the mount's. */
std::vector<std::string> FoldersOf(std::string path, const support::MountInfo& mount) {
    if (mount.root != "/") {
        // A container may see no more of the hierarchy than its own group.
        path = support::IsAtOrBelow(path, mount.root) ? path.substr(mount.root.size()) : "";
    }
    std::vector<std::string> folders;
    for (path.insert(0, mount.point); path.size() > mount.point.size();
         path.resize(path.rfind('/'))) {
        if (path.back() != '/') {
            folders.push_back(path);
        }
    }
    folders.push_back(mount.point);
    return folders;
}

std::optional<double> Limit(const std::string& folder, bool unified) {
    const auto read = [&](const char* name) { return support::ReadFile((folder + name).c_str()); };
    return unified ? ParseCpuMax(read("/cpu.max"))
                   : ParseCpuQuota(read("/cpu.cfs_quota_us"), read("/cpu.cfs_period_us"));
}

size_t Affinity() {
    cpu_set_t own;
    if (sched_getaffinity(0, sizeof(own), &own) == 0) {
        return static_cast<size_t>(CPU_COUNT(&own));
    }
    // More processors than the set has room for.
    return std::thread::hardware_concurrency();
}

}  // namespace

std::optional<double> ParseCpuMax(std::string_view text) {
    const std::string_view quota = support::TakeUntil(text, ' ');
    return Share(support::ParseNumber<double>(quota), ParseLine(text));
}

std::optional<double> ParseCpuQuota(std::string_view quota, std::string_view period) {
    return Share(ParseLine(quota), ParseLine(period));
}

std::vector<CpuGroup> CpuGroups(std::string_view cgroup, std::string_view mounts) {
    std::vector<CpuGroup> groups;
    for (const bool unified : {true, false}) {
        const auto path = support::GroupPath(cgroup, unified ? "" : "cpu");
        const auto mount = FindMount(mounts, unified);
        if (path && mount) {
            groups.push_back({unified, FoldersOf(std::string(*path), *mount)});
        }
    }
    return groups;
}

size_t UsableProcessors() {
    auto processors = static_cast<double>(Affinity());
    for (const CpuGroup& group : CpuGroups(support::ReadFile("/proc/self/cgroup"),
                                           support::ReadFile("/proc/self/mountinfo"))) {
        for (const std::string& folder : group.folders) {
            processors = std::min(processors, Limit(folder, group.unified).value_or(processors));
        }
    }
    return static_cast<size_t>(std::max(1.0, std::ceil(processors)));
}

}  // namespace cli
