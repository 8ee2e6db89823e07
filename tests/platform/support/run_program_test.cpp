// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include "platform/linux/support/host_error.h"
#include "platform/linux/support/run_program.h"
#include "support/descriptor.h"
#include "tests/platform/support/scripted_calls.h"

namespace {

using vornplatform::ProgramEnd;
using vornplatform::ProgramLimits;
using vornplatform::ProgramResult;

constexpr ProgramLimits kRoomy = {std::chrono::seconds(60), 1000000};

ProgramResult Shell(const std::string& script, const ProgramLimits& limits = kRoomy) {
    return vornplatform::RunProgram({"/bin/sh", "-c", script}, limits);
}

void ExpectNoChildLeft() {
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

struct Identity {
    id_t real;
    id_t effective;
    id_t saved;
};

/** What a program sees of itself whose host thread has these ids, as users and as groups. */
std::string IdentitySeen(const Identity& host) {
    std::string output;
    // Raw calls change the one thread alone, and with it their change ends.
    std::thread([&] {
        EXPECT_EQ(syscall(SYS_setresgid, host.real, host.effective, host.saved), 0);
        EXPECT_EQ(syscall(SYS_setresuid, host.real, host.effective, host.saved), 0);
        output =
            vornplatform::RunProgram({"/bin/grep", "^[UG]id:", "/proc/self/status"}, kRoomy).output;
    }).join();
    return output;
}

}  // namespace

TEST(RunProgram, GivesOneIdentity) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root to take other ids";
    }
    const std::string root = "Uid:\t0\t0\t0\t0\nGid:\t0\t0\t0\t0\n";
    const std::string user = "Uid:\t1000\t1000\t1000\t1000\nGid:\t1000\t1000\t1000\t1000\n";
    const struct {
        Identity host;
        const std::string& seen;
    } rows[] = {
        {{0, 0, 0}, root},          {{1000, 0, 0}, root},    {{1000, 0, 1000}, root},
        {{1000, 1000, 1000}, user}, {{1000, 1000, 0}, user}, {{0, 1000, 0}, user},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(IdentitySeen(row.host), row.seen)
            << row.host.real << ' ' << row.host.effective << ' ' << row.host.saved;
    }
}

TEST(RunProgram, ReturnsOutputAndStatus) {
    const struct {
        const char* script;
        ProgramEnd end;
        int status;
        bool succeeded;
        const char* output;
    } rows[] = {
        {"echo out; echo err >&2", ProgramEnd::kExited, 0, true, "out\n"},
        {"printf part; exit 3", ProgramEnd::kExited, 3, false, "part"},
        {"kill -TERM $$", ProgramEnd::kSignalled, SIGTERM, false, ""},
        {"cat; pwd", ProgramEnd::kExited, 0, true, "/\n"},
        {"exec >&-; exit 4", ProgramEnd::kExited, 4, false, ""},
    };
    for (const auto& row : rows) {
        const ProgramResult result = Shell(row.script);
        EXPECT_EQ(result.end, row.end) << row.script;
        EXPECT_EQ(result.status, row.status) << row.script;
        EXPECT_EQ(result.Succeeded(), row.succeeded) << row.script;
        EXPECT_EQ(result.output, row.output) << row.script;
        ExpectNoChildLeft();
    }
}

TEST(RunProgram, GivesAnEnvironmentOfItsOwn) {
    ASSERT_EQ(setenv("VORN_TEST_SECRET", "x", 1), 0);
    EXPECT_EQ(vornplatform::RunProgram({"/usr/bin/env"}, kRoomy).output, "LC_ALL=C\n");
}

TEST(RunProgram, PassesNoOtherDescriptor) {
    const int open = dup2(1, 77);
    ASSERT_EQ(open, 77);
    EXPECT_EQ(Shell("[ -e /proc/self/fd/77 ] || echo closed").output, "closed\n");
    close(open);
}

TEST(RunProgram, PassesThreeDescriptorsWithNothingToRead) {
    const int open = dup2(1, 78);
    ASSERT_EQ(open, 78);
    EXPECT_EQ(Shell("ls /proc/$$/fd; readlink /proc/$$/fd/0 /proc/$$/fd/2").output,
              "0\n1\n2\n/dev/null\n/dev/null\n");
    close(open);
}

TEST(RunProgram, NeedsNoShellAndLooksNothingUp) {
    const char hostile[] = "$(id); `id` | id > /tmp/x & * \\ \"'";
    EXPECT_EQ(vornplatform::RunProgram({"/usr/bin/printf", "%s", hostile}, kRoomy).output, hostile);
    const ProgramResult result = vornplatform::RunProgram({"printf", "x"}, kRoomy);
    EXPECT_EQ(result.end, ProgramEnd::kNotStarted);
    EXPECT_EQ(result.status, ENOENT);
}

TEST(RunProgram, StopsAtTheTimeLimitAlsoWhatTheProgramStarted) {
    const ProgramResult result =
        Shell("echo begun; sleep 1000 & sleep 1000", {std::chrono::milliseconds(300), 100});
    EXPECT_EQ(result.end, ProgramEnd::kTimeLimit);
    EXPECT_EQ(result.output, "begun\n");
    EXPECT_FALSE(result.Succeeded());
    ExpectNoChildLeft();
}

TEST(RunProgram, StopsAtTheOutputLimit) {
    const ProgramResult endless = Shell("yes", {std::chrono::seconds(60), 1001});
    EXPECT_EQ(endless.end, ProgramEnd::kOutputLimit);
    EXPECT_EQ(endless.output.size(), 1001U);
    EXPECT_EQ(Shell("printf 1234", {std::chrono::seconds(60), 4}).end, ProgramEnd::kExited);
    EXPECT_EQ(Shell("printf 12345", {std::chrono::seconds(60), 4}).end, ProgramEnd::kOutputLimit);
    ExpectNoChildLeft();
}

