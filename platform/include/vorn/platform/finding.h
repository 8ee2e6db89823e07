// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_FINDING_H
#define VORN_PLATFORM_FINDING_H

/**
 * @file
 * What the platform knows of itself: whether its answers are whole, and what the host lacks.
 *
 * Optional: a platform may come without it. A program that asks declares the operation weak
 * (`#pragma weak VORNFindingGet`) and looks whether it is there.
 */

#include <stdint.h>

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

enum {
    VORN_FINDING_OK = 0,      /**< as it should be */
    VORN_FINDING_WARNING = 1, /**< worth knowing */
    VORN_FINDING_MISSING = 2  /**< something is missing that a full answer takes */
};

enum {
    /**
     * What lists of open files lack, alone: sources that were asked by this process and failed,
     * processes that can't be examined, volumes that are in sight under another path. Costs two
     * calls a process, reads a mount table, starts no program.
     */
    VORN_FINDINGS_OF_ANSWERS = 0,
    /** Looks at the whole host, asks each source, and also tells what is well. */
    VORN_FINDINGS_OF_HOST = 1
};

typedef struct VORN_FINDING {
    const char* szSubject; /**< what it is about, such as "shares"; never null nor empty */
    int32_t state;         /**< VORN_FINDING_OK and the like */
    int32_t costsAnswers;  /**< 1 where lists of open files lack something by it, else 0 */
    const char* szText;    /**< what was found, in one sentence; never null nor empty */
    const char* szAdvice;  /**< what to do; empty where there is nothing to do, never null */
    char reserved[32];
} VORN_FINDING;

VORN_PLATFORM_ASSERT(offsetof(VORN_FINDING, szSubject) == 0);
VORN_PLATFORM_ASSERT(offsetof(VORN_FINDING, state) == 8);
VORN_PLATFORM_ASSERT(offsetof(VORN_FINDING, costsAnswers) == 12);
VORN_PLATFORM_ASSERT(offsetof(VORN_FINDING, szText) == 16);
VORN_PLATFORM_ASSERT(offsetof(VORN_FINDING, szAdvice) == 24);
VORN_PLATFORM_ASSERT(sizeof(VORN_FINDING) == 64);

/**
 * Tells what is known of the platform's answers or of the host.
 *
 * Texts are English sentences for people, of bytes as the host names things; programs go by state
 * and costsAnswers. The findings of answers are those of the host that cost answers, as far as
 * this process has asked: a list by volume lacks nothing where only the shares can't be had.
 *
 * On a Linux host: a process counts as examined when its folder of descriptors and their links may
 * be read (faccessat, readlinkat in /proc), whatever rights the caller seems to have. Processes
 * outside the PID namespace that /proc shows are in no list, nor are files that are opened by way
 * of a bind mount of a volume, here or in the mount namespace of another process. A container
 * whose volumes nobody outside uses says so by the file /etc/vorn/private-volumes.
 *
 * Safe for use by several threads.
 *
 * @param scope     VORN_FINDINGS_OF_ANSWERS or VORN_FINDINGS_OF_HOST
 * @param findings  receives an array in one block, texts included; the caller releases it with
 *                  free(). Null when there is none
 * @return the number of findings, or a negative value on failure with the error code set: 0x0D00
 *         for another scope or without a place for the array, 0x0100 when memory runs out
 */
int VORNFindingGet(int scope, VORN_FINDING** findings);

VORN_PLATFORM_END

#endif
