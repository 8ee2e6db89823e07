// SPDX-License-Identifier: MIT
#include "cli/question/facts_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include "tests/cli/facts/held_files.h"
#include "tests/cli/records.h"

namespace {

using cli::Column;

cli::ColumnSet Asked(std::initializer_list<Column> columns) {
    cli::ColumnSet set;
    for (const Column column : columns) {
        set.set(static_cast<size_t>(column));
    }
    return set;
}

class FactsReader : public HeldFiles {
protected:
    /** What is told of this process and a file. */
    cli::Facts Told(const std::string& name, const cli::ColumnSet& columns,
                    cli::BootTicks lookBegan) {
        auto file = Record(Path(name), "alice", "SMB", std::to_string(getpid()));
        const auto facts = cli::ReadFacts({&file}, columns, lookBegan, cli::Workers(2));
        return *file.facts;
    }
};

TEST_F(FactsReader, TellsNothingOfWhoHasStartedSinceAndHoldsNothing) {
    OpenAs(300, "held", O_RDWR | O_CREAT);
    const auto columns = Asked({Column::kCommand, Column::kFd});
    const cli::BootTicks now = cli::BootTicksNow() + 1;
    EXPECT_EQ(Told("other", columns, 0).process, nullptr);
    EXPECT_NE(Told("other", columns, now).process, nullptr);
    EXPECT_TRUE(Told("other", columns, now).descriptors.empty());
    EXPECT_NE(Told("held", columns, 0).process, nullptr);
    EXPECT_EQ(Told("held", columns, 0).descriptors, std::vector<int>{300});
    close(300);
}

TEST_F(FactsReader, ReadsWhatIsAskedForAlone) {
    OpenAs(300, "held", O_RDWR | O_CREAT);
    const auto told = [&](std::initializer_list<Column> columns) {
        return Told("held", Asked(columns), 0);
    };
    EXPECT_TRUE(told({Column::kOwner}).process->command.empty());
    EXPECT_FALSE(told({Column::kOwner}).process->owner.empty());
    EXPECT_TRUE(told({Column::kCommand}).descriptors.empty());
    EXPECT_TRUE(told({Column::kFd}).modes.empty());
    EXPECT_TRUE(told({Column::kSize}).modes.empty());
    EXPECT_EQ(told({Column::kSize}).files.size(), 1U);
    EXPECT_TRUE(told({Column::kMode}).files.empty());
    EXPECT_EQ(told({Column::kMode}).modes, std::vector<std::string>{"rw"});
    close(300);
}

}  // namespace
