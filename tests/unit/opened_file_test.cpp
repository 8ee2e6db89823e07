// SPDX-License-Identifier: MIT
#include <type_traits>

#include "tests/unit/support/full_record.h"
#include "tests/unit/support/library_test.h"

using namespace VORN::FileHandle;

namespace {

const char* const kSource = "filehandle_opened_file";
const char* const kRefusal = "%s:%d Invaild Argument (%s)=[%d]\n";

using Setter = int (OpenedFile::*)(const std::string&);
using Getter = std::string (OpenedFile::*)();

struct Field {
    const char* name;
    Setter set;
    Getter get;
    const char* condition;
    int line;
};

void PrintTo(const Field& field, std::ostream* out) {
    *out << field.name;
}

const Field kFields[] = {
    {"Pid", &OpenedFile::setPid, &OpenedFile::getPidStr, "!strPid.empty()", 32},
    {"FullPath", &OpenedFile::setFullPath, &OpenedFile::getFullPath, "!path.empty()", 44},
    {"Path", &OpenedFile::setPath, &OpenedFile::getPath, "!path.empty()", 50},
    {"Service", &OpenedFile::setServiceName, &OpenedFile::getService, "!serviceName.empty()", 56},
    {"Host", &OpenedFile::setHost, &OpenedFile::getHost, "!host.empty()", 62},
    {"User", &OpenedFile::setUser, &OpenedFile::getUser, "!user.empty()", 68},
    {"Filename", &OpenedFile::setFilename, &OpenedFile::getFilename, "!filename.empty()", 74},
    {"Time", &OpenedFile::setTime, &OpenedFile::getTime, "!strTime.empty()", 80},
};

}  // namespace

using Record = unit::LibraryTest;

class RecordField : public unit::LibraryTest, public ::testing::WithParamInterface<Field> {};

INSTANTIATE_TEST_SUITE_P(Each, RecordField, ::testing::ValuesIn(kFields),
                         [](const auto& field) { return field.param.name; });

TEST_P(RecordField, IsEmptyAtFirst) {
    EXPECT_EQ((OpenedFile().*GetParam().get)(), "");
}

TEST_P(RecordField, KeepsWhatItIsGivenAndNothingElse) {
    OpenedFile file;
    EXPECT_EQ((file.*GetParam().set)("a b\n\xff"), 0);
    for (const Field& field : kFields) {
        EXPECT_EQ((file.*field.get)(), field.name == GetParam().name ? "a b\n\xff" : "");
    }
    EXPECT_FALSE(file.isHidden());
    EXPECT_FALSE(file.isFolder());
}

TEST_P(RecordField, TakesAnotherTextInPlaceOfTheFirst) {
    OpenedFile file;
    EXPECT_EQ((file.*GetParam().set)("first"), 0);
    EXPECT_EQ((file.*GetParam().set)("2nd"), 0);
    EXPECT_EQ((file.*GetParam().get)(), "2nd");
}

TEST_P(RecordField, RefusesAnEmptyTextAndKeepsTheOldOne) {
    OpenedFile file;
    (file.*GetParam().set)("old");
    EXPECT_EQ((file.*GetParam().set)(""), -1);
    EXPECT_EQ((file.*GetParam().get)(), "old");
    EXPECT_TRUE(Logged(LOG_ERR, kRefusal, kSource, GetParam().line, GetParam().condition, 0));
    EXPECT_TRUE(ErrorSet(0x0D00, kSource, GetParam().line));
}

TEST_F(Record, HasNoFlagAtFirst) {
    EXPECT_FALSE(OpenedFile().isHidden());
    EXPECT_FALSE(OpenedFile().isFolder());
}

TEST_F(Record, KeepsTheHiddenFlagOnceRaised) {
    OpenedFile file;
    file.setIsHidden();
    file.setIsHidden();
    EXPECT_TRUE(file.isHidden());
    EXPECT_FALSE(file.isFolder());
}

