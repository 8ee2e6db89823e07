// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "tests/unit/support/library_test.h"
#include "tests/unit/support/scripted_lists.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using unit::Files;
using unit::ScriptedPlatform;

namespace {

const char* const kSource = "filehandle_get_proc_opened_file";

/** A scan of processes and descriptors that exist in the script alone. */
class Scan : public unit::LibraryTest {
protected:
    /** A process with its descriptors, by name and target. */
    void AddProcess(const std::string& pid,
                    const std::vector<std::pair<std::string, std::string>>& descriptors) {
        platform.directories["/proc"].push_back(pid);
        std::vector<std::string>& names = platform.directories["/proc/" + pid + "/fd/"];
        for (const auto& [name, target] : descriptors) {
            names.push_back(name);
            if (!target.empty()) {
                libc.links["/proc/" + pid + "/fd/" + name] = target;
            }
        }
    }

    int Run() {
        journal.Clear();
        return GetProcOpenedFileInVolume(files);
    }

    Files files;
};

}  // namespace

TEST_F(Scan, AppendsARecordForEachDescriptorUnderAVolume) {
    AddProcess("7", {{"3", "/volume1/photo/a.jpg"}, {"4", "/volume2/b"}});
    AddProcess("1234", {{"10", "/volumeUSB1/usbshare/c"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/photo/a.jpg", "7 /volume2/b",
                                                "1234 /volumeUSB1/usbshare/c"));
}

TEST_F(Scan, SetsNothingButPidAndFullPath) {
    AddProcess("7", {{"3", "/volume1/a"}, {"4", "/volume1/b"}});
    EXPECT_EQ(Run(), 0);
    for (OpenedFile& file : files) {
        for (MEMBER member : {MEMBER_SERVICE, MEMBER_USER, MEMBER_HOST, MEMBER_PATH,
                              MEMBER_FILENAME, MEMBER_TIME}) {
            EXPECT_FALSE(file.isMatchKeyword("v", member) || file.isMatchKeyword("7", member));
        }
        EXPECT_EQ(file.getPath() + file.getFilename() + file.getService() + file.getTime(), "");
        EXPECT_FALSE(file.isHidden());
        EXPECT_FALSE(file.isFolder());
    }
}

TEST_F(Scan, CallsThePlatformInOrder) {
    AddProcess("7", {{"0", "/volume1/a"}, {"3", "/volume1/a"}});
    platform.directories["/proc"].push_back("self");
    AddProcess("8", {});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(
        journal.Calls(),
        ElementsAre("KLIBCSzListAlloc(512)", "KLIBCSzListAlloc(512)",
                    "KLIBCFileEnumDir(/proc, null, list 2, 0x40)",
                    "KLIBCFileEnumDir(/proc/7/fd/, null, list 1, 0x0)",
                    "readlink(/proc/7/fd/3, 4095)", "KLIBCSzListRemoveAll(list 1)",
                    "KLIBCFileEnumDir(/proc/8/fd/, null, list 1, 0x0)",
                    "KLIBCSzListRemoveAll(list 1)", ::testing::StartsWith("KLIBCSzListFree"),
                    ::testing::StartsWith("KLIBCSzListFree")));
}

TEST_F(Scan, PassesDescriptorZeroByEvenOnAVolume) {
    AddProcess("7", {{"0", "/volume1/a"}, {"3", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
    EXPECT_THAT(journal.CallsOf("readlink"), ElementsAre("readlink(/proc/7/fd/3, 4095)"));
}

TEST_F(Scan, PassesDescriptorNamesByThatAreNoNumber) {
    AddProcess("7", {{"x", "/volume1/a"}, {"", "/volume1/a"}, {"x3", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(journal.CallsOf("readlink"), IsEmpty());
}

TEST_F(Scan, MakesTwoRecordsForTwoDescriptorsOfOneFile) {
    AddProcess("7", {{"3", "/volume1/a"}, {"5", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a", "7 /volume1/a"));
}

TEST_F(Scan, LooksOnlyAtNumericalEntriesOfProc) {
    platform.directories["/proc"] = {"sys", "0", "self", "acpi", "7"};
    platform.directories["/proc/7/fd/"] = {};
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(journal.CallsOf("KLIBCFileEnumDir"),
                ElementsAre("KLIBCFileEnumDir(/proc, null, list 2, 0x40)",
                            "KLIBCFileEnumDir(/proc/7/fd/, null, list 1, 0x0)"));
}

TEST_F(Scan, KeepsThePidTextAsProcNamesIt) {
    AddProcess("007", {{"03", "/volume1/a"}});
    AddProcess("12abc", {{"4", "/volume1/b"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("007 /volume1/a", "12abc /volume1/b"));
    EXPECT_THAT(journal.CallsOf("readlink"),
                ElementsAre("readlink(/proc/007/fd/03, 4095)", "readlink(/proc/12abc/fd/4, 4095)"));
}

TEST_F(Scan, PassesTargetsByThatAreUnderNoVolume) {
    AddProcess("7", {{"1", "socket:[123]"},
                     {"2", "pipe:[5]"},
                     {"3", "/tmp/volume1/a"},
                     {"4", "/volume1"},
                     {"5", "anon_inode:[eventpoll]"},
                     {"6", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
}

TEST_F(Scan, KeepsTheSuffixOfADeletedFile) {
    AddProcess("7", {{"3", "/volume1/a (deleted)"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a (deleted)"));
}

TEST_F(Scan, PassesLinksByThatCannotBeRead) {
    AddProcess("7", {{"3", ""}, {"4", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
}

TEST_F(Scan, PassesEmptyLinksBy) {
    AddProcess("7", {{"3", "/volume1/a"}, {"4", "/volume1/b"}});
    libc.links["/proc/7/fd/3"] = "";
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/b"));
}

TEST_F(Scan, CutsTargetsToTheBuffer) {
    const std::string longest = "/volume1/" + std::string(4095 - 9, 'a');
    AddProcess("7", {{"3", longest}, {"4", longest + "b"}, {"5", "/volume1/short"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Column(files, &OpenedFile::getFullPath),
                ElementsAre(longest, longest, "/volume1/short"));
}

TEST_F(Scan, ReadsEachLinkIntoABufferOfZeros) {
    const std::string longest = "/volume1/" + std::string(4095 - 9, 'a');
    AddProcess("7", {{"3", longest}, {"4", ""}, {"5", "/volume1/b"}, {"6", "/volume1/c"}});
    EXPECT_EQ(Run(), 0);  // the scripted readlink looks at the buffer
    EXPECT_THAT(unit::Column(files, &OpenedFile::getFullPath),
                ElementsAre(longest, "/volume1/b", "/volume1/c"));
    EXPECT_EQ(journal.CallsOf("readlink").size(), 4U);
}

TEST_F(Scan, CountsTheNamesAgainBeforeEachOfThem) {
    for (const char* list : {"list 1", "list 2"}) {
        platform = unit::ScriptedPlatform();
        files.clear();
        AddProcess("7", {{"3", "/volume1/a"}, {"4", "/volume1/b"}});
        AddProcess("8", {{"3", "/volume1/c"}});
        journal.onCall = [&](const std::string& call) {
            if (call == "readlink(/proc/7/fd/3, 4095)") {
                unit::SetItemCount(list, 1);
            }
        };
        EXPECT_EQ(Run(), 0);
        EXPECT_THAT(unit::Shown(files),
                    ElementsAre("7 /volume1/a",
                                std::string(list) == "list 1" ? "8 /volume1/c" : "7 /volume1/b"));
    }
}

TEST_F(Scan, CutsADirectoryTextThatIsLongerThanItsBuffer) {
    const std::string pid = "7" + std::string(5000, 'x');
    platform.directories["/proc"] = {pid};
    const std::string directory = ("/proc/" + pid + "/fd/").substr(0, 4095);
    platform.directories[directory] = {"3"};
    libc.links[directory] = "/volume1/a";
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Column(files, &OpenedFile::getPidStr), ElementsAre(pid));
    EXPECT_THAT(journal.CallsOf("readlink"), ElementsAre("readlink(" + directory + ", 4095)"));
}

TEST_F(Scan, LogsAProcessThatHasGoneForDebuggingAloneAndGoesOn) {
    platform.directories["/proc"] = {"7"};
    AddProcess("8", {{"3", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("8 /volume1/a"));
    EXPECT_TRUE(Logged(LOG_DEBUG, "%s:%d Fail to enum %s, vornerr=[0x%04X]", kSource, 64,
                       "/proc/7/fd/", ScriptedPlatform::kEnumDirError));
}

TEST_F(Scan, ReadsNamesThatAFailedListingLeftWithTheNextProcess) {
    platform.directories["/proc"] = {"7"};
    platform.partialDirectories["/proc/7/fd/"] = {"9"};
    AddProcess("8", {{"3", "/volume1/a"}});
    libc.links["/proc/8/fd/9"] = "/volume1/nine";
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("8 /volume1/nine", "8 /volume1/a"));
    EXPECT_THAT(journal.CallsOf("KLIBCSzListRemoveAll"),
                ElementsAre("KLIBCSzListRemoveAll(list 1)"));
    EXPECT_TRUE(Logged(LOG_DEBUG, "%s:%d Fail to enum %s, vornerr=[0x%04X]", kSource, 64,
                       "/proc/7/fd/", ScriptedPlatform::kEnumDirError));
}

TEST_F(Scan, FindsNothingWhereNothingIsOpen) {
    platform.directories["/proc"] = {};
    EXPECT_EQ(Run(), 0);
    AddProcess("7", {{"3", "/dev/null"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(Scan, FindsNothingWhereTheListingLeavesNoList) {
    AddProcess("7", {{"3", "/volume1/a"}});
    platform.listDroppers = {"KLIBCFileEnumDir"};
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(Scan, LeavesRecordsThatAreInTheListAlready) {
    files = unit::Records({{"1", "/elsewhere"}});
    files.front().setHost("box");
    AddProcess("7", {{"3", "/volume1/a"}});
    EXPECT_EQ(Run(), 0);
    EXPECT_THAT(unit::Shown(files), ElementsAre("1 /elsewhere", "7 /volume1/a"));
    EXPECT_EQ(files.front().getHost(), "box");
}

TEST_F(Scan, FailsWithoutItsFirstList) {
    files = unit::Records({{"1", "/elsewhere"}});
    platform.failingAllocs = {1};
    EXPECT_EQ(Run(), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Out of Memory", kSource, 30));
    EXPECT_THAT(unit::Shown(files), ElementsAre("1 /elsewhere"));
    EXPECT_THAT(journal.CallsOf("KLIBCSzListAlloc"), ElementsAre("KLIBCSzListAlloc(512)"));
}

TEST_F(Scan, FailsWithoutItsSecondList) {
    files = unit::Records({{"1", "/elsewhere"}});
    platform.failingAllocs = {2};
    EXPECT_EQ(Run(), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Out of Memory", kSource, 39));
    EXPECT_THAT(unit::Shown(files), ElementsAre("1 /elsewhere"));
    EXPECT_THAT(journal.CallsOf("KLIBCSzListFree"), ::testing::Contains("KLIBCSzListFree(list 1)"));
    EXPECT_THAT(journal.CallsOf("KLIBCFileEnumDir"), IsEmpty());
}

TEST_F(Scan, FailsWhenProcCannotBeListed) {
    files = unit::Records({{"1", "/elsewhere"}});
    EXPECT_EQ(Run(), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Fail to enum /proc, vornerr=[0x%04X]", kSource, 48,
                       ScriptedPlatform::kEnumDirError));
    EXPECT_THAT(unit::Shown(files), ElementsAre("1 /elsewhere"));
}

TEST_F(Scan, FailsWhenAFullPathIsRefusedAndKeepsWhatItAppended) {
    AddProcess("7", {{"3", "/volume1/a"}, {"4", "/volume1/b"}, {"5", "/volume1/c"}});
    setters.Refuse("setFullPath", 2);
    EXPECT_EQ(Run(), -1);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 44,
                       "!path.empty()", 0));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to set full path of opened file", kSource, 92));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 44));
}

TEST_F(Scan, FailsWhenAPidIsRefusedAndKeepsWhatItAppended) {
    AddProcess("7", {{"3", "/volume1/a"}, {"4", "/volume1/b"}, {"5", "/volume1/c"}});
    setters.Refuse("setPid", 2);
    EXPECT_EQ(Run(), -1);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 32,
                       "!strPid.empty()", 0));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Faile to set PID of opened file", kSource, 96));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 32));
}

TEST_F(Scan, LetsTheRangeErrorOfABareVolumeNameOut) {
    AddProcess("7", {{"3", "/volume1/a"}, {"4", "/volume"}, {"5", "/volume1/c"}});
    EXPECT_THROW(Run(), std::out_of_range);
    EXPECT_THAT(unit::Shown(files), ElementsAre("7 /volume1/a"));
}
