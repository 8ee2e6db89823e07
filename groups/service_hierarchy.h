// SPDX-License-Identifier: MIT
#ifndef VORN_GROUPS_SERVICE_HIERARCHY_H
#define VORN_GROUPS_SERVICE_HIERARCHY_H

/**
 * @file
 * Whether a host has the hierarchy name=systemd, and why not.
 *
 * A host with control groups v1, or with both, has it from systemd. On one with v2 alone the units
 * of vorn-slices mount it, where the kernel lets them.
 */

#include <string>
#include <string_view>
#include <vector>

namespace groups {

/** Where the units of vorn-slices mount the hierarchy. */
constexpr char kServicesFolder[] = "/run/vorn/services";

/** Where systemd has control groups v2. */
constexpr char kUnifiedFolder[] = "/sys/fs/cgroup";

enum class ServiceHierarchy {
    kThere,    /**< processes have a line of it */
    kRefused,  /**< the kernel was told to do without (cgroup_no_v1=named) */
    kConfined, /**< this is a container, or PID 1 lacks CAP_SYS_ADMIN: none can be mounted here */
    kAbsent    /**< nothing stands against mounting it */
};

/** What the answer is made from. */
struct HierarchyFacts {
    std::string groups;      /**< /proc/self/cgroup */
    std::string commandLine; /**< /proc/cmdline */
    std::string init;        /**< /proc/1/status */
    std::string
        namespaceOfGroups; /**< where /proc/self/ns/cgroup leads; empty where it is unknown */
};

ServiceHierarchy JudgeHierarchy(const HierarchyFacts& facts);

/** Of this host, without rights. */
ServiceHierarchy FindHierarchy();

/** Why there is none, for people; empty where it is there. */
std::string_view ReasonOf(ServiceHierarchy hierarchy);

/** Mount points of the hierarchy, from a text of `/proc/<pid>/mountinfo`. */
std::vector<std::string> HierarchyMounts(std::string_view mounts);

}  // namespace groups

#endif
