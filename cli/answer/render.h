#ifndef VORN_CLI_ANSWER_RENDER_H
#define VORN_CLI_ANSWER_RENDER_H

/**
 * @file
 * A snapshot in the format that was asked for.
 */

#include <functional>

#include "cli/answer/table.h"
#include "cli/options/options.h"
#include "cli/process/output.h"
#include "cli/process/terminal.h"
#include "cli/question/snapshot.h"

namespace cli {

/** Columns of a table or of CSV: those asked for or the format's own. */
std::vector<Column> ShownColumns(const Options& options);

/**
 * The records up to the limit, ready to print.
 *
 * @param isNew  gives the table a first column that marks these records with "+"; may be empty
 */
Table FileTable(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                const std::function<bool(const OpenedFile&)>& isNew);

void RenderFiles(Snapshot& snapshot, const Options& options, const Terminal& terminal,
                 Output& output);

}  // namespace cli

#endif
