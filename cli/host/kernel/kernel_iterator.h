// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_KERNEL_KERNEL_ITERATOR_H
#define VORN_CLI_HOST_KERNEL_KERNEL_ITERATOR_H

/**
 * @file
 * What processes hold, told by the kernel in one pass over its own tables, without /proc.
 *
 * The processes are those of the caller's PID namespace, and that is the one that /proc must be of;
 * a record's pid is the number there. Rights are not looked at: the kernel tells of every process,
 * whoever may see it.
 */

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/descriptor.h"

namespace cli {

/** A file that a process has a descriptor or a mapping of. */
struct HeldFile {
    pid_t pid = 0;
    pid_t thread = 0; /**< the process's own number, or that of a thread with a table of its own */
    int descriptor = -1; /**< -1 for a mapping */
    /** As readlink of /proc/<pid>/fd/<n> gives it to this process; empty where it is longer. */
    std::string_view path;
    mode_t mode = 0; /**< type and permissions, as the file system itself has them */
    /** Of the file system, as /proc/<pid>/mountinfo has it; stat gives a file on btrfs another. */
    dev_t device = 0;
    ino_t inode = 0; /**< of the file system; stat gives a file of an overlay another */
    int mount = 0;   /**< as /proc/<pid>/mountinfo counts them */
    /** The mark " (deleted)" at the end of the path is the kernel's and no part of the name. */
    bool deleted = false;

    // Of a mapping
    uint64_t begin = 0;
    uint64_t end = 0;
    /** The path is the one below an overlay; that above it is in /proc/<pid>/map_files. */
    bool isInnerPath = false;
};

/** Takes the first record off what KernelIterator::Read gave; path points into that. */
HeldFile TakeHeldFile(std::string_view& portion);

/** One pass. Any thread may read, one at a time. */
class KernelIterator {
public:
    enum class Kind { kDescriptors, kMappings };

    /** What is told of. */
    struct Scope {
        /**
         * Without any, paths that begin with "/volume", of what the leader of a process's threads
         * has. Otherwise everything on these, of all threads, and io_uring instances.
         */
        std::vector<dev_t> fileSystems;
        bool sockets = false; /**< and all sockets */
        bool paths = false;   /**< the paths too, which take their time */
    };

    /** A pass at its beginning, or the reason why there is none, as half a sentence. */
    struct Opened {
        std::unique_ptr<KernelIterator> iterator;
        std::string reason;
    };
    static Opened Open(Kind kind, const Scope& scope);

    /** Reads what such a program has written already. */
    explicit KernelIterator(support::Descriptor records) : records_(std::move(records)) {}

    /**
     * Reads the next records into a text, replacing it: of some processes, of each all that the
     * pass tells. Takes a fraction of a millisecond where no process has a great many.
     *
     * @return false at the end
     * @throws std::system_error, std::bad_alloc
     */
    bool Read(std::string& portion);

    /** The same, for whom a process may be split. Never both of one pass. */
    bool ReadRecords(std::string& records);

private:
    void ReadUntil(const size_t& found);
    bool Take(size_t length, std::string& records);
    bool ReadMore();
    void FindLastProcess();

    support::Descriptor records_;
    std::string pending_; /**< read, but not all of its last process */
    size_t seen_ = 0;     /**< of pending_: whole records */
    size_t last_ = 0;     /**< where the last process begins in it */
    pid_t lastPid_ = 0;
    bool atEnd_ = false;
};

}  // namespace cli

#endif
