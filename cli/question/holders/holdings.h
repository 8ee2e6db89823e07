// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_HOLDINGS_H
#define VORN_CLI_QUESTION_HOLDERS_HOLDINGS_H

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/host/kernel/kernel_iterator.h"
#include "cli/process/workers.h"
#include "cli/question/holders/decision.h"
#include "cli/question/holders/source.h"
#include "cli/question/sources/sources.h"

namespace cli {

/**
 * What all processes hold on the file systems of the targets, descriptors or mappings, as one pass
 * of a kernel's iterator tells it.
 */
class Holdings {
public:
    /** Reads a pass to its end, or until it is decided; nothing where that fails. */
    static std::optional<Holdings> Read(KernelIterator& iterator, Decision& decision);

    /** In the kernel's order, those of its threads as well. */
    const std::vector<HeldFile>& Of(pid_t pid) const;

    /** Whether a thread was told of by itself. */
    bool HasOwn(pid_t pid, pid_t thread) const;

private:
    std::list<std::string> portions_; /**< where the paths are */
    std::unordered_map<pid_t, std::vector<HeldFile>> files_;
};

/** What the kernel is asked, and how. */
struct KernelQuestion {
    const Targets& targets;
    Wanted wanted;
    bool sockets; /**< descriptors of sockets are wanted too */
    SourceKind source;
    /** Begins a pass. */
    std::function<KernelIterator::Opened(KernelIterator::Kind, const KernelIterator::Scope&)> open;
};

/** What the kernel has told by itself; what it hasn't is to be read in /proc. */
struct KernelHoldings {
    std::optional<Holdings> descriptors;
    std::optional<Holdings> mappings;
};

/**
 * Has the kernel pass over the tables of all processes, where it can be asked. Once it is decided
 * there is nothing more to be told.
 *
 * @throws Failure, with the reason, where the iterator alone will do and it can't be had
 */
KernelHoldings AskKernel(const KernelQuestion& question, const Workers& workers,
                         Decision& decision);

}  // namespace cli

#endif
