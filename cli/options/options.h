#ifndef VORN_CLI_OPTIONS_OPTIONS_H
#define VORN_CLI_OPTIONS_OPTIONS_H

/**
 * @file
 * What the command line asks for.
 */

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/question/columns.h"
#include "cli/question/selection.h"

namespace cli {

enum class Command { kList, kServices, kCheck, kMetrics };

enum class Format { kTable, kJson, kJsonl, kCsv, kPrint0, kPids };

struct Options {
    Command command = Command::kList;
    bool help = false;
    bool version = false;

    VORN::FileHandle::ENUM_BY by = VORN::FileHandle::ENUM_BY_SHARE;
    bool time = false;
    Selection selection;

    std::optional<Column> sort;
    bool reverse = false;
    std::optional<size_t> limit;

    Format format = Format::kTable;
    Column print0Column = Column::kFullPath;
    std::vector<Column> columns; /**< empty: the format's own */
    bool header = true;
    std::vector<Column> countBy;

    std::optional<double> watchSeconds;
    std::optional<double> timeoutSeconds;
    bool quiet = false;
    bool strict = false;
    std::string outputFile; /**< metrics: empty for standard output */
};

/** "share" or "volume". */
inline const char* ByName(const Options& options) {
    return options.by == VORN::FileHandle::ENUM_BY_SHARE ? "share" : "volume";
}

}  // namespace cli

#endif
