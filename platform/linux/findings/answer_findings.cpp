// SPDX-License-Identifier: MIT
#include "platform/linux/findings/answer_findings.h"

#include <unistd.h>

#include <iterator>
#include <utility>

#include "platform/linux/findings/bound_volumes.h"
#include "platform/linux/findings/process_sight.h"

namespace vornplatform {
namespace {

const char* SubjectOf(Source source) {
    switch (source) {
        case Source::kVolumes:
            return "volumes";
        case Source::kExportedShares:
        case Source::kShareFolders:
            return "shares";
        case Source::kSockets:
            return "sockets";
        case Source::kSmbUsers:
            break;
    }
    return "SMB sessions";
}

}  // namespace

Finding LossFinding(const LostSource& loss) {
    return {SubjectOf(loss.source), VORN_FINDING_MISSING, loss.text, loss.advice, true};
}

Findings FindWhatIsOutOfSight() {
    const ProcessSight sight = LookAtProcesses();
    Findings findings = JudgeSight(sight, access(kPrivateVolumesPath, F_OK) == 0);
    Findings bound = FindBoundVolumes(sight);
    std::move(bound.begin(), bound.end(), std::back_inserter(findings));
    return findings;
}

Findings FindingsOfAnswers() {
    Findings findings;
    for (const LostSource& loss : LostSources()) {
        findings.push_back(LossFinding(loss));
    }
    Findings unseen = FindWhatIsOutOfSight();
    std::move(unseen.begin(), unseen.end(), std::back_inserter(findings));
    return findings;
}

}  // namespace vornplatform
