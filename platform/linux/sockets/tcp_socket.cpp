// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/tcp_socket.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <utility>

#include "platform/linux/support/host_error.h"

namespace vornplatform {
namespace {

constexpr std::size_t kMappedPrefix = 12;

in6_addr ToIn6(const IpAddress& address) {
    in6_addr result;
    std::memcpy(&result, address.data(), sizeof(result));
    return result;
}

bool IsMapped(const IpAddress& address) {
    const in6_addr in6 = ToIn6(address);
    return IN6_IS_ADDR_V4MAPPED(&in6);
}

bool IsLinkLocal(const IpAddress& address) {
    const in6_addr in6 = ToIn6(address);
    return IN6_IS_ADDR_LINKLOCAL(&in6);
}

/** 0.0.0.0 or ::, which listens on every address. */
bool IsAny(const IpAddress& address) {
    static const IpAddress kAny{};
    const std::uint32_t zero = 0;
    return address == kAny || address == MapIpv4(&zero);
}

std::string InterfaceText(std::uint32_t index) {
    char name[IF_NAMESIZE];
    if (if_indextoname(index, name) != nullptr) {
        return name;
    }
    if (!IsNothingThere(errno)) {
        throw HostError(errno);
    }
    return std::to_string(index);
}

/** Where this host listens. */
class Listeners {
public:
    explicit Listeners(const std::vector<TcpSocket>& sockets) {
        for (const TcpSocket& socket : sockets) {
            if (socket.state != TcpState::kListen) {
                continue;
            }
            if (IsAny(socket.local)) {
                anywhere_.insert(socket.localPort);
            } else {
                somewhere_.emplace(socket.localPort, socket.local);
            }
        }
    }

    bool Cover(const TcpSocket& socket) const {
        return anywhere_.count(socket.localPort) != 0 ||
               somewhere_.count({socket.localPort, socket.local}) != 0;
    }

private:
    std::set<std::uint16_t> anywhere_;
    std::set<std::pair<std::uint16_t, IpAddress>> somewhere_;
};

}  // namespace

IpAddress MapIpv4(const void* bytes) {
    IpAddress address{};
    address[10] = address[11] = 0xFF;
    std::memcpy(address.data() + kMappedPrefix, bytes, sizeof(in_addr));
    return address;
}

std::string AddressText(const IpAddress& address, std::uint32_t scope) {
    char text[INET6_ADDRSTRLEN];
    if (IsMapped(address)) {
        return inet_ntop(AF_INET, address.data() + kMappedPrefix, text, sizeof(text));
    }
    std::string result = inet_ntop(AF_INET6, address.data(), text, sizeof(text));
    if (scope != 0 && IsLinkLocal(address)) {
        result += '%' + InterfaceText(scope);
    }
    return result;
}

ClientSockets SelectClientSockets(const std::vector<TcpSocket>& sockets) {
    const Listeners listeners(sockets);
    ClientSockets clients;
    for (const TcpSocket& socket : sockets) {
        if (socket.inode == 0 || socket.state == TcpState::kOther) {
            continue;
        }
        if (socket.state == TcpState::kListen) {
            clients.emplace(socket.inode,
                            ClientSocket{SocketRole::kListener, {}, socket.localPort});
            continue;
        }
        const SocketRole role =
            listeners.Cover(socket) ? SocketRole::kServed : SocketRole::kUnlistened;
        clients.emplace(socket.inode, ClientSocket{role, AddressText(socket.peer, socket.scope),
                                                   socket.localPort});
    }
    return clients;
}

bool HasRole(const ClientSockets& sockets, SocketRole role) {
    return std::any_of(sockets.begin(), sockets.end(),
                       [role](const auto& socket) { return socket.second.role == role; });
}

}  // namespace vornplatform
