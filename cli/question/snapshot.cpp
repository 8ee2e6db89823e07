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

std::vector<Column> OrderedBy(const Question& question) {
    std::vector<Column> columns = question.sort;
    if (question.group) {
        columns.insert(columns.begin(), *question.group);
    }
    return columns;
}

/** What needn't be known before it is known which records are shown. */
struct Late {
    bool facts = false;
    bool times = false;
};

Late LateOf(const Question& question, const SelectionSteps& steps) {
    Late late;
    if (question.most) {
        const std::vector<Column> order = OrderedBy(question);
        late.facts = question.asked.facts.any() && SelectsAll(steps.byFacts) &&
                     std::none_of(order.begin(), order.end(), IsFact);
        late.times = question.time && SelectsAll(steps.byTime) &&
                     std::find(order.begin(), order.end(), Column::kTime) == order.end();
    }
    return late;
}

/** The first records, in parts that several threads can look at. */
std::vector<Part> TakeFirst(Snapshot& snapshot, size_t count) {
    constexpr size_t kRecords = 500;
    std::vector<Part> parts;
    for (size_t left = std::min(count, snapshot.files.size()); left > 0;) {
        const size_t taken = std::min(left, kRecords);
        Part& part = parts.emplace_back();
        part.files.splice(part.files.end(), snapshot.files, snapshot.files.begin(),
                          std::next(snapshot.files.begin(), static_cast<long>(taken)));
        for (const OpenedFile& file : part.files) {
            if (snapshot.IsDeleted(file)) {
                part.deleted.insert(&file);
            }
        }
        left -= taken;
    }
    return parts;
}

void LookAtFirst(Snapshot& snapshot, const Question& question, const Late& late, BootTicks began,
                 const Workers& workers) {
    std::vector<Part> parts = TakeFirst(snapshot, *question.most);
    if (late.facts) {
        snapshot.facts = FactsOf(parts, question.asked, began, workers);
    }
    if (late.times) {
        workers.ForEach(parts.size(), [&](size_t i) { AddTimes(parts[i]); });
    }
    for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
        snapshot.files.splice(snapshot.files.begin(), part->files);
    }
}

Files Ordered(std::vector<Files> lists, const Question& question, const Snapshot& snapshot) {
    Files files = Joined(std::move(lists));
    const std::vector<Column> columns = OrderedBy(question);
    if (!columns.empty() && columns != std::vector{Column::kPath}) {
        Order(files, columns, [&](const OpenedFile& file) { return snapshot.About(file); });
    }
    if (question.reverse) {
        // What is equal is turned round too, as the library has it.
        files.reverse();
    }
    return files;
}

}  // namespace

void FillSnapshot(Snapshot& snapshot, const Question& question, RecordSource& source) {
    const BootTicks began = BootTicksNow();
    // The identities are those of the caller: raising them is for set-user-id programs.
    snapshot.jobs = question.jobs ? *question.jobs : UsableProcessors();
    const Workers workers(snapshot.jobs);
    std::vector<Files> lists = EnumerateFiles(question, source, workers);
    snapshot.notice = source.Notice();
    const SelectionSteps steps = InSteps(question.selection);
    const Late late = LateOf(question, steps);
    std::vector<Part> parts(lists.size());
    workers.ForEach(lists.size(), [&](size_t i) {
        parts[i].files = std::move(lists[i]);
        Select(parts[i], question, steps, source.TellsFolders());
    });
    if (question.asked.facts.any() && !late.facts) {
        snapshot.facts = FactsOf(parts, question.asked, began, workers);
    }
    workers.ForEach(parts.size(), [&](size_t i) {
        Keep(parts[i], steps.byFacts, snapshot.facts);
        if (question.time && !late.times) {
            AddTimes(parts[i]);
            Keep(parts[i], steps.byTime, snapshot.facts);
        }
    });
    for (size_t i = 0; i < parts.size(); ++i) {
        lists[i] = std::move(parts[i].files);
        snapshot.deleted.merge(parts[i].deleted);
    }
    snapshot.files = Ordered(std::move(lists), question, snapshot);
    if (late.facts || late.times) {
        LookAtFirst(snapshot, question, late, began, workers);
    }
}

Snapshot TakeSnapshot(const Question& asked, Gate& gate) {
    const Gate::Inside inside(gate);
    const Meaning meaning = Understand(asked);
    const Question& question = meaning.question;
    Snapshot snapshot;
    snapshot.by = question.by;
    FillSnapshot(snapshot, question, *MakeSource(question.source));
    snapshot.notice = Joined(snapshot.notice, meaning.notice);
    snapshot.doubt = meaning.doubt;
    // Sources are known to have failed when they have been asked.
    snapshot.incompleteReason = IncompleteReason();
    return snapshot;
}

}  // namespace cli
