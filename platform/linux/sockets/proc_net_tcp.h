// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_PROC_NET_TCP_H
#define VORN_PLATFORM_LINUX_SOCKETS_PROC_NET_TCP_H

#include <optional>
#include <string_view>
#include <vector>

#include "platform/linux/sockets/tcp_socket.h"

namespace vornplatform {

/**
 * Reads one line of /proc/net/tcp (32-bit addresses) or /proc/net/tcp6 (128-bit addresses).
 *
 * @return nothing for the heading and for a line of another form
 */
std::optional<TcpSocket> ParseProcNetTcpLine(std::string_view line);

/** Reads the text of either file; lines of another form are passed over. */
void ParseProcNetTcp(std::string_view text, std::vector<TcpSocket>& sockets);

/**
 * The sockets that /proc/net/tcp and /proc/net/tcp6 list. These files name no interface, so
 * link-local peers come without one.
 *
 * @return nothing when there is neither of the files for this caller
 * @throw HostError  when one that is there can't be read
 */
std::optional<std::vector<TcpSocket>> ReadProcNetTcp();

}  // namespace vornplatform

#endif
