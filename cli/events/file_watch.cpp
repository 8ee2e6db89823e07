// SPDX-License-Identifier: MIT
#include "cli/events/file_watch.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/capability.h>
#include <sys/fanotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include "cli/failure.h"
#include "support/folder.h"
#include "support/process_text.h"
#include "support/read_file.h"
#include "support/text.h"

namespace cli {
namespace {

/** An event takes 60 bytes and more, and a descriptor: so few fit that these are always had. */
constexpr size_t kBufferSize = size_t{16} * 1024;

/** What is missing of the rights that it takes, with a blank before it; empty where nothing is. */
std::string MissingCapabilities() {
    const auto set =
        support::ParseCapabilities(support::ReadFile("/proc/self/status"), "CapEff:").value_or(0);
    std::string missing;
    missing += support::HasCapability(set, CAP_SYS_ADMIN) ? "" : " CAP_SYS_ADMIN";
    missing += support::HasCapability(set, CAP_DAC_READ_SEARCH) ? "" : " CAP_DAC_READ_SEARCH";
    return missing;
}

support::Descriptor NewGroup(unsigned more) {
    support::Descriptor group(
        fanotify_init(FAN_CLASS_NOTIF | FAN_CLOEXEC | FAN_NONBLOCK | FAN_REPORT_DFID_NAME | more,
                      O_RDONLY | O_CLOEXEC));
    if (!group) {
        throw Failure(errno == EINVAL
                          ? "this kernel tells of no opens and closes with names and processes: "
                            "that takes Linux 5.15"
                          : fmt::format("the kernel's events can't be had (fanotify): {}",
                                        std::strerror(errno)));
    }
    return group;
}

std::string WhyNotMarked(int error) {
    switch (error) {
        case EXDEV:
            return "it is a subvolume of btrfs, and the kernel tells of whole file systems alone";
        case ENODEV:
        case EOPNOTSUPP:
        case EINVAL:
            return "its file system has no identities of folders that the kernel could tell";
        case ENOSPC:
            return "there are as many marks as a user may have (fs.fanotify.max_user_marks)";
        default:
            return std::strerror(error);
    }
}

/** The bytes that FolderId::fileSystem has; empty where they can't be had. */
std::string FileSystemOf(const struct statfs& told) {
    std::string bytes(sizeof(told.f_fsid), '\0');
    std::memcpy(bytes.data(), &told.f_fsid, bytes.size());
    return bytes;
}

std::string LinkOf(const support::Descriptor& descriptor) {
    std::array<char, PATH_MAX> path{};
    const std::string link = fmt::format("/proc/self/fd/{}", descriptor.Get());
    const ssize_t size = readlink(link.c_str(), path.data(), path.size());
    return size > 0 ? std::string(path.data(), static_cast<size_t>(size)) : std::string();
}

/** Opens a folder without its name, and names it. No event comes of that: folders have none. */
std::optional<std::string> PathByHandle(const std::string& volume, const FolderId& folder) {
    const support::Descriptor mount = support::OpenFolder(volume.c_str());
    struct statfs told {};
    if (!mount || fstatfs(mount.Get(), &told) != 0 || FileSystemOf(told) != folder.fileSystem) {
        return std::nullopt;
    }
    alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> bytes{};
    std::memcpy(bytes.data(), folder.handle.data(), folder.handle.size());
    const support::Descriptor opened(open_by_handle_at(mount.Get(),
                                                       reinterpret_cast<file_handle*>(bytes.data()),
                                                       O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat info {};
    // One without links is deleted; its last name would have a remark behind it.
    if (!opened || fstat(opened.Get(), &info) != 0 || info.st_nlink == 0) {
        return std::nullopt;
    }
    std::string path = LinkOf(opened);
    return path.empty() ? std::nullopt : std::optional(std::move(path));
}

FileEvents ReadFrom(const support::Descriptor& group, char* buffer) {
    const ssize_t size = read(group.Get(), buffer, kBufferSize);
    if (size < 0 && errno != EAGAIN && errno != EINTR) {
        throw Failure(fmt::format("can't read the kernel's events: {}", std::strerror(errno)));
    }
    return size > 0 ? ParseEvents({buffer, static_cast<size_t>(size)}) : FileEvents();
}

}  // namespace

FileWatch::FileWatch() : fileEvents_(new char[kBufferSize]), folderEvents_(new char[kBufferSize]) {
    if (const std::string missing = MissingCapabilities(); !missing.empty()) {
        throw Failure(fmt::format("to watch opens and closes takes{}: run it as root", missing));
    }
    files_ = NewGroup(FAN_REPORT_PIDFD);
    folders_ = NewGroup(0);
}

std::string FileWatch::Add(const std::string& volume) {
    constexpr unsigned kHow = FAN_MARK_ADD | FAN_MARK_FILESYSTEM;
    struct statfs told {};
    if (statfs(volume.c_str(), &told) != 0 ||
        fanotify_mark(folders_.Get(), kHow, FAN_MOVED_FROM | FAN_ONDIR, AT_FDCWD, volume.c_str()) !=
            0 ||
        fanotify_mark(files_.Get(), kHow, FAN_OPEN | FAN_CLOSE_WRITE | FAN_CLOSE_NOWRITE, AT_FDCWD,
                      volume.c_str()) != 0) {
        return WhyNotMarked(errno);
    }
    volumes_.push_back({volume, FileSystemOf(told)});
    return {};
}

FileEvents FileWatch::Read() {
    return ReadFrom(files_, fileEvents_.get());
}

bool FileWatch::HasRenamedFolder() {
    // As much as the queue can hold: who renames without end has folders forgotten without end.
    constexpr int kReads = 256;
    bool renamed = false;
    for (int i = 0; i < kReads; ++i) {
        const FileEvents events = ReadFrom(folders_, folderEvents_.get());
        if (events.empty()) {
            break;
        }
        renamed = renamed || std::any_of(events.begin(), events.end(), [](const FileEvent& event) {
                      return event.IsLost() || (event.mask & FAN_ONDIR) != 0;
                  });
    }
    return renamed;
}

std::optional<std::string> FileWatch::PathOf(std::string_view folder) const {
    const FolderId id = SplitFolder(folder);
    std::optional<std::string> path;
    // A file system may be several volumes, each of which shows it by paths of its own.
    for (const Volume& volume : volumes_) {
        if (volume.fileSystem == id.fileSystem) {
            path = PathByHandle(volume.path, id);
        }
        if (path && support::IsAtOrBelow(*path, volume.path)) {
            break;
        }
    }
    return path;
}

std::string_view FileWatch::VolumeOf(std::string_view folder) const {
    const auto volume = std::find_if(volumes_.begin(), volumes_.end(), [&](const Volume& each) {
        return !folder.empty() && each.fileSystem == SplitFolder(folder).fileSystem;
    });
    return volume == volumes_.end() ? std::string_view() : volume->path;
}

}  // namespace cli
