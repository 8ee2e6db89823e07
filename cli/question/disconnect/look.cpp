// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/look.h"

#include "cli/question/snapshot.h"
#include "support/numbers.h"

namespace cli {
namespace {

std::vector<FileOfProcess> HeldFiles(const Snapshot& snapshot) {
    std::vector<FileOfProcess> files;
    for (const FileRecord& file : snapshot.files) {
        if (const auto pid = support::ParseNumber<pid_t>(file.process->pid)) {
            files.push_back(
                {*pid, std::string(file.fullPath), std::string(file.path), file.deleted});
        }
    }
    return files;
}

/** Everything on every volume. */
Question AllOf(const Question& question) {
    Question all;
    all.by = VORN::FileHandle::ENUM_BY_VOLUME;
    all.byGiven = true;
    all.asked.service = false;
    all.asked.connection = false;
    all.asked.folder = false;
    all.source = question.source;
    all.jobs = question.jobs;
    return all;
}

}  // namespace

Look TakeLook(const Question& question, Gate& gate, bool withOthers) {
    const Snapshot snapshot = TakeSnapshot(question, gate);
    const std::vector<FileOfProcess> selected = HeldFiles(snapshot);
    Look look;
    look.incompleteReason = snapshot.incompleteReason;
    look.doubt = snapshot.doubt;
    look.notice = snapshot.notice;
    if (selected.empty()) {
        return look;
    }
    std::vector<FileOfProcess> held;
    if (withOthers) {
        held = HeldFiles(TakeSnapshot(AllOf(question), gate));
    }
    look.plan = MakePlan(ReadHostFacts(), selected, held);
    return look;
}

}  // namespace cli
