// SPDX-License-Identifier: MIT
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
/** --source: where descriptors are read, which changes no answer. */
void AddSource(Parser& parser, Options& options);
/** --source, and --jobs: how many threads look. */
void AddWork(Parser& parser, Options& options);
/** --timeout */
void AddTimeout(Parser& parser, Options& options);
/** --sum: sizes beside counts */
void AddSum(Parser& parser, Presentation& presentation);
/** --json and --schema */
void AddJson(Parser& parser, Options& options);

/** Throws UsageError for a schema of what isn't JSON. */
void CheckSchema(const Options& options);

/** Throws UsageError where another format was asked for before. */
void TakeFormat(Options& options, Format format);

}  // namespace cli

#endif
