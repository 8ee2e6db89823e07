// SPDX-License-Identifier: MIT
#include "cli/question/disconnect/tcp_sockets.h"

#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>

#include "cli/host/pid_descriptor.h"
#include "cli/question/holders/identity.h"
#include "support/folder.h"
#include "support/numbers.h"
#include "support/text.h"

namespace cli {
namespace {

int Option(int socket, int option) {
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(socket, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

bool IsTcp(int socket) {
    const int domain = Option(socket, SO_DOMAIN);
    const int protocol = Option(socket, SO_PROTOCOL);
    return (domain == AF_INET || domain == AF_INET6) &&
           (protocol == IPPROTO_TCP || protocol == IPPROTO_MPTCP);
}

/** Nothing where the socket has no such end. */
template <typename GetName>
std::optional<uint16_t> PortOf(int socket, GetName getName) {
    sockaddr_in6 address{};
    socklen_t size = sizeof address;
    if (getName(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return std::nullopt;
    }
    // The port stands at the same place in the addresses of both families.
    return ntohs(address.sin6_port);
}

void TakeSocket(int socket, TcpSockets& sockets) {
    struct stat info {};
    const auto port = IsTcp(socket) ? PortOf(socket, getsockname) : std::nullopt;
    if (!port || fstat(socket, &info) != 0) {
        return;
    }
    if (Option(socket, SO_ACCEPTCONN) == 1) {
        sockets.listening.insert(*port);
    } else if (PortOf(socket, getpeername)) {
        sockets.connected.emplace(info.st_ino, *port);
    }
}

bool HasGone(int error) {
    return error == ENOENT || error == ESRCH || error == EBADF;
}

/**
 * Calls visit(descriptor) with a copy of each socket of a process.
 *
 * @return whether all could be had
 */
template <typename Visit>
bool VisitSockets(const PidDescriptor& process, pid_t pid, Visit visit) {
    const support::Descriptor folder = support::OpenFolder(fmt::format("/proc/{}/fd", pid).c_str());
    if (!process || !folder) {
        return false;
    }
    bool all = true;
    const int error = support::VisitFolder(folder.Get(), [&](const dirent64& entry) {
        const auto number = support::ParseNumber<int>(entry.d_name);
        const auto link = LinkText(folder.Get(), entry.d_name);
        if (!number || !link || !support::StartsWith(*link, "socket:")) {
            return true;
        }
        const support::Descriptor copy = process.Copy(*number);
        if (copy) {
            visit(copy.Get());
        } else if (!HasGone(errno)) {
            all = false;
        }
        return true;
    });
    return all && error == 0;
}

}  // namespace

TcpSockets ReadTcpSockets(pid_t pid) {
    TcpSockets sockets;
    sockets.known =
        VisitSockets(PidDescriptor(pid), pid, [&](int socket) { TakeSocket(socket, sockets); });
    return sockets;
}

void ShutDownSockets(const PidDescriptor& process, pid_t pid, const std::set<ino_t>& sockets) {
    VisitSockets(process, pid, [&](int socket) {
        TcpSockets one;
        TakeSocket(socket, one);
        if (!one.connected.empty() && sockets.count(one.connected.begin()->first) != 0) {
            shutdown(socket, SHUT_RDWR);
        }
    });
}

}  // namespace cli
