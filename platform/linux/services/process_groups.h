// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SERVICES_PROCESS_GROUPS_H
#define VORN_PLATFORM_LINUX_SERVICES_PROCESS_GROUPS_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornplatform {

/** The control groups of a process that tell of its service, from /proc/<pid>/cgroup. */
struct ProcessGroups {
    std::optional<std::string> named;   /**< path in the hierarchy name=systemd, if there is one */
    std::optional<std::string> unified; /**< path in the hierarchy of control groups v2 */
};

ProcessGroups ParseProcessGroups(std::string_view text);

/** The first component of a path, such as "sshd.slice"; empty for the root. */
std::string_view SliceOf(std::string_view path);

/** The last component that names a service, such as "ssh.service"; empty where none does. */
std::string_view ServiceOf(std::string_view path);

/** The login session that a path lies in, such as "session-3.scope"; empty for any other path. */
std::string_view SessionScopeOf(std::string_view path);

struct GroupedProcess {
    pid_t pid;
    ProcessGroups groups;

    /** The path in the hierarchy that systemd itself keeps: v2 where it is in use. */
    const std::string& Path() const;
};

/** Every process with its groups; those that have gone meanwhile are left out. */
std::vector<GroupedProcess> ReadGroupedProcesses();

}  // namespace vornplatform

#endif
