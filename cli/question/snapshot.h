// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_SNAPSHOT_H
#define VORN_CLI_QUESTION_SNAPSHOT_H

/**
 * @file
 * One enumeration and what is known of it.
 */

#include <string>

#include "cli/process/supervision/gate.h"
#include "cli/question/facts_reader.h"
#include "cli/question/question.h"

namespace cli {

struct Snapshot {
    Files files;
    /** As what they are listed: a PATH in no share is answered by volume. */
    VORN::FileHandle::ENUM_BY by = VORN::FileHandle::ENUM_BY_SHARE;
    TextsOfThreads texts;   /**< that they point into */
    FactsOfProcesses facts; /**< that they point to, where asked for */
    size_t jobs = 1;        /**< threads that may show them */
    /** Why something is missing from the list; empty when it is complete. */
    std::string incompleteReason;
    std::vector<std::string> incompleteReasons; /**< the same, one by one */
    /** Why the question may not be what was meant: a PATH that doesn't exist; mostly empty. */
    std::string doubt;
    /** What else the user should know; mostly empty. */
    std::string notice;
};

/**
 * Enumerates what a source has, adds facts and times if asked, orders and selects: the part of
 * TakeSnapshot that is left once the question is understood.
 *
 * @throws Failure when there is no answer
 */
void FillSnapshot(Snapshot& snapshot, const Question& question, RecordSource& source);

/**
 * Understands the question, enumerates, adds facts and times if asked, orders and selects; all of
 * it inside the gate.
 *
 * @throws Failure when there is no answer
 */
Snapshot TakeSnapshot(const Question& asked, Gate& gate);

}  // namespace cli

#endif
