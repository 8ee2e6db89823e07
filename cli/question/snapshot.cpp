// SPDX-License-Identifier: MIT
#include "cli/question/snapshot.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "cli/failure.h"
#include "cli/host/deleted.h"
#include "cli/host/folder_memory.h"
#include "cli/host/platform_findings.h"
#include "cli/host/processors.h"
#include "cli/process/workers.h"
#include "cli/question/enumeration.h"
#include "cli/question/meaning.h"
#include "cli/question/ordering.h"
#include "cli/question/parts.h"
#include "vorn/platform/error.h"

namespace cli {
namespace {

/** What --time and the time column show where there is no time to be had. */
constexpr const char* kNoTime = "-";

bool IsSameRecord(OpenedFile& a, OpenedFile& b) {
    return a.getFullPath() == b.getFullPath() && a.getPidStr() == b.getPidStr();
}

/** Records and what is known of them, looked at on one thread. */
struct Part {
    Files files;
    std::unordered_set<const OpenedFile*> deleted; /**< nodes of files */

    bool IsDeleted(const OpenedFile& file) const {
        return !deleted.empty() && deleted.count(&file) != 0;
    }
};

/** The library erases what can't be examined any more, deleted files among it; here they stay. */
void AddTimes(Part& part) {
    Files timed = part.files;
    if (VORN::FileHandle::VORNGetLastAccessTime(timed) < 0) {
        throw Failure(fmt::format("can't tell the access times (error 0x{:04X})", KLIBCErrGet()));
    }
    auto next = timed.begin();
    for (OpenedFile& file : part.files) {
        const bool found = next != timed.end() && IsSameRecord(file, *next);
        // Of a deleted file it would be that of another one, which is really named so.
        file.setTime(found && !part.IsDeleted(file) ? next->getTime() : kNoTime);
        std::advance(next, found ? 1 : 0);
    }
}

void FindDeleted(Part& part) {
    DeletedFiles deletedFiles;
    for (OpenedFile& file : part.files) {
        if (deletedFiles.Contains(file.getFullPath(), file.getPidStr())) {
            part.deleted.insert(&file);
        }
    }
}

void Keep(Part& part, const Selection& selection, const FactsOfFiles& facts = {}) {
    if (SelectsAll(selection)) {
        return;
    }
    for (auto file = part.files.begin(); file != part.files.end();) {
        const auto told = facts.find(&*file);
        const Known known = {part.IsDeleted(*file), told == facts.end() ? nullptr : &told->second};
        if (IsSelected(selection, *file, known)) {
            ++file;
            continue;
        }
        if (known.deleted) {
            part.deleted.erase(&*file);
        }
        file = part.files.erase(file);
    }
}

/** Looks at files themselves only where that isn't settled without. */
void Select(Part& part, const Question& question, const SelectionSteps& steps,
            bool foldersAreTold) {
    FindDeleted(part);
    Keep(part, steps.atOnce);
    if (question.asked.folder) {
        if (!foldersAreTold) {
            const FolderMemory once;
            VORN::FileHandle::LabelFolder(part.files);
        }
        Keep(part, steps.byFolder);
    }
}

/** Asks the kernel of the records that are left. */
FactsOfFiles FactsOf(std::vector<Part>& parts, const Asked& asked, BootTicks began,
                     const Workers& workers) {
    std::vector<OpenedFile*> files;
    for (Part& part : parts) {
        for (OpenedFile& file : part.files) {
            if (!asked.factsOfDeleted || part.IsDeleted(file)) {
                files.push_back(&file);
            }
        }
    }
    return ReadFacts(files, asked.facts, began, workers);
}

Files Ordered(std::vector<Files> lists, const Question& question, const Snapshot& snapshot) {
    Files files = Joined(std::move(lists));
    std::vector<Column> columns = question.sort;
    if (question.group) {
        columns.insert(columns.begin(), *question.group);
    }
    if (!columns.empty() && columns != std::vector{Column::kPath}) {
        Order(files, columns, [&](const OpenedFile& file) { return snapshot.About(file); });
    }
    if (question.reverse) {
        // What is equal is turned round too, as the library has it.
        files.reverse();
    }
    return files;
}

void Look(Snapshot& snapshot, const Question& question) {
    const BootTicks began = BootTicksNow();
    // The identities are those of the caller: raising them is for set-user-id programs.
    snapshot.jobs = question.jobs ? *question.jobs : UsableProcessors();
    const Workers workers(snapshot.jobs);
    const std::unique_ptr<RecordSource> source = MakeSource(question.source);
    std::vector<Files> lists = EnumerateFiles(question, *source, workers);
    snapshot.notice = source->Notice();
    const SelectionSteps steps = InSteps(question.selection);
    std::vector<Part> parts(lists.size());
    workers.ForEach(lists.size(), [&](size_t i) {
        parts[i].files = std::move(lists[i]);
        Select(parts[i], question, steps, source->TellsFolders());
    });
    if (question.asked.facts.any()) {
        snapshot.facts = FactsOf(parts, question.asked, began, workers);
    }
    workers.ForEach(parts.size(), [&](size_t i) {
        Keep(parts[i], steps.byFacts, snapshot.facts);
        if (question.time) {
            AddTimes(parts[i]);
            Keep(parts[i], steps.byTime, snapshot.facts);
        }
    });
    for (size_t i = 0; i < parts.size(); ++i) {
        lists[i] = std::move(parts[i].files);
        snapshot.deleted.merge(parts[i].deleted);
    }
    snapshot.files = Ordered(std::move(lists), question, snapshot);
}

}  // namespace

Snapshot TakeSnapshot(const Question& asked, Gate& gate) {
    const Gate::Inside inside(gate);
    const Meaning meaning = Understand(asked);
    const Question& question = meaning.question;
    Snapshot snapshot;
    snapshot.by = question.by;
    Look(snapshot, question);
    snapshot.notice = Joined(snapshot.notice, meaning.notice);
    snapshot.doubt = meaning.doubt;
    // Sources are known to have failed when they have been asked.
    snapshot.incompleteReason = IncompleteReason();
    return snapshot;
}

}  // namespace cli
