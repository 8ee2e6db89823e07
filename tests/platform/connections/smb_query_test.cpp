// SPDX-License-Identifier: MIT
#include "platform/linux/connections/smb_query.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "tests/platform/support/log_capture.h"
#include "tests/platform/support/temp_folder.h"

namespace {

using namespace vornplatform;

/** What smbstatus prints for one session, in shell quotes. */
constexpr char kOneSession[] =
    R"('{"sessions": {"1": {"server_id": {"pid": "8661"}, "uid": 5001, "username": "alice"}}}')";

/** Asks a program that runs the given shell script in place of smbstatus. */
std::optional<SmbUsers> AskScript(const std::string& script,
                                  SmbQuestion question = SmbQuestion::kSessions) {
    const TempFolder folder;
    const std::string path = folder.Write("smbstatus", "#!/bin/sh\n" + script + "\n");
    EXPECT_EQ(chmod(path.c_str(), 0755), 0);
    return AskSmbStatus(question, path);
}

TEST(SmbQuery, ReadsWhatSmbstatusPrints) {
    EXPECT_EQ(AskScript(std::string("echo ") + kOneSession), (SmbUsers{{8661, {"alice"}}}));
}

TEST(SmbQuery, AsksForSessionsAlone) {
    const std::string script = R"([ "$*" = "--json --processes" ] && echo )";
    EXPECT_EQ(AskScript(script + kOneSession), (SmbUsers{{8661, {"alice"}}}));
}

TEST(SmbQuery, AsksForOpenFilesAsWell) {
    const std::string script = R"([ "$*" = "--json" ] && echo )";
    EXPECT_EQ(AskScript(script + kOneSession, SmbQuestion::kOpenFiles),
              (SmbUsers{{8661, {"alice"}}}));
}

TEST(SmbQuery, TakesNoEnvironmentAlong) {
    ASSERT_EQ(setenv("SMB_CONF_PATH", "/nowhere", 1), 0);
    const std::string script = R"([ -z "$SMB_CONF_PATH" ] && echo )";
    EXPECT_EQ(AskScript(script + kOneSession), (SmbUsers{{8661, {"alice"}}}));
    unsetenv("SMB_CONF_PATH");
}

TEST(SmbQuery, KnowsNothingFromAProgramThatFails) {
    const std::string rows[] = {
        "exec sleep 60",
        "echo garbage",
        "true",
        "exec cat /dev/zero",
        "yes '{\"sessions\":'",
        std::string("echo ") + kOneSession + "; exit 1",
        std::string("echo ") + kOneSession + "; kill -SEGV $$",
    };
    for (const std::string& row : rows) {
        LoggedLines().clear();
        EXPECT_FALSE(AskScript(row)) << row;
        EXPECT_EQ(LoggedLines().size(), 1U) << row;
    }
    LoggedLines().clear();
}

TEST(SmbQuery, KnowsNothingWithoutTheProgram) {
    const TempFolder folder;
    LoggedLines().clear();
    EXPECT_FALSE(AskSmbStatus(SmbQuestion::kSessions, folder.Path("smbstatus")));
    EXPECT_EQ(LoggedLines().size(), 1U);
    LoggedLines().clear();
}

}  // namespace
