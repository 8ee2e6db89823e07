// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_BUSY_H
#define VORN_CLI_ANSWER_BUSY_H

/**
 * @file
 * What keeps something in use, shown.
 */

#include <string>
#include <vector>

#include "cli/answer/presentation.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/holders/holder.h"

namespace cli {

/**
 * Writes a table, one JSON document, or process ids.
 *
 * @param paths  what was asked about
 */
void WriteHolders(const Holders& holders, const std::vector<std::string>& paths,
                  const Presentation& presentation, const Terminal& terminal, Output& output);

}  // namespace cli

#endif
