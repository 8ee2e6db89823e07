// SPDX-License-Identifier: MIT
#include <cerrno>

#include "tests/unit/support/pipeline_test.h"

using namespace VORN::FileHandle;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using unit::ScriptedPlatform;

using Pipeline = unit::PipelineTest;

namespace {

const char* const kSource = "filehandle_enum";

}  // namespace

TEST_F(Pipeline, FillsEveryColumnAndFlag) {
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(PidsAndPaths(),
                ElementsAre("10 docs/dir", "9 photo/@tmp/a", "10 photo/b", "9 photo/b"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getFilename), ElementsAre("dir", "a", "b", "b"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getService),
                ElementsAre("Cron", "SMB", "Cron", "SMB"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getHost),
                ElementsAre("-", "10.0.0.5", "-", "10.0.0.5"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getUser), ElementsAre("-", "ann", "-", "ann"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getTime), ElementsAre("", "", "", ""));
    std::string flags;
    for (OpenedFile& file : files) {
        flags += file.isHidden() ? 'h' : '-';
        flags += file.isFolder() ? 'f' : '-';
    }
    EXPECT_EQ(flags, "-fh-----");
}

TEST_F(Pipeline, KeepsVolumePathsWholeWhenAskedFor) {
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_VOLUME), 0);
    EXPECT_THAT(PidsAndPaths(),
                ElementsAre("9 /volume1/photo/@tmp/a", "10 /volume1/photo/b", "9 /volume1/photo/b",
                            "9 /volume1/x/y", "10 /volume2/docs/dir"));
}

TEST_F(Pipeline, RunsTheStagesInOrder) {
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(StagesRun(),
                ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle", "VORNCurConnGet",
                            "VORNEAHiddenDirGet", "KLIBCFileCheckDir"));
    EXPECT_THAT(journal.CallsOf({"stat", "strftime", "setresuid", "setresgid"}), IsEmpty());
}

TEST_F(Pipeline, LabelsWhatIsSortedAndFreeOfDuplicates) {
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(
        journal.CallsOf("KLIBCFileCheckDir"),
        ElementsAre("KLIBCFileCheckDir(/volume2/docs/dir)",
                    "KLIBCFileCheckDir(/volume1/photo/@tmp/a)",
                    "KLIBCFileCheckDir(/volume1/photo/b)", "KLIBCFileCheckDir(/volume1/photo/b)"));
}

TEST_F(Pipeline, KeepsDuplicatesThatAnotherFullPathSortsBetween) {
    platform.shares = {{"photo", "/volume1/photo"}, {"photo_2", "/volume2/photo"}};
    platform.directories.clear();
    AddProcess("9", "smb.slice", "SMB",
               {"/volume1/photo/a", "/volume2/photo/a", "/volume1/photo/a"});
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(unit::Shown(files),
                ElementsAre("9 /volume1/photo/a", "9 /volume2/photo/a", "9 /volume1/photo/a"));
}

TEST_F(Pipeline, TakesOldRecordsThroughEveryStage) {
    files =
        unit::Records({{"9", "/volume1/photo/b"}, {"9", "/elsewhere"}, {"9", "/volume2/docs/z"}});
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(PidsAndPaths(), ElementsAre("10 docs/dir", "9 docs/z", "9 photo/@tmp/a",
                                            "10 photo/b", "9 photo/b"));
    EXPECT_EQ(std::next(files.begin())->getService(), "SMB");
    EXPECT_EQ(std::next(files.begin())->getHost(), "10.0.0.5");
}

TEST_F(Pipeline, AttributesAReusedPidToItsNewProcess) {
    journal.onCall = [this](const std::string& call) {
        if (call.rfind("VORNShareEnum(", 0) == 0) {
            libc.controlGroups["9"] = libc.controlGroups["10"];
            platform.connections = {{9, "10.0.0.6", "bob", 1}};
        }
    };
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    OpenedFile& file = files.back();
    EXPECT_EQ(file.getPidStr() + " " + file.getFullPath(), "9 /volume1/photo/b");
    EXPECT_EQ(file.getService() + " " + file.getHost() + " " + file.getUser(), "Cron 10.0.0.6 bob");
}

