#ifndef VORN_PLATFORM_LINUX_TEXT_FILE_H
#define VORN_PLATFORM_LINUX_TEXT_FILE_H

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
 * @return 0, or an error code of the platform, which is not set: no such file is
 *         KLIBC_ERR_NOT_FOUND, one that can't be read KLIBC_ERR_RESOURCE, and what is no text
 *         file, too large or contains a zero byte KLIBC_ERR_BAD_PARAM
 */
int ReadTextFile(const char* path, std::string& text);

}  // namespace vornplatform

#endif
