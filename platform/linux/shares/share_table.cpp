// SPDX-License-Identifier: MIT
#include "platform/linux/shares/share_table.h"

#include <climits>
#include <filesystem>
#include <utility>

#include "platform/linux/volumes/volume_table.h"
#include "support/text.h"

namespace vornplatform {

std::string WrittenPath(std::string_view path) {
    const bool plain = path.size() < PATH_MAX && path.find('%') == std::string_view::npos &&
                       path.find('\0') == std::string_view::npos;
    if (!plain || path.empty() || path.front() != '/') {
        return {};
    }
    return std::string(support::TrimRight(path, "/"));
}

std::string SharePath(std::string_view path) {
    const std::string normal = std::filesystem::path(WrittenPath(path)).lexically_normal().string();
    const std::string_view place = support::TrimRight(normal, "/");
    return IsOnVolume(place) ? std::string(place) : std::string();
}

ShareTable::ShareTable(std::vector<Share> shares) : shares_(std::move(shares)) {
    std::unordered_map<std::string, int> counts;
    for (size_t i = 0; i < shares_.size(); ++i) {
        const std::string base = shares_[i].name;
        int& count = counts[base];
        // The loop, because a share may itself be named "photo (2)".
        while (!indexes_.emplace(shares_[i].name, i).second) {
            count = count == 0 ? 2 : count + 1;
            shares_[i].name = base + " (" + std::to_string(count) + ")";
        }
    }
}

const Share* ShareTable::Find(const std::string& name) const {
    const auto found = indexes_.find(name);
    return found == indexes_.end() ? nullptr : &shares_[found->second];
}

}  // namespace vornplatform
