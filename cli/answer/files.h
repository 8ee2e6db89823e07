#ifndef VORN_CLI_ANSWER_FILES_H
#define VORN_CLI_ANSWER_FILES_H

/**
 * @file
 * The records of a snapshot as rows.
 */

#include <cstddef>
#include <optional>
#include <vector>

#include "cli/answer/formats/writer.h"
#include "cli/question/snapshot.h"

namespace cli {

/** What JSON always has and CSV by default: all but the time, which costs a look at each file. */
std::vector<Column> AllColumns(bool withTime);

/** Columns of a format: those asked for or its own. */
std::vector<Column> ShownColumns(const Presentation& presentation, bool withTime);

std::vector<Heading> HeadingsOf(const std::vector<Column>& columns);

/** Fills a row, which may be a used one. */
void FillRow(Row& row, OpenedFile& file, const std::vector<Column>& columns, bool deleted);

/** Calls visit(file, deleted) for each record up to a limit. */
template <typename Visit>
void ForEachShown(Snapshot& snapshot, std::optional<size_t> limit, const Visit& visit) {
    size_t left = limit.value_or(snapshot.files.size());
    for (auto file = snapshot.files.begin(); file != snapshot.files.end() && left > 0; ++file) {
        visit(*file, snapshot.IsDeleted(*file));
        --left;
    }
}

/** Writes the records up to the limit. */
void WriteFiles(Snapshot& snapshot, const Question& question, const Presentation& presentation,
                const Terminal& terminal, Output& output);

}  // namespace cli

#endif
