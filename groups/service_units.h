// SPDX-License-Identifier: MIT
#ifndef VORN_GROUPS_SERVICE_UNITS_H
#define VORN_GROUPS_SERVICE_UNITS_H

/**
 * @file
 * Units that name services on hosts with control groups v2 alone.
 *
 * The library takes a process's unit from the hierarchy name=systemd. Where a host has none, the
 * unified hierarchy, in which systemd keeps its units there, tells the same.
 */

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace groups {

/** Whether a text of `/proc/<pid>/cgroup` has a line for the hierarchy name=systemd. */
bool HasServiceHierarchy(std::string_view cgroup);

/** The path in the unified hierarchy, from a text of `/proc/<pid>/cgroup`. */
std::optional<std::string_view> UnifiedPath(std::string_view cgroup);

/** The login session that a path lies in, such as "3"; empty for any other path. */
std::string_view SessionOf(std::string_view path);

/** The service that opened a session (sd_session_get_service), such as "sshd"; empty without one.
 */
std::string ServiceOfSession(const std::string& session);

/**
 * Finds the units of processes.
 *
 * The unit is the first component of the process's path, but for a login session: logind moves its
 * processes into a slice of the user, so the unit is the slice of the service that logind keeps for
 * the session. Nothing is told from names of processes.
 */
class ServiceUnits {
public:
    using AskService = std::function<std::string(const std::string& session)>;

    explicit ServiceUnits(AskService askService = ServiceOfSession)
        : askService_(std::move(askService)) {}

    /** The unit of a path in the unified hierarchy, such as "sshd.slice"; empty for the root. */
    std::string OfPath(std::string_view path);

    /** The same of a process (`/proc/<pid>/cgroup`); empty when it has gone. */
    std::string OfProcess(const std::string& pid);

private:
    AskService askService_;
    /** Each session is asked for once. */
    std::unordered_map<std::string, std::string> services_;
};

}  // namespace groups

#endif
