// SPDX-License-Identifier: MIT
#include "cli/process/workers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using cli::Workers;

TEST(Workers, DoEachTaskOnce) {
    for (const size_t count : {1, 2, 5}) {
        for (const size_t tasks : {0, 1, 2, 100}) {
            std::vector<std::atomic<int>> done(tasks);
            Workers(count).ForEach(tasks, [&](size_t task) { ++done[task]; });
            for (const auto& times : done) {
                EXPECT_EQ(times, 1) << count << " workers, " << tasks << " tasks";
            }
        }
    }
}

TEST(Workers, StartNoThreadForOne) {
    std::set<std::thread::id> threads;
    Workers(1).ForEach(3, [&](size_t) { threads.insert(std::this_thread::get_id()); });
    EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(Workers, WorkSideBySideWhileThisThreadDoesSomethingElse) {
    std::mutex mutex;
    std::condition_variable changed;
    bool begun = false;
    Workers(2).ForEach(
        2,
        [&](size_t) {
            const std::lock_guard<std::mutex> lock(mutex);
            begun = true;
            changed.notify_all();
        },
        [&] {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait(lock, [&] { return begun; });
        });
    EXPECT_TRUE(begun);
}

TEST(Workers, PassOnWhatATaskThrowsAndBeginNoOther) {
    for (const size_t count : {1, 2, 5}) {
        std::atomic<int> begun = 0;
        EXPECT_THROW(Workers(count).ForEach(1000,
                                            [&](size_t) {
                                                ++begun;
                                                throw std::bad_alloc();
                                            }),
                     std::bad_alloc);
        EXPECT_LE(begun, static_cast<int>(count));
    }
}

TEST(Workers, BeginNoTaskOnceOneHasThrown) {
    constexpr size_t kTasks = 1000000;
    std::atomic<size_t> begun = 0;
    EXPECT_THROW(Workers(2).ForEach(kTasks,
                                    [&](size_t task) {
                                        ++begun;
                                        std::this_thread::yield();
                                        if (task == 0) {
                                            throw std::bad_alloc();
                                        }
                                    }),
                 std::bad_alloc);
    EXPECT_LT(begun, kTasks);
}

TEST(Workers, PassOnWhatIsThrownBefore) {
    EXPECT_THROW(Workers(3).ForEach(
                     3, [](size_t) {}, [] { throw std::out_of_range("before"); }),
                 std::out_of_range);
}

TEST(Workers, TakeNoSignals) {
    const auto own = std::this_thread::get_id();
    std::atomic<int> open = 0;
    std::atomic<int> others = 0;
    Workers(3).ForEach(300, [&](size_t) {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        if (std::this_thread::get_id() != own) {
            ++others;
            open += sigismember(&blocked, SIGTERM) == 0 ? 1 : 0;
        } else {
            while (others == 0) {
                std::this_thread::yield();
            }
        }
    });
    EXPECT_GT(others, 0);
    EXPECT_EQ(open, 0);
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 0);
}

}  // namespace
