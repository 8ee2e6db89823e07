// SPDX-License-Identifier: MIT
#include "cli/question/library_step.h"

#include <algorithm>

namespace cli {
namespace {

/** The library's records of some of ours. To be made takes them longer than what they are for. */
class LentFiles {
public:
    void Fill(FilePlace begin, FilePlace end) {
        const OpenedFile unused;
        files_.resize(static_cast<size_t>(end - begin));
        nodes_.clear();
        for (OpenedFile& file : files_) {
            file = unused;
            path_ = begin++->fullPath;
            file.setFullPath(path_);
            nodes_.push_back(&file);
        }
    }
    LibraryFiles& All() { return files_; }

    /** What is left of each, in the order of the records; null of what was erased. */
    const std::vector<OpenedFile*>& Left() {
        auto left = files_.begin();
        for (OpenedFile*& node : nodes_) {
            if (left != files_.end() && &*left == node) {
                ++left;
            } else {
                node = nullptr;
            }
        }
        return nodes_;
    }

private:
    LibraryFiles files_;
    std::vector<OpenedFile*> nodes_;
    std::string path_;
};

}  // namespace

FilePlace DoByLibrary(FilePlace begin, FilePlace end, const LibraryStep& step, const TakeTold& take,
                      size_t most) {
    LentFiles lent;
    FilePlace kept = begin;
    while (begin != end) {
        const FilePlace next = begin + std::min(end - begin, static_cast<std::ptrdiff_t>(most));
        lent.Fill(begin, next);
        step(lent.All());
        for (OpenedFile* const told : lent.Left()) {
            if (take(*begin, told)) {
                *kept++ = *begin;
            }
            ++begin;
        }
    }
    return kept;
}

}  // namespace cli
