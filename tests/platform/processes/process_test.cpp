// SPDX-License-Identifier: MIT
#include "vorn/platform/process.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <memory>

#include "tests/platform/support/child.h"
#include "tests/platform/support/private_root.h"
#include "tests/platform/support/serving.h"
#include "vorn/platform/error.h"

namespace {

using Process = std::unique_ptr<KLIBC_PROC, decltype(&KLIBCProcFree)>;

Process LookUp(pid_t pid) {
    KLIBC_PROC* process = nullptr;
    EXPECT_EQ(KLIBCProcGetByPid(pid, &process), 0);
    return {process, KLIBCProcFree};
}

TEST(Process, KnowsItsParent) {
    const Process process = LookUp(getpid());
    ASSERT_TRUE(process);
    EXPECT_EQ(process->ppid, getppid());
}

TEST(Process, KnowsItsParentWhateverItsName) {
    for (const char* name : {"a b", ") S 1 (", "a) b (c", "x\n1 (y) S 1", ")", ""}) {
        const Child child([name] { prctl(PR_SET_NAME, name); });
        const Process process = LookUp(child.Pid());
        ASSERT_TRUE(process) << name;
        EXPECT_EQ(process->ppid, getpid()) << name;
    }
}

TEST(Process, HasNoParentWhenItIsTheFirst) {
    const Process process = LookUp(1);
    ASSERT_TRUE(process);
    EXPECT_EQ(process->ppid, 0);
}

TEST(Process, IsNotFoundOnceItHasGone) {
    pid_t gone;
    {
        const Child child([] {});
        gone = child.Pid();
    }
    KLIBC_PROC* process = nullptr;
    EXPECT_LT(KLIBCProcGetByPid(gone, &process), 0);
    EXPECT_EQ(process, nullptr);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_NOT_FOUND);
}

TEST(Process, IsNotFoundWhereThisCallerMayNotSeeIt) {
    SKIP_WITHOUT_MOUNTS();
    for (const char* option : {"hidepid=1", "hidepid=2"}) {
        InPrivateRoot([option] {
            ASSERT_EQ(mount("proc", "/proc", "proc", 0, option), 0) << option;
            // Group 0 may see all processes, unless the mount says otherwise.
            ASSERT_EQ(setgroups(0, nullptr), 0);
            ASSERT_EQ(setresgid(kNobody, kNobody, kNobody), 0);
            ASSERT_EQ(setresuid(kNobody, kNobody, kNobody), 0);
            KLIBC_PROC* process = nullptr;
            EXPECT_LT(KLIBCProcGetByPid(1, &process), 0) << option;
            EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_NOT_FOUND) << option;
        });
    }
}

TEST(Process, IsRefusedByAnImpossibleId) {
    for (const int pid : {0, -1, INT_MIN}) {
        KLIBCErrSetEx(0, "", 0);
        KLIBC_PROC* process = nullptr;
        EXPECT_LT(KLIBCProcGetByPid(pid, &process), 0) << pid;
        EXPECT_EQ(process, nullptr) << pid;
        EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM) << pid;
    }
}

TEST(Process, IsRefusedWithoutAPlaceForTheRecord) {
    EXPECT_LT(KLIBCProcGetByPid(getpid(), nullptr), 0);
    EXPECT_EQ(KLIBCErrGet(), KLIBC_ERR_BAD_PARAM);
}

TEST(Process, MayBeNullWhenFreed) {
    KLIBCProcFree(nullptr);
    SUCCEED();
}

}  // namespace
