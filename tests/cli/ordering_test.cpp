// SPDX-License-Identifier: MIT
#include "cli/question/ordering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <random>

#include "cli/question/facts_text.h"
#include "tests/cli/records.h"

namespace {

using cli::Bound;
using cli::Column;
using cli::Condition;

/** Records with facts, some of them unknown, drawn so that many are alike. */
class Lot {
public:
    explicit Lot(unsigned seed) : random_(seed) {
        for (int i = 0; i < 200; ++i) {
            const std::string path = "/volume1/" + std::to_string(Draw(4));
            const std::string user = "user" + std::to_string(Draw(3));
            auto& file =
                files.emplace_back(Record(path, user, "SMB", std::to_string(1 + Draw(120))));
            if (Draw(5) != 0) {
                file.facts = &facts_.emplace_back(DrawFacts());
            }
        }
    }

    unsigned Draw(unsigned below) { return static_cast<unsigned>(random_() % below); }

    cli::Files files;

private:
    cli::Facts DrawFacts() {
        cli::Facts facts;
        auto process = std::make_shared<cli::HolderFacts>();
        process->command = "command" + std::to_string(Draw(3));
        process->started = static_cast<std::time_t>(Draw(1000));
        facts.process = process;
        for (unsigned i = Draw(4); i > 0; --i) {
            facts.descriptors.push_back(static_cast<int>(i * Draw(30)));
        }
        std::sort(facts.descriptors.begin(), facts.descriptors.end());
        facts.files.push_back({Draw(2) == 0, Draw(2000), Draw(9) * 512, 5, Draw(50), 7});
        facts.modes = {Draw(2) == 0 ? "r" : "rwa"};
        return facts;
    }

    std::mt19937 random_;
    std::deque<cli::Facts> facts_;
};

constexpr Column kAny[] = {Column::kPid,     Column::kUser, Column::kPath,  Column::kCommand,
                           Column::kStarted, Column::kFd,   Column::kSize,  Column::kSpace,
                           Column::kInode,   Column::kMode, Column::kOwner, Column::kModified};

/** -1, 0, 1 as a column has two records one before the other; what isn't known comes first. */
int Compared(const cli::FileRecord& a, const cli::FileRecord& b, Column column) {
    const auto sign = [](const auto& left, const auto& right) {
        return left < right ? -1 : right < left ? 1 : 0;
    };
    if (cli::MeasureOf(column) == cli::Measure::kNone) {
        return sign(cli::ColumnText(a, column), cli::ColumnText(b, column));
    }
    auto left = cli::ColumnNumbers(a, column);
    auto right = cli::ColumnNumbers(b, column);
    left.resize(std::min<size_t>(left.size(), 1));
    right.resize(std::min<size_t>(right.size(), 1));
    return sign(left, right);
}

TEST(Order, HoldsForEachPairAndKeepsWhatIsEqual) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        Lot lot(seed);
        std::vector<Column> columns;
        for (unsigned i = 1 + lot.Draw(3); i > 0; --i) {
            columns.push_back(kAny[lot.Draw(std::size(kAny))]);
        }
        // Each has a process of its own.
        std::map<const cli::ProcessTexts*, int> before;
        for (const auto& file : lot.files) {
            before.emplace(file.process, static_cast<int>(before.size()));
        }
        cli::Order(lot.files, columns);
        ASSERT_EQ(lot.files.size(), before.size());
        columns.push_back(Column::kPid);
        for (auto a = lot.files.begin(), b = std::next(a); b != lot.files.end(); ++a, ++b) {
            int order = 0;
            for (const Column column : columns) {
                order = order == 0 ? Compared(*a, *b, column) : order;
            }
            ASSERT_TRUE(order < 0 || (order == 0 && before[a->process] < before[b->process]))
                << seed;
        }
    }
}

