// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/kernel_ports.h"

#include <gtest/gtest.h>

namespace {

using namespace vornplatform;

TEST(NfsPorts, AreThoseOfTcp) {
    const struct {
        const char* text;
        Ports ports;
    } rows[] = {
        {"", {}},
        {"tcp 2049\ntcp 2049\nudp 2048\n", {2049}},
        {"rdma 20049\ntcp 2049\ntcp 4000\n", {2049, 4000}},
        {"tcp 2049", {2049}},
        {"tcp\ntcp \ntcp x\ntcp 65536\ntcp -1\ntcp 1 2\ntcp6 3\n\n", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseNfsPorts(row.text), row.ports) << row.text;
    }
}

}  // namespace