TEST_F(Record, KeepsTheFolderFlagOnceRaised) {
    OpenedFile file;
    file.setIsFolder();
    file.setIsFolder();
    EXPECT_TRUE(file.isFolder());
    EXPECT_FALSE(file.isHidden());
}

TEST_F(Record, IsAPlainValue) {
    EXPECT_TRUE(std::is_copy_constructible<OpenedFile>::value);
    EXPECT_TRUE(std::is_copy_assignable<OpenedFile>::value);
    EXPECT_FALSE(std::is_polymorphic<OpenedFile>::value);
    OpenedFile file = FullRecord();
    file.setIsHidden();
    OpenedFile copy = file;
    copy.setPid("other");
    EXPECT_EQ(file.getPidStr(), "PID");
    EXPECT_EQ(copy.getFullPath(), "FULLPATH");
    EXPECT_TRUE(copy.isHidden());
}

TEST_F(Record, TakesAnyPidTextUnchecked) {
    OpenedFile file;
    EXPECT_EQ(file.setPid("abc"), 0);
    EXPECT_EQ(file.getPidStr(), "abc");
}

TEST_F(Record, RefusesAnEmptyCheckedPidBeforeItLooksAtTheNumber) {
    OpenedFile file;
    file.setPid("1");
    EXPECT_EQ(file.setAndCheckPid(""), -1);
    EXPECT_EQ(file.getPidStr(), "1");
    EXPECT_TRUE(Logged(LOG_ERR, kRefusal, kSource, 38, "!strPid.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, kSource, 38));
}

TEST_F(Record, RefusesCheckedPidsThatAreNoNumber) {
    for (const char* text : {"12a", "99999999999", "-1", " 1", "2147483648"}) {
        SCOPED_TRACE(text);
        OpenedFile file;
        file.setPid("1");
        EXPECT_EQ(file.setAndCheckPid(text), -1);
        EXPECT_EQ(file.getPidStr(), "1");
        EXPECT_TRUE(Logged(LOG_ERR, kRefusal, kSource, 39, "IsValidNumber(strPid)", 0));
        EXPECT_TRUE(ErrorSet(0x0D00, kSource, 39));
    }
}

TEST_F(Record, TakesCheckedPidsUnchanged) {
    for (const char* text : {"0042", "0", "1234", "2147483647"}) {
        OpenedFile file;
        EXPECT_EQ(file.setAndCheckPid(text), 0) << text;
        EXPECT_EQ(file.getPidStr(), text);
    }
}

TEST_F(Record, LogsARefusalBeforeItSetsTheErrorCode) {
    size_t linesBefore = 0;
    journal.onCall = [&](const std::string&) { linesBefore = libc.logLines.size(); };
    EXPECT_EQ(OpenedFile().setPid(""), -1);
    EXPECT_EQ(linesBefore, 1U);
    EXPECT_TRUE(Logged(LOG_ERR, kRefusal, kSource, 32, "!strPid.empty()", 0));
    EXPECT_TRUE(ErrorSet(0x0D00, kSource, 32));
}

TEST_F(Record, NumbersTheColumns) {
    EXPECT_EQ(MEMBER_SERVICE, 0);
    EXPECT_EQ(MEMBER_PID, 1);
    EXPECT_EQ(MEMBER_USER, 2);
    EXPECT_EQ(MEMBER_HOST, 3);
    EXPECT_EQ(MEMBER_PATH, 4);
    EXPECT_EQ(MEMBER_FILENAME, 5);
    EXPECT_EQ(MEMBER_TIME, 6);
}

TEST_F(Record, NamesEachColumnButTheTime) {
    const std::map<int, std::string> names = {{0, "service"}, {1, "pid"},  {2, "user"},
                                              {3, "host"},    {4, "path"}, {5, "filename"}};
    EXPECT_EQ(OpenedFile::mapJsonColumn, names);
}
