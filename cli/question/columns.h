#ifndef VORN_CLI_QUESTION_COLUMNS_H
#define VORN_CLI_QUESTION_COLUMNS_H

/**
 * @file
 * What a record can be shown, selected, counted and ordered by.
 */

#include <string>
#include <string_view>
#include <vector>

#include "vorn/filehandle.h"

namespace cli {

using VORN::FileHandle::OpenedFile;

/** The library's columns come first, with the values of MEMBER. */
enum class Column {
    kService = VORN::FileHandle::MEMBER_SERVICE,
    kPid = VORN::FileHandle::MEMBER_PID,
    kUser = VORN::FileHandle::MEMBER_USER,
    kHost = VORN::FileHandle::MEMBER_HOST,
    kPath = VORN::FileHandle::MEMBER_PATH,
    kFilename = VORN::FileHandle::MEMBER_FILENAME,
    kTime = VORN::FileHandle::MEMBER_TIME,
    kFullPath,
    kHidden,
    kFolder,
    kDeleted
};

/** Names as options and headings have them, in the order of Column. */
const std::vector<std::string>& ColumnNames();
/** Names of the columns that the library can order by. */
const std::vector<std::string>& SortColumnNames();

std::string_view ColumnName(Column column);

/** Whether the library matches texts against it. */
bool IsMember(Column column);

/** A record's text in a column: bytes as the kernel gives them, "yes" or "no" for flags. */
std::string ColumnText(OpenedFile& file, Column column, bool deleted);

}  // namespace cli

#endif
