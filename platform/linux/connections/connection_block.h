// SPDX-License-Identifier: MIT
#ifndef VORN_PLATFORM_LINUX_CONNECTIONS_CONNECTION_BLOCK_H
#define VORN_PLATFORM_LINUX_CONNECTIONS_CONNECTION_BLOCK_H

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/owner.h"
#include "vorn/platform/connection.h"

namespace vornplatform {

/** Stands for a host or a user that nothing tells; the one text for that. */
inline constexpr char kUnknown[] = "unknown";

/** A record before it is laid out for the caller. */
struct Connection {
    std::uint32_t pid = 0;
    std::string host; /**< not empty */
    std::string user; /**< not empty */
    std::uint32_t type = 0;
};

using ConnectionBlock = support::Owner<VORN_CURCONN, std::free>;

/**
 * Drops records that repeat pid, host and user. The last of them stays in its place, since readers
 * take the last record of a pid, and it keeps the type SSH if any of them had it.
 */
std::vector<Connection> WithoutRepeats(std::vector<Connection> connections);

/**
 * Lays records out in one block of malloc, texts behind them.
 *
 * @return null for no record
 * @throw std::bad_alloc
 */
ConnectionBlock BuildBlock(const std::vector<Connection>& connections);

}  // namespace vornplatform

#endif
