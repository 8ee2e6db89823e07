// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_LIBRARY_STEP_H
#define VORN_CLI_QUESTION_LIBRARY_STEP_H

#include <functional>

#include "cli/question/record.h"

namespace cli {

/** Ends the enumeration where a step has failed: throws. */
using LibraryStep = std::function<void(LibraryFiles&)>;

/** Takes what a step has told of a record, or null where it was erased; false leaves it out. */
using TakeTold = std::function<bool(FileRecord&, OpenedFile*)>;

/** So many of the library's records stay in a processor's own memory. */
constexpr size_t kRecordsAStep = 500;

/**
 * Does a step of the library that goes by full paths alone: records are given to it some at a
 * time, in their order.
 *
 * @param most  records at a time
 * @return the end of those that stay
 */
FilePlace DoByLibrary(FilePlace begin, FilePlace end, const LibraryStep& step, const TakeTold& take,
                      size_t most = kRecordsAStep);

}  // namespace cli

#endif
