#include "platform/linux/connections/server_connections.h"

#include <cstdint>
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

std::vector<std::string> UsersOf(const SocketHolder& holder, const SmbUsers& smbUsers,
                                 UserDirectory& directory) {
    if (holder.kind == ServerKind::kSmb) {
        const auto users = smbUsers.find(holder.pid);
        return users != smbUsers.end() ? users->second : std::vector<std::string>{kUnknown};
    }
    const auto users = ReadProcessUsers(holder.pid);
    return users ? std::vector<std::string>{directory.NameOf(users->effective)}
                 : std::vector<std::string>();
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
        const auto users = UsersOf(holder, smbUsers, directory);
        for (const std::uint64_t inode : holder.inodes) {
            for (const std::string& user : users) {
                connections.push_back(
                    {static_cast<std::uint32_t>(holder.pid), sockets.at(inode).host, user, 0});
            }
        }
    }
    return connections;
}

}  // namespace vornplatform
