// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_QUESTION_H
#define VORN_CLI_QUESTION_QUESTION_H

/**
 * @file
 * What is asked about the open files.
 */

#include <optional>

#include "cli/question/columns.h"
#include "cli/question/selection.h"
#include "cli/question/sources/sources.h"

namespace cli {

/** What somebody shows, selects, counts or orders by: what isn't asked for is left empty. */
struct Asked {
    bool service = true;
    bool connection = true; /**< host and user */
    bool folder = true;
    ColumnSet facts;             /**< of those that IsFact() */
    bool factsOfDeleted = false; /**< of deleted files alone */
};

struct Question {
    VORN::FileHandle::ENUM_BY by = VORN::FileHandle::ENUM_BY_SHARE;
    bool byGiven = false; /**< it was asked for so, and is not the default */
    Selection selection;
    bool time = false; /**< with last access times */
    Asked asked;

    std::vector<Column> sort;    /**< otherwise by path */
    std::optional<Column> group; /**< goes before these */
    bool reverse = false;
    /** Of records behind the first so many, times and facts are of no interest by themselves. */
    std::optional<size_t> most;

    SourceKind source = SourceKind::kAuto;
    std::optional<size_t> jobs; /**< otherwise as many as processors that may be used */
};

/** "share" or "volume". */
inline const char* ByName(VORN::FileHandle::ENUM_BY by) {
    return by == VORN::FileHandle::ENUM_BY_SHARE ? "share" : "volume";
}

}  // namespace cli

#endif
