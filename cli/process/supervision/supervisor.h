// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_SUPERVISION_SUPERVISOR_H
#define VORN_CLI_PROCESS_SUPERVISION_SUPERVISOR_H

#include <functional>
#include <optional>

#include "cli/process/supervision/gate.h"

namespace cli {

struct Supervision {
    std::optional<double> seconds; /**< that the work may stay inside the gate at a time */
    bool watches = false;          /**< goes on until somebody ends it */
};

/**
 * Runs work in a process of its own and returns its exit status. This process, which no volume can
 * block, owns terminal, signals and time meanwhile.
 *
 * - Work that stays inside the gate for longer than the limit is killed, the volumes that don't
 *   answer either are named on standard error, and the result is kFailed.
 * - SIGINT, SIGTERM and SIGHUP end the work wherever it is, and so does, in a watch, the key "q" or
 *   the end of the reader of standard output. A watch that is ended so has kFound or kNothingFound
 *   for a result, other work kFailed.
 * - However it ends, the terminal is as it was.
 *
 * Throws Failure where the work can't be started.
 */
int RunSupervised(const Supervision& how, const std::function<int(Gate&)>& work);

}  // namespace cli

#endif
