// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_SSH_LOGIN_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_SSH_LOGIN_H

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/sockets/tcp_socket.h"

namespace vornplatform {

/** What is known of a process that holds the socket of an SSH connection. */
struct SshProcess {
    pid_t pid = 0;
    pid_t parent = 0;
    uid_t uid = 0; /**< effective */
    uid_t realUid = 0;
    std::string program; /**< file name of the executable */
    std::optional<std::uint32_t> loginUid;
    std::optional<std::uint32_t> session;
    std::optional<std::uint32_t> parentSession;
    bool hasChildren = false;
    bool listens = false;
};

/**
 * Whether a login gave this monitor a session of its own. One that its parent has as well is
 * inherited: the server was started by hand from somebody's login. So is one that an ordinary user
 * brought along, whatever the program calls itself: whoever gives sessions away is root, before and
 * after, and can turn into others only as the effective user.
 */
bool HasOwnSession(const SshProcess& monitor);

/** An authenticated SSH connection. */
struct SshLogin {
    uid_t user = 0;
    std::optional<std::uint32_t> session; /**< the kernel's number, if this login has one */
};

/**
 * Tells from the processes that share a connection's socket who has logged in over it.
 *
 * A server may stop listening, or listen elsewhere, while its sessions go on. So a socket that
 * nobody listens on is a client's as well, if the first of the processes is root, who alone gives
 * logins away, and doesn't listen itself: a listening sshd has called out, to a directory of users.
 *
 * @param processes      at least one
 * @param role           of the socket
 * @param separationUser the user that sshd's unauthenticated half runs as, if the host has it
 * @return nothing as long as nobody has
 */
std::optional<SshLogin> JudgeSshConnection(const std::vector<SshProcess>& processes,
                                           SocketRole role, std::optional<uid_t> separationUser);

}  // namespace vornplatform

#endif
