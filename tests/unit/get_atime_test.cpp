// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tests/unit/support/library_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::Files;

namespace {

const char* const kSource = "filehandle_get_atime";

class AccessTime : public unit::LibraryTest {
protected:
    void SetUp() override { SetZone("UTC0"); }
    void TearDown() override {
        unsetenv("TZ");
        LibraryTest::TearDown();
    }
    static void SetZone(const char* zone) { setenv("TZ", zone, 1); }

    /** The oldest log line is that of a record left out for this reason. */
    ::testing::AssertionResult Skipped(int reason, const char* path) {
        errno = reason;
        return __extension__ Logged(LOG_ERR, "%s:%d Failed to stat file [%s], skipped. error=[%m]",
                                    kSource, 41, path);
    }
    std::vector<std::string> Times(const Files& files) {
        return unit::Column(files, &OpenedFile::getTime);
    }
};

/** 2024-03-07 14:05:09 UTC. */
constexpr time_t kAfternoon = 1709820309;

}  // namespace

TEST_F(AccessTime, IsShownInTheLocalTimeZone) {
    const struct {
        const char* zone;
        const char* time;
    } cases[] = {{"UTC0", "2024/03/07 14:05:09"},
                 {"CET-1", "2024/03/07 15:05:09"},
                 {"EAST-10", "2024/03/08 00:05:09"},
                 {"WEST+5", "2024/03/07 09:05:09"}};
    libc.statuses["/volume1/a"] = {0, kAfternoon};
    for (const auto& test : cases) {
        SetZone(test.zone);
        Files files = unit::Records({{"7", "/volume1/a"}});
        EXPECT_EQ(VORNGetLastAccessTime(files), 0);
        EXPECT_THAT(Times(files), ElementsAre(test.time));
    }
}

TEST_F(AccessTime, HasZeroPaddedFields) {
    libc.statuses["/volume1/a"] = {0, kAfternoon - 5 * 3600 - 6};
    Files files = unit::Records({{"7", "/volume1/a"}});
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 09:05:03"));
}

TEST_F(AccessTime, IsThatOfTheFileItself) {
    char path[] = "/tmp/vorn-atime-XXXXXX";
    const int descriptor = mkstemp(path);
    ASSERT_GE(descriptor, 0);
    const timespec times[2] = {{kAfternoon, 999999999}, {kAfternoon - 86400, 0}};
    ASSERT_EQ(futimens(descriptor, times), 0);
    Files files = unit::Records({{"7", path}});
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 14:05:09"));
    close(descriptor);
    unlink(path);
}

TEST_F(AccessTime, FollowsASymbolicLink) {
    char path[] = "/tmp/vorn-atime-XXXXXX";
    const int descriptor = mkstemp(path);
    ASSERT_GE(descriptor, 0);
    const timespec times[2] = {{kAfternoon, 0}, {kAfternoon, 0}};
    ASSERT_EQ(futimens(descriptor, times), 0);
    const std::string link = std::string(path) + "-link";
    ASSERT_EQ(symlink(path, link.c_str()), 0);
    Files files = unit::Records({{"7", link}});
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 14:05:09"));
    close(descriptor);
    unlink(link.c_str());
    unlink(path);
}

TEST_F(AccessTime, ReloadsTheTimeZoneForEveryEntry) {
    libc.statuses["/volume1/a"] = {0, kAfternoon};
    libc.statuses["/volume1/b"] = {0, kAfternoon};
    Files files = unit::Records({{"7", "/volume1/a"}, {"8", "/volume1/b"}});
    journal.Clear();
    journal.onCall = [](const std::string& call) {
        if (call == "stat(/volume1/b)") {
            SetZone("CET-1");
        }
    };
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 14:05:09", "2024/03/07 15:05:09"));
    EXPECT_THAT(journal.Calls(),
                ElementsAre("stat(/volume1/a)", "tzset()", "strftime(128, %Y/%m/%d %H:%M:%S)",
                            "stat(/volume1/b)", "tzset()", "strftime(128, %Y/%m/%d %H:%M:%S)"));
}

TEST_F(AccessTime, IsReadAgainByASecondCall) {
    libc.statuses["/volume1/a"] = {0, kAfternoon};
    Files files = unit::Records({{"7", "/volume1/a"}});
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    libc.statuses["/volume1/a"] = {0, kAfternoon + 1};
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 14:05:10"));
}

