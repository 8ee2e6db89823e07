#ifndef VORN_CLI_OPTIONS_VALUES_H
#define VORN_CLI_OPTIONS_VALUES_H

/**
 * @file
 * Values of options as written. Each function throws UsageError for a text that is none.
 */

#include <string>
#include <vector>

#include "cli/options/options.h"

namespace cli {

VORN::FileHandle::ENUM_BY ParseBy(const std::string& text);
Format ParseFormat(const std::string& text);
Flagged ParseFlagged(const std::string& option, const std::string& text);
Column ParseColumn(const std::string& option, const std::string& text);
Column ParseSortColumn(const std::string& text);
/** Names with commas between them, each once. */
std::vector<Column> ParseColumns(const std::string& option, const std::string& text);
/** COLUMN=TEXT, for a column that the library matches. */
Condition ParseCondition(const std::string& option, const std::string& text, bool contains,
                         bool negated);
size_t ParseLimit(const std::string& text);
/** A number of seconds from 0.1 to a day, fractions included. */
double ParseSeconds(const std::string& option, const std::string& text);
bool LooksLikeNumber(const std::string& text);

/** The words that an option takes. */
const std::vector<std::string>& FormatNames();
const std::vector<std::string>& FlaggedNames();
const std::vector<std::string>& ByNames();

}  // namespace cli

#endif
