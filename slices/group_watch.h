// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_GROUP_WATCH_H
#define VORN_SLICES_GROUP_WATCH_H

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

#include "slices/trouble.h"
#include "slices/unified_groups.h"
#include "support/descriptor.h"

namespace slices {

/** What has happened to groups since the last look. */
struct GroupEvents {
    std::set<std::string> made;    /**< groups below one that is watched */
    std::set<std::string> changed; /**< groups that processes have come to */
    bool areLost = false;          /**< anything may have happened */
};

/**
 * Watches groups of v2 by inotify: groups made and removed in them, writes to cgroup.procs, which
 * is how processes are moved, and changes of cgroup.events, which tell of the first process that
 * was born in a group.
 */
class GroupWatch {
public:
    GroupWatch(const UnifiedGroups& unified, Troubles& troubles);

    int Get() const { return queue_.Get(); }

    /** Watches a group; does nothing where it is watched already or has gone. */
    void Follow(const std::string& group);

    /** Forgets all groups but these, which are those that there are. */
    void KeepOnly(const std::set<std::string>& groups);

    /** Takes all events that are there. */
    GroupEvents Read();

private:
    void Add(const std::string& group, const char* file, std::uint32_t mask);
    void Note(int watch, std::uint32_t mask, std::string_view name, GroupEvents& events);
    void Forget(const std::string& group);

    const UnifiedGroups& unified_;
    Troubles& troubles_;
    support::Descriptor queue_;
    /** A group has three watches. */
    std::unordered_map<int, std::string> groups_;
    std::unordered_multimap<std::string, int> watches_;
};

}  // namespace slices

#endif
