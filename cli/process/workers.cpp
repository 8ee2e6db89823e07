// SPDX-License-Identifier: MIT
#include "cli/process/workers.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "support/block_signals.h"

namespace cli {
namespace {

/** The tasks of one call, and what has become of them. */
class Tasks {
public:
    Tasks(size_t count, const std::function<void(size_t)>& task) : count_(count), task_(task) {}

    void Run() noexcept {
        Guarded([this] {
            for (size_t at = next_++; at < count_; at = next_++) {
                task_(at);
            }
        });
    }
    void Guarded(const std::function<void()>& work) noexcept {
        try {
            work();
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex_);
            next_ = count_;
            if (!thrown_) {
                thrown_ = std::current_exception();
            }
        }
    }
    void Rethrow() const {
        if (thrown_) {
            std::rethrow_exception(thrown_);
        }
    }

private:
    const size_t count_;
    const std::function<void(size_t)>& task_;
    std::atomic<size_t> next_ = 0;
    std::mutex mutex_;
    std::exception_ptr thrown_;
};

/** Threads that are waited for, however this one leaves. */
class Threads {
public:
    Threads(size_t count, Tasks& tasks) {
        const support::BlockSignals blocked;
        try {
            threads_.reserve(count);
            while (threads_.size() < count) {
                threads_.emplace_back([&tasks] { tasks.Run(); });
            }
        } catch (const std::system_error&) {
            // Those that there are do it all.
        } catch (const std::bad_alloc&) {
        }
    }
    ~Threads() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

private:
    std::vector<std::thread> threads_;
};

}  // namespace

void Workers::ForEach(size_t tasks, const std::function<void(size_t)>& task) const {
    ForEach(tasks, task, [] {});
}

void Workers::ForEach(size_t tasks, const std::function<void(size_t)>& task,
                      const std::function<void()>& before) const {
    Tasks all(tasks, task);
    {
        const Threads threads(std::min(count_, tasks) - (tasks == 0 ? 0 : 1), all);
        all.Guarded(before);
        all.Run();
    }
    all.Rethrow();
}

}  // namespace cli
