// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_DISCONNECT_LOOK_H
#define VORN_CLI_QUESTION_DISCONNECT_LOOK_H

#include <string>

#include "cli/process/supervision/gate.h"
#include "cli/question/disconnect/plan.h"
#include "cli/question/question.h"

namespace cli {

/** One look at what is held, and what would have to end for it to be free. */
struct Look {
    Plan plan;
    std::string incompleteReason; /**< why something may be missing; empty when nothing is */
    std::string doubt;            /**< as of a snapshot */
    std::string notice;           /**< as of a snapshot */
};

/**
 * @param withOthers  also what the connections hold beside the selected files
 * @throws Failure when there is no answer
 */
Look TakeLook(const Question& question, Gate& gate, bool withOthers);

}  // namespace cli

#endif
