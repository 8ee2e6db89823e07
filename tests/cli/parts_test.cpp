// SPDX-License-Identifier: MIT
#include "cli/question/parts.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using cli::Column;
using cli::Files;
using cli::Workers;
using VORN::FileHandle::OpenedFile;

/** A record that tells by its user which it is. */
OpenedFile Numbered(size_t number, const std::string& path, int pid) {
    OpenedFile file;
    file.setFullPath("/volume1/" + path);
    file.setPath(path);
    file.setPid(std::to_string(pid));
    file.setUser(std::to_string(number));
    return file;
}

/** Records of many equal paths and pids, processes together, as a scan of count lists has them. */
std::vector<Files> Scanned(size_t count, size_t processes, size_t most) {
    std::mt19937 random(static_cast<unsigned>(count + processes * 31));
    std::vector<Files> lists(count);
    size_t number = 0;
    for (size_t process = 0; process < processes; ++process) {
        Files& list = lists[random() % count];
        for (size_t i = random() % (most + 1); i > 0; --i) {
            const std::string path(1 + random() % 3, static_cast<char>('a' + random() % 5));
            list.push_back(Numbered(number++, path, static_cast<int>(process)));
        }
    }
    return lists;
}

std::vector<std::string> Users(Files files) {
    std::vector<std::string> users;
    for (OpenedFile& file : files) {
        users.push_back(file.getUser());
    }
    return users;
}

class Parts : public testing::TestWithParam<size_t> {};

TEST_P(Parts, SortAsTheLibrarySortsOneList) {
    for (const size_t most : {0, 3, 400, 5000}) {
        for (const Column column : {Column::kPath, Column::kPid}) {
            const std::vector<Files> scanned = Scanned(GetParam(), 20, most);
            Files expected = cli::Joined(scanned);
            VORN::FileHandle::VORNSortOpenedFile(expected, std::string(cli::ColumnName(column)),
                                                 true);
            std::vector<Files> lists = cli::Spread(scanned, GetParam());
            EXPECT_LE(lists.size(), GetParam());
            lists = cli::Sorted(std::move(lists), column, Workers(GetParam()));
            EXPECT_EQ(Users(cli::Joined(std::move(lists))), Users(expected)) << most;
        }
    }
}

TEST_P(Parts, AreOfAboutTheSameSizeWhereThereIsMuch) {
    std::vector<Files> lists(GetParam());
    for (size_t i = 0; i < 20000; ++i) {
        lists.back().push_back(Numbered(i, "a", 1));
    }
    const auto expected = Users(lists.back());
    lists = cli::Spread(std::move(lists), GetParam());
    EXPECT_EQ(lists.size(), GetParam());
    for (const Files& list : lists) {
        EXPECT_NEAR(static_cast<double>(list.size()), 20000.0 / static_cast<double>(GetParam()), 1);
    }
    EXPECT_EQ(Users(cli::Joined(std::move(lists))), expected);
}

TEST_P(Parts, AreOneWhereThereIsLittle) {
    EXPECT_EQ(cli::Spread(Scanned(GetParam(), 3, 2), GetParam()).size(), 1U);
    EXPECT_EQ(cli::Spread({}, GetParam()).size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Workers, Parts, testing::Values(1, 2, 3, 8));

}  // namespace
