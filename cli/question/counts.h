// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_COUNTS_H
#define VORN_CLI_QUESTION_COUNTS_H

/**
 * @file
 * How many records there are of each kind, and how much space they take.
 */

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/question/snapshot.h"

namespace cli {

/** Sizes of files, each file once, however many have it open. */
class SizeSum {
public:
    void Add(const Facts& facts);
    void Add(const SizeSum& other) { files_.insert(other.files_.begin(), other.files_.end()); }
    bool IsEmpty() const { return files_.empty(); }
    std::uint64_t Of(Column sizeOrSpace) const;

private:
    struct Sizes {
        std::uint64_t size;
        std::uint64_t space;
    };

    std::map<std::pair<dev_t, std::uint64_t>, Sizes> files_; /**< by device and inode */
};

struct Count {
    std::vector<std::string> values; /**< one a counted column */
    size_t files;
    std::vector<std::uint64_t> sums; /**< one a summed column */

    /** What it is ordered by. */
    std::uint64_t Rank() const { return sums.empty() ? files : sums.front(); }
};

struct CountQuestion {
    using Fill = std::function<void(std::string&, const FileRecord&, Column)>;

    const std::vector<Column>& columns;
    const std::vector<Column>& summed;
    Fill fill = AssignColumnText; /**< a value, with what a record has in a column */
};

/**
 * Biggest first (smallest with reversed), by the first sum where there is one and by the number of
 * records otherwise; then by their values, byte by byte.
 */
std::vector<Count> CountBy(const Snapshot& snapshot, const CountQuestion& question, bool reversed);

}  // namespace cli

#endif
