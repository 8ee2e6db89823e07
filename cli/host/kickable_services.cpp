// SPDX-License-Identifier: MIT
#include "cli/host/kickable_services.h"

#include <fmt/format.h>

#include "cli/failure.h"
#include "cli/host/named_units.h"
#include "vorn/filehandle.h"
#include "vorn/platform/error.h"
#include "vorn/platform/service.h"

// An appliance's platform may lack it.
#pragma weak VORNServiceStateGet

namespace cli {
namespace {

std::optional<KickableService::State> StateOf(const char* unit) {
    if (VORNServiceStateGet == nullptr) {
        return std::nullopt;
    }
    const int state = VORNServiceStateGet(unit);
    if (state < 0) {
        throw Failure(
            fmt::format("can't tell whether {} runs (error 0x{:04X})", unit, KLIBCErrGet()));
    }
    return KickableService::State{(state & VORN_SERVICE_INSTALLED) != 0,
                                  (state & VORN_SERVICE_RUNNING) != 0,
                                  (state & VORN_SERVICE_ELSEWHERE) != 0};
}

}  // namespace

std::vector<KickableService> KickableServices() {
    std::vector<KickableService> services;
    for (const char* unit : VORN::FileHandle::gszKickableServiceTable) {
        std::string name = DisplayName(unit);
        if (!name.empty()) {
            services.push_back({std::move(name), unit, StateOf(unit)});
        }
    }
    return services;
}

std::map<std::string, std::string> KickableUnits() {
    std::map<std::string, std::string> names;
    for (const char* unit : VORN::FileHandle::gszKickableServiceTable) {
        std::string name = DisplayName(unit);
        if (!name.empty()) {
            names.emplace(unit, std::move(name));
        }
    }
    return names;
}

std::string StateText(const KickableService& service) {
    if (!service.state) {
        return {};
    }
    if (service.state->running) {
        return "running";
    }
    if (service.state->elsewhere) {
        return "running outside of its slice";
    }
    return service.state->installed ? "installed" : "not installed";
}

}  // namespace cli
