// SPDX-License-Identifier: MIT
#include "cli/events/recorder.h"

#include <sys/fanotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "support/text.h"

namespace cli {
namespace {

constexpr size_t kFolders = 8192;

/** What the kernel may have told of at once, in an order that it can have happened in. */
constexpr struct {
    std::uint64_t mask;
    std::string_view event;
} kEvents[] = {
    {FAN_OPEN, "opened"}, {FAN_CLOSE_NOWRITE, "closed"}, {FAN_CLOSE_WRITE, "closed-written"}};

bool IsGone(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

}  // namespace

Recorder::Recorder(FileWatch& watch, std::vector<std::string> paths, size_t processes,
                   EventTeller& teller)
    : watch_(watch),
      paths_(std::move(paths)),
      teller_(teller),
      folders_([&watch](std::string_view folder) { return watch.PathOf(folder); }, kFolders),
      processes_(AskProcesses, processes),
      own_(getpid()) {}

bool Recorder::TellSome() {
    FileEvents events = watch_.Read();
    const Moment at = MomentNow();
    const std::vector<const ProcessAnswer*> processes = processes_.Meet(events);
    // Behind the reading: a name that was given before it is known now.
    if (watch_.HasRenamedFolder()) {
        folders_.Forget();
    }
    for (size_t i = 0; i < events.size(); ++i) {
        Tell(events[i], processes[i], at);
    }
    return !events.empty();
}

void Recorder::Tell(const FileEvent& event, const ProcessAnswer* process, Moment at) {
    if (event.IsLost()) {
        return teller_.Plain("lost", at);
    }
    if (event.pid == own_) {
        return;
    }
    ToldFile file{watch_.VolumeOf(event.folder), {}, event.name, false, event.pid, process};
    if (!event.folder.empty() && !event.name.empty()) {
        file.path = folders_.PathOf(event.folder);
    }
    if (file.path) {
        *file.path += '/';
        *file.path += event.name;
    }
    if (!IsWanted(file)) {
        return;
    }
    file.deleted = file.path && IsGone(*file.path);
    for (const auto& [mask, name] : kEvents) {
        if ((event.mask & mask) != 0) {
            teller_.File(name, at, file);
        }
    }
}

/** What can't be told apart is wanted where it may be. */
bool Recorder::IsWanted(const ToldFile& file) const {
    return std::any_of(paths_.begin(), paths_.end(), [&](const std::string& path) {
        return file.path ? support::IsAtOrBelow(*file.path, path)
                         : file.volume.empty() || support::IsAtOrBelow(path, file.volume);
    });
}

}  // namespace cli
