#ifndef VORN_PLATFORM_SHARE_H
#define VORN_PLATFORM_SHARE_H

/**
 * @file
 * Shared folders.
 */

#include "vorn/platform/string_list.h"

VORN_PLATFORM_BEGIN

typedef struct VORN_SHARE {
    void* reserved[2];
    const char* szPath; /**< absolute path of the share, such as /volume1/photo */
} VORN_SHARE;

VORN_PLATFORM_ASSERT(offsetof(VORN_SHARE, szPath) == 16);
VORN_PLATFORM_ASSERT(sizeof(VORN_SHARE) == 24);

/**
 * Lists the names of the shared folders.
 *
 * @param names  address of the caller's list handle, which may be moved; names are appended
 * @param flags  which shares; the library always passes 0x7F0F
 * @return the number of names appended, 0 when there is no share, negative on failure with the
 *         error code set
 */
int VORNShareEnum(KLIBC_SZLIST** names, int flags);

/**
 * Looks a share up by name.
 *
 * @param name   a name that VORNShareEnum listed
 * @param share  address of a holder that is null at first and is handed back on each further
 *               call; receives a record that belongs to the platform and is never released by
 *               the caller
 * @return negative on failure, with the error code set
 */
int VORNShareGet(const char* name, VORN_SHARE** share);

VORN_PLATFORM_END

#endif
