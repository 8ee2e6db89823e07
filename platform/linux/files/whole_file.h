// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FILES_WHOLE_FILE_H
#define VORN_PLATFORM_LINUX_FILES_WHOLE_FILE_H

/**
 * @file
 * Reads small text files that anyone may have written.
 */

#include <cstddef>
#include <optional>
#include <string>

namespace vornplatform {

/** Larger files are refused: a unit file has a few KB, a text bundle less. */
constexpr std::size_t kWholeFileLimit = std::size_t{1} << 20;

/**
 * Reads a whole text file. Never waits: a FIFO, a device or a folder is refused without being read.
 *
 * @return nothing when there is no such file
 * @throw HostError  of the call that failed; EINVAL for what is no regular file, too large or
 *                   contains a zero byte
 */
std::optional<std::string> ReadWholeFile(const std::string& path);

}  // namespace vornplatform

#endif
