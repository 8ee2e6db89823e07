// SPDX-License-Identifier: MIT
#include "platform/linux/connections/ssh_login.h"

#include <algorithm>

namespace vornplatform {
namespace {

using Processes = std::vector<SshProcess>;

/** Until the client is authenticated, a half of sshd without rights talks to it. */
bool HasUnauthenticatedHalf(const Processes& processes, std::optional<uid_t> separationUser) {
    return std::any_of(processes.begin(), processes.end(), [&](const SshProcess& process) {
        return process.program == "sshd-auth" || process.uid == separationUser;
    });
}

/** The half that was there first: its parent does not hold the socket. */
const SshProcess& Monitor(const Processes& processes) {
    const auto isTop = [&](const SshProcess& process) {
        return std::none_of(processes.begin(), processes.end(),
                            [&](const SshProcess& other) { return other.pid == process.parent; });
    };
    const auto top = std::find_if(processes.begin(), processes.end(), isTop);
    return top == processes.end() ? processes.front() : *top;
}

/** Before a login the one child of a holder is the half without rights, and that is a holder. */
bool RunsASession(const Processes& processes) {
    return std::any_of(processes.begin(), processes.end(), [&](const SshProcess& process) {
        const auto isChild = [&](const SshProcess& other) { return other.parent == process.pid; };
        return process.hasChildren && std::none_of(processes.begin(), processes.end(), isChild);
    });
}

bool MayBeClients(SocketRole role, const SshProcess& monitor) {
    return role == SocketRole::kServed || (monitor.realUid == 0 && !monitor.listens);
}

}  // namespace

bool HasOwnSession(const SshProcess& monitor) {
    return monitor.realUid == 0 && monitor.loginUid && monitor.session &&
           monitor.session != monitor.parentSession;
}

std::optional<SshLogin> JudgeSshConnection(const Processes& processes, SocketRole role,
                                           std::optional<uid_t> separationUser) {
    const SshProcess& monitor = Monitor(processes);
    if (!MayBeClients(role, monitor) || HasUnauthenticatedHalf(processes, separationUser)) {
        return std::nullopt;
    }
    if (HasOwnSession(monitor)) {
        return SshLogin{*monitor.loginUid, monitor.session};
    }
    const auto half = std::find_if(processes.begin(), processes.end(),
                                   [&](const SshProcess& it) { return it.uid != monitor.uid; });
    if (half != processes.end()) {
        return SshLogin{half->uid, std::nullopt};
    }
    // Whoever logs in as the user that the server runs as gets no half of another user: the one
    // process starts the sessions itself, since OpenSSH 9.8 the second that is of the same user.
    if (RunsASession(processes)) {
        return SshLogin{monitor.uid, std::nullopt};
    }
    return std::nullopt;
}

}  // namespace vornplatform
