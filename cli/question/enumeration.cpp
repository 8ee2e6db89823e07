// SPDX-License-Identifier: MIT
#include "cli/question/enumeration.h"

#include <algorithm>
#include <exception>

#include "cli/host/folder_memory.h"
#include "cli/host/platform_answers.h"
#include "cli/question/attribution.h"
#include "cli/question/library_step.h"
#include "cli/question/parts.h"
#include "cli/question/step.h"

namespace cli {
namespace {

namespace fh = VORN::FileHandle;

/** Each worker takes portions as long as there are any. */
Files Scan(RecordSource& source, TextsOfThreads& texts, const Workers& workers,
           const std::function<void()>& before) {
    std::vector<Files> lists(workers.Count());
    workers.ForEach(
        lists.size(),
        [&](size_t list) {
            int result = 1;
            while (result > 0) {
                result = source.Next(lists[list], texts[list]);
                MustSucceed(result, "get proc opened file", 24);
            }
        },
        before);
    return Joined(std::move(lists));
}

/** What the filter asks of the platform, once for all; its failure counts when it is used. */
class Prefixes {
public:
    explicit Prefixes(fh::ENUM_BY by) : by_(by) {}

    void Ask() noexcept {
        asked_ = true;
        try {
            const PlatformAnswers::Noting noting(answers_);
            LibraryFiles none;
            FilterList(none);
        } catch (...) {
            failure_ = std::current_exception();
        }
    }
    void Filter(Files& files, TextsOfThreads& texts, const Workers& workers) {
        if (!asked_) {
            Ask();
        }
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        // Prefixes take their time at each step, where there are many.
        const size_t most = std::max(kRecordsAStep, 4 * answers_.Shares());
        GoOver(files, files.size(), texts, workers,
               [&](FilePlace begin, FilePlace end, RecordTexts& kept) {
                   const PlatformAnswers::Giving giving(answers_);
                   return DoByLibrary(
                       begin, end, [&](LibraryFiles& list) { FilterList(list); },
                       [&](FileRecord& file, OpenedFile* told) {
                           if (told != nullptr) {
                               file.path = kept.KeepEnd(file.fullPath, told->getPath());
                               file.filename = kept.KeepEnd(file.fullPath, told->getFilename());
                           }
                           return told != nullptr;
                       },
                       most);
               });
    }

private:
    void FilterList(LibraryFiles& list) const {
        MustSucceed(fh::FilterPath(list, by_), "filter path", 29);
    }

    const fh::ENUM_BY by_;
    PlatformAnswers answers_;
    bool asked_ = false;
    std::exception_ptr failure_;
};

void LabelList(LibraryFiles& list) {
    MustSucceed(fh::LabelHidden(list), "label hidden", 51);
}

void LabelHidden(Files& files, TextsOfThreads& texts, const Workers& workers) {
    PlatformAnswers answers;
    {
        const PlatformAnswers::Noting noting(answers);
        LibraryFiles none;
        LabelList(none);
    }
    GoOver(files, files.size(), texts, workers, [&](FilePlace begin, FilePlace end, RecordTexts&) {
        const PlatformAnswers::Giving giving(answers);
        return DoByLibrary(begin, end, LabelList, [](FileRecord& file, OpenedFile* told) {
            file.hidden = told->isHidden();
            return true;
        });
    });
}

}  // namespace

Files EnumerateFiles(const Question& question, RecordSource& source, const Workers& workers,
                     TextsOfThreads& texts) {
    texts.resize(workers.Count());
    Prefixes prefixes(question.by);
    // Where there are several threads, this one asks while others read: a file server's own
    // program may have to be run for it.
    Files files = Scan(source, texts, workers, [&] {
        if (workers.Count() > 1) {
            prefixes.Ask();
        }
    });
    prefixes.Filter(files, texts, workers);
    Attribute(files, question.asked, texts.front(), workers);
    SortAndUnify(files, workers);
    LabelHidden(files, texts, workers);
    return files;
}

void LabelFolders(FilePlace begin, FilePlace end) {
    const FolderMemory once;
    const auto step = [](LibraryFiles& files) { fh::LabelFolder(files); };
    DoByLibrary(begin, end, step, [](FileRecord& file, OpenedFile* told) {
        file.folder = told->isFolder();
        return true;
    });
}

}  // namespace cli
