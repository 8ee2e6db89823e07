#ifndef VORN_CLI_ANSWER_COUNTS_H
#define VORN_CLI_ANSWER_COUNTS_H

/**
 * @file
 * How many records there are of each kind.
 */

#include <string>
#include <vector>

#include "cli/options/options.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/snapshot.h"

namespace cli {

struct Count {
    std::vector<std::string> values; /**< one a counted column */
    size_t files;
};

/** Biggest first (smallest with reversed), then by their values, byte by byte. */
std::vector<Count> CountBy(Snapshot& snapshot, const std::vector<Column>& columns, bool reversed);

/** A bar of width columns at most, for part of the biggest count; never empty. */
std::string Bar(size_t part, size_t biggest, size_t width, bool utf8);

/** The counts of --count-by, in the format that was asked for. */
void RenderCounts(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                  Output& output);

}  // namespace cli

#endif
