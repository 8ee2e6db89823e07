// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_FOLLOWER_H
#define VORN_SLICES_FOLLOWER_H

#include <sys/types.h>
#include <systemd/sd-event.h>

#include <cstdint>
#include <set>
#include <string>

#include "slices/group_watch.h"
#include "slices/job_signals.h"
#include "slices/named_slices.h"
#include "slices/sweep.h"
#include "support/owner.h"

namespace slices {

/**
 * Follows the groups of named slices until SIGTERM or SIGINT.
 *
 * Groups that something has happened to are swept at once. Some seconds after anything has
 * happened, all of them are, once: that finds what no event tells of. Where nothing happens nothing
 * is done.
 */
class Follower {
public:
    Follower();

    /** Gives the exit status; throws std::system_error where it can't begin. */
    int Run();

private:
    void SweepAll();
    void SweepChanged();
    void Follow(const std::set<std::string>& groups);
    void SettleLater();
    /** Ends the loop where a step fails: no exception may go through what calls back. */
    int Step(void (Follower::*step)());
    static int OnGroups(sd_event_source* source, int fd, std::uint32_t events, void* self);
    static int OnSettle(sd_event_source* source, std::uint64_t time, void* self);

    support::Owner<sd_event, sd_event_unref> loop_;
    Troubles troubles_;
    UnifiedGroups unified_;
    ServiceGroups services_;
    GroupWatch watch_;
    Sweep sweep_;
    JobSignals jobs_;
    Names named_;
    support::Owner<sd_event_source, sd_event_source_unref> settle_;
    bool isSettleDue_ = false;
    /** Microseconds that sweeping all has taken. */
    std::uint64_t cost_ = 0;
};

}  // namespace slices

#endif
