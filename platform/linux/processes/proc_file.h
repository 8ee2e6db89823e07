#ifndef VORN_PLATFORM_LINUX_PROCESSES_PROC_FILE_H
#define VORN_PLATFORM_LINUX_PROCESSES_PROC_FILE_H

#include <cstddef>
#include <string>

/**
 * @file
 * Files of /proc, which have no size to go by. Both throw std::bad_alloc when memory or descriptors
 * are short.
 */

namespace vornplatform {

/**
 * The beginning of a file, up to 4 KiB, in one read.
 *
 * @return the text; empty, with errno set, when the file cannot be read
 */
std::string ReadProcHead(const std::string& path);

/**
 * Reads a file as a whole, up to a limit at which the text is cut off.
 *
 * @return false, with errno set, when the file cannot be read
 */
bool ReadProcFile(const std::string& path, std::size_t limit, std::string& text);

}  // namespace vornplatform

#endif
