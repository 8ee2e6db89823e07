// SPDX-License-Identifier: MIT
#include "cli/question/ordering.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace cli {
namespace {

/** One column of a record; of numbers and texts it has one and leaves the other as it is. */
struct Key {
    std::int64_t number = 0;
    std::string text;

    int Compare(const Key& other) const {
        return number != other.number ? (number < other.number ? -1 : 1) : text.compare(other.text);
    }
};

Key KeyOf(const FileRecord& file, Column column) {
    if (MeasureOf(column) == Measure::kNone) {
        return {0, ColumnText(file, column)};
    }
    const auto numbers = ColumnNumbers(file, column);
    return {numbers.empty() ? std::numeric_limits<std::int64_t>::min() : numbers.front(), ""};
}

struct Placed {
    std::vector<Key> keys;
    FileRecord file;

    bool operator<(const Placed& other) const {
        for (size_t i = 0; i < keys.size(); ++i) {
            if (const int order = keys[i].Compare(other.keys[i]); order != 0) {
                return order < 0;
            }
        }
        return false;
    }
};

}  // namespace

void Order(Files& files, const std::vector<Column>& columns) {
    std::vector<Placed> placed;
    placed.reserve(files.size());
    for (const FileRecord& file : files) {
        Placed& each = placed.emplace_back(Placed{{}, file});
        each.keys.reserve(columns.size() + 1);
        for (const Column column : columns) {
            each.keys.push_back(KeyOf(file, column));
        }
        each.keys.push_back(KeyOf(file, Column::kPid));
    }
    std::stable_sort(placed.begin(), placed.end());
    std::transform(placed.begin(), placed.end(), files.begin(),
                   [](const Placed& each) { return each.file; });
}

}  // namespace cli
