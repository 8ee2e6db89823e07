// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_BUSY_OPTIONS_H
#define VORN_CLI_OPTIONS_BUSY_OPTIONS_H

#include <string>
#include <vector>

#include "cli/options/options.h"
#include "cli/options/parser.h"

namespace cli {

/** Of busy and idle. */
void AddBusyOptions(Parser& parser, Options& options);

/** Gives a --wait without "=" the longest time there is. */
void GiveWaitItsValue(std::vector<std::string>& arguments);

}  // namespace cli

#endif
