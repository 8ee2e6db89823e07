#ifndef VORN_PLATFORM_LINUX_FILES_WHOLE_FILE_H
#define VORN_PLATFORM_LINUX_FILES_WHOLE_FILE_H

/**
 * @file
 * Reads small text files that anyone may have written.
 */

#include <cstddef>
#include <string>

namespace vornplatform {

/** Larger files are refused: a unit file has a few KB, a text bundle less. */
constexpr std::size_t kTextFileLimit = std::size_t{1} << 20;

/**
 * Reads a whole text file. Never waits: a FIFO, a device or a folder is refused without being read.
 *
 * @return 0, or an error code of the platform, which is not set: that of the system call that
 *         failed, or KLIBC_ERR_BAD_PARAM for what is no regular file, too large or contains a zero
 *         byte
 */
int ReadTextFile(const char* path, std::string& text);

/** The same, but std::bad_alloc when memory or descriptors are short. */
int ReadTextFileOrThrow(const char* path, std::string& text);

}  // namespace vornplatform

#endif
