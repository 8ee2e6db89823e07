// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_KERNEL_PROGRAMS_RECORD_H
#define VORN_CLI_HOST_KERNEL_PROGRAMS_RECORD_H

/**
 * @file
 * What the programs in the kernel write and the command reads, in the machine's own byte order.
 */

#include <linux/types.h>

/** The path was deleted, which is what the mark at its end says, and is no part of a name. */
#define VORN_RECORD_DELETED 1u
/** The path is the one below an overlay; only `/proc/<pid>/map_files` tells the one above it. */
#define VORN_RECORD_INNER_PATH 2u

/** What stands before each path, which follows without a null byte; nothing is aligned. */
struct vorn_record {
    __u32 path_length; /**< 0 where it wasn't asked for or is longer than 4095 */
    __u32 pid;         /**< of the process, in the reader's PID namespace */
    __u32 thread;      /**< whose it is: that of the process, or a thread with its own table */
    __u32 descriptor;  /**< of a file's; 0 for a mapping */
    __u32 mode;        /**< type and permissions, as stat has them */
    __u32 device;      /**< of the file system, major number << 20 | minor number */
    __u32 mount;       /**< as /proc/<pid>/mountinfo counts them; 0 where the kernel hides it */
    __u32 flags;       /**< VORN_RECORD_... */
    __u64 inode;
    __u64 begin; /**< addresses of a mapping; 0 for a descriptor */
    __u64 end;
};

#define VORN_MOST_FILE_SYSTEMS 16

/** What a program is to tell of; given to it before it is loaded. */
struct vorn_scope {
    /** 0: what is named "/volume..." from the reader's root and is a process's, not a thread's. */
    __u32 file_system_count;
    /**
     * Otherwise all that lies on these, numbered as in a record, of threads with their own tables
     * as well; and io_uring instances, which may hold files beside their descriptors.
     */
    __u32 file_systems[VORN_MOST_FILE_SYSTEMS];
    __u32 sockets; /**< not 0: sockets too, of whichever kind */
    __u32 paths;   /**< not 0: with their paths */
};

#endif
