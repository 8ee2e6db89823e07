// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_SHARE_H
#define VORN_PLATFORM_SHARE_H

/**
 * @file
 * Shared folders.
 */

#include "vorn/platform/string_list.h"

VORN_PLATFORM_BEGIN

enum {
    VORN_SHARE_ALL = 0x7F0F /**< VORNShareEnum: shares of every kind */
};

typedef struct VORN_SHARE {
    void* reserved[2];
    const char* szPath; /**< absolute path of the share, such as /volume1/photo */
} VORN_SHARE;

VORN_PLATFORM_ASSERT(offsetof(VORN_SHARE, szPath) == 16);
VORN_PLATFORM_ASSERT(sizeof(VORN_SHARE) == 24);

/**
 * Lists the names of the shared folders.
 *
 * On a Linux host these are what it exports below a volume: Samba's shares (testparm -s, and the
 * files of net usershare), then the NFS exports (/etc/exports, /etc/exports.d/<name>.exports),
 * named by their last path element. Where /etc/samba/smb.conf and the exports give none, each
 * top-level directory of each mounted volume is a share, unless it is hidden. A second share of one
 * name is called "name (2)". What the exports give is kept in memory until one of these files
 * changes. A source that can't be read is left out, with a log line. Safe from any thread.
 *
 * @param names  address of the caller's list handle, which may be moved; names are appended
 * @param flags  which shares; the library always passes VORN_SHARE_ALL. Ignored on a Linux host
 * @return the number of names appended, 0 when there is no share, negative on failure with the
 *         error code set
 */
int VORNShareEnum(KLIBC_SZLIST** names, int flags);

/**
 * Looks a share up by name, among those that the thread's last VORNShareEnum found.
 *
 * On a Linux host there is one record a thread; the next call of either operation replaces it.
 *
 * @param name   a name that VORNShareEnum listed
 * @param share  address of a holder that is null at first and is handed back on each further
 *               call; receives a record that belongs to the platform and is never released by
 *               the caller
 * @return 0, or negative on failure with the error code set: 0x0700 when there is no such share
 */
int VORNShareGet(const char* name, VORN_SHARE** share);

VORN_PLATFORM_END

#endif
