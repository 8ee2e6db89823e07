// SPDX-License-Identifier: MIT
#include "tests/unit/support/library_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::Files;

using Order = unit::LibraryTest;
using Duplicates = unit::LibraryTest;

namespace {

using Setter = int (OpenedFile::*)(const std::string&);

/** Records whose pid tells them apart and whose column holds the text. */
Files ByColumn(Setter set, const std::vector<std::pair<std::string, std::string>>& textsAndPids) {
    Files files;
    for (const auto& [text, pid] : textsAndPids) {
        files.emplace_back();
        (files.back().*set)(text);
        files.back().setPid(pid);
    }
    return files;
}

std::vector<std::string> Pids(const Files& files) {
    return unit::Column(files, &OpenedFile::getPidStr);
}

OpenedFile File(const std::string& path, const std::string& pid, const std::string& host = "-") {
    OpenedFile file;
    file.setPath(path);
    file.setPid(pid);
    file.setHost(host);
    return file;
}

}  // namespace

TEST_F(Order, SortsByEachColumnThatHasAName) {
    const std::pair<const char*, Setter> columns[] = {{"service", &OpenedFile::setServiceName},
                                                      {"user", &OpenedFile::setUser},
                                                      {"host", &OpenedFile::setHost},
                                                      {"path", &OpenedFile::setPath},
                                                      {"filename", &OpenedFile::setFilename}};
    for (const auto& [column, set] : columns) {
        SCOPED_TRACE(column);
        Files files = ByColumn(set, {{"b", "1"}, {"c", "2"}, {"a", "3"}});
        VORNSortOpenedFile(files, column, true);
        EXPECT_THAT(Pids(files), ElementsAre("3", "1", "2"));
        VORNSortOpenedFile(files, column, false);
        EXPECT_THAT(Pids(files), ElementsAre("2", "1", "3"));
    }
}

TEST_F(Order, SortsPidsAsText) {
    Files files = ByColumn(&OpenedFile::setPath,
                           {{"x", "3"}, {"x", "20"}, {"x", "1"}, {"x", "2"}, {"x", "10"}});
    VORNSortOpenedFile(files, "pid", true);
    EXPECT_THAT(Pids(files), ElementsAre("1", "10", "2", "20", "3"));
    VORNSortOpenedFile(files, "pid", false);
    EXPECT_THAT(Pids(files), ElementsAre("3", "20", "2", "10", "1"));
}

TEST_F(Order, SortsByFilenameForEveryOtherName) {
    for (const char* column : {"time", "hidden", "", "Path", "PATH", "path ", "pat", "fullpath",
                               "filename", "services"}) {
        SCOPED_TRACE(column);
        Files files;
        for (const char* pid : {"1", "2", "3"}) {
            files.push_back(File(pid, pid));
            files.back().setServiceName(pid);
            files.back().setTime(pid);
            files.back().setFullPath(pid);
        }
        auto file = files.begin();
        (file++)->setFilename("b");
        (file++)->setFilename("c");
        file->setFilename("a");
        VORNSortOpenedFile(files, column, true);
        EXPECT_THAT(Pids(files), ElementsAre("3", "1", "2"));
    }
}

TEST_F(Order, TakesThePidTextAsSecondKey) {
    Files files =
        ByColumn(&OpenedFile::setFilename, {{"b", "9"}, {"a", "9"}, {"b", "10"}, {"b", "100"}});
    VORNSortOpenedFile(files, "time", true);
    EXPECT_THAT(Pids(files), ElementsAre("9", "10", "100", "9"));
    VORNSortOpenedFile(files, "filename", false);
    EXPECT_THAT(Pids(files), ElementsAre("9", "100", "10", "9"));
}

TEST_F(Order, ComparesBytesAsUnsignedAndShorterTextsFirst) {
    Files files =
        ByColumn(&OpenedFile::setPath,
                 {{"\xff", "1"}, {"ab", "2"}, {"a", "3"}, {"z", "4"}, {"Z", "5"}, {"a/b", "6"}});
    VORNSortOpenedFile(files, "path", true);
    EXPECT_THAT(Pids(files), ElementsAre("5", "3", "6", "2", "4", "1"));
}

TEST_F(Order, KeepsEqualRecordsInOrderWhenAscendingAndSwapsThemWhenDescending) {
    Files files = {File("a", "1", "first"), File("a", "1", "second"), File("a", "1", "third")};
    VORNSortOpenedFile(files, "path", true);
    EXPECT_THAT(unit::Column(files, &OpenedFile::getHost), ElementsAre("first", "second", "third"));
    VORNSortOpenedFile(files, "path", false);
    EXPECT_THAT(unit::Column(files, &OpenedFile::getHost), ElementsAre("third", "second", "first"));
}

