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
 * @param pattern  null
 * @param list     address of the caller's list handle, which may be moved
 * @param options  0 or KLIBC_ENUM_DIRECTORIES
 * @return 0 or more, or a negative value on failure: the error code is set and nothing appended
 */
int KLIBCFileEnumDir(const char* path, const char* pattern, KLIBC_SZLIST** list, int options);

/** 1 when the path is a directory; 0 when it is something else; negative when it can't be told. */
int KLIBCFileCheckDir(const char* path);

/**
 * Copies the value of a key in a section of an ini-style file into a buffer.
 *
 * @param buffer  receives the value, always NUL-terminated
 * @param size    size of the buffer in bytes
 * @return 0 when there is a value; any other result means that there is none, with the error
 *         code set
 */
int KLIBCFileGetSectionValue(const char* path, const char* section, const char* key, char* buffer,
                             int size);

VORN_PLATFORM_END

#endif
