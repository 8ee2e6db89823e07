// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/sock_diag.h"

#include <libmnl/libmnl.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/linux/support/host_error.h"
#include "support/owner.h"

namespace vornplatform {
namespace {

constexpr int kMaxAttempts = 4;
constexpr time_t kAnswerSeconds = 2;
constexpr std::size_t kBufferSize = 32 * 1024;

using Netlink = support::Owner<mnl_socket, mnl_socket_close>;

IpAddress ToAddress(std::uint8_t family, const __be32 (&words)[4]) {
    if (family == AF_INET) {
        return MapIpv4(words);
    }
    IpAddress address;
    std::memcpy(address.data(), words, address.size());
    return address;
}

TcpState ToState(std::uint8_t state) {
    switch (state) {
        case TCP_ESTABLISHED:
        case TCP_CLOSE_WAIT:
            return TcpState::kEstablished;
        case TCP_LISTEN:
            return TcpState::kListen;
        default:
            return TcpState::kOther;
    }
}

TcpSocket ToSocket(const inet_diag_msg& message) {
    TcpSocket socket;
    socket.state = ToState(message.idiag_state);
    socket.local = ToAddress(message.idiag_family, message.id.idiag_src);
    socket.peer = ToAddress(message.idiag_family, message.id.idiag_dst);
    socket.localPort = ntohs(message.id.idiag_sport);
    socket.scope = message.id.idiag_if;
    socket.inode = message.idiag_inode;
    return socket;
}

void AppendSocket(const nlmsghdr& header, std::vector<TcpSocket>& sockets) {
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY ||
        mnl_nlmsg_get_payload_len(&header) < sizeof(inet_diag_msg)) {
        return;
    }
    inet_diag_msg message;
    std::memcpy(&message, mnl_nlmsg_get_payload(&header), sizeof(message));
    if (message.idiag_family == AF_INET || message.idiag_family == AF_INET6) {
        sockets.push_back(ToSocket(message));
    }
}

/** The end of a dump carries the error that cut it short, if any did. */
DumpState EndOfDump(const nlmsghdr& header) {
    std::int32_t error = 0;
    if (mnl_nlmsg_get_payload_len(&header) >= sizeof(error)) {
        std::memcpy(&error, mnl_nlmsg_get_payload(&header), sizeof(error));
    }
    return error < 0 ? DumpState::kFailed : DumpState::kDone;
}

/** A socket of its own for each attempt, so that no answer to an earlier one is mixed in. */
Netlink OpenNetlink() {
    Netlink netlink(mnl_socket_open2(NETLINK_SOCK_DIAG, SOCK_CLOEXEC));
    const timeval limit{kAnswerSeconds, 0};
    if (!netlink || mnl_socket_bind(netlink.get(), 0, MNL_SOCKET_AUTOPID) < 0 ||
        setsockopt(mnl_socket_get_fd(netlink.get()), SOL_SOCKET, SO_RCVTIMEO, &limit,
                   sizeof(limit)) < 0) {
        throw HostError(errno);
    }
    return netlink;
}

void SendRequest(const mnl_socket* netlink, std::uint8_t family) {
    alignas(nlmsghdr) char buffer[MNL_NLMSG_HDRLEN + MNL_ALIGN(sizeof(inet_diag_req_v2))];
    nlmsghdr* header = mnl_nlmsg_put_header(buffer);
    header->nlmsg_type = SOCK_DIAG_BY_FAMILY;
    header->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    inet_diag_req_v2 request{};
    request.sdiag_family = family;
    request.sdiag_protocol = IPPROTO_TCP;
    request.idiag_states = (1U << TCP_ESTABLISHED) | (1U << TCP_CLOSE_WAIT) | (1U << TCP_LISTEN);
    std::memcpy(mnl_nlmsg_put_extra_header(header, sizeof(request)), &request, sizeof(request));
    if (mnl_socket_sendto(netlink, header, header->nlmsg_len) < 0) {
        throw HostError(errno);
    }
}

ssize_t Receive(const mnl_socket* netlink, char* buffer) {
    ssize_t size;
    do {
        size = mnl_socket_recvfrom(netlink, buffer, kBufferSize);
    } while (size < 0 && errno == EINTR);
    return size;
}

/**
 * However many there are: a bound would let one user's sockets crowd out the others'. The kernel
 * has some 2 KB for each, this list 64 bytes.
 */
SocketDump ReceiveDump(const mnl_socket* netlink) {
    const auto buffer = std::make_unique<char[]>(kBufferSize);
    SocketDump dump;
    DumpState state = DumpState::kMore;
    while (state == DumpState::kMore) {
        const ssize_t size = Receive(netlink, buffer.get());
        if (size < 0 && errno == ENOBUFS) {
            // The receive buffer overflowed: messages were lost, another attempt may get them.
            dump.interrupted = true;
            return dump;
        }
        if (size < 0) {
            throw HostError(errno);
        }
        state = ParseDiagMessages(buffer.get(), static_cast<std::size_t>(size), dump);
    }
    if (state == DumpState::kFailed) {
        throw HostError(EPROTO);
    }
    return dump;
}

/** A table that still changes at the last attempt is taken as it came. */
std::vector<TcpSocket> DumpFamily(std::uint8_t family) {
    SocketDump dump;
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        const Netlink netlink = OpenNetlink();
        SendRequest(netlink.get(), family);
        dump = ReceiveDump(netlink.get());
        if (!dump.interrupted) {
            break;
        }
    }
    return std::move(dump.sockets);
}

/** libmnl compares the length as a signed number, so a huge one would pass its own test. */
bool IsWhole(const nlmsghdr* header, int left) {
    return mnl_nlmsg_ok(header, left) && header->nlmsg_len <= static_cast<std::uint32_t>(left);
}

}  // namespace

DumpState ParseDiagMessages(const void* buffer, std::size_t size, SocketDump& dump) {
    int left = static_cast<int>(size);
    const nlmsghdr* header = static_cast<const nlmsghdr*>(buffer);
    for (; IsWhole(header, left); header = mnl_nlmsg_next(header, &left)) {
        dump.interrupted |= (header->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
        if (header->nlmsg_type == NLMSG_ERROR) {
            return DumpState::kFailed;
        }
        if (header->nlmsg_type == NLMSG_DONE) {
            return EndOfDump(*header);
        }
        AppendSocket(*header, dump.sockets);
    }
    return left > 0 ? DumpState::kFailed : DumpState::kMore;
}

std::vector<TcpSocket> DumpSockets() {
    std::vector<TcpSocket> sockets = DumpFamily(AF_INET);
    const std::vector<TcpSocket> ipv6 = DumpFamily(AF_INET6);
    sockets.insert(sockets.end(), ipv6.begin(), ipv6.end());
    return sockets;
}

}  // namespace vornplatform
