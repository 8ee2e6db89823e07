// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_ATTRIBUTION_H
#define VORN_CLI_QUESTION_ATTRIBUTION_H

/**
 * @file
 * Services and connections of records, asked for once a process.
 */

#include "cli/process/workers.h"
#include "cli/question/question.h"

namespace cli {

/**
 * Sets service, host and user as the library's steps do for one list of all records with processes
 * in the order of their ids. A process's records stand together.
 *
 * Who is asked for neither gets neither.
 *
 * @throws Failure when a step fails
 */
void Attribute(Files& files, const Asked& asked, RecordTexts& texts, const Workers& workers);

}  // namespace cli

#endif
