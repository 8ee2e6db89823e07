// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_IDENTITY_H
#define VORN_CLI_QUESTION_HOLDERS_IDENTITY_H

/**
 * @file
 * What a file is, whatever it is called.
 */

#include <sys/types.h>

#include <optional>
#include <string>

#include "cli/question/holders/mount_table.h"

namespace cli {

struct Identity {
    dev_t device = 0; /**< as stat shows it: of btrfs and overlay not the file system's own */
    ino_t inode = 0;
    MountId mount = 0; /**< 0 where it isn't known */
    mode_t mode = 0;   /**< 0 where a file system keeps it from this process */
    bool linked = true;
    std::optional<bool> deleted; /**< its name is gone, where the kernel itself has told */
};

/**
 * Asks the kernel alone: the file system isn't reached, so one that doesn't answer keeps nobody
 * waiting. Links are followed.
 *
 * @return nothing, with errno, without an answer
 */
std::optional<Identity> IdentityAt(int folder, const char* name);

/** The target of a link, whatever its length; nothing, with errno, where there is none. */
std::optional<std::string> LinkText(int folder, const char* name);

}  // namespace cli

#endif
