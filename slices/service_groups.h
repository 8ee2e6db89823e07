// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_SERVICE_GROUPS_H
#define VORN_SLICES_SERVICE_GROUPS_H

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "groups/service_hierarchy.h"

namespace slices {

enum class Move { kMade, kGone /**< the process has ended */, kRefused /**< errno says why */ };

/** The groups in the hierarchy name=systemd that we have made: one a slice, none below. "" is the
 * root. */
class ServiceGroups {
public:
    explicit ServiceGroups(std::string root = groups::kServicesFolder) : root_(std::move(root)) {}

    /** Whether the root is that of a mounted hierarchy of version 1. */
    bool AreMounted() const;

    /** Lets root make groups without a capability; false, with errno, where that fails. */
    bool Open() const;

    std::vector<std::string> Names() const;
    /** In rising order. */
    std::vector<pid_t> Members(std::string_view group) const;

    /** Moves a process into a group, which is made where it isn't there. */
    Move Put(pid_t pid, std::string_view group) const;
    /** Removes a group that is empty; false, with errno, otherwise. */
    bool Remove(std::string_view group) const;
    /** Whether the kernel has released what was removed, without which unmounting ends nothing.
     * Needs CAP_SYS_ADMIN. */
    bool AreReleased() const;

private:
    std::string FolderOf(std::string_view group) const;

    std::string root_;
};

}  // namespace slices

#endif
