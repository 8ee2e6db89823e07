// SPDX-License-Identifier: MIT
#include "platform/linux/connections/ssh_session.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/linux/connections/ssh_login.h"
#include "platform/linux/processes/process_reader.h"

namespace vornplatform {
namespace {

/** The user that OpenSSH is built to run its unauthenticated half as. */
constexpr char kSeparationUser[] = "sshd";

/** Processes of sshd by the socket that they share. */
using SharedSockets = std::map<std::uint64_t, std::vector<SshProcess>>;

/** Host and user of a connection, without the process. */
struct Client {
    std::string host;
    std::string user;

    Connection At(pid_t pid) const {
        return {static_cast<std::uint32_t>(pid), host, user, VORN_CURCONN_SSH};
    }
};

std::optional<SshProcess> ReadSshProcess(const SocketHolder& holder) {
    const auto stat = ReadProcessStat(holder.pid);
    const auto users = ReadProcessUsers(holder.pid);
    if (!stat || !users) {
        return std::nullopt;
    }
    SshProcess process;
    process.pid = holder.pid;
    process.parent = stat->parent;
    process.uid = users->effective;
    process.realUid = users->real;
    process.program = holder.program;
    process.listens = holder.listens;
    process.session = ReadSessionId(holder.pid);
    if (process.session) {
        process.loginUid = ReadLoginUid(holder.pid);
        process.parentSession = ReadSessionId(stat->parent);
    }
    // Tells only of a login that has no session of its own.
    if (!HasOwnSession(process)) {
        process.hasChildren = !ReadChildren(holder.pid).empty();
    }
    return process;
}

/** A process of sshd and the sockets that may be its client's. */
struct SshHolder {
    SshProcess process;
    const std::vector<std::uint64_t>& inodes;
};

std::vector<SshHolder> ReadSshHolders(const std::vector<SocketHolder>& holders) {
    std::vector<SshHolder> read;
    for (const SocketHolder& holder : holders) {
        if (holder.kind != ServerKind::kSsh) {
            continue;
        }
        if (auto process = ReadSshProcess(holder)) {
            read.push_back({std::move(*process), holder.inodes});
        }
    }
    return read;
}

/**
 * The client's socket is the first that a process of root's has, whether or not somebody listens
 * still, and the half without rights has the same; a server of anybody else is listened for.
 */
SharedSockets GroupBySocket(std::vector<SshHolder> holders, const ClientSockets& sockets) {
    std::unordered_set<std::uint64_t> ofRoot;
    for (const SshHolder& holder : holders) {
        if (holder.process.realUid == 0) {
            ofRoot.insert(holder.inodes.front());
        }
    }
    SharedSockets shared;
    for (SshHolder& holder : holders) {
        const auto isClients = [&](std::uint64_t inode) {
            return ofRoot.count(inode) != 0 || sockets.at(inode).role == SocketRole::kServed;
        };
        const auto inode = std::find_if(holder.inodes.begin(), holder.inodes.end(), isClients);
        if (inode != holder.inodes.end()) {
            shared[*inode].push_back(std::move(holder.process));
        }
    }
    return shared;
}

/** What the authenticated connections amount to. */
struct Logins {
    std::unordered_map<std::uint32_t, Client> sessions; /**< by kernel session id */
    std::vector<Connection> servers;                    /**< processes of sshd */
};

Logins ReadLogins(const SharedSockets& shared, const ClientSockets& sockets,
                  UserDirectory& directory) {
    const auto separationUser = UserDirectory::IdOf(kSeparationUser);
    Logins logins;
    for (const auto& [inode, group] : shared) {
        const ClientSocket& socket = sockets.at(inode);
        const auto login = JudgeSshConnection(group, socket.role, separationUser);
        if (!login) {
            continue;
        }
        const Client client{socket.host, directory.NameOf(login->user)};
        for (const SshProcess& process : group) {
            logins.servers.push_back(client.At(process.pid));
        }
        if (login->session) {
            logins.sessions.emplace(*login->session, client);
        }
    }
    return logins;
}

/** A holder speaks for its own connection, or for none yet, whatever session it was started from.
 */
std::unordered_set<pid_t> PidsOf(const SharedSockets& shared) {
    std::unordered_set<pid_t> pids;
    for (const auto& [inode, group] : shared) {
        for (const SshProcess& process : group) {
            pids.insert(process.pid);
        }
    }
    return pids;
}

}  // namespace

std::vector<Connection> SshConnections(const std::vector<SocketHolder>& holders,
                                       const ClientSockets& sockets,
                                       const std::vector<pid_t>& processes,
                                       UserDirectory& directory) {
    const SharedSockets shared = GroupBySocket(ReadSshHolders(holders), sockets);
    if (shared.empty()) {
        return {};
    }
    const Logins logins = ReadLogins(shared, sockets, directory);
    if (logins.sessions.empty()) {
        return logins.servers;
    }
    const std::unordered_set<pid_t> servers = PidsOf(shared);
    std::vector<Connection> connections;
    for (const pid_t pid : processes) {
        const auto session = servers.count(pid) == 0 ? ReadSessionId(pid) : std::nullopt;
        const auto client = session ? logins.sessions.find(*session) : logins.sessions.end();
        if (client != logins.sessions.end()) {
            connections.push_back(client->second.At(pid));
        }
    }
    connections.insert(connections.end(), logins.servers.begin(), logins.servers.end());
    return connections;
}

}  // namespace vornplatform
