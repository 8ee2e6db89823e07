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
    std::optional<size_t> limit; /**< records shown at most */
    bool header = true;          /**< of the formats table and csv */
    std::vector<Column> columns; /**< of the formats table and csv; empty: the format's own */
    std::vector<Column> countBy; /**< not empty: counts are shown and not files */
    Column print0Column = Column::kFullPath;
};

}  // namespace cli

#endif
