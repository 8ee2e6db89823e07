// SPDX-License-Identifier: MIT
#include "platform/linux/connections/connection_block.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace vornplatform;

std::vector<std::string> Texts(const std::vector<Connection>& connections) {
    std::vector<std::string> texts;
    for (const Connection& it : connections) {
        texts.push_back(std::to_string(it.pid) + ' ' + it.host + ' ' + it.user + ' ' +
                        std::to_string(it.type));
    }
    return texts;
}

TEST(ConnectionBlock, IsNullForNoRecord) {
    EXPECT_EQ(BuildBlock({}), nullptr);
}

TEST(ConnectionBlock, HoldsRecordsAndTextsInOnePiece) {
    const std::string longUser(5000, 'x');
    const ConnectionBlock block =
        BuildBlock({{1, "192.0.2.1", "alice", 10}, {4294967295U, "::1", longUser, 0}});
    const VORN_CURCONN* records = block.get();
    EXPECT_EQ(records[0].pid, 1U);
    EXPECT_STREQ(records[0].szHost, "192.0.2.1");
    EXPECT_STREQ(records[0].szUser, "alice");
    EXPECT_EQ(records[0].type, 10U);
    EXPECT_EQ(records[1].pid, 4294967295U);
    EXPECT_STREQ(records[1].szHost, "::1");
    EXPECT_EQ(records[1].szUser, longUser);
    EXPECT_EQ(records[1].type, 0U);
    const char* begin = reinterpret_cast<const char*>(records);
    EXPECT_EQ(records[0].szHost, begin + 2 * 64);
    EXPECT_EQ(records[1].szUser, begin + 2 * 64 + sizeof("192.0.2.1") + sizeof("alice") + 4);
}

TEST(ConnectionList, KeepsTheLastOfARepeatedRecord) {
    using Strings = std::vector<std::string>;
    EXPECT_EQ(Texts(WithoutRepeats({{1, "a", "u", 0}, {1, "b", "u", 0}, {1, "a", "u", 0}})),
              (Strings{"1 b u 0", "1 a u 0"}));
    EXPECT_EQ(Texts(WithoutRepeats({{1, "a", "u", 10}, {2, "a", "u", 0}, {1, "a", "u", 0}})),
              (Strings{"2 a u 0", "1 a u 10"}));
    EXPECT_EQ(Texts(WithoutRepeats({{1, "a", "u", 0}, {1, "a", "v", 0}, {1, "b", "u", 0}})),
              (Strings{"1 a u 0", "1 a v 0", "1 b u 0"}));
    EXPECT_TRUE(WithoutRepeats({}).empty());
}

}  // namespace
