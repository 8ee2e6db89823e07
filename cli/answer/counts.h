// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_COUNTS_H
#define VORN_CLI_ANSWER_COUNTS_H

#include <string>
#include <vector>

#include "cli/answer/formats/writer.h"
#include "cli/question/counts.h"
#include "cli/question/question.h"

namespace cli {

/** A bar of width columns at most, for part of the biggest count or size; never empty. */
std::string Bar(std::uint64_t part, std::uint64_t biggest, size_t width, bool utf8);

/** Writes how many records there are of each kind, up to the limit. */
void WriteCounts(const Snapshot& snapshot, const Question& question,
                 const Presentation& presentation, const Terminal& terminal, Output& output);

}  // namespace cli

#endif
