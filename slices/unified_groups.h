// SPDX-License-Identifier: MIT
#ifndef VORN_SLICES_UNIFIED_GROUPS_H
#define VORN_SLICES_UNIFIED_GROUPS_H

/**
 * @file
 * The groups of control groups v2, where systemd keeps its units.
 *
 * A group is called by its path below their root: "sshd.slice/ssh.service", the root itself "".
 */

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "groups/service_hierarchy.h"
#include "slices/named_slices.h"

namespace slices {

/** The numbers in a text of a file cgroup.procs; without processes that this host can't see. */
std::vector<pid_t> ParseMembers(std::string_view text);

/** The processes in a group that is a folder, of either version; none where it has gone. */
std::vector<pid_t> MembersOf(const std::string& folder);

/**
 * Whether a group is one whose processes may belong to a named slice, or has such groups below: the
 * groups of named slices, and the scopes of login sessions with what leads there.
 */
bool IsOfInterest(std::string_view group, const Names& named);

class UnifiedGroups {
public:
    explicit UnifiedGroups(std::string root = groups::kUnifiedFolder) : root_(std::move(root)) {}

    std::string FolderOf(std::string_view group) const;

    /** Calls visit for a group, if it is there, and for each below that is of interest; parents
     * first, and before they are listed. */
    void Visit(const std::string& group, const Names& named,
               const std::function<void(const std::string& group)>& visit) const;

private:
    std::string root_;
};

}  // namespace slices

#endif
