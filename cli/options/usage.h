// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_USAGE_H
#define VORN_CLI_OPTIONS_USAGE_H

#include <string_view>

#include "cli/options/options.h"

namespace cli {

/** What a command's --help prints: a screen of it, examples at the end. */
std::string_view HelpText(Command command);
/** What --version prints. */
std::string_view VersionText();

}  // namespace cli

#endif
