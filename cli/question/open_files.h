// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_OPEN_FILES_H
#define VORN_CLI_QUESTION_OPEN_FILES_H

#include <deque>
#include <memory>

#include "cli/question/changes.h"

namespace cli {

/**
 * Which files are open, by one look after the other. A record is known by its full path and its
 * process: the pid and, where facts were asked for, the start.
 *
 * A look that is incomplete ends nothing by what it lacks: of what it doesn't have, only that is
 * closed whose process says so itself, and the rest is kept for the looks to come.
 */
class OpenFiles {
public:
    /** Takes the next look. What it is compared with is there until the one after it. */
    void Take(Snapshot look);

    const Snapshot& Look() const { return *look_; }
    /** What has changed by the last look. */
    const Changes& News() const { return changes_; }

private:
    /** Copies of records of earlier looks. */
    struct Kept {
        void Add(const FileRecord& file);

        Files files;
        RecordTexts texts;
        std::deque<Facts> facts;
    };

    void KeepUnsure();

    std::unique_ptr<Snapshot> look_ = std::make_unique<Snapshot>();
    std::unique_ptr<Snapshot> last_;
    std::unique_ptr<Kept> kept_ = std::make_unique<Kept>();
    std::unique_ptr<Kept> lastKept_;
    Changes changes_;
    bool looked_ = false;
};

/** When the process of a record has started; 0 where that isn't known. */
BootTicks StartOf(const FileRecord& file);

}  // namespace cli

#endif
