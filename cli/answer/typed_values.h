// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_TYPED_VALUES_H
#define VORN_CLI_ANSWER_TYPED_VALUES_H

#include <string>

#include "cli/answer/formats/writer.h"
#include "cli/question/columns.h"

namespace cli {

/** What a column is to JSON of schema 2. */
Kind TypedKind(Column column);

/** A record's value in a column of Kind::kJson. */
std::string TypedValue(const FileRecord& file, Column column);

}  // namespace cli

#endif
