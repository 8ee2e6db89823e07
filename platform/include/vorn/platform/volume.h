// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_VOLUME_H
#define VORN_PLATFORM_VOLUME_H

/**
 * @file
 * Mounted data volumes.
 */

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

typedef struct VORN_MOUNT_VOL_INFO {
    char reserved[52];
    char szMountPath[60]; /**< NUL-terminated mount point, such as /volume1 */
    struct VORN_MOUNT_VOL_INFO* pNext;
} VORN_MOUNT_VOL_INFO;

VORN_PLATFORM_ASSERT(offsetof(VORN_MOUNT_VOL_INFO, szMountPath) == 52);
VORN_PLATFORM_ASSERT(offsetof(VORN_MOUNT_VOL_INFO, pNext) == 112);
VORN_PLATFORM_ASSERT(sizeof(VORN_MOUNT_VOL_INFO) == 120);

/**
 * Lists the mounted volumes.
 *
 * On a Linux host: the mount points of /proc/self/mounts that are "/volume" and more in one
 * component, each once. One that is longer than the record has room for is skipped, with a log
 * line.
 *
 * The chain belongs to the platform: a caller that has walked it to its end releases nothing. On a
 * Linux host it is the thread's, and stays until the thread asks again or ends.
 *
 * @param type, state, flags  which volumes; the library always passes 0, 3 and 2
 * @return the first record of the chain, or null when there is none or on failure, with the
 *         error code set
 */
VORN_MOUNT_VOL_INFO* VORNMountVolAllEnum(int type, int state, int flags);

/** Gives the chain back from this record on. Null is allowed. Does nothing on a Linux host. */
void VORNMountVolInfoFree(VORN_MOUNT_VOL_INFO* volume);

VORN_PLATFORM_END

#endif
