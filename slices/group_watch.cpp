// SPDX-License-Identifier: MIT
#include "slices/group_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace slices {

GroupWatch::GroupWatch(const UnifiedGroups& unified, Troubles& troubles)
    : unified_(unified), troubles_(troubles), queue_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!queue_) {
        throw std::system_error(errno, std::generic_category(), "inotify");
    }
}

void GroupWatch::Follow(const std::string& group) {
    Add(group, "", IN_CREATE | IN_DELETE | IN_ONLYDIR);
    if (!group.empty()) {
        Add(group, "/cgroup.procs", IN_MODIFY);
        Add(group, "/cgroup.events", IN_MODIFY);
    }
}

void GroupWatch::KeepOnly(const std::set<std::string>& groups) {
    std::set<std::string> gone;
    for (const auto& [group, watch] : watches_) {
        if (groups.count(group) == 0) {
            gone.insert(group);
        }
    }
    for (const std::string& group : gone) {
        Forget(group);
    }
}

GroupEvents GroupWatch::Read() {
    GroupEvents events;
    alignas(inotify_event) std::array<char, std::size_t{64} * 1024> buffer;
    for (;;) {
        const ssize_t size = read(queue_.Get(), buffer.data(), buffer.size());
        if (size <= 0) {
            return events;
        }
        for (ssize_t at = 0; at < size;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(buffer.data() + at);
            at += static_cast<ssize_t>(sizeof(event) + event.len);
            Note(event.wd, event.mask, event.len > 0 ? event.name : "", events);
        }
    }
}

void GroupWatch::Add(const std::string& group, const char* file, std::uint32_t mask) {
    const int watch =
        inotify_add_watch(queue_.Get(), (unified_.FolderOf(group) + file).c_str(), mask);
    if (watch >= 0) {
        if (groups_.insert_or_assign(watch, group).second) {
            watches_.emplace(group, watch);
        }
        troubles_.Over("watch");
    } else if (errno != ENOENT && errno != ENODEV) {
        troubles_.Report("watch", "/" + group + " can't be watched: " + std::strerror(errno));
    }
}

void GroupWatch::Note(int watch, std::uint32_t mask, std::string_view name, GroupEvents& events) {
    if ((mask & IN_Q_OVERFLOW) != 0) {
        events.areLost = true;
        return;
    }
    const auto known = groups_.find(watch);
    if (known == groups_.end()) {
        return;
    }
    const std::string group = known->second;
    if ((mask & IN_IGNORED) != 0) {
        Forget(group);
    } else if ((mask & IN_MODIFY) != 0) {
        events.changed.insert(group);
    } else if ((mask & IN_ISDIR) != 0) {
        const std::string below = (group.empty() ? "" : group + '/') + std::string(name);
        if ((mask & IN_CREATE) != 0) {
            events.made.insert(below);
        } else {
            Forget(below);
        }
    }
}

// The kernel keeps the watches of a group's files when the group is removed.
void GroupWatch::Forget(const std::string& group) {
    const auto [begin, end] = watches_.equal_range(group);
    for (auto each = begin; each != end; ++each) {
        inotify_rm_watch(queue_.Get(), each->second);
        groups_.erase(each->second);
    }
    watches_.erase(begin, end);
}

}  // namespace slices
