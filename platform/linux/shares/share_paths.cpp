// SPDX-License-Identifier: MIT
#include "platform/linux/shares/share_paths.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>

#include "platform/linux/volumes/volume_table.h"
#include "support/owner.h"

namespace vornplatform {
namespace {

/** Empty where the path can't be followed to its end. */
std::string RealPath(const std::string& path) {
    const support::Owner<char, std::free> real(realpath(path.c_str(), nullptr));
    if (!real && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return real ? std::string(real.get()) : std::string();
}

bool IsLink(const std::string& path) {
    char target;
    return readlink(path.c_str(), &target, 1) > 0;
}

bool IsName(const std::string& element) {
    return !element.empty() && element != "." && element != "..";
}

}  // namespace

const std::string& SharePaths::ResolveFolder(const std::string& folder) {
    const auto known = folders_.find(folder);
    return known != folders_.end() ? known->second
                                   : folders_.emplace(folder, RealPath(folder)).first->second;
}

std::string SharePaths::Resolve(const std::string& written) {
    const size_t slash = written.rfind('/');
    const std::string name = written.substr(slash + 1);
    std::string real;
    if (!IsName(name)) {
        real = RealPath(written);
    } else if (const std::string& folder = ResolveFolder(written.substr(0, slash + 1));
               !folder.empty()) {
        real = (folder == "/" ? "" : folder) + '/' + name;
        real = IsLink(real) ? RealPath(real) : real;
    }
    return real.empty() ? SharePath(written) : real;
}

std::vector<Share> SharesOnVolumes(const std::vector<Share>& written) {
    SharePaths paths;
    std::vector<Share> shares;
    for (const Share& share : written) {
        std::string path = paths.Resolve(share.path);
        if (IsOnVolume(path)) {
            shares.push_back({share.name, std::move(path), share.server});
        }
    }
    return shares;
}

}  // namespace vornplatform
