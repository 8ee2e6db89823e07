// SPDX-License-Identifier: MIT
#include "cli/question/parts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <random>
#include <set>

#include "tests/cli/records.h"

namespace {

using cli::FilePlace;
using cli::FileRecord;
using cli::Files;
using cli::Workers;

/** Records of many equal paths and pids, processes together, as a scan has them. */
Files Scanned(unsigned seed, size_t processes, size_t most) {
    std::mt19937 random(seed);
    Files files;
    for (size_t process = 0; process < processes; ++process) {
        const FileRecord of = Record("/volume1/-", "alice", "SMB", std::to_string(process));
        for (size_t i = random() % (most + 1); i > 0; --i) {
            FileRecord& file = files.emplace_back(of);
            file.fullPath = RecordTextsOfTests().Keep(
                "/volume" + std::to_string(1 + random() % 2) + "/" +
                std::string(1 + random() % 11, static_cast<char>('a' + random() % 3)));
            file.path = file.fullPath.substr(9);
        }
    }
    return files;
}

/** The library's own sorting and erasing. */
std::vector<std::string> ByLibrary(const Files& files) {
    cli::LibraryFiles list;
    for (const FileRecord& record : files) {
        cli::OpenedFile& file = list.emplace_back();
        file.setFullPath(std::string(record.fullPath));
        file.setPath(std::string(record.path));
        file.setPid(record.process->pid);
    }
    VORN::FileHandle::VORNSortOpenedFile(list, "path", true);
    VORN::FileHandle::EraseAdjacentDuplicates(list);
    std::vector<std::string> texts;
    for (cli::OpenedFile& file : list) {
        texts.push_back(file.getFullPath() + ' ' + file.getPidStr());
    }
    return texts;
}

std::vector<std::string> Texts(const Files& files) {
    std::vector<std::string> texts;
    for (const FileRecord& file : files) {
        texts.push_back(std::string(file.fullPath) + ' ' + file.process->pid);
    }
    return texts;
}

class Parts : public testing::TestWithParam<size_t> {};

TEST_P(Parts, SortAndUnifyAsTheLibraryDoesWithOneList) {
    for (const size_t most : {0, 3, 400, 5000}) {
        Files files = Scanned(static_cast<unsigned>(GetParam() + most), 20, most);
        const auto expected = ByLibrary(files);
        cli::SortAndUnify(files, Workers(GetParam()));
        EXPECT_EQ(Texts(files), expected) << most;
    }
}

TEST_P(Parts, TellPathsApartWhereverTheyDiffer) {
    Files files;
    for (const char* path : {"photo/b", "photo/a/long/way/down/b", "photo/a/long/way/down/a",
                             "photo/a", "photo/\xFF", "photo/a/long/way/down", "photo/"}) {
        files.push_back(Record(path));
    }
    const auto expected = ByLibrary(files);
    cli::SortAndUnify(files, Workers(GetParam()));
    EXPECT_EQ(Texts(files), expected);
}

TEST_P(Parts, KeepTheOrderOfWhatStays) {
    for (const size_t records : {0U, 1U, 999U, 20000U}) {
        Files files(records, Record("/volume1/a"));
        for (size_t i = 0; i < records; ++i) {
            files[i].time = RecordTextsOfTests().Keep(std::to_string(i));
            files[i].hidden = i % 3 != 0;
        }
        cli::TextsOfThreads texts(GetParam());
        cli::GoOver(files, files.size(), texts, Workers(GetParam()),
                    [](FilePlace begin, FilePlace end, auto& /*texts*/) {
                        return std::remove_if(begin, end,
                                              [](const FileRecord& file) { return file.hidden; });
                    });
        ASSERT_EQ(files.size(), (records + 2) / 3);
        for (size_t i = 0; i < files.size(); ++i) {
            ASSERT_EQ(files[i].time, std::to_string(3 * i));
        }
    }
}

TEST_P(Parts, MayBeOfTheFirstRecordsAlone) {
    Files files(5000, Record("/volume1/a"));
    cli::TextsOfThreads texts(GetParam());
    cli::GoOver(files, 3000, texts, Workers(GetParam()), [](FilePlace begin, FilePlace end, auto&) {
        std::for_each(begin, end, [](FileRecord& file) { file.hidden = true; });
        return end - (end - begin) / 2;
    });
    EXPECT_EQ(files.size(), 3500U);
    EXPECT_EQ(std::count_if(files.begin(), files.end(),
                            [](const FileRecord& file) { return file.hidden; }),
              1500);
    EXPECT_FALSE(files[1500].hidden);
}

TEST_P(Parts, AreAsManyAsAreWorthAThreadAndEachHasItsTexts) {
    const auto partsOf = [](size_t records) {
        Files files(records, Record("/volume1/a"));
        cli::TextsOfThreads texts(GetParam());
        std::mutex mutex;
        std::multiset<const cli::RecordTexts*> used;
        cli::GoOver(files, files.size(), texts, Workers(GetParam()),
                    [&](FilePlace, FilePlace end, auto& ofPart) {
                        const std::lock_guard<std::mutex> lock(mutex);
                        used.insert(&ofPart);
                        return end;
                    });
        for (const cli::RecordTexts* each : used) {
            EXPECT_EQ(used.count(each), 1U);
        }
        return used.size();
    };
    EXPECT_EQ(partsOf(3), 1U);
    EXPECT_EQ(partsOf(20000), GetParam());
}

TEST(Joined, HasAllInTheirOrder) {
    EXPECT_TRUE(cli::Joined({}).empty());
    EXPECT_EQ(Texts(cli::Joined({{Record("/volume1/a")}, {}, {Record("/volume1/b")}})),
              (std::vector<std::string>{"/volume1/a 4711", "/volume1/b 4711"}));
}

INSTANTIATE_TEST_SUITE_P(Workers, Parts, testing::Values(1, 2, 3, 8));

}  // namespace
