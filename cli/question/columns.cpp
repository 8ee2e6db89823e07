// SPDX-License-Identifier: MIT
#include "cli/question/columns.h"

#include "cli/question/facts_text.h"
#include "support/numbers.h"

namespace cli {

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

bool IsMember(Column column) {
    return column <= Column::kTime;
}

bool IsFact(Column column) {
    return column >= Column::kCommand;
}

std::string ColumnText(OpenedFile& file, Column column, const Known& known) {
    const auto flag = [](bool value) { return std::string(value ? "yes" : "no"); };
    switch (column) {
        case Column::kService:
            return file.getService();
        case Column::kPid:
            return file.getPidStr();
        case Column::kUser:
            return file.getUser();
        case Column::kHost:
            return file.getHost();
        case Column::kPath:
            return file.getPath();
        case Column::kFilename:
            return file.getFilename();
        case Column::kTime:
            return file.getTime();
        case Column::kFullPath:
            return file.getFullPath();
        case Column::kHidden:
            return flag(file.isHidden());
        case Column::kFolder:
            return flag(file.isFolder());
        case Column::kDeleted:
            return flag(known.deleted);
        case Column::kShare:
            return PlaceOf(file);
        default:
            return FactText(known.facts, column);
    }
}

std::vector<std::int64_t> ColumnNumbers(OpenedFile& file, Column column, const Known& known) {
    std::optional<std::int64_t> number;
    switch (column) {
        case Column::kPid:
            number = support::ParseNumber<std::int64_t>(file.getPidStr());
            break;
        case Column::kTime:
            number = ParseLocalTime(file.getTime());
            break;
        default:
            return FactNumbers(known.facts, column);
    }
    return number ? std::vector{*number} : std::vector<std::int64_t>();
}

std::string PlaceOf(OpenedFile& file) {
    std::string path = file.getPath();
    // "photo/2024/a.jpg" by share, "/volume1/photo/2024/a.jpg" by volume.
    const size_t end = path.find('/', path.rfind('/', 0) == 0 ? 1 : 0);
    path.resize(end == std::string::npos ? path.size() : end);
    return path;
}

}  // namespace cli
