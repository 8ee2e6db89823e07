#ifndef VORN_PLATFORM_LINUX_FILES_FOLDER_NAMES_H
#define VORN_PLATFORM_LINUX_FILES_FOLDER_NAMES_H

#include <string>
#include <vector>

namespace vornplatform {

enum class FolderEntries { kAll, kDirectories };

/**
 * Reads the names in a folder, sorted. Symbolic links count as what they are.
 *
 * Memory that is short is never taken for a folder that is empty: std::bad_alloc.
 *
 * @return 0, or the errno value of a folder that can't be listed
 */
int ReadFolderNames(const std::string& folder, FolderEntries kind, std::vector<std::string>& names);

}  // namespace vornplatform

#endif
