// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_PROCESSORS_H
#define VORN_CLI_HOST_PROCESSORS_H

/**
 * @file
 * How many processors this process may use.
 */

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

/** Processors that "cpu.max" of control groups v2 allows, such as 1.5; nothing without a limit. */
std::optional<double> ParseCpuMax(std::string_view text);

/** The same from "cpu.cfs_quota_us" and "cpu.cfs_period_us" of v1. */
std::optional<double> ParseCpuQuota(std::string_view quota, std::string_view period);

/** Where processor time of a process is limited. */
struct CpuGroup {
    bool unified;                     /**< v2, otherwise v1 */
    std::vector<std::string> folders; /**< its group's and those of all groups above */

    bool operator==(const CpuGroup& other) const {
        return unified == other.unified && folders == other.folders;
    }
};

/**
 * The groups that limit a process, as far as they are mounted.
 *
 * @param cgroup  text of /proc/<pid>/cgroup
 * @param mounts  text of /proc/<pid>/mountinfo
 */
std::vector<CpuGroup> CpuGroups(std::string_view cgroup, std::string_view mounts);

/**
 * At least 1: those of sched_getaffinity, and no more than the control group's quota and its
 * ancestors' allow. Part of one counts as one.
 */
size_t UsableProcessors();

}  // namespace cli

#endif
