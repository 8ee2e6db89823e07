// SPDX-License-Identifier: MIT
#include "cli/events/process_memory.h"

#include <algorithm>
#include <string>

namespace cli {
namespace {

/** So long an answer holds. */
constexpr std::chrono::seconds kFresh(10);

}  // namespace

std::vector<const ProcessAnswer*> ProcessMemory::Meet(FileEvents& events) {
    ++call_;
    MakeRoom(events.size());
    std::vector<bool> lives;
    for (FileEvent& event : events) {
        lives.push_back(static_cast<bool>(event.process));
        if (event.process) {
            Recognise(event);
        }
    }
    AskDue();
    std::vector<const ProcessAnswer*> answers;
    for (size_t i = 0; i < events.size(); ++i) {
        const auto known = lives[i] ? known_.find(events[i].pid) : known_.end();
        answers.push_back(known == known_.end() ? nullptr : &known->second.answer);
    }
    return answers;
}

void ProcessMemory::Recognise(FileEvent& event) {
    Known& known = known_[event.pid];
    if (known.usedAt == call_) {
        // Both descriptors were given by one read, and the process is there after it.
        return;
    }
    // While the one that is known lives, nobody else has its id.
    if (known.askedAt == 0 || known.process.HasEnded()) {
        known = Known();
        known.process = PidDescriptor(std::move(event.process));
        known.due = true;
    } else {
        known.due = known.asked + kFresh <= now_();
    }
    known.usedAt = call_;
    anyDue_ = anyDue_ || known.due;
}

/** With those whose answer is soon due: one question for all of them costs little more. */
void ProcessMemory::AskDue() {
    if (!anyDue_) {
        return;
    }
    anyDue_ = false;
    const Clock::time_point now = now_();
    std::vector<Known*> asked;
    std::vector<ProcessAnswer> answers;
    for (auto& [pid, known] : known_) {
        const bool soonDue = known.usedAt > known.askedAt && known.asked + kFresh / 2 <= now;
        if (known.due || soonDue) {
            asked.push_back(&known);
            answers.emplace_back().texts.pid = std::to_string(pid);
        }
    }
    ask_(answers);
    for (size_t i = 0; i < asked.size(); ++i) {
        Known& known = *asked[i];
        known.due = false;
        if (!known.process.HasEnded()) {
            known.answer = std::move(answers[i]);
            known.asked = now;
            known.askedAt = call_;
        }
    }
    for (auto place = known_.begin(); place != known_.end();) {
        place = place->second.askedAt == 0 ? known_.erase(place) : std::next(place);
    }
}

/** Forgets those that have not been met for longest. */
void ProcessMemory::MakeRoom(size_t wanted) {
    if (known_.size() + wanted <= most_) {
        return;
    }
    std::vector<std::uint64_t> calls;
    for (const auto& [pid, known] : known_) {
        calls.push_back(known.usedAt);
    }
    std::sort(calls.begin(), calls.end());
    // More than is needed, so that it is not done for every process that comes.
    const std::uint64_t last = calls[(calls.size() - 1) / 2];
    for (auto place = known_.begin(); place != known_.end();) {
        place = place->second.usedAt <= last ? known_.erase(place) : std::next(place);
    }
}

}  // namespace cli