TEST_F(AccessTime, ChangesNothingElse) {
    libc.statuses["/volume1/a"] = {0, kAfternoon};
    Files files = unit::Records({{"7", "/volume1/a"}});
    files.front().setPath("a");
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
    EXPECT_EQ(files.front().getPath(), "a");
    EXPECT_FALSE(files.front().isHidden() || files.front().isFolder());
    EXPECT_THAT(journal.CallsOf({"setresuid", "setresgid"}), IsEmpty());
}

TEST_F(AccessTime, IsNothingToAnEmptyList) {
    Files files;
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(AccessTime, ErasesEntriesWhoseFileHasGone) {
    libc.statuses = {{"/volume1/a", {ENOENT, 0}},
                     {"/volume1/b", {0, kAfternoon}},
                     {"/volume1/c", {EACCES, 0}},
                     {"/volume1/d", {ENOENT, 0}},
                     {"/volume1/e", {0, kAfternoon}}};
    Files files = unit::Records({{"1", "/volume1/a"},
                                 {"2", "/volume1/b"},
                                 {"3", "/volume1/c"},
                                 {"4", "/volume1/d"},
                                 {"5", "/volume1/e"}});
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("2 /volume1/b", "5 /volume1/e"));
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 14:05:09", "2024/03/07 14:05:09"));
    EXPECT_TRUE(Skipped(ENOENT, "/volume1/a"));
    EXPECT_TRUE(Skipped(EACCES, "/volume1/c"));
    EXPECT_TRUE(Skipped(ENOENT, "/volume1/d"));
}

TEST_F(AccessTime, LeavesAnEmptyListWhenEveryFileHasGone) {
    Files files = unit::Records({{"1", "/volume1/x/gone"}, {"2", "/volume1/x/gone as well"}});
    EXPECT_EQ(VORNGetLastAccessTime(files), 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_TRUE(Skipped(ENOENT, "/volume1/x/gone"));
    EXPECT_TRUE(Skipped(ENOENT, "/volume1/x/gone as well"));
}

TEST_F(AccessTime, ErasesWhatTheCallersOwnUserMayNotExamine) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root, to become another user";
    }
    char directory[] = "/tmp/vorn-atime-XXXXXX";
    ASSERT_NE(mkdtemp(directory), nullptr);
    const std::string path = std::string(directory) + "/file";
    close(open(path.c_str(), O_CREAT | O_WRONLY, 0644));
    unit::RunInChild([&] {
        ASSERT_EQ(setgroups(0, nullptr), 0);
        ASSERT_EQ(setresgid(65534, 65534, 0), 0);
        ASSERT_EQ(setresuid(65534, 65534, 0), 0);
        Files files = unit::Records({{"7", path}});
        EXPECT_EQ(VORNGetLastAccessTime(files), 0);
        EXPECT_THAT(files, IsEmpty());
        EXPECT_TRUE(Skipped(EACCES, path.c_str()));
    });
    unlink(path.c_str());
    rmdir(directory);
}

TEST_F(AccessTime, FailsWhenATimeCannotBeWrittenAndKeepsWhatIsDone) {
    libc.statuses = {{"/volume1/a", {0, kAfternoon}},
                     {"/volume1/b", {ENOENT, 0}},
                     {"/volume1/c", {0, kAfternoon}},
                     {"/volume1/d", {ENOENT, 0}}};
    libc.failingTimeTexts = {2};
    Files files = unit::Records(
        {{"1", "/volume1/a"}, {"2", "/volume1/b"}, {"3", "/volume1/c"}, {"4", "/volume1/d"}});
    EXPECT_EQ(VORNGetLastAccessTime(files), -1);
    EXPECT_THAT(unit::Shown(files), ElementsAre("1 /volume1/a", "3 /volume1/c", "4 /volume1/d"));
    EXPECT_THAT(Times(files), ElementsAre("2024/03/07 14:05:09", "", ""));
    EXPECT_TRUE(Skipped(ENOENT, "/volume1/b"));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to convert time, vornerr=[0x%04X]", kSource, 46, 0x0100));
    EXPECT_TRUE(ErrorSet(0x0100, kSource, 27));
}

TEST_F(AccessTime, FailsWhenATimeIsRefused) {
    libc.statuses = {{"/volume1/a", {0, kAfternoon}}, {"/volume1/b", {0, kAfternoon}}};
    setters.Refuse("setTime", 1);
    Files files = unit::Records({{"1", "/volume1/a"}, {"2", "/volume1/b"}});
    EXPECT_EQ(VORNGetLastAccessTime(files), -1);
    EXPECT_THAT(Times(files), ElementsAre("", ""));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 80,
                       "!strTime.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 80));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to set time for opened file", kSource, 50));
}
