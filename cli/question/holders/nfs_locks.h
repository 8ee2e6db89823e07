// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_NFS_LOCKS_H
#define VORN_CLI_QUESTION_HOLDERS_NFS_LOCKS_H

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

struct FileLock {
    pid_t pid = 0; /**< not positive for one that another host holds */
    dev_t device = 0;
    ino_t inode = 0;
    std::string access; /**< "r" or "w" */
};

/** The locks that are held, in a text of `/proc/locks`; not those that are waited for. */
std::vector<FileLock> ParseLocks(std::string_view text);

/**
 * Locks that no process holds: the kernel does, for clients of its NFS server. Of version 3 of the
 * protocol they are all that there is to be seen, without host and user.
 */
class NfsLocks : public Source {
public:
    explicit NfsLocks(std::string path = "/proc/locks") : path_(std::move(path)) {}

    void Find(const Targets& targets, Wanted wanted, Holders& holders) override;

private:
    const std::string path_;
};

}  // namespace cli

#endif
