// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_SEARCH_H
#define VORN_CLI_QUESTION_HOLDERS_SEARCH_H

#include <sys/types.h>

#include <string>
#include <unordered_set>
#include <vector>

#include "cli/question/holders/source.h"
#include "cli/question/sources/sources.h"

namespace cli {

struct SearchQuestion {
    std::vector<std::string> paths;
    Wanted wanted = Wanted::kFirstName;
    bool inside = false; /**< processes outside of this PID namespace are of no interest */
    SourceKind source = SourceKind::kAuto;
    /** This program's own processes, which end with the answer. */
    std::unordered_set<pid_t> own;
};

/**
 * Asks every source, and names the processes.
 *
 * @throws Failure for a path that doesn't exist
 */
Holders FindHolders(const SearchQuestion& question);

}  // namespace cli

#endif
