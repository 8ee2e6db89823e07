// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/socket_holder.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/linux/sockets/kernel_ports.h"
#include "platform/linux/sockets/process_search.h"

namespace vornplatform {
namespace {

using Inodes = std::vector<std::uint64_t>;

template <typename IsWanted>
void KeepIf(Inodes& inodes, IsWanted isWanted) {
    inodes.erase(std::remove_if(inodes.begin(), inodes.end(),
                                [&](std::uint64_t inode) { return !isWanted(inode); }),
                 inodes.end());
}

/** The search of all processes. */
class HolderSearch {
public:
    HolderSearch(const std::vector<pid_t>& processes, const ClientSockets& sockets,
                 const SearchFacts& facts)
        : sockets_(sockets), facts_(facts) {
        processes_.reserve(processes.size());
        for (const pid_t pid : processes) {
            processes_.emplace_back(pid, sockets, held_);
        }
    }

    HolderSearch(const HolderSearch&) = delete;
    HolderSearch& operator=(const HolderSearch&) = delete;

    void Begin() {
        const bool sshAlone = !HasRole(sockets_, SocketRole::kServed);
        for (ProcessSearch& process : processes_) {
            process.Begin(facts_, sshAlone);
        }
    }

    /** Looks at what is left of the servers with one client, or of all processes. */
    void Finish(bool settledAlone) {
        for (ProcessSearch& process : processes_) {
            if (!process.IsFinished() && (!settledAlone || process.IsSettled())) {
                process.Finish();
            }
        }
    }

    bool IsHeld(std::uint64_t inode) const {
        return held_.byAnybody.count(inode) != 0 || held_.beside.count(inode) != 0;
    }

    /** The sockets of clients that somebody has to hold, and nobody was seen to. */
    Inodes Missing() const {
        Inodes missing;
        for (const auto& [inode, socket] : sockets_) {
            if (socket.role == SocketRole::kServed && !IsHeld(inode) &&
                facts_.sockets.count(inode) == 0) {
                missing.push_back(inode);
            }
        }
        if (!missing.empty()) {
            const Ports ports = PortsOfProcesses();
            KeepIf(missing, [&](auto inode) { return ports.count(sockets_.at(inode).port) != 0; });
        }
        return missing;
    }

    /** After all processes. */
    SearchFacts Learned() const {
        SearchFacts learned;
        for (const auto& [inode, socket] : sockets_) {
            if (socket.role == SocketRole::kServed && held_.byAnybody.count(inode) == 0) {
                learned.sockets.insert(inode);
            } else if (socket.role == SocketRole::kListener && !IsHeld(inode)) {
                learned.listeners.insert(inode);
            }
        }
        for (const ProcessSearch& process : processes_) {
            if (process.FindsSomeFurtherUp()) {
                learned.programs.insert(process.Program());
            }
        }
        return learned;
    }

    std::vector<SocketHolder> TakeHolders() {
        std::vector<SocketHolder> holders;
        for (ProcessSearch& process : processes_) {
            if (process.FindsSome()) {
                holders.push_back(process.Take());
            }
        }
        return holders;
    }

private:
    /** Where somebody listens who may be no part of the kernel. */
    Ports PortsOfProcesses() const {
        Ports ports;
        for (const auto& [inode, socket] : sockets_) {
            if (socket.role == SocketRole::kListener && facts_.listeners.count(inode) == 0) {
                ports.insert(socket.port);
            }
        }
        for (const std::uint16_t port : ReadNfsPorts()) {
            ports.erase(port);
        }
        return ports;
    }

    const ClientSockets& sockets_;
    const SearchFacts& facts_;
    HeldSockets held_;
    std::vector<ProcessSearch> processes_;
};

/** Finds the servers that have their clients' sockets further up, if there must be some. */
void FindFurtherUp(HolderSearch& search, const ReadSocketsAgain& readAgain, SearchMemory& memory) {
    Inodes missing = search.Missing();
    if (missing.empty()) {
        return;
    }
    const ClientSockets now = readAgain();
    KeepIf(missing, [&](std::uint64_t inode) { return now.count(inode) != 0; });
    if (missing.empty()) {
        return;
    }
    search.Finish(true);
    if (std::all_of(missing.begin(), missing.end(),
                    [&](std::uint64_t inode) { return search.IsHeld(inode); })) {
        return;
    }
    search.Finish(false);
    memory.Replace(search.Learned());
}

}  // namespace

std::vector<SocketHolder> FindSocketHolders(const std::vector<pid_t>& processes,
                                            const ClientSockets& sockets,
                                            const ReadSocketsAgain& readAgain,
                                            SearchMemory& memory) {
    const std::shared_ptr<const SearchFacts> facts = memory.Facts();
    HolderSearch search(processes, sockets, *facts);
    search.Begin();
    FindFurtherUp(search, readAgain, memory);
    return search.TakeHolders();
}

}  // namespace vornplatform