TEST_F(Order, SortsTextsAndPidsDescendingTogether) {
    Files files = ByColumn(
        &OpenedFile::setUser,
        {{"a", "1"}, {"b", "2"}, {"a", "3"}, {"b", "4"}, {"a", "5"}, {"c", "6"}, {"a", "7"}});
    VORNSortOpenedFile(files, "user", false);
    EXPECT_THAT(Pids(files), ElementsAre("6", "4", "2", "7", "5", "3", "1"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getUser),
                ElementsAre("c", "b", "b", "a", "a", "a", "a"));
}

TEST_F(Order, LeavesAnEmptyListAndASingleRecord) {
    Files none;
    VORNSortOpenedFile(none, "path", true);
    VORNSortOpenedFile(none, "path", false);
    EXPECT_TRUE(none.empty());
    Files one = {File("a", "1")};
    VORNSortOpenedFile(one, "path", false);
    EXPECT_THAT(Pids(one), ElementsAre("1"));
}

TEST_F(Order, RelinksRecordsWithoutCopyingThem) {
    Files files = {File("b", "2"), File("a", "1")};
    const OpenedFile* second = &files.back();
    VORNSortOpenedFile(files, "path", true);
    EXPECT_EQ(&files.front(), second);
}

TEST_F(Order, ComparesAsATestOfItsOwn) {
    OpenedFile::Compare ascending("path", true);
    OpenedFile::Compare descending("path", false);
    OpenedFile a = File("a", "1");
    OpenedFile b = File("b", "1");
    EXPECT_TRUE(ascending(a, b));
    EXPECT_FALSE(ascending(b, a));
    EXPECT_FALSE(ascending(a, a));
    EXPECT_FALSE(descending(a, b));
    EXPECT_TRUE(descending(b, a));
    EXPECT_TRUE(descending(a, a));
}

TEST_F(Duplicates, KeepTheFirstOfARunWhole) {
    Files files = unit::Records({{"1", "/volume1/a"}, {"1", "/volume1/a"}, {"1", "/volume1/a"}});
    files.front().setHost("first");
    std::next(files.begin())->setHost("second");
    files.back().setIsHidden();
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files.front().getHost(), "first");
    EXPECT_FALSE(files.front().isHidden());
}

TEST_F(Duplicates, AreOnlyThoseOfOnePathAndOnePid) {
    Files files = unit::Records({{"1", "/volume1/a"},
                                 {"2", "/volume1/a"},
                                 {"2", "/volume1/b"},
                                 {"2", "/volume1/b"},
                                 {"2", "/volume1/b/c"}});
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_THAT(unit::Shown(files),
                ElementsAre("1 /volume1/a", "2 /volume1/a", "2 /volume1/b", "2 /volume1/b/c"));
}

TEST_F(Duplicates, AreKeptWhenTheyAreNoNeighbours) {
    Files files = unit::Records({{"1", "/volume1/a"}, {"2", "/volume1/a"}, {"1", "/volume1/a"}});
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_EQ(files.size(), 3U);
}

TEST_F(Duplicates, DoNotLookAtThePathColumn) {
    Files files = unit::Records({{"1", "/volume1/a"}, {"1", "/volume2/a"}});
    files.front().setPath("same");
    files.back().setPath("same");
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_EQ(files.size(), 2U);
}

TEST_F(Duplicates, CompareTextsWholeWithNulBytesInside) {
    Files files = unit::Records({{"1", std::string("/v\0a", 4)}, {"1", std::string("/v\0b", 4)}});
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_EQ(files.size(), 2U);
}

TEST_F(Duplicates, CountAnEmptyFirstRecordAmongThem) {
    Files files(2);
    files.push_back(File("x", "1"));
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_THAT(Pids(files), ElementsAre("1"));
}

TEST_F(Duplicates, KeepAFirstRecordWithoutPathThatHasAPid) {
    Files files = {File("x", "1"), File("y", "1")};
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_EQ(unit::Column(files, &OpenedFile::getPath), std::vector<std::string>{"x"});
}

TEST_F(Duplicates, AreNoneInAnEmptyList) {
    Files files;
    EXPECT_EQ(EraseAdjacentDuplicates(files), 0);
    EXPECT_THAT(files, IsEmpty());
}
