// SPDX-License-Identifier: MIT
#include <syslog.h>

#include <exception>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/connections/connection_block.h"
#include "platform/linux/connections/dropbear_login.h"
#include "platform/linux/connections/server_connections.h"
#include "platform/linux/connections/smb_query.h"
#include "platform/linux/connections/ssh_session.h"
#include "platform/linux/processes/process_reader.h"
#include "platform/linux/sockets/proc_net_tcp.h"
#include "platform/linux/sockets/sock_diag.h"
#include "platform/linux/sockets/socket_holder.h"
#include "platform/linux/support/fault.h"
#include "platform/linux/support/host_error.h"
#include "platform/linux/support/lost_sources.h"
#include "vorn/platform/connection.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "current_connections";

/** The sockets as sock_diag tells, else as the text files of /proc do; nothing without both. */
std::optional<std::vector<TcpSocket>> ReadSockets() {
    try {
        return DumpSockets();
    } catch (const HostError&) {
        // Also of a shortage, which the other source passes on if it has it too.
    }
    try {
        return ReadProcNetTcp();
    } catch (const HostError& error) {
        PassOnShortage(error);
        return std::nullopt;
    }
}

/** A host that hides its sockets still has its list of opened files: without connections. */
ClientSockets ReadClientSockets() {
    const auto sockets = ReadSockets();
    if (!sockets) {
        const std::string said =
            "Neither sock_diag nor /proc/net/tcp is available: no connection is known";
        Log(LOG_WARNING, kSource, __LINE__, said);
        NoteLost(Source::kSockets, said, "give the command the host's /proc and its network");
        return {};
    }
    NoteWell(Source::kSockets);
    return SelectClientSockets(*sockets);
}

/** What earlier searches of all descriptors have told outlives the call. */
std::vector<SocketHolder> HoldersOf(const ClientSockets& sockets,
                                    const std::vector<pid_t>& processes) {
    static SearchMemory memory;
    return FindSocketHolders(processes, sockets, ReadClientSockets, memory);
}

/** What SMB servers told earlier outlives the call. */
SmbAnswer UsersOfSmbServers(const std::vector<SmbServer>& servers) {
    static std::mutex mutex;
    static SmbUserMemory memory([](SmbQuestion question) { return AskSmbStatus(question); });
    const std::lock_guard<std::mutex> lock(mutex);
    return memory.UsersOf(servers);
}

std::vector<Connection> ReadConnections() {
    const ClientSockets sockets = ReadClientSockets();
    if (!HasRole(sockets, SocketRole::kServed) && !HasRole(sockets, SocketRole::kUnlistened)) {
        return {};
    }
    const std::vector<pid_t> processes = ListProcesses();
    const std::vector<SocketHolder> holders = HoldersOf(sockets, processes);
    UserDirectory directory;
    std::vector<Connection> connections = SshConnections(holders, sockets, processes, directory);
    const auto dropbear = DropbearConnections(holders, sockets, directory);
    connections.insert(connections.end(), dropbear.begin(), dropbear.end());
    const auto others = ServerConnections(holders, sockets, UsersOfSmbServers, directory);
    connections.insert(connections.end(), others.begin(), others.end());
    return WithoutRepeats(std::move(connections));
}

}  // namespace
}  // namespace vornplatform

int VORNCurConnGet(VORN_CURCONN** connections) try {
    using vornplatform::Fail;
    if (connections == nullptr) {
        return Fail(KLIBC_ERR_BAD_PARAM, vornplatform::kSource, __LINE__);
    }
    *connections = nullptr;
    const auto records = vornplatform::ReadConnections();
    *connections = vornplatform::BuildBlock(records).release();
    return static_cast<int>(records.size());
} catch (const std::exception& exception) {
    return vornplatform::FailCaught(exception, vornplatform::kSource, __LINE__);
}
