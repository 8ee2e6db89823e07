// SPDX-License-Identifier: MIT
#include "cli/question/holders/targets.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "cli/failure.h"
#include "cli/text/escape.h"
#include "support/descriptor.h"
#include "support/text.h"

namespace cli {
namespace {

constexpr const char* kBtrfs = "btrfs";

[[noreturn]] void Fail(const std::string& path, const char* why) {
    throw Failure(fmt::format("can't tell about '{}': {}", Escaped(path, true), why));
}

}  // namespace

Targets::Targets(const std::vector<std::string>& paths, const MountTable& mounts)
    : mounts_(mounts) {
    for (const std::string& path : paths) {
        targets_.push_back(Resolve(path));
    }
}

Target Targets::Resolve(const std::string& path) const {
    // As a place alone: what lies there isn't opened, and its file system isn't asked.
    const support::Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
    const std::string link = fmt::format("/proc/self/fd/{}", place.Get());
    const auto identity = place ? IdentityAt(AT_FDCWD, link.c_str()) : std::nullopt;
    const auto text = identity ? LinkText(AT_FDCWD, link.c_str()) : std::nullopt;
    if (!text) {
        Fail(path, std::strerror(errno));
    }
    const Mount* mount = mounts_.Find(identity->mount);
    const auto inside = mount != nullptr ? PathInside(*mount, *text) : std::nullopt;
    if (!inside) {
        Fail(path, "its mount isn't in /proc/self/mountinfo");
    }
    Target target;
    target.path = *text;
    target.inside = *inside;
    target.device = mount->device;
    target.identity = *identity;
    target.folder = identity->mode == 0 || S_ISDIR(identity->mode);
    target.btrfs = mount->type == kBtrfs;
    target.overlay = mount->type == "overlay";
    return target;
}

void Targets::Prepare() {
    for (const Target& target : targets_) {
        devices_.insert(target.device);
        devices_.insert(target.identity.device);
    }
    for (const Mount& mount : mounts_.All()) {
        MountPlace known{&mount, {}};
        for (size_t i = 0; i < targets_.size(); ++i) {
            const Target& target = targets_[i];
            if (mount.device != target.device) {
                continue;
            }
            if (!target.folder ||
                (support::IsAtOrBelow(target.inside, mount.root) && target.inside != mount.root)) {
                known.places.push_back({Place::kUnknown, i});
            } else if (support::IsAtOrBelow(mount.root, target.inside)) {
                known.places.push_back({Place::kInside, i});
            }
        }
        known_.emplace(mount.id, std::move(known));
    }
}

bool Targets::IsSameFile(const Target& target, dev_t device, ino_t inode) {
    return inode == target.identity.inode &&
           (device == target.identity.device || device == target.device);
}

Place Targets::PlaceIn(size_t number, const Mount& mount, const AskText& askText) const {
    const auto text = askText();
    const auto inside = text ? PathInside(mount, *text) : std::nullopt;
    if (!inside) {
        return {Place::kUnknown, number};
    }
    return {
        support::IsAtOrBelow(*inside, targets_[number].inside) ? Place::kInside : Place::kElsewhere,
        number};
}

Place Targets::PlaceOf(const Identity& identity, const AskText& askText) const {
    const auto known = known_.find(identity.mount);
    if (known == known_.end()) {
        return PlaceWithoutMount(identity);
    }
    Place best;
    for (const Place& candidate : known->second.places) {
        Place place = candidate;
        const Target& target = targets_[place.target];
        if (!target.folder) {
            place.kind = IsSameFile(target, identity.device, identity.inode) ? Place::kInside
                                                                             : Place::kElsewhere;
        } else if (place.kind == Place::kUnknown) {
            place = PlaceIn(place.target, *known->second.mount, askText);
        }
        if (place.kind == Place::kInside) {
            return place;
        }
        best = place.kind == Place::kUnknown ? place : best;
    }
    return best;
}

/** Of a mount that nobody has any more, as one that was unmounted lazily. */
Place Targets::PlaceWithoutMount(const Identity& identity) const {
    return MayConcern(identity.device) ? PlaceOnDevice(identity.device, identity.inode) : Place{};
}

bool Targets::IsWhole(const Target& target, dev_t device) {
    constexpr ino_t kSubvolumeRoot = 256;
    const bool subvolume = target.btrfs && target.identity.inode == kSubvolumeRoot &&
                           target.identity.device == device && device != target.device;
    return target.folder && (target.inside == "/" || subvolume);
}

Place Targets::PlaceOnDevice(dev_t device, ino_t inode) const {
    Place best;
    for (size_t i = 0; i < targets_.size(); ++i) {
        const Target& target = targets_[i];
        if (device != target.device && device != target.identity.device) {
            continue;
        }
        if (IsWhole(target, device) || IsSameFile(target, device, inode)) {
            return {Place::kInside, i};
        }
        if (target.folder) {
            best = {Place::kUnknown, i};
        }
    }
    return best;
}

std::string Targets::ShownPath(const Place& place, const Identity& identity,
                               const std::string& text) const {
    const auto known = known_.find(identity.mount);
    if (known == known_.end() || place.kind != Place::kInside) {
        return text;
    }
    const Target& target = targets_[place.target];
    const auto inside = PathInside(*known->second.mount, text);
    const auto rest = inside ? Below(*inside, target.inside) : std::nullopt;
    // A target that is a file may be held by another of its names.
    return rest ? Joined(target.path, *rest) : text;
}

bool Targets::NeedsNames() const {
    return std::any_of(known_.begin(), known_.end(), [this](const auto& entry) {
        const std::vector<Place>& places = entry.second.places;
        return std::any_of(places.begin(), places.end(), [this](const Place& place) {
            return place.kind == Place::kUnknown && targets_[place.target].folder;
        });
    });
}

bool Targets::IsToldByMount(MountId mount, ino_t inode) const {
    const auto known = known_.find(mount);
    if (known == known_.end()) {
        return false;
    }
    const std::vector<Place>& places = known->second.places;
    return std::all_of(places.begin(), places.end(), [&](const Place& place) {
        const Target& target = targets_[place.target];
        return target.folder || (!target.overlay && target.identity.inode != inode);
    });
}

bool Targets::AnyOverlay() const {
    return std::any_of(targets_.begin(), targets_.end(),
                       [](const Target& target) { return target.overlay; });
}

}  // namespace cli
