#ifndef VORN_CLI_QUESTION_SNAPSHOT_H
#define VORN_CLI_QUESTION_SNAPSHOT_H

/**
 * @file
 * One enumeration and what is known of it.
 */

#include <list>
#include <string>
#include <unordered_set>

#include "cli/process/supervision/gate.h"
#include "cli/question/question.h"

namespace cli {

struct Snapshot {
    std::list<OpenedFile> files;
    std::unordered_set<const OpenedFile*> deleted; /**< nodes of files */
    /** Why processes are missing from the list; empty when it is complete. */
    std::string incompleteReason;
    /** What else the user should know; mostly empty. */
    std::string notice;

    bool IsDeleted(const OpenedFile& file) const {
        return !deleted.empty() && deleted.count(&file) != 0;
    }
};

/**
 * Enumerates, adds times if asked, orders and selects; all of it inside the gate.
 *
 * @throws Failure when there is no answer
 */
Snapshot TakeSnapshot(const Question& question, Gate& gate);

}  // namespace cli

#endif
