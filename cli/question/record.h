// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_RECORD_H
#define VORN_CLI_QUESTION_RECORD_H

/**
 * @file
 * The command's own records. A host may have a million of them, and the library's take half a
 * kilobyte each: that many are never kept at a time (see library_step.h).
 */

#include <deque>
#include <list>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "cli/question/facts.h"
#include "vorn/filehandle.h"

namespace cli {

using VORN::FileHandle::OpenedFile;

/** As the library's steps take them. */
using LibraryFiles = std::list<OpenedFile>;

/** What records of one process have in common; empty is what nobody has asked for. */
struct ProcessTexts {
    std::string pid; /**< as /proc names the process */
    std::string service;
    std::string host;
    std::string user;
};

/** One file that one process holds open on a volume, as OpenedFile tells of it, and more. */
struct FileRecord {
    std::string_view fullPath; /**< target of the descriptor's link in /proc/<pid>/fd */
    std::string_view path;     /**< as users know it */
    std::string_view filename;
    std::string_view time; /**< of the last access; empty where nobody has asked */
    ProcessTexts* process = nullptr;
    const Facts* facts = nullptr; /**< none where nobody has asked */
    bool hidden = false;
    bool folder = false;
    bool deleted = false;
};

using Files = std::vector<FileRecord>;
using FilePlace = Files::iterator;

/** Owner of what records point into. One thread at a time adds to it. */
class RecordTexts {
public:
    /** A copy that stays where it is. */
    std::string_view Keep(std::string_view text) {
        if (text.empty()) {
            return {};
        }
        auto* const copy = static_cast<char*>(bytes_.allocate(text.size(), 1));
        text.copy(copy, text.size());
        return {copy, text.size()};
    }

    /** The end of a text that is there already where it is that, or else a copy. */
    std::string_view KeepEnd(std::string_view whole, std::string_view end) {
        const bool isEnd = end.size() <= whole.size() &&
                           whole.compare(whole.size() - end.size(), end.size(), end) == 0;
        return isEnd ? whole.substr(whole.size() - end.size()) : Keep(end);
    }

    ProcessTexts& AddProcess(ProcessTexts texts) {
        return processes_.emplace_back(std::move(texts));
    }
    std::deque<ProcessTexts>& Processes() { return processes_; }

private:
    std::pmr::monotonic_buffer_resource bytes_;
    std::deque<ProcessTexts> processes_;
};

/** One a thread. */
using TextsOfThreads = std::deque<RecordTexts>;

}  // namespace cli

#endif
