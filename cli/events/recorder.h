// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_EVENTS_RECORDER_H
#define VORN_CLI_EVENTS_RECORDER_H

#include <string>
#include <vector>

#include "cli/events/event_teller.h"
#include "cli/events/file_watch.h"
#include "cli/events/folder_paths.h"
#include "cli/events/process_memory.h"

namespace cli {

/** Joins the kernel's events with paths and processes. */
class Recorder {
public:
    /**
     * @param paths      what is told of: at or below one of them
     * @param processes  that are remembered
     */
    Recorder(FileWatch& watch, std::vector<std::string> paths, size_t processes,
             EventTeller& teller);

    /** Tells of some of the waiting events; false when there were none. */
    bool TellSome();

private:
    void Tell(const FileEvent& event, const ProcessAnswer* process, Moment at);
    bool IsWanted(const ToldFile& file) const;

    FileWatch& watch_;
    const std::vector<std::string> paths_;
    EventTeller& teller_;
    FolderPaths folders_;
    ProcessMemory processes_;
    const pid_t own_;
};

}  // namespace cli

#endif
