// SPDX-License-Identifier: MIT
#include "cli/question/enumeration.h"

#include <exception>

#include "cli/host/platform_answers.h"
#include "cli/question/attribution.h"
#include "cli/question/parts.h"
#include "cli/question/step.h"

namespace cli {
namespace {

namespace fh = VORN::FileHandle;

/** Each worker takes portions as long as there are any. */
std::vector<Files> Scan(RecordSource& source, const Workers& workers,
                        const std::function<void()>& before) {
    std::vector<Files> lists(workers.Count());
    workers.ForEach(
        lists.size(),
        [&](size_t list) {
            int result = 1;
            while (result > 0) {
                result = source.Next(lists[list]);
                MustSucceed(result, "get proc opened file", 24);
            }
        },
        before);
    return lists;
}

/** What the filter asks of the platform, once for all; its failure counts when it is used. */
class Prefixes {
public:
    explicit Prefixes(fh::ENUM_BY by) : by_(by) {}

    void Ask() noexcept {
        asked_ = true;
        try {
            const PlatformAnswers::Noting noting(answers_);
            Files none;
            MustSucceed(fh::FilterPath(none, by_), "filter path", 29);
        } catch (...) {
            failure_ = std::current_exception();
        }
    }
    void Filter(std::vector<Files>& lists, const Workers& workers) {
        if (!asked_) {
            Ask();
        }
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        workers.ForEach(lists.size(), [&](size_t list) {
            const PlatformAnswers::Giving giving(answers_);
            MustSucceed(fh::FilterPath(lists[list], by_), "filter path", 29);
        });
    }

private:
    const fh::ENUM_BY by_;
    PlatformAnswers answers_;
    bool asked_ = false;
    std::exception_ptr failure_;
};

void LabelHidden(std::vector<Files>& lists, const Workers& workers) {
    PlatformAnswers answers;
    {
        const PlatformAnswers::Noting noting(answers);
        Files none;
        MustSucceed(fh::LabelHidden(none), "label hidden", 51);
    }
    workers.ForEach(lists.size(), [&](size_t list) {
        const PlatformAnswers::Giving giving(answers);
        MustSucceed(fh::LabelHidden(lists[list]), "label hidden", 51);
    });
}

}  // namespace

std::vector<Files> EnumerateFiles(const Question& question, RecordSource& source,
                                  const Workers& workers) {
    Prefixes prefixes(question.by);
    // Where there are several threads, this one asks while others read: a file server's own
    // program may have to be run for it.
    std::vector<Files> lists = Scan(source, workers, [&] {
        if (workers.Count() > 1) {
            prefixes.Ask();
        }
    });
    lists = Spread(std::move(lists), workers.Count());
    prefixes.Filter(lists, workers);
    Attribute(lists, question.asked, workers);
    lists = Sorted(std::move(lists), Column::kPath, workers);
    workers.ForEach(lists.size(), [&](size_t list) {
        MustSucceed(fh::EraseAdjacentDuplicates(lists[list]), "erase duplicate entries", 46);
    });
    LabelHidden(lists, workers);
    return lists;
}

}  // namespace cli
