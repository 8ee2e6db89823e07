// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_REPORT_OPTIONS_H
#define VORN_CLI_OPTIONS_REPORT_OPTIONS_H

/**
 * @file
 * The options of the commands that report on the host as a whole: services, check, metrics,
 * events.
 */

#include "cli/options/options.h"
#include "cli/options/parser.h"

namespace cli {

void AddServicesOptions(Parser& parser, Options& options);
void AddCheckOptions(Parser& parser, Options& options);
void AddMetricsOptions(Parser& parser, Options& options);
void AddEventsOptions(Parser& parser, Options& options);
/** Asks for what the metrics tell. */
void CompleteMetricsOptions(Options& options);

}  // namespace cli

#endif
