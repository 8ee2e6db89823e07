// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/connection_processes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace cli {
namespace {

const TcpSockets& SocketsOf(const HostFacts& facts, pid_t pid) {
    static const TcpSockets kNone;
    const ServerProcess* process = facts.Process(pid);
    return process == nullptr ? kNone : process->sockets;
}

/** Calls visit for a process and those above it, the nearest first, until it returns false. */
template <typename Visit>
void VisitUpwards(const HostFacts& facts, pid_t pid, Visit visit) {
    std::set<pid_t> seen;
    while (pid > 1 && seen.insert(pid).second && visit(pid)) {
        pid = facts.ParentOf(pid);
    }
}

}  // namespace

ConnectionProcesses::ConnectionProcesses(const HostFacts& facts) : facts_(facts) {
    for (const auto& [pid, process] : facts_.processes) {
        children_[process.parent].push_back(pid);
    }
}

/** Whether some process above listens on a port. */
bool ConnectionProcesses::IsAwaitedAbove(pid_t pid, uint16_t port) const {
    bool awaited = false;
    VisitUpwards(facts_, facts_.ParentOf(pid), [&](pid_t above) {
        awaited = SocketsOf(facts_, above).listening.count(port) != 0;
        return !awaited;
    });
    return awaited;
}

/**
 * What a daemon has connected to, such as a database, its children may share with it and with each
 * other: a client's socket is one that a daemon above both has waited for, and neither does.
 */
bool ConnectionProcesses::SharesClient(pid_t a, pid_t b) const {
    const TcpSockets& one = SocketsOf(facts_, a);
    const TcpSockets& other = SocketsOf(facts_, b);
    return std::any_of(one.connected.begin(), one.connected.end(), [&](const auto& socket) {
        const auto& [inode, port] = socket;
        return other.connected.count(inode) != 0 && one.listening.count(port) == 0 &&
               other.listening.count(port) == 0 && IsAwaitedAbove(a, port) &&
               IsAwaitedAbove(b, port);
    });
}

bool ConnectionProcesses::IsSameLogin(pid_t a, pid_t b) const {
    const Client* one = facts_.ClientOf(a);
    const Client* other = facts_.ClientOf(b);
    const ServerProcess* process = facts_.Process(a);
    const ServerProcess* otherProcess = facts_.Process(b);
    return one != nullptr && other != nullptr && process != nullptr && otherProcess != nullptr &&
           one->ssh && other->ssh && one->host == other->host && one->user == other->user &&
           process->session == otherProcess->session;
}

/** Whether it has an SSH client's socket; other programs of a session have sockets too. */
bool ConnectionProcesses::IsSshServer(pid_t pid) const {
    constexpr std::array<std::string_view, 4> kPrograms = {"sshd", "sshd-session", "sshd-auth",
                                                           "dropbear"};
    const Client* client = facts_.ClientOf(pid);
    const ServerProcess* process = facts_.Process(pid);
    return client != nullptr && client->ssh && process != nullptr &&
           std::find(kPrograms.begin(), kPrograms.end(), process->program) != kPrograms.end() &&
           !process->sockets.connected.empty() && !WaitsForClients(pid);
}

/** Somebody else's client: of another socket, and of another login. */
bool ConnectionProcesses::ServesOther(pid_t pid, pid_t head) const {
    return facts_.ClientOf(pid) != nullptr && !SharesClient(pid, head) && !IsSameLogin(pid, head);
}

/**
 * Servers of one client listen too, for connections of FTP that carry data, or for what is
 * forwarded over SSH. These have a connection by a port on which not they listen, but the daemon
 * above them.
 */
bool ConnectionProcesses::WaitsForClients(pid_t pid) const {
    const TcpSockets& sockets = SocketsOf(facts_, pid);
    return !sockets.listening.empty() &&
           std::none_of(sockets.connected.begin(), sockets.connected.end(),
                        [&](const auto& socket) {
                            return sockets.listening.count(socket.second) == 0 &&
                                   IsAwaitedAbove(pid, socket.second);
                        });
}

bool ConnectionProcesses::IsDaemon(pid_t pid) const {
    const auto found = children_.find(pid);
    return WaitsForClients(pid) ||
           (found != children_.end() &&
            std::any_of(found->second.begin(), found->second.end(),
                        [&](pid_t child) { return ServesOther(child, pid); }));
}

std::optional<pid_t> ConnectionProcesses::HeadOf(pid_t pid) const {
    const Client* client = facts_.ClientOf(pid);
    if (client != nullptr && !client->ssh) {
        return SocketsOf(facts_, pid).connected.empty() ? std::nullopt
                                                        : std::optional(HeadOfServer(pid));
    }
    return HeadOfSession(pid);
}

