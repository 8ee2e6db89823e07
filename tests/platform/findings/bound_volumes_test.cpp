// SPDX-License-Identifier: MIT
#include "platform/linux/findings/bound_volumes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace vornplatform;
using testing::ElementsAre;
using testing::Field;

TEST(MountInfo, TellsWhatLiesWhere) {
    const auto mounts = ParseMounts(
        "36 35 98:0 / /volume1 rw,noatime master:1 - ext3 /dev/root rw\n"
        "37 35 0:30 /@a\\040b /srv/x\\011y\\134z rw - btrfs /dev/sdb rw\n"
        "\n38 35 0:1\nnonsense\n39 36 98:0 /a /mnt rw - ext3 x rw");
    ASSERT_EQ(mounts.size(), 3U);
    EXPECT_EQ(mounts[0].device + mounts[0].root + mounts[0].point, "98:0//volume1");
    EXPECT_EQ(mounts[1].root, "/@a b");
    EXPECT_EQ(mounts[1].point, "/srv/x\ty\\z");
    EXPECT_EQ(mounts[2].point, "/mnt");
}

TEST(Volumes, AreThoseThatNoLaterMountHides) {
    const auto volumes = VolumesAmong({{"8:1", "/", "/volume1"},
                                       {"8:2", "/", "/"},
                                       {"8:3", "/x", "/volume1"},
                                       {"8:4", "/", "/volume1/a"}});
    EXPECT_THAT(volumes, ElementsAre(Field(&MountEntry::device, "8:3")));
}

TEST(BoundVolume, IsWhereTheSameFolderIsUnderAnotherPath) {
    const MountEntry whole{"8:1", "/", "/volume1"};
    const MountEntry part{"0:30", "/@data", "/volume2"};
    struct Case {
        MountEntry volume;
        MountEntry mount;
        std::string place;
    };
    const Case kCases[] = {
        {whole, {"8:1", "/", "/srv/all"}, "/srv/all"},
        {whole, {"8:1", "/photo", "/srv/jail"}, "/srv/jail"},
        {whole, {"8:2", "/photo", "/srv/jail"}, ""},
        {whole, whole, ""},
        {whole, {"8:1", "/photo", "/volume1/jail"}, ""},
        {whole, {"8:1", "/", "/volume3"}, ""},
        {part, {"0:30", "/", "/mnt"}, "/mnt/@data"},
        {part, {"0:30", "/@", "/"}, ""},
        {part, {"0:30", "/@data2", "/srv"}, ""},
        {part, {"0:30", "/@data/x", "/srv"}, "/srv"},
        {part, {"0:30", "/", "/"}, "/@data"},
    };
    for (const Case& each : kCases) {
        EXPECT_EQ(PlaceElsewhere(each.volume, each.mount), each.place)
            << each.mount.root << " on " << each.mount.point;
    }
}

}  // namespace
