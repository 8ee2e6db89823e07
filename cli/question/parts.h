// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_PARTS_H
#define VORN_CLI_QUESTION_PARTS_H

/**
 * @file
 * What several threads do with records, each with a part of them.
 */

#include <functional>

#include "cli/process/workers.h"
#include "cli/question/record.h"

namespace cli {

/** All of them, one list behind the other. */
Files Joined(std::vector<Files> lists);

/** Goes over a part of the records and returns the end of those that stay. */
using PartStep = std::function<FilePlace(FilePlace begin, FilePlace end, RecordTexts& texts)>;

/**
 * Goes over the first records, a part a thread that is worth it, each with texts of its own; what
 * stays keeps its order.
 *
 * @param texts  at least one a thread
 */
void GoOver(Files& files, size_t count, TextsOfThreads& texts, const Workers& workers,
            const PartStep& step);

/**
 * Orders records by the path column, then by the text of the pid, as VORNSortOpenedFile does, and
 * leaves the first of neighbours with the same full path and pid, as EraseAdjacentDuplicates does.
 */
void SortAndUnify(Files& files, const Workers& workers);

}  // namespace cli

#endif
