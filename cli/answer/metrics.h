#ifndef VORN_CLI_ANSWER_METRICS_H
#define VORN_CLI_ANSWER_METRICS_H

/**
 * @file
 * Numbers for Prometheus, in its text format.
 */

#include <string>
#include <string_view>

#include "cli/question/snapshot.h"

namespace cli {

/** Each combination of share (or volume), service and user is a series; the rest is one more. */
constexpr size_t kMostSeries = 1000;

/** Appends a label's value: escaped, and always UTF-8, as a scraper refuses everything else. */
void AppendLabelValue(std::string& out, std::string_view text);

/** The share that a record is shown under, or its volume. */
std::string PlaceOf(OpenedFile& file, VORN::FileHandle::ENUM_BY by);

/** @param seconds  how long the enumeration took */
std::string MetricsText(Snapshot& snapshot, const Question& question, double seconds);

}  // namespace cli

#endif
