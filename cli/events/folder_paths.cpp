// SPDX-License-Identifier: MIT
#include "cli/events/folder_paths.h"

namespace cli {

std::optional<std::string> FolderPaths::PathOf(std::string_view folder) {
    std::string key(folder);
    const auto known = paths_.find(key);
    if (known != paths_.end()) {
        return known->second;
    }
    std::optional<std::string> path = find_(folder);
    if (path) {
        // All at once: which of them are used again nobody knows, and finding takes microseconds.
        if (paths_.size() >= most_) {
            Forget();
        }
        paths_.emplace(std::move(key), *path);
    }
    return path;
}

}  // namespace cli
