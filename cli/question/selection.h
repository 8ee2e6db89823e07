// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SELECTION_H
#define VORN_CLI_QUESTION_SELECTION_H

/**
 * @file
 * Which records are wanted.
 */

#include <optional>
#include <string>
#include <vector>

#include "cli/question/columns.h"

namespace cli {

/** What becomes of the records that have a flag. */
enum class Flagged { kYes, kNo, kOnly };

/** What a column's number is to be. */
struct Bound {
    enum class Is { kLess, kAtMost, kMore, kAtLeast, kEqual };

    Is is;
    std::int64_t number; /**< bytes, seconds since 1970 or, of an age, seconds until now */
    bool age = false;
};

struct Condition {
    Column column;
    std::string text; /**< never empty: to the library an empty text matches everything */
    bool contains;    /**< in any case of ASCII letters; otherwise equal */
    bool negated;
    std::optional<Bound> bound = std::nullopt; /**< in place of the text */
};

struct Selection {
    std::vector<Condition> conditions;
    std::vector<std::string> paths; /**< absolute, resolved; empty means everywhere */
    Flagged hidden = Flagged::kYes;
    Flagged folders = Flagged::kYes;
    Flagged deleted = Flagged::kYes;
};

/** Whether a record is what a condition describes, negated or not. */
bool Matches(const Condition& condition, const FileRecord& file);

/**
 * Whether a record is wanted: the texts for one column are alternatives, those for different
 * columns must all hold, so must each comparison, and none of the negated conditions may.
 */
bool IsSelected(const Selection& selection, const FileRecord& file);

/** Whether every record is wanted. */
bool SelectsAll(const Selection& selection);

/** A selection in steps, each with what it takes to know. All must hold. */
struct SelectionSteps {
    Selection atOnce; /**< what every record tells */
    Selection byFolder;
    Selection byFacts;
    Selection byTime;
};

SelectionSteps InSteps(Selection selection);

}  // namespace cli

#endif
