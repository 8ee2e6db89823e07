// SPDX-License-Identifier: MIT
#ifndef VORN_SUPPORT_CONTROL_GROUPS_H
#define VORN_SUPPORT_CONTROL_GROUPS_H

/**
 * @file
 * Texts of `/proc/<pid>/cgroup`: the paths of a process's control groups.
 */

#include <optional>
#include <string_view>

#include "support/text.h"

namespace support {

// 3:cpu,cpuacct:/user.slice
// 1:name=systemd:/user.slice/user-0.slice/session-1.scope
// 0::/user.slice/user-0.slice/session-1.scope
/**
 * The path in a hierarchy.
 *
 * @param controller  one that it has, or its name such as "name=systemd"; empty for that of v2
 */
inline std::optional<std::string_view> GroupPath(std::string_view cgroup,
                                                 std::string_view controller) {
    while (!cgroup.empty()) {
        std::string_view line = TakeLine(cgroup);
        const std::string_view number = TakeUntil(line, ':');
        const std::string_view controllers = TakeUntil(line, ':');
        const bool found = controller.empty() ? number == "0" && controllers.empty()
                                              : HasPart(controllers, controller);
        if (found && StartsWith(line, "/")) {
            return line;
        }
    }
    return std::nullopt;
}

}  // namespace support

#endif
