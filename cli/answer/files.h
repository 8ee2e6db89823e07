// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_ANSWER_FILES_H
#define VORN_CLI_ANSWER_FILES_H

/**
 * @file
 * The records of a snapshot as rows.
 */

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/answer/formats/writer.h"
#include "cli/question/snapshot.h"

namespace cli {

/**
 * What JSON of a schema always has and, as schema 1, CSV by default: all but the time, which costs
 * a look at each file, and in schema 1 but the facts.
 */
std::vector<Column> AllColumns(bool withTime, int schema = 1);

/** Columns of a format: those asked for or its own. */
std::vector<Column> ShownColumns(const Presentation& presentation, bool withTime);

/** @param schema  of JSON, which has its types; other formats have the texts of schema 1 */
std::vector<Heading> HeadingsOf(const std::vector<Column>& columns, int schema = 1);

/** Puts a record's text in a column, as HeadingsOf says what it is, in place of a cell's. */
void FillCell(std::string& cell, const FileRecord& file, Column column, int schema);

/** Fills a row, which may be a used one. */
void FillRow(Row& row, const FileRecord& file, const std::vector<Column>& columns, int schema = 1);

/** The lines above records of a table that have a column's text in common. */
class Sections {
public:
    Sections(std::optional<Column> group, RecordWriter& writer) : group_(group), writer_(writer) {}

    /** To be called before each record. @return whether a section has begun */
    bool Enter(const FileRecord& file);

private:
    const std::optional<Column> group_;
    RecordWriter& writer_;
    std::optional<std::string> text_;
};

/** Writes the records up to the limit. */
void WriteFiles(const Snapshot& snapshot, const Question& question,
                const Presentation& presentation, const Terminal& terminal, Output& output);

}  // namespace cli

#endif
