#include "platform/linux/connections/smb_status.h"

#include <json/json.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>

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

/** While a session is being authenticated its user id is -1. */
bool IsAuthenticated(const Json::Value& session) {
    const Json::Value& uid = Member(session, "uid");
    return uid.isUInt() && uid.asUInt() != static_cast<uid_t>(-1);
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

void SortUnique(std::vector<std::string>& names) {
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
}

}  // namespace

// {"sessions": {"2153685194": {"server_id": {"pid": "8667", ...}, "uid": 5002, "gid": 5002,
//  "username": "bob", "remote_machine": "127.0.0.1", "hostname": "ipv4:127.0.0.1:45834", ...}}}
std::optional<SmbUsers> ParseSmbStatus(std::string_view text) {
    const auto root = ParseJson(text);
    if (!root || !Member(*root, "sessions").isObject()) {
        return std::nullopt;
    }
    SmbUsers users;
    for (const Json::Value& session : Member(*root, "sessions")) {
        const auto pid = ServerPid(session);
        const auto name = UserName(session);
        if (pid && name && IsAuthenticated(session)) {
            users[*pid].push_back(*name);
        }
    }
    for (auto& entry : users) {
        SortUnique(entry.second);
    }
    return users;
}

}  // namespace vornplatform
