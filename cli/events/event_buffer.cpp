// SPDX-License-Identifier: MIT
#include "cli/events/event_buffer.h"

#include <fcntl.h>
#include <sys/fanotify.h>

#include <cstring>
#include <optional>

#include "cli/failure.h"

namespace cli {
namespace {

constexpr size_t kFileSystemSize = sizeof(__kernel_fsid_t);

/** What a text of bytes begins with; nothing where it is shorter. */
template <typename Head>
std::optional<Head> HeadOf(std::string_view bytes) {
    if (bytes.size() < sizeof(Head)) {
        return std::nullopt;
    }
    Head head;
    std::memcpy(&head, bytes.data(), sizeof(Head));
    return head;
}

/** Takes a part off the beginning; nothing where there is less. */
std::optional<std::string_view> TakePart(std::string_view& bytes, size_t size) {
    if (size > bytes.size()) {
        return std::nullopt;
    }
    const std::string_view part = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return part;
}

/** The handle of a folder and, behind it, a name with its NUL. */
bool ReadFolder(std::string_view info, FileEvent& event) {
    info.remove_prefix(sizeof(fanotify_event_info_header));
    if (info.size() < kFileSystemSize) {
        return false;
    }
    const auto handle = HeadOf<file_handle>(info.substr(kFileSystemSize));
    if (!handle || handle->handle_bytes > MAX_HANDLE_SZ) {
        return false;
    }
    const auto folder =
        TakePart(info, kFileSystemSize + sizeof(file_handle) + handle->handle_bytes);
    const size_t end = info.find('\0');
    if (!folder || end == std::string_view::npos) {
        return false;
    }
    event.folder = *folder;
    event.name = info.substr(0, end);
    return true;
}

bool ReadProcess(std::string_view info, FileEvent& event) {
    const auto told = HeadOf<fanotify_event_info_pidfd>(info);
    if (told && told->pidfd >= 0) {
        event.process = support::Descriptor(told->pidfd);
    }
    return told.has_value();
}

/** @return false where something isn't as it should be */
bool ReadInfos(std::string_view infos, FileEvent& event) {
    while (!infos.empty()) {
        const auto header = HeadOf<fanotify_event_info_header>(infos);
        if (!header || header->len < sizeof(*header)) {
            return false;
        }
        const auto info = TakePart(infos, header->len);
        const bool read =
            info && (header->info_type == FAN_EVENT_INFO_TYPE_DFID_NAME ? ReadFolder(*info, event)
                     : header->info_type == FAN_EVENT_INFO_TYPE_PIDFD   ? ReadProcess(*info, event)
                                                                        : true);
        if (!read) {
            return false;
        }
    }
    return true;
}

/** Takes the first event off. */
bool TakeEvent(std::string_view& buffer, FileEvent& event) {
    const auto head = HeadOf<fanotify_event_metadata>(buffer);
    if (head && head->vers != FANOTIFY_METADATA_VERSION) {
        throw Failure("the kernel tells of opens and closes in a form that isn't known");
    }
    if (!head || head->metadata_len < sizeof(*head) || head->event_len < head->metadata_len) {
        return false;
    }
    const auto whole = TakePart(buffer, head->event_len);
    event.mask = head->mask;
    event.pid = head->pid;
    return whole && ReadInfos(whole->substr(head->metadata_len), event);
}

}  // namespace

bool FileEvent::IsLost() const {
    return (mask & FAN_Q_OVERFLOW) != 0;
}

FileEvents ParseEvents(std::string_view buffer) {
    FileEvents events;
    while (!buffer.empty()) {
        FileEvent event;
        if (!TakeEvent(buffer, event)) {
            event = FileEvent();
            event.mask = FAN_Q_OVERFLOW;
            buffer = {};
        }
        events.push_back(std::move(event));
    }
    return events;
}

FolderId SplitFolder(std::string_view folder) {
    return {folder.substr(0, kFileSystemSize), folder.substr(kFileSystemSize)};
}

}  // namespace cli
