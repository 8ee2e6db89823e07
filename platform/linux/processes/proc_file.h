// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_PROCESSES_PROC_FILE_H
#define VORN_PLATFORM_LINUX_PROCESSES_PROC_FILE_H

#include <cstddef>
#include <optional>
#include <string>

/**
 * @file
 * Files of /proc, which have no size to go by. Nothing comes of a file that isn't there, whose
 * process has gone or that this caller may not read; HostError of any other failure.
 */

namespace vornplatform {

/** The beginning of a file that the kernel writes in one piece, up to 4 KiB; mostly in one read. */
std::optional<std::string> ReadProcHead(const std::string& path);

/** A file as a whole, up to a limit at which the text is cut off. */
std::optional<std::string> ReadProcFile(const std::string& path, std::size_t limit);

}  // namespace vornplatform

#endif
