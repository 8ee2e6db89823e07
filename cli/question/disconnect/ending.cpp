// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/ending.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "cli/question/disconnect/tcp_sockets.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

const PlannedConnection* FindSame(const Plan& plan, const PlannedConnection& connection) {
    const auto found =
        std::find_if(plan.connections.begin(), plan.connections.end(),
                     [&](const PlannedConnection& it) { return IsSame(it, connection); });
    return found == plan.connections.end() ? nullptr : &*found;
}

bool Contains(const std::vector<pid_t>& pids, pid_t pid) {
    return std::find(pids.begin(), pids.end(), pid) != pids.end();
}

}  // namespace

Ending::Ending(const std::vector<PlannedConnection>& agreed) : agreed_(agreed) {
    for (size_t i = 0; i < agreed_.size(); ++i) {
        for (const pid_t pid : agreed_[i].processes) {
            if (PidDescriptor process(pid); process) {
                targets_.push_back({i, pid, std::move(process)});
            }
        }
    }
}

/** A process that has ended is none: its id may be another's by now. */
bool Ending::Holds(size_t connection, pid_t pid) const {
    return std::any_of(targets_.begin(), targets_.end(), [&](const Target& target) {
        return target.connection == connection && target.pid == pid && !target.process.HasEnded();
    });
}

bool Ending::Confirm(const Plan& now) {
    bool isNew = false;
    for (size_t i = 0; i < agreed_.size(); ++i) {
        const PlannedConnection* same = FindSame(now, agreed_[i]);
        for (Target& target : targets_) {
            if (target.connection == i) {
                target.confirmed = same != nullptr && Contains(same->processes, target.pid) &&
                                   !target.process.HasEnded();
            }
        }
        for (const pid_t pid : same == nullptr ? std::vector<pid_t>() : same->processes) {
            if (Holds(i, pid)) {
                continue;
            }
            if (PidDescriptor process(pid); process) {
                targets_.push_back({i, pid, std::move(process)});
                isNew = true;
            }
        }
    }
    return isNew;
}

size_t Ending::Send(int signal) {
    size_t sent = 0;
    for (size_t i = 0; i < agreed_.size(); ++i) {
        sent += Send(signal, i);
    }
    return sent;
}

size_t Ending::Send(int signal, size_t connection) {
    size_t sent = 0;
    for (Target& target : targets_) {
        if (target.connection != connection || !target.confirmed || target.process.HasEnded()) {
            continue;
        }
        SendTo(target, signal);
        ++sent;
    }
    return sent;
}

void Ending::SendTo(Target& target, int signal) {
    target.signalled = true;
    const int error = target.process.Send(signal);
    target.error = error == ESRCH ? 0 : error;
    ShutDownSockets(target.process, target.pid, agreed_[target.connection].sockets);
}

void Ending::Wait(double seconds) const {
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(seconds));
    for (const Target& target : targets_) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        struct pollfd watched = {target.process.Get(), POLLIN, 0};
        if (target.signalled && target.error == 0) {
            poll(&watched, 1, left > 0 ? static_cast<int>(left) : 0);
        }
    }
}

std::vector<pid_t> Ending::Confirmed(size_t connection) const {
    std::vector<pid_t> pids;
    for (const Target& target : targets_) {
        if (target.connection == connection && target.confirmed && !target.process.HasEnded()) {
            pids.push_back(target.pid);
        }
    }
    return pids;
}

std::vector<Outcome> Ending::Outcomes() const {
    std::vector<Outcome> outcomes(agreed_.size());
    for (const Target& target : targets_) {
        Outcome& outcome = outcomes[target.connection];
        if (!target.signalled) {
            continue;
        }
        if (!target.process.HasEnded()) {
            outcome.state = Outcome::kRemains;
            outcome.remaining.push_back(target.pid);
            outcome.error = target.error;
        } else if (outcome.state == Outcome::kLeft) {
            outcome.state = Outcome::kEnded;
        }
    }
    return outcomes;
}

}  // namespace cli
