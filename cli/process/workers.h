// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_PROCESS_WORKERS_H
#define VORN_CLI_PROCESS_WORKERS_H

#include <cstddef>
#include <functional>

namespace cli {

/**
 * Work that several threads do side by side, this one among them.
 *
 * Threads live for one call, so none is there when a process is started, and none is left when a
 * task fails. They take no signals. Where the host gives no more threads, there are fewer.
 */
class Workers {
public:
    /** @param count  threads at most, this one included; 1 starts none */
    explicit Workers(size_t count) : count_(count) {}

    size_t Count() const { return count_; }

    /**
     * Calls task(0) to task(tasks - 1), each once, in this order but side by side. A task that
     * throws keeps those from beginning that have not begun; once all threads have ended, what
     * was thrown first is thrown here.
     */
    void ForEach(size_t tasks, const std::function<void(size_t)>& task) const;

    /** The same, of which this thread takes its part once it has done something else. */
    void ForEach(size_t tasks, const std::function<void(size_t)>& task,
                 const std::function<void()>& before) const;

private:
    size_t count_;
};

}  // namespace cli

#endif
