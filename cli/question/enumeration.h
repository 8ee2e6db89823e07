// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_ENUMERATION_H
#define VORN_CLI_QUESTION_ENUMERATION_H

#include <vector>

#include "cli/process/workers.h"
#include "cli/question/question.h"

namespace cli {

/**
 * Every file that is held open on a volume, as EnumOpenedFile lists them with the identities of
 * the caller: the lists, one behind the other, are its list. Each step is over before the next
 * begins, and several threads take part in each.
 *
 * - Nobody has tested for folders; that may be left to those who want to know.
 * - Service, host and user are there as far as they are asked for. On a host with control groups
 *   v2 alone services have their names nevertheless (see groups::ServiceUnits).
 *
 * @return at least one list
 * @throws Failure when there is no answer, and what the library's steps let through
 */
std::vector<Files> EnumerateFiles(const Question& question, RecordSource& source,
                                  const Workers& workers);

}  // namespace cli

#endif
