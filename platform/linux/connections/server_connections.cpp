#include "platform/linux/connections/server_connections.h"

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/processes/process_reader.h"

namespace vornplatform {
namespace {

std::vector<SmbServer> FindSmbServers(const std::vector<SocketHolder>& holders) {
    std::vector<SmbServer> servers;
    for (const SocketHolder& holder : holders) {
        if (holder.kind != ServerKind::kSmb) {
            continue;
        }
        if (const auto stat = ReadProcessStat(holder.pid)) {
            servers.push_back({holder.pid, stat->startTime});
        }
    }
    return servers;
}

/** One user; of several nothing tells whose a file is. */
std::string SmbUserOf(pid_t server, const SmbUsers& smbUsers) {
    const auto users = smbUsers.find(server);
    const bool isOne = users != smbUsers.end() && users->second.size() == 1;
    return isOne ? users->second.front() : kUnknown;
}

/** Nothing of a process that has gone. */
std::optional<std::string> UserOf(const SocketHolder& holder, const SmbUsers& smbUsers,
                                  UserDirectory& directory) {
    if (holder.kind == ServerKind::kSmb) {
        return SmbUserOf(holder.pid, smbUsers);
    }
    if (holder.kind == ServerKind::kManyUsers) {
        return kUnknown;
    }
    const auto users = ReadProcessUsers(holder.pid);
    return users ? std::optional<std::string>(directory.NameOf(users->effective)) : std::nullopt;
}

std::string HostOf(const SocketHolder& holder, const ClientSockets& sockets) {
    return holder.inodes.size() == 1 ? sockets.at(holder.inodes.front()).host : kUnknown;
}

}  // namespace

std::vector<Connection> ServerConnections(const std::vector<SocketHolder>& holders,
                                          const ClientSockets& sockets,
                                          const AskSmbUsers& askSmbUsers,
                                          UserDirectory& directory) {
    const std::vector<SmbServer> smbServers = FindSmbServers(holders);
    const SmbUsers smbUsers = smbServers.empty() ? SmbUsers() : askSmbUsers(smbServers);
    std::vector<Connection> connections;
    for (const SocketHolder& holder : holders) {
        if (holder.kind == ServerKind::kSsh || holder.kind == ServerKind::kDropbear) {
            continue;
        }
        if (const auto user = UserOf(holder, smbUsers, directory)) {
            connections.push_back(
                {static_cast<std::uint32_t>(holder.pid), HostOf(holder, sockets), *user, 0});
        }
    }
    return connections;
}

}  // namespace vornplatform
