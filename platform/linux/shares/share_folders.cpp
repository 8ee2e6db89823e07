#include "platform/linux/shares/share_folders.h"

#include <syslog.h>

#include <algorithm>
#include <optional>

#include "platform/linux/files/folder_names.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/volumes/hidden_list.h"
#include "platform/linux/volumes/volume_table.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "share_folders";

std::vector<std::string> FoldersOf(const std::string& volume) {
    std::optional<std::vector<std::string>> names;
    try {
        names = ReadFolderNames(volume, FolderEntries::kDirectories);
    } catch (const HostError& error) {
        PassOnShortage(error);
    }
    if (!names) {
        Log(LOG_WARNING, kSource, __LINE__, "Failed to list the volume " + Escape(volume));
    }
    return names.value_or(std::vector<std::string>());
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
    try {
        volumes = ReadVolumes();
        hidden = ReadHiddenList();
    } catch (const HostError& error) {
        PassOnShortage(error);
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
