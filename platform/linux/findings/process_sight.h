// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_PROCESS_SIGHT_H
#define VORN_PLATFORM_LINUX_FINDINGS_PROCESS_SIGHT_H

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "platform/linux/findings/finding.h"

namespace vornplatform {

/** What of the host's processes is in sight. */
struct ProcessSight {
    std::vector<pid_t> unseen; /**< whose descriptors this caller may not read */
    bool hidesOthers = false;  /**< /proc does not even show process 1 */
    bool isPrivate = false;    /**< /proc shows a PID namespace inside that of the host */
    bool isUserSpace = false;  /**< the caller's user namespace is inside that of the host */
    bool isRoot = false;
    /** A process of each mount namespace but the caller's, by the namespace's name. */
    std::map<std::string, pid_t> mountSpaces;
};

/** Says of a container that nobody outside uses its volumes. */
constexpr char kPrivateVolumesPath[] = "/etc/vorn/private-volumes";

/** Tries to reach each process's descriptors, as a list of them does. Throws HostError. */
ProcessSight LookAtProcesses();

/**
 * Findings on what is not in sight; none when every process is.
 *
 * @param ownVolumes  whether nobody outside the PID namespace uses the volumes
 */
Findings JudgeSight(const ProcessSight& sight, bool ownVolumes);

}  // namespace vornplatform

#endif
