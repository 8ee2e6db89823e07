// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_HOLDER_H
#define VORN_CLI_QUESTION_HOLDERS_HOLDER_H

/**
 * @file
 * What keeps a volume, a folder or a file in use.
 */

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace cli {

/** In the order in which a process's rows are shown. */
enum class Reason {
    kFile,
    kFolder, /**< working directory */
    kRoot,
    kProgram,
    kMapping,
    kSocket,
    kLoop,
    kDeviceMapper,
    kMd,
    kSwap,
    kMount,
    kNfsExport,
    kNfsClient,
    kNfsLock
};

/** Such as "file" and "loop device". */
std::string_view ReasonName(Reason reason);

/** One thing that is in use. */
struct UsedFile {
    int descriptor = -1; /**< negative where there is none */
    std::string path;    /**< under the volume's own path where that can be told */
    bool deleted = false;
};

/** One row: a process (or something of the kernel's) and a reason. */
struct Holder {
    Reason reason = Reason::kFile;
    pid_t pid = 0; /**< 0 for what has no process */
    std::vector<UsedFile> files;
    /** Beyond those in files: things of the same row whose names nobody has asked for. */
    size_t unnamed = 0;

    /** @name Empty where there is none. @{ */
    std::string command; /**< name of the process */
    std::string owner;   /**< user that the process runs as */
    std::string service; /**< display name */
    std::string user;    /**< of the client */
    std::string host;    /**< of the client */
    std::string device;  /**< such as "loop0" */
    std::string access;  /**< of a client's open: "r", "w" or "rw" */
    /** @} */
};

/** Everything that is known after one look. */
struct Holders {
    std::vector<Holder> rows;
    /** Why something may be missing from the rows, one sentence each. */
    std::vector<std::string> lost;
    /** What else the user should know, and what makes nothing busy. */
    std::vector<std::string> notes;

    bool Complete() const { return lost.empty(); }
};

}  // namespace cli

#endif
