// SPDX-License-Identifier: MIT
#include "platform/linux/shares/share_folders.h"

#include <syslog.h>

#include <algorithm>
#include <optional>

#include "platform/linux/files/folder_names.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/support/lost_sources.h"
#include "platform/linux/volumes/hidden_list.h"
#include "platform/linux/volumes/volume_table.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "share_folders";

/** Nothing for a volume that can't be listed. */
std::optional<std::vector<std::string>> FoldersOf(const std::string& volume) {
    try {
        return ReadFolderNames(volume, FolderEntries::kDirectories);
    } catch (const HostError& error) {
        PassOnShortage(error);
        return std::nullopt;
    }
}

void NoteUnlisted(const std::string& volumes) {
    if (volumes.empty()) {
        NoteWell(Source::kShareFolders);
        return;
    }
    NoteLost(Source::kShareFolders, "the top-level folders can't be listed of" + volumes,
             "let this command list them, or ask with --by volume");
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
    const std::vector<std::string> volumes = ReadVolumes();
    const std::vector<std::string> hidden = ReadHiddenList();
    std::vector<Share> shares;
    std::string unlisted;
    for (const std::string& volume : volumes) {
        const auto folders = FoldersOf(volume);
        if (!folders) {
            Log(LOG_WARNING, kSource, __LINE__, "Failed to list the volume " + Escape(volume));
            unlisted += ' ' + Escape(volume);
            continue;
        }
        for (const std::string& name : *folders) {
            if (!IsHiddenFolder(name, hidden)) {
                shares.push_back({name, volume + "/" + name});
            }
        }
    }
    NoteUnlisted(unlisted);
    return shares;
}

}  // namespace vornplatform
