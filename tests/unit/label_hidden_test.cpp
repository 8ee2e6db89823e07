// SPDX-License-Identifier: MIT
#include <algorithm>
#include <random>

#include "tests/unit/support/library_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::Files;

using HiddenLabel = unit::LibraryTest;
using FolderLabel = unit::LibraryTest;

namespace {

const char* const kSource = "filehandle_label_hidden";

std::vector<bool> Hidden(Files& files) {
    std::vector<bool> flags;
    for (OpenedFile& file : files) {
        flags.push_back(file.isHidden());
    }
    return flags;
}

std::vector<bool> Folders(Files& files) {
    std::vector<bool> flags;
    for (OpenedFile& file : files) {
        flags.push_back(file.isFolder());
    }
    return flags;
}

}  // namespace

TEST_F(HiddenLabel, MarksPathsThatContainAHiddenDirectoryAnywhere) {
    platform.hiddenDirectories = {"/@tmp", "#recycle"};
    Files files = unit::Records({{"1", "/volume1/@tmp/a"},
                                 {"2", "/volume1/photo/a"},
                                 {"3", "/volume1/photo/my#recycled/a"},
                                 {"4", "/volume1/x/@tmp"},
                                 {"5", "/volume1/@TMP/a"},
                                 {"6", "/volume1/x@tmp/a"}});
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(true, false, true, true, false, false));
}

TEST_F(HiddenLabel, LooksAtTheFullPathAlone) {
    platform.hiddenDirectories = {"secret"};
    Files files = unit::Records({{"1", "/volume1/a"}});
    files.front().setPath("secret/a");
    files.front().setFilename("secret");
    files.front().setServiceName("secret");
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(false));
}

TEST_F(HiddenLabel, MarksNothingWithoutHiddenDirectories) {
    Files files = unit::Records({{"1", "/volume1/@tmp/a"}});
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(false));
}

TEST_F(HiddenLabel, MarksEverythingWithAnEmptyItem) {
    platform.hiddenDirectories = {"/nowhere", ""};
    Files files = unit::Records({{"1", "/volume1/a"}, {"2", "/volume1/b"}});
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(true, true));
}

TEST_F(HiddenLabel, MarksNothingWithoutAList) {
    platform.hiddenDirectories = {"/volume1"};
    platform.listDroppers = {"VORNEAHiddenDirGet"};
    Files files = unit::Records({{"1", "/volume1/a"}});
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(false));
}

TEST_F(HiddenLabel, FindsAnEmptyItemEvenInAnEmptyPath) {
    Files files(1);
    platform.hiddenDirectories = {"a"};
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(false));
    platform.hiddenDirectories = {"a", ""};
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(true));
}

TEST_F(HiddenLabel, TakesAnyResultThatIsNotNegativeForSuccess) {
    platform.hiddenDirectories = {"/@tmp"};
    for (int result : {0, 1, 7}) {
        platform.hiddenResult = result;
        Files files = unit::Records({{"1", "/volume1/@tmp/a"}});
        EXPECT_EQ(LabelHidden(files), 0);
        EXPECT_THAT(Hidden(files), ElementsAre(true)) << result;
    }
}

TEST_F(HiddenLabel, AsksForTheHiddenDirectoriesOfAnEmptyList) {
    Files files;
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(journal.Calls(), ElementsAre("KLIBCSzListAlloc(512)", "VORNEAHiddenDirGet(list 1)",
                                             "KLIBCSzListFree(list 1)"));
}

TEST_F(HiddenLabel, NeverTakesAFlagBack) {
    Files files = unit::Records({{"1", "/volume1/a"}});
    files.front().setIsHidden();
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(Hidden(files), ElementsAre(true));
}

TEST_F(HiddenLabel, ChangesNothingElse) {
    platform.hiddenDirectories = {"/@tmp"};
    Files files =
        unit::Records({{"2", "/volume1/@tmp/b"}, {"1", "/volume1/a"}, {"2", "/volume1/@tmp/b"}});
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_THAT(unit::Shown(files),
                ElementsAre("2 /volume1/@tmp/b", "1 /volume1/a", "2 /volume1/@tmp/b"));
    EXPECT_THAT(Folders(files), ElementsAre(false, false, false));
}

