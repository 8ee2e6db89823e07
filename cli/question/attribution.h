// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_ATTRIBUTION_H
#define VORN_CLI_QUESTION_ATTRIBUTION_H

/**
 * @file
 * Services and connections of records, asked for once a process.
 */

#include <vector>

#include "cli/process/workers.h"
#include "cli/question/question.h"

namespace cli {

/**
 * Sets service, host and user as the library's steps do for one list that holds all records, the
 * lists one behind the other and processes in the order of their ids. A process lies in one list,
 * or in neighbours; its records stand together.
 *
 * Who is asked for neither gets neither.
 *
 * @throws Failure when a step fails
 */
void Attribute(std::vector<Files>& lists, const Asked& asked, const Workers& workers);

}  // namespace cli

#endif
