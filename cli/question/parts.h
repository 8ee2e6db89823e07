// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_PARTS_H
#define VORN_CLI_QUESTION_PARTS_H

/**
 * @file
 * Lists as parts of one, a part a worker.
 */

#include <vector>

#include "cli/process/workers.h"
#include "cli/question/question.h"

namespace cli {

/**
 * The same records in as many lists as have work enough to be worth a thread, at most count, of
 * about the same size. The order within a list stays; what is split goes on in the next.
 *
 * @return at least one list
 */
std::vector<Files> Spread(std::vector<Files> lists, size_t count);

/**
 * Sorts all records by a column as VORNSortOpenedFile sorts one list of them: the lists, one behind
 * the other, are that list. Records that are equal in the column and the pid stand in one of them.
 */
std::vector<Files> Sorted(std::vector<Files> lists, Column column, const Workers& workers);

/** All of them, one behind the other. */
Files Joined(std::vector<Files> lists);

}  // namespace cli

#endif
