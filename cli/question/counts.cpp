#include "cli/question/counts.h"

#include <algorithm>
#include <map>

namespace cli {

std::vector<Count> CountBy(Snapshot& snapshot, const std::vector<Column>& columns, bool reversed) {
    std::map<std::vector<std::string>, size_t> counts;
    std::vector<std::string> values(columns.size());
    for (OpenedFile& file : snapshot.files) {
        std::transform(columns.begin(), columns.end(), values.begin(), [&](Column column) {
            return ColumnText(file, column, snapshot.IsDeleted(file));
        });
        ++counts[values];
    }
    std::vector<Count> ordered;
    for (const auto& [key, files] : counts) {
        ordered.push_back({key, files});
    }
    std::stable_sort(ordered.begin(), ordered.end(), [&](const Count& a, const Count& b) {
        return reversed ? a.files < b.files : a.files > b.files;
    });
    return ordered;
}

}  // namespace cli
