// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_SOCKETS_KERNEL_PORTS_H
#define VORN_PLATFORM_LINUX_SOCKETS_KERNEL_PORTS_H

#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace vornplatform {

using Ports = std::unordered_set<std::uint16_t>;

/** The TCP ports in the text of /proc/fs/nfsd/portlist; lines of another form are passed over. */
Ports ParseNfsPorts(std::string_view text);

/**
 * The ports on which the kernel's own NFS server has its clients, whose sockets no process holds.
 * None without such a server, or where it doesn't tell: that costs time and no answer.
 */
Ports ReadNfsPorts();

}  // namespace vornplatform

#endif
