#include "cli/question/columns.h"

namespace cli {

const std::vector<std::string>& ColumnNames() {
    static const std::vector<std::string> kNames = {"service", "pid",      "user",   "host",
                                                    "path",    "filename", "time",   "full_path",
                                                    "hidden",  "folder",   "deleted"};
    return kNames;
}

const std::vector<std::string>& SortColumnNames() {
    static const std::vector<std::string> kNames = [] {
        std::vector<std::string> names;
        for (const auto& entry : OpenedFile::mapJsonColumn) {
            names.push_back(entry.second);
        }
        return names;
    }();
    return kNames;
}

std::string_view ColumnName(Column column) {
    return ColumnNames()[static_cast<size_t>(column)];
}

bool IsMember(Column column) {
    return column <= Column::kTime;
}

std::string ColumnText(OpenedFile& file, Column column, bool deleted) {
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
            return flag(deleted);
    }
    return {};
}

}  // namespace cli