TEST_F(Pipeline, FindsNothingOnAHostWithoutOpenFiles) {
    platform.directories = {{"/proc", {}}};
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), 0);
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(StagesRun(), ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle",
                                         "VORNCurConnGet", "VORNEAHiddenDirGet"));
}

TEST_F(Pipeline, StopsAtAFailedScan) {
    setters.Refuse("setPid", 3);
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 32,
                       "!strPid.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 32));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Faile to set PID of opened file",
                       "filehandle_get_proc_opened_file", 96));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to get proc opened file for file handle", kSource, 24));
    EXPECT_THAT(unit::Shown(files), ElementsAre("9 /volume1/photo/b", "9 /volume1/photo/@tmp/a"));
    EXPECT_THAT(StagesRun(), ElementsAre("KLIBCFileEnumDir"));
}

TEST_F(Pipeline, StopsAtAFailedFilter) {
    platform.failingShares = {"docs"};
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share path of share [%s]",
                       "filehandle_filter_path", 82, "docs"));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get share path list, vornerr=[0x%04X]",
                       "filehandle_filter_path", 139, ScriptedPlatform::kShareGetError));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to filter path for file handle", kSource, 29));
    EXPECT_THAT(unit::Shown(files), ElementsAreArray(Scanned()));
    EXPECT_THAT(StagesRun(), ElementsAre("KLIBCFileEnumDir", "VORNShareEnum"));
}

TEST_F(Pipeline, StopsAtAnOptionThatTheFilterRejects) {
    for (int enumby : {2, -1}) {
        files.clear();
        EXPECT_EQ(EnumOpenedFile(files, enumby), -1);
        EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to filter path. wrong [enumby] option",
                           "filehandle_filter_path", 148));
        EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to filter path for file handle", kSource, 29));
        EXPECT_THAT(unit::Shown(files), ElementsAreArray(Scanned()));
    }
}

TEST_F(Pipeline, StopsAtAFailedServiceAttribution) {
    setters.Refuse("setServiceName", 2);
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Invaild Argument (%s)=[%d]\n", "filehandle_opened_file", 56,
                       "!serviceName.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, "filehandle_opened_file", 56));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to set service name for opened file",
                       "filehandle_get_service_name", 277));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get service name for file handle", kSource, 34));
    EXPECT_THAT(PidsAndPaths(), ElementsAre("9 photo/b", "9 photo/@tmp/a", "9 photo/b",
                                            "10 photo/b", "10 docs/dir"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getService), ElementsAre("SMB", "", "", "", ""));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getHost), ElementsAre("", "", "", "", ""));
    EXPECT_THAT(StagesRun(), ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle"));
}

TEST_F(Pipeline, StopsAtFailedConnectionDetails) {
    platform.connectionResult = -1;
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get current connection info",
                       "filehandle_get_connnection_info", 178));
    EXPECT_TRUE(
        Logged(LOG_ERR, "%s:%d Failed to update connection info for file handle", kSource, 39));
    EXPECT_THAT(PidsAndPaths(), ElementsAre("9 photo/b", "9 photo/@tmp/a", "9 photo/b",
                                            "10 photo/b", "10 docs/dir"));
    EXPECT_THAT(unit::Column(files, &OpenedFile::getService),
                ElementsAre("SMB", "SMB", "SMB", "Cron", "Cron"));
    EXPECT_THAT(StagesRun(),
                ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle", "VORNCurConnGet"));
}

TEST_F(Pipeline, StopsAtAFailedHiddenLabel) {
    platform.hiddenResult = -1;
    EXPECT_EQ(EnumOpenedFile(files, ENUM_BY_SHARE), -1);
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to get hidden dir", "filehandle_label_hidden", 31));
    EXPECT_TRUE(Logged(LOG_ERR, "%s:%d Failed to label hidden for file handle", kSource, 51));
    EXPECT_THAT(PidsAndPaths(),
                ElementsAre("10 docs/dir", "9 photo/@tmp/a", "10 photo/b", "9 photo/b"));
    EXPECT_THAT(StagesRun(), ElementsAre("KLIBCFileEnumDir", "VORNShareEnum", "StringBundle",
                                         "VORNCurConnGet", "VORNEAHiddenDirGet"));
}
