// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/proc_net_tcp.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace vornplatform;

constexpr char kHeading[] =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout "
    "inode\n";
constexpr char kListening[] =
    "   0: 00000000:08AE 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 "
    "29003 1 0000000000000000 100 0 0 10 0\n";
constexpr char kEstablished[] =
    "  12: 0100007F:08AE 0200007F:91B9 01 00000000:00000000 02:000A7D2E 00000000  5001        0 "
    "29024 3 0000000000000000 20 4 30 10 -1\n";
constexpr char kEstablished6[] =
    "   1: 00000000000000000000000001000000:01BD B80D0120000000000000000005000000:91B9 01 "
    "00000000:00000000 02:000A7D2E 00000000     0        0 4294967295 3 0000000000000000\n";

TEST(ProcNetTcp, ReadsAnIpv4Socket) {
    const auto socket = ParseProcNetTcpLine(kEstablished);
    ASSERT_TRUE(socket);
    EXPECT_EQ(socket->state, TcpState::kEstablished);
    EXPECT_EQ(AddressText(socket->local, 0), "127.0.0.1");
    EXPECT_EQ(AddressText(socket->peer, 0), "127.0.0.2");
    EXPECT_EQ(socket->localPort, 2222);
    EXPECT_EQ(socket->inode, 29024U);
}

TEST(ProcNetTcp, ReadsAnIpv6Socket) {
    const auto socket = ParseProcNetTcpLine(kEstablished6);
    ASSERT_TRUE(socket);
    EXPECT_EQ(AddressText(socket->local, 0), "::1");
    EXPECT_EQ(AddressText(socket->peer, 0), "2001:db8::5");
    EXPECT_EQ(socket->localPort, 445);
    EXPECT_EQ(socket->inode, 4294967295U);
}

TEST(ProcNetTcp, TellsTheStatesApart) {
    const struct {
        const char* state;
        TcpState expected;
    } rows[] = {{"01", TcpState::kEstablished}, {"0A", TcpState::kListen},
                {"06", TcpState::kOther},       {"08", TcpState::kEstablished},
                {"10", TcpState::kOther},       {"FF", TcpState::kOther}};
    for (const auto& row : rows) {
        std::string line = kEstablished;
        line.replace(line.find(" 01 ") + 1, 2, row.state);
        const auto socket = ParseProcNetTcpLine(line);
        ASSERT_TRUE(socket) << line;
        EXPECT_EQ(socket->state, row.expected) << row.state;
    }
}

TEST(ProcNetTcp, RefusesALineOfAnotherForm) {
    const char* rows[] = {
        "",
        kHeading,
        "0:",
        "0: 0100007F:08AE",
        "0: 0100007F:08AE 0200007F:91B9 01",
        "0: 0100007F:08AE 0200007F:91B9 01 0:0 0:0 0 0 0",
        "0: 0100007F:08AE 0200007F:91B9 01 0:0 0:0 0 0 0 x",
        "0: 0100007F:08AE 0200007F:91B9 01 0:0 0:0 0 0 0 -1",
        "0: 0100007F:108AE 0200007F:91B9 01 0:0 0:0 0 0 0 5",
        "0: 0100007:08AE 0200007F:91B9 01 0:0 0:0 0 0 0 5",
        "0: 0100007F0100007F:08AE 0200007F:91B9 01 0:0 0:0 0 0 0 5",
        "0: 0100007G:08AE 0200007F:91B9 01 0:0 0:0 0 0 0 5",
        "0: 0100007F 0200007F:91B9 01 0:0 0:0 0 0 0 5",
        "0: :08AE 0200007F:91B9 01 0:0 0:0 0 0 0 5",
    };
    for (const char* row : rows) {
        EXPECT_FALSE(ParseProcNetTcpLine(row)) << row;
    }
}

TEST(ProcNetTcp, PassesOverLinesOfAnotherForm) {
    std::vector<TcpSocket> sockets;
    ParseProcNetTcp(std::string(kHeading) + kListening + "nonsense\n\n" + kEstablished, sockets);
    ASSERT_EQ(sockets.size(), 2U);
    EXPECT_EQ(sockets[0].state, TcpState::kListen);
    EXPECT_EQ(sockets[1].inode, 29024U);
}

}  // namespace
