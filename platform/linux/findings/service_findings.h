// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_SERVICE_FINDINGS_H
#define VORN_PLATFORM_LINUX_FINDINGS_SERVICE_FINDINGS_H

#include <sys/types.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/findings/finding.h"
#include "platform/linux/services/process_groups.h"
#include "platform/linux/services/unit_slices.h"

namespace vornplatform {

/** What a host says of its control groups. */
struct GroupFacts {
    ProcessGroups own;           /**< the caller's */
    std::string commandLine;     /**< the kernel's (/proc/cmdline) */
    bool namesBeside = false;    /**< the hierarchy of names is that of vorn-slices, beside v2 */
    bool namerInstalled = false; /**< vorn-slices has a unit file */
    bool mayMount = true;        /**< the caller may mount a hierarchy */
};

GroupFacts ReadGroupFacts();

/** Which hierarchy names services, for this command and for programs that link the library. */
Finding JudgeControlGroups(const GroupFacts& facts);

/** How many processes of named slices have their name in the hierarchy that vorn-slices keeps. */
Findings JudgeNamesBeside(const std::vector<GroupedProcess>& processes, UnitSlices& slices);

/** Services that run in slices of their own, and daemons that run outside theirs. */
Findings JudgeServices(const std::vector<GroupedProcess>& processes, UnitSlices& slices);

/**
 * Login sessions that the login manager has moved out of the slice of their server.
 *
 * @param clients  processes of SSH sessions
 */
Findings JudgeSessions(const std::vector<GroupedProcess>& processes,
                       const std::set<pid_t>& clients);

/** All of these. */
Findings FindServices(const std::set<pid_t>& clients);

}  // namespace vornplatform

#endif
