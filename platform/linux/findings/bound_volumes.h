// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_BOUND_VOLUMES_H
#define VORN_PLATFORM_LINUX_FINDINGS_BOUND_VOLUMES_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/findings/process_sight.h"

namespace vornplatform {

/** A line of /proc/<pid>/mountinfo, as far as it tells what lies where. */
struct MountEntry {
    std::string device; /**< numbers of the file system, such as "8:1" */
    std::string root;   /**< the folder in the file system that is mounted */
    std::string point;
};

/** Reads a text in the form of /proc/<pid>/mountinfo; lines of another form are left out. */
std::vector<MountEntry> ParseMounts(std::string_view text);

/** Volumes as they are mounted last, so that none is hidden by a later one. */
std::vector<MountEntry> VolumesAmong(const std::vector<MountEntry>& mounts);

/** Where a mount shows what a volume holds under a path that is on no volume; empty otherwise. */
std::string PlaceElsewhere(const MountEntry& volume, const MountEntry& mount);

/**
 * Findings on volumes that are in sight under another path, in the caller's mount namespace and
 * in those of other processes: what is opened that way is not listed. None when there are none.
 */
Findings FindBoundVolumes(const ProcessSight& sight);

}  // namespace vornplatform

#endif
