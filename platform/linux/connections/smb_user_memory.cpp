// SPDX-License-Identifier: MIT
#include "platform/linux/connections/smb_user_memory.h"

#include <algorithm>
#include <utility>

namespace vornplatform {

SmbUserMemory::SmbUserMemory(Ask ask, Now now) : ask_(std::move(ask)), now_(std::move(now)) {}

bool SmbUserMemory::Knows(const SmbServer& server) const {
    const auto known = known_.find(server.pid);
    return known != known_.end() && known->second.startTime == server.startTime;
}

bool SmbUserMemory::IsInPause(Clock::time_point now) const {
    return failed_ && now - *failed_ < kPause;
}

bool SmbUserMemory::MustAsk(const std::vector<SmbServer>& servers, Clock::time_point now) const {
    if (servers.empty() || IsInPause(now)) {
        return false;
    }
    return !answered_ || now - *answered_ >= kMaxAge ||
           !std::all_of(servers.begin(), servers.end(),
                        [this](const SmbServer& server) { return Knows(server); });
}

void SmbUserMemory::Remember(const std::vector<SmbServer>& servers, SmbUsers answer,
                             Clock::time_point now) {
    known_.clear();
    for (const SmbServer& server : servers) {
        const auto users = answer.find(server.pid);
        if (users != answer.end()) {
            known_[server.pid] = {server.startTime, std::move(users->second)};
        }
    }
    answered_ = now;
    failed_.reset();
}

SmbAnswer SmbUserMemory::UsersOf(const std::vector<SmbServer>& servers) {
    const Clock::time_point now = now_();
    if (MustAsk(servers, now)) {
        if (auto answer = ask_(SmbQuestion::kSessions)) {
            Remember(servers, std::move(*answer), now);
        } else {
            failed_ = now;
        }
    }
    SmbAnswer answer{Remembered(servers), {}};
    for (const auto& [pid, users] : answer.users) {
        if (users.size() > 1) {
            answer.shared.insert(pid);
        }
    }
    Narrow(answer, now);
    return answer;
}

/** Of several users those who have files open, which is not worth remembering. */
void SmbUserMemory::Narrow(SmbAnswer& answer, Clock::time_point now) {
    if (IsInPause(now) || answer.shared.empty()) {
        return;
    }
    const auto openers = ask_(SmbQuestion::kOpenFiles);
    if (!openers) {
        failed_ = now;
        return;
    }
    for (const pid_t pid : answer.shared) {
        const auto narrowed = openers->find(pid);
        if (narrowed != openers->end()) {
            answer.users[pid] = narrowed->second;
        }
    }
}

SmbUsers SmbUserMemory::Remembered(const std::vector<SmbServer>& servers) const {
    SmbUsers users;
    for (const SmbServer& server : servers) {
        if (Knows(server)) {
            users[server.pid] = known_.at(server.pid).users;
        }
    }
    return users;
}

}  // namespace vornplatform
