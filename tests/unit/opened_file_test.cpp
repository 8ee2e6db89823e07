#include <json/json.h>

#include <clocale>
#include <type_traits>

#include "support/library_test.h"

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

/** A record whose column texts are their own names in upper case. */
OpenedFile FullRecord() {
    OpenedFile file;
    file.setServiceName("SERVICE");
    file.setPid("PID");
    file.setUser("USER");
    file.setHost("HOST");
    file.setPath("PATH");
    file.setFilename("FILENAME");
    file.setTime("TIME");
    file.setFullPath("FULLPATH");
    return file;
}

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

TEST_F(Record, MatchesTheColumnThatTheMemberSelects) {
    const std::pair<MEMBER, const char*> columns[] = {
        {MEMBER_SERVICE, "SERVICE"}, {MEMBER_PID, "PID"},   {MEMBER_USER, "USER"},
        {MEMBER_HOST, "HOST"},       {MEMBER_PATH, "PATH"}, {MEMBER_FILENAME, "FILENAME"},
        {MEMBER_TIME, "TIME"}};
    OpenedFile file = FullRecord();
    for (const auto& selected : columns) {
        for (const auto& column : columns) {
            EXPECT_EQ(file.isMatchSame(column.second, selected.first), column == selected);
        }
        EXPECT_FALSE(file.isMatchSame("FULLPATH", selected.first));
        EXPECT_TRUE(file.isMatchKeyword(selected.second, selected.first));
        EXPECT_FALSE(file.isMatchKeyword("FULLPATH", selected.first));
    }
}

TEST_F(Record, MatchesEveryColumnWithAnEmptyText) {
    OpenedFile full = FullRecord();
    OpenedFile empty;
    for (int member = MEMBER_SERVICE; member <= MEMBER_TIME; ++member) {
        EXPECT_TRUE(full.isMatchSame("", static_cast<MEMBER>(member)));
        EXPECT_TRUE(empty.isMatchSame("", static_cast<MEMBER>(member)));
        EXPECT_TRUE(full.isMatchKeyword("", static_cast<MEMBER>(member)));
        EXPECT_TRUE(empty.isMatchKeyword("", static_cast<MEMBER>(member)));
    }
}

TEST_F(Record, MatchesSameTextsByteForByte) {
    OpenedFile file;
    file.setPath("/Volume1/a");
    EXPECT_TRUE(file.isMatchSame("/Volume1/a", MEMBER_PATH));
    EXPECT_FALSE(file.isMatchSame("/volume1/a", MEMBER_PATH));
    EXPECT_FALSE(file.isMatchSame("/Volume1", MEMBER_PATH));
    EXPECT_FALSE(file.isMatchSame("/Volume1/a/", MEMBER_PATH));
}

TEST_F(Record, MatchesKeywordsAnywhereInAnyCase) {
    const struct {
        const char* column;
        const char* keyword;
        bool matches;
    } cases[] = {
        {"/Volume1/a", "VOL", true},
        {"/Volume1/a", "lume1/A", true},
        {"/Volume1/a", "/volume1/a", true},
        {"/Volume1/a", "/volume1/a/", false},
        {"/Volume1/a", "volume2", false},
        {"x", "X", true},
        {"\xc3\xa9t\xc3\xa9", "\xc3\xa9T", true},
        {"\xc3\x89", "\xc3\xa9", false},
    };
    for (const auto& test : cases) {
        OpenedFile file;
        file.setPath(test.column);
        EXPECT_EQ(file.isMatchKeyword(test.keyword, MEMBER_PATH), test.matches)
            << test.column << " " << test.keyword;
    }
}

TEST_F(Record, MatchesNoKeywordInAnEmptyColumn) {
    EXPECT_FALSE(OpenedFile().isMatchKeyword("a", MEMBER_HOST));
    EXPECT_FALSE(OpenedFile().isMatchSame("a", MEMBER_HOST));
}

TEST_F(Record, LeavesTheTextsOfAKeywordMatchAlone) {
    OpenedFile file;
    file.setHost("Box");
    EXPECT_TRUE(file.isMatchKeyword("box", MEMBER_HOST));
    EXPECT_EQ(file.getHost(), "Box");
}

TEST_F(Record, RendersAnEmptyRecord) {
    Json::Value out;
    OpenedFile().toJson(out);
    ASSERT_TRUE(out.isObject());
    EXPECT_EQ(out.size(), 7U);
    for (const char* key : {"service", "pid", "user", "host", "path", "filename"}) {
        EXPECT_EQ(out[key], Json::Value("")) << key;
    }
    EXPECT_TRUE(out["hidden"].type() == Json::intValue);
    EXPECT_EQ(out["hidden"].asInt(), 0);
}

TEST_F(Record, RendersEachColumnUnderItsName) {
    OpenedFile file = FullRecord();
    file.setPid("1234");
    file.setIsHidden();
    file.setIsFolder();
    Json::Value out;
    file.toJson(out);
    Json::Value expected;
    expected["service"] = "SERVICE";
    expected["pid"] = "1234";
    expected["user"] = "USER";
    expected["host"] = "HOST";
    expected["path"] = "PATH";
    expected["filename"] = "FILENAME";
    expected["hidden"] = 1;
    EXPECT_EQ(out, expected);
    EXPECT_TRUE(out["pid"].isString());
    EXPECT_TRUE(out["hidden"].type() == Json::intValue);
}

TEST_F(Record, RendersTheTimeApart) {
    OpenedFile file;
    Json::Value out;
    file.timeToJson(out);
    EXPECT_EQ(out["time"], Json::Value(""));
    file.setTime("2024/03/07 14:05:09");
    file.timeToJson(out);
    EXPECT_EQ(out["time"], Json::Value("2024/03/07 14:05:09"));
    EXPECT_EQ(out.size(), 1U);
}

TEST_F(Record, LeavesOtherMembersOfTheJsonObject) {
    OpenedFile file = FullRecord();
    Json::Value out;
    out["mine"] = 7;
    out["pid"] = "old";
    file.toJson(out);
    file.timeToJson(out);
    EXPECT_EQ(out["mine"].asInt(), 7);
    EXPECT_EQ(out["pid"].asString(), "PID");
    EXPECT_EQ(out["time"].asString(), "TIME");
    EXPECT_EQ(out.size(), 9U);
}

TEST_F(Record, TellsValidNumbers) {
    const struct {
        const char* text;
        bool valid;
    } cases[] = {
        {"", false},
        {"0", true},
        {"0042", true},
        {"1234", true},
        {"2147483647", true},
        {"2147483648", false},
        {"99999999999", false},
        {"-1", false},
        {"+1", false},
        {" 1", false},
        {"1 ", false},
        {"12a", false},
        {"a", false},
        {"1.5", false},
        {"0x10", false},
        {"00000000002147483647", true},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(IsValidNumber(test.text), test.valid) << "\"" << test.text << "\"";
    }
    EXPECT_FALSE(IsValidNumber(std::string("1\0002", 3)));
}
