// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_METRICS_H
#define VORN_CLI_ANSWER_METRICS_H

/**
 * @file
 * Numbers for Prometheus, in its text format.
 */

#include <string>
#include <string_view>
#include <vector>

#include "cli/question/snapshot.h"

namespace cli {

/**
 * Each combination of share (or volume), service and, where the question asks for it, user is a
 * series; the rest is one more.
 */
constexpr size_t kMostSeries = 1000;

/** Appends a label's value: escaped, and always UTF-8, as a scraper refuses everything else. */
void AppendLabelValue(std::string& out, std::string_view text);

/**
 * @param summed   sizes that are told of all files, and not only of deleted ones
 * @param seconds  how long the enumeration took
 */
std::string MetricsText(const Snapshot& snapshot, const Question& question,
                        const std::vector<Column>& summed, double seconds);

}  // namespace cli

#endif
