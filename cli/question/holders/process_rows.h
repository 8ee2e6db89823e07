// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_PROCESS_ROWS_H
#define VORN_CLI_QUESTION_HOLDERS_PROCESS_ROWS_H

#include <string>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

/** The rows of one process: a row a reason, whatever the order in which things are found. */
class ProcessRows {
public:
    ProcessRows(const Targets& targets, Wanted wanted, pid_t pid)
        : targets_(targets), wanted_(wanted), pid_(pid) {}

    /**
     * Takes what the process holds, where it lies in a target.
     *
     * @param descriptor  negative where it is none
     * @param askText     the kernel's name of it
     */
    void Take(Reason reason, int descriptor, const Identity& identity, const AskText& askText);

    /** Takes what lies in a target for certain. */
    void Add(Reason reason, UsedFile file);

    /** Takes what nobody can tell of the process. */
    void Lose(std::string sentence) { lost_.push_back(std::move(sentence)); }

    /** Whether nothing more about this process is wanted. */
    bool Enough() const { return wanted_ <= Wanted::kPids && !rows_.empty(); }

    /** Moves what was found there, ordered by reason. */
    void MoveTo(Holders& holders);

private:
    bool WantsName(Reason reason) const;
    void TakeByName(Reason reason, int descriptor, const Identity& identity,
                    const std::string& text);
    void LosePlace(Reason reason, const std::string& text);
    const Holder* Row(Reason reason) const;
    UsedFile Describe(int descriptor, const Place& place, const Identity& identity,
                      const AskText& askText) const;

    const Targets& targets_;
    const Wanted wanted_;
    const pid_t pid_;
    std::vector<Holder> rows_;
    std::vector<Reason> unplaced_; /**< reasons of which a sentence is there already */
    std::vector<std::string> lost_;
};

}  // namespace cli

#endif
