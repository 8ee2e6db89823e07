#include "platform/linux/shares/share_folders.h"

#include <syslog.h>

#include <algorithm>

#include "platform/linux/files/folder_names.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/volumes/hidden_names.h"
#include "platform/linux/volumes/volume_table.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "share_folders";

std::vector<std::string> FoldersOf(const std::string& volume) {
    std::vector<std::string> names;
    if (ReadFolderNames(volume, FolderEntries::kDirectories, names) != 0) {
        Log(LOG_WARNING, kSource, __LINE__, "Failed to list the volume " + Escape(volume));
    }
    return names;
}

}  // namespace

bool IsHiddenFolder(std::string_view name, const std::vector<std::string>& hidden) {
    if (name.empty() || name.front() == '.' || name.front() == '@') {
        return true;
    }
    const std::string path = "/" + std::string(name) + "/";
    return std::any_of(hidden.begin(), hidden.end(), [&path](const std::string& text) {
        return path.find(text) != std::string::npos;
    });
}

std::vector<Share> FolderShares() {
    std::vector<std::string> volumes;
    std::vector<std::string> hidden;
    if (ReadVolumes(volumes) != 0 || ReadHiddenNames(hidden) != 0) {
        Log(LOG_WARNING, kSource, __LINE__, "Failed to read volumes or hidden directories");
    }
    std::vector<Share> shares;
    for (const std::string& volume : volumes) {
        for (const std::string& name : FoldersOf(volume)) {
            if (!IsHiddenFolder(name, hidden)) {
                shares.push_back({name, volume + "/" + name});
            }
        }
    }
    return shares;
}

}  // namespace vornplatform
