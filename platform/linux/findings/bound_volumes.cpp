// SPDX-License-Identifier: MIT
#include "platform/linux/findings/bound_volumes.h"

#include <optional>
#include <set>
#include <utility>

#include "platform/linux/processes/proc_file.h"
#include "platform/linux/volumes/volume_table.h"
#include "support/mount_info.h"
#include "support/text.h"

namespace vornplatform {
namespace {

constexpr size_t kMountInfoLimit = size_t{4} << 20;
/** Whoever may make user namespaces decides how many there are. */
constexpr size_t kMostSpaces = 256;

std::string Joined(const std::string& folder, std::string_view rest) {
    return folder == "/" && !rest.empty() ? std::string(rest) : folder + std::string(rest);
}

/** What of a path lies below a root that it is at or below. */
std::string_view Below(std::string_view path, std::string_view root) {
    return root == "/" ? (path == "/" ? std::string_view() : path) : path.substr(root.size());
}

std::vector<MountEntry> ReadMounts(const std::string& process) {
    const auto text = ReadProcFile("/proc/" + process + "/mountinfo", kMountInfoLimit);
    return text ? ParseMounts(*text) : std::vector<MountEntry>();
}

/** What is found, each once: "/volume1 on /srv/jail". */
class Places {
public:
    explicit Places(std::vector<MountEntry> volumes) : volumes_(std::move(volumes)) {}

    void Look(const std::vector<MountEntry>& mounts, const std::string& whose) {
        for (const MountEntry& mount : mounts) {
            for (const MountEntry& volume : volumes_) {
                const std::string place = PlaceElsewhere(volume, mount);
                if (!place.empty() && seen_.insert(volume.point + '\n' + place).second) {
                    said_.push_back(volume.point + " on " + place + whose);
                }
            }
        }
    }
    const std::vector<std::string>& Said() const { return said_; }

private:
    std::vector<MountEntry> volumes_;
    std::set<std::string> seen_;
    std::vector<std::string> said_;
};

}  // namespace

std::vector<MountEntry> ParseMounts(std::string_view text) {
    std::vector<MountEntry> mounts;
    while (!text.empty()) {
        if (auto mount = support::ParseMountInfo(support::TakeLine(text))) {
            mounts.push_back(
                {std::string(mount->device), std::move(mount->root), std::move(mount->point)});
        }
    }
    return mounts;
}

std::vector<MountEntry> VolumesAmong(const std::vector<MountEntry>& mounts) {
    std::vector<MountEntry> volumes;
    std::set<std::string> points;
    for (auto mount = mounts.rbegin(); mount != mounts.rend(); ++mount) {
        if (IsVolume(mount->point) && points.insert(mount->point).second) {
            volumes.push_back(*mount);
        }
    }
    return volumes;
}

std::string PlaceElsewhere(const MountEntry& volume, const MountEntry& mount) {
    if (mount.device != volume.device) {
        return {};
    }
    std::string place;
    if (support::IsAtOrBelow(mount.root, volume.root)) {
        place = mount.point;
    } else if (support::IsAtOrBelow(volume.root, mount.root)) {
        place = Joined(mount.point, Below(volume.root, mount.root));
    } else {
        return {};
    }
    return IsOnVolume(place) ? std::string() : place;
}

Findings FindBoundVolumes(const ProcessSight& sight) {
    const std::vector<MountEntry> own = ReadMounts("self");
    const std::vector<MountEntry> volumes = VolumesAmong(own);
    if (volumes.empty()) {
        return {};
    }
    Places places(volumes);
    places.Look(own, "");
    size_t looked = 0;
    for (const auto& [space, pid] : sight.mountSpaces) {
        if (looked++ == kMostSpaces) {
            break;
        }
        places.Look(ReadMounts(std::to_string(pid)),
                    " (for process " + std::to_string(pid) + " and others)");
    }
    Findings findings;
    if (!places.Said().empty()) {
        constexpr size_t kShown = 5;
        findings.push_back({"bind mounts", VORN_FINDING_MISSING,
                            "volumes are mounted elsewhere as well, and files that are opened "
                            "there are not listed: " +
                                FirstFew(places.Said(), kShown),
                            "ask 'vorn-openfiles busy', which finds them", true});
    }
    if (sight.mountSpaces.size() > kMostSpaces) {
        findings.push_back({"bind mounts", VORN_FINDING_MISSING,
                            "there are more than " + std::to_string(kMostSpaces) +
                                " mount namespaces, and volumes may be mounted in the others",
                            "", true});
    }
    return findings;
}

}  // namespace vornplatform
