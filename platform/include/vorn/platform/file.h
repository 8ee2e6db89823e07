// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_FILE_H
#define VORN_PLATFORM_FILE_H

/**
 * @file
 * Directory listing, the directory test and values of ini-style files.
 */

#include "vorn/platform/string_list.h"

VORN_PLATFORM_BEGIN

enum {
    KLIBC_ENUM_DIRECTORIES = 0x40 /**< KLIBCFileEnumDir: directories only */
};

/**
 * Appends the names (not full paths) of a directory's entries to a list, without "." and "..".
 *
 * @param path     the directory
 * On a Linux host: open, getdents64. A symbolic link is no directory, whatever it points to.
 *
 * @param pattern  null; there is no other choice on a Linux host (0x0D00)
 * @param list     address of the caller's list handle, which may be moved
 * @param options  0 or KLIBC_ENUM_DIRECTORIES
 * @return the number of names appended, or a negative value on failure: the error code is set
 *         (0x0700 no such path, 0x0D00 not a directory) and nothing appended
 */
int KLIBCFileEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options);

/**
 * Tells whether a path is a directory. Symbolic links are followed.
 *
 * On a Linux host: statx with AT_STATX_DONT_SYNC, which asks no remote server for what the kernel
 * knows; stat where the kernel or the file system refuses that.
 *
 * @return 1 when it is; 0 when it is something else; negative when it can't be told, with the error
 *         code set
 */
int KLIBCFileCheckDir(const char* path);

/** @name Where the name of a process's service is: texts, to be joined with others. @{ */

/** The hierarchy of control groups whose paths name units, as /proc/<pid>/cgroup calls it. */
#define VORN_UNIT_HIERARCHY "name=systemd"

/** The section of a unit's file that names the service, by its keys Name and NameI18n. */
#define VORN_UNIT_SECTION "X-Vornalis"

/** @} */

/**
 * Copies the value of a key in a section of an ini-style file, such as a unit file of systemd, into
 * a buffer.
 *
 * Names are compared byte by byte. When the key is assigned repeatedly, over repeated sections too,
 * the last assignment that isn't empty counts. A line that begins with "#" or ";" is a comment, and
 * one that ends in a backslash goes on in the next. The value is taken as it stands, without the
 * blanks at its ends: quotes, escapes and specifiers aren't interpreted. Only the file itself is
 * read, no drop-in of a unit (unit.d/...).
 *
 * A file that can't be such a file is refused at once: one above 1 MiB or with a zero byte in it,
 * and whatever is no regular file.
 *
 * @param buffer  receives the value, always NUL-terminated; one that doesn't fit is cut at a whole
 *                UTF-8 character. Empty when there is no value.
 * @param size    size of the buffer in bytes
 * @return 0 when there is a value; any other result means that there is none, with the error
 *         code set: KLIBC_ERR_NOT_FOUND when file, section or key is missing, KLIBC_ERR_RESOURCE
 *         when the file can't be read, KLIBC_ERR_BAD_PARAM when it is refused or an argument is
 *         null or empty
 */
int KLIBCFileGetSectionValue(const char* path, const char* section, const char* key, char* buffer,
                             int size);

VORN_PLATFORM_END

#endif
