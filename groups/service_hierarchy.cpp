// SPDX-License-Identifier: MIT
#include "groups/service_hierarchy.h"

#include <linux/capability.h>

#include <unistd.h>
#include <array>
#include <climits>

#include "groups/service_units.h"
#include "support/mount_info.h"
#include "support/process_text.h"
#include "support/read_file.h"
#include "support/text.h"
#include "vorn/platform/file.h"

namespace groups {
namespace {

/** What the kernel calls its first namespace of control groups, on every host. */
constexpr std::string_view kFirstNamespace = "cgroup:[4026531835]";

bool RefusesNamed(std::string_view commandLine) {
    commandLine = support::Trim(commandLine);
    while (!commandLine.empty()) {
        std::string_view parameter = support::TakeUntil(commandLine, ' ');
        if (support::ConsumePrefix(parameter, "cgroup_no_v1=") &&
            support::HasPart(parameter, "named")) {
            return true;
        }
    }
    return false;
}

/** Whether a process may become able to mount; true as well where that is unknown. */
bool MayMount(std::string_view status) {
    const auto set = support::ParseCapabilities(status, "CapBnd:");
    return !set || support::HasCapability(*set, CAP_SYS_ADMIN);
}

std::string TargetOf(const char* link) {
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlink(link, target.data(), target.size());
    return size > 0 ? std::string(target.data(), static_cast<std::size_t>(size)) : "";
}

}  // namespace

ServiceHierarchy JudgeHierarchy(const HierarchyFacts& facts) {
    if (HasServiceHierarchy(facts.groups)) {
        return ServiceHierarchy::kThere;
    }
    if (RefusesNamed(facts.commandLine)) {
        return ServiceHierarchy::kRefused;
    }
    const bool isFirst =
        facts.namespaceOfGroups.empty() || facts.namespaceOfGroups == kFirstNamespace;
    return isFirst && MayMount(facts.init) ? ServiceHierarchy::kAbsent
                                           : ServiceHierarchy::kConfined;
}

ServiceHierarchy FindHierarchy() {
    return JudgeHierarchy({support::ReadFile("/proc/self/cgroup"),
                           support::ReadFile("/proc/cmdline"), support::ReadFile("/proc/1/status"),
                           TargetOf("/proc/self/ns/cgroup")});
}

std::string_view ReasonOf(ServiceHierarchy hierarchy) {
    switch (hierarchy) {
        case ServiceHierarchy::kThere:
            break;
        case ServiceHierarchy::kRefused:
            return "the kernel was started with cgroup_no_v1=named";
        case ServiceHierarchy::kConfined:
            return "it can't be mounted in a container";
        case ServiceHierarchy::kAbsent:
            return "it is not mounted";
    }
    return "";
}

// 56 47 0:36 / /sys/fs/cgroup/systemd rw,relatime shared:9 - cgroup cgroup rw,xattr,name=systemd
std::vector<std::string> HierarchyMounts(std::string_view mounts) {
    std::vector<std::string> points;
    while (!mounts.empty()) {
        auto mount = support::ParseMountInfo(support::TakeLine(mounts));
        if (mount && mount->type == "cgroup" &&
            support::HasPart(mount->options, VORN_UNIT_HIERARCHY)) {
            points.push_back(std::move(mount->point));
        }
    }
    return points;
}

}  // namespace groups
