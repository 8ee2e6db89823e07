// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_DISCONNECT_CONNECTION_PROCESSES_H
#define VORN_CLI_QUESTION_DISCONNECT_CONNECTION_PROCESSES_H

/**
 * @file
 * Which processes a client's connection is made of.
 *
 * Of a server that has a process for each client it is that process, with those above and below it
 * that share the client's socket. Of SSH it is the server's process at the head of the session and
 * all of the session: what stands below the head, and what was detached from it and is still in the
 * service's slice by the kernel's count of logins.
 *
 * The daemon that waits for clients never is part of a connection. It is known by its sockets: it
 * listens, and has no connection by a port on which not it but a process above it listens. Nor is a
 * server that somebody has started from a session, by hand: it listens and has no part in the
 * session's own socket, or its children serve other clients.
 */

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "cli/question/disconnect/host_facts.h"

namespace cli {

class ConnectionProcesses {
public:
    explicit ConnectionProcesses(const HostFacts& facts);

    /** The head of the connection that a process is part of; nothing where it serves nobody. */
    std::optional<pid_t> HeadOf(pid_t pid) const;
    /** The processes of a connection, its head first. */
    std::vector<pid_t> Of(pid_t head) const;
    /** Connected sockets that nobody else has. */
    std::set<ino_t> SocketsOnlyOf(const std::vector<pid_t>& processes) const;
    /** Whether a process waits for clients, or is the parent of those that serve others. */
    bool IsDaemon(pid_t pid) const;

private:
    using Pids = std::set<pid_t>;

    std::optional<pid_t> HeadOfSession(pid_t pid) const;
    std::optional<pid_t> HeadByLogin(pid_t pid) const;
    pid_t HeadOfServer(pid_t pid) const;
    bool IsSshServer(pid_t pid) const;
    bool IsSameLogin(pid_t a, pid_t b) const;
    bool IsAwaitedAbove(pid_t pid, uint16_t port) const;
    bool SharesClient(pid_t a, pid_t b) const;
    bool WaitsForClients(pid_t pid) const;
    bool ServesOther(pid_t pid, pid_t head) const;
    bool IsForeign(pid_t pid, pid_t head) const;
    void Add(pid_t pid, pid_t head, Pids& seen, std::vector<pid_t>& processes) const;
    void AddDetached(pid_t head, Pids& seen, std::vector<pid_t>& processes) const;

    const HostFacts& facts_;
    std::map<pid_t, std::vector<pid_t>> children_;
};

}  // namespace cli

#endif
