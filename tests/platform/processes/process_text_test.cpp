// SPDX-License-Identifier: MIT
#include "platform/linux/processes/process_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace vornplatform;

/** The fields of /proc/<pid>/stat that follow the parent, up to the start time 1234567. */
const std::string kRest = " 10 10 0 -1 4194560 1 0 0 0 0 0 0 0 20 0 1 0 1234567 8192 100";

TEST(ProcessStat, BeginsAfterTheLastBracketOfTheName) {
    const struct {
        std::string text;
        pid_t parent;
    } rows[] = {
        {"42 (sshd) S 7" + kRest, 7},         {"42 (a b) S 7" + kRest, 7},
        {"42 (a) S 99 (b) S 7" + kRest, 7},   {"42 ()) S 7" + kRest, 7},
        {"42 (a\n1 (b) R 5) S 7" + kRest, 7}, {"42 () S 7" + kRest, 7},
        {"2 (kthreadd) S 0" + kRest, 0},      {"42 (sshd) S 7" + kRest + "\n", 7},
    };
    for (const auto& row : rows) {
        const auto stat = ParseProcessStat(row.text);
        ASSERT_TRUE(stat) << row.text;
        EXPECT_EQ(stat->parent, row.parent) << row.text;
        EXPECT_EQ(stat->startTime, 1234567U) << row.text;
    }
}

TEST(ProcessStat, RefusesTextOfAnotherForm) {
    const std::string rows[] = {"",
                                "42",
                                "42 (sshd)",
                                "42 (sshd) ",
                                "42 (sshd) S",
                                "42 (sshd) S 7",
                                "42 (sshd) S 7 10 10 0 -1 4194560 1 0 0 0 0 0 0 0 20 0 1 0",
                                "42 (sshd) S -7" + kRest,
                                "42 (sshd) S x" + kRest,
                                "42 (sshd) S 99999999999" + kRest,
                                "42 sshd S 7" + kRest};
    for (const std::string& row : rows) {
        EXPECT_FALSE(ParseProcessStat(row)) << row;
    }
}

TEST(ProcessStatus, GivesTheRealAndTheEffectiveUser) {
    const struct {
        std::string text;
        std::optional<std::pair<uid_t, uid_t>> realAndEffective;
    } rows[] = {
        {"Name:\tsmbd\nUmask:\t0022\nUid:\t0\t5001\t0\t5002\nGid:\t0\t0\t0\t0\n", {{0, 5001}}},
        {"Name:\tx\nUid:\t0\t4294967294\t0\t0\n", {{0, 4294967294U}}},
        {"Name:\tx\nUid:\t1\t2", {{1, 2}}},
        {"Name:\tUid:\t1\t2\nUid:\t3\t4\t5\t6\n", {{3, 4}}},
        {"Name:\tx\nUid:\t1\nGid:\t8\t9\t9\t9\n", std::nullopt},
        {"Name:\tx\nUid:\t1\t\t1\t1\n", std::nullopt},
        {"Name:\tx\nUid:\t1\t-2\t1\t1\n", std::nullopt},
        {"Name:\tx\nUid:\t-1\t1\t1\t1\n", std::nullopt},
        {"Name:\tx\nGid:\t8\t9\t9\t9\n", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& row : rows) {
        const auto users = ParseProcessUsers(row.text);
        ASSERT_EQ(users.has_value(), row.realAndEffective.has_value()) << row.text;
        if (users) {
            EXPECT_EQ(std::make_pair(users->real, users->effective), *row.realAndEffective)
                << row.text;
        }
    }
}

TEST(AuditId, IsNothingWhereNoneIsSet) {
    const struct {
        std::string text;
        std::optional<std::uint32_t> id;
    } rows[] = {
        {"5001", 5001},
        {"0", 0},
        {"4294967294", 4294967294U},
        {"5001\n", 5001},
        {"", std::nullopt},
        {"4294967295", std::nullopt},
        {"-1", std::nullopt},
        {"4294967296", std::nullopt},
        {"12 ", std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseAuditId(row.text), row.id) << row.text;
    }
}

TEST(Children, AreThoseThatTheTextHasWhole) {
    using Pids = std::vector<pid_t>;
    const struct {
        const char* text;
        Pids children;
    } rows[] = {{"", {}},
                {"29031 ", {29031}},
                {"29031 29040 ", {29031, 29040}},
                {"29031 290", {29031}},
                {"29031", {}},
                {"0 -1 x 5 ", {5}}};
    for (const auto& row : rows) {
        EXPECT_EQ(ParseChildren(row.text), row.children) << row.text;
    }
}

TEST(SocketLink, GivesTheInodeOfASocketAlone) {
    const struct {
        std::string link;
        std::optional<std::uint64_t> inode;
    } rows[] = {
        {"socket:[29024]", 29024},
        {"socket:[4294967295]", 4294967295U},
        {"socket:[]", std::nullopt},
        {"socket:[29024", std::nullopt},
        {"socket:[29024] ", std::nullopt},
        {"socket:[-1]", std::nullopt},
        {"pipe:[29024]", std::nullopt},
        {"/volume1/socket:[29024]", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseSocketLink(row.link), row.inode) << row.link;
    }
}

TEST(ExecutableName, OutlivesAnUpgradeOfTheProgram) {
    const struct {
        std::string link;
        std::string name;
    } rows[] = {
        {"/usr/sbin/sshd", "sshd"},
        {"/usr/sbin/sshd (deleted)", "sshd"},
        {"/opt/sshd/bin/tool", "tool"},
        {"/usr/sbin/sshd (deleted)x", "sshd (deleted)x"},
        {"sshd", "sshd"},
        {"/", ""},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ExecutableName(row.link), row.name) << row.link;
    }
}

}  // namespace
