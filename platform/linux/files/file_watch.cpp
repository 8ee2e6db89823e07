// SPDX-License-Identifier: MIT
#include "platform/linux/files/file_watch.h"

#include <sys/stat.h>

#include <algorithm>

namespace vornplatform {
namespace {

/** Empty for a path that can't be examined. */
std::string Stamp(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) {
        return {};
    }
    return std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino) + ":" +
           std::to_string(info.st_size) + ":" + std::to_string(info.st_mtim.tv_sec) + "." +
           std::to_string(info.st_mtim.tv_nsec);
}

}  // namespace

void FileWatch::Add(const std::string& path) {
    stamps_.emplace_back(path, Stamp(path));
}

bool FileWatch::IsUnchanged() const {
    return std::all_of(stamps_.begin(), stamps_.end(),
                       [](const auto& stamp) { return Stamp(stamp.first) == stamp.second; });
}

}  // namespace vornplatform
