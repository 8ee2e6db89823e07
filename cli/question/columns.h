// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_COLUMNS_H
#define VORN_CLI_QUESTION_COLUMNS_H

/**
 * @file
 * What a record can be shown, selected, counted and ordered by.
 */

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/question/record.h"

namespace cli {

/** The library's columns come first, with the values of MEMBER; those of Facts last. */
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
    kDeleted,
    kShare, /**< or the volume, for records by volume */
    kCommand,
    kOwner,
    kLogin,
    kUnit,
    kStarted,
    kFd,
    kMode,
    kSize,
    kSpace,
    kModified,
    kInode,
    kDevice,
    kLocks
};

constexpr size_t kColumns = static_cast<size_t>(Column::kLocks) + 1;
using ColumnSet = std::bitset<kColumns>;

/** What the numbers of a column count; texts have none. */
enum class Measure { kNone, kNumber, kSize, kTime };

/** Names as options and headings have them, in the order of Column. */
const std::vector<std::string>& ColumnNames();

std::string_view ColumnName(Column column);
Measure MeasureOf(Column column);

/** Whether its text comes from Facts. */
bool IsFact(Column column);

/**
 * A record's text in a column: bytes as the kernel gives them, "yes" or "no" for flags, "-" for
 * what isn't known.
 */
std::string ColumnText(const FileRecord& file, Column column);
/** The same in place of another text, whose memory it takes. */
void AssignColumnText(std::string& text, const FileRecord& file, Column column);

/** A record's numbers in a column that measures: bytes, seconds since 1970; none if unknown. */
std::vector<std::int64_t> ColumnNumbers(const FileRecord& file, Column column);

/** The share that a record is shown under, or its volume. */
std::string_view PlaceOf(const FileRecord& file);

}  // namespace cli

#endif
