// SPDX-License-Identifier: MIT
#include "slices/follower.h"

#include <sys/epoll.h>
#include <systemd/sd-daemon.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <system_error>

#include "support/text.h"

namespace slices {
namespace {

constexpr std::uint64_t kSecond = 1'000'000;

int Checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
    return result;
}

support::Owner<sd_event, sd_event_unref> NewLoop() {
    sd_event* loop = nullptr;
    Checked(sd_event_new(&loop), "event loop");
    return support::Owner<sd_event, sd_event_unref>(loop);
}

std::uint64_t Now() {
    struct timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kSecond +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

/** "sshd.slice", but not what lies in it. */
bool IsSlice(std::string_view group) {
    return support::EndsWith(group, ".slice") && group.find('/') == std::string_view::npos;
}

}  // namespace

Follower::Follower()
    : loop_(NewLoop()),
      watch_(unified_, troubles_),
      sweep_(unified_, services_, troubles_),
      jobs_(loop_.get(), troubles_, [this] { Step(&Follower::SettleLater); }) {
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGTERM, SIGINT}) {
        sigaddset(&ends, signal);
    }
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    for (const int signal : {SIGTERM, SIGINT}) {
        Checked(sd_event_add_signal(loop_.get(), nullptr, signal, nullptr, nullptr), "signals");
    }
    Checked(sd_event_add_io(loop_.get(), nullptr, watch_.Get(), EPOLLIN, OnGroups, this),
            "inotify");
    sd_event_source* settle = nullptr;
    Checked(
        sd_event_add_time(loop_.get(), &settle, CLOCK_MONOTONIC, 0, kSecond / 2, OnSettle, this),
        "timer");
    settle_.reset(settle);
    Checked(sd_event_source_set_enabled(settle, SD_EVENT_OFF), "timer");
}

int Follower::Run() {
    Checked(services_.Open() ? 0 : -errno, groups::kServicesFolder);
    SweepAll();
    sd_notify(0, "READY=1");
    return Checked(sd_event_loop(loop_.get()), "event loop");
}

void Follower::SweepAll() {
    const std::uint64_t begin = Now();
    jobs_.Listen();
    named_ = FindNamedSlices();
    std::set<std::string> there;
    unified_.Visit("", named_, [&](const std::string& group) {
        watch_.Follow(group);
        there.insert(group);
    });
    watch_.KeepOnly(there);
    const bool isDone = sweep_.All(named_);
    cost_ = Now() - begin;
    if (!isDone) {
        SettleLater();
    }
}

void Follower::SweepChanged() {
    GroupEvents events = watch_.Read();
    if (events.areLost) {
        SweepAll();
        return;
    }
    // A slice may have come with its first service.
    if (std::any_of(events.made.begin(), events.made.end(), IsSlice)) {
        named_ = FindNamedSlices();
    }
    Follow(events.made);
    events.changed.insert(events.made.begin(), events.made.end());
    if (!events.changed.empty()) {
        sweep_.Below(events.changed, named_);
        SettleLater();
    }
}

void Follower::Follow(const std::set<std::string>& groups) {
    for (const std::string& group : groups) {
        if (IsOfInterest(group, named_)) {
            unified_.Visit(group, named_, [&](const std::string& below) { watch_.Follow(below); });
        }
    }
}

// However much happens, most of the time is left to others.
void Follower::SettleLater() {
    if (!isSettleDue_) {
        const std::uint64_t wait = std::max(2 * kSecond, 20 * cost_);
        Checked(sd_event_source_set_time(settle_.get(), Now() + wait), "timer");
        Checked(sd_event_source_set_enabled(settle_.get(), SD_EVENT_ONESHOT), "timer");
        isSettleDue_ = true;
    }
}

int Follower::Step(void (Follower::*step)()) {
    try {
        (this->*step)();
        return 0;
    } catch (const std::exception& exception) {
        LogError(exception.what());
        return sd_event_exit(loop_.get(), EXIT_FAILURE);
    }
}

int Follower::OnGroups(sd_event_source*, int, std::uint32_t, void* self) {
    return static_cast<Follower*>(self)->Step(&Follower::SweepChanged);
}

int Follower::OnSettle(sd_event_source*, std::uint64_t, void* self) {
    auto& follower = *static_cast<Follower*>(self);
    follower.isSettleDue_ = false;
    return follower.Step(&Follower::SweepAll);
}

}  // namespace slices
