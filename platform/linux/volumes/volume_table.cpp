#include "platform/linux/volumes/volume_table.h"

#include <mntent.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/linux/support/shortage.h"

namespace vornplatform {
namespace {

constexpr std::string_view kPrefix = "/volume";

struct TableCloser {
    void operator()(FILE* table) const { endmntent(table); }
};

}  // namespace

bool IsVolume(std::string_view path) {
    return IsOnVolume(path) && path.find('/', 1) == std::string_view::npos;
}

bool IsOnVolume(std::string_view path) {
    return path.substr(0, kPrefix.size()) == kPrefix && path.size() > kPrefix.size() &&
           path[kPrefix.size()] != '/';
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

int ReadVolumes(std::vector<std::string>& volumes) {
    const std::unique_ptr<FILE, TableCloser> table(setmntent("/proc/self/mounts", "re"));
    if (!table) {
        ThrowOnShortage(errno);
        return errno;
    }
    volumes = SelectVolumes(table.get());
    return ferror(table.get()) != 0 ? EIO : 0;
}

}  // namespace vornplatform
