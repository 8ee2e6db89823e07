// SPDX-License-Identifier: MIT
#include "cli/host/host_check.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "cli/host/kernel/source_finding.h"
#include "cli/host/named_units.h"
#include "cli/host/rights.h"
#include "cli/host/volumes.h"
#include "vorn/platform/string_bundle.h"

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

Finding ExamineVolumes() {
    const std::vector<std::string> volumes = MountedVolumes();
    if (!volumes.empty()) {
        return {"volumes", State::kOk,
                fmt::format("{} mounted: {}", volumes.size(), fmt::join(volumes, ", ")), ""};
    }
    return {"volumes", State::kMissing, "no volume is mounted",
            "mount the data file systems on /volume1, /volume2 and so on"};
}

std::string Language() {
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return fmt::format("{}={}", name, value);
        }
    }
    return "no language is set";
}

Finding ExamineUnits() {
    const size_t named = NamedUnits().size();
    if (named > 0) {
        return {"unit files", State::kOk, fmt::format("{} with a display name", named), ""};
    }
    return {"unit files", State::kMissing,
            "no unit file has a display name: every service shows as the internal one",
            "install the slices that come with vorn-openfiles"};
}

Finding ExamineTexts() {
    StringBundle bundle("service", nullptr, nullptr, nullptr, nullptr, nullptr);
    const std::string text = bundle.Text("internal_service", "");
    if (text.empty()) {
        return {"texts", State::kMissing, "no text bundle 'service'",
                "install the texts that come with vorn-openfiles"};
    }
    return {"texts", State::kOk,
            fmt::format("the internal service is called \"{}\" ({})", text, Language()), ""};
}

/** What a platform that says nothing of itself can be asked for all the same. */
std::vector<Finding> InterfaceFindings() {
    return {ExamineRights(), ExamineVolumes()};
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

std::vector<Finding> ExamineHost() {
    auto findings = HostFindings();
    if (!findings) {
        findings = InterfaceFindings();
    }
    findings->push_back(ExamineUnits());
    findings->push_back(ExamineTexts());
    findings->push_back(ExamineSource());
    return std::move(*findings);
}

}  // namespace cli
