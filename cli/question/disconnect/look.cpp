// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/look.h"

#include "cli/question/snapshot.h"
#include "support/numbers.h"

namespace cli {
namespace {

std::vector<FileOfProcess> HeldFiles(Snapshot& snapshot) {
    std::vector<FileOfProcess> files;
    for (OpenedFile& file : snapshot.files) {
        if (const auto pid = support::ParseNumber<pid_t>(file.getPidStr())) {
            files.push_back({*pid, file.getFullPath(), file.getPath(), snapshot.IsDeleted(file)});
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
    Snapshot snapshot = TakeSnapshot(question, gate);
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
        Snapshot all = TakeSnapshot(AllOf(question), gate);
        held = HeldFiles(all);
    }
    look.plan = MakePlan(ReadHostFacts(), selected, held);
    return look;
}

}  // namespace cli
