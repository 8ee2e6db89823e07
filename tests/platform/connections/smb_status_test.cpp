// SPDX-License-Identifier: MIT
#include "platform/linux/connections/smb_status.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace vornplatform;

std::string Session(const std::string& pid, const std::string& uid, const std::string& name) {
    return R"({"session_id": "1", "server_id": {"pid": )" + pid +
           R"(, "task_id": "0", "vnn": "4294967295"}, "uid": )" + uid +
           R"(, "gid": 5001, "username": )" + name +
           R"(, "remote_machine": "127.0.0.1", "hostname": "ipv4:127.0.0.1:45834"})";
}

std::string Sessions(const std::vector<std::string>& sessions) {
    std::string text = R"({"version": "4.17.12", "smb_conf": "smb.conf", "sessions": {)";
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        text += (i == 0 ? "\"" : ", \"") + std::to_string(i) + "\": " + sessions[i];
    }
    return text + "}}";
}

TEST(SmbStatus, GivesTheUsersByServer) {
    const auto users = ParseSmbStatus(Sessions(
        {Session("\"8661\"", "5001", "\"alice\""), Session("\"8667\"", "5002", "\"bob\"")}));
    EXPECT_EQ(users, (SmbUsers{{8661, {"alice"}}, {8667, {"bob"}}}));
}

TEST(SmbStatus, GivesEachUserOfAServerOnceInAStableOrder) {
    const auto users = ParseSmbStatus(
        Sessions({Session("\"8661\"", "5002", "\"bob\""), Session("\"8661\"", "5001", "\"alice\""),
                  Session("\"8661\"", "5002", "\"bob\"")}));
    EXPECT_EQ(users, (SmbUsers{{8661, {"alice", "bob"}}}));
}

/** Sessions of alice (5001) and bob (5002) with one server, and its opens by these users. */
std::string OpensBy(const std::vector<std::string>& uids) {
    std::string text = Sessions(
        {Session("\"8661\"", "5001", "\"alice\""), Session("\"8661\"", "5002", "\"bob\"")});
    text.pop_back();
    text += R"(, "open_files": {)";
    for (std::size_t i = 0; i < uids.size(); ++i) {
        text += (i == 0 ? "\"" : ", \"") + std::to_string(i) +
                R"(": {"opens": {"8661/1": {"server_id": {"pid": "8661"}, "uid": )" + uids[i] +
                "}}}";
    }
    return text + "}}";
}

TEST(SmbStatus, GivesTheOneUserAsWhomAServerOfSeveralHasOpenedItsFiles) {
    const struct {
        std::vector<std::string> uids;
        std::vector<std::string> users;
    } rows[] = {
        {{}, {"alice", "bob"}},
        {{"5002"}, {"bob"}},
        {{"5001", "5001"}, {"alice"}},
        {{"5001", "5002"}, {"alice", "bob"}},
        {{"65534"}, {"alice", "bob"}},
        {{"5001", "65534"}, {"alice", "bob"}},
        {{"5001", "null"}, {"alice", "bob"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ParseSmbStatus(OpensBy(row.uids)), (SmbUsers{{8661, row.users}}))
            << OpensBy(row.uids);
    }
}

TEST(SmbStatus, KeepsANameAsItIs) {
    const auto users =
        ParseSmbStatus(Sessions({Session("\"1\"", "7", R"("DOM\\J\u00fcrgen M\u001b")")}));
    EXPECT_EQ(users, (SmbUsers{{1, {"DOM\\J\xC3\xBCrgen M\x1B"}}}));
}

TEST(SmbStatus, IsEmptyWithoutSessions) {
    EXPECT_EQ(ParseSmbStatus(Sessions({})), SmbUsers());
}

TEST(SmbStatus, LeavesOutSessionsThatSayNothing) {
    const std::string rows[] = {
        Session("\"1\"", "4294967295", "\"-1\""),
        Session("\"1\"", "-1", "\"-1\""),
        Session("\"1\"", "\"5001\"", "\"alice\""),
        Session("\"1\"", "null", "\"alice\""),
        Session("1", "5001", "\"alice\""),
        Session("\"0\"", "5001", "\"alice\""),
        Session("\"-1\"", "5001", "\"alice\""),
        Session("\"1x\"", "5001", "\"alice\""),
        Session("\"99999999999\"", "5001", "\"alice\""),
        Session("\"\"", "5001", "\"alice\""),
        Session("\"1\"", "5001", "\"\""),
        Session("\"1\"", "5001", "5001"),
        Session("\"1\"", "5001", "[\"alice\"]"),
        Session("\"1\"", "5001", "\"a\\u0000b\""),
        Session("\"1\"", "5001", '"' + std::string(513, 'x') + '"'),
        R"({"server_id": "1", "uid": 5001, "username": "alice"})",
        "[]",
        "\"1\"",
        "null",
    };
    for (const std::string& row : rows) {
        EXPECT_EQ(ParseSmbStatus(Sessions({row, Session("\"8667\"", "5002", "\"bob\"")})),
                  (SmbUsers{{8667, {"bob"}}}))
            << row;
    }
}

TEST(SmbStatus, RefusesTextOfAnotherForm) {
    const std::string rows[] = {
        "",
        "\n",
        "nonsense",
        "[]",
        "{}",
        "null",
        "{\"sessions\": []}",
        "{\"sessions\": null}",
        "{\"sessions\": {}} trailing",
        "{\"sessions\": {}",
        Sessions({}) + Sessions({}),
        std::string(100000, '['),
        "{\"sessions\": {\"1\": " + std::string(100, '[') + std::string(100, ']') + "}}"};
    for (const std::string& row : rows) {
        EXPECT_FALSE(ParseSmbStatus(row)) << row.substr(0, 60);
    }
}

}  // namespace