pid_t ConnectionProcesses::HeadOfServer(pid_t pid) const {
    pid_t head = pid;
    VisitUpwards(facts_, facts_.ParentOf(pid), [&](pid_t above) {
        const Client* client = facts_.ClientOf(above);
        const ServerProcess* process = facts_.Process(above);
        if ((client != nullptr && client->ssh) || process == nullptr ||
            process->program != facts_.Process(pid)->program || !SharesClient(above, pid) ||
            IsDaemon(above)) {
            return false;
        }
        head = above;
        return true;
    });
    return head;
}

std::optional<pid_t> ConnectionProcesses::HeadOfSession(pid_t pid) const {
    // Without a record of its own it is its nearest ancestor's, if that is of SSH.
    pid_t known = 0;
    VisitUpwards(facts_, pid, [&](pid_t above) {
        known = facts_.ClientOf(above) != nullptr ? above : 0;
        return known == 0;
    });
    if (known == 0 || !facts_.ClientOf(known)->ssh) {
        return std::nullopt;
    }
    std::optional<pid_t> head;
    VisitUpwards(facts_, known, [&](pid_t above) {
        if (IsSshServer(above) && IsSameLogin(above, known)) {
            head = above;
        }
        return true;
    });
    return head ? head : HeadByLogin(known);
}

/** For what was detached. A server without a login of its own has that of whoever started it. */
std::optional<pid_t> ConnectionProcesses::HeadByLogin(pid_t pid) const {
    const ServerProcess* process = facts_.Process(pid);
    if (process == nullptr || !process->session) {
        return std::nullopt;
    }
    for (const auto& [candidate, client] : facts_.clients) {
        const ServerProcess* above = facts_.Process(facts_.ParentOf(candidate));
        const bool began = above == nullptr || above->session != process->session;
        if (began && IsSshServer(candidate) && IsSameLogin(candidate, pid)) {
            return candidate;
        }
    }
    return std::nullopt;
}

/** What is no part of a connection although it stands below its head. */
bool ConnectionProcesses::IsForeign(pid_t pid, pid_t head) const {
    const ServerProcess* process = facts_.Process(pid);
    if (process == nullptr || process->init || !process->sockets.known || ServesOther(pid, head)) {
        return true;
    }
    return !SharesClient(pid, head) && (!process->sockets.listening.empty() || IsDaemon(pid));
}

void ConnectionProcesses::Add(pid_t pid, pid_t head, Pids& seen,
                              std::vector<pid_t>& processes) const {
    const Client* client = facts_.ClientOf(head);
    const bool ofSession = client != nullptr && client->ssh;
    const bool isPart =
        pid == head || (!IsForeign(pid, head) && (ofSession || SharesClient(pid, head)));
    if (!seen.insert(pid).second || !isPart) {
        return;
    }
    processes.push_back(pid);
    const auto below = children_.find(pid);
    if (below != children_.end()) {
        for (const pid_t child : below->second) {
            Add(child, head, seen, processes);
        }
    }
}

/** Each from its top downwards, so that what a foreign process has started stays with it. */
void ConnectionProcesses::AddDetached(pid_t head, Pids& seen, std::vector<pid_t>& processes) const {
    const ServerProcess& server = *facts_.Process(head);
    const ServerProcess* above = facts_.Process(server.parent);
    if (!server.session || (above != nullptr && above->session == server.session)) {
        return;
    }
    for (const auto& [pid, process] : facts_.processes) {
        const ServerProcess* parent = facts_.Process(process.parent);
        const bool isTop = parent == nullptr || parent->session != process.session;
        if (isTop && process.session == server.session && process.slice == server.slice &&
            IsSameLogin(pid, head)) {
            Add(pid, head, seen, processes);
        }
    }
}

std::vector<pid_t> ConnectionProcesses::Of(pid_t head) const {
    std::vector<pid_t> processes;
    Pids seen;
    if (facts_.Process(head) == nullptr) {
        return processes;
    }
    Add(head, head, seen, processes);
    const Client* client = facts_.ClientOf(head);
    if (client != nullptr && client->ssh) {
        AddDetached(head, seen, processes);
    }
    return processes;
}

std::set<ino_t> ConnectionProcesses::SocketsOnlyOf(const std::vector<pid_t>& processes) const {
    std::set<ino_t> sockets;
    for (const pid_t pid : processes) {
        for (const auto& [inode, port] : SocketsOf(facts_, pid).connected) {
            sockets.insert(inode);
        }
    }
    for (const auto& [pid, process] : facts_.processes) {
        if (std::find(processes.begin(), processes.end(), pid) == processes.end()) {
            for (const auto& [inode, port] : process.sockets.connected) {
                sockets.erase(inode);
            }
        }
    }
    return sockets;
}

}  // namespace cli
