#ifndef VORN_CLI_OPTIONS_LIST_OPTIONS_H
#define VORN_CLI_OPTIONS_LIST_OPTIONS_H

#include "cli/options/options.h"
#include "cli/options/parser.h"

namespace cli {

void AddListOptions(Parser& parser, Options& options);

/** Gives --watch its default where no number follows: what does could be a PATH. */
void GiveWatchItsValue(std::vector<std::string>& arguments);

/**
 * To be called when all options are read: refuses those that don't go together, and asks for times
 * where the time column is named.
 *
 * @throws UsageError
 */
void CompleteListOptions(Options& options);

}  // namespace cli

#endif
