// SPDX-License-Identifier: MIT
#include "platform/linux/files/folder_names.h"

#include <algorithm>
#include <cerrno>

#include "platform/linux/support/host_error.h"
#include "support/folder.h"

namespace vornplatform {

std::optional<std::vector<std::string>> ReadFolderNames(const std::string& path,
                                                        FolderEntries kind) {
    const support::Descriptor folder = support::OpenFolder(path.c_str());
    if (!folder) {
        if (IsNothingThere(errno) || errno == ENOTDIR || IsWithheld(errno)) {
            return std::nullopt;
        }
        throw HostError(errno);
    }
    std::vector<std::string> names;
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        if (kind == FolderEntries::kAll || support::IsFolder(folder.Get(), entry)) {
            names.emplace_back(entry.d_name);
        }
        return true;
    });
    if (error != 0) {
        throw HostError(error);
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace vornplatform
