// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_SERVICE_H
#define VORN_PLATFORM_SERVICE_H

/**
 * @file
 * Services of the host. Optional, like findings: a program that asks declares the operation weak.
 */

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

enum {
    VORN_SERVICE_INSTALLED = 1, /**< a daemon of it is installed */
    VORN_SERVICE_RUNNING = 2,   /**< a process runs as this service */
    VORN_SERVICE_ELSEWHERE = 4  /**< a daemon of it runs, but not as this service */
};

/**
 * Tells of a service whether it is installed and running.
 *
 * On a Linux host: the service is a slice of systemd's. Its daemons are the services whose unit
 * files and drop-ins put them into it (Slice=); a process runs in it when its control group lies
 * below it, in the unified hierarchy or in that of the name systemd (/proc/<pid>/cgroup).
 *
 * @param unit  its unit, such as "sshd.slice"
 * @return a sum of VORN_SERVICE_*, or a negative value on failure with the error code set: 0x0D00
 *         without a unit, 0x0100 when a resource is short
 */
int VORNServiceStateGet(const char* unit);

VORN_PLATFORM_END

#endif
