// SPDX-License-Identifier: MIT
#include "cli/question/holders/mount_table.h"

#include <sys/sysmacros.h>

#include <algorithm>

#include "support/mount_info.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

/** "8:1" */
std::optional<dev_t> ParseDevice(std::string_view text) {
    const auto major = support::TakeNumber<unsigned>(text);
    if (!major || !support::ConsumePrefix(text, ":")) {
        return std::nullopt;
    }
    const auto minor = support::ParseNumber<unsigned>(text);
    return minor ? std::optional<dev_t>(makedev(*major, *minor)) : std::nullopt;
}

}  // namespace

std::string Joined(std::string_view root, std::string_view rest) {
    if (rest.empty() || rest == "/") {
        return std::string(root);
    }
    std::string path(root == "/" ? "" : root);
    path += rest.front() == '/' ? "" : "/";
    path += rest;
    return path;
}

std::optional<std::string_view> Below(std::string_view path, std::string_view root) {
    if (!support::IsAtOrBelow(path, root)) {
        return std::nullopt;
    }
    return root == "/" ? (path == "/" ? std::string_view() : path) : path.substr(root.size());
}

std::optional<Mount> ParseMount(std::string_view line) {
    const auto info = support::ParseMountInfo(line);
    const auto id = info ? support::ParseNumber<MountId>(info->id) : std::nullopt;
    const auto parent = info ? support::ParseNumber<MountId>(info->parent) : std::nullopt;
    const auto device = info ? ParseDevice(info->device) : std::nullopt;
    if (!id || !parent || !device) {
        return std::nullopt;
    }
    Mount mount;
    mount.id = *id;
    mount.parent = *parent;
    mount.device = *device;
    mount.root = info->root;
    mount.point = info->point;
    mount.groups = info->groups;
    mount.type = info->type;
    return mount;
}

void MountTable::Add(std::string_view text, std::string_view root, bool own) {
    while (!text.empty()) {
        std::optional<Mount> mount = ParseMount(support::TakeLine(text));
        if (mount && index_.try_emplace(mount->id, mounts_.size()).second) {
            mount->point = Joined(root, mount->point);
            mount->own = own;
            mounts_.push_back(std::move(*mount));
        }
    }
}

const Mount* MountTable::Find(MountId id) const {
    const auto found = index_.find(id);
    return found == index_.end() ? nullptr : &mounts_[found->second];
}

bool MountTable::Knows(dev_t device) const {
    return std::any_of(mounts_.begin(), mounts_.end(),
                       [&](const Mount& mount) { return mount.device == device; });
}

std::optional<std::string> PathInside(const Mount& mount, std::string_view text) {
    const auto rest = Below(text, mount.point);
    return rest ? std::optional<std::string>(Joined(mount.root, *rest)) : std::nullopt;
}

}  // namespace cli
