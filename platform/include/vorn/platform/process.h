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
    int32_t ppid; /**< parent process id; 0 for a process without a parent */
} KLIBC_PROC;

VORN_PLATFORM_ASSERT(offsetof(KLIBC_PROC, ppid) == 4);
VORN_PLATFORM_ASSERT(sizeof(KLIBC_PROC) == 8);

/**
 * Looks a process up.
 *
 * @param process  receives a record, owned by the caller (KLIBCProcFree)
 * @return negative on failure, with the error code set: 0x0700 when there is no such process
 */
int KLIBCProcGetByPid(int pid, KLIBC_PROC** process);

/** Frees a record. Null is allowed. */
void KLIBCProcFree(KLIBC_PROC* process);

VORN_PLATFORM_END

#endif
