#ifndef VORN_CLI_QUESTION_COUNTS_H
#define VORN_CLI_QUESTION_COUNTS_H

/**
 * @file
 * How many records there are of each kind.
 */

#include <string>
#include <vector>

#include "cli/question/snapshot.h"

namespace cli {

struct Count {
    std::vector<std::string> values; /**< one a counted column */
    size_t files;
};

/** Biggest first (smallest with reversed), then by their values, byte by byte. */
std::vector<Count> CountBy(Snapshot& snapshot, const std::vector<Column>& columns, bool reversed);

}  // namespace cli

#endif
