// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_FINDINGS_CLIENT_FINDINGS_H
#define VORN_PLATFORM_LINUX_FINDINGS_CLIENT_FINDINGS_H

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <set>

#include "platform/linux/findings/finding.h"

namespace vornplatform {

/** What is known of clients: found by asking for them once. */
struct ClientFacts {
    int error = 0; /**< the error code where connections can't be listed at all */
    size_t records = 0;
    std::set<pid_t> ssh; /**< processes of SSH sessions */
};

ClientFacts AskForClients();

/** What tells the processes of a login from others. */
struct LoginProcess {
    pid_t parent = 0;
    std::optional<unsigned> session;       /**< that the kernel keeps */
    std::optional<unsigned> parentSession; /**< that it may have been handed on from */
};

/** Logins by their processes: one chain of parents, or one session of the kernel's, is one. */
size_t CountLogins(const std::set<pid_t>& processes,
                   const std::function<LoginProcess(pid_t)>& read);

/** Findings on sockets, SSH and SMB; runs smbstatus where an SMB server runs. */
Findings FindClients(const ClientFacts& facts);

}  // namespace vornplatform

#endif
