// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/tcp_socket.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>

#include <map>
#include <string>

namespace {

using namespace vornplatform;

IpAddress Address(const char* text) {
    IpAddress address{};
    std::uint32_t ipv4 = 0;
    if (inet_pton(AF_INET, text, &ipv4) == 1) {
        return MapIpv4(&ipv4);
    }
    EXPECT_EQ(inet_pton(AF_INET6, text, address.data()), 1) << text;
    return address;
}

TcpSocket Socket(TcpState state, const char* local, std::uint16_t port,
                 const char* peer = "::", std::uint64_t inode = 1) {
    TcpSocket socket;
    socket.state = state;
    socket.local = Address(local);
    socket.localPort = port;
    socket.peer = Address(peer);
    socket.inode = inode;
    return socket;
}

/** The peers of those sockets of a role, by inode. */
std::map<std::uint64_t, std::string> PeersOf(SocketRole role,
                                             const std::vector<TcpSocket>& sockets) {
    std::map<std::uint64_t, std::string> peers;
    for (const auto& [inode, socket] : SelectClientSockets(sockets)) {
        if (socket.role == role) {
            peers.emplace(inode, socket.host);
        }
    }
    return peers;
}

using Peers = std::map<std::uint64_t, std::string>;

TEST(AddressText, IsNumericWhateverTheFamily) {
    const struct {
        const char* address;
        std::uint32_t scope;
        std::string text;
    } rows[] = {
        {"192.0.2.7", 0, "192.0.2.7"},
        {"::ffff:192.0.2.7", 0, "192.0.2.7"},
        {"192.0.2.7", 1, "192.0.2.7"},
        {"::1", 0, "::1"},
        {"2001:db8::5", 1, "2001:db8::5"},
        {"fe80::1", 0, "fe80::1"},
        {"fe80::1", if_nametoindex("lo"), "fe80::1%lo"},
        {"fe80::1", 4000000000U, "fe80::1%4000000000"},
        {"::192.0.2.7", 0, "::192.0.2.7"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(AddressText(Address(row.address), row.scope), row.text) << row.address;
    }
}

TEST(ClientSocket, HasALocalPortThatIsListenedOn) {
    const struct {
        const char* listening;
        std::uint16_t port;
        const char* local;
        bool isClient;
    } rows[] = {
        {"0.0.0.0", 22, "192.0.2.1", true},    {"::", 22, "2001:db8::1", true},
        {"::", 22, "::ffff:192.0.2.1", true},  {"::", 22, "192.0.2.1", true},
        {"192.0.2.1", 22, "192.0.2.1", true},  {"2001:db8::1", 22, "2001:db8::1", true},
        {"0.0.0.0", 23, "192.0.2.1", false},   {"192.0.2.2", 22, "192.0.2.1", false},
        {"192.0.2.1", 23, "192.0.2.1", false}, {"2001:db8::2", 22, "2001:db8::1", false},
    };
    for (const auto& row : rows) {
        const auto clients = PeersOf(
            SocketRole::kServed, {Socket(TcpState::kListen, row.listening, row.port),
                                  Socket(TcpState::kEstablished, row.local, 22, "192.0.2.9", 77)});
        EXPECT_EQ(clients, row.isClient ? (Peers{{77, "192.0.2.9"}}) : Peers())
            << row.listening << " " << row.port << " " << row.local;
    }
}

TEST(ClientSocket, ShowsThePeer) {
    EXPECT_EQ(PeersOf(SocketRole::kServed,
                      {Socket(TcpState::kEstablished, "192.0.2.1", 22, "192.0.2.9", 77),
                       Socket(TcpState::kListen, "0.0.0.0", 22)}),
              (Peers{{77, "192.0.2.9"}}));
}

TEST(ClientSocket, IsNotTheClientsEndOfAConnectionWithinTheHost) {
    const std::vector<TcpSocket> sockets = {
        Socket(TcpState::kListen, "127.0.0.1", 22, "::", 76),
        Socket(TcpState::kEstablished, "127.0.0.1", 22, "127.0.0.2", 77),
        Socket(TcpState::kEstablished, "127.0.0.2", 40000, "127.0.0.1", 78)};
    EXPECT_EQ(PeersOf(SocketRole::kListener, sockets), (Peers{{76, ""}}));
    EXPECT_EQ(PeersOf(SocketRole::kServed, sockets), (Peers{{77, "127.0.0.2"}}));
    EXPECT_EQ(PeersOf(SocketRole::kUnlistened, sockets), (Peers{{78, "127.0.0.1"}}));
}

TEST(ClientSocket, IsEstablishedAndHeld) {
    const auto clients =
        SelectClientSockets({Socket(TcpState::kListen, "0.0.0.0", 22, "::", 0),
                             Socket(TcpState::kEstablished, "192.0.2.1", 22, "192.0.2.9", 0),
                             Socket(TcpState::kOther, "192.0.2.1", 22, "192.0.2.9", 78)});
    EXPECT_TRUE(clients.empty());
}

}  // namespace
