// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_HOLDERS_BOUND_SOCKETS_H
#define VORN_CLI_QUESTION_HOLDERS_BOUND_SOCKETS_H

/**
 * @file
 * Unix sockets that are bound to files: they keep the file system in use, though their
 * descriptors don't lead there.
 */

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cli/question/holders/source.h"

namespace cli {

/** By the sockets' own inode numbers, with the files. */
using BoundSockets = std::unordered_map<ino_t, UsedFile>;

/**
 * Asks the network namespaces of all processes for their sockets (NETLINK_SOCK_DIAG), which tells
 * device and inode of the files whatever they are called.
 *
 * @param holders  gets what is lost
 */
BoundSockets FindBoundSockets(const Targets& targets, const std::vector<pid_t>& pids,
                              Holders& holders);

/** Adds a row without a process for the sockets that no process has: they wait to be accepted. */
void AddUnseenSockets(const BoundSockets& sockets, const std::unordered_set<ino_t>& seen,
                      Holders& holders);

}  // namespace cli

#endif
