// SPDX-License-Identifier: MIT
#include "groups/service_units.h"

#include <systemd/sd-login.h>

#include <cstdlib>

#include "support/control_groups.h"
#include "support/owner.h"
#include "support/read_file.h"
#include "support/text.h"
#include "vorn/platform/file.h"

namespace groups {

bool HasServiceHierarchy(std::string_view cgroup) {
    return support::GroupPath(cgroup, VORN_UNIT_HIERARCHY).has_value();
}

std::optional<std::string_view> UnifiedPath(std::string_view cgroup) {
    auto path = support::GroupPath(cgroup, "");
    if (path) {
        path->remove_prefix(1);
    }
    return path;
}

std::string_view SessionOf(std::string_view path) {
    if (support::TakeUntil(path, '/') != "user.slice") {
        return {};
    }
    while (!path.empty()) {
        std::string_view unit = support::TakeUntil(path, '/');
        if (support::ConsumePrefix(unit, "session-") && support::ConsumeSuffix(unit, ".scope")) {
            return unit;
        }
    }
    return {};
}

std::string ServiceOfSession(const std::string& session) {
    char* service = nullptr;
    const int error = sd_session_get_service(session.c_str(), &service);
    const support::Owner<char, std::free> owner(service);
    return error < 0 || service == nullptr ? "" : service;
}

std::string ServiceUnits::OfPath(std::string_view path) {
    const std::string session(SessionOf(path));
    if (session.empty()) {
        return std::string(support::TakeUntil(path, '/'));
    }
    const auto [known, isNew] = services_.try_emplace(session);
    if (isNew) {
        known->second = askService_(session);
    }
    return known->second.empty() ? "" : known->second + ".slice";
}

std::string ServiceUnits::OfProcess(const std::string& pid) {
    const std::string cgroup = support::ReadFile(("/proc/" + pid + "/cgroup").c_str());
    const auto path = UnifiedPath(cgroup);
    return path ? OfPath(*path) : "";
}

}  // namespace groups
