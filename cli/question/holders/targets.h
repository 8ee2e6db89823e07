// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_TARGETS_H
#define VORN_CLI_QUESTION_HOLDERS_TARGETS_H

/**
 * @file
 * What is asked about, and whether something lies in it.
 */

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cli/question/holders/identity.h"
#include "cli/question/holders/mount_table.h"

namespace cli {

/** A volume, a folder or a file. */
struct Target {
    std::string path;   /**< resolved, seen from this process */
    std::string inside; /**< the same within its file system */
    dev_t device = 0;   /**< of the file system */
    Identity identity;
    bool folder = true;
    bool btrfs = false;   /**< files have device numbers of their subvolumes */
    bool overlay = false; /**< mappings may have device numbers of its layers */
};

/** Where something lies. */
struct Place {
    enum Kind {
        kElsewhere,
        kInside,
        kUnknown /**< in the file system of a target, but nothing tells whether in the target */
    };
    Kind kind = kElsewhere;
    size_t target = 0;
};

/** Gives the kernel's name of what is judged; asked for only where it decides. */
using AskText = std::function<std::optional<std::string>()>;

class Targets {
public:
    /**
     * Resolves PATHs.
     *
     * @throws Failure for one that doesn't exist or whose file system can't be told
     */
    Targets(const std::vector<std::string>& paths, const MountTable& mounts);

    const std::vector<Target>& All() const { return targets_; }
    const MountTable& Mounts() const { return mounts_; }

    /**
     * To be called when the table has all mounts: what is in most of them needs no further look.
     */
    void Prepare();

    /** Judges what was found by its mount, or by its device where the mount isn't known. */
    Place PlaceOf(const Identity& identity, const AskText& askText) const;
    /** The same of what only a device number and an inode number are known of, of a file system. */
    Place PlaceOnDevice(dev_t device, ino_t inode) const;
    /** Whether files of a device number, a file system's or a subvolume's, can be in a target. */
    bool MayConcern(dev_t device) const { return devices_.count(device) != 0; }

    /** The name under the target's own path where that can be told, otherwise the kernel's. */
    std::string ShownPath(const Place& place, const Identity& identity,
                          const std::string& text) const;

    bool AnyOverlay() const;

    /** All for which MayConcern is true. */
    const std::unordered_set<dev_t>& Devices() const { return devices_; }
    /** Whether there are mounts of which only the name tells what is in a target. */
    bool NeedsNames() const;
    /**
     * Whether PlaceOf is right without the device number that stat shows, or the inode number
     * where that is another one: what the kernel has inside may be others.
     */
    bool IsToldByMount(MountId mount, ino_t inode) const;

private:
    /** What is known of all that is under a mount. */
    struct MountPlace {
        const Mount* mount;
        std::vector<Place> places; /**< one a target on its file system; kUnknown: the name tells */
    };

    Target Resolve(const std::string& path) const;
    Place PlaceIn(size_t number, const Mount& mount, const AskText& askText) const;
    Place PlaceWithoutMount(const Identity& identity) const;
    /** Whether everything with this device number is in the target. */
    static bool IsWhole(const Target& target, dev_t device);
    static bool IsSameFile(const Target& target, dev_t device, ino_t inode);

    const MountTable& mounts_;
    std::vector<Target> targets_;
    std::unordered_map<MountId, MountPlace> known_;
    std::unordered_set<dev_t> devices_;
};

}  // namespace cli

#endif
