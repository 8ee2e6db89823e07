// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FILES_FOLDER_NAMES_H
#define VORN_PLATFORM_LINUX_FILES_FOLDER_NAMES_H

#include <optional>
#include <string>
#include <vector>

namespace vornplatform {

enum class FolderEntries { kAll, kDirectories };

/**
 * Reads the names in a folder, sorted. Symbolic links count as what they are.
 *
 * @return nothing when there is no such folder, or this caller may not list it
 * @throw HostError  of a folder that can't be opened, or not be read to its end
 */
std::optional<std::vector<std::string>> ReadFolderNames(const std::string& path,
                                                        FolderEntries kind);

}  // namespace vornplatform

#endif
