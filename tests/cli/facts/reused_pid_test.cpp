// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <fstream>
#include <functional>
#include <memory>

#include "cli/host/facts/process_facts.h"
#include "tests/cli/facts/held_files.h"
#include "tests/platform/support/child.h"
#include "tests/platform/support/end_child.h"

namespace {

using cli::ProcessFacts;

/** What was seen where pids are used again, for the process of the test to look at. */
struct Seen {
    bool samePids;
    bool firstIsHolder;
    bool firstSpeaksAfterItsEnd;
    bool secondIsHolder;
    bool thirdIsHolder;
};

/** Runs a body as the first process of a pid namespace, with a /proc of its own; false where the
 * host refuses that. */
bool RunInPidNamespace(const std::function<void()>& body) {
    const pid_t outer = fork();
    if (outer == 0) {
        if (unshare(CLONE_NEWPID | CLONE_NEWNS) != 0) {
            EndChild(1);
        }
        const pid_t inner = fork();
        if (inner == 0) {
            if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                mount("proc", "/proc", "proc", 0, nullptr) != 0) {
                EndChild(1);
            }
            body();
            EndChild(0);
        }
        int status = 0;
        waitpid(inner, &status, 0);
        EndChild(status == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(outer, &status, 0);
    return status == 0;
}

/** The next process of this namespace gets the pid. */
void UseAgain(pid_t pid) {
    std::ofstream("/proc/sys/kernel/ns_last_pid") << pid - 1;
}

class ReusedPid : public HeldFiles {
protected:
    std::unique_ptr<Child> StartHolder(const char* name) const {
        return std::make_unique<Child>([&] { OpenAs(50, name, O_RDONLY | O_CREAT); });
    }

    void Look(Seen& seen) const {
        auto holder = StartHolder("a");
        const pid_t pid = holder->Pid();
        auto first = *ProcessFacts::Of(std::to_string(pid));
        while (!first.HasStartedBefore(cli::BootTicksNow())) {
        }
        const cli::BootTicks lookBegan = cli::BootTicksNow();
        // By its start alone: it has never had that file open.
        seen.firstIsHolder = first.IsHolder(Path("closed meanwhile"), lookBegan);

        holder.reset();
        UseAgain(pid);
        holder = StartHolder("b");
        seen.samePids = holder->Pid() == pid;
        seen.firstSpeaksAfterItsEnd = first.Command() || first.Owner() || first.Unit() ||
                                      first.FileOf(50, Path("b")) || first.StateOf(50, Path("b"));
        seen.secondIsHolder = ProcessFacts::Of(std::to_string(pid))->IsHolder(Path("a"), lookBegan);

        holder.reset();
        UseAgain(pid);
        holder = StartHolder("a");
        seen.samePids = seen.samePids && holder->Pid() == pid;
        seen.thirdIsHolder = ProcessFacts::Of(std::to_string(pid))->IsHolder(Path("a"), lookBegan);
    }
};

TEST_F(ReusedPid, LendsItsFactsToNobody) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root to make a pid namespace";
    }
    void* shared =
        mmap(nullptr, sizeof(Seen), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    Seen& seen = *static_cast<Seen*>(shared);
    ASSERT_TRUE(RunInPidNamespace([&] { Look(seen); }));
    EXPECT_TRUE(seen.samePids);
    EXPECT_TRUE(seen.firstIsHolder);
    EXPECT_FALSE(seen.firstSpeaksAfterItsEnd);
    EXPECT_FALSE(seen.secondIsHolder);
    EXPECT_TRUE(seen.thirdIsHolder);
    munmap(shared, sizeof(Seen));
}

}  // namespace
