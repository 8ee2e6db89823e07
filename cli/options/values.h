// SPDX-License-Identifier: MIT
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
/** Names with commas between them, each once. */
std::vector<Column> ParseColumns(const std::string& option, const std::string& text);
/** What --columns says: columns, and with "+" those that come to the others. */
struct ShownChoice {
    std::vector<Column> own;
    std::vector<Column> added;
};
ShownChoice ParseShown(const std::string& option, const std::string& text);
/** Names of sizes with commas between them. */
std::vector<Column> ParseSummed(const std::string& text);
/** Of processes that have started within a time. */
Condition ParseSince(const std::string& text);
/** COLUMN=TEXT or, of a column that measures, COLUMN>NUMBER and the like. */
Condition ParseCondition(const std::string& option, const std::string& text, bool contains,
                         bool negated);
/** The version of the JSON schema. */
int ParseSchema(const std::string& text);
size_t ParseLimit(const std::string& text);
/** Threads, from 1 to 1024. */
size_t ParseJobs(const std::string& text);
SourceKind ParseSource(const std::string& text);
/** A number of seconds from 0.1 to a day, fractions included. */
double ParseSeconds(const std::string& option, const std::string& text);
bool LooksLikeNumber(const std::string& text);

/** The words that an option takes. */
const std::vector<std::string>& FormatNames();
const std::vector<std::string>& FlaggedNames();
const std::vector<std::string>& ByNames();
const std::vector<std::string>& SourceNames();

}  // namespace cli

#endif
