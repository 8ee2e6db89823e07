// SPDX-License-Identifier: MIT
#include "cli/question/snapshot.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "cli/failure.h"
#include "cli/host/deleted.h"
#include "cli/host/platform_findings.h"
#include "cli/host/processors.h"
#include "cli/process/workers.h"
#include "cli/question/enumeration.h"
#include "cli/question/library_step.h"
#include "cli/question/meaning.h"
#include "cli/question/ordering.h"
#include "cli/question/parts.h"
#include "vorn/platform/error.h"

namespace cli {
namespace {

/** What --time and the time column show where there is no time to be had. */
constexpr std::string_view kNoTime = "-";

/** The library erases what can't be examined any more, deleted files among it; here they stay. */
FilePlace AddTimes(FilePlace begin, FilePlace end, RecordTexts& texts) {
    const auto step = [](LibraryFiles& files) {
        if (VORN::FileHandle::VORNGetLastAccessTime(files) < 0) {
            throw Failure(
                fmt::format("can't tell the access times (error 0x{:04X})", KLIBCErrGet()));
        }
    };
    return DoByLibrary(begin, end, step, [&](FileRecord& file, OpenedFile* told) {
        // Of a deleted file it would be that of another one, which is really named so.
        file.time = told != nullptr && !file.deleted ? texts.Keep(told->getTime()) : kNoTime;
        return true;
    });
}

void FindDeleted(FilePlace begin, FilePlace end) {
    DeletedFiles deletedFiles;
    for (; begin != end; ++begin) {
        begin->deleted = deletedFiles.Contains(begin->fullPath, begin->process->pid);
    }
}

FilePlace Keep(FilePlace begin, FilePlace end, const Selection& selection) {
    return SelectsAll(selection) ? end : std::remove_if(begin, end, [&](const FileRecord& file) {
        return !IsSelected(selection, file);
    });
}

/** Looks at files themselves only where that isn't settled without. */
FilePlace Select(FilePlace begin, FilePlace end, const Asked& asked, const SelectionSteps& steps,
                 bool foldersAreTold) {
    FindDeleted(begin, end);
    end = Keep(begin, end, steps.atOnce);
    if (!asked.folder) {
        return end;
    }
    if (!foldersAreTold) {
        LabelFolders(begin, end);
    }
    return Keep(begin, end, steps.byFolder);
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

void OrderAsAsked(Files& files, const Question& question) {
    const std::vector<Column> columns = OrderedBy(question);
    if (!columns.empty() && columns != std::vector{Column::kPath}) {
        Order(files, columns);
    }
    if (question.reverse) {
        // What is equal is turned round too, as the library has it.
        std::reverse(files.begin(), files.end());
    }
}

/** What is asked of records, as soon as it is known which. */
class Look {
public:
    Look(Snapshot& snapshot, const Question& question, const Workers& workers, BootTicks began)
        : snapshot_(snapshot), question_(question), workers_(workers), began_(began) {}

    /** Asks the kernel of the first records. */
    void ReadFactsOf(size_t count) {
        std::vector<FileRecord*> files;
        for (size_t i = 0; i < count; ++i) {
            FileRecord& file = snapshot_.files[i];
            if (!question_.asked.factsOfDeleted || file.deleted) {
                files.push_back(&file);
            }
        }
        snapshot_.facts = ReadFacts(files, question_.asked.facts, began_, workers_);
    }

    /** Asks for the times of the first records. */
    void ReadTimesOf(size_t count) {
        GoOver(snapshot_.files, count, snapshot_.texts, workers_, AddTimes);
    }

    void Keep(const Selection& selection) {
        Files& files = snapshot_.files;
        GoOver(files, files.size(), snapshot_.texts, workers_,
               [&](FilePlace begin, FilePlace end, RecordTexts& /*texts*/) {
                   return cli::Keep(begin, end, selection);
               });
    }

private:
    Snapshot& snapshot_;
    const Question& question_;
    const Workers& workers_;
    BootTicks began_;
};

}  // namespace

void FillSnapshot(Snapshot& snapshot, const Question& question, RecordSource& source) {
    const BootTicks began = BootTicksNow();
    // The identities are those of the caller: raising them is for set-user-id programs.
    snapshot.jobs = question.jobs ? *question.jobs : UsableProcessors();
    const Workers workers(snapshot.jobs);
    Files& files = snapshot.files = EnumerateFiles(question, source, workers, snapshot.texts);
    snapshot.notice = source.Notice();
    const SelectionSteps steps = InSteps(question.selection);
    const Late late = LateOf(question, steps);
    Look look(snapshot, question, workers, began);
    GoOver(files, files.size(), snapshot.texts, workers,
           [&](FilePlace begin, FilePlace end, RecordTexts& /*texts*/) {
               return Select(begin, end, question.asked, steps, source.TellsFolders());
           });
    if (question.asked.facts.any() && !late.facts) {
        look.ReadFactsOf(files.size());
        look.Keep(steps.byFacts);
    }
    if (question.time && !late.times) {
        look.ReadTimesOf(files.size());
        look.Keep(steps.byTime);
    }
    OrderAsAsked(files, question);
    const size_t shown = std::min(files.size(), question.most.value_or(files.size()));
    if (late.facts) {
        look.ReadFactsOf(shown);
    }
    if (late.times) {
        look.ReadTimesOf(shown);
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
    snapshot.incompleteReasons = IncompleteReasons();
    snapshot.incompleteReason = fmt::format("{}", fmt::join(snapshot.incompleteReasons, "; "));
    return snapshot;
}

}  // namespace cli
