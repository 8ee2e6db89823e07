// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SERVER_CONNECTIONS_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SERVER_CONNECTIONS_H

#include <functional>
#include <vector>

#include "platform/linux/connections/connection_block.h"
#include "platform/linux/connections/smb_user_memory.h"
#include "platform/linux/processes/user_directory.h"
#include "platform/linux/sockets/socket_holder.h"

namespace vornplatform {

using AskSmbUsers = std::function<SmbAnswer(const std::vector<SmbServer>&)>;

/**
 * A record of every server process but those of SSH that holds a client's socket, in the order of
 * the holders. The user is the effective user of the process; of smbd, which is root while it
 * idles, the user of its sessions. Where a process has several hosts or users, or is one user for
 * all of them, nothing tells which of them holds a file: kUnknown.
 *
 * @param askSmbUsers  called once, and only if a holder is an smbd
 */
std::vector<Connection> ServerConnections(const std::vector<SocketHolder>& holders,
                                          const ClientSockets& sockets,
                                          const AskSmbUsers& askSmbUsers, UserDirectory& directory);

}  // namespace vornplatform

#endif
