// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_COMMANDS_COMMANDS_H
#define VORN_CLI_COMMANDS_COMMANDS_H

/**
 * @file
 * The commands. Each returns the exit status and throws Failure where that would be kFailed.
 */

#include "cli/failure.h"
#include "cli/options/options.h"
#include "cli/process/supervision/gate.h"

namespace cli {

int ListCommand(const Options& options, Gate& gate);
/** The list again and again, until the supervisor ends it or the reader has gone. */
int WatchCommand(const Options& options, Gate& gate);
int ServicesCommand(const Options& options);
/** kNothingFound when something is missing that a full answer takes. */
int CheckCommand(const Options& options, Gate& gate);
/** busy and idle: whether something is in use, by whom and why. */
int BusyCommand(const Options& options, Gate& gate);
/** Ends the client connections that hold files; kFailed when some remain, or it can't be told. */
int DisconnectCommand(const Options& options, Gate& gate);
/** What is opened and closed, as it happens, until a signal ends it or the reader has gone. */
int EventsCommand(const Options& options);
int MetricsCommand(const Options& options, Gate& gate);

}  // namespace cli

#endif
