// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_PROCESS_H
#define VORN_PLATFORM_PROCESS_H

/**
 * @file
 * Processes.
 */

#include <stdint.h>

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

typedef struct KLIBC_PROC {
    int32_t reserved;
    int32_t ppid; /**< parent process id; 0 for one without a parent in this pid namespace */
} KLIBC_PROC;

VORN_PLATFORM_ASSERT(offsetof(KLIBC_PROC, ppid) == 4);
VORN_PLATFORM_ASSERT(sizeof(KLIBC_PROC) == 8);

/**
 * Looks a process up (/proc/<pid>/stat; right whatever the name of the process holds).
 *
 * @param pid      above 0
 * @param process  receives a record, owned by the caller (KLIBCProcFree); untouched on failure
 * @return 0, or a negative value on failure with the error code set: 0x0700 when there is no such
 *         process, or none that this caller may see, 0x0D00 for an impossible argument, 0x0100 when
 *         a resource is short
 */
int KLIBCProcGetByPid(int pid, KLIBC_PROC** process);

/** Frees a record. Null is allowed. */
void KLIBCProcFree(KLIBC_PROC* process);

VORN_PLATFORM_END

#endif