TEST(RunProgram, WaitsForNoGrandchildThatHoldsThePipe) {
    const ProgramResult result = Shell("sleep 1000 & echo $!");
    EXPECT_EQ(result.end, ProgramEnd::kExited);
    const pid_t grandchild = std::stoi(result.output);
    const support::Descriptor watched(static_cast<int>(syscall(SYS_pidfd_open, grandchild, 0)));
    if (!watched) {
        return;  // killed with the group, and collected already
    }
    pollfd end = {watched.Get(), POLLIN, 0};
    EXPECT_EQ(poll(&end, 1, 60000), 1);
}

TEST(RunProgram, SleepsUntilTheProgramDoesSomething) {
    const CallScript script;
    EXPECT_EQ(Shell("sleep 0.3; echo once; exec >&-; sleep 0.3; exit 3").status, 3);
    // A word, the end of the output, the end of the program; and whatever else may be split.
    EXPECT_LE(Calls().poll.calls, 6);
}

TEST(RunProgram, NeedsNoPidDescriptor) {
    for (const int error : {0, EINVAL, EPERM, ENOSYS}) {
        const CallScript script;
        Calls().clone = {CLONE_PIDFD, error};
        const ProgramResult result = Shell("sleep 1000 & echo out; exit 3");
        EXPECT_EQ(result.end, ProgramEnd::kExited) << error;
        EXPECT_EQ(result.status, 3) << error;
        EXPECT_EQ(result.output, "out\n") << error;
        const ProgramResult slow = Shell("exec sleep 1000", {std::chrono::milliseconds(100), 100});
        EXPECT_EQ(slow.end, ProgramEnd::kTimeLimit) << error;
        ExpectNoChildLeft();
    }
}

TEST(RunProgram, ThrowsAShortageOfDescriptors) {
    const CallScript script;
    Calls().clone = {CLONE_PIDFD, EMFILE};
    try {
        Shell("true");
        FAIL() << "took a shortage for an answer";
    } catch (const vornplatform::HostError& error) {
        EXPECT_EQ(error.Error(), EMFILE);
    }
    ExpectNoChildLeft();
}

TEST(RunProgram, LeavesNoProgramThatItCannotWaitFor) {
    const CallScript script;
    Calls().poll.error = ENOMEM;
    EXPECT_THROW(Shell("exec sleep 1000"), vornplatform::HostError);
    ExpectNoChildLeft();
}

TEST(RunProgram, GoesOnAfterASignal) {
    const CallScript script;
    Calls().poll.error = EINTR;
    EXPECT_EQ(Shell("sleep 0.1; echo out").output, "out\n");
    EXPECT_GE(Calls().poll.calls, 2);
}

TEST(RunProgram, LeavesNoDescriptorOpen) {
    const auto count = [] {
        const std::filesystem::directory_iterator folder("/proc/self/fd");
        return std::distance(begin(folder), end(folder));
    };
    const auto before = count();
    Shell("true");
    vornplatform::RunProgram({"/nowhere/program"}, kRoomy);
    Shell("exec sleep 1000", {std::chrono::milliseconds(10), 100});
    EXPECT_EQ(count(), before);
}

TEST(RunProgram, KnowsNoStatusThatAnotherThreadHasCollected) {
    // Whoever comes first collects: tried until it is the other thread.
    bool collected = false;
    for (int i = 0; i < 1000 && !collected; ++i) {
        std::atomic<bool> over = false;
        std::thread collector([&] {
            while (!over && !collected) {
                collected = waitpid(-1, nullptr, WNOHANG) > 0;
            }
        });
        const ProgramResult result = Shell("echo out; exit 3");
        over = true;
        collector.join();
        EXPECT_EQ(result.end, collected ? ProgramEnd::kUnknown : ProgramEnd::kExited);
        EXPECT_EQ(result.output, "out\n");
    }
    EXPECT_TRUE(collected);
}

TEST(RunProgram, SaysThatAProgramIsMissing) {
    const ProgramResult result = vornplatform::RunProgram({"/nowhere/program"}, kRoomy);
    EXPECT_EQ(result.end, ProgramEnd::kNotStarted);
    EXPECT_EQ(result.status, ENOENT);
    EXPECT_FALSE(result.Succeeded());
    ExpectNoChildLeft();
}

TEST(RunProgram, WorksInAHostThatIgnoresItsChildren) {
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    struct sigaction unwaited = {};
    unwaited.sa_handler = SIG_DFL;
    unwaited.sa_flags = SA_NOCLDWAIT;
    for (const struct sigaction& host : {ignored, unwaited}) {
        struct sigaction before;
        ASSERT_EQ(sigaction(SIGCHLD, &host, &before), 0);
        const ProgramResult result = Shell("echo out; exit 3");
        struct sigaction after;
        ASSERT_EQ(sigaction(SIGCHLD, &before, &after), 0);
        EXPECT_EQ(result.end, ProgramEnd::kUnknown);
        EXPECT_TRUE(result.Succeeded());
        EXPECT_EQ(result.output, "out\n");
        EXPECT_EQ(after.sa_handler, host.sa_handler);
        EXPECT_EQ(after.sa_flags & SA_NOCLDWAIT, host.sa_flags & SA_NOCLDWAIT);
    }
}

TEST(RunProgram, WorksInAHostWithoutStandardDescriptors) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        for (const int fd : {0, 1, 2}) {
            close(fd);
        }
        _exit(Shell("cat; echo out").output == "out\n" ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}
