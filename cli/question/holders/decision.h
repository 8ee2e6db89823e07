// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_DECISION_H
#define VORN_CLI_QUESTION_HOLDERS_DECISION_H

#include <atomic>
#include <mutex>
#include <optional>
#include <unordered_set>
#include <vector>

#include "cli/host/kernel/kernel_iterator.h"
#include "cli/question/holders/source.h"

namespace cli {

/**
 * Where it is only asked whether something is in use, the first holder decides: whoever looks for
 * more stops then. Several threads may ask at the same time.
 */
class Decision {
public:
    /** @param pids  whose files count */
    Decision(const Targets& targets, Wanted wanted, const std::vector<pid_t>& pids);

    /** Never where more is wanted. */
    bool IsMade() const { return made_; }

    /** To be called for each process of which something was found. */
    void NoteFound() { made_ = isWanted_; }

    /**
     * Takes what the kernel tells. What takes a further look doesn't decide.
     *
     * @return whether it is made, by this or before
     */
    bool Take(const HeldFile& file);

    /** What of the kernel's records has decided. */
    std::optional<Holder> Found() const;

private:
    const Targets& targets_;
    const bool isWanted_;
    std::unordered_set<pid_t> pids_;
    std::atomic<bool> made_ = false;
    mutable std::mutex mutex_; /**< of what follows */
    std::optional<Holder> found_;
};

/** What the kernel's own record says that a held file is. */
Identity IdentityOf(const HeldFile& file);

}  // namespace cli

#endif
