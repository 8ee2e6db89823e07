// SPDX-License-Identifier: MIT
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
std::string SmbUserOf(pid_t server, const SmbAnswer& smb) {
    const auto users = smb.users.find(server);
    const bool isOne = users != smb.users.end() && users->second.size() == 1;
    return isOne ? users->second.front() : kUnknown;
}

/** Whether the server has several channels of one user, any of which is where he comes from. */
bool HasChannelsOfOneUser(const SocketHolder& holder, const SmbAnswer& smb) {
    return holder.kind == ServerKind::kSmb && smb.shared.count(holder.pid) == 0 &&
           smb.users.count(holder.pid) != 0;
}

/** Nothing of a process that has gone. */
std::optional<std::string> UserOf(const SocketHolder& holder, const SmbAnswer& smb,
                                  UserDirectory& directory) {
    if (holder.kind == ServerKind::kSmb) {
        return SmbUserOf(holder.pid, smb);
    }
    if (holder.kind == ServerKind::kManyUsers) {
        return kUnknown;
    }
    const auto users = ReadProcessUsers(holder.pid);
    return users ? std::optional<std::string>(directory.NameOf(users->effective)) : std::nullopt;
}

std::string HostOf(const SocketHolder& holder, const ClientSockets& sockets, const SmbAnswer& smb) {
    const bool isTold = holder.inodes.size() == 1 || HasChannelsOfOneUser(holder, smb);
    return isTold ? sockets.at(holder.inodes.front()).host : kUnknown;
}

}  // namespace

std::vector<Connection> ServerConnections(const std::vector<SocketHolder>& holders,
                                          const ClientSockets& sockets,
                                          const AskSmbUsers& askSmbUsers,
                                          UserDirectory& directory) {
    const std::vector<SmbServer> smbServers = FindSmbServers(holders);
    const SmbAnswer smb = smbServers.empty() ? SmbAnswer() : askSmbUsers(smbServers);
    std::vector<Connection> connections;
    for (const SocketHolder& holder : holders) {
        if (holder.kind == ServerKind::kSsh || holder.kind == ServerKind::kDropbear) {
            continue;
        }
        if (const auto user = UserOf(holder, smb, directory)) {
            connections.push_back(
                {static_cast<std::uint32_t>(holder.pid), HostOf(holder, sockets, smb), *user, 0});
        }
    }
    return connections;
}

}  // namespace vornplatform
