// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_HIDDEN_H
#define VORN_PLATFORM_HIDDEN_H

/**
 * @file
 * Directories that file servers and file systems hide from users.
 */

#include "vorn/platform/string_list.h"

VORN_PLATFORM_BEGIN

/**
 * Lists the texts that mark a path as hidden wherever they occur in it, such as "/.snapshot".
 *
 * On a Linux host: the lines of /etc/vorn/hidden-directories without blank lines and those that
 * begin with "#", or a built-in list where that file does not exist. A file that exists but can't
 * be read is a failure.
 *
 * @param list  address of the caller's list handle, which may be moved; texts are appended, none
 *              of them empty
 * @return 0 or more, or a negative value on failure with the error code set
 */
int VORNEAHiddenDirGet(KLIBC_SZLIST** list);

VORN_PLATFORM_END

#endif
