// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mount.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/volumes/volume_table.h"
#include "tests/platform/support/log_capture.h"
#include "tests/platform/support/private_root.h"
#include "vorn/platform/error.h"
#include "vorn/platform/volume.h"

namespace {

using testing::ElementsAre;

std::vector<std::string> Select(std::string text) {
    const std::unique_ptr<FILE, int (*)(FILE*)> table(fmemopen(text.data(), text.size(), "r"),
                                                      fclose);
    return vornplatform::SelectVolumes(table.get());
}

std::vector<std::string> MountedVolumes() {
    std::vector<std::string> paths;
    for (auto* volume = VORNMountVolAllEnum(0, 3, 2); volume != nullptr; volume = volume->pNext) {
        paths.emplace_back(volume->szMountPath);
    }
    return paths;
}

void MountTmpfs(const std::string& path) {
    MakeFolder(path);
    ASSERT_EQ(mount("tmpfs", path.c_str(), "tmpfs", 0, ""), 0);
}

}  // namespace

TEST(Volume, IsTheWordVolumeAndMoreInOneComponent) {
    const struct {
        const char* path;
        bool volume;
        bool onVolume;
    } rows[] = {
        {"/volume1", true, true},   {"/volumeUSB1", true, true},    {"/volume", false, false},
        {"/volume/", false, false}, {"/volume/a", false, false},    {"/volume1/", false, true},
        {"/mnt", false, false},     {"/volume1/a", false, true},    {"", false, false},
        {"volume1", false, false},  {"/mnt/volume1", false, false}, {"/Volume1", false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(vornplatform::IsVolume(row.path), row.volume) << row.path;
        EXPECT_EQ(vornplatform::IsOnVolume(row.path), row.onVolume) << row.path;
    }
}

TEST(Volume, IsSelectedOnceFromAMountTable) {
    EXPECT_THAT(Select("proc /proc proc rw 0 0\n"
                       "/dev/sdb1 /volume2 ext4 rw 0 0\n"
                       "/dev/sda1 /volume1 btrfs rw 0 0\n"
                       "tmpfs /volume2 tmpfs rw 0 0\n"
                       "garbage\n"
                       "/dev/sdc1 /volume1/inner ext4 rw 0 0\n"
                       "/dev/sdd1 /volume\\040a\\012b ext4 rw 0 0"),
                ElementsAre("/volume2", "/volume1", "/volume a\nb"));
}

TEST(Volume, IsSelectedFromALineOfAnyLength) {
    const std::string options(300000, 'x');
    EXPECT_THAT(Select("overlay /volume1 overlay lowerdir=" + options + " 0 0\n" +
                       "tmpfs /volume2 tmpfs rw 0 0\n"),
                ElementsAre("/volume1", "/volume2"));
}

TEST(Volume, IsListedFromTheMountsOfTheHost) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        MountTmpfs("/volume1/inner");
        MountTmpfs("/volumeUSB 1\n");
        EXPECT_THAT(MountedVolumes(), ElementsAre("/volume1", "/volume2", "/volumeUSB 1\n"));
    });
}

TEST(Volume, IsSkippedWithALogLineWhereItsPathIsTooLong) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        const std::string fits = "/volume" + std::string(52, 'a');
        MountTmpfs(fits);
        MountTmpfs("/volume" + std::string(52, 'b') + "\n");
        EXPECT_THAT(MountedVolumes(), ElementsAre("/volume1", "/volume2", fits));
        ASSERT_EQ(LoggedLines().size(), 1U);
        EXPECT_THAT(LoggedLines()[0], testing::HasSubstr("bbb\\x0a"));
    });
}

TEST(Volume, IsNullAndNotFoundWhereThereIsNone) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        ASSERT_EQ(umount("/volume1"), 0);
        ASSERT_EQ(umount("/volume2"), 0);
        EXPECT_EQ(VORNMountVolAllEnum(0, 3, 2), nullptr);
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_NOT_FOUND);
    });
}

TEST(Volume, CostsNothingWhenNobodyReleasesTheChain) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        ASSERT_EQ(MountedVolumes().size(), 2U);
        const size_t before = mallinfo2().uordblks;
        for (int i = 0; i < 10000; ++i) {
            ASSERT_NE(VORNMountVolAllEnum(0, 3, 2), nullptr);
        }
        EXPECT_LE(mallinfo2().uordblks, before + 4096);
    });
}

TEST(Volume, StaysReadableAfterItWasHandedBack) {
    SKIP_WITHOUT_MOUNTS();
    InPrivateRoot([] {
        VORN_MOUNT_VOL_INFO* volume = VORNMountVolAllEnum(0, 3, 2);
        ASSERT_NE(volume, nullptr);
        VORNMountVolInfoFree(volume->pNext);
        VORNMountVolInfoFree(nullptr);
        EXPECT_STREQ(volume->szMountPath, "/volume1");
        EXPECT_STREQ(volume->pNext->szMountPath, "/volume2");
    });
}
