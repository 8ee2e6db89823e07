#ifndef VORN_CLI_QUESTION_QUESTION_H
#define VORN_CLI_QUESTION_QUESTION_H

/**
 * @file
 * What is asked about the open files.
 */

#include <optional>

#include "cli/question/columns.h"
#include "cli/question/selection.h"

namespace cli {

struct Question {
    VORN::FileHandle::ENUM_BY by = VORN::FileHandle::ENUM_BY_SHARE;
    Selection selection;
    bool time = false; /**< with last access times */

    std::optional<Column> sort; /**< otherwise by path */
    bool reverse = false;
};

/** "share" or "volume". */
inline const char* ByName(const Question& question) {
    return question.by == VORN::FileHandle::ENUM_BY_SHARE ? "share" : "volume";
}

}  // namespace cli

#endif
