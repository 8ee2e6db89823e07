// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_LIST_OPTIONS_H
#define VORN_CLI_OPTIONS_LIST_OPTIONS_H

#include <set>

#include "cli/options/options.h"
#include "cli/options/parser.h"

namespace cli {

void AddListOptions(Parser& parser, Options& options);

/** Which files: conditions and flags, as every command has them that selects as the list does. */
void AddSelection(Parser& parser, Selection& selection);

/** The columns that a selection goes by. */
std::set<Column> SelectedBy(const Selection& selection);

/** Has a question answer columns that cost a look of their own, where they are named. */
void AskFor(Question& question, const std::set<Column>& named);

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
