// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_DISCONNECT_OPTIONS_H
#define VORN_CLI_OPTIONS_DISCONNECT_OPTIONS_H

#include "cli/options/options.h"
#include "cli/options/parser.h"

namespace cli {

void AddDisconnectOptions(Parser& parser, Options& options);

/**
 * To be called when all options are read.
 *
 * @throws UsageError for options that don't go together, and where nobody is asked about everything
 */
void CompleteDisconnectOptions(Options& options);

}  // namespace cli

#endif
