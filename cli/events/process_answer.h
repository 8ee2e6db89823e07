// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_PROCESS_ANSWER_H
#define VORN_CLI_EVENTS_PROCESS_ANSWER_H

#include <cstdint>
#include <string>
#include <vector>

#include "cli/question/record.h"

namespace cli {

/** What is told of the process of an event. */
struct ProcessAnswer {
    ProcessTexts texts;      /**< its id is set by who asks */
    std::uint64_t start = 0; /**< clock ticks since boot: with the id, one process and no other */
    std::string command;
};

/** Answers by the library's own stages, all in one go; they are changed in place. */
void AskProcesses(std::vector<ProcessAnswer>& processes);

}  // namespace cli

#endif
