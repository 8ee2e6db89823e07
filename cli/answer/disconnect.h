// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_DISCONNECT_H
#define VORN_CLI_ANSWER_DISCONNECT_H

/**
 * @file
 * Connections that are to be ended, and what has become of them, shown.
 */

#include <string>
#include <vector>

#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/disconnect/ending.h"
#include "cli/question/disconnect/plan.h"

namespace cli {

/** "SMB connection of alice from 192.0.2.10 (process 71)", harmless whatever the names are. */
std::string Describe(const PlannedConnection& connection);
/** Why a process that holds selected files is left alone, and what would end it. */
std::string Describe(const LeftAlone& leftAlone);

/** A row a file: whose connection holds it, and whether it was selected or goes with it. */
void WritePlan(const Plan& plan, const Terminal& terminal, Output& output);
/** A line a connection that has ended, by outcomes in the order of the plan's connections. */
void WriteOutcomes(const Plan& plan, const std::vector<Outcome>& outcomes, Output& output);

/** What the document of JSON says beside the plan. */
struct DisconnectState {
    std::string state;                    /**< "nothing", "planned", "ended" or "remaining" */
    std::string incompleteReason;         /**< empty when nothing is missing */
    std::vector<Outcome> outcomes;        /**< empty where nothing was to be ended */
    std::vector<FileOfProcess> heldSince; /**< selected files that others hold by now */
};

void WriteDisconnectJson(const Plan& plan, const DisconnectState& state, Output& output);

}  // namespace cli

#endif
