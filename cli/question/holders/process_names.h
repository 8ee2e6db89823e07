// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_PROCESS_NAMES_H
#define VORN_CLI_QUESTION_HOLDERS_PROCESS_NAMES_H

#include "cli/question/holders/holder.h"

namespace cli {

/**
 * Gives each process's rows its name, the user that it runs as, and what the library knows of it:
 * service, and user and host of the client that it serves.
 */
void NameProcesses(Holders& holders);

}  // namespace cli

#endif
