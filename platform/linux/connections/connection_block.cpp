// SPDX-License-Identifier: MIT
#include "platform/linux/connections/connection_block.h"

#include <algorithm>
#include <map>
#include <new>
#include <tuple>

#include "support/put_text.h"

namespace vornplatform {
namespace {

std::size_t BlockSize(const std::vector<Connection>& connections) {
    std::size_t size = connections.size() * sizeof(VORN_CURCONN);
    for (const Connection& connection : connections) {
        size += connection.host.size() + 1 + connection.user.size() + 1;
    }
    return size;
}

}  // namespace

std::vector<Connection> WithoutRepeats(std::vector<Connection> connections) {
    std::map<std::tuple<std::uint32_t, std::string, std::string>, std::size_t> places;
    std::vector<Connection> kept;
    std::reverse(connections.begin(), connections.end());
    for (Connection& connection : connections) {
        const auto [place, isNew] = places.emplace(
            std::make_tuple(connection.pid, connection.host, connection.user), kept.size());
        if (isNew) {
            kept.push_back(std::move(connection));
        } else if (connection.type == VORN_CURCONN_SSH) {
            kept[place->second].type = VORN_CURCONN_SSH;
        }
    }
    std::reverse(kept.begin(), kept.end());
    return kept;
}

ConnectionBlock BuildBlock(const std::vector<Connection>& connections) {
    if (connections.empty()) {
        return nullptr;
    }
    ConnectionBlock block(static_cast<VORN_CURCONN*>(std::calloc(1, BlockSize(connections))));
    if (!block) {
        throw std::bad_alloc();
    }
    VORN_CURCONN* record = block.get();
    char* text = reinterpret_cast<char*>(record + connections.size());
    for (const Connection& connection : connections) {
        record->pid = connection.pid;
        record->szHost = support::PutText(text, connection.host);
        record->szUser = support::PutText(text, connection.user);
        record->type = connection.type;
        ++record;
    }
    return block;
}

}  // namespace vornplatform
