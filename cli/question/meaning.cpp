// SPDX-License-Identifier: MIT
#include "cli/question/meaning.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "cli/failure.h"
#include "cli/host/named_units.h"
#include "cli/host/platform_findings.h"
#include "cli/host/shares.h"
#include "cli/host/volumes.h"
#include "cli/text/escape.h"

namespace cli {
namespace {

/** What is asked about in the names of this host. */
Selection Resolved(Selection selection, const std::vector<std::string>& volumes) {
    selection.paths = ResolvedPaths(selection.paths, volumes);
    std::vector<Condition> meant;
    for (const Condition& condition : selection.conditions) {
        if (condition.column == Column::kService && !condition.contains) {
            for (std::string& name : ServicesMeantBy(condition.text)) {
                meant.push_back({condition.column, std::move(name), false, condition.negated});
            }
        }
    }
    // Alternatives of a column; of the negated ones none may hold.
    selection.conditions.insert(selection.conditions.end(), meant.begin(), meant.end());
    return selection;
}

/** Says what of the PATHs can't be answered as it was asked, and how it is answered. */
void JudgePaths(Meaning& meaning) {
    Question& question = meaning.question;
    const std::string missing = FirstMissing(question.selection.paths);
    if (!missing.empty()) {
        meaning.doubt = fmt::format("'{}' does not exist: only files deleted there can be open",
                                    Escaped(missing, true));
    }
    if (question.by != VORN::FileHandle::ENUM_BY_SHARE || question.byGiven) {
        return;
    }
    const std::string outside = FirstOutsideShares(question.selection.paths);
    if (outside.empty()) {
        return;
    }
    question.by = VORN::FileHandle::ENUM_BY_VOLUME;
    // Of a share that has gone there may be deleted files.
    if (outside != missing) {
        meaning.notice = fmt::format("'{}' is in no share: answering as --by volume does",
                                     Escaped(outside, true));
    }
}

}  // namespace

std::vector<std::string> VolumesToAsk() {
    std::vector<std::string> volumes = MountedVolumes();
    if (!volumes.empty()) {
        return volumes;
    }
    const std::string lost = IncompleteReason("volumes");
    throw Failure(
        !lost.empty()
            ? "can't tell the data volumes: " + lost
            : "no data volume is mounted: volumes are file systems on /volume1, /volume2 and "
              "so on");
}

Meaning Understand(const Question& question) {
    Meaning meaning = {question, {}, {}};
    meaning.question.selection = Resolved(question.selection, VolumesToAsk());
    JudgePaths(meaning);
    return meaning;
}

std::string Joined(const std::string& a, const std::string& b) {
    return a + (a.empty() || b.empty() ? "" : "; ") + b;
}

}  // namespace cli
