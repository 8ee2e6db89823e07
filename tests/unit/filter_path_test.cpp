// SPDX-License-Identifier: MIT
#include "tests/unit/support/filter_test.h"
#include "tests/unit/support/scripted_lists.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::ScriptedPlatform;

namespace {

const char* const kSource = "filehandle_filter_path";
const char* const kShareListLine = "%s:%d Failed to get share path list, vornerr=[0x%04X]";
const char* const kRefusal = "%s:%d Invaild Argument (%s)=[%d]\n";

}  // namespace

using Filter = unit::FilterTest;
using ShareFilter = unit::FilterTest;

TEST_F(ShareFilter, CutsTheVolumeOffThePath) {
    platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volumeUSB1/docs"}};
    files = unit::Records({{"7", "/volume1/photo/2020/a.jpg"}, {"8", "/volumeUSB1/docs/b"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(Kept(), ElementsAre("/volume1/photo/2020/a.jpg -> photo/2020/a.jpg, a.jpg",
                                    "/volumeUSB1/docs/b -> docs/b, b"));
}

TEST_F(ShareFilter, KeepsEntryUnderSiblingWithSamePrefix) {
    platform.shares = {{"photo", "/volume1/photo"}};
    files = unit::Records({{"7", "/volume1/photos/b.txt"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(Kept(), ElementsAre("/volume1/photos/b.txt -> photos/b.txt, b.txt"));
}

TEST_F(ShareFilter, KeepsTheShareItself) {
    platform.shares = {{"photo", "/volume1/photo"}};
    files = unit::Records({{"7", "/volume1/photo"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(Kept(), ElementsAre("/volume1/photo -> photo, photo"));
}

TEST_F(ShareFilter, ErasesInPlaceAndKeepsTheOrder) {
    platform.shares = {{"photo", "/volume1/photo"}};
    files = unit::Records({{"1", "/volume2/docs/c.pdf"},
                           {"2", "/volume1/photo/z"},
                           {"3", "/volume1/phot"},
                           {"4", "/volume1/other"},
                           {"5", "/volume1/photo/a"},
                           {"6", "/volume2/photo/a"}});
    const OpenedFile* second = &*std::next(files.begin());
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("2 /volume1/photo/z", "5 /volume1/photo/a"));
    EXPECT_EQ(&files.front(), second);
}

TEST_F(ShareFilter, ComparesCaseSensitively) {
    platform.shares = {{"photo", "/volume1/Photo"}};
    files = unit::Records({{"7", "/volume1/photo/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(ShareFilter, SetsNothingButPathAndFileName) {
    platform.shares = {{"photo", "/volume1/photo"}};
    files = unit::Records({{"7", "/volume1/photo/a"}});
    files.front().setHost("box");
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    OpenedFile& file = files.front();
    EXPECT_EQ(file.getPidStr() + " " + file.getHost(), "7 box");
    EXPECT_EQ(file.getService() + file.getUser() + file.getTime(), "");
    EXPECT_FALSE(file.isHidden() || file.isFolder());
}

TEST_F(ShareFilter, CallsThePlatformInOrder) {
    platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volume1/docs"}};
    files = unit::Records({{"7", "/volume1/docs/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(
        journal.Calls(),
        ElementsAre("KLIBCSzListAlloc(512)", "KLIBCSzListAlloc(512)",
                    "VORNShareEnum(list 2, 0x7F0F)", "VORNShareGet(photo, null)",
                    "KLIBCSzListPush(list 1, /volume1/photo)", "VORNShareGet(docs, the record)",
                    "KLIBCSzListPush(list 1, /volume1/docs)", "KLIBCSzListFree(list 2)",
                    "KLIBCSzListFree(list 1)"));
}

TEST_F(ShareFilter, AsksForTheSharesOfAnEmptyList) {
    platform.shares = {{"photo", "/volume1/photo"}};
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(journal.CallsOf("VORNShareEnum"), ElementsAre("VORNShareEnum(list 2, 0x7F0F)"));
    EXPECT_THAT(journal.CallsOf("VORNShareGet"), ElementsAre("VORNShareGet(photo, null)"));
}

TEST_F(ShareFilter, FailsForAnEmptyListWhenTheSharesCannotBeListed) {
    platform.shareEnumResult = -1;
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share, vornerr=[0x%04X]", kSource, 72,
                       ScriptedPlatform::kShareEnumError));
    EXPECT_TRUE(Logged(LOG_ERR, kShareListLine, kSource, 139, ScriptedPlatform::kShareEnumError));
}

TEST_F(ShareFilter, ErasesEverythingWhereThereIsNoShare) {
    files = unit::Records({{"7", "/volume1/a/b"}, {"8", "/volume2/a/b"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_TRUE(
        Logged(LOG_INFO, "%s:%d [fh] In share path list get, not get any share.", kSource, 75));
    EXPECT_THAT(journal.Calls(), ElementsAre("KLIBCSzListAlloc(512)", "KLIBCSzListAlloc(512)",
                                             "VORNShareEnum(list 2, 0x7F0F)",
                                             "KLIBCSzListFree(list 2)", "KLIBCSzListFree(list 1)"));
}

TEST_F(ShareFilter, BelievesTheResultZeroOverTheListedNames) {
    platform.shares = {{"photo", "/volume1/photo"}};
    platform.shareEnumResult = 0;
    files = unit::Records({{"7", "/volume1/photo/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(journal.CallsOf("VORNShareGet"), IsEmpty());
    EXPECT_TRUE(
        Logged(LOG_INFO, "%s:%d [fh] In share path list get, not get any share.", kSource, 75));
}

TEST_F(ShareFilter, BelievesTheListedNamesOverAPositiveResult) {
    for (int result : {1, 9}) {
        platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volume1/docs"}};
        platform.shareEnumResult = result;
        files = unit::Records({{"7", "/volume1/docs/a"}});
        EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
        EXPECT_EQ(files.size(), 1U);
        EXPECT_EQ(journal.CallsOf("VORNShareGet").size(), 2U);
    }
}

TEST_F(ShareFilter, CountsTheListedNamesAgainBeforeEachLookup) {
    platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volume1/docs"}};
    files = unit::Records({{"7", "/volume1/photo/a"}, {"8", "/volume1/docs/a"}});
    journal.onCall = [](const std::string& call) {
        if (call == "VORNShareGet(photo, null)") {
            unit::SetItemCount("list 2", 1);
        }
    };
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(journal.CallsOf("VORNShareGet"), ElementsAre("VORNShareGet(photo, null)"));
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/photo/a"));
}

TEST_F(ShareFilter, ErasesEverythingWhereTheSharesLeaveNoList) {
    platform.shares = {{"photo", "/volume1/photo"}};
    platform.listDroppers = {"VORNShareEnum"};
    files = unit::Records({{"7", "/volume1/photo/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(ShareFilter, LeavesAShareOutWhosePathCannotBePushed) {
    platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volume1/docs"}};
    platform.failingPushes = {1};
    files = unit::Records({{"7", "/volume1/photo/a"}, {"8", "/volume1/docs/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("8 /volume1/docs/a"));
}

TEST_F(ShareFilter, FailsWithoutAListOfNames) {
    platform.failingAllocs = {2};
    files = unit::Records({{"7", "/volume1/photo/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(ErrorSet(0x0100, kSource, 62));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to allocate memory for list, vornerr=[0x%04X]",
                       kSource, 63, 0x0100));
    EXPECT_TRUE(Logged(LOG_ERR, kShareListLine, kSource, 139, 0x0100));
    EXPECT_EQ(files.size(), 1U);
    EXPECT_THAT(journal.CallsOf("VORNShareEnum"), IsEmpty());
}

TEST_F(ShareFilter, FailsWhenTheSharesCannotBeListed) {
    platform.shares = {{"photo", "/volume1/photo"}};
    platform.shareEnumResult = -5;
    files = unit::Records({{"7", "/volume1/photo/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share, vornerr=[0x%04X]", kSource, 72,
                       ScriptedPlatform::kShareEnumError));
    EXPECT_TRUE(Logged(LOG_ERR, kShareListLine, kSource, 139, ScriptedPlatform::kShareEnumError));
    EXPECT_EQ(files.size(), 1U);
    EXPECT_THAT(journal.CallsOf("VORNShareGet"), IsEmpty());
}

TEST_F(ShareFilter, FailsWhenAShareCannotBeLookedUp) {
    platform.shares = {{"photo", "/volume1/photo"}, {"docs", "/volume1/docs"}, {"x", "/volume1/x"}};
    platform.failingShares = {"docs"};
    files = unit::Records({{"7", "/volume1/photo/a"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to get share path of share [%s]", kSource, 82, "docs"));
    EXPECT_TRUE(Logged(LOG_ERR, kShareListLine, kSource, 139, ScriptedPlatform::kShareGetError));
    EXPECT_EQ(unit::Column(files, &OpenedFile::getPath), std::vector<std::string>{""});
    EXPECT_THAT(journal.CallsOf("VORNShareGet"),
                ElementsAre("VORNShareGet(photo, null)", "VORNShareGet(docs, the record)"));
}

TEST_F(ShareFilter, FailsForAKeptPathThatIsUnderNoVolume) {
    platform.shares = {{"home", "/home"}, {"photo", "/volume1/photo"}};
    files = unit::Records({{"1", "/elsewhere"},
                           {"2", "/volume1/photo/a"},
                           {"3", "/home/x"},
                           {"4", "/elsewhere"},
                           {"5", "/volume1/photo/b"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(ErrorSet(0x0D00, kSource, 41));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to extract share path, vornerr=[0x%04X]", kSource,
                       162, 0x0D00));
    EXPECT_THAT(Kept(), ElementsAre("/volume1/photo/a -> photo/a, a", "/home/x -> , ",
                                    "/elsewhere -> , ", "/volume1/photo/b -> , "));
}

TEST_F(ShareFilter, FailsForAPathThatIsEmptyWithinTheVolume) {
    platform.shares = {{"all", "/volume1"}};
    files = unit::Records({{"2", "/volume1/a"}, {"7", "/volume1/"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, kRefusal, "filehandle_opened_file", 50, "!path.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 50));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to set path for opened file", kSource, 170));
    EXPECT_THAT(Kept(), ElementsAre("/volume1/a -> a, a", "/volume1/ -> , "));
}

TEST_F(ShareFilter, FailsWhenTheFileNameIsRefused) {
    platform.shares = {{"photo", "/volume1/photo"}};
    files = unit::Records({{"1", "/volume1/photo/a"}, {"2", "/volume1/photo/b"}});
    setters.Refuse("setFilename", 2);
    EXPECT_EQ(Run(ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, kRefusal, "filehandle_opened_file", 74, "!filename.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 74));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to set filename for opened file", kSource, 174));
    EXPECT_THAT(Kept(),
                ElementsAre("/volume1/photo/a -> photo/a, a", "/volume1/photo/b -> photo/b, "));
}

TEST_F(ShareFilter, LetsTheRangeErrorOfABareVolumeNameOut) {
    platform.shares = {{"odd", "/volume"}};
    files = unit::Records({{"7", "/volume"}});
    EXPECT_THROW(Run(ENUM_BY_SHARE), std::out_of_range);
}

TEST_F(ShareFilter, MatchesEveryPathWithAnEmptyPrefix) {
    platform.shares = {{"photo", "/volume1/photo"}, {"all", ""}};
    files = unit::Records({{"7", "/volume2/a/b"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(Kept(), ElementsAre("/volume2/a/b -> a/b, b"));
}

TEST_F(ShareFilter, DoesNotMatchAPathThatIsShorterThanThePrefix) {
    platform.shares = {{"photo", "/volume1/photo/"}};
    files = unit::Records({{"7", "/volume1/photo"}});
    EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(ShareFilter, TakesTheLastElementAsFileName) {
    platform.shares = {{"s", "/volume1/s"}};
    const std::pair<const char*, const char*> cases[] = {
        {"/volume1/s/a.jpg", "a.jpg"},
        {"/volume1/s/.hidden", ".hidden"},
        {"/volume1/s/a.jpg (deleted)", "a.jpg (deleted)"},
        {"/volume1/s/\xff\x01\n", "\xff\x01\n"},
        {"/volume1/s/dir/", "."},
        {"/volume1/s/..", ".."},
    };
    for (const auto& [path, name] : cases) {
        files = unit::Records({{"7", path}});
        EXPECT_EQ(Run(ENUM_BY_SHARE), 0);
        EXPECT_EQ(files.front().getFilename(), name) << path;
    }
}

TEST_F(Filter, RefusesOtherOptions) {
    platform.shares = {{"photo", "/volume1/photo"}};
    platform.volumes = {"/volume1"};
    for (int enumby : {2, -1, 100}) {
        for (bool empty : {true, false}) {
            files = unit::Records({{"7", "/volume1/photo/a"}});
            if (empty) {
                files.clear();
            }
            EXPECT_EQ(Run(enumby), -1);
            EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to filter path. wrong [enumby] option",
                               kSource, 148));
            EXPECT_EQ(files.size(), empty ? 0U : 1U);
            EXPECT_THAT(journal.Calls(), ElementsAre("KLIBCSzListAlloc(512)",
                                                     ::testing::StartsWith("KLIBCSzListFree(")));
        }
    }
}

TEST_F(Filter, FailsWithoutAPrefixListBeforeItLooksAtTheOption) {
    int failures = 0;
    for (int enumby : {ENUM_BY_SHARE + 0, ENUM_BY_VOLUME + 0, 2}) {
        platform.failingAllocs = {++failures};
        files = unit::Records({{"7", "/volume1/a"}});
        EXPECT_EQ(Run(enumby), -1);
        EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to allocate list, vornerr=[0x%04X]", kSource, 129,
                           ScriptedPlatform::kAllocError));
        EXPECT_EQ(files.size(), 1U);
        EXPECT_THAT(journal.CallsOf("KLIBCSzListAlloc"), ElementsAre("KLIBCSzListAlloc(512)"));
    }
}
