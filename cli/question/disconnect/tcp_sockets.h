// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_QUESTION_DISCONNECT_TCP_SOCKETS_H
#define VORN_CLI_QUESTION_DISCONNECT_TCP_SOCKETS_H

#include <set>

#include "cli/host/pid_descriptor.h"
#include "cli/question/disconnect/host_facts.h"

namespace cli {

/** Asks each socket itself, so that it doesn't matter in which network namespace it is. */
TcpSockets ReadTcpSockets(pid_t pid);

/** Ends what goes over these sockets, for all who have them, as if the client had gone. */
void ShutDownSockets(const PidDescriptor& process, pid_t pid, const std::set<ino_t>& sockets);

}  // namespace cli

#endif
