// SPDX-License-Identifier: MIT
#include "platform/linux/connections/dropbear_login.h"

#include <gtest/gtest.h>

namespace {

using namespace vornplatform;

constexpr uid_t kAlice = 5001;
constexpr uid_t kBob = 5002;

TEST(DropbearLogin, IsNobodysWithoutASession) {
    EXPECT_FALSE(JudgeDropbearConnection(0, {}));
    EXPECT_FALSE(JudgeDropbearConnection(kAlice, {}));
}

TEST(DropbearLogin, IsTheUserOfItsSessions) {
    const struct {
        uid_t server;
        std::vector<DropbearSession> sessions;
        std::optional<uid_t> user;
    } rows[] = {
        {0, {{kAlice}}, kAlice},
        {0, {{0}}, 0},
        {0, {{kAlice}, {kAlice}}, kAlice},
        {0, {{kAlice}, {kBob}}, std::nullopt},
        {0, {{kAlice}, {0}}, std::nullopt},
        {0, {{0, true}}, std::nullopt},
        {0, {{kAlice}, {kAlice, true}}, std::nullopt},
        // Whoever isn't root lets in nobody else, whatever the children have become.
        {kBob, {{kBob}}, kBob},
        {kBob, {{0}}, kBob},
        {kBob, {{0, true}}, kBob},
    };
    for (const auto& row : rows) {
        const auto login = JudgeDropbearConnection(row.server, row.sessions);
        ASSERT_TRUE(login);
        EXPECT_EQ(login->user, row.user) << row.server << ' ' << row.sessions.size();
    }
}

}  // namespace
