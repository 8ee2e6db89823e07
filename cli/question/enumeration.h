// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_ENUMERATION_H
#define VORN_CLI_QUESTION_ENUMERATION_H

#include "cli/process/workers.h"
#include "cli/question/question.h"

namespace cli {

/**
 * Every file that is held open on a volume, as EnumOpenedFile lists them with the identities of
 * the caller, and in its order. Each step is over before the next begins, and several threads
 * take part in each.
 *
 * - Nobody has tested for folders: LabelFolders does, for those that somebody wants to know of.
 * - Service, host and user are there as far as they are asked for. On a host with control groups
 *   v2 alone services have their names nevertheless (see groups::ServiceUnits).
 *
 * @param texts  empty; what the records point into afterwards
 * @throws Failure when there is no answer, and what the library's steps let through
 */
Files EnumerateFiles(const Question& question, RecordSource& source, const Workers& workers,
                     TextsOfThreads& texts);

/** Tests records for folders, each path once where equal ones are neighbours. */
void LabelFolders(FilePlace begin, FilePlace end);

}  // namespace cli

#endif
