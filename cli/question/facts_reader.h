// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_FACTS_READER_H
#define VORN_CLI_QUESTION_FACTS_READER_H

#include <vector>

#include "cli/process/workers.h"
#include "cli/question/columns.h"

namespace cli {

using FactsOfProcesses = std::vector<std::vector<Facts>>;

/**
 * Asks the kernel what columns say of records: each process once, and nothing that isn't asked for.
 * May wait for a network volume. The records point to what is returned.
 *
 * @param lookBegan  before the records were found: who has started since is not who was seen
 */
FactsOfProcesses ReadFacts(const std::vector<FileRecord*>& files, const ColumnSet& columns,
                           BootTicks lookBegan, const Workers& workers);

}  // namespace cli

#endif
