// SPDX-License-Identifier: MIT
#include "platform/linux/connections/dropbear_login.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "platform/linux/processes/process_reader.h"

namespace vornplatform {
namespace {

std::vector<DropbearSession> ReadSessions(pid_t server) {
    std::vector<DropbearSession> sessions;
    for (const pid_t child : ReadChildren(server)) {
        const auto program = ReadProgram(child);
        const auto users = ReadProcessUsers(child);
        // Dropbear becomes the user after the fork and before it executes the user's program.
        if (program && users && KindOfServer(*program) != ServerKind::kDropbear) {
            sessions.push_back({users->real, RunsSetUserId(child).value_or(true)});
        }
    }
    return sessions;
}

std::optional<DropbearLogin> ReadLogin(pid_t server) {
    const auto users = ReadProcessUsers(server);
    return users ? JudgeDropbearConnection(users->real, ReadSessions(server)) : std::nullopt;
}

}  // namespace

std::optional<DropbearLogin> JudgeDropbearConnection(uid_t serverUid,
                                                     const std::vector<DropbearSession>& sessions) {
    if (sessions.empty()) {
        return std::nullopt;
    }
    if (serverUid != 0) {
        return DropbearLogin{serverUid};
    }
    const uid_t user = sessions.front().realUid;
    const bool isTold = std::all_of(sessions.begin(), sessions.end(), [user](const auto& session) {
        return session.realUid == user && !session.runsSetUserId;
    });
    return isTold ? DropbearLogin{user} : DropbearLogin{};
}

std::vector<Connection> DropbearConnections(const std::vector<SocketHolder>& holders,
                                            const ClientSockets& sockets,
                                            UserDirectory& directory) {
    std::vector<Connection> connections;
    for (const SocketHolder& holder : holders) {
        if (holder.kind != ServerKind::kDropbear) {
            continue;
        }
        if (const auto login = ReadLogin(holder.pid)) {
            connections.push_back(
                {static_cast<std::uint32_t>(holder.pid), sockets.at(holder.inodes.front()).host,
                 login->user ? directory.NameOf(*login->user) : std::string(kUnknown),
                 VORN_CURCONN_SSH});
        }
    }
    return connections;
}

}  // namespace vornplatform
