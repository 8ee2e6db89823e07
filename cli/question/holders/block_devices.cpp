// SPDX-License-Identifier: MIT
#include "cli/question/holders/block_devices.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>

#include "cli/host/deleted.h"
#include "cli/text/escape.h"
#include "support/folder.h"
#include "support/text.h"

namespace cli {
namespace {

/** Sorted, so that answers are the same each time; empty for a folder that isn't there. */
std::vector<std::string> NamesIn(const std::string& path) {
    std::vector<std::string> names;
    const support::Descriptor folder = support::OpenFolder(path.c_str());
    if (folder) {
        support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
            names.emplace_back(entry.d_name);
            return true;
        });
    }
    std::sort(names.begin(), names.end());
    return names;
}

/** What the driver itself says of the backing file; its device number is encoded for old users. */
std::optional<Identity> BackingFile(const std::string& name) {
    const support::Descriptor device(
        open(("/dev/" + name).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    loop_info64 info{};
    if (!device || ioctl(device.Get(), LOOP_GET_STATUS64, &info) != 0) {
        return std::nullopt;
    }
    const auto number = static_cast<uint32_t>(info.lo_device);
    Identity identity;
    identity.device =
        makedev((number & 0xFFF00) >> 8, (number & 0xFF) | ((number >> 12) & 0xFFF00));
    identity.inode = info.lo_inode;
    return identity;
}

bool IsSame(const Identity& one, const Identity& other) {
    return one.device == other.device && one.inode == other.inode;
}

/** The place of a backing file, and its name as it is to be shown. */
Named PlaceBacking(const Targets& targets, const std::optional<Identity>& backing,
                   const std::string& text) {
    Named other;
    if (backing && targets.Mounts().Knows(backing->device) &&
        !targets.MayConcern(backing->device)) {
        // Its name may lead to a file system that doesn't answer, of which nobody has asked.
        return other;
    }
    const auto named = PlaceOfPath(targets, text);
    if (named && (!backing || IsSame(*backing, named->identity))) {
        return *named;
    }
    other.path = text;
    other.deleted = WithoutDeletedMark(text).size() != text.size();
    if (backing) {
        // Deleted, or named in another mount namespace: then its numbers have to do.
        other.identity = *backing;
        other.place = targets.MayConcern(backing->device)
                          ? targets.PlaceOnDevice(backing->device, backing->inode)
                          : Place{};
    } else {
        other.place = {Place::kUnknown, 0};
    }
    return other;
}

}  // namespace

void BlockDevices::Find(const Targets& targets, Wanted /*wanted*/, Holders& holders) {
    const support::Descriptor folder = support::OpenFolder(folder_.c_str());
    if (!folder) {
        holders.lost.push_back(CannotRead(folder_));
        return;
    }
    for (const std::string& name : NamesIn(folder_)) {
        if (support::StartsWith(name, "loop")) {
            FindLoop(targets, name, holders);
        }
    }
}

void BlockDevices::FindLoop(const Targets& targets, const std::string& name,
                            Holders& holders) const {
    const std::string path = fmt::format("{}/{}/loop/backing_file", folder_, name);
    auto text = ReadKernelFile(path);
    if (!text) {
        // Without a file behind it, it has no such folder.
        if (errno != ENOENT && errno != ENOTDIR && errno != ENXIO && errno != ENODEV) {
            holders.lost.push_back(CannotRead(path));
        }
        return;
    }
    if (!text->empty() && text->back() == '\n') {
        text->pop_back();
    }
    const Named named = PlaceBacking(targets, BackingFile(name), *text);
    if (named.place.kind == Place::kUnknown) {
        holders.lost.push_back(fmt::format("the place of the file behind {} can't be told: {}",
                                           name, Escaped(*text, true)));
    } else if (named.place.kind == Place::kInside) {
        UsedFile file;
        file.path = named.path;
        file.deleted = named.deleted;
        Holder row;
        row.reason = Reason::kLoop;
        row.device = name;
        row.files.push_back(file);
        holders.rows.push_back(std::move(row));
        FindUpon(fmt::format("{}/{}", folder_, name), file, {name}, holders);
    }
}

void BlockDevices::FindUpon(const std::string& device, const UsedFile& file,
                            std::vector<std::string> below, Holders& holders) const {
    for (const std::string& name : NamesIn(device + "/holders")) {
        if (std::find(below.begin(), below.end(), name) == below.end()) {
            AddUpon(name, file, below, holders);
            below.push_back(name);
        }
    }
    // Partitions are folders within the device's own.
    const std::string whole = device.substr(device.rfind('/') + 1);
    for (const std::string& name : NamesIn(device)) {
        if (name.size() > whole.size() && support::StartsWith(name, whole)) {
            FindUpon(fmt::format("{}/{}", device, name), file, below, holders);
        }
    }
}

void BlockDevices::AddUpon(const std::string& name, const UsedFile& file,
                           const std::vector<std::string>& below, Holders& holders) const {
    const std::string mapped = ReadName(fmt::format("{}/{}/dm/name", folder_, name));
    Holder row;
    row.reason = support::StartsWith(name, "md") ? Reason::kMd : Reason::kDeviceMapper;
    row.device = mapped.empty() ? name : fmt::format("{} ({})", name, mapped);
    row.files.push_back(file);
    holders.rows.push_back(std::move(row));
    std::vector<std::string> chain = below;
    chain.push_back(name);
    FindUpon(fmt::format("{}/{}", folder_, name), file, std::move(chain), holders);
}

std::string BlockDevices::ReadName(const std::string& path) const {
    const std::string text = ReadKernelFile(path).value_or("");
    return std::string(support::TrimRight(text, "\n"));
}

}  // namespace cli
