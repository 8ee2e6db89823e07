// SPDX-License-Identifier: MIT
#include "cli/question/counts.h"

#include <algorithm>

namespace cli {
namespace {

struct Group {
    size_t files = 0;
    SizeSum sizes;
};

}  // namespace

void SizeSum::Add(const Facts& facts) {
    for (const FileFacts& file : facts.files) {
        files_.insert({{file.device, file.inode}, {file.regular ? file.size : 0, file.space}});
    }
}

std::uint64_t SizeSum::Of(Column sizeOrSpace) const {
    std::uint64_t sum = 0;
    for (const auto& [file, sizes] : files_) {
        sum += sizeOrSpace == Column::kSize ? sizes.size : sizes.space;
    }
    return sum;
}

std::vector<Count> CountBy(const Snapshot& snapshot, const CountQuestion& question, bool reversed) {
    std::map<std::vector<std::string>, Group> groups;
    std::vector<std::string> values(question.columns.size());
    for (const FileRecord& file : snapshot.files) {
        for (size_t i = 0; i < values.size(); ++i) {
            question.fill(values[i], file, question.columns[i]);
        }
        Group& group = groups[values];
        ++group.files;
        if (!question.summed.empty() && file.facts != nullptr) {
            group.sizes.Add(*file.facts);
        }
    }
    std::vector<Count> ordered;
    for (const auto& [key, group] : groups) {
        Count& count = ordered.emplace_back(Count{key, group.files, {}});
        for (const Column column : question.summed) {
            count.sums.push_back(group.sizes.Of(column));
        }
    }
    std::stable_sort(ordered.begin(), ordered.end(), [&](const Count& a, const Count& b) {
        return reversed ? a.Rank() < b.Rank() : a.Rank() > b.Rank();
    });
    return ordered;
}

}  // namespace cli
