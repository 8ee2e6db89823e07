// SPDX-License-Identifier: MIT
#include "cli/answer/counts.h"

#include <gtest/gtest.h>

#include "tests/cli/records.h"

namespace {

std::vector<std::pair<std::string, size_t>> Counted(cli::Snapshot& snapshot, bool reversed) {
    std::vector<std::pair<std::string, size_t>> counted;
    const std::vector<cli::Column> columns = {cli::Column::kService, cli::Column::kUser};
    const std::vector<cli::Column> nothing;
    for (const auto& count : cli::CountBy(snapshot, {columns, nothing}, reversed)) {
        counted.emplace_back(count.values[0] + "/" + count.values[1], count.files);
    }
    return counted;
}

TEST(CountBy, PutsTheBiggestFirst) {
    cli::Snapshot snapshot;
    for (const char* user : {"bob", "alice", "carol", "alice"}) {
        snapshot.files.push_back(Record("/volume1/a", user, "SMB"));
    }
    using Expected = std::vector<std::pair<std::string, size_t>>;
    EXPECT_EQ(Counted(snapshot, false),
              (Expected{{"SMB/alice", 2}, {"SMB/bob", 1}, {"SMB/carol", 1}}));
    EXPECT_EQ(Counted(snapshot, true),
              (Expected{{"SMB/bob", 1}, {"SMB/carol", 1}, {"SMB/alice", 2}}));
}

cli::Facts FactsOfFile(dev_t device, std::uint64_t inode, std::uint64_t size) {
    cli::FileFacts file;
    file.device = device;
    file.inode = inode;
    file.regular = true;
    file.size = size;
    file.space = 8 * size;
    cli::Facts facts;
    facts.files.push_back(file);
    return facts;
}

TEST(SizeSum, HasEachFileOnce) {
    cli::SizeSum sum;
    EXPECT_TRUE(sum.IsEmpty());
    for (const auto& [device, inode] : {std::pair(1, 7), std::pair(1, 7), std::pair(1, 8),
                                        // Another file system counts its files for itself.
                                        std::pair(2, 7)}) {
        sum.Add(FactsOfFile(static_cast<dev_t>(device), static_cast<std::uint64_t>(inode), 100));
    }
    EXPECT_EQ(sum.Of(cli::Column::kSize), 300U);
    EXPECT_EQ(sum.Of(cli::Column::kSpace), 2400U);
    cli::SizeSum other;
    other.Add(FactsOfFile(1, 8, 100));
    other.Add(FactsOfFile(1, 9, 50));
    sum.Add(other);
    EXPECT_EQ(sum.Of(cli::Column::kSize), 350U);
}

TEST(Bar, IsInProportionAndNeverEmpty) {
    EXPECT_EQ(cli::Bar(10, 10, 4, false), "####");
    EXPECT_EQ(cli::Bar(5, 10, 4, false), "##");
    EXPECT_EQ(cli::Bar(1, 1000, 4, false), "#");
    EXPECT_EQ(cli::Bar(1, 1, 1, true), "\xE2\x96\x87");
}

}  // namespace
