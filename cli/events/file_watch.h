// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_FILE_WATCH_H
#define VORN_CLI_EVENTS_FILE_WATCH_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/events/event_buffer.h"

namespace cli {

/** The kernel's events of whole file systems (fanotify). What is waiting is bounded by it. */
class FileWatch {
public:
    /** @throws Failure, naming the right that is missing */
    FileWatch();

    /** From now on a volume is watched. @return empty, or why it can't be */
    std::string Add(const std::string& volume);

    /** Readable while there are events. */
    int Fd() const { return files_.Get(); }
    /** Some events, or none; what they point to is there until the next call. */
    FileEvents Read();
    /** Whether a folder has been renamed since the last call, on any file system. Keeps events. */
    bool HasRenamedFolder();

    /** The path of FileEvent::folder on a watched volume; nothing where it can't be opened. */
    std::optional<std::string> PathOf(std::string_view folder) const;
    /** The first watched volume that is on the folder's file system; empty without one. */
    std::string_view VolumeOf(std::string_view folder) const;

private:
    struct Volume {
        std::string path;
        std::string fileSystem; /**< FolderId::fileSystem */
    };

    support::Descriptor files_;
    support::Descriptor folders_;
    std::unique_ptr<char[]> fileEvents_;
    std::unique_ptr<char[]> folderEvents_;
    std::vector<Volume> volumes_;
};

}  // namespace cli

#endif
