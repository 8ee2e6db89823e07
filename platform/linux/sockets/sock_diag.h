// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_SOCK_DIAG_H
#define VORN_PLATFORM_LINUX_SOCKETS_SOCK_DIAG_H

#include <cstddef>
#include <vector>

#include "platform/linux/sockets/tcp_socket.h"

namespace vornplatform {

enum class DumpState {
    kMore,  /**< the dump goes on in a further buffer */
    kDone,  /**< the dump is complete */
    kFailed /**< the kernel refused, or the buffer holds no netlink messages */
};

struct SocketDump {
    std::vector<TcpSocket> sockets;
    bool interrupted = false; /**< the table changed meanwhile: entries may be missing */
};

/**
 * Reads one buffer of the answer to a sock_diag dump of TCP sockets and appends what it lists.
 *
 * @param buffer  netlink messages, aligned as the kernel aligns them (4 bytes)
 */
DumpState ParseDiagMessages(const void* buffer, std::size_t size, SocketDump& dump);

/**
 * The listening and the established TCP sockets, also those that their peers have half closed, IPv4
 * and IPv6, of this process's network namespace (sock_diag over netlink).
 *
 * @throw HostError  when the kernel doesn't answer for both families; EPROTO when it refuses to
 */
std::vector<TcpSocket> DumpSockets();

}  // namespace vornplatform

#endif
