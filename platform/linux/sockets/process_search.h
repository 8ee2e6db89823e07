// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_PROCESS_SEARCH_H
#define VORN_PLATFORM_LINUX_SOCKETS_PROCESS_SEARCH_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <unordered_set>

#include "platform/linux/sockets/search_memory.h"
#include "platform/linux/sockets/socket_holder.h"
#include "support/descriptor.h"

namespace vornplatform {

/** Which of the sockets some process holds. */
struct HeldSockets {
    std::unordered_set<std::uint64_t> byAnybody;
    /** By a server whose one client is known: connections to ports that it forwards. */
    std::unordered_set<std::uint64_t> beside;
};

/** The search of one process for sockets: at first where servers have them, then everywhere. */
class ProcessSearch {
public:
    ProcessSearch(pid_t pid, const ClientSockets& sockets, HeldSockets& held)
        : sockets_(&sockets), held_(&held) {
        holder_.pid = pid;
    }

    /**
     * Looks at the lowest descriptors, and goes on with a known file server and with whoever has
     * a client by then or is known to have its clients further up; of those with one client as far
     * as that.
     *
     * @param sshAlone  looks at SSH servers and at nobody else
     */
    void Begin(const SearchFacts& facts, bool sshAlone);

    /** Looks at the descriptors that Begin has left out. */
    void Finish();

    bool IsFinished() const { return isFinished_; }
    /** Whether its client is known, so that no other socket can be one. */
    bool IsSettled() const { return ServesOneClient(holder_.kind) && FindsSome(); }
    bool FindsSome() const { return !holder_.inodes.empty(); }
    /** Whether it has its clients where nobody would look but for a reason. */
    bool FindsSomeFurtherUp() const { return FindsSome() && !isLikely_; }

    const std::string& Program() const { return holder_.program; }
    /** What was found, which leaves this object without. */
    SocketHolder Take();

private:
    support::Descriptor Open();
    void LookAtLowest(int folder);
    void LookAtRest(int folder, bool untilSettled);
    bool LookAt(int folder, const char* number);
    void Note(std::uint64_t inode, const ClientSocket& socket);
    void AddClient(std::uint64_t inode);

    const ClientSockets* sockets_;
    HeldSockets* held_;
    SocketHolder holder_;
    int next_ = 0;            /**< the descriptor to go on with */
    bool isLikely_ = false;   /**< a server by its name, or by a client at a low descriptor */
    bool isBeside_ = false;   /**< what is found now is nobody's client */
    bool isFinished_ = false; /**< or gone, or kept from us */
};

}  // namespace vornplatform

#endif
