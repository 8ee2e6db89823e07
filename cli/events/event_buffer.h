// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_EVENT_BUFFER_H
#define VORN_CLI_EVENTS_EVENT_BUFFER_H

/**
 * @file
 * What the kernel writes of opens and closes (fanotify, with folders' handles and names).
 */

#include <sys/types.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/descriptor.h"

namespace cli {

/** One or more things that have happened to a file by one process. */
struct FileEvent {
    std::uint64_t mask = 0;      /**< FAN_OPEN and the like */
    pid_t pid = 0;               /**< 0 for a process outside of this PID namespace */
    support::Descriptor process; /**< none where the process has ended */
    /** Identity of the file system and handle of the folder, as FolderId has them; may be empty. */
    std::string_view folder;
    std::string_view name; /**< in that folder; empty where the kernel tells none */

    /** Instead of events that there was no room for. */
    bool IsLost() const;
};
using FileEvents = std::vector<FileEvent>;

/**
 * Takes what one read has given apart. Views point into the buffer. From what isn't as the
 * kernel's interface has it, everything up to the end is an event that IsLost().
 *
 * @throws Failure where the interface is of another version
 */
FileEvents ParseEvents(std::string_view buffer);

/** What FileEvent::folder is made of. */
struct FolderId {
    std::string_view fileSystem; /**< f_fsid of statfs */
    std::string_view handle;     /**< struct file_handle with its bytes behind it */
};

/** Of one that isn't empty. */
FolderId SplitFolder(std::string_view folder);

}  // namespace cli

#endif
