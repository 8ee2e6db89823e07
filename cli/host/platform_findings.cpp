// SPDX-License-Identifier: MIT
#include "cli/host/platform_findings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdlib>

#include "cli/failure.h"
#include "cli/host/rights.h"
#include "support/owner.h"
#include "vorn/platform/error.h"
#include "vorn/platform/finding.h"

// An appliance's platform may lack it.
#pragma weak VORNFindingGet

namespace cli {
namespace {

State StateOf(int state) {
    return state == VORN_FINDING_OK        ? State::kOk
           : state == VORN_FINDING_WARNING ? State::kWarning
                                           : State::kMissing;
}

std::optional<std::vector<Finding>> Ask(int scope) {
    if (VORNFindingGet == nullptr) {
        return std::nullopt;
    }
    VORN_FINDING* records = nullptr;
    const int count = VORNFindingGet(scope, &records);
    const support::Owner<VORN_FINDING, std::free> owner(records);
    if (count < 0) {
        throw Failure(
            fmt::format("can't tell what the answer lacks (error 0x{:04X})", KLIBCErrGet()));
    }
    std::vector<Finding> findings;
    for (const VORN_FINDING* each = records; each != records + count; ++each) {
        findings.push_back({each->szSubject, StateOf(each->state), each->szText, each->szAdvice,
                            each->costsAnswers != 0});
    }
    return findings;
}

std::string Joined(const std::vector<std::string>& reasons) {
    return fmt::format("{}", fmt::join(reasons, "; "));
}

std::vector<std::string> Reasons(const std::vector<Finding>& findings, std::string_view subject) {
    std::vector<std::string> reasons;
    for (const Finding& finding : findings) {
        if (finding.costsAnswers && (subject.empty() || finding.subject == subject)) {
            reasons.push_back(finding.text);
        }
    }
    return reasons;
}

}  // namespace

std::optional<std::vector<Finding>> HostFindings() {
    return Ask(VORN_FINDINGS_OF_HOST);
}

std::vector<std::string> IncompleteReasons() {
    if (const auto findings = Ask(VORN_FINDINGS_OF_ANSWERS)) {
        return Reasons(*findings, {});
    }
    const std::string missing = MissingRights(OwnRights());
    return missing.empty() ? std::vector<std::string>() : std::vector{missing};
}

std::string IncompleteReason() {
    return Joined(IncompleteReasons());
}

std::string IncompleteReason(std::string_view subject) {
    const auto findings = Ask(VORN_FINDINGS_OF_ANSWERS);
    return findings ? Joined(Reasons(*findings, subject)) : std::string();
}

}  // namespace cli
