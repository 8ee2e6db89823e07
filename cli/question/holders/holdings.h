// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_HOLDINGS_H
#define VORN_CLI_QUESTION_HOLDERS_HOLDINGS_H

#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/host/kernel/kernel_iterator.h"
#include "cli/process/workers.h"
#include "cli/question/holders/source.h"
#include "cli/question/sources/sources.h"

namespace cli {

/**
 * What all processes hold on the file systems of the targets, descriptors or mappings, as one pass
 * of a kernel's iterator tells it.
 */
class Holdings {
public:
    /** Reads a pass to its end; nothing where that fails. */
    static std::optional<Holdings> Read(KernelIterator& iterator);

    /** In the kernel's order, those of its threads as well. */
    const std::vector<HeldFile>& Of(pid_t pid) const;

    /** Whether a thread was told of by itself. */
    bool HasOwn(pid_t pid, pid_t thread) const;

private:
    std::list<std::string> portions_; /**< where the paths are */
    std::unordered_map<pid_t, std::vector<HeldFile>> files_;
};

/** What the kernel has told by itself; what it hasn't is to be read in /proc. */
struct KernelHoldings {
    std::optional<Holdings> descriptors;
    std::optional<Holdings> mappings;
};

/**
 * Has the kernel pass over the tables of all processes, where it can be asked.
 *
 * @param sockets  descriptors of sockets are wanted too
 * @throws Failure, with the reason, where the iterator alone will do and it can't be had
 */
KernelHoldings AskKernel(const Targets& targets, Wanted wanted, bool sockets, SourceKind source,
                         const Workers& workers);

}  // namespace cli

#endif