TEST(Order, HasNumbersAsNumbers) {
    cli::Files files;
    for (const char* pid : {"100", "96", "9", "1000"}) {
        files.push_back(Record("/volume1/a", "alice", "SMB", pid));
    }
    cli::Order(files, {Column::kPid});
    std::string pids;
    for (auto& file : files) {
        pids += file.process->pid + ' ';
    }
    EXPECT_EQ(pids, "9 96 100 1000 ");
}

bool IsTrue(Bound::Is is, std::int64_t number, std::int64_t bound) {
    switch (is) {
        case Bound::Is::kLess:
            return number < bound;
        case Bound::Is::kAtMost:
            return number <= bound;
        case Bound::Is::kMore:
            return number > bound;
        case Bound::Is::kAtLeast:
            return number >= bound;
        case Bound::Is::kEqual:
            break;
    }
    return number == bound;
}

TEST(Comparisons, SelectWhatHasSuchANumberAndNothingUnknown) {
    constexpr Column kNumbers[] = {Column::kPid,   Column::kFd,    Column::kSize,
                                   Column::kSpace, Column::kInode, Column::kStarted};
    for (unsigned seed = 1; seed <= 60; ++seed) {
        Lot lot(seed);
        const Column column = kNumbers[lot.Draw(std::size(kNumbers))];
        const auto is = static_cast<Bound::Is>(lot.Draw(5));
        const std::int64_t bound = lot.Draw(100);
        const Condition condition = {column, "x", false, false, Bound{is, bound}};
        for (auto& file : lot.files) {
            const auto numbers = cli::ColumnNumbers(file, column);
            const bool wanted = std::any_of(numbers.begin(), numbers.end(),
                                            [&](auto number) { return IsTrue(is, number, bound); });
            cli::Selection selection;
            selection.conditions = {condition};
            EXPECT_EQ(cli::IsSelected(selection, file), wanted);
            selection.conditions[0].negated = true;
            EXPECT_EQ(cli::IsSelected(selection, file), !wanted);
        }
    }
}

TEST(Comparisons, MustEachHold) {
    Lot lot(3);
    const auto of = [](Bound::Is is, std::int64_t number) {
        return Condition{Column::kPid, "x", false, false, Bound{is, number}};
    };
    cli::Selection range;
    range.conditions = {of(Bound::Is::kAtLeast, 30), of(Bound::Is::kLess, 60)};
    cli::Selection either;
    either.conditions = {of(Bound::Is::kEqual, 30), of(Bound::Is::kEqual, 31)};
    for (auto& file : lot.files) {
        const int pid = std::stoi(file.process->pid);
        EXPECT_EQ(cli::IsSelected(range, file), pid >= 30 && pid < 60);
        EXPECT_EQ(cli::IsSelected(either, file), pid == 30 || pid == 31);
    }
}

TEST(Facts, OfAProcessThatHasGoneAreUnknown) {
    auto file = Record("/volume1/a");
    const cli::Facts gone;
    for (size_t i = static_cast<size_t>(Column::kCommand); i < cli::kColumns; ++i) {
        const auto column = static_cast<Column>(i);
        for (const cli::Facts* facts : {&gone, static_cast<const cli::Facts*>(nullptr)}) {
            file.facts = facts;
            EXPECT_EQ(cli::ColumnText(file, column), "-");
            EXPECT_TRUE(cli::ColumnNumbers(file, column).empty());
        }
    }
}

TEST(Facts, OfLocksNameWhoWaits) {
    const auto line = [](const char* text) { return *cli::ParseKernelLock(text); };
    EXPECT_EQ(cli::LockText({line("1: POSIX  ADVISORY  WRITE 7 08:01:1234 0 EOF"), {}}),
              "POSIX write");
    EXPECT_EQ(cli::LockText(
                  {line("1: OFDLCK ADVISORY  READ -1 08:01:1234 5 EOF"), {{8, "smbd"}, {9, "-"}}}),
              "OFD read 5-, awaited by 8 (smbd), 9 (-)");
    EXPECT_EQ(cli::LockText({line("1: FLOCK  ADVISORY  READ 7 08:01:1234 0 9"), {}}),
              "flock read 0-9");
}

}  // namespace
