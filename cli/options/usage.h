#ifndef VORN_CLI_OPTIONS_USAGE_H
#define VORN_CLI_OPTIONS_USAGE_H

#include <string_view>

namespace cli {

/** What --help prints: a screen of it, examples at the end. */
std::string_view HelpText();
/** What --version prints. */
std::string_view VersionText();

}  // namespace cli

#endif
