// SPDX-License-Identifier: MIT
#include "cli/events/folder_paths.h"

#include <gtest/gtest.h>

namespace {

class FolderPathMemory : public testing::Test {
protected:
    std::optional<std::string> Find(std::string_view folder) {
        ++found_;
        return folder == "gone" ? std::nullopt
                                : std::optional<std::string>("/volume1/" + std::string(folder));
    }

    int found_ = 0;
    cli::FolderPaths paths_{[this](std::string_view folder) { return Find(folder); }, 3};
};

TEST_F(FolderPathMemory, FindsEachFolderOnce) {
    EXPECT_EQ(paths_.PathOf("a"), "/volume1/a");
    EXPECT_EQ(paths_.PathOf("b"), "/volume1/b");
    EXPECT_EQ(paths_.PathOf("a"), "/volume1/a");
    EXPECT_EQ(found_, 2);
}

TEST_F(FolderPathMemory, AsksAgainForWhatCouldNotBeFound) {
    EXPECT_EQ(paths_.PathOf("gone"), std::nullopt);
    EXPECT_EQ(paths_.PathOf("gone"), std::nullopt);
    EXPECT_EQ(found_, 2);
}

TEST_F(FolderPathMemory, ForgetsWhatItIsTold) {
    paths_.PathOf("a");
    paths_.Forget();
    paths_.PathOf("a");
    EXPECT_EQ(found_, 2);
}

TEST_F(FolderPathMemory, HoldsNoMoreThanItMay) {
    for (const char* folder : {"a", "b", "c", "d"}) {
        paths_.PathOf(folder);
    }
    paths_.PathOf("d");
    EXPECT_EQ(found_, 4);
    paths_.PathOf("a");
    EXPECT_EQ(found_, 5);
}

}  // namespace
