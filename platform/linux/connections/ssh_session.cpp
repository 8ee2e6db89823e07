#include "platform/linux/connections/ssh_session.h"

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
    process.session = ReadSessionId(holder.pid);
    if (process.session) {
        process.loginUid = ReadLoginUid(holder.pid);
        process.parentSession = ReadSessionId(stat->parent);
    }
    // Tells only of a login that has no session of its own.
    if (!HasOwnSession(process)) {
        process.hasChildren = HasChildren(holder.pid);
    }
    return process;
}

SharedSockets GroupBySocket(const std::vector<SocketHolder>& holders) {
    SharedSockets shared;
    for (const SocketHolder& holder : holders) {
        if (holder.kind != ServerKind::kSsh) {
            continue;
        }
        if (auto process = ReadSshProcess(holder)) {
            shared[holder.inodes.front()].push_back(std::move(*process));
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
        const auto login = JudgeSshConnection(group, separationUser);
        if (!login) {
            continue;
        }
        const Client client{sockets.at(inode), directory.NameOf(login->user)};
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
    const SharedSockets shared = GroupBySocket(holders);
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
