// SPDX-License-Identifier: MIT
#include "platform/linux/services/process_groups.h"

#include <utility>

#include "platform/linux/processes/proc_file.h"
#include "platform/linux/processes/process_reader.h"
#include "support/control_groups.h"
#include "support/text.h"
#include "vorn/platform/file.h"

namespace vornplatform {
namespace {

constexpr size_t kLimit = size_t{1} << 20;

/** Calls visit with each component of a path. */
template <typename Visit>
void VisitComponents(std::string_view path, const Visit& visit) {
    while (!path.empty()) {
        const std::string_view component = support::TakeUntil(path, '/');
        if (!component.empty()) {
            visit(component);
        }
    }
}

}  // namespace

ProcessGroups ParseProcessGroups(std::string_view text) {
    return {std::optional<std::string>(support::GroupPath(text, VORN_UNIT_HIERARCHY)),
            std::optional<std::string>(support::GroupPath(text, ""))};
}

std::string_view SliceOf(std::string_view path) {
    support::ConsumePrefix(path, "/");
    return support::TakeUntil(path, '/');
}

std::string_view ServiceOf(std::string_view path) {
    std::string_view service;
    VisitComponents(path, [&service](std::string_view component) {
        if (support::EndsWith(component, ".service")) {
            service = component;
        }
    });
    return service;
}

std::string_view SessionScopeOf(std::string_view path) {
    std::string_view session;
    if (SliceOf(path) == "user.slice") {
        VisitComponents(path, [&session](std::string_view component) {
            if (support::StartsWith(component, "session-") &&
                support::EndsWith(component, ".scope")) {
                session = component;
            }
        });
    }
    return session;
}

const std::string& GroupedProcess::Path() const {
    static const std::string kRoot = "/";
    if (groups.unified && *groups.unified != kRoot) {
        return *groups.unified;
    }
    return groups.named ? *groups.named : kRoot;
}

std::vector<GroupedProcess> ReadGroupedProcesses() {
    std::vector<GroupedProcess> processes;
    for (const pid_t pid : ListProcesses()) {
        if (const auto text = ReadProcFile("/proc/" + std::to_string(pid) + "/cgroup", kLimit)) {
            processes.push_back({pid, ParseProcessGroups(*text)});
        }
    }
    return processes;
}

}  // namespace vornplatform
