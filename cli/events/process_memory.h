// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_PROCESS_MEMORY_H
#define VORN_CLI_EVENTS_PROCESS_MEMORY_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "cli/events/event_buffer.h"
#include "cli/events/process_answer.h"
#include "cli/host/pid_descriptor.h"

namespace cli {

/**
 * The processes of events, each asked for once in some seconds: a server's may get another client.
 *
 * An answer counts only for a process that was there still when it had been given, by its
 * descriptor: whoever has its id later is another one.
 */
class ProcessMemory {
public:
    using Clock = std::chrono::steady_clock;
    using Ask = std::function<void(std::vector<ProcessAnswer>&)>;
    using Now = std::function<Clock::time_point()>;

    /** @param most  processes that are remembered: no fewer than one call may have */
    ProcessMemory(Ask ask, size_t most, Now now = Clock::now)
        : ask_(std::move(ask)), most_(most), now_(std::move(now)) {}

    /**
     * For each event the answer of its process, until the next call; null where the process had
     * ended before it could be asked. Takes the events' descriptors.
     */
    std::vector<const ProcessAnswer*> Meet(FileEvents& events);

    size_t Size() const { return known_.size(); }

private:
    struct Known {
        PidDescriptor process;
        ProcessAnswer answer;
        Clock::time_point asked;
        std::uint64_t askedAt = 0; /**< the call of Meet(); 0 for never */
        std::uint64_t usedAt = 0;
        bool due = false;
    };

    void Recognise(FileEvent& event);
    void AskDue();
    void MakeRoom(size_t wanted);

    Ask ask_;
    size_t most_;
    Now now_;
    std::uint64_t call_ = 0;
    bool anyDue_ = false;
    std::unordered_map<pid_t, Known> known_;
};

}  // namespace cli

#endif
