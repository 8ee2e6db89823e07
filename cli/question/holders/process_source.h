// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_PROCESS_SOURCE_H
#define VORN_CLI_QUESTION_HOLDERS_PROCESS_SOURCE_H

#include <atomic>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cli/process/workers.h"
#include "cli/question/holders/process_reader.h"

namespace cli {

/** Processes: what they hold in descriptors, folders, programs, mappings and bound sockets. */
class ProcessSource : public Source {
public:
    /**
     * @param pids    all that are to be looked at
     * @param workers who look
     * @param source  where descriptors and mappings are told; the rest is always read in /proc
     * @param open    begins a pass of the kernel's iterator
     */
    ProcessSource(std::vector<pid_t> pids, const Workers& workers, SourceKind source,
                  decltype(KernelQuestion::open) open = KernelIterator::Open)
        : pids_(std::move(pids)), workers_(workers), source_(source), open_(std::move(open)) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    /** What one thread brings home. */
    struct Share {
        Holders holders;
        std::vector<std::pair<pid_t, int>> unread; /**< with the errno value */
        std::unordered_set<ino_t> seenSockets;
    };

    Share ReadShare(const ProcessReading& reading, std::atomic<size_t>& next) const;
    /** @return numbers of the bound sockets that some process has */
    std::unordered_set<ino_t> ReadProcesses(const ProcessReading& reading, Holders& holders) const;

    const std::vector<pid_t> pids_;
    const Workers workers_;
    const SourceKind source_;
    const decltype(KernelQuestion::open) open_;
};

/** The processes that /proc shows; nothing, with errno, where it can't be listed. */
std::optional<std::vector<pid_t>> ListProcesses();

/** Name of a process, arbitrary bytes; empty when it has gone. */
std::string CommandName(pid_t pid);

}  // namespace cli

#endif
