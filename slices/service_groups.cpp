// SPDX-License-Identifier: MIT
#include "slices/service_groups.h"

#include <linux/magic.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "slices/unified_groups.h"
#include "support/folder.h"
#include "support/write_all.h"

namespace slices {

bool ServiceGroups::AreMounted() const {
    struct statfs info {};
    return statfs(root_.c_str(), &info) == 0 && info.f_type == CGROUP_SUPER_MAGIC;
}

std::vector<std::string> ServiceGroups::Names() const {
    std::vector<std::string> names;
    const support::Descriptor folder = support::OpenFolder(root_.c_str());
    if (folder) {
        support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
            if (support::IsFolder(folder.Get(), entry)) {
                names.emplace_back(entry.d_name);
            }
            return true;
        });
    }
    return names;
}

std::vector<pid_t> ServiceGroups::Members(std::string_view group) const {
    std::vector<pid_t> members = MembersOf(FolderOf(group));
    std::sort(members.begin(), members.end());
    return members;
}

// The kernel lets nobody write there, which root needs a capability to ignore.
bool ServiceGroups::Open() const {
    return chmod(root_.c_str(), 0755) == 0;
}

Move ServiceGroups::Put(pid_t pid, std::string_view group) const {
    const std::string path = FolderOf(group) + "/cgroup.procs";
    support::Descriptor members(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!members && errno == ENOENT && mkdir(FolderOf(group).c_str(), 0755) == 0) {
        members = support::Descriptor(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    }
    if (members && support::WriteAll(members.Get(), std::to_string(pid))) {
        return Move::kMade;
    }
    return members && errno == ESRCH ? Move::kGone : Move::kRefused;
}

bool ServiceGroups::Remove(std::string_view group) const {
    return rmdir(FolderOf(group).c_str()) == 0;
}

// A hierarchy can be remounted as it is, but not while it has groups.
bool ServiceGroups::AreReleased() const {
    return mount("cgroup", root_.c_str(), "cgroup", MS_REMOUNT | MS_NOSUID | MS_NODEV | MS_NOEXEC,
                 "none,name=systemd") == 0 ||
           errno != EBUSY;
}

std::string ServiceGroups::FolderOf(std::string_view group) const {
    return group.empty() ? root_ : root_ + '/' + std::string(group);
}

}  // namespace slices
