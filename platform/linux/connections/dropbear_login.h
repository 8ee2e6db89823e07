// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_DROPBEAR_LOGIN_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_DROPBEAR_LOGIN_H

#include <sys/types.h>

#include <optional>
#include <vector>

#include "platform/linux/connections/connection_block.h"
#include "platform/linux/processes/user_directory.h"
#include "platform/linux/sockets/socket_holder.h"

namespace vornplatform {

/** A process that dropbear has started for its client. */
struct DropbearSession {
    uid_t realUid = 0;
    bool runsSetUserId = false; /**< its program may have changed the user for whoever starts it */
};

/** Who has logged in over a connection of dropbear. */
struct DropbearLogin {
    std::optional<uid_t> user; /**< nothing where nothing tells */
};

/**
 * Tells who has logged in over a connection that one process of dropbear serves. It stays root and
 * starts the sessions as the user; a server of anybody else can let only that user in.
 *
 * @param serverUid  real user of the process
 * @return nothing as long as there is no session
 */
std::optional<DropbearLogin> JudgeDropbearConnection(uid_t serverUid,
                                                     const std::vector<DropbearSession>& sessions);

/** Records of the processes of dropbear that serve a client with a session, all of type SSH. */
std::vector<Connection> DropbearConnections(const std::vector<SocketHolder>& holders,
                                            const ClientSockets& sockets, UserDirectory& directory);

}  // namespace vornplatform

#endif