TEST_F(HiddenLabel, FailsWithoutAList) {
    platform.failingAllocs = {1};
    Files files = unit::Records({{"1", "/volume1/a"}});
    EXPECT_EQ(LabelHidden(files), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to allocate list", kSource, 20));
    EXPECT_THAT(journal.Calls(), ElementsAre("KLIBCSzListAlloc(512)"));
    EXPECT_THAT(Hidden(files), ElementsAre(false));
}

TEST_F(HiddenLabel, FailsWhenTheHiddenDirectoriesCannotBeHad) {
    platform.hiddenDirectories = {"/volume1"};
    platform.hiddenResult = -1;
    Files files = unit::Records({{"1", "/volume1/a"}});
    EXPECT_EQ(LabelHidden(files), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get hidden dir", kSource, 31));
    EXPECT_THAT(Hidden(files), ElementsAre(false));
    EXPECT_THAT(journal.Calls(), ElementsAre("KLIBCSzListAlloc(512)", "VORNEAHiddenDirGet(list 1)",
                                             "KLIBCSzListFree(list 1)"));
}

TEST_F(HiddenLabel, AgreesWithThePlainSubstringTestOnRandomPaths) {
    std::mt19937 random(2);
    const auto text = [&random](size_t shortest, size_t longest) {
        std::string made;
        const size_t length = shortest + random() % (longest - shortest + 1);
        while (made.size() < length) {
            made += "/aA\xff"[random() % 4];
        }
        return made;
    };
    for (int round = 0; round < 500; ++round) {
        platform.hiddenDirectories.clear();
        for (size_t count = random() % 5; platform.hiddenDirectories.size() < count;) {
            platform.hiddenDirectories.push_back(text(round % 10 == 0 ? 0 : 1, 4));
        }
        Files files;
        std::vector<bool> expected;
        for (int i = 0; i < 20; ++i) {
            const std::string path = text(1, 8);
            files.splice(files.end(), unit::Records({{"7", path}}));
            expected.push_back(std::any_of(
                platform.hiddenDirectories.begin(), platform.hiddenDirectories.end(),
                [&path](const std::string& item) { return path.find(item) != std::string::npos; }));
        }
        ASSERT_EQ(LabelHidden(files), 0);
        ASSERT_EQ(Hidden(files), expected) << ::testing::PrintToString(platform.hiddenDirectories);
    }
}

TEST_F(FolderLabel, MarksDirectoriesAlone) {
    platform.directoryChecks = {
        {"/volume1/dir", 1}, {"/volume1/file", 0}, {"/volume1/odd", 2}, {"/volume1/gone", -1}};
    Files files = unit::Records({{"1", "/volume1/dir"},
                                 {"2", "/volume1/file"},
                                 {"3", "/volume1/odd"},
                                 {"4", "/volume1/gone"}});
    EXPECT_EQ(LabelFolder(files), 0);
    EXPECT_THAT(Folders(files), ElementsAre(true, false, false, false));
    EXPECT_THAT(Hidden(files), ElementsAre(false, false, false, false));
    EXPECT_THAT(journal.Calls(),
                ElementsAre("KLIBCFileCheckDir(/volume1/dir)", "KLIBCFileCheckDir(/volume1/file)",
                            "KLIBCFileCheckDir(/volume1/odd)", "KLIBCFileCheckDir(/volume1/gone)"));
}

TEST_F(FolderLabel, LetsAnEntryBeHiddenAndAFolder) {
    platform.hiddenDirectories = {"/@tmp"};
    platform.directoryChecks = {{"/volume1/@tmp", 1}};
    Files files = unit::Records({{"1", "/volume1/@tmp"}});
    EXPECT_EQ(LabelHidden(files), 0);
    EXPECT_EQ(LabelFolder(files), 0);
    EXPECT_TRUE(files.front().isHidden());
    EXPECT_TRUE(files.front().isFolder());
}

TEST_F(FolderLabel, NeverTakesAFlagBack) {
    Files files = unit::Records({{"1", "/volume1/file"}});
    files.front().setIsFolder();
    EXPECT_EQ(LabelFolder(files), 0);
    EXPECT_THAT(Folders(files), ElementsAre(true));
}

TEST_F(FolderLabel, KeepsEveryEntryInItsPlace) {
    platform.directoryChecks = {{"/volume1/b", 1}, {"/volume1/a", -1}};
    Files files = unit::Records({{"2", "/volume1/b"}, {"1", "/volume1/a"}, {"2", "/volume1/b"}});
    EXPECT_EQ(LabelFolder(files), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("2 /volume1/b", "1 /volume1/a", "2 /volume1/b"));
}

TEST_F(FolderLabel, HasNothingToDoInAnEmptyList) {
    Files files;
    EXPECT_EQ(LabelFolder(files), 0);
    EXPECT_THAT(journal.Calls(), IsEmpty());
}
