// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/server_kind.h"

#include <algorithm>
#include <iterator>

namespace vornplatform {
namespace {

struct KnownServer {
    std::string_view program;
    ServerKind kind;
};

constexpr KnownServer kKnownServers[] = {
    {"sshd", ServerKind::kSsh},
    {"sshd-auth", ServerKind::kSsh},
    {"sshd-session", ServerKind::kSsh},
    {"dropbear", ServerKind::kDropbear},
    {"smbd", ServerKind::kSmb},
    {"afpd", ServerKind::kOneClient},
    {"proftpd", ServerKind::kOneClient},
    {"pure-ftpd", ServerKind::kOneClient},
    {"rsync", ServerKind::kOneClient},
    {"vsftpd", ServerKind::kOneClient},
    {"apache2", ServerKind::kManyClients},
    {"caddy", ServerKind::kManyClients},
    {"httpd", ServerKind::kManyClients},
    {"lighttpd", ServerKind::kManyClients},
    {"nginx", ServerKind::kManyClients},
    {"ganesha.nfsd", ServerKind::kManyUsers},
};

}  // namespace

ServerKind KindOfServer(std::string_view program) {
    const auto* known = std::find_if(std::begin(kKnownServers), std::end(kKnownServers),
                                     [&](const auto& it) { return it.program == program; });
    return known == std::end(kKnownServers) ? ServerKind::kOther : known->kind;
}

bool IsFileServer(ServerKind kind) {
    return kind != ServerKind::kOther;
}

bool ServesOneClient(ServerKind kind) {
    switch (kind) {
        case ServerKind::kSsh:
        case ServerKind::kDropbear:
        case ServerKind::kOneClient:
            return true;
        default:
            return false;
    }
}

}  // namespace vornplatform
