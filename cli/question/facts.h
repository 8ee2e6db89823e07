// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_FACTS_H
#define VORN_CLI_QUESTION_FACTS_H

/**
 * @file
 * What is known of a record beyond the library's own.
 */

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/host/facts/lock_table.h"
#include "cli/host/facts/process_facts.h"

namespace cli {

/** What the kernel knows of the process; texts are empty where it doesn't tell. */
struct HolderFacts {
    std::string command;
    std::string owner; /**< as whom it acts */
    std::string login; /**< who has logged in, whatever the process has become since */
    std::string unit;
    std::optional<std::time_t> started;
    BootTicks start = 0; /**< the same as the kernel has it: with the pid, one process */
};

/** A lock that the process has on the file, and who waits for it. */
struct HeldLock {
    KernelLock lock;
    std::vector<LockWaiter> waiters;
};

/** What the kernel knows of how a process holds a file, as far as it was asked for. */
struct Facts {
    /** None where the process has ended, or another has its pid. */
    std::shared_ptr<const HolderFacts> process;
    std::vector<int> descriptors;   /**< ascending */
    std::vector<std::string> modes; /**< how these have it open, each once */
    std::vector<HeldLock> locks;    /**< each once */
    /** What they lead to, each once: several where deleted files had the same name. */
    std::vector<FileFacts> files;
};

}  // namespace cli

#endif
