// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_SOCKET_HOLDER_H
#define VORN_PLATFORM_LINUX_SOCKETS_SOCKET_HOLDER_H

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/sockets/search_memory.h"
#include "platform/linux/sockets/server_kind.h"
#include "platform/linux/sockets/tcp_socket.h"

namespace vornplatform {

/** A process that holds sockets of clients, or of SSH also one that may be a client's. */
struct SocketHolder {
    pid_t pid = 0;
    ServerKind kind = ServerKind::kOther;
    std::string program; /**< file name of the executable; empty if not readable */
    std::vector<std::uint64_t>
        inodes;           /**< lowest descriptor first; not of SSH: of two hosts at most */
    bool listens = false; /**< holds a listening socket among its lowest descriptors */
};

/** Gives the sockets that there are by now. */
using ReadSocketsAgain = std::function<ClientSockets()>;

/**
 * Finds the processes that hold at least one of the given sockets, in the order given: one that is
 * served, or of SSH servers one that nobody listens on as well.
 *
 * Of each process the lowest descriptors are looked at; the whole table is read of the file servers
 * known by executable and of whoever has a client among the lowest, of those with one client a
 * process only as far as that client's socket. The search never ends early on having seen every
 * socket once, for a socket may have several holders (both halves of an SSH or FTP server, the two
 * sides of a receiving rsync) and the one that holds the files may come last.
 *
 * All descriptors of all processes are looked at, once, where by then nobody holds a socket that is
 * served and still there: its server has it further up. That adds up to half to an enumeration, so
 * it isn't done for sockets that no process has, such as those of the kernel's own servers, as far
 * as the host or an earlier such search has told.
 */
std::vector<SocketHolder> FindSocketHolders(const std::vector<pid_t>& processes,
                                            const ClientSockets& sockets,
                                            const ReadSocketsAgain& readAgain,
                                            SearchMemory& memory);

}  // namespace vornplatform

#endif
