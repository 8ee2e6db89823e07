// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_ARGUMENTS_H
#define VORN_CLI_OPTIONS_ARGUMENTS_H

/**
 * @file
 * The command line as options.
 */

#include <string>
#include <vector>

#include "cli/options/options.h"

namespace cli {

/**
 * @param arguments  without the program's name; a command may come first, "list" is the default.
 *                   PATHs stay as they were given
 * @throws UsageError
 */
Options ParseArguments(std::vector<std::string> arguments);

/** Names of a command's options, such as "--by" and "-q". */
std::vector<std::string> OptionNames(Command command);

/** Names of the commands in the order of Command. */
const std::vector<std::string>& CommandNames();

}  // namespace cli

#endif
