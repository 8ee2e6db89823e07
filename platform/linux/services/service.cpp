// SPDX-License-Identifier: MIT
#include "vorn/platform/service.h"

#include <algorithm>
#include <exception>

#include "platform/linux/services/process_groups.h"
#include "platform/linux/services/unit_slices.h"
#include "platform/linux/support/fault.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "service";

/** In either hierarchy: whoever brings names beside v2 fills only that one. */
bool RunsIn(const GroupedProcess& process, const std::string& slice) {
    const auto isBelow = [&slice](const std::optional<std::string>& path) {
        return path && SliceOf(*path) == slice;
    };
    return isBelow(process.groups.unified) || isBelow(process.groups.named);
}

int StateOf(const std::string& slice) {
    UnitSlices slices;
    int state = 0;
    for (const std::string& service : UnitSlices::Installed()) {
        state |= slices.Of(service) == slice ? VORN_SERVICE_INSTALLED : 0;
    }
    for (const GroupedProcess& process : ReadGroupedProcesses()) {
        if (RunsIn(process, slice)) {
            state |= VORN_SERVICE_RUNNING;
        } else if (const std::string_view service = ServiceOf(process.Path());
                   !service.empty() && slices.Of(std::string(service)) == slice) {
            state |= VORN_SERVICE_ELSEWHERE;
        }
    }
    return state;
}

}  // namespace
}  // namespace vornplatform

int VORNServiceStateGet(const char* unit) try {
    using namespace vornplatform;
    if (unit == nullptr || *unit == '\0') {
        return Fail(KLIBC_ERR_BAD_PARAM, kSource, __LINE__);
    }
    return StateOf(unit);
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, vornplatform::kSource, __LINE__);
}
