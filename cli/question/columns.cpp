// SPDX-License-Identifier: MIT
#include "cli/question/columns.h"

#include "cli/question/facts_text.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

std::string_view FlagText(bool flag) {
    return flag ? "yes" : "no";
}

/** In a column that is no fact. */
std::string_view OwnText(const FileRecord& file, Column column) {
    switch (column) {
        case Column::kService:
            return file.process->service;
        case Column::kPid:
            return file.process->pid;
        case Column::kUser:
            return file.process->user;
        case Column::kHost:
            return file.process->host;
        case Column::kPath:
            return file.path;
        case Column::kFilename:
            return file.filename;
        case Column::kTime:
            return file.time;
        case Column::kFullPath:
            return file.fullPath;
        case Column::kHidden:
            return FlagText(file.hidden);
        case Column::kFolder:
            return FlagText(file.folder);
        case Column::kDeleted:
            return FlagText(file.deleted);
        default:
            return PlaceOf(file);
    }
}

}  // namespace

const std::vector<std::string>& ColumnNames() {
    static const std::vector<std::string> kNames = {
        "service",   "pid",    "user",    "host",    "path",  "filename", "time",
        "full_path", "hidden", "folder",  "deleted", "share", "command",  "owner",
        "login",     "unit",   "started", "fd",      "mode",  "size",     "space",
        "modified",  "inode",  "device",  "locks"};
    return kNames;
}

std::string_view ColumnName(Column column) {
    return ColumnNames()[static_cast<size_t>(column)];
}

Measure MeasureOf(Column column) {
    switch (column) {
        case Column::kPid:
        case Column::kFd:
        case Column::kInode:
            return Measure::kNumber;
        case Column::kSize:
        case Column::kSpace:
            return Measure::kSize;
        case Column::kTime:
        case Column::kStarted:
        case Column::kModified:
            return Measure::kTime;
        default:
            return Measure::kNone;
    }
}

bool IsFact(Column column) {
    return column >= Column::kCommand;
}

void AssignColumnText(std::string& text, const FileRecord& file, Column column) {
    if (IsFact(column)) {
        text = FactText(file.facts, column);
    } else {
        text = OwnText(file, column);
    }
}

std::string ColumnText(const FileRecord& file, Column column) {
    std::string text;
    AssignColumnText(text, file, column);
    return text;
}

std::vector<std::int64_t> ColumnNumbers(const FileRecord& file, Column column) {
    std::optional<std::int64_t> number;
    switch (column) {
        case Column::kPid:
            number = support::ParseNumber<std::int64_t>(file.process->pid);
            break;
        case Column::kTime:
            number = ParseLocalTime(std::string(file.time));
            break;
        default:
            return FactNumbers(file.facts, column);
    }
    return number ? std::vector{*number} : std::vector<std::int64_t>();
}

std::string_view PlaceOf(const FileRecord& file) {
    // "photo/2024/a.jpg" by share, "/volume1/photo/2024/a.jpg" by volume.
    return file.path.substr(0, file.path.find('/', support::StartsWith(file.path, "/") ? 1 : 0));
}

}  // namespace cli
