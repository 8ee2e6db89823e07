// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_DISCONNECT_HOST_FACTS_H
#define VORN_CLI_QUESTION_DISCONNECT_HOST_FACTS_H

/**
 * @file
 * What a plan is made from: the processes of the host, and which of them serve clients.
 */

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace cli {

/** TCP sockets of a process, in whatever network namespace they are. */
struct TcpSockets {
    bool known = true; /**< false where something keeps the process from being asked */
    std::map<ino_t, uint16_t> connected; /**< local ports by the numbers of the sockets */
    std::set<uint16_t> listening;        /**< ports */
};

struct ServerProcess {
    pid_t parent = 0;
    uint64_t start = 0;              /**< in clock ticks since boot */
    bool init = false;               /**< process 1 of its PID namespace */
    std::string program;             /**< file name of the executable */
    std::string slice;               /**< unit that names its service; empty without one */
    std::string unit;                /**< service or scope that it belongs to; may be empty */
    std::optional<uint32_t> session; /**< the kernel's number of the login */
    TcpSockets sockets;
};

/** Whom a process serves. */
struct Client {
    std::string host;
    std::string user;
    bool ssh = false;
};

struct HostFacts {
    std::map<pid_t, ServerProcess> processes;
    std::map<pid_t, Client> clients;
    /** Names of the services that can be asked to disconnect their clients, by unit. */
    std::map<std::string, std::string> services;
    std::set<pid_t> own; /**< this process and those above it */

    const ServerProcess* Process(pid_t pid) const {
        const auto found = processes.find(pid);
        return found == processes.end() ? nullptr : &found->second;
    }
    const Client* ClientOf(pid_t pid) const {
        const auto found = clients.find(pid);
        return found == clients.end() ? nullptr : &found->second;
    }
    pid_t ParentOf(pid_t pid) const {
        const ServerProcess* process = Process(pid);
        return process == nullptr ? 0 : process->parent;
    }
};

/**
 * Asks the host. Sockets are looked for where they matter: at processes that serve clients, those
 * above and those below them.
 *
 * @throws Failure where the host can't be asked
 */
HostFacts ReadHostFacts();

/**
 * Whether a process is the first of its PID namespace, from the text of `/proc/<pid>/status`. True
 * also where that isn't told, as such a process is never to be ended.
 */
bool IsInit(std::string_view status);

}  // namespace cli

#endif
