// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_PRESENTATION_H
#define VORN_CLI_ANSWER_PRESENTATION_H

/**
 * @file
 * How an answer is to look.
 */

#include <cstddef>
#include <optional>
#include <vector>

#include "cli/question/columns.h"

namespace cli {

enum class Format { kTable, kJson, kJsonl, kCsv, kPrint0, kPids };

struct Presentation {
    Format format = Format::kTable;
    int schema = 1;              /**< of JSON */
    bool jsonHeader = false;     /**< jsonl begins with a record of what a document says */
    std::optional<size_t> limit; /**< records shown at most */
    bool header = true;          /**< of the formats table and csv */
    std::vector<Column> columns; /**< of the formats table and csv; empty: the format's own */
    std::vector<Column> added;   /**< behind these */
    std::vector<Column> countBy; /**< not empty: counts are shown and not files */
    std::vector<Column> summed;  /**< sizes, with the counts */
    std::optional<Column> group; /**< of the format table: what a section has in common */
    bool wide = false;           /**< nothing is shortened */
    Column print0Column = Column::kFullPath;
};

}  // namespace cli

#endif
