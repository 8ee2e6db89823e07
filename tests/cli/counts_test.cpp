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

TEST(Bar, IsInProportionAndNeverEmpty) {
    EXPECT_EQ(cli::Bar(10, 10, 4, false), "####");
    EXPECT_EQ(cli::Bar(5, 10, 4, false), "##");
    EXPECT_EQ(cli::Bar(1, 1000, 4, false), "#");
    EXPECT_EQ(cli::Bar(1, 1, 1, true), "\xE2\x96\x87");
}

}  // namespace
