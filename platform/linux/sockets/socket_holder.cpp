#include "platform/linux/sockets/socket_holder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/linux/processes/process_reader.h"
#include "platform/linux/processes/process_text.h"
#include "platform/linux/support/host_error.h"
#include "support/folder.h"
#include "support/numbers.h"

namespace vornplatform {
namespace {

/**
 * Servers hold their client's socket among the lowest descriptors: vsftpd from 0, sshd at 4, rsync
 * at 6, web servers and most others below 16; smbd, which has its databases first, at about 34, is
 * one of those that are read further.
 */
constexpr int kLowDescriptors = 16;
constexpr int kLowMisses = 16;

/** One process under search. */
class Search {
public:
    Search(pid_t pid, const ClientSockets& sockets) : sockets_(sockets) { holder_.pid = pid; }

    /** @return nothing when the process holds none of the sockets, has gone or is kept from us */
    std::optional<SocketHolder> Run(bool sshAlone) {
        const std::string folder = "/proc/" + std::to_string(holder_.pid);
        holder_.program = ReadProgram(holder_.pid).value_or(std::string());
        holder_.kind = KindOfServer(holder_.program);
        if (sshAlone && holder_.kind != ServerKind::kSsh) {
            return std::nullopt;
        }
        descriptors_ = support::OpenFolder((folder + "/fd").c_str());
        if (!descriptors_) {
            ThrowUnlessGone(errno);
            return std::nullopt;
        }
        LookAtLowest();
        if ((NeedsMore() && !LookAtRest()) || holder_.inodes.empty()) {
            return std::nullopt;
        }
        if (ServesOneClient(holder_.kind) && holder_.kind != ServerKind::kSsh) {
            holder_.inodes.resize(1);
        }
        return std::move(holder_);
    }

private:
    /** Everyday reasons for which there is nothing to see of a process; throws any other. */
    static void ThrowUnlessGone(int error) {
        if (!IsNothingThere(error) && !IsWithheld(error)) {
            throw HostError(error);
        }
    }

    /** @return whether there is such a descriptor */
    bool LookAt(const char* number) {
        // A link cut off at the end of the buffer is longer than that of a socket.
        char link[32];
        const ssize_t size = readlinkat(descriptors_.Get(), number, link, sizeof(link));
        if (size < 0) {
            return false;
        }
        const auto inode = ParseSocketLink({link, static_cast<std::size_t>(size)});
        const auto socket = inode ? sockets_.find(*inode) : sockets_.end();
        if (socket != sockets_.end()) {
            Note(*inode, socket->second.role);
        }
        return true;
    }

    void Note(std::uint64_t inode, SocketRole role) {
        if (role == SocketRole::kListener) {
            holder_.listens = true;
        } else if (role == SocketRole::kServed || holder_.kind == ServerKind::kSsh) {
            Take(inode);
        }
    }

    /** Of an SSH server every socket, of others one a host: they may have any number of clients. */
    void Take(std::uint64_t inode) {
        auto& inodes = holder_.inodes;
        const auto isAlike = [&](std::uint64_t other) {
            return holder_.kind == ServerKind::kSsh
                       ? other == inode
                       : sockets_.at(other).host == sockets_.at(inode).host;
        };
        if (std::none_of(inodes.begin(), inodes.end(), isAlike)) {
            inodes.push_back(inode);
        }
    }

    void LookAtLowest() {
        int found = 0;
        int missed = 0;
        for (; found < kLowDescriptors && missed < kLowMisses; ++next_) {
            ++(LookAt(std::to_string(next_).c_str()) ? found : missed);
        }
    }

    /** Whoever has one client among the lowest may have more; two hosts are enough to know of. */
    bool NeedsMore() const {
        if (ServesOneClient(holder_.kind)) {
            return holder_.inodes.empty();
        }
        return (IsFileServer(holder_.kind) || !holder_.inodes.empty()) && holder_.inodes.size() < 2;
    }

    /** The kernel lists descriptors in ascending order. False when the process has gone. */
    bool LookAtRest() {
        const int error = support::VisitFolder(descriptors_.Get(), [&](const dirent64& entry) {
            const auto number = support::ParseNumber<int>(entry.d_name);
            if (number && *number >= next_) {
                LookAt(entry.d_name);
            }
            return NeedsMore();
        });
        if (error != 0) {
            ThrowUnlessGone(error);
        }
        return error == 0;
    }

    const ClientSockets& sockets_;
    SocketHolder holder_;
    support::Descriptor descriptors_;
    int next_ = 0;
};

}  // namespace

std::vector<SocketHolder> FindSocketHolders(const std::vector<pid_t>& processes,
                                            const ClientSockets& sockets) {
    const bool sshAlone = !HasRole(sockets, SocketRole::kServed);
    std::vector<SocketHolder> holders;
    for (const pid_t pid : processes) {
        if (auto holder = Search(pid, sockets).Run(sshAlone)) {
            holders.push_back(std::move(*holder));
        }
    }
    return holders;
}

}  // namespace vornplatform
