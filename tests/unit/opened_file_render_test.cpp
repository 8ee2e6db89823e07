// SPDX-License-Identifier: MIT
#include <json/json.h>

#include <clocale>
#include <cstdlib>

#include "tests/platform/support/temp_folder.h"
#include "tests/unit/support/full_record.h"
#include "tests/unit/support/library_test.h"

using namespace VORN::FileHandle;

using RecordMatch = unit::LibraryTest;
using RecordJson = unit::LibraryTest;

TEST_F(RecordMatch, MatchesTheColumnThatTheMemberSelects) {
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

TEST_F(RecordMatch, MatchesEveryColumnWithAnEmptyText) {
    OpenedFile full = FullRecord();
    OpenedFile empty;
    for (int member = MEMBER_SERVICE; member <= MEMBER_TIME; ++member) {
        EXPECT_TRUE(full.isMatchSame("", static_cast<MEMBER>(member)));
        EXPECT_TRUE(empty.isMatchSame("", static_cast<MEMBER>(member)));
        EXPECT_TRUE(full.isMatchKeyword("", static_cast<MEMBER>(member)));
        EXPECT_TRUE(empty.isMatchKeyword("", static_cast<MEMBER>(member)));
    }
}

TEST_F(RecordMatch, MatchesSameTextsByteForByte) {
    OpenedFile file;
    file.setPath("/Volume1/a");
    EXPECT_TRUE(file.isMatchSame("/Volume1/a", MEMBER_PATH));
    EXPECT_FALSE(file.isMatchSame("/volume1/a", MEMBER_PATH));
    EXPECT_FALSE(file.isMatchSame("/Volume1", MEMBER_PATH));
    EXPECT_FALSE(file.isMatchSame("/Volume1/a/", MEMBER_PATH));
}

TEST_F(RecordMatch, MatchesKeywordsAnywhereInAnyCase) {
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

TEST_F(RecordMatch, MatchesNoKeywordInAnEmptyColumn) {
    EXPECT_FALSE(OpenedFile().isMatchKeyword("a", MEMBER_HOST));
    EXPECT_FALSE(OpenedFile().isMatchSame("a", MEMBER_HOST));
}

TEST_F(RecordMatch, LeavesTheTextsOfAKeywordMatchAlone) {
    OpenedFile file;
    file.setHost("Box");
    EXPECT_TRUE(file.isMatchKeyword("box", MEMBER_HOST));
    EXPECT_EQ(file.getHost(), "Box");
}

TEST_F(RecordMatch, FollowsTheCLocaleForSingleBytes) {
    const TempFolder folder;
    const std::string command = "localedef --no-archive --inputfile=en_US --charmap=ISO-8859-1 " +
                                folder.Path("latin1") + " 2>&1";
    if (std::system(command.c_str()) != 0) {
        GTEST_SKIP() << "needs localedef and its sources (package locales)";
    }
    OpenedFile file;
    file.setPath("caf\xc9");
    EXPECT_FALSE(file.isMatchKeyword("\xe9", MEMBER_PATH));

    setenv("LOCPATH", folder.Path().c_str(), 1);
    ASSERT_STREQ(std::setlocale(LC_CTYPE, "latin1"), "latin1");
    EXPECT_TRUE(file.isMatchKeyword("\xe9", MEMBER_PATH));
    std::setlocale(LC_CTYPE, "C");
    unsetenv("LOCPATH");
    EXPECT_FALSE(file.isMatchKeyword("\xe9", MEMBER_PATH));
}

TEST_F(RecordJson, RendersAnEmptyRecord) {
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

TEST_F(RecordJson, RendersEachColumnUnderItsName) {
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

TEST_F(RecordJson, RendersTheTimeApart) {
    OpenedFile file;
    Json::Value out;
    file.timeToJson(out);
    EXPECT_EQ(out["time"], Json::Value(""));
    file.setTime("2024/03/07 14:05:09");
    file.timeToJson(out);
    EXPECT_EQ(out["time"], Json::Value("2024/03/07 14:05:09"));
    EXPECT_EQ(out.size(), 1U);
}

TEST_F(RecordJson, LeavesOtherMembersOfTheJsonObject) {
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
