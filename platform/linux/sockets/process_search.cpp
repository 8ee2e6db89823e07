// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/process_search.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
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

/** Two are as good as any number: nothing tells which of them holds a file. */
constexpr std::size_t kHosts = 2;

/** Everyday reasons for which there is nothing to see of a process; throws any other. */
void ThrowUnlessGone(int error) {
    if (!IsNothingThere(error) && !IsWithheld(error)) {
        throw HostError(error);
    }
}

}  // namespace

void ProcessSearch::Begin(const SearchFacts& facts, bool sshAlone) {
    holder_.program = ReadProgram(holder_.pid).value_or(std::string());
    holder_.kind = KindOfServer(holder_.program);
    if (sshAlone && holder_.kind != ServerKind::kSsh) {
        isFinished_ = true;
        return;
    }
    const support::Descriptor folder = Open();
    if (!folder) {
        return;
    }
    LookAtLowest(folder.Get());
    isLikely_ = IsFileServer(holder_.kind) || FindsSome();
    if (!IsSettled() && (isLikely_ || facts.programs.count(holder_.program) != 0)) {
        LookAtRest(folder.Get(), true);
    }
}

void ProcessSearch::Finish() {
    isBeside_ = IsSettled();
    if (const support::Descriptor folder = Open()) {
        LookAtRest(folder.Get(), false);
    }
}

SocketHolder ProcessSearch::Take() {
    if (ServesOneClient(holder_.kind) && holder_.kind != ServerKind::kSsh) {
        holder_.inodes.resize(1);
    }
    return std::move(holder_);
}

support::Descriptor ProcessSearch::Open() {
    const std::string path = "/proc/" + std::to_string(holder_.pid) + "/fd";
    support::Descriptor folder = support::OpenFolder(path.c_str());
    if (!folder) {
        ThrowUnlessGone(errno);
        isFinished_ = true;
    }
    return folder;
}

void ProcessSearch::LookAtLowest(int folder) {
    int found = 0;
    int missed = 0;
    for (; found < kLowDescriptors && missed < kLowMisses; ++next_) {
        ++(LookAt(folder, std::to_string(next_).c_str()) ? found : missed);
    }
}

/** The kernel lists descriptors in ascending order. Nothing is found of a process that has gone. */
void ProcessSearch::LookAtRest(int folder, bool untilSettled) {
    bool isCut = false;
    const int error = support::VisitFolder(folder, [&](const dirent64& entry) {
        const auto number = support::ParseNumber<int>(entry.d_name);
        if (number && *number >= next_) {
            LookAt(folder, entry.d_name);
            next_ = *number + 1;
            isCut = untilSettled && IsSettled();
        }
        return !isCut;
    });
    if (error != 0) {
        ThrowUnlessGone(error);
        holder_.inodes.clear();
    }
    isFinished_ = !isCut;
}

/** @return whether there is such a descriptor */
bool ProcessSearch::LookAt(int folder, const char* number) {
    // A link cut off at the end of the buffer is longer than that of a socket.
    char link[32];
    const ssize_t size = readlinkat(folder, number, link, sizeof(link));
    if (size < 0) {
        return false;
    }
    const auto inode = ParseSocketLink({link, static_cast<std::size_t>(size)});
    const auto socket = inode ? sockets_->find(*inode) : sockets_->end();
    if (socket != sockets_->end()) {
        Note(*inode, socket->second);
    }
    return true;
}

void ProcessSearch::Note(std::uint64_t inode, const ClientSocket& socket) {
    if (isBeside_) {
        held_->beside.insert(inode);
        return;
    }
    held_->byAnybody.insert(inode);
    if (socket.role == SocketRole::kListener) {
        holder_.listens = true;
    } else if (socket.role == SocketRole::kServed || holder_.kind == ServerKind::kSsh) {
        AddClient(inode);
    }
}

/** Of an SSH server every socket, of others one a host: they may have any number of clients. */
void ProcessSearch::AddClient(std::uint64_t inode) {
    auto& inodes = holder_.inodes;
    const bool isSsh = holder_.kind == ServerKind::kSsh;
    const auto isAlike = [&](std::uint64_t other) {
        return isSsh ? other == inode : sockets_->at(other).host == sockets_->at(inode).host;
    };
    if ((isSsh || inodes.size() < kHosts) && std::none_of(inodes.begin(), inodes.end(), isAlike)) {
        inodes.push_back(inode);
    }
}

}  // namespace vornplatform
