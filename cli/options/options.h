// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_OPTIONS_H
#define VORN_CLI_OPTIONS_OPTIONS_H

/**
 * @file
 * What the command line asks for.
 */

#include <optional>
#include <string>

#include "cli/answer/presentation.h"
#include "cli/question/question.h"

namespace cli {

enum class Command { kList, kServices, kCheck, kMetrics, kBusy, kIdle, kDisconnect, kEvents };

struct Options {
    Command command = Command::kList;
    bool help = false;
    bool version = false;

    Question question;
    Presentation presentation;
    bool formatGiven = false;

    std::optional<double> watchSeconds;
    std::optional<double> timeoutSeconds;
    bool quiet = false;
    bool strict = false;
    /** busy, idle: look again until nothing is in use, for so long at most. */
    std::optional<double> waitSeconds;
    bool inside = false;          /**< busy, idle: this PID namespace is all that matters */
    bool yes = false;             /**< disconnect: don't ask */
    bool dryRun = false;          /**< disconnect: show what would be ended */
    bool force = false;           /**< disconnect: kill what doesn't end by itself */
    double graceSeconds = 10;     /**< disconnect: for what ends by itself */
    double heartbeatSeconds = 60; /**< events: between signs of life */
    bool journal = false;         /**< events: to systemd's journal */
    /** events: between looks at volumes that can't be watched; nothing for none. */
    std::optional<double> intervalSeconds = 2;
    std::string outputFile; /**< metrics: empty or "-" for standard output */
    /** " (did you mean ...)" where the first PATH may have been meant for a command. */
    std::string commandHint;
};

}  // namespace cli

#endif
