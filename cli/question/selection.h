#ifndef VORN_CLI_QUESTION_SELECTION_H
#define VORN_CLI_QUESTION_SELECTION_H

/**
 * @file
 * Which records are wanted.
 */

#include <string>
#include <vector>

#include "cli/question/columns.h"

namespace cli {

/** What becomes of the records that have a flag. */
enum class Flagged { kYes, kNo, kOnly };

struct Condition {
    Column column;
    std::string text; /**< never empty: to the library an empty text matches everything */
    bool contains;    /**< in any case of ASCII letters; otherwise equal */
    bool negated;
};

struct Selection {
    std::vector<Condition> conditions;
    std::vector<std::string> paths; /**< absolute, resolved; empty means everywhere */
    Flagged hidden = Flagged::kYes;
    Flagged folders = Flagged::kYes;
    Flagged deleted = Flagged::kYes;
};

/**
 * Whether a record is wanted: the conditions on one column are alternatives, those on different
 * columns must all hold, and none of the negated ones may.
 */
bool IsSelected(const Selection& selection, OpenedFile& file, bool deleted);

}  // namespace cli

#endif
