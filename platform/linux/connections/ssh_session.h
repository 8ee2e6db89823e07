// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SSH_SESSION_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SSH_SESSION_H

#include <sys/types.h>

#include <vector>

#include "platform/linux/connections/connection_block.h"
#include "platform/linux/processes/user_directory.h"
#include "platform/linux/sockets/socket_holder.h"

namespace vornplatform {

/**
 * Records of the authenticated SSH connections, all of type SSH: first the processes of their
 * kernel sessions, then the processes of sshd that hold a connection. So a server process that was
 * started from somebody's login ends up with its own connection.
 *
 * @param holders    holders of client sockets; those that are not sshd are passed over
 * @param processes  all processes, looked at only when a login has a kernel session
 */
std::vector<Connection> SshConnections(const std::vector<SocketHolder>& holders,
                                       const ClientSockets& sockets,
                                       const std::vector<pid_t>& processes,
                                       UserDirectory& directory);

}  // namespace vornplatform

#endif
