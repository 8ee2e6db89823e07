// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_FACTS_PROCESS_FACTS_H
#define VORN_CLI_HOST_FACTS_PROCESS_FACTS_H

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/host/facts/facts_text.h"
#include "support/descriptor.h"

namespace cli {

/** A moment as the kernel dates the start of processes: clock ticks since boot. */
using BootTicks = std::uint64_t;

BootTicks BootTicksNow();

/** What is known of an open file itself, also of one that has no name any more. */
struct FileFacts {
    bool regular = false;    /**< an ordinary file, whose size means bytes */
    std::uint64_t size = 0;  /**< in bytes, holes among them */
    std::uint64_t space = 0; /**< in bytes that it takes up */
    std::time_t modified = 0;
    std::uint64_t inode = 0;
    dev_t device = 0;
};

/**
 * What the kernel knows of one process, each fact read when it is asked for.
 *
 * It is read through one descriptor of the process's folder in /proc, which never leads to another
 * process: one that has ended says nothing any more, also when another has its pid. Whether it is
 * the process that was meant, IsHolder() tells.
 */
class ProcessFacts {
public:
    /** Of the process that has this pid now; nothing without one. */
    static std::optional<ProcessFacts> Of(const std::string& pid);

    bool HasStartedBefore(BootTicks moment) const { return start_ < moment; }

    /**
     * Whether it is the process that a record of a look is about: it has the file open still, or it
     * was there when the look began, so that nobody else can have had its pid since.
     */
    bool IsHolder(const std::string& fullPath, BootTicks lookBegan) {
        return HasStartedBefore(lookBegan) || !DescriptorsOf(fullPath).empty();
    }

    BootTicks Start() const { return start_; }
    /** When it has started, by today's clock. */
    std::time_t Started() const;
    /** The kernel's name for it, up to 15 bytes of its program's, or what it calls itself. */
    std::optional<std::string> Command() const;
    /** The user as whom it acts: the effective one. */
    std::optional<uid_t> Owner() const;
    /** The user who has logged in, whatever the process has become since. */
    std::optional<uid_t> Login() const;
    /** The unit of systemd that it belongs to; see UnitOf(). */
    std::optional<std::string> Unit() const;

    /** Numbers of its descriptors for a file, ascending. All are read at the first question. */
    const std::vector<int>& DescriptorsOf(const std::string& fullPath);
    /**
     * How one of these has the file open; nothing when it leads elsewhere now. This and FileOf()
     * may wait for a network volume.
     */
    std::optional<OpenState> StateOf(int descriptor, const std::string& fullPath) const;
    /** The file that it leads to; nothing when that is another one now. */
    std::optional<FileFacts> FileOf(int descriptor, const std::string& fullPath) const;

private:
    ProcessFacts(support::Descriptor folder, BootTicks start)
        : folder_(std::move(folder)), start_(start) {}

    void ReadDescriptors();
    /**
     * A descriptor of our own for what one of these leads to, whatever becomes of that; none when
     * it leads elsewhere. It names the file (O_PATH) and doesn't open it; but the kernel may ask
     * the server of a network volume whether it is still there, and wait for that.
     */
    support::Descriptor Pin(int descriptor, const std::string& fullPath) const;

    support::Descriptor folder_;
    BootTicks start_;
    std::optional<std::unordered_map<std::string, std::vector<int>>> descriptors_;
};

}  // namespace cli

#endif
