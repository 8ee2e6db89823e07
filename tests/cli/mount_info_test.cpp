// SPDX-License-Identifier: MIT
#include "support/mount_info.h"

#include <gtest/gtest.h>

namespace {

TEST(MountInfo, HasItsParts) {
    const auto mount = support::ParseMountInfo(
        "36 35 253:300 /a\\040b /mnt\\011x\\134 rw,noatime shared:7 master:1 - btrfs /dev/root "
        "rw,cpu");
    ASSERT_TRUE(mount);
    EXPECT_EQ(mount->id, "36");
    EXPECT_EQ(mount->parent, "35");
    EXPECT_EQ(mount->device, "253:300");
    EXPECT_EQ(mount->root, "/a b");
    EXPECT_EQ(mount->point, "/mnt\tx\\");
    EXPECT_EQ(mount->groups, "shared:7 master:1");
    EXPECT_EQ(mount->type, "btrfs");
    EXPECT_EQ(mount->options, "rw,cpu");
}

TEST(MountInfo, MayHaveNoPeerGroups) {
    const auto mount = support::ParseMountInfo("1 0 8:1 / / rw - ext4 - rw");
    ASSERT_TRUE(mount);
    EXPECT_EQ(mount->groups, "");
    EXPECT_EQ(mount->type, "ext4");
    EXPECT_EQ(mount->options, "rw");
}

TEST(MountInfo, IsNothingOfAnotherForm) {
    for (const char* line :
         {"", " ", "36", "36 35 8:1 /", "36 35 8:1 / /mnt", "36 35 8:1 / /mnt rw",
          "36 35 8:1 / /mnt rw shared:7", "36 35 8:1 / /mnt rw -", "36 35 8:1 / /mnt rw - ",
          "36 35 8:1 /  rw - ext4 x rw"}) {
        EXPECT_FALSE(support::ParseMountInfo(line)) << line;
    }
}

TEST(UnescapedOctal, TakesThreeDigitsAlone) {
    const std::pair<const char*, const char*> kCases[] = {
        {"", ""},
        {"a", "a"},
        {"\\040", " "},
        {"a\\012b", "a\nb"},
        {"\\134040", "\\040"},
        {"\\04", "\\04"},
        {"\\", "\\"},
        {"\\048", "\\048"},
        {"\\ 40", "\\ 40"},
        {"\\-40", "\\-40"},
        {"\\303\\274", "\303\274"},
    };
    for (const auto& [text, plain] : kCases) {
        EXPECT_EQ(support::UnescapedOctal(text), plain) << text;
    }
}

}  // namespace
