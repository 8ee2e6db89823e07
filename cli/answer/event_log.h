// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_EVENT_LOG_H
#define VORN_CLI_ANSWER_EVENT_LOG_H

#include "cli/answer/presentation.h"
#include "cli/process/output.h"
#include "cli/question/changes.h"

namespace cli {

/**
 * Writes {"event":"opened","at":"2024-03-07T14:05:09Z","initial":false,"file":{...}} and the like,
 * a line an event, in few writes: who reads a hundred thousand needn't be woken for each. All are
 * written when it returns. "initial" is what was open at the first look.
 */
void WriteEvents(const Changes& changes, const Presentation& presentation, bool withTime,
                 Output& output);

}  // namespace cli

#endif
