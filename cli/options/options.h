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

enum class Command { kList, kServices, kCheck, kMetrics };

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
    std::string outputFile; /**< metrics: empty or "-" for standard output */
    /** " (did you mean ...)" where the first PATH may have been meant for a command. */
    std::string commandHint;
};

}  // namespace cli

#endif
