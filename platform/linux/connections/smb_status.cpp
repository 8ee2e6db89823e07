// SPDX-License-Identifier: MIT
#include "platform/linux/connections/smb_status.h"

#include <json/json.h>

#include <cerrno>
#include <memory>
#include <new>
#include <set>
#include <utility>

#include "support/numbers.h"

namespace vornplatform {
namespace {

constexpr int kMaxDepth = 32;
constexpr std::size_t kMaxNameSize = 512;

std::unique_ptr<Json::CharReader> MakeReader() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = kMaxDepth;
    // Users and files are named by clients; what repeats must not cost the whole reply.
    builder["rejectDupKeys"] = false;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

std::optional<Json::Value> ParseJson(std::string_view text) {
    Json::Value root;
    errno = 0;
    try {
        if (MakeReader()->parse(text.data(), text.data() + text.size(), &root, nullptr)) {
            return root;
        }
    } catch (const Json::Exception&) {
        // Two reasons, one type: no memory for a text, which malloc said, or too deep a nesting.
        if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }
    return std::nullopt;
}

/** A member of a value that may be of any type; null where there is none. */
const Json::Value& Member(const Json::Value& value, const char* key) {
    return value.isObject() ? value[key] : Json::Value::nullSingleton();
}

/** Process ids are written as texts. */
std::optional<pid_t> ServerPid(const Json::Value& session) {
    const Json::Value& value = Member(Member(session, "server_id"), "pid");
    if (!value.isString()) {
        return std::nullopt;
    }
    const auto pid = support::ParseNumber<pid_t>(value.asString());
    return pid && *pid > 0 ? pid : std::nullopt;
}

constexpr uid_t kNobodyYet = static_cast<uid_t>(-1);

/** While a session is being authenticated its user id is -1, as what is no id is here. */
uid_t UserId(const Json::Value& value) {
    const Json::Value& uid = Member(value, "uid");
    return uid.isUInt() ? uid.asUInt() : kNobodyYet;
}

std::optional<std::string> UserName(const Json::Value& session) {
    const Json::Value& value = Member(session, "username");
    if (!value.isString()) {
        return std::nullopt;
    }
    std::string name = value.asString();
    const bool usable =
        !name.empty() && name.size() <= kMaxNameSize && name.find('\0') == std::string::npos;
    return usable ? std::optional<std::string>(std::move(name)) : std::nullopt;
}

/** What is known of an smbd. */
struct Server {
    std::set<std::pair<uid_t, std::string>> sessions;
    std::set<uid_t> openers; /**< as whom it has opened its files */
};

using Servers = std::unordered_map<pid_t, Server>;

void ReadSessions(const Json::Value& root, Servers& servers) {
    for (const Json::Value& session : Member(root, "sessions")) {
        const auto pid = ServerPid(session);
        const auto name = UserName(session);
        const uid_t uid = UserId(session);
        if (pid && name && uid != kNobodyYet) {
            servers[*pid].sessions.emplace(uid, *name);
        }
    }
}

/** An open that doesn't say by whom counts as one by somebody else. */
void ReadOpens(const Json::Value& root, Servers& servers) {
    for (const Json::Value& file : Member(root, "open_files")) {
        for (const Json::Value& open : Member(file, "opens")) {
            if (const auto pid = ServerPid(open)) {
                servers[*pid].openers.insert(UserId(open));
            }
        }
    }
}

std::vector<std::string> UsersOf(const Server& server) {
    std::set<std::string> all;
    std::set<std::string> openers;
    for (const auto& [uid, name] : server.sessions) {
        all.insert(name);
        if (server.openers.count(uid) != 0) {
            openers.insert(name);
        }
    }
    const bool isOneOfThem = server.openers.size() == 1 && openers.size() == 1;
    const auto& users = isOneOfThem ? openers : all;
    return {users.begin(), users.end()};
}

}  // namespace

// {"sessions": {"2153685194": {"server_id": {"pid": "8667", ...}, "uid": 5002, "gid": 5002,
//  "username": "bob", "remote_machine": "127.0.0.1", "hostname": "ipv4:127.0.0.1:45834", ...}},
//  "open_files": {"/volume1/share/a": {"opens": {"8667/15": {"server_id": {"pid": "8667", ...},
//  "uid": 5002, ...}}, ...}}}
std::optional<SmbUsers> ParseSmbStatus(std::string_view text) {
    const auto root = ParseJson(text);
    if (!root || !Member(*root, "sessions").isObject()) {
        return std::nullopt;
    }
    Servers servers;
    ReadSessions(*root, servers);
    ReadOpens(*root, servers);
    SmbUsers users;
    for (const auto& [pid, server] : servers) {
        if (!server.sessions.empty()) {
            users.emplace(pid, UsersOf(server));
        }
    }
    return users;
}

}  // namespace vornplatform
