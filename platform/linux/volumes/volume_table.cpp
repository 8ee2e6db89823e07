// SPDX-License-Identifier: MIT
#include "platform/linux/volumes/volume_table.h"

#include <mntent.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/linux/support/host_error.h"
#include "platform/linux/support/lost_sources.h"
#include "support/owner.h"
#include "support/text.h"

namespace vornplatform {
namespace {

constexpr std::string_view kPrefix = "/volume";

std::vector<std::string> ReadMountTable() {
    const support::Owner<FILE, endmntent> table(setmntent("/proc/self/mounts", "re"));
    if (!table) {
        throw HostError(errno);
    }
    std::vector<std::string> volumes = SelectVolumes(table.get());
    if (ferror(table.get()) != 0) {
        throw HostError(EIO);
    }
    return volumes;
}

}  // namespace

bool IsVolume(std::string_view path) {
    return IsOnVolume(path) && path.find('/', 1) == std::string_view::npos;
}

bool IsOnVolume(std::string_view path) {
    return support::ConsumePrefix(path, kPrefix) && !path.empty() && path.front() != '/';
}

std::vector<std::string> SelectVolumes(FILE* table) {
    // Device and mount point come first in a line and take at most 4 bytes for each of their
    // 4096; what doesn't fit are options, and getmntent_r drops it.
    std::vector<char> line(64 * 1024);
    std::vector<std::string> volumes;
    mntent entry;
    while (getmntent_r(table, &entry, line.data(), static_cast<int>(line.size())) != nullptr) {
        if (IsVolume(entry.mnt_dir) &&
            std::find(volumes.begin(), volumes.end(), entry.mnt_dir) == volumes.end()) {
            volumes.emplace_back(entry.mnt_dir);
        }
    }
    return volumes;
}

std::vector<std::string> ReadVolumes() {
    try {
        std::vector<std::string> volumes = ReadMountTable();
        NoteWell(Source::kVolumes);
        return volumes;
    } catch (const HostError& error) {
        NoteLost(Source::kVolumes,
                 std::string("the mount table (/proc/self/mounts) can't be read: ") +
                     std::strerror(error.Error()),
                 "mount /proc, and let this command read it");
        throw;
    }
}

}  // namespace vornplatform
