// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_TCP_SOCKET_H
#define VORN_PLATFORM_LINUX_SOCKETS_TCP_SOCKET_H

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace vornplatform {

/** An address in network order; IPv4 in its mapped form, ::ffff:a.b.c.d. */
using IpAddress = std::array<std::uint8_t, 16>;

enum class TcpState {
    kEstablished, /**< both ends may send, or the peer has said that it will not any more */
    kListen,
    kOther
};

/** A TCP socket of this host, as the kernel lists it. */
struct TcpSocket {
    TcpState state = TcpState::kOther;
    IpAddress local{};
    IpAddress peer{};
    std::uint16_t localPort = 0;
    std::uint32_t scope = 0; /**< interface of a link-local peer; 0 where it is not known */
    std::uint64_t inode = 0; /**< 0 for a socket that no process holds any more */
};

/** What a socket can be to the process that holds it. */
enum class SocketRole {
    kServed,     /**< its port is listened on: the server's end of a connection */
    kUnlistened, /**< nobody listens on its port, any more or ever: it may have called out itself */
    kListener
};

/** A socket that tells something of its holder. */
struct ClientSocket {
    SocketRole role = SocketRole::kServed;
    std::string host;       /**< the peer's address as text; empty for a listener */
    std::uint16_t port = 0; /**< its own */
};

/** By the inode number of the socket. */
using ClientSockets = std::unordered_map<std::uint64_t, ClientSocket>;

/** The mapped form of four bytes in network order. */
IpAddress MapIpv4(const void* bytes);

/**
 * An address as text, never a name and never empty: IPv4 dotted also when it was mapped, IPv6 as
 * inet_ntop writes it, with "%" and the interface (its number when it has gone) where the address
 * is link-local and the interface is known.
 */
std::string AddressText(const IpAddress& address, std::uint32_t scope);

/**
 * Sorts the sockets that someone holds. One that serves a client is established, and its local port
 * is also listened on, at the same address or at any. The client's own end of a connection within
 * this host has a port that nobody listens on, like a server's whose listener has gone.
 */
ClientSockets SelectClientSockets(const std::vector<TcpSocket>& sockets);

bool HasRole(const ClientSockets& sockets, SocketRole role);

}  // namespace vornplatform

#endif
