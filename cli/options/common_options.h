#ifndef VORN_CLI_OPTIONS_COMMON_OPTIONS_H
#define VORN_CLI_OPTIONS_COMMON_OPTIONS_H

/**
 * @file
 * Options that several commands have.
 */

#include "cli/options/options.h"
#include "cli/options/parser.h"

namespace cli {

/** --help and --version, which every command has. */
void AddCommonOptions(Parser& parser, Options& options);
/** --by */
void AddBy(Parser& parser, Options& options);
/** --timeout */
void AddTimeout(Parser& parser, Options& options);
/** --json */
void AddJson(Parser& parser, Options& options);

/** Throws UsageError where another format was asked for before. */
void TakeFormat(Options& options, Format format);

}  // namespace cli

#endif
