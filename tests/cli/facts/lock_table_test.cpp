// SPDX-License-Identifier: MIT
#include "cli/host/facts/lock_table.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/prctl.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>

#include "tests/cli/facts/held_files.h"
#include "tests/platform/support/child.h"

namespace {

constexpr int kHeld = 50;

struct flock RangeOf(short type, off_t begin, off_t length) {
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = begin;
    range.l_len = length;
    return range;
}

/** A process that holds a file with locks, and others that want them. */
class HeldLocks : public HeldFiles {
protected:
    void Hold(const std::function<void()>& lock) {
        holder_ = std::make_unique<Child>([&] {
            OpenAs(kHeld, "a", O_RDWR | O_CREAT);
            lock();
        });
    }
    /** A process that waits for a lock until the test ends. */
    pid_t WaitFor(const std::function<void()>& lock) {
        waiters_.push_back(std::make_unique<Child>([&] {
            // Another thread: this one has to report that it has begun.
            std::thread([this, lock] {
                OpenAs(kHeld + 1, "a", O_RDWR);
                lock();
            }).detach();
            prctl(PR_SET_NAME, "waiter");
        }));
        return waiters_.back()->Pid();
    }
    std::vector<cli::KernelLock> Held() const {
        const auto facts = cli::ProcessFacts::Of(std::to_string(holder_->Pid()));
        const auto state = facts ? facts->StateOf(kHeld, Path("a")) : std::nullopt;
        return state ? state->locks : std::vector<cli::KernelLock>();
    }
    /** Who waits for the one lock that is held, once as many do and each has been there before. */
    std::vector<cli::LockWaiter> AwaitWaiters(size_t count) const {
        for (;;) {
            const auto locks = Held();
            EXPECT_EQ(locks.size(), 1U);
            if (locks.empty()) {
                return {};
            }
            auto waiters = cli::LockTable::Read().WaitersFor(locks[0]);
            const auto isNamed = [](const cli::LockWaiter& waiter) {
                return waiter.command != "-";
            };
            if (waiters.size() >= count && std::all_of(waiters.begin(), waiters.end(), isNamed)) {
                return waiters;
            }
            std::this_thread::yield();
        }
    }
    pid_t Holder() const { return holder_->Pid(); }

private:
    std::unique_ptr<Child> holder_;
    std::vector<std::unique_ptr<Child>> waiters_;
};

void LockRange(int command, int descriptor, short type, off_t begin, off_t length) {
    struct flock range = RangeOf(type, begin, length);
    EXPECT_EQ(fcntl(descriptor, command, &range), 0);
}

TEST_F(HeldLocks, AreThoseOfEachKind) {
    Hold([] {
        LockRange(F_SETLK, kHeld, F_WRLCK, 10, 20);
        LockRange(F_OFD_SETLK, kHeld, F_RDLCK, 100, 0);
        EXPECT_EQ(flock(kHeld, LOCK_SH), 0);
    });
    const auto locks = Held();
    ASSERT_EQ(locks.size(), 3U);
    for (const cli::KernelLock& lock : locks) {
        const bool posix = lock.kind == "POSIX";
        EXPECT_TRUE(posix || lock.kind == "OFDLCK" || lock.kind == "FLOCK") << lock.kind;
        EXPECT_EQ(lock.access, posix ? "WRITE" : "READ");
        EXPECT_EQ(lock.begin, posix ? 10U : lock.kind == "OFDLCK" ? 100U : 0U);
        EXPECT_EQ(lock.end, posix ? std::optional<std::uint64_t>(29) : std::nullopt);
        EXPECT_EQ(lock.pid, lock.kind == "OFDLCK" ? -1 : Holder());
        EXPECT_TRUE(cli::LockTable::Read().WaitersFor(lock).empty());
    }
}

TEST_F(HeldLocks, AreLeasesToo) {
    Hold([] { EXPECT_EQ(fcntl(kHeld, F_SETLEASE, F_WRLCK), 0); });
    const auto locks = Held();
    ASSERT_EQ(locks.size(), 1U);
    EXPECT_EQ(locks[0].kind, "LEASE");
    EXPECT_EQ(locks[0].access, "WRITE");
    EXPECT_EQ(locks[0].pid, Holder());
}

TEST_F(HeldLocks, AreNotThoseOfAnotherDescriptor) {
    Hold([this] {
        OpenAs(kHeld + 1, "b", O_RDWR | O_CREAT);
        LockRange(F_SETLK, kHeld + 1, F_WRLCK, 0, 0);
    });
    EXPECT_TRUE(Held().empty());
}

TEST_F(HeldLocks, OfAProcessAreWaitedForByOthers) {
    Hold([] { LockRange(F_SETLK, kHeld, F_WRLCK, 0, 0); });
    const pid_t first = WaitFor([] { LockRange(F_SETLKW, kHeld + 1, F_WRLCK, 0, 0); });
    const pid_t second = WaitFor([] { LockRange(F_SETLKW, kHeld + 1, F_RDLCK, 5, 1); });
    const auto waiters = AwaitWaiters(2);
    ASSERT_EQ(waiters.size(), 2U);
    EXPECT_EQ(waiters[0].pid, std::min(first, second));
    EXPECT_EQ(waiters[1].pid, std::max(first, second));
    EXPECT_EQ(waiters[0].command, "waiter");
    EXPECT_EQ(waiters[1].command, "waiter");
}

TEST_F(HeldLocks, OfAnOpenFileAreWaitedForByOthers) {
    Hold([] { EXPECT_EQ(flock(kHeld, LOCK_EX), 0); });
    const pid_t waiter = WaitFor([] { flock(kHeld + 1, LOCK_EX); });
    const auto waiters = AwaitWaiters(1);
    ASSERT_EQ(waiters.size(), 1U);
    EXPECT_EQ(waiters[0].pid, waiter);
}

constexpr char kTable[] =
    "1: POSIX  ADVISORY  WRITE 7 08:01:1234 0 EOF\n"
    "1: -> POSIX  ADVISORY  WRITE 2147483646 08:01:1234 0 EOF\n"
    "1:  -> POSIX  ADVISORY  WRITE 1 08:01:1234 0 EOF\n"
    "2: FLOCK  ADVISORY  WRITE 7 08:01:1234 0 EOF\n"
    "3: OFDLCK ADVISORY  READ -1 08:01:1234 0 EOF\n"
    "3: -> OFDLCK ADVISORY  WRITE -1 08:01:1234 0 EOF\n"
    "what no line is\n"
    "4: -> FLOCK  ADVISORY  WRITE 1 08:01:1234 0 EOF\n";

std::vector<cli::LockWaiter> WaitersIn(const cli::LockTable& table, const char* line) {
    return table.WaitersFor(*cli::ParseKernelLock(line));
}

TEST(LockTable, HasTheWaitersBehindALock) {
    const cli::LockTable table(kTable, cli::BootTicksNow());
    const auto waiters = WaitersIn(table, "9: POSIX  ADVISORY  WRITE 7 08:01:1234 0 EOF");
    ASSERT_EQ(waiters.size(), 2U);
    EXPECT_EQ(waiters[0].pid, 1);
    EXPECT_NE(waiters[0].command, "-");
    EXPECT_EQ(waiters[1].pid, 2147483646);
    EXPECT_EQ(waiters[1].command, "-");
    for (const char* other : {"2: FLOCK  ADVISORY  WRITE 7 08:01:1234 0 EOF",
                              "3: OFDLCK ADVISORY  READ -1 08:01:1234 0 EOF",
                              "1: POSIX  ADVISORY  WRITE 7 08:01:1235 0 EOF",
                              "1: POSIX  ADVISORY  READ 7 08:01:1234 0 EOF",
                              "1: POSIX  ADVISORY  WRITE 8 08:01:1234 0 EOF",
                              "1: POSIX  ADVISORY  WRITE 7 08:01:1234 1 EOF",
                              "1: POSIX  ADVISORY  WRITE 7 08:01:1234 0 9"}) {
        EXPECT_TRUE(WaitersIn(table, other).empty()) << other;
    }
}

TEST(LockTable, NamesNoProcessThatHasStartedSince) {
    const cli::LockTable table(kTable, 0);
    const auto waiters = WaitersIn(table, "9: POSIX  ADVISORY  WRITE 7 08:01:1234 0 EOF");
    ASSERT_EQ(waiters.size(), 2U);
    EXPECT_EQ(waiters[0].command, "-");
}

}  // namespace
