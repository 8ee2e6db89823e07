// SPDX-License-Identifier: MIT
// The text of /proc/net/tcp and /proc/net/tcp6, up to the texts of the addresses.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/linux/sockets/proc_net_tcp.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<vornplatform::TcpSocket> sockets;
    vornplatform::ParseProcNetTcp({reinterpret_cast<const char*>(data), size}, sockets);
    for (const auto& [inode, socket] : vornplatform::SelectClientSockets(sockets)) {
        const bool listens = socket.role == vornplatform::SocketRole::kListener;
        if (inode == 0 || socket.host.empty() != listens) {
            std::abort();
        }
    }
    return 0;
}
