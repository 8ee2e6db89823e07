// SPDX-License-Identifier: MIT
#include <algorithm>
#include <random>

#include "tests/unit/support/filter_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using unit::ScriptedPlatform;

namespace {

const char* const kSource = "filehandle_filter_path";
const char* const kVolumeListLine = "%s:%d Failed to get volume path list, vornerr=[0x%04X]";

}  // namespace

using VolumeFilter = unit::FilterTest;

TEST_F(VolumeFilter, KeepsThePathWhole) {
    platform.volumes = {"/volume1", "/volume2"};
    files = unit::Records({{"7", "/volume1/photo/a.jpg"},
                           {"8", "/volume3/a"},
                           {"9", "/volume2/b"},
                           {"10", "/volume10/x"}});
    EXPECT_EQ(Run(ENUM_BY_VOLUME), 0);
    EXPECT_THAT(Kept(),
                ElementsAre("/volume1/photo/a.jpg -> /volume1/photo/a.jpg, a.jpg",
                            "/volume2/b -> /volume2/b, b", "/volume10/x -> /volume10/x, x"));
}

TEST_F(VolumeFilter, HandsTheEndOfTheChainBackAndNothingElse) {
    platform.volumes = {"/volume1", "/volume2"};
    files = unit::Records({{"7", "/volume1/a"}});
    EXPECT_EQ(Run(ENUM_BY_VOLUME), 0);
    EXPECT_THAT(
        journal.Calls(),
        ElementsAre("KLIBCSzListAlloc(512)", "VORNMountVolAllEnum(0, 3, 2)",
                    "KLIBCSzListPush(list 1, /volume1)", "KLIBCSzListPush(list 1, /volume2)",
                    "VORNMountVolInfoFree(null)", "KLIBCSzListFree(list 1)"));
}

TEST_F(VolumeFilter, ReadsAMountPathThatFillsItsRecord) {
    const std::string longest = "/volume" + std::string(59 - 7, '1');
    platform.volumes = {longest};
    files = unit::Records({{"7", longest + "/a"}, {"8", "/volume1/a"}});
    EXPECT_EQ(Run(ENUM_BY_VOLUME), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 " + longest + "/a"));
}

TEST_F(VolumeFilter, AsksForTheVolumesOfAnEmptyList) {
    platform.volumes = {"/volume1"};
    EXPECT_EQ(Run(ENUM_BY_VOLUME), 0);
    EXPECT_EQ(journal.CallsOf("VORNMountVolAllEnum").size(), 1U);
}

TEST_F(VolumeFilter, NeedsNoVolumeInThePath) {
    platform.volumes = {"/home"};
    files = unit::Records({{"7", "/home/x"}});
    EXPECT_EQ(Run(ENUM_BY_VOLUME), 0);
    EXPECT_THAT(Kept(), ElementsAre("/home/x -> /home/x, x"));
}

TEST_F(VolumeFilter, FailsWithoutVolumes) {
    files = unit::Records({{"7", "/volume1/a"}});
    EXPECT_EQ(Run(ENUM_BY_VOLUME), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to enum all mounted volume, vornerr=[0x%04X]",
                       kSource, 98, ScriptedPlatform::kVolumeError));
    EXPECT_TRUE(Logged(LOG_ERR, kVolumeListLine, kSource, 144, ScriptedPlatform::kVolumeError));
    EXPECT_EQ(files.size(), 1U);
}

TEST_F(VolumeFilter, FailsWhenAVolumeCannotBePushedAndHandsTheRestBack) {
    platform.volumes = {"/volume1", "/volume2", "/volume3"};
    platform.failingPushes = {2};
    files = unit::Records({{"7", "/volume1/a"}});
    EXPECT_EQ(Run(ENUM_BY_VOLUME), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to push to list, vornerr=[0x%04X]", kSource, 110,
                       ScriptedPlatform::kPushError));
    EXPECT_TRUE(Logged(LOG_ERR, kVolumeListLine, kSource, 144, ScriptedPlatform::kPushError));
    EXPECT_THAT(journal.CallsOf({"KLIBCSzListPush", "VORNMountVolInfoFree"}),
                ElementsAre("KLIBCSzListPush(list 1, /volume1)",
                            "KLIBCSzListPush(list 1, /volume2)", "VORNMountVolInfoFree(/volume2)"));
    EXPECT_EQ(files.size(), 1U);
}

TEST_F(VolumeFilter, AgreesWithThePlainPrefixTestOnRandomPaths) {
    std::mt19937 random(1);
    const auto text = [&random](size_t longest) {
        std::string made;
        for (size_t length = random() % (longest + 1); made.size() < length;) {
            made += "/ab\xff"[random() % 4];
        }
        return made;
    };
    for (int round = 0; round < 500; ++round) {
        platform.volumes.clear();
        for (size_t count = 1 + random() % 6; platform.volumes.size() < count;) {
            platform.volumes.push_back("/" + text(4));
        }
        files.clear();
        std::vector<std::string> expected;
        for (int i = 0; i < 20; ++i) {
            const std::string path = "/" + text(6) + "a";
            files.splice(files.end(), unit::Records({{"7", path}}));
            if (std::any_of(platform.volumes.begin(), platform.volumes.end(),
                            [&path](const std::string& prefix) {
                                return path.compare(0, prefix.size(), prefix) == 0;
                            })) {
                expected.push_back(path);
            }
        }
        ASSERT_EQ(Run(ENUM_BY_VOLUME), 0);
        ASSERT_EQ(unit::Column(files, &OpenedFile::getPath), expected)
            << ::testing::PrintToString(platform.volumes);
    }
}
