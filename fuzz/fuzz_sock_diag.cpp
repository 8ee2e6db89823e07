// SPDX-License-Identifier: MIT
// One buffer of netlink messages, up to the texts of the addresses.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/linux/sockets/sock_diag.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A copy of its own size on the heap: aligned as the kernel aligns, and guarded at its end.
    const std::vector<std::uint8_t> buffer(data, data + size);
    vornplatform::SocketDump dump;
    vornplatform::ParseDiagMessages(buffer.data(), buffer.size(), dump);
    for (const auto& [inode, socket] : vornplatform::SelectClientSockets(dump.sockets)) {
        const bool listens = socket.role == vornplatform::SocketRole::kListener;
        if (inode == 0 || socket.host.empty() != listens) {
            std::abort();
        }
    }
    return 0;
}
