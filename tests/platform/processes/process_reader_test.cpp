// SPDX-License-Identifier: MIT
#include "platform/linux/processes/process_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/linux/support/host_error.h"
#include "tests/platform/support/child.h"
#include "tests/platform/support/scripted_calls.h"

namespace {

using namespace vornplatform;

TEST(ProcessReader, ListsTheProcessesInTheirOrder) {
    const Child child([] {});
    const std::vector<pid_t> processes = ListProcesses();
    EXPECT_THAT(processes, testing::IsSupersetOf({1, getpid(), child.Pid()}));
    EXPECT_TRUE(std::is_sorted(processes.begin(), processes.end()));
}

TEST(ProcessReader, FailsWhereTheProcessesCannotBeListedToTheEnd) {
    const CallScript script;
    Calls().getdents64.failFrom = 2;
    Calls().getdents64.error = EIO;
    try {
        ListProcesses();
        FAIL() << "took the error for the end";
    } catch (const HostError& error) {
        EXPECT_EQ(error.Error(), EIO);
    }
}

TEST(ProcessReader, FindsNothingOfAProcessThatHasGone) {
    pid_t gone = 0;
    {
        const Child child([] {});
        gone = child.Pid();
        EXPECT_TRUE(ReadProcessStat(gone));
        EXPECT_TRUE(ReadProcessUsers(gone));
    }
    EXPECT_FALSE(ReadProcessStat(gone));
    EXPECT_FALSE(ReadProcessUsers(gone));
    EXPECT_FALSE(ReadSessionId(gone));
    EXPECT_FALSE(ReadLoginUid(gone));
    EXPECT_TRUE(ReadChildren(gone).empty());
    EXPECT_FALSE(ReadProgram(gone));
    EXPECT_FALSE(RunsSetUserId(gone));
}

}  // namespace
