// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/sock_diag.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/sock_diag.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <tuple>

#include "platform/linux/sockets/proc_net_tcp.h"
#include "tests/platform/sockets/diag_buffer.h"
#include "tests/platform/support/private_network.h"

namespace {

using namespace vornplatform;

inet_diag_msg Entry(std::uint8_t family, std::uint8_t state, const char* local, const char* peer,
                    std::uint32_t inode = 29024) {
    inet_diag_msg entry{};
    entry.idiag_family = family;
    entry.idiag_state = state;
    entry.id.idiag_sport = htons(2222);
    entry.id.idiag_dport = htons(40000);
    entry.idiag_inode = inode;
    EXPECT_EQ(inet_pton(family, local, entry.id.idiag_src), 1);
    EXPECT_EQ(inet_pton(family, peer, entry.id.idiag_dst), 1);
    return entry;
}

const inet_diag_msg kEntry = Entry(AF_INET, TCP_ESTABLISHED, "192.0.2.1", "192.0.2.9");

struct Outcome {
    DumpState state;
    SocketDump dump;
};

Outcome Parse(const DiagBuffer& buffer) {
    Outcome outcome{};
    outcome.state = ParseDiagMessages(buffer.Data(), buffer.Size(), outcome.dump);
    return outcome;
}

TEST(SockDiag, ReadsAnIpv4Socket) {
    const Outcome outcome = Parse(DiagBuffer().Put(SOCK_DIAG_BY_FAMILY, kEntry));
    EXPECT_EQ(outcome.state, DumpState::kMore);
    EXPECT_FALSE(outcome.dump.interrupted);
    ASSERT_EQ(outcome.dump.sockets.size(), 1U);
    const TcpSocket& socket = outcome.dump.sockets[0];
    EXPECT_EQ(socket.state, TcpState::kEstablished);
    EXPECT_EQ(AddressText(socket.local, 0), "192.0.2.1");
    EXPECT_EQ(AddressText(socket.peer, 0), "192.0.2.9");
    EXPECT_EQ(socket.localPort, 2222);
    EXPECT_EQ(socket.inode, 29024U);
}

TEST(SockDiag, ReadsAnIpv6SocketWithItsInterface) {
    inet_diag_msg entry = Entry(AF_INET6, TCP_LISTEN, "fe80::1", "fe80::2", 4294967295U);
    entry.id.idiag_if = 7;
    const Outcome outcome = Parse(DiagBuffer().Put(SOCK_DIAG_BY_FAMILY, entry));
    ASSERT_EQ(outcome.dump.sockets.size(), 1U);
    const TcpSocket& socket = outcome.dump.sockets[0];
    EXPECT_EQ(socket.state, TcpState::kListen);
    EXPECT_EQ(AddressText(socket.peer, 0), "fe80::2");
    EXPECT_EQ(socket.scope, 7U);
    EXPECT_EQ(socket.inode, 4294967295U);
}

TEST(SockDiag, ReadsAllMessagesUpToTheEnd) {
    const Outcome outcome = Parse(DiagBuffer()
                                      .Put(SOCK_DIAG_BY_FAMILY, kEntry)
                                      .Put(SOCK_DIAG_BY_FAMILY, kEntry)
                                      .Put(NLMSG_DONE, std::int32_t{0})
                                      .Put(SOCK_DIAG_BY_FAMILY, kEntry));
    EXPECT_EQ(outcome.state, DumpState::kDone);
    EXPECT_EQ(outcome.dump.sockets.size(), 2U);
}

TEST(SockDiag, FailsWhenTheKernelRefuses) {
    nlmsgerr refusal{};
    refusal.error = -2;
    EXPECT_EQ(Parse(DiagBuffer().Put(NLMSG_ERROR, refusal)).state, DumpState::kFailed);
    EXPECT_EQ(Parse(DiagBuffer().Put(NLMSG_DONE, std::int32_t{-2})).state, DumpState::kFailed);
    EXPECT_EQ(Parse(DiagBuffer().Put(NLMSG_ERROR, char{0})).state, DumpState::kFailed);
}

TEST(SockDiag, NoticesThatTheTableChanged) {
    const Outcome outcome = Parse(DiagBuffer()
                                      .Put(SOCK_DIAG_BY_FAMILY, kEntry, NLM_F_DUMP_INTR)
                                      .Put(NLMSG_DONE, std::int32_t{0}));
    EXPECT_EQ(outcome.state, DumpState::kDone);
    EXPECT_TRUE(outcome.dump.interrupted);
}

TEST(SockDiag, PassesOverMessagesOfAnotherKind) {
    inet_diag_msg unixSocket = kEntry;
    unixSocket.idiag_family = AF_UNIX;
    const Outcome outcome = Parse(DiagBuffer()
                                      .Put(SOCK_DIAG_BY_FAMILY, char{1})
                                      .Put(NLMSG_NOOP, kEntry)
                                      .Put(SOCK_DIAG_BY_FAMILY, unixSocket)
                                      .Put(SOCK_DIAG_BY_FAMILY, kEntry));
    EXPECT_EQ(outcome.state, DumpState::kMore);
    EXPECT_EQ(outcome.dump.sockets.size(), 1U);
}

TEST(SockDiag, RefusesAMessageThatClaimsMoreThanTheBufferHolds) {
    for (const std::uint32_t length : {0U, 1U, 15U, 1000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const Outcome outcome = Parse(DiagBuffer().Put(SOCK_DIAG_BY_FAMILY, kEntry).Claim(length));
        EXPECT_EQ(outcome.state, DumpState::kFailed) << length;
        EXPECT_TRUE(outcome.dump.sockets.empty()) << length;
    }
    for (const std::size_t size : {1, 15, 16, 40, 87}) {
        const Outcome outcome = Parse(DiagBuffer().Put(SOCK_DIAG_BY_FAMILY, kEntry).Cut(size));
        EXPECT_EQ(outcome.state, DumpState::kFailed) << size;
        EXPECT_TRUE(outcome.dump.sockets.empty()) << size;
    }
}

auto Key(const TcpSocket& socket) {
    return std::make_tuple(socket.state, socket.local, socket.localPort, socket.peer, socket.inode);
}

void Sort(std::vector<TcpSocket>& sockets) {
    std::sort(sockets.begin(), sockets.end(),
              [](const auto& a, const auto& b) { return Key(a) < Key(b); });
}

TEST(SockDiag, AgreesWithProcNetTcp) {
    InPrivateNetwork([] {
        const Listener listener4("127.0.0.1");
        const Listener listener6("::1");
        const Listener dual("::");
        const ServedClient client4(listener4, "127.0.0.2");
        const ServedClient client6(listener6, "::1");
        const ServedClient mapped(dual, "127.0.0.3");
        ServedClient halfClosed(listener4, "127.0.0.4");
        ASSERT_EQ(shutdown(halfClosed.Client().Get(), SHUT_WR), 0);
        std::vector<TcpSocket> dumped = DumpSockets();
        std::vector<TcpSocket> listed = ReadProcNetTcp().value_or(std::vector<TcpSocket>());
        Sort(dumped);
        Sort(listed);
        // The end that has half closed the connection is no server's: /proc/net alone lists it.
        listed.erase(std::remove_if(
                         listed.begin(), listed.end(),
                         [](const TcpSocket& socket) { return socket.state == TcpState::kOther; }),
                     listed.end());
        ASSERT_EQ(dumped.size(), 10U);
        ASSERT_EQ(listed.size(), dumped.size());
        for (std::size_t i = 0; i < dumped.size(); ++i) {
            EXPECT_EQ(Key(dumped[i]), Key(listed[i])) << i;
        }
    });
}

}  // namespace
