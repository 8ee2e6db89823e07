// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_ORDERING_H
#define VORN_CLI_QUESTION_ORDERING_H

#include <vector>

#include "cli/question/question.h"

namespace cli {

/**
 * Orders records by columns, the first one first: numbers and times as such, what isn't known
 * before them, texts byte by byte; then by process id. What is equal in all of that stays in its
 * order.
 */
void Order(Files& files, const std::vector<Column>& columns);

}  // namespace cli

#endif
