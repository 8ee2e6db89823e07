// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_HOST_RIGHTS_H
#define VORN_CLI_HOST_RIGHTS_H

/**
 * @file
 * Whether this process may see what every process holds open.
 */

#include <string>
#include <string_view>

namespace cli {

/** The capabilities that reading every process's descriptors takes. */
struct Rights {
    bool ptrace = false; /**< CAP_SYS_PTRACE: to read the links */
    bool search = false; /**< CAP_DAC_READ_SEARCH: to enter the folders */
    bool kill = false;   /**< CAP_KILL, which takes no part in that: to end processes of others */

    bool Complete() const { return ptrace && search; }
};

/** From the text of `/proc/<pid>/status`, line CapEff. */
Rights ParseRights(std::string_view status);

/** Effective rights of this process (`/proc/self/status`). */
Rights OwnRights();

/** Why processes stay unseen, in one sentence; empty when none do. */
std::string MissingRights(const Rights& rights);

/**
 * Whether this program's file lends rights to whoever starts it: set-user-id, set-group-id or file
 * capabilities. Those that a caller has and passes on, ambient ones among them, are the caller's.
 */
bool RunsWithLentRights();

}  // namespace cli

#endif
