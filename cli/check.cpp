#include "check.h"

#include <fmt/format.h>

#include <fstream>
#include <sstream>

#include "rights.h"
#include "volumes.h"

namespace cli {
namespace {

Finding ExamineRights() {
    const std::string missing = MissingRights(OwnRights());
    if (missing.empty()) {
        return {"rights", State::kOk, "every process can be examined", ""};
    }
    return {"rights", State::kMissing, missing,
            "run as root, or give CAP_SYS_PTRACE and CAP_DAC_READ_SEARCH"};
}

Finding ExamineControlGroups() {
    std::ifstream file("/proc/self/cgroup");
    std::ostringstream text;
    text << file.rdbuf();
    if (HasSystemdHierarchy(text.str())) {
        return {"control groups", State::kOk, "the hierarchy name=systemd is mounted", ""};
    }
    return {"control groups", State::kMissing,
            "no hierarchy name=systemd: every service shows as the internal one",
            "boot with systemd.unified_cgroup_hierarchy=0 on the kernel's command line"};
}

Finding ExamineVolumes() {
    const std::vector<std::string> volumes = MountedVolumes();
    if (!volumes.empty()) {
        return {"volumes", State::kOk,
                fmt::format("{} mounted: {}", volumes.size(), fmt::join(volumes, ", ")), ""};
    }
    return {"volumes", State::kMissing, "no volume is mounted",
            "mount the data file systems on /volume1, /volume2 and so on"};
}

}  // namespace

std::string_view StateName(State state) {
    switch (state) {
        case State::kOk:
            return "ok";
        case State::kWarning:
            return "warning";
        case State::kMissing:
            break;
    }
    return "missing";
}

// 1:name=systemd:/user.slice/user-0.slice/session-1.scope
bool HasSystemdHierarchy(std::string_view cgroup) {
    return cgroup.find(":name=systemd:") != std::string_view::npos;
}

std::vector<Finding> ExamineHost() {
    std::vector<Finding> findings = {ExamineRights(), ExamineControlGroups(), ExamineVolumes(),
                                     ExamineShares(), ExamineUnits(),         ExamineTexts()};
    for (Finding& finding : ExamineConnections()) {
        findings.push_back(std::move(finding));
    }
    return findings;
}

}  // namespace cli
