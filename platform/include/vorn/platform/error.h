// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_ERROR_H
#define VORN_PLATFORM_ERROR_H

/**
 * @file
 * The platform's error code, one per thread.
 *
 * An operation that fails sets it; one that succeeds leaves it as it was, so it is to be read
 * right after a failure and never as a test for one.
 */

#include "vorn/platform/layout.h"

VORN_PLATFORM_BEGIN

enum {
    KLIBC_ERR_RESOURCE = 0x0100,  /**< a resource or a permission could not be obtained */
    KLIBC_ERR_NOT_FOUND = 0x0700, /**< a required file does not exist */
    KLIBC_ERR_BAD_PARAM = 0x0D00, /**< invalid argument or path */
    KLIBC_ERR_INTERNAL = 0x2A00   /**< an internal processing step failed */
};

/**
 * Records an error for the calling thread. Cannot fail.
 *
 * @param code    one of the codes above
 * @param source  name of the source file that found the fault, without extension; only read
 *                during the call
 * @param line    line number in that source
 */
void KLIBCErrSetEx(int code, const char* source, int line);

/** The code last recorded for the calling thread; 0 if there has been none. */
int KLIBCErrGet(void);

VORN_PLATFORM_END

#endif
