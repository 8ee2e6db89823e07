#ifndef VORN_CLI_OPTIONS_ARGUMENTS_H
#define VORN_CLI_OPTIONS_ARGUMENTS_H

/**
 * @file
 * The command line as options.
 */

#include <stdexcept>
#include <string>
#include <vector>

#include "cli/options/options.h"

namespace cli {

/** The command line can't be meant as it is; the text says why and what to write instead. */
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/**
 * @param arguments  without the program's name; a command may come first, "list" is the default.
 *                   PATHs stay as they were given
 * @throws UsageError
 */
Options ParseArguments(std::vector<std::string> arguments);

/** Names of a command's options, such as "--by" and "-q", for tests and suggestions. */
std::vector<std::string> OptionNames(Command command);

/** Names of the commands, "list" among them. */
const std::vector<std::string>& CommandNames();

}  // namespace cli

#endif
