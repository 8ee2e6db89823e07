// SPDX-License-Identifier: MIT
#include "cli/question/holders/bound_sockets.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <thread>

#include "support/descriptor.h"

namespace cli {
namespace {

/** A socket as the kernel tells it. */
struct Bound {
    ino_t socket = 0;
    dev_t device = 0;
    ino_t inode = 0;
    std::string name; /**< as it was bound, perhaps relative */
};

Bound ParseBound(const unix_diag_msg& message, size_t size) {
    Bound bound;
    bound.socket = message.udiag_ino;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    const auto* attribute = reinterpret_cast<const rtattr*>(&message + 1);
    size -= std::min(size, sizeof(message));
    for (auto left = static_cast<unsigned>(size); RTA_OK(attribute, left);
         attribute = RTA_NEXT(attribute, left)) {
        const size_t length = RTA_PAYLOAD(attribute);
        if (attribute->rta_type == UNIX_DIAG_VFS && length >= sizeof(unix_diag_vfs)) {
            unix_diag_vfs file{};
            std::memcpy(&file, RTA_DATA(attribute), sizeof(file));
            // Twenty bits of minor, as the kernel has them inside.
            bound.device = makedev(file.udiag_vfs_dev >> 20, file.udiag_vfs_dev & 0xFFFFF);
            bound.inode = file.udiag_vfs_ino;
        } else if (attribute->rta_type == UNIX_DIAG_NAME) {
            bound.name.assign(static_cast<const char*>(RTA_DATA(attribute)), length);
            bound.name.resize(std::strlen(bound.name.c_str()));
        }
    }
    return bound;
}

bool Ask(int socket) {
    struct {
        nlmsghdr header;
        unix_diag_req request;
    } question{};
    question.header.nlmsg_len = sizeof(question);
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    question.request.sdiag_family = AF_UNIX;
    question.request.udiag_states = ~0U;
    question.request.udiag_show = UDIAG_SHOW_NAME | UDIAG_SHOW_VFS;
    return send(socket, &question, sizeof(question), 0) == sizeof(question);
}

/** @return 0 at the end of an answer, an errno value for one that says so, -1 when there is more */
int TakeMessages(const char* buffer, size_t size, std::vector<Bound>& sockets) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
    const auto* header = reinterpret_cast<const nlmsghdr*>(buffer);
    auto left = static_cast<unsigned>(size);
    for (; NLMSG_OK(header, left); header = NLMSG_NEXT(header, left)) {
        if (header->nlmsg_type == NLMSG_DONE) {
            return 0;
        }
        if (header->nlmsg_type == NLMSG_ERROR) {
            nlmsgerr error{};
            std::memcpy(&error, header + 1, sizeof(error));
            return error.error == 0 ? EPROTO : -error.error;
        }
        if (header->nlmsg_len >= NLMSG_LENGTH(sizeof(unix_diag_msg))) {
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
            const auto* message = reinterpret_cast<const unix_diag_msg*>(header + 1);
            Bound bound = ParseBound(*message, header->nlmsg_len - NLMSG_HDRLEN);
            if (bound.inode != 0) {
                sockets.push_back(std::move(bound));
            }
        }
    }
    return -1;
}

/** The bound sockets of this thread's network namespace. @return 0 or an errno value */
int ListBound(std::vector<Bound>& sockets) {
    constexpr size_t kBufferSize = size_t{32} * 1024;
    const support::Descriptor socket(
        ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!socket || !Ask(socket.Get())) {
        return errno;
    }
    alignas(nlmsghdr) std::array<char, kBufferSize> buffer{};
    int result = -1;
    while (result < 0) {
        const ssize_t size = recv(socket.Get(), buffer.data(), buffer.size(), 0);
        if (size <= 0 && errno != EINTR) {
            return size == 0 ? EPROTO : errno;
        }
        if (size > 0) {
            result = TakeMessages(buffer.data(), static_cast<size_t>(size), sockets);
        }
    }
    return result;
}

/** The same of another network namespace, by a thread of its own, as it changes the thread's. */
int ListBoundIn(int space, std::vector<Bound>& sockets) {
    int result = 0;
    std::thread([&] {
        result = setns(space, CLONE_NEWNET) != 0 ? errno : ListBound(sockets);
    }).join();
    return result;
}

/** A descriptor of each network namespace but this process's, as far as they may be seen. */
std::map<ino_t, support::Descriptor> OtherNamespaces(const std::vector<pid_t>& pids) {
    std::map<ino_t, support::Descriptor> spaces;
    const auto own = IdentityAt(AT_FDCWD, "/proc/self/ns/net");
    for (const pid_t pid : pids) {
        const std::string path = fmt::format("/proc/{}/ns/net", pid);
        const auto identity = IdentityAt(AT_FDCWD, path.c_str());
        if (!identity || (own && own->inode == identity->inode) ||
            spaces.count(identity->inode) != 0) {
            continue;
        }
        support::Descriptor space(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (space) {
            spaces.emplace(identity->inode, std::move(space));
        }
    }
    return spaces;
}

/** What the name leads to, if that is the file that the socket is bound to. */
std::optional<Named> FileOf(const Targets& targets, const Bound& bound) {
    if (bound.name.empty() || bound.name.front() != '/') {
        return std::nullopt;
    }
    auto named = PlaceOfPath(targets, bound.name);
    return named && static_cast<uint32_t>(named->identity.inode) == bound.inode ? named
                                                                                : std::nullopt;
}

void PlaceSocket(const Targets& targets, const Bound& bound, BoundSockets& places,
                 Holders& holders) {
    if (!targets.MayConcern(bound.device)) {
        return;
    }
    UsedFile file;
    file.path = bound.name;
    const auto named = FileOf(targets, bound);
    const auto place = named ? named->place : targets.PlaceOnDevice(bound.device, bound.inode);
    if (named) {
        file.path = named->path;
    }
    if (place.kind == Place::kInside) {
        places.emplace(bound.socket, std::move(file));
    } else if (place.kind == Place::kUnknown) {
        holders.lost.push_back(fmt::format(
            "a socket is bound to a file of the same file system whose place can't be told "
            "(inode {})",
            bound.inode));
    }
}

}  // namespace

BoundSockets FindBoundSockets(const Targets& targets, const std::vector<pid_t>& pids,
                              Holders& holders) {
    std::vector<Bound> sockets;
    int error = ListBound(sockets);
    for (const auto& [number, space] : OtherNamespaces(pids)) {
        const int other = ListBoundIn(space.Get(), sockets);
        error = error == 0 ? other : error;
    }
    if (error != 0) {
        holders.lost.push_back(fmt::format("can't list the sockets that are bound to files: {}",
                                           std::strerror(error)));
    }
    BoundSockets places;
    for (const Bound& bound : sockets) {
        PlaceSocket(targets, bound, places, holders);
    }
    return places;
}

void AddUnseenSockets(const BoundSockets& sockets, const std::unordered_set<ino_t>& seen,
                      Holders& holders) {
    for (const auto& [socket, file] : sockets) {
        if (seen.count(socket) == 0) {
            Holder row;
            row.reason = Reason::kSocket;
            row.files.push_back(file);
            holders.rows.push_back(std::move(row));
        }
    }
}

}  // namespace cli
