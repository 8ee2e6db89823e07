#ifndef VORNPLATFORM_CONNECTION_SERVER_CONNECTIONS_H
#define VORNPLATFORM_CONNECTION_SERVER_CONNECTIONS_H

#include <functional>
#include <vector>

#include "connection/connection_block.h"
#include "connection/smb_session.h"
#include "connection/socket_holder.h"
#include "connection/user_name.h"

namespace vornplatform {

using AskSmbUsers = std::function<SmbUsers(const std::vector<SmbServer>&)>;

/**
 * Records of every server process but sshd that holds a client's socket, in the order of the
 * holders and of their descriptors. The user is the effective user of the process; of smbd, which
 * is root while it idles, the users of its sessions, and "unknown" without any.
 *
 * @param askSmbUsers  called once, and only if a holder is an smbd
 */
std::vector<Connection> ServerConnections(const std::vector<SocketHolder>& holders,
                                          const ClientSockets& sockets,
                                          const AskSmbUsers& askSmbUsers, UserNames& names);

}  // namespace vornplatform

#endif
