#ifndef VORN_CLI_ANSWER_EVENT_LOG_H
#define VORN_CLI_ANSWER_EVENT_LOG_H

#include "cli/process/output.h"
#include "cli/question/changes.h"

namespace cli {

/**
 * Writes {"event":"opened","at":"2024-03-07T14:05:09Z","initial":false,"file":{...}} and the like,
 * a line an event, each flushed. "initial" is what was open at the first look.
 */
void WriteEvents(Changes changes, bool withTime, Output& output);

}  // namespace cli

#endif
