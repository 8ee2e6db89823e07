#include <syslog.h>

#include <exception>
#include <mutex>
#include <new>
#include <vector>

#include "platform/linux/connections/connection_block.h"
#include "platform/linux/connections/server_connections.h"
#include "platform/linux/connections/smb_query.h"
#include "platform/linux/connections/ssh_session.h"
#include "platform/linux/processes/process_reader.h"
#include "platform/linux/sockets/proc_net_tcp.h"
#include "platform/linux/sockets/sock_diag.h"
#include "platform/linux/sockets/socket_holder.h"
#include "platform/linux/support/fault.h"
#include "vorn/platform/connection.h"

namespace vornplatform {
namespace {

constexpr char kSource[] = "current_connections";

/** A host that hides its sockets still has its list of opened files: without connections. */
ClientSockets ReadClientSockets() {
    std::vector<TcpSocket> sockets;
    if (!DumpSockets(sockets) && !ReadProcNetTcp(sockets)) {
        Log(LOG_WARNING, kSource, __LINE__,
            "Neither sock_diag nor /proc/net/tcp is available: no connection is known");
    }
    return SelectClientSockets(sockets);
}

/** What SMB servers told earlier; the one state that outlives a call. */
SmbUsers UsersOfSmbServers(const std::vector<SmbServer>& servers) {
    static std::mutex mutex;
    static SmbSessions sessions([] { return AskSmbStatus(); });
    const std::lock_guard<std::mutex> lock(mutex);
    return sessions.UsersOf(servers);
}

std::vector<Connection> ReadConnections() {
    const ClientSockets sockets = ReadClientSockets();
    if (sockets.empty()) {
        return {};
    }
    const std::vector<pid_t> processes = ListProcesses();
    const std::vector<SocketHolder> holders = FindSocketHolders(processes, sockets);
    UserNames names;
    std::vector<Connection> connections = SshConnections(holders, sockets, processes, names);
    const auto others = ServerConnections(holders, sockets, UsersOfSmbServers, names);
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
} catch (const std::bad_alloc&) {
    return vornplatform::Fail(KLIBC_ERR_RESOURCE, vornplatform::kSource, __LINE__);
} catch (const std::exception&) {
    return vornplatform::Fail(KLIBC_ERR_INTERNAL, vornplatform::kSource, __LINE__);
}
