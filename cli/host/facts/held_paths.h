// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FACTS_HELD_PATHS_H
#define VORN_CLI_HOST_FACTS_HELD_PATHS_H

#include <optional>
#include <set>
#include <string>
#include <unordered_map>

#include "cli/host/facts/process_facts.h"

namespace cli {

/**
 * What single processes hold open, asked of their descriptors' links: whatever a list may have
 * lacked, it answers for those that it is asked about. No file system is asked. Each process is
 * read once.
 */
class HeldPaths {
public:
    /**
     * Whether a process may hold a path, as its link has it: false only where it surely doesn't.
     *
     * @param start  of the process; 0 where that isn't known
     */
    bool MayHold(const std::string& pid, BootTicks start, const std::string& path);

private:
    struct Process {
        bool ended = false;
        BootTicks start = 0;
        std::optional<std::set<std::string>> paths; /**< nothing where these can't be read */
    };

    static Process Read(const std::string& pid);

    std::unordered_map<std::string, Process> processes_;
};

}  // namespace cli

#endif
