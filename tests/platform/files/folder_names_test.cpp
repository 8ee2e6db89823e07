// SPDX-License-Identifier: MIT
#include "platform/linux/files/folder_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/support/host_error.h"
#include "tests/platform/support/scripted_calls.h"
#include "tests/platform/support/temp_folder.h"

namespace {

using testing::ElementsAre;
using testing::Optional;
using vornplatform::FolderEntries;
using vornplatform::ReadFolderNames;

TEST(FolderNames, AreSorted) {
    const TempFolder folder;
    folder.Write("b/file", "");
    folder.Write("c", "");
    folder.Write(".a", "");
    ASSERT_EQ(symlink("b", folder.Path("link").c_str()), 0);
    EXPECT_THAT(ReadFolderNames(folder.Path(), FolderEntries::kAll),
                Optional(ElementsAre(".a", "b", "c", "link")));
    EXPECT_THAT(ReadFolderNames(folder.Path(), FolderEntries::kDirectories),
                Optional(ElementsAre("b")));
}

TEST(FolderNames, AreNothingWhereThereIsNoFolder) {
    const TempFolder folder;
    folder.Write("file", "");
    EXPECT_EQ(ReadFolderNames(folder.Path("missing"), FolderEntries::kAll), std::nullopt);
    EXPECT_EQ(ReadFolderNames(folder.Path("file"), FolderEntries::kAll), std::nullopt);
}

TEST(FolderNames, EndWithAnErrorWhereTheFolderCannotBeReadToItsEnd) {
    const TempFolder folder;
    folder.Write("file", "");
    const CallScript script;
    Calls().getdents64.failFrom = 2;
    Calls().getdents64.error = EIO;
    try {
        ReadFolderNames(folder.Path(), FolderEntries::kAll);
        FAIL() << "took the error for the end";
    } catch (const vornplatform::HostError& error) {
        EXPECT_EQ(error.Error(), EIO);
    }
}

}  // namespace
