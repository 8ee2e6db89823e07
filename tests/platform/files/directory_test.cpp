// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "tests/platform/support/private_root.h"
#include "tests/platform/support/scripted_calls.h"
#include "tests/platform/support/string_list.h"
#include "vorn/platform/error.h"
#include "vorn/platform/file.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Directory : public testing::Test {
protected:
    void SetUp() override {
        char folder[] = "/tmp/vornplatform-directory-XXXXXX";
        ASSERT_NE(mkdtemp(folder), nullptr);
        folder_ = folder;
        KLIBCErrSetEx(0, "", 0);
    }
    void TearDown() override {
        Calls() = {};
        std::filesystem::remove_all(folder_);
    }
    int List(int options) {
        return KLIBCFileEnumDir(folder_.c_str(), nullptr, list_.Address(), options);
    }
    void FillMixed() {
        MakeFolder(folder_ + "/folder");
        MakeFolder(folder_ + "/...");
        WriteFile(folder_ + "/file", "");
        ASSERT_EQ(symlink("folder", (folder_ + "/link").c_str()), 0);
    }

    CallScript script_;
    std::string folder_;
    StringList list_;
};

}  // namespace

TEST_F(Directory, ListsNamesWithoutDotAndDotDot) {
    FillMixed();
    EXPECT_EQ(List(0), 4);
    EXPECT_THAT(list_.Texts(), UnorderedElementsAre("folder", "...", "file", "link"));
    EXPECT_EQ(KLIBCErrGet(), 0);
}

TEST_F(Directory, ListsFoldersAloneOnRequestAndNoLinkToOne) {
    FillMixed();
    EXPECT_EQ(List(KLIBC_ENUM_DIRECTORIES), 2);
    EXPECT_THAT(list_.Texts(), UnorderedElementsAre("folder", "..."));
}

TEST_F(Directory, ExaminesEntriesWhereTheFileSystemTellsNoTypes) {
    FillMixed();
    Calls().getdents64.hideTypes = true;
    EXPECT_EQ(List(KLIBC_ENUM_DIRECTORIES), 2);
    EXPECT_THAT(list_.Texts(), UnorderedElementsAre("folder", "..."));
}

TEST_F(Directory, AppendsBehindWhatTheListHolds) {
    WriteFile(folder_ + "/new", "");
    list_.Push("old");
    EXPECT_EQ(List(0), 1);
    EXPECT_THAT(list_.Texts(), ElementsAre("old", "new"));
}

TEST_F(Directory, ReadsTenThousandEntriesInFewCalls) {
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(symlink("x", (folder_ + "/" + std::to_string(i)).c_str()), 0);
    }
    EXPECT_EQ(List(0), 10000);
    EXPECT_LE(Calls().getdents64.calls, 8);
}

TEST_F(Directory, AppendsNothingWhenReadingFailsInTheMiddle) {
    for (int i = 0; i < 5000; ++i) {
        ASSERT_EQ(symlink("x", (folder_ + "/" + std::to_string(i)).c_str()), 0);
    }
    list_.Push("old");
    Calls().getdents64.failFrom = 2;
    Calls().getdents64.error = EIO;
    EXPECT_LT(List(0), 0);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_INTERNAL);
    EXPECT_EQ(Calls().getdents64.calls, 2);
    EXPECT_THAT(list_.Texts(), ElementsAre("old"));
}

TEST_F(Directory, SaysWhyItCannotList) {
    WriteFile(folder_ + "/file", "");
    KLIBC_SZLIST* none = nullptr;
    const std::string missing = folder_ + "/missing";
    const std::string file = folder_ + "/file";
    const struct {
        const char* path;
        const char* pattern;
        KLIBC_SZLIST** list;
        int options;
        int code;
    } rows[] = {
        {missing.c_str(), nullptr, list_.Address(), 0, KLIBC_ERR_NOT_FOUND},
        {file.c_str(), nullptr, list_.Address(), 0, KLIBC_ERR_BAD_PARAM},
        {nullptr, nullptr, list_.Address(), 0, KLIBC_ERR_BAD_PARAM},
        {folder_.c_str(), "*", list_.Address(), 0, KLIBC_ERR_BAD_PARAM},
        {folder_.c_str(), nullptr, nullptr, 0, KLIBC_ERR_BAD_PARAM},
        {folder_.c_str(), nullptr, &none, 0, KLIBC_ERR_BAD_PARAM},
        {folder_.c_str(), nullptr, list_.Address(), 1, KLIBC_ERR_BAD_PARAM},
    };
    for (const auto& row : rows) {
        KLIBCErrSetEx(0, "", 0);
        EXPECT_LT(KLIBCFileEnumDir(row.path, row.pattern, row.list, row.options), 0);
        EXPECT_EQ(KLIBCErrGet(), row.code) << (row.path == nullptr ? "null" : row.path);
    }
    EXPECT_THAT(list_.Texts(), IsEmpty());
}

TEST_F(Directory, TellsFoldersFromOtherThings) {
    FillMixed();
    EXPECT_EQ(KLIBCFileCheckDir(folder_.c_str()), 1);
    EXPECT_EQ(KLIBCFileCheckDir((folder_ + "/link").c_str()), 1);
    EXPECT_EQ(KLIBCFileCheckDir((folder_ + "/file").c_str()), 0);
    EXPECT_EQ(KLIBCErrGet(), 0);
    EXPECT_LT(KLIBCFileCheckDir((folder_ + "/missing").c_str()), 0);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_NOT_FOUND);
    EXPECT_LT(KLIBCFileCheckDir(nullptr), 0);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
}
