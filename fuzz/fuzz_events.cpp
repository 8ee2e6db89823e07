// SPDX-License-Identifier: MIT
// What the kernel tells of opens and closes: a buffer of fanotify's.

#include <sys/syscall.h>
#include <unistd.h>

#include "cli/events/event_buffer.h"
#include "cli/failure.h"
#include "fuzz/text_input.h"

namespace {

bool g_made_up = false;

bool IsWithin(std::string_view part, std::string_view whole) {
    return part.empty() || (part.data() >= whole.data() &&
                            part.data() + part.size() <= whole.data() + whole.size());
}

void Check(std::string_view buffer) {
    for (const cli::FileEvent& event : cli::ParseEvents(buffer)) {
        Must(IsWithin(event.folder, buffer) && IsWithin(event.name, buffer));
        Must(event.name.find('\0') == std::string_view::npos);
        if (!event.folder.empty()) {
            const cli::FolderId folder = cli::SplitFolder(event.folder);
            Must(!folder.fileSystem.empty() && !folder.handle.empty());
        }
    }
}

}  // namespace

// A process's descriptor is a number here that somebody else may have open.
extern "C" int close(int fd) {
    return g_made_up ? 0 : static_cast<int>(syscall(SYS_close, fd));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    g_made_up = true;
    try {
        Check(TextOf(data, size));
    } catch (const cli::Failure&) {
        // The form of another kernel.
    }
    g_made_up = false;
    return 0;
}
